#include "faultsweep.h"

#include "storage/faultinjector.h"

FaultSweep::FaultSweep()
{
    expectedError = [](int n) { return QStringLiteral("Levy täynnä kohdassa %1").arg(n); };
    inject = [this](int n) { FaultInjector::failStatement(n, expectedError(n)); };
}

bool FaultSweep::run()
{
    m_lastError.clear();
    if (!setUp()) {
        m_lastError = QStringLiteral("set-up failed");
        return false;
    }
    QString error;
    FaultInjector::startRecording();
    const bool ok = operation(&error);
    m_statements = FaultInjector::stopRecording();
    if (tearDown)
        tearDown();
    m_completed = dump();
    const int lastCommit = m_statements.lastIndexOf(QStringLiteral("COMMIT")) + 1;
    if (!ok) {
        m_lastError = QStringLiteral("the run without faults failed: ") + error;
        return false;
    }
    if (m_statements.isEmpty()) {
        m_lastError = QStringLiteral("the operation ran no statement");
        return false;
    }

    for (int n = 1; n <= m_statements.size(); ++n) {
        if (!setUp())
            return fail(n, QStringLiteral("set-up failed"));
        const QStringList before = dump();
        error.clear();
        inject(n);
        const bool succeeded = operation(&error);
        const bool fired = !FaultInjector::isPending();
        FaultInjector::clear();
        const QString wrong = afterFailure && !succeeded ? afterFailure() : QString();
        if (tearDown)
            tearDown();
        if (!fired)
            return fail(n, QStringLiteral("the statement was not reached"));
        if (succeeded)
            return fail(n, QStringLiteral("the operation reported success"));
        if (!wrong.isEmpty())
            return fail(n, wrong);
        if (!error.contains(expectedError(n)))
            return fail(n, QStringLiteral("the message does not name the failure: ") + error);
        const QStringList after = dump();
        const QStringList& expected = n > lastCommit && lastCommit > 0 ? m_completed : before;
        if (after != expected) {
            QString changed;
            for (const QString& line : after) {
                if (!expected.contains(line))
                    changed += QStringLiteral("\n+ ") + line;
            }
            for (const QString& line : expected) {
                if (!after.contains(line))
                    changed += QStringLiteral("\n- ") + line;
            }
            return fail(n,
                (&expected == &before ? QStringLiteral("the database changed:")
                                      : QStringLiteral("the committed result changed:"))
                    + changed);
        }
    }
    return true;
}

bool FaultSweep::fail(int n, const QString& what)
{
    m_lastError = QStringLiteral("statement %1 of %2 (%3): %4")
                      .arg(n)
                      .arg(m_statements.size())
                      .arg(m_statements.value(n - 1), what);
    return false;
}
