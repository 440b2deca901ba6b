#ifndef BENCHSUPPORT_H
#define BENCHSUPPORT_H

#include "core/registry.h"
#include "storage/sqlitedatabase.h"

#include <QString>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <functional>

class Invoice;
class InvoiceItem;
class PrintScriptEngine;
class Query;
class Settings;

// A new SQLite database in a temporary directory, kept for the whole run of
// a benchmark program, with a registry on it. The program fills it once
// through create().
class BenchDatabase
{
public:
    bool ok() const { return m_ok; }
    QString error() const { return m_error; }
    SQLiteDatabase* database() { return &m_database; }
    Registry* registry() { return &m_registry; }
    QString fileName() const { return filePath(QStringLiteral("bench.sqlite")); }
    QString filePath(const QString& name) const { return m_dir.filePath(name); }

protected:
    BenchDatabase() = default;
    ~BenchDatabase();

    // Creates the database, runs fill in one transaction and reads the
    // registry's lists; ok() and error() tell how it went.
    void create(const std::function<bool(Query*)>& fill);

private:
    QTemporaryDir m_dir;
    SQLiteDatabase m_database;
    Registry m_registry;
    bool m_ok = false;
    QString m_error;
};

// The program's data, filled on first use; null after marking the benchmark
// skipped when filling failed.
template<typename Data>
Data* dataOrSkip(benchmark::State& state)
{
    Data& data = Data::instance();
    if (data.ok())
        return &data;
    state.SkipWithError(qPrintable(data.error()));
    return nullptr;
}

// Stores the invoice and its rows; the total follows the rows, and the
// balance is the total unless the invoice is paid.
bool saveInvoice(Query* query, Invoice* invoice, QList<InvoiceItem>& items, bool paid = false);

// The seller's address in the settings record, stored with one bank account;
// the caller sets its own properties on settings first.
bool saveSeller(Query* query, Settings* settings);

// Invoices numbered 1..count with 3 to 8 rows of design work at two VAT
// rates, given to the customers in turn; noticeText, when given, is the
// first notice text of each.
bool saveDesignInvoices(
    Query* query, const QList<int>& customerIds, int count, const QString& noticeText = {});

// Draws the script into an A4 PDF in memory; the PDF's size in bytes, or -1
// with the script's error.
qint64 renderToMemory(PrintScriptEngine* engine, QString* error);

// The main function of a benchmark program: Decimal registered, statement
// and script logging off as in the program by default, and a GUI
// application for the programs that paint.
int runBenchmarks(int argc, char** argv, bool gui);

#endif // BENCHSUPPORT_H
