#ifndef SAMPLERECORDS_H
#define SAMPLERECORDS_H

class BankAccount;
class Customer;
class Invoice;
class InvoiceItem;
class Payment;
class Product;
class Settings;

// Records with every field away from its cleared value, in forms that are
// hard to store: texts with Finnish letters, line feeds and backslashes,
// amounts beyond 32 bits, negative values, bytes of every value. Ids are -1.
class SampleRecords
{
public:
    static BankAccount bankAccount();
    static Customer customer();
    static Invoice invoice(int customerId);
    static InvoiceItem invoiceItem(int invoiceId);
    static Payment payment(int invoiceId, int bankAccountId);
    static Product product();
    static Settings settings();
};

#endif // SAMPLERECORDS_H
