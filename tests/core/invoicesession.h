#ifndef INVOICESESSION_H
#define INVOICESESSION_H

#include "core/invoiceitemtablemodel.h"
#include "testdatabase.h"

#include <QDate>
#include <QPair>
#include <QTemporaryDir>
#include <memory>

class MainModel;
class Registry;

// The program's main model on a fresh test database, opened the way the
// program opens a configured database, with a customer and two products.
class InvoiceSession
{
public:
    using Cells = QList<QPair<int, QString>>;

    explicit InvoiceSession(TestDatabase::Backend backend);
    ~InvoiceSession();

    bool open();
    void close();
    // Edits of a row as column-text pairs, inserting the row when it is new.
    bool editRow(int row, const Cells& cells);
    // A new invoice for the customer with a row of each product and a payment.
    bool startInvoice();

    TestDatabase& database() { return m_db; }
    MainModel* model() const { return m_model.get(); }
    Registry* registry() const { return m_registry.get(); }
    int customerId() const { return m_customerId; }
    QString lastError() const { return m_lastError; }

    static const QDate today;

private:
    QTemporaryDir m_dir;
    TestDatabase m_db;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<MainModel> m_model;
    int m_customerId = -1;
    QString m_lastError;
};

#endif // INVOICESESSION_H
