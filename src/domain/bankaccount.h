#ifndef BANKACCOUNT_H
#define BANKACCOUNT_H

#include <QString>

// A bank account of the seller (table bank_account). Accounts are never
// deleted, only marked; visible ones are printed on invoices.
class BankAccount
{
public:
    BankAccount() = default;

    void copy(BankAccount* target) const;

    static QString ibanToBban(const QString& iban);
    static QString formatIban(const QString& iban);
    static QString formatBban(const QString& bban);
    // ISO 13616: country code, two check digits and the account, spaces
    // allowed; the check digits must give 1 modulo 97.
    static bool isValidIban(const QString& iban);

    int id = -1;
    QString name;
    QString shortName;
    QString iban;
    QString bic;
    int rowNumber = 0;
    bool visible = true;
    bool deleted = false;
};

#endif // BANKACCOUNT_H
