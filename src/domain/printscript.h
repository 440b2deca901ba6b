#ifndef PRINTSCRIPT_H
#define PRINTSCRIPT_H

#include <QString>

// A user-editable script stored in the database (table print_script). type
// is one of "invoice", "invoice-list", "payment-list", "customer-list",
// "product-list" or "finvoice".
class PrintScript
{
public:
    PrintScript() = default;

    void copy(PrintScript* target) const;

    int id = -1;
    QString type;
    QString name;
    QString sourceCode;
};

#endif // PRINTSCRIPT_H
