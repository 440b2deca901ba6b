#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "domain/invoice.h"
#include "faultsweep.h"
#include "invoicesession.h"
#include "storage/faultinjector.h"

#include <QProcess>
#include <QtTest>

#include <memory>

// The PostgreSQL server goes away between two statements of a save. The
// test has a server of its own (VEKLARI_PG_CLUSTER, driven by the cluster
// script), since the shared one serves the tests running beside it.
class TestServerLoss : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void serverStopsDuringSave();

private:
    bool cluster(const QString& command);
};

void TestServerLoss::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(!qEnvironmentVariableIsEmpty("VEKLARI_PG_CLUSTER"), "VEKLARI_PG_CLUSTER not set");
}

bool TestServerLoss::cluster(const QString& command)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QStringLiteral("bash"),
        { qEnvironmentVariable("VEKLARI_PG_SCRIPT"), command,
            qEnvironmentVariable("VEKLARI_PG_CLUSTER") });
    return process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

// Before each statement of the save in turn the server stops. The save
// reports the lost connection, the invoice stays in the editor with its rows
// and payment, and once the server is back nothing stored has changed (or,
// when only the reading back after the commit was cut, the whole invoice is
// stored).
void TestServerLoss::serverStopsDuringSave()
{
    std::unique_ptr<InvoiceSession> session;
    bool halted = false;
    FaultSweep sweep;
    sweep.setUp = [&] {
        session = std::make_unique<InvoiceSession>(TestDatabase::PostgreSQL);
        const bool ok = session->open() && session->startInvoice();
        if (!ok)
            qWarning() << session->lastError();
        return ok;
    };
    sweep.operation = [&](QString* error) {
        const bool ok = session->model()->saveInvoice();
        *error = session->model()->lastError();
        return ok;
    };
    sweep.inject = [&](int n) {
        FaultInjector::beforeStatement(n, [&] { halted = cluster(QStringLiteral("halt")); });
    };
    sweep.expectedError
        = [](int) { return QStringLiteral("Yhteys tietokantapalvelimeen katkesi: server closed"); };
    sweep.afterFailure = [&] {
        MainModel* model = session->model();
        const int rows = model->invoiceItemTableModel()->rowCount();
        const qint64 paid = model->paymentTableModel()->totalAmount();
        if (!halted)
            return QStringLiteral("the server was not stopped");
        // After the commit the invoice is stored and keeps its id; the
        // message says so.
        const bool stored = model->lastError().startsWith(QStringLiteral("Lasku tallennettiin"));
        if ((model->invoice()->id != -1) != stored || rows != 2 || paid != 1000)
            return QStringLiteral("the editor lost the invoice: id %1, %2 rows, %3 paid")
                .arg(model->invoice()->id)
                .arg(rows)
                .arg(paid);
        return QString();
    };
    sweep.tearDown = [&] {
        session->close();
        if (halted)
            QVERIFY(cluster(QStringLiteral("resume")));
        halted = false;
    };
    sweep.dump = [&] { return session->database().dump(); };
    QVERIFY2(sweep.run(), qPrintable(sweep.lastError()));
}

QTEST_GUILESS_MAIN(TestServerLoss)
#include "tst_serverloss.moc"
