#ifndef MAINMODEL_H
#define MAINMODEL_H

#include "domain/invoice.h"
#include "domain/invoicecriteria.h"

#include <QDate>
#include <QObject>
#include <QString>

#include <functional>

class QAbstractItemModel;
class QSortFilterProxyModel;
class InterestOnArrearsTableModel;
class InvoiceItemTableModel;
class InvoiceTableModel;
class PaymentTableModel;
class Product;
class Query;
class Registry;

// The non-visual core behind the main window: opens the configured database,
// loads its reference data into the registry, keeps the invoice list of the
// active search and the one invoice being shown or edited with its rows and
// payments, numbers new invoices and saves or removes the current invoice in
// one transaction. Failures are reported by return value with the text in
// lastError().
class MainModel : public QObject
{
    Q_OBJECT
public:
    // The id of a removed invoice.
    static constexpr int removedInvoiceId = 2147483647;

    explicit MainModel(Registry* registry, QObject* parent = nullptr);
    ~MainModel() override;

    // Opens entry `index` of the configured databases. Returns 0 when opened,
    // -1 when the open failed, -2 when the database does not exist (open
    // again with create = true to create it) and -3 when the database
    // driver is missing. The registry is connected in every case, so a
    // failed open is followed by closeDatabase(). The saved search of the
    // registry's database number becomes active.
    int openDatabase(int index, bool create);
    // The database or file that openDatabase() found missing (status -2).
    QString missingDatabaseName() const { return m_missingDatabaseName; }
    bool closeDatabase();
    // Company settings, customers, products, bank accounts, print scripts
    // and then the invoice list.
    bool fetchData();

    QString lastError() const { return m_lastError; }

    InvoiceTableModel* invoiceTableModel() const { return m_invoiceTableModel; }
    // The list as the invoice list widget shows it; sortable by every column.
    QSortFilterProxyModel* invoiceProxyModel() const { return m_invoiceProxyModel; }
    InvoiceItemTableModel* invoiceItemTableModel() const { return m_invoiceItemTableModel; }
    PaymentTableModel* paymentTableModel() const { return m_paymentTableModel; }
    // Late invoices collected for an interest invoice.
    InterestOnArrearsTableModel* interestTableModel() const { return m_interestTableModel; }

    int invoiceCount() const;
    Invoice* invoice() { return &m_invoice; }
    // Row of the current invoice in the invoice list, -1 when it has none.
    int invoiceIndex() const { return m_invoiceIndex; }
    bool isEditable() const { return m_editable; }
    // Passed on to the row and payment models.
    void setEditable(bool editable);
    int lastInvoiceId() const { return m_lastInvoiceId; }
    void setLastInvoiceId(int id) { m_lastInvoiceId = id; }

    // Loads the invoice of list row `index` with its rows and payments; it
    // is editable only when it is the last invoice id.
    bool goToInvoice(int index);
    // Starts a new, editable invoice. Returns the highest invoice number in
    // the database (the new one is one more), negative on failure.
    int createInvoice();
    // Starts a new invoice as createInvoice() does, with what the current
    // one has to give: its customer (and the customer's reference number),
    // its payment terms and the due date they give, delivery, references,
    // interest, notice texts, attributes and rows.
    int createInvoiceCopy();
    // A payment of what is still open to the company's default bank
    // account, waiting for its date. Returns its row.
    int addPayment();
    // 1 when no invoice has the number, 0 when one has, -1 on failure.
    int isValidNumber(int number);
    // Gives the current invoice another number, with the reference number
    // that follows from it, also in the invoice's list row.
    void setInvoiceNumber(int number);
    // The invoice, its rows and its payments in one transaction. A new
    // invoice becomes the last invoice id and is looked up in the list.
    bool saveInvoice();
    // The invoice, its rows and its payments in one transaction; an invoice
    // never saved touches no database. Either way its id becomes
    // removedInvoiceId, its rows and payments are cleared and invoiceIndex()
    // becomes -1 (read it before when going to a neighbour afterwards).
    bool removeInvoice();
    // The company settings record of the registry, in one transaction.
    bool saveSettings();
    // Stores the invoice's reference number as its customer's own; false on
    // a database failure or without a customer.
    bool saveReferenceNumber();

    // Total from the rows and balance = total - payments; both also shown in
    // the invoice's list row.
    void updateTotalAmount();
    void updateBalance();
    // Terms without a number of days keep the current due date.
    void calculateDueDate();
    // The company template expanded for this invoice, with its check digit.
    QString buildReferenceNumber0() const;
    // The customer's own reference number; empty when there is none.
    QString buildReferenceNumber1() const;
    // Reference number and, with a known customer, the notice texts "t1"/"t2".
    void updateReferenceNumber();

    // Appends the current invoice's interest on arrears to the interest
    // table: the open balance of each period between the due date, the
    // payments and today, at the invoice's rate over a 365-day year.
    void calculateInterestOnArrears();
    // One row of product for each row of the interest table, after the
    // current invoice's rows.
    void addInterestRows(const Product* product);
    // Starts a new interest invoice to the interest table's customer, with
    // that customer's payment terms and the interest rows of product.
    // Returns what createInvoice() returns.
    int createInterestInvoice(const Product* product);

    // Quick searches: 0 the latest 100, 1 due today or later, 2 open,
    // 3 dated today, 4 the current invoice's customer; others list all.
    void setupQuickSearchCriteria(int n);
    // Makes the search criteria active, stores them and refreshes the list.
    bool search();
    bool quickSearch(int n);
    // Runs the active search again and finds the current invoice's row.
    bool refresh();
    // The active search of the current database in the configuration file.
    void loadCriteria();
    void saveCriteria();
    int currentQuickSearch() const { return m_currentQuickSearch; }

    // The criteria of the search dialog.
    InvoiceCriteria* criteria() { return &m_criteria; }
    // The criteria whose result the invoice list shows.
    InvoiceCriteria* lastCriteria() const { return m_lastCriteria; }

    // The date of new invoices and of the quick searches; a null date means
    // the current date.
    QDate today() const;
    void setToday(const QDate& today) { m_today = today; }

private:
    bool loadInvoiceList(Query* query);
    bool runInTransaction(Query* query, const std::function<bool()>& work);

    Registry* m_registry;
    InvoiceTableModel* m_invoiceTableModel;
    QSortFilterProxyModel* m_invoiceProxyModel;
    InvoiceItemTableModel* m_invoiceItemTableModel;
    PaymentTableModel* m_paymentTableModel;
    InterestOnArrearsTableModel* m_interestTableModel;
    QString m_lastError;
    QString m_missingDatabaseName;
    Invoice m_invoice;
    int m_invoiceIndex = -1;
    int m_lastInvoiceId = -1;
    bool m_editable = false;
    InvoiceCriteria m_criteria;
    InvoiceCriteria m_quickSearchCriteria;
    InvoiceCriteria* m_lastCriteria;
    int m_currentQuickSearch = -1;
    QDate m_today;
};

#endif // MAINMODEL_H
