#ifndef PAYMENTPRINTPREVIEWDIALOG_H
#define PAYMENTPRINTPREVIEWDIALOG_H

#include "listprintpreviewdialog.h"
#include "print/paymentprintmodel.h"

class PaymentCriteria;

// The preview of the payment journal, searched with the payment criteria dialog.
class PaymentPrintPreviewDialog : public ListPrintPreviewDialog
{
    Q_OBJECT
public:
    explicit PaymentPrintPreviewDialog(Registry* registry, QWidget* parent = nullptr);

    PaymentPrintModel* listModel() const
    {
        return static_cast<PaymentPrintModel*>(ListPrintPreviewDialog::listModel());
    }

    // Shows the report of these criteria on the reports printer; false
    // when the report could not be made.
    static bool showReport(Registry* registry, const PaymentCriteria& criteria, QWidget* parent);

public slots:
    void openSearchDialog() override;
};

#endif // PAYMENTPRINTPREVIEWDIALOG_H
