#ifndef PAYMENTCRITERIADIALOG_H
#define PAYMENTCRITERIADIALOG_H

#include <QDialog>

class PaymentCriteria;
class QComboBox;
class QLineEdit;
class Registry;

// The search of the payment journal: a range of payment dates and a bank
// account. Edits the given criteria in place when accepted. Dates are typed
// the Finnish way ("1.3.2025", "1.3", "0103"); an empty field sets nothing.
class PaymentCriteriaDialog : public QDialog
{
    Q_OBJECT
public:
    PaymentCriteriaDialog(Registry* registry, PaymentCriteria* criteria, QWidget* parent = nullptr);

    QLineEdit* dateFromEdit() const { return m_dateFromEdit; }
    QLineEdit* dateToEdit() const { return m_dateToEdit; }
    QComboBox* bankAccountCombo() const { return m_bankAccountCombo; }

public slots:
    void accept() override;

private:
    PaymentCriteria* m_criteria;
    QLineEdit* m_dateFromEdit;
    QLineEdit* m_dateToEdit;
    QComboBox* m_bankAccountCombo;
};

#endif // PAYMENTCRITERIADIALOG_H
