#include "invoiceprintjob.h"

#include "core/registry.h"
#include "domain/invoice.h"
#include "domain/invoicetype.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "invoiceprintmodel.h"

#include <QCoreApplication>
#include <QSettings>

InvoicePrintJob::InvoicePrintJob(Registry* registry) : m_registry(registry) { }

QString InvoicePrintJob::configValue(const QString& key) const
{
    QSettings* settings = m_registry ? m_registry->appSettings() : nullptr;
    return settings ? settings->value(key).toString() : QString();
}

bool InvoicePrintJob::showPreview() const
{
    const Settings* settings = m_registry ? m_registry->settings() : nullptr;
    if (!settings)
        return true;
    const QVariant value = settings->property(SettingsKeys::printPreview);
    if (!value.isValid() || value.toString().isEmpty())
        return true;
    const QString text = value.toString().toLower();
    return text != QLatin1String("false") && text != QLatin1String("0");
}

QString InvoicePrintJob::printerName() const
{
    return configValue(QStringLiteral("printers/invoice"));
}

QString InvoicePrintJob::copiesPrinterName() const
{
    return configValue(QStringLiteral("printers/copies"));
}

QString InvoicePrintJob::reportPrinterName() const
{
    return configValue(QStringLiteral("printers/reports"));
}

int InvoicePrintJob::numberOfCopies() const
{
    const Settings* settings = m_registry ? m_registry->settings() : nullptr;
    if (!settings)
        return 0;
    bool ok = false;
    const int copies = settings->property(SettingsKeys::numberOfCopies).toString().toInt(&ok);
    return ok && copies > 0 ? copies : 0;
}

QString InvoicePrintJob::dueDateWarning(
    const InvoicePrintModel* model, int kind, const QDate& today)
{
    if (!model || (kind != InvoiceType::Reminder && kind != InvoiceType::Receipt))
        return QString();
    bool notDue = false;
    for (int i = 0; i < model->invoiceCount() && !notDue; ++i) {
        const QDate dueDate = model->invoice(i)->dueDate;
        // An invoice falls due on its due date.
        notDue = dueDate.isValid() && today < dueDate;
    }
    if (!notDue)
        return QString();
    if (kind == InvoiceType::Reminder)
        return QCoreApplication::translate("InvoicePrintJob",
            "Huomaathan, että yksi tai usempi laskuista ei ole vielä erääntynyt.");
    return QCoreApplication::translate(
        "InvoicePrintJob", "Huomaathan, että lasku ei ole vielä erääntynyt.");
}

QString InvoicePrintJob::noRowsQuestion(InvoicePrintModel* model, bool preview)
{
    if (!model || preview)
        return QString();
    for (int i = 0; i < model->invoiceCount(); ++i) {
        if (model->invoiceItems(i).isEmpty())
            return QCoreApplication::translate("InvoicePrintJob",
                "Laskussa ei ole yhtään laskuriviä. Tulostetaanko lasku kuitenkin?");
    }
    return QString();
}
