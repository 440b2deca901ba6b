#ifndef XMLSCRIPTMODEL_H
#define XMLSCRIPTMODEL_H

#include "invoiceprintmodel.h"

// The data of one Finvoice document: the invoice print model narrowed to its
// first invoice. Scripts read "invoice/..." (the paths of "invoices/0/..."),
// "seller/...", "settings/..." and the Finvoice version as
// "xmlSchemaVersion", "xmlSchemaVersion/major" and "xmlSchemaVersion/minor".
class XmlScriptModel : public InvoicePrintModel
{
    Q_OBJECT
public:
    explicit XmlScriptModel(Registry* registry, QObject* parent = nullptr);

    // "1.3", "2.01" or "3.0".
    QString xmlSchemaVersion() const { return m_xmlSchemaVersion; }
    void setXmlSchemaVersion(const QString& version) { m_xmlSchemaVersion = version; }

    using InvoicePrintModel::value;
    QVariant value(QStringList& path) override;

private:
    QVariant versionValue(const QStringList& path) const;

    QString m_xmlSchemaVersion;
};

#endif // XMLSCRIPTMODEL_H
