#ifndef INVOICESAVECHECK_H
#define INVOICESAVECHECK_H

#include <QCoreApplication>
#include <QDate>
#include <QString>

class MainModel;

// The checks the current invoice of the main model passes before it is
// saved, in the order the user meets them: the number is free, a customer is
// chosen, the total fits, the dates are dates, every row has a product and
// every payment a date. The caller hands over what the invoice form's fields
// hold as typed; the result names the first problem and the field where the
// user can fix it.
class InvoiceSaveCheck
{
    Q_DECLARE_TR_FUNCTIONS(InvoiceSaveCheck)
public:
    // The texts of the invoice form's fields.
    struct Texts
    {
        QString customer;
        QString number;
        QString date;
        QString dueDate;
        QString deliveryDate;
    };

    enum Outcome
    {
        // Every check passed: the invoice may be saved.
        Passed,
        // An untouched new invoice, or one outside edit mode whose payments
        // did not change: there is nothing to save and nothing to tell.
        NothingToSave,
        // The user has something to fix (a warning).
        Refused,
        // The database could not answer (an error).
        Failed
    };

    // Where a problem can be fixed.
    enum Field
    {
        NoField,
        NumberField,
        CustomerField,
        DeliveryDateField,
        DateField,
        DueDateField,
        // The product cell of the invoice row `row`.
        InvoiceItemField,
        // The date cell of the payment `row`.
        PaymentField
    };

    struct Result
    {
        Outcome outcome = Passed;
        Field field = NoField;
        QString message;
        int row = -1;
        // The dates read from the texts; the invoice and due dates only in
        // edit mode, the delivery date null when the field is empty.
        QDate date;
        QDate dueDate;
        QDate deliveryDate;
    };

    explicit InvoiceSaveCheck(MainModel* model);

    // On the way the check does what saving needs anyway: in edit mode a
    // changed number that is free becomes the invoice's, and rows without a
    // product, a text or a price are dropped.
    Result check(const Texts& texts) const;

private:
    bool isPristine() const;
    // False with the result filled in when the number cannot be used.
    bool checkNumber(const QString& text, Result* result) const;

    MainModel* m_model;
};

#endif // INVOICESAVECHECK_H
