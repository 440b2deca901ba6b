#include "invoicelistprintpreviewdialog.h"

#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "searchdialog.h"

InvoiceListPrintPreviewDialog::InvoiceListPrintPreviewDialog(Registry* registry, QWidget* parent)
    : ListPrintPreviewDialog(registry, new InvoiceListPrintModel(registry), parent)
{
    ScriptHelper(registry).loadInvoiceListScript(engine());
}

void InvoiceListPrintPreviewDialog::openSearchDialog()
{
    SearchDialog dialog(registry(), &listModel()->criteria(), this);
    if (dialog.exec() == QDialog::Accepted)
        updatePrintPreview(listModel());
}

bool InvoiceListPrintPreviewDialog::showReport(
    Registry* registry, const InvoiceCriteria& criteria, QWidget* parent)
{
    InvoiceListPrintPreviewDialog dialog(registry, parent);
    criteria.copy(&dialog.listModel()->criteria());
    return dialog.execReport(dialog.listModel());
}
