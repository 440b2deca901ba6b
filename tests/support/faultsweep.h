#ifndef FAULTSWEEP_H
#define FAULTSWEEP_H

#include <QString>
#include <QStringList>
#include <functional>

// Makes each statement of an operation fail in turn and checks that the
// database is as it was and that the message names the failure. A run
// without faults counts the statements first; then for n = 1..count the
// database is set up afresh, the n-th statement fails and the dumps before
// and after are compared. A statement after the operation's last COMMIT
// (reading back what was saved) cannot undo the commit: there the database
// must hold the whole result of the run without faults instead.
//
//     FaultSweep sweep;
//     sweep.setUp = [&] { ... a fresh database, the operation ready ... };
//     sweep.operation = [&](QString* error) { ... false with *error on failure };
//     sweep.dump = [&] { return db->dump(); };
//     QVERIFY2(sweep.run(), qPrintable(sweep.lastError()));
class FaultSweep
{
public:
    // Prepares one run: the database in its state before the operation.
    std::function<bool()> setUp;
    // The operation under test: false with the message the user would see.
    std::function<bool(QString* error)> operation;
    // The database's contents, taken before and after each failed run.
    std::function<QStringList()> dump;
    // What else must hold after a failed run: empty when all is well, else
    // what is wrong. Called before tearDown.
    std::function<QString()> afterFailure;
    // Called after each run, before the dump (closes what the run opened).
    std::function<void()> tearDown;
    // Makes the n-th statement from now on fail; by default an injected
    // error whose text is expectedError(n).
    std::function<void(int n)> inject;
    // What the message of run n must contain.
    std::function<QString(int n)> expectedError;

    FaultSweep();
    FaultSweep(const FaultSweep&) = delete;
    FaultSweep& operator=(const FaultSweep&) = delete;
    bool run();

    // The statements of the run without faults.
    QStringList statements() const { return m_statements; }
    QString lastError() const { return m_lastError; }

private:
    bool fail(int n, const QString& what);

    QStringList m_statements;
    QStringList m_completed;
    QString m_lastError;
};

#endif // FAULTSWEEP_H
