#ifndef INVOICEPRINTJOB_H
#define INVOICEPRINTJOB_H

#include <QDate>
#include <QString>

class InvoicePrintModel;
class Registry;

// The decisions around printing invoices, made without any window so that
// the main window only shows what this returns.
//
// Where the settings live: printers are a matter of the machine, so
// "printers/invoice" (invoices), "printers/copies" (the printer of the
// copies) and "printers/reports" (lists) are keys of the configuration
// file. Whether to preview ("invoiceForm/printPreview", default on) and how
// many copies to print ("invoiceForm/numberOfCopies", default 0) belong to
// the business and are company settings in the database.
class InvoicePrintJob
{
public:
    explicit InvoicePrintJob(Registry* registry);

    bool showPreview() const;
    QString printerName() const;
    QString copiesPrinterName() const;
    int numberOfCopies() const;
    QString reportPrinterName() const;

    // The caution before printing reminders or receipts of invoices that
    // are not yet due on today; empty when there is nothing to say.
    static QString dueDateWarning(const InvoicePrintModel* model, int kind, const QDate& today);
    // The question before printing straight to the printer when an invoice
    // has no rows; empty when there is nothing to ask.
    static QString noRowsQuestion(InvoicePrintModel* model, bool preview);

private:
    QString configValue(const QString& key) const;

    Registry* m_registry;
};

#endif // INVOICEPRINTJOB_H
