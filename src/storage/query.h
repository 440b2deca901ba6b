#ifndef QUERY_H
#define QUERY_H

#include <QDate>
#include <QObject>
#include <QSqlQuery>
#include <QString>
#include <QVariantList>

#include <functional>

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
    // The id and reference number of every invoice, in number order: one
    // fetch to match many payments by reference. Read the rows with next()
    // and invoiceReference().
    bool fetchInvoiceReferences();
    void invoiceReference(int* id, QString* referenceNumber);
    // Number of matching invoices, -1 on failure.
    int fetchInvoiceCount(const InvoiceCriteria& criteria);
    // Largest invoice number, 0 for an empty table, -1 on failure.
    int maxInvoiceNumber();

    // Id and properties of every invoice whose properties may hold key (the
    // text "key=" appears in them); read the rows with invoiceProperties().
    bool fetchInvoicesWithProperty(const QString& key);
    void invoiceProperties(Invoice* invoice);

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

    // Balance-at-date mode of the reports. When it is on and the criteria
    // carry a balanceDate, fetchInvoiceSummaries() and
    // fetchInvoiceDetails(criteria) read each invoice's balance as its total
    // minus the payments dated on or before that date.
    void setInvoiceBalanceMode(bool on);
    bool invoiceBalanceMode() const;
    // The sum of the payments dated on or before date of each invoice that
    // matches the criteria and has such payments, by invoice id; read the
    // rows with next() and paymentAmount().
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
    // The invoices whose ids lie in the range with their payments and rows,
    // in the order the foreign keys allow; run it inside a transaction.
    bool deleteInvoiceRange(int firstId, int lastId);
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

    bool insertBankAccount(BankAccount* account);
    bool insertCustomer(Customer* customer);
    bool insertInvoice(Invoice* invoice);
    bool insertInvoiceItem(InvoiceItem* item);
    bool insertPayment(Payment* payment);
    bool insertPrintScript(PrintScript* script);
    bool insertProduct(Product* product);
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
    // The INSERT with the dialect's new-id value in place of NULL.
    QString insertStatement(const QString& sql, const QString& table) const;
    // The id expression of an INSERT into table ("NULL" in SQLite) and the
    // id the INSERT just made; -1 when it cannot be read.
    virtual QString newIdValue(const QString& table) const;
    virtual int insertedId(const QString& table);

    bool fetchInvoices(const QString& select, const InvoiceCriteria& criteria);
    bool fail();
    bool runStatement(const QString& sql, const QVariantList& values);
    // Prepares the statement, lets bind add the record's values and runs it;
    // an insert stores the new id, an update binds the id for its WHERE.
    bool insertRecord(
        const QString& table, const QString& sql, const std::function<void()>& bind, int* id);
    bool updateRecord(const QString& sql, const std::function<void()>& bind, int id);
    void readPayment(Payment* payment, int first);

    QSqlQuery m_query;
    QString m_lastError;
    bool m_invoiceBalanceMode = false;
};

#endif // QUERY_H
