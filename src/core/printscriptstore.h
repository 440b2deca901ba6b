#ifndef PRINTSCRIPTSTORE_H
#define PRINTSCRIPTSTORE_H

#include <QCoreApplication>
#include <QString>

class PrintScript;
class Registry;

// Stores and removes the print scripts of the open database together with
// the company setting that names the default invoice layout
// ("printScripts/invoice"), each change in one transaction: the script and
// the setting are stored both or neither. On success the registry's list of
// scripts is fetched again; on failure its settings record is as before and
// the text is in lastError().
class PrintScriptStore
{
    Q_DECLARE_TR_FUNCTIONS(PrintScriptStore)
public:
    explicit PrintScriptStore(Registry* registry);

    // The stored script that invoices are printed with; -1 for the
    // built-in layout.
    int defaultInvoiceScriptId() const;

    // The stored script of that name with its source; *found tells whether
    // there is one. False with lastError() when it cannot be read.
    bool fetch(const QString& name, PrintScript* script, bool* found);

    // Inserts a new script (giving it its id) or updates a stored one. An
    // invoice layout becomes the default or stops being it as makeDefault
    // says; other kinds of script leave the setting alone.
    bool save(PrintScript* script, bool makeDefault);
    // Removing the default layout brings the built-in one back.
    bool remove(int id);

    QString lastError() const { return m_lastError; }

private:
    // Runs work between begin and commit; rolls back and puts the setting
    // back on any failure.
    template<typename Work>
    bool inTransaction(Work work);

    Registry* m_registry;
    QString m_lastError;
};

#endif // PRINTSCRIPTSTORE_H
