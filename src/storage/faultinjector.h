#ifndef FAULTINJECTOR_H
#define FAULTINJECTOR_H

#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <functional>

// A test hook that makes one database statement fail, to test what callers do
// on failure (rollbacks, messages). Every statement of the storage room runs
// through SqlStatement, which asks check() before executing; the transaction
// steps count as the statements "BEGIN", "COMMIT" and "ROLLBACK".
//
// An injected failure behaves like one from the server: the statement is not
// executed, "Tietokantavirhe:" and the error text are logged as a warning, and
// the query's or database's lastError() is the given text. A fault fires once
// and is then gone. Only tests set it; with nothing set and nothing recorded,
// check() is two tests of a flag.
//
//     FaultInjector::failMatching(QRegularExpression("^UPDATE settings"), "levy täynnä");
//     QVERIFY(!database->open(entry));   // the upgrade's version update fails
//     QVERIFY(!FaultInjector::isPending());
//     FaultInjector::clear();
class FaultInjector
{
public:
    // The n-th statement from now on (1 = the next one) fails with error.
    static void failStatement(int n, const QString& error);
    // The first statement from now on whose SQL text matches fails with error.
    static void failMatching(const QRegularExpression& pattern, const QString& error);
    // Runs action just before the n-th statement from now on, which then runs
    // as usual (a test stops the database server there).
    static void beforeStatement(int n, const std::function<void()>& action);
    // Removes a fault that has not fired yet.
    static void clear();

    // Keeps the SQL of every statement from now on, faulty ones included, so
    // that a test can count the statements of an operation.
    static void startRecording();
    // The statements since startRecording(); stops recording.
    static QStringList stopRecording();
    // Whether a fault is set and has not fired yet.
    static bool isPending();

    // Called with each statement before it runs: true (with the error text)
    // when this statement is to fail.
    static bool check(const QString& sql, QString* error);

    FaultInjector() = delete;
};

#endif // FAULTINJECTOR_H
