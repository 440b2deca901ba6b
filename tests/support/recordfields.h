#ifndef RECORDFIELDS_H
#define RECORDFIELDS_H

#include <QStringList>

class BankAccount;
class Customer;
class Invoice;
class InvoiceCriteria;
class InvoiceItem;
class Payment;
class Product;
class Settings;

// Every field of a record as "name=value" lines (property maps entry by
// entry, bytes in hex), so that two records compare field by field in one
// QCOMPARE and a difference names the field.
class RecordFields
{
public:
    static QStringList of(const BankAccount& account);
    static QStringList of(const Customer& customer);
    static QStringList of(const Invoice& invoice);
    static QStringList of(const InvoiceItem& item);
    static QStringList of(const InvoiceCriteria& criteria);
    static QStringList of(const Payment& payment);
    static QStringList of(const Product& product);
    static QStringList of(const Settings& settings);
};

#endif // RECORDFIELDS_H
