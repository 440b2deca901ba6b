#ifndef QUERY_H
#define QUERY_H

#include <QObject>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

class BankAccount;
class Customer;
class Invoice;
class InvoiceCriteria;
class InvoiceItem;
class Payment;
class PaymentCriteria;
class PrintScript;
class Product;
class Settings;

// Every SQL statement of the program. A fetch operation runs a SELECT; next()
// moves to the following row and an accessor copies the row into a record.
// Save operations insert records with a negative id and update the others.
// Failures return false (or a negative number) with the text in lastError().
class Query : public QObject
{
    Q_OBJECT
public:
    explicit Query(QSqlQuery query, QObject* parent = nullptr);
    ~Query() override;

    QString lastError() const;
    bool next();

    // Readers
    bool fetchBankAccounts();
    void bankAccount(BankAccount* account);
    bool fetchCustomers();
    void customer(Customer* customer);
    bool fetchProducts();
    void product(Product* product);
    bool fetchSettings();
    void settings(Settings* settings);
    bool fetchPrintScriptSummaries();
    void printScriptSummary(PrintScript* script);
    bool fetchPrintScriptDetails();
    bool fetchPrintScriptDetails(int id);
    void printScriptDetails(PrintScript* script);
    // Loads one stored script by id; false for a negative id, a failed query
    // or no such script.
    bool fetchPrintScript(int id, PrintScript* script);

    bool fetchInvoiceDetails(int id);
    bool fetchInvoiceDetails(const InvoiceCriteria& criteria);
    void invoiceDetails(Invoice* invoice);
    bool fetchInvoiceSummaries(const InvoiceCriteria& criteria);
    void invoiceSummary(Invoice* invoice);
    // Number of matching invoices, -1 on failure.
    int fetchInvoiceCount(const InvoiceCriteria& criteria);
    // Largest invoice number, 0 for an empty table, -1 on failure.
    int maxInvoiceNumber();

    bool fetchInvoiceItems(int invoiceId);
    bool fetchInvoiceItem(int id);
    bool fetchInvoiceItems(const InvoiceCriteria& criteria);
    void invoiceItem(InvoiceItem* item);

    bool fetchPayments(int invoiceId);
    bool fetchPayment(int id);
    bool fetchPayments(const PaymentCriteria& paymentCriteria);
    bool fetchPayments(
        const PaymentCriteria& paymentCriteria, const InvoiceCriteria& invoiceCriteria);
    void payment(Payment* payment);
    bool fetchInvoicesAndPayments(
        const PaymentCriteria& paymentCriteria, const InvoiceCriteria& invoiceCriteria);
    void invoiceAndPayment(Invoice* invoice, Payment* payment);

    // Balance-at-date mode of the reports: the sum of each listed invoice's
    // payments up to a date, read pairwise with paymentAmount().
    void setInvoiceBalanceMode(bool on);
    bool invoiceBalanceMode() const;
    bool fetchPaymentAmounts(const InvoiceCriteria& criteria, const QDate& date);
    void paymentAmount(int* invoiceId, long long* amount);

    // Writers
    bool saveBankAccount(BankAccount* account);
    bool saveCustomer(Customer* customer);
    bool saveProduct(Product* product);
    bool saveInvoice(Invoice* invoice);
    bool saveInvoiceItem(InvoiceItem* item);
    bool savePayment(Payment* payment);
    bool savePrintScript(PrintScript* script);
    bool insertSettings(Settings* settings);
    bool updateSettings(Settings* settings);

    bool deleteProduct(int id);
    bool deleteBankAccount(int id); // only marks the account deleted
    bool deleteCustomer(int id); // only marks the customer deleted
    bool deleteInvoice(int id);
    bool deleteInvoicesBetween(int firstId, int lastId);
    bool deleteInvoiceItem(int id);
    bool deleteInvoiceItems(int invoiceId);
    bool deleteInvoiceItemsBetween(int firstInvoiceId, int lastInvoiceId);
    bool deletePayment(int id);
    bool deletePayments(int invoiceId);
    bool deletePaymentsBetween(int firstInvoiceId, int lastInvoiceId);
    bool deletePrintScript(int id);

    // The settings row of a new database and the product of interest rows.
    bool addInitialData(const QString& companyName);

    // Builds the WHERE part of the invoice queries; "%1" in each condition is
    // the table prefix. Returns whether any condition was added.
    bool buildInvoiceWhereClause(const InvoiceCriteria& criteria, QString& where,
        QVariantList& values, const QString& prefix, const QString& keyword) const;
    bool buildPaymentWhereClause(const PaymentCriteria& paymentCriteria,
        const InvoiceCriteria* invoiceCriteria, QString& where, QVariantList& values,
        const QString& prefix, const QString& keyword) const;

protected:
    bool prepareQuery(const QString& sql);
    bool execQuery();
    void bindValues(const QVariantList& values);

    virtual bool insertBankAccount(BankAccount* account);
    virtual bool insertCustomer(Customer* customer);
    virtual bool insertInvoice(Invoice* invoice);
    virtual bool insertInvoiceItem(InvoiceItem* item);
    virtual bool insertPayment(Payment* payment);
    virtual bool insertPrintScript(PrintScript* script);
    virtual bool insertProduct(Product* product);
    bool updateBankAccount(BankAccount* account);
    bool updateCustomer(Customer* customer);
    bool updateInvoice(Invoice* invoice);
    bool updateInvoiceItem(InvoiceItem* item);
    bool updatePayment(Payment* payment);
    bool updatePrintScript(PrintScript* script);
    bool updateProduct(Product* product);

    void bindBankAccount(BankAccount* account);
    void bindCustomer(Customer* customer);
    void bindInvoice(Invoice* invoice);
    void bindInvoiceItem(InvoiceItem* item);
    void bindPayment(Payment* payment);
    void bindPrintScript(PrintScript* script);
    void bindProduct(Product* product);
    void bindSettings(Settings* settings);

    // Dialect: "LIKE" and " ESCAPE '\'" in SQLite.
    virtual QString patternOperator() const;
    virtual QString escapeClause() const;

    QSqlQuery m_query;
    QString m_lastError;
    bool m_invoiceBalanceMode = false;
};

#endif // QUERY_H
