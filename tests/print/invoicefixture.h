#ifndef INVOICEFIXTURE_H
#define INVOICEFIXTURE_H

#include "domain/invoiceitem.h"
#include "testdatabase.h"

#include <QList>
#include <QString>
#include <memory>

class Customer;
class Registry;
class XmlScriptEngine;

// A small business in a fresh database, loaded into a registry as the program does: a seller,
// two visible bank accounts and a hidden one, and two customers (the second reads Swedish).
// Call refresh() after changing stored data.
class InvoiceFixture
{
public:
    explicit InvoiceFixture(TestDatabase::Backend backend = TestDatabase::SQLite);
    ~InvoiceFixture();

    bool open();
    bool refresh();
    QString lastError() const { return m_lastError; }
    Registry* registry() const { return m_registry.get(); }
    TestDatabase* testDatabase() const { return m_database.get(); }

    // An invoice of 1.3.2025, due 15.3.2025, its totals from the rows; its id or -1. Its
    // reference is referenceNumber(number) unless one is given.
    int addInvoice(int type, const QList<InvoiceItem>& items, int number = 1001,
        int customerIndex = 0, int paid = 0, const QString& reference = QString());
    // Two VAT rates, a discount and a description-only row.
    static QList<InvoiceItem> sampleItems();
    // count rows, now and then with a text long enough to wrap.
    static QList<InvoiceItem> manyItems(int count);
    // Stores another customer; its index for addInvoice(), or -1.
    int addCustomer(Customer customer);
    // Shows the first count of the three bank accounts on invoices and hides the rest.
    bool showBankAccounts(int count);
    // An invalid value removes the key.
    bool setSetting(const QString& key, const QVariant& value);
    int addPrintScript(const QString& name, const QString& type, const QString& source);
    bool removePrintScript(int id);
    // Prints the invoice as the program does; printType 0 prints it as its own type.
    bool printInvoice(int id, const QString& fileName, int printType = 0);
    // Writes the invoice as a Finvoice file of that version as the export does, with the Finvoice
    // script unless the engine holds a script already.
    bool writeFinvoice(int id, const QString& version, const QString& fileName,
        XmlScriptEngine* engine, bool append = false, int printType = 0);
    QString referenceNumber(int number) const;

private:
    bool failed(const QString& error);

    std::unique_ptr<TestDatabase> m_database;
    std::unique_ptr<Registry> m_registry;
    QList<int> m_customerIds;
    QString m_lastError;
};

#endif // INVOICEFIXTURE_H
