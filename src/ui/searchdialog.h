#ifndef SEARCHDIALOG_H
#define SEARCHDIALOG_H

#include "domain/invoicecriteria.h"
#include "domain/invoicetype.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QSpinBox;
class Registry;

// The invoice search: date ranges, numbers, customer, types, payment
// status, reference number, row text and a row limit. The dialog edits a
// copy; accepting writes the fields into the criteria it was given.
class SearchDialog : public QDialog
{
    Q_OBJECT
public:
    SearchDialog(Registry* registry, InvoiceCriteria* criteria, QWidget* parent = nullptr);

    // Reads the fields into target; false after a warning when a field
    // cannot be read.
    bool readCriteria(InvoiceCriteria* target);

public slots:
    void accept() override;
    // Empties every field: the search then lists all invoices.
    void clearFields();

protected:
    // Every refusal goes through here, so tests can catch it.
    virtual void showWarning(const QString& text);

private:
    void loadCriteria(const InvoiceCriteria& criteria);
    bool readDate(QLineEdit* edit, QDate* date);
    bool readNumber(QLineEdit* edit, int* number);

    Registry* m_registry;
    InvoiceCriteria* m_criteria;
    InvoiceCriteria m_edited;

    QLineEdit* m_dateFromEdit;
    QLineEdit* m_dateToEdit;
    QLineEdit* m_dueDateFromEdit;
    QLineEdit* m_dueDateToEdit;
    QLineEdit* m_deliveryDateFromEdit;
    QLineEdit* m_deliveryDateToEdit;
    QLineEdit* m_numberFromEdit;
    QLineEdit* m_numberToEdit;
    QComboBox* m_customerCombo;
    QCheckBox* m_typeChecks[InvoiceType::count];
    QComboBox* m_paymentStatusCombo;
    QLineEdit* m_balanceDateEdit;
    QLineEdit* m_referenceNumberEdit;
    QLineEdit* m_textEdit;
    QSpinBox* m_limitSpin;
};

#endif // SEARCHDIALOG_H
