#ifndef CLICOMMANDLINE_H
#define CLICOMMANDLINE_H

#include "domain/invoicecriteria.h"

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

// The arguments of the command-line program:
// "veklari-cli [-c CONFIG] [-d NUMBER] COMMAND [OPTIONS]", and its help texts.
// The global options come before the command, the command's own after it;
// "--help" after a command asks for that command's help.
class CliCommandLine
{
    Q_DECLARE_TR_FUNCTIONS(CliCommandLine)

public:
    enum Command
    {
        NoCommand,
        ExportFinvoice,
        ExportPdf,
        ListInvoices,
        ImportPayments,
        ReportInvoices,
        ReportPayments,
        ReportCustomers,
        ReportProducts
    };

    // What the arguments ask for.
    enum Action
    {
        RunCommand,
        ShowHelp,
        ShowVersion,
        UsageError
    };

    // arguments: everything after the program name. Starts afresh; on a
    // usage error lastError() tells what was wrong.
    Action parse(const QStringList& arguments);

    Action action() const { return m_action; }
    QString lastError() const { return m_lastError; }
    // The word whose help was asked for ("export", "list", "report"); empty
    // for the program's.
    QString helpTopic() const { return m_helpTopic; }

    // Empty without -c.
    QString configFile() const { return m_configFile; }
    // -1 without -d: the database used last.
    int databaseNumber() const { return m_databaseNumber; }
    Command command() const { return m_command; }

    // Export: the invoice numbers asked for (all invoices when empty) and
    // the choices that replace the stored export settings when given.
    QList<InvoiceCriteria::NumberRange> invoiceNumbers() const { return m_invoiceNumbers; }
    QString schemaVersion() const { return m_schemaVersion; }
    bool noSoapEnvelope() const { return m_noSoapEnvelope; }
    QString directory() const { return m_directory; }
    QString fileTemplate() const { return m_fileTemplate; }
    bool singleFile() const { return m_singleFile; }

    // The invoice list as CSV instead of a table.
    bool csv() const { return m_csv; }

    // Payment import: the bank file, whether only to show the matches, which
    // date a payment gets (the stored choice unless given), the account to
    // save to and whether a file saved before is saved again.
    enum ImportDate
    {
        StoredDate,
        EntryDate,
        PaymentDate
    };
    QString paymentFile() const { return m_paymentFile; }
    bool dryRun() const { return m_dryRun; }
    ImportDate importDate() const { return m_importDate; }
    QString account() const { return m_account; }
    bool force() const { return m_force; }

    // Reports: exactly one of the two files is set.
    QString pdfFile() const { return m_pdfFile; }
    QString csvFile() const { return m_csvFile; }
    bool landscape() const { return m_landscape; }

    // "1001-1010,1015": numbers and ranges separated by commas, blanks
    // around them allowed. False for an empty item, a number that is not
    // one and a range that runs backwards.
    static bool parseInvoiceNumbers(
        const QString& text, QList<InvoiceCriteria::NumberRange>* ranges);

    static QString programName();
    static QString version();
    static QString usage();
    // The help of a command word, or of the whole program for any other.
    static QString help(const QString& topic);

private:
    bool parseGlobalOptions(const QStringList& arguments, int* next);
    bool parseCommand(const QStringList& arguments, int* next);
    bool parseCommandOptions(const QStringList& arguments, int next);
    bool fail(const QString& error);

    Action m_action = UsageError;
    QString m_lastError;
    QString m_helpTopic;
    QString m_configFile;
    int m_databaseNumber = -1;
    Command m_command = NoCommand;
    QString m_commandName;
    QList<InvoiceCriteria::NumberRange> m_invoiceNumbers;
    QString m_schemaVersion;
    bool m_noSoapEnvelope = false;
    QString m_directory;
    QString m_fileTemplate;
    bool m_singleFile = false;
    bool m_csv = false;
    QString m_pdfFile;
    QString m_csvFile;
    bool m_landscape = false;
    QString m_paymentFile;
    bool m_dryRun = false;
    ImportDate m_importDate = StoredDate;
    QString m_account;
    bool m_force = false;
};

#endif // CLICOMMANDLINE_H
