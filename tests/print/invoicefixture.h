#ifndef INVOICEFIXTURE_H
#define INVOICEFIXTURE_H

#include "domain/invoiceitem.h"
#include "testdatabase.h"

#include <QDate>
#include <QList>
#include <QString>
#include <memory>

class Registry;

// A small real business in a fresh database (SQLite unless asked
// otherwise), loaded into a registry the way the program does it: a seller
// with address, contact data and business id, two visible bank accounts and
// a hidden one, and two customers. Call refresh() after changing stored data.
class InvoiceFixture
{
public:
    explicit InvoiceFixture(TestDatabase::Backend backend = TestDatabase::SQLite);
    ~InvoiceFixture();

    bool open();
    QString lastError() const { return m_lastError; }
    Registry* registry() const { return m_registry.get(); }
    TestDatabase* testDatabase() const { return m_database.get(); }

    // Stores an invoice of 1.3.2025, due 15.3.2025, with these rows; totals
    // and balance follow the rows. Returns its id, -1 on failure.
    int addInvoice(int type, const QList<InvoiceItem>& items, int number = 1001,
        int customerIndex = 0, int paid = 0);
    // Two VAT rates, a discount and a description-only row.
    static QList<InvoiceItem> sampleItems();
    // count rows with texts long enough to wrap now and then.
    static QList<InvoiceItem> manyItems(int count);

    // The seller's logo (image file bytes; empty removes it).
    bool setLogo(const QByteArray& image);
    bool setSetting(const QString& key, const QVariant& value);
    // Stores a print script; returns its id.
    int addPrintScript(const QString& name, const QString& type, const QString& source);
    bool refresh();
    // Prints the stored invoice as the program does into a PDF file;
    // printType 0 prints it as its own type.
    bool printInvoice(int id, const QString& fileName, int printType = 0);

    QString referenceNumber(int number) const;

private:
    bool storeSettings();

    std::unique_ptr<TestDatabase> m_database;
    std::unique_ptr<Registry> m_registry;
    QList<int> m_customerIds;
    QString m_lastError;
};

#endif // INVOICEFIXTURE_H
