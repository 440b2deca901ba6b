#include "core/invoicecopier.h"
#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "faultsweep.h"
#include "invoicesession.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QtTest>

#include <functional>
#include <memory>

namespace {
using M = InvoiceItemTableModel;
// Brings the session to the point just before the operation.
using Prepare = std::function<bool(InvoiceSession&)>;
// The operation: false with the message the user sees.
using Operation = std::function<bool(InvoiceSession&, QString*)>;
// What else must hold after a failure: empty, else what is wrong.
using Check = std::function<QString()>;

bool saveInvoice(InvoiceSession& session, QString* error)
{
    const bool ok = session.model()->saveInvoice();
    *error = session.model()->lastError();
    return ok;
}

// A saved invoice and two more customers to copy it to.
bool prepareCopy(InvoiceSession& session, std::unique_ptr<InvoiceCopier>* copier, QList<int>* ids)
{
    if (!session.startInvoice() || !session.model()->saveInvoice())
        return false;
    std::unique_ptr<Query> query(session.registry()->database()->query());
    ids->clear();
    for (const int number : { 2, 3 }) {
        Customer customer;
        customer.number = number;
        customer.name = QStringLiteral("Asiakas %1").arg(number);
        if (!query->saveCustomer(&customer))
            return false;
        ids->append(customer.id);
    }
    if (!session.registry()->fetchCustomers(query.get()))
        return false;
    *copier = std::make_unique<InvoiceCopier>(session.registry(), *session.model()->invoice());
    return true;
}
} // namespace

// Each statement of an operation fails in turn through the storage fault
// seam: the database stays as it was and the message names the failure.
// Another operation is one more row of the table.
class TestFaultInjection : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void everyStatementFails_data();
    void everyStatementFails();
};

void TestFaultInjection::everyStatementFails_data()
{
    QTest::addColumn<Prepare>("prepare");
    QTest::addColumn<Operation>("operation");
    // The smallest number of statements the operation must have.
    QTest::addColumn<int>("minimum");
    QTest::addColumn<Check>("afterFailure");

    QTest::addRow("new invoice with rows")
        << Prepare([](InvoiceSession& session) { return session.startInvoice(); })
        << Operation(saveInvoice) << 5 << Check();
    // A stored invoice: one row changed, one removed, one added.
    QTest::addRow("update of an invoice") << Prepare([](InvoiceSession& session) {
        if (!session.startInvoice() || !session.model()->saveInvoice())
            return false;
        M* rows = session.model()->invoiceItemTableModel();
        return session.editRow(0, { { M::QuantityColumn, "7" } }) && rows->removeRow(1)
            && session.editRow(1,
                { { M::TextColumn, "Asennus" }, { M::PriceColumn, "55" },
                    { M::QuantityColumn, "1" } });
    }) << Operation(saveInvoice) << 5 << Check();

    // Group invoicing and its undo: a failed run must leave nothing to undo
    // and a failed undo its record, or the next undo deletes the wrong ones.
    auto copier = std::make_shared<std::unique_ptr<InvoiceCopier>>();
    auto ids = std::make_shared<QList<int>>();
    QTest::addRow("group invoicing") << Prepare([=](InvoiceSession& session) {
        return prepareCopy(session, copier.get(), ids.get());
    }) << Operation([=](InvoiceSession&, QString* error) {
        const bool ok = (*copier)->createInvoices(*ids);
        *error = (*copier)->lastError();
        return ok;
    }) << 5 << Check([=] { return (*copier)->canUndo() ? "undo record kept" : QString(); });
    QTest::addRow("undo of group invoicing") << Prepare([=](InvoiceSession& session) {
        return prepareCopy(session, copier.get(), ids.get()) && (*copier)->createInvoices(*ids);
    }) << Operation([=](InvoiceSession&, QString* error) {
        const bool ok = (*copier)->undoCopy();
        *error = (*copier)->lastError();
        return ok;
    }) << 3 << Check([=] { return (*copier)->canUndo() ? QString() : "undo record lost"; });
}

void TestFaultInjection::everyStatementFails()
{
    QFETCH(Prepare, prepare);
    QFETCH(Operation, operation);
    QFETCH(int, minimum);
    QFETCH(Check, afterFailure);
    std::unique_ptr<InvoiceSession> session;
    FaultSweep sweep;
    sweep.setUp = [&] {
        session.reset();
        session = std::make_unique<InvoiceSession>(VEKLARI_TEST_BACKEND);
        const bool ok = session->open() && prepare(*session);
        if (!ok)
            qWarning() << session->lastError() << session->model()->lastError();
        return ok;
    };
    sweep.operation = [&](QString* error) { return operation(*session, error); };
    sweep.dump = [&] { return session->database().dump(); };
    sweep.afterFailure = afterFailure;
    QVERIFY2(sweep.run(), qPrintable(sweep.lastError()));
    QVERIFY2(sweep.statements().size() >= minimum, qPrintable(sweep.statements().join('\n')));
}

QTEST_GUILESS_MAIN(TestFaultInjection)
#include "tst_faultinjection.moc"
