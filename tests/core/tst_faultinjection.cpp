#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "domain/invoice.h"
#include "faultsweep.h"
#include "invoicesession.h"

#include <QtTest>

#include <functional>
#include <memory>

namespace {
using M = InvoiceItemTableModel;
// Brings the session to the point just before the operation.
using Prepare = std::function<bool(InvoiceSession&)>;
// The operation: false with the message the user sees.
using Operation = std::function<bool(InvoiceSession&, QString*)>;

bool saveInvoice(InvoiceSession& session, QString* error)
{
    const bool ok = session.model()->saveInvoice();
    *error = session.model()->lastError();
    return ok;
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

    QTest::addRow("new invoice with rows")
        << Prepare([](InvoiceSession& session) { return session.startInvoice(); })
        << Operation(saveInvoice) << 5;
    // A stored invoice: one row changed, one removed, one added.
    QTest::addRow("update of an invoice") << Prepare([](InvoiceSession& session) {
        if (!session.startInvoice() || !session.model()->saveInvoice())
            return false;
        M* rows = session.model()->invoiceItemTableModel();
        return session.editRow(0, { { M::QuantityColumn, "7" } }) && rows->removeRow(1)
            && session.editRow(1,
                { { M::TextColumn, "Asennus" }, { M::PriceColumn, "55" },
                    { M::QuantityColumn, "1" } });
    }) << Operation(saveInvoice) << 5;
}

void TestFaultInjection::everyStatementFails()
{
    QFETCH(Prepare, prepare);
    QFETCH(Operation, operation);
    QFETCH(int, minimum);
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
    QVERIFY2(sweep.run(), qPrintable(sweep.lastError()));
    QVERIFY2(sweep.statements().size() >= minimum, qPrintable(sweep.statements().join('\n')));
}

QTEST_GUILESS_MAIN(TestFaultInjection)
#include "tst_faultinjection.moc"
