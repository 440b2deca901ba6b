#include "xmlscriptmodel.h"

XmlScriptModel::XmlScriptModel(Registry* registry, QObject* parent)
    : InvoicePrintModel(registry, parent)
{
}

QVariant XmlScriptModel::value(QStringList& path)
{
    if (path.isEmpty())
        return QVariant();
    const QString& root = path.at(0);
    if (root == QLatin1String("invoice")) {
        if (invoiceCount() == 0)
            return QVariant();
        QStringList invoicePath = path;
        invoicePath[0] = QStringLiteral("invoices");
        invoicePath.insert(1, QStringLiteral("0"));
        return InvoicePrintModel::value(invoicePath);
    }
    if (root == QLatin1String("seller") || root == QLatin1String("settings"))
        return InvoicePrintModel::value(path);
    if (root == QLatin1String("xmlSchemaVersion"))
        return versionValue(path);
    return QVariant();
}

QVariant XmlScriptModel::versionValue(const QStringList& path) const
{
    if (path.size() == 1)
        return m_xmlSchemaVersion;
    if (path.size() != 2)
        return QVariant();
    const int dot = m_xmlSchemaVersion.indexOf(QLatin1Char('.'));
    if (path.at(1) == QLatin1String("major"))
        return dot < 0 ? m_xmlSchemaVersion : m_xmlSchemaVersion.left(dot);
    if (path.at(1) == QLatin1String("minor"))
        return dot < 0 ? QString("") : m_xmlSchemaVersion.mid(dot + 1);
    return QVariant();
}
