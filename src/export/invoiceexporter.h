#ifndef INVOICEEXPORTER_H
#define INVOICEEXPORTER_H

#include "domain/invoicecriteria.h"

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>

class ECMAScriptEngine;
class FinvoiceValidator;
class InvoicePrintModel;
class PrintScriptEngine;
class Registry;
class ScriptLoader;
class XmlScriptEngine;
class XmlScriptModel;

// Writes invoices to files in one run: PDF files rendered by the invoice
// print script and Finvoice e-invoices written by the Finvoice script, each
// either one file per invoice or one file for all (named after the first
// invoice). File names come from "$" templates; a taken name gets the next
// free "-1", "-2", ... suffix, so no file is ever overwritten. Every Finvoice
// file written is checked against the official schema of its version.
//
// The window's export dialog and the command-line program share it: the
// dialog shows lastError() and the failed engine's error, the command line
// prints them.
class InvoiceExporter
{
    Q_DECLARE_TR_FUNCTIONS(InvoiceExporter)

public:
    // What to write and where. An empty directory means the user's home.
    struct Options
    {
        bool pdfEnabled = true;
        QString pdfDirectory;
        QString pdfTemplate;
        bool pdfSeparateFiles = true;
        bool finvoiceEnabled = false;
        QString finvoiceDirectory;
        QString finvoiceTemplate;
        bool finvoiceSeparateFiles = true;
        // "3.0", "2.01" or "1.3".
        QString xmlSchemaVersion;
        bool soapEnvEnabled = true;
        // Open the directories in the desktop's file manager afterwards
        // (the dialog does that; the exporter only keeps the choice).
        bool pdfOpenDirectory = true;
        bool finvoiceOpenDirectory = true;
    };

    // A schema finding in a written Finvoice file.
    struct Finding
    {
        QString fileName;
        int line = 0;
        int invoiceNumber = 0;
        QString message;
    };

    explicit InvoiceExporter(Registry* registry);
    ~InvoiceExporter();
    InvoiceExporter(const InvoiceExporter&) = delete;
    InvoiceExporter& operator=(const InvoiceExporter&) = delete;

    // The export settings of the configuration ("exportInvoicesWindow"
    // group) with their defaults, and the Finvoice version and envelope of
    // the company settings.
    Options storedOptions() const;
    // Stores the configuration's part of options (the company's Finvoice
    // settings are edited in the settings dialog).
    void storeOptions(const Options& options) const;

    // Writes the invoices that criteria find, in their number order. False
    // with lastError() on the first failure; files written before it stay
    // and are listed in writtenFiles(). A script that fails leaves no
    // half-written file behind. Schema findings do not stop the run: the
    // files stay written and the findings are listed.
    bool exportInvoices(const InvoiceCriteria& criteria, const Options& options);

    // The number of invoices the last export found.
    int invoiceCount() const { return m_invoiceCount; }
    QStringList writtenFiles() const { return m_writtenFiles; }
    QList<Finding> findings() const { return m_findings; }
    // Replaced characters and findings as the engine's warnings, for the
    // script error dialog.
    QStringList warnings() const { return m_warnings; }
    QString lastError() const { return m_lastError; }
    // The engine whose script failed (for the script error dialog); null
    // when the failure was not a script's. Lives until the next export.
    ECMAScriptEngine* failedEngine() const { return m_failedEngine; }

    // The directory an option names: the user's home when empty.
    static QString directory(const QString& path);

private:
    // A Finvoice file being written under a temporary name beside its final one.
    struct PartFile
    {
        QString fileName;
        QString partName;
    };

    bool fail(const QString& error);
    bool failScript(const QString& error, ECMAScriptEngine* engine);
    bool checkOptions(const Options& options);
    bool checkDirectory(const QString& path);
    bool checkBankAccount();
    bool prepareEngines(const Options& options);
    bool writePdf(InvoicePrintModel* model, const QString& fileName);
    bool startFinvoiceFile(const QString& fileName, PartFile* file);
    bool appendFinvoice(XmlScriptModel* model, PartFile* file);
    // Moves the file to its final name and checks it against the schema.
    bool finishFinvoiceFile(PartFile* file);
    static void discard(PartFile* file);
    void validate(const QString& fileName);

    Registry* m_registry;
    std::unique_ptr<ScriptLoader> m_loader;
    std::unique_ptr<PrintScriptEngine> m_pdfEngine;
    std::unique_ptr<XmlScriptEngine> m_xmlEngine;
    std::unique_ptr<FinvoiceValidator> m_validator;
    int m_invoiceCount = 0;
    QStringList m_writtenFiles;
    QList<Finding> m_findings;
    QStringList m_warnings;
    QString m_lastError;
    ECMAScriptEngine* m_failedEngine = nullptr;
};

#endif // INVOICEEXPORTER_H
