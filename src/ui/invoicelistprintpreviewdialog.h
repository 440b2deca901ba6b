#ifndef INVOICELISTPRINTPREVIEWDIALOG_H
#define INVOICELISTPRINTPREVIEWDIALOG_H

#include "listprintpreviewdialog.h"
#include "print/invoicelistprintmodel.h"

class InvoiceCriteria;

// The preview of the invoice list, searched with the program's search dialog.
class InvoiceListPrintPreviewDialog : public ListPrintPreviewDialog
{
    Q_OBJECT
public:
    explicit InvoiceListPrintPreviewDialog(Registry* registry, QWidget* parent = nullptr);

    InvoiceListPrintModel* listModel() const
    {
        return static_cast<InvoiceListPrintModel*>(ListPrintPreviewDialog::listModel());
    }

    // Shows the report of these criteria on the reports printer; false
    // when the report could not be made.
    static bool showReport(Registry* registry, const InvoiceCriteria& criteria, QWidget* parent);

public slots:
    void openSearchDialog() override;
};

#endif // INVOICELISTPRINTPREVIEWDIALOG_H
