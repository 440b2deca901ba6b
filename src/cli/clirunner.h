#ifndef CLIRUNNER_H
#define CLIRUNNER_H

#include "cli/clicommandline.h"

#include <QCoreApplication>
#include <QString>
#include <QTextStream>

#include <memory>

class Database;
class ListPrintModel;
class PrintScriptEngine;
class Registry;

// Runs one command of the command-line program against a configured
// database: reads the configuration as the window program does but never
// creates or changes it (no file, no database entry, no "lastUsed") and never
// creates a database. What the command produces goes to standard output,
// messages in Finnish to standard error.
class CliRunner
{
    Q_DECLARE_TR_FUNCTIONS(CliRunner)

public:
    // The process's exit status.
    enum ExitStatus
    {
        Success = 0,
        Failure = 1,
        UsageFailure = 2
    };

    CliRunner();
    ~CliRunner();
    CliRunner(const CliRunner&) = delete;
    CliRunner& operator=(const CliRunner&) = delete;

    // The whole program: the application object on the offscreen platform,
    // then run() with the arguments. Returns the exit status.
    static int exec(int argc, char* argv[]);

    // arguments: everything after the program name. Needs a QGuiApplication.
    int run(const QStringList& arguments);

private:
    bool openConfiguration();
    bool openDatabase();
    bool fetchData();
    int runCommand();
    int exportInvoices();
    int listInvoices();
    int writeReport();
    int importPayments();
    // The report's model with its script loaded into engine; null on failure.
    std::unique_ptr<ListPrintModel> newReport(PrintScriptEngine* engine);
    void closeDatabase();

    // "veklari-cli: message" on standard error; returns Failure.
    int fail(const QString& message);

    QTextStream m_out;
    QTextStream m_err;
    CliCommandLine m_commandLine;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<Database> m_database;
};

#endif // CLIRUNNER_H
