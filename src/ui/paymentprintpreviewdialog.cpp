#include "paymentprintpreviewdialog.h"

#include "paymentcriteriadialog.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"

PaymentPrintPreviewDialog::PaymentPrintPreviewDialog(Registry* registry, QWidget* parent)
    : ListPrintPreviewDialog(registry, new PaymentPrintModel(registry), parent)
{
    ScriptHelper(registry).loadPaymentListScript(engine());
}

void PaymentPrintPreviewDialog::openSearchDialog()
{
    PaymentCriteriaDialog dialog(registry(), &listModel()->criteria(), this);
    if (dialog.exec() == QDialog::Accepted)
        updatePrintPreview(listModel());
}

bool PaymentPrintPreviewDialog::showReport(
    Registry* registry, const PaymentCriteria& criteria, QWidget* parent)
{
    PaymentPrintPreviewDialog dialog(registry, parent);
    criteria.copy(&dialog.listModel()->criteria());
    return dialog.execReport(dialog.listModel());
}
