#ifndef REPORTCRITERIADIALOG_H
#define REPORTCRITERIADIALOG_H

#include <QDialog>

class InvoiceCriteria;
class PaymentCriteria;
class QComboBox;
class QLineEdit;
class Registry;

// The search of the invoice list and payment journal reports: edits the
// given criteria in place when accepted. Dates are typed the Finnish way
// ("1.3.2025", "1.3", "0103"); an empty field sets nothing.
class ReportCriteriaDialog : public QDialog
{
    Q_OBJECT
public:
    ReportCriteriaDialog(Registry* registry, InvoiceCriteria* criteria, QWidget* parent = nullptr);
    ReportCriteriaDialog(Registry* registry, PaymentCriteria* criteria, QWidget* parent = nullptr);

    QLineEdit* dateFromEdit() const { return m_dateFromEdit; }
    QLineEdit* dateToEdit() const { return m_dateToEdit; }
    QLineEdit* balanceDateEdit() const { return m_balanceDateEdit; }
    QLineEdit* textEdit() const { return m_textEdit; }
    QComboBox* statusCombo() const { return m_statusCombo; }
    QComboBox* typeCombo() const { return m_typeCombo; }
    QComboBox* bankAccountCombo() const { return m_bankAccountCombo; }

public slots:
    void accept() override;

private:
    void createDateEdits(const QString& fromLabel, const QString& toLabel);
    QLineEdit* addDateEdit(const QString& label, const QDate& date);

    Registry* m_registry;
    InvoiceCriteria* m_invoiceCriteria = nullptr;
    PaymentCriteria* m_paymentCriteria = nullptr;
    QLineEdit* m_dateFromEdit = nullptr;
    QLineEdit* m_dateToEdit = nullptr;
    QLineEdit* m_balanceDateEdit = nullptr;
    QLineEdit* m_textEdit = nullptr;
    QComboBox* m_statusCombo = nullptr;
    QComboBox* m_typeCombo = nullptr;
    QComboBox* m_bankAccountCombo = nullptr;
    class QFormLayout* m_form = nullptr;
};

#endif // REPORTCRITERIADIALOG_H
