#include "core/filelogger.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

// Cost of one log line: formatting, the same-thread invocation of addToLog
// and the flushed write to the log file.
static void BM_LogLineToFile(benchmark::State& state)
{
    QTemporaryDir dir;
    FileLogger* logger = FileLogger::getInstance();
    logger->setEnabled(true);
    logger->setOutputFileName(dir.filePath(QStringLiteral("bench.log")));
    const QMessageLogContext context(nullptr, 0, nullptr, "veklari.database");
    const QString message = QStringLiteral(
        "Tietokantakysely: SELECT id, customer_id, type, number, date, due_date FROM invoice");
    for (auto _ : state)
        logger->messageHandler(QtDebugMsg, context, message);
    state.SetItemsProcessed(state.iterations());
    logger->setOutputFileName(QStringLiteral("-"));
    logger->setEnabled(false);
}
BENCHMARK(BM_LogLineToFile);

// A disabled logger still formats the line: the lower bound of logging.
static void BM_LogLineDisabled(benchmark::State& state)
{
    FileLogger* logger = FileLogger::getInstance();
    logger->setEnabled(false);
    const QMessageLogContext context(nullptr, 0, nullptr, "veklari.ui");
    const QString message = QStringLiteral("Haetaan laskujen tiedot");
    for (auto _ : state)
        logger->messageHandler(QtDebugMsg, context, message);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LogLineDisabled);

BENCHMARK_MAIN();
