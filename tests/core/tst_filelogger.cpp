#include "core/filelogger.h"
#include "domain/logging.h"

#include <QtTest>

#include <cstdio>
#include <unistd.h>

namespace {

QString readFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    return QString::fromUtf8(file.readAll());
}

// Sends everything written to file descriptor 2 into a file while alive.
class StandardErrorCapture
{
public:
    explicit StandardErrorCapture(const QString& fileName) : m_fileName(fileName)
    {
        std::fflush(stderr);
        m_savedFd = ::dup(2);
        FILE* file = std::fopen(QFile::encodeName(fileName).constData(), "w");
        ::dup2(::fileno(file), 2);
        std::fclose(file);
    }
    ~StandardErrorCapture() { restore(); }

    QString finish()
    {
        restore();
        return readFile(m_fileName);
    }

private:
    void restore()
    {
        if (m_savedFd < 0)
            return;
        std::fflush(stderr);
        ::dup2(m_savedFd, 2);
        ::close(m_savedFd);
        m_savedFd = -1;
    }

    QString m_fileName;
    int m_savedFd = -1;
};

} // namespace

class TestFileLogger : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void formatLine_data();
    void formatLine();
    void plainWarningShowsDefaultCategory();
    void debugFilter_data();
    void debugFilter();
    void appendsToExistingFileWhileEnabled();
    void dashWritesToStandardError();
    void unopenableFileDoesNotStopTheProgram();
    void messagesFromOtherThreadsAreQueued();

private:
    QTemporaryDir m_dir;
    QString m_logFile;
    int m_counter = 0;
};

void TestFileLogger::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    installFileLogger();
}

void TestFileLogger::init()
{
    m_logFile = m_dir.filePath(QStringLiteral("log-%1.log").arg(++m_counter));
    FileLogger* logger = FileLogger::getInstance();
    logger->setEnabled(true);
    logger->setDebugEnabled(false);
    logger->setOutputFileName(m_logFile);
    QCOMPARE(logger->outputFileName(), m_logFile);
}

void TestFileLogger::formatLine_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("category");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("expectedRest");
    auto row = [](QtMsgType type, const QByteArray& category, const QString& message,
                   const QString& rest) {
        QTest::addRow("%s", qPrintable(rest)) << int(type) << category << message << rest;
    };
    row(QtDebugMsg, "veklari.ui", "Veklari 1.28.1", " DEBUG [veklari.ui] Veklari 1.28.1");
    row(QtInfoMsg, "veklari.script", "x", " INFO [veklari.script] x");
    row(QtWarningMsg, "veklari.database", "Tietokantavirhe: ei yhteyttä",
        " WARNING [veklari.database] Tietokantavirhe: ei yhteyttä");
    row(QtCriticalMsg, "veklari.ws", "c", " CRITICAL [veklari.ws] c");
    row(QtFatalMsg, "default", "f", " FATAL [default] f");
    row(QtWarningMsg, QByteArray(), "plain", " WARNING plain");
    row(QtDebugMsg, "veklari.ui", "", " DEBUG [veklari.ui] ");
}

void TestFileLogger::formatLine()
{
    QFETCH(int, type);
    QFETCH(QByteArray, category);
    QFETCH(QString, message);
    QFETCH(QString, expectedRest);

    const QMessageLogContext context(
        nullptr, 0, nullptr, category.isNull() ? nullptr : category.constData());
    const QDateTime before = QDateTime::currentDateTime().addMSecs(-1000);
    const QString line = FileLogger::formatLine(QtMsgType(type), context, message);
    const QDateTime after = QDateTime::currentDateTime();

    // "2024-03-01T14:05:09": local time to the second, no zone.
    QCOMPARE(line.size(), 19 + expectedRest.size());
    const QString stamp = line.left(19);
    QVERIFY2(QRegularExpression(QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d$"))
                 .match(stamp)
                 .hasMatch(),
        qPrintable(stamp));
    const QDateTime logged = QDateTime::fromString(stamp, Qt::ISODate);
    QVERIFY(logged >= before && logged <= after);
    QCOMPARE(line.mid(19), expectedRest);
}

void TestFileLogger::plainWarningShowsDefaultCategory()
{
    qWarning("plain warning %d", 42);
    const QString log = readFile(m_logFile);
    QVERIFY2(
        log.contains(QStringLiteral(" WARNING [default] plain warning 42\n")), qPrintable(log));
}

void TestFileLogger::debugFilter_data()
{
    QTest::addColumn<bool>("debugEnabled");
    QTest::addColumn<QString>("category");
    QTest::addColumn<bool>("logged");
    QTest::addRow("database, debug off") << false << "veklari.database" << false;
    QTest::addRow("script, debug off") << false << "veklari.script" << false;
    QTest::addRow("ws, debug off") << false << "veklari.ws" << true;
    QTest::addRow("ui, debug on") << true << "veklari.ui" << true;
}

void TestFileLogger::debugFilter()
{
    QFETCH(bool, debugEnabled);
    QFETCH(QString, category);
    QFETCH(bool, logged);

    FileLogger::getInstance()->setDebugEnabled(debugEnabled);
    QCOMPARE(FileLogger::getInstance()->isDebugEnabled(), debugEnabled);

    const QLoggingCategory* target = nullptr;
    for (const QLoggingCategory* c : { &logDatabase(), &logUi(), &logScript(), &logWs() }) {
        if (QLatin1String(c->categoryName()) == category)
            target = c;
    }
    QVERIFY(target);
    qCDebug(*target) << "debug probe";
    qCWarning(*target) << "warning probe";

    const QString log = readFile(m_logFile);
    const QString debugLine = QStringLiteral(" DEBUG [%1] debug probe\n").arg(category);
    QCOMPARE(log.contains(debugLine), logged);
    // Warnings pass whatever the debug setting.
    QVERIFY(log.contains(QStringLiteral(" WARNING [%1] warning probe\n").arg(category)));
}

void TestFileLogger::appendsToExistingFileWhileEnabled()
{
    const QString fileName = m_dir.filePath(QStringLiteral("existing.log"));
    {
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("2020-01-01T00:00:00 INFO earlier line\n");
    }
    FileLogger* logger = FileLogger::getInstance();
    logger->setOutputFileName(fileName);
    logger->setEnabled(false);
    qCWarning(logUi) << "while disabled";
    logger->setEnabled(true);
    qCWarning(logUi) << "later line";

    const QStringList lines = readFile(fileName).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 2);
    QCOMPARE(lines.at(0), QStringLiteral("2020-01-01T00:00:00 INFO earlier line"));
    QVERIFY(lines.at(1).endsWith(QStringLiteral(" WARNING [veklari.ui] later line")));
    // Nothing went to the file that was in use before.
    QVERIFY(!readFile(m_logFile).contains(QStringLiteral("later line")));
}

void TestFileLogger::dashWritesToStandardError()
{
    StandardErrorCapture capture(m_dir.filePath(QStringLiteral("stderr-dash.txt")));
    FileLogger::getInstance()->setOutputFileName(QStringLiteral("-"));
    QCOMPARE(FileLogger::getInstance()->outputFileName(), QStringLiteral("-"));
    qCWarning(logDatabase) << "to standard error";
    const QString captured = capture.finish();

    QVERIFY2(captured.contains(QStringLiteral(" WARNING [veklari.database] to standard error\n")),
        qPrintable(captured));
    QVERIFY(!readFile(m_logFile).contains(QStringLiteral("to standard error")));
    QVERIFY(!QFile::exists(QStringLiteral("-")));
}

void TestFileLogger::unopenableFileDoesNotStopTheProgram()
{
    const QString fileName = m_dir.filePath(QStringLiteral("missing/dir/x.log"));
    StandardErrorCapture capture(m_dir.filePath(QStringLiteral("stderr-missing.txt")));
    FileLogger::getInstance()->setOutputFileName(fileName);
    qCWarning(logUi) << "lost line";
    const QString captured = capture.finish();

    QCOMPARE(FileLogger::getInstance()->outputFileName(), fileName);
    QVERIFY(!QFile::exists(fileName));
    // Neither the file's error nor later lines reach standard error.
    QVERIFY2(captured.isEmpty(), qPrintable(captured));

    // A working file name later brings the log back.
    FileLogger::getInstance()->setOutputFileName(m_logFile);
    qCWarning(logUi) << "found line";
    QVERIFY(readFile(m_logFile).contains(QStringLiteral("found line")));
}

void TestFileLogger::messagesFromOtherThreadsAreQueued()
{
    QThread* thread = QThread::create([] { qCWarning(logDatabase) << "from a worker"; });
    thread->start();
    QVERIFY(thread->wait(10000));
    delete thread;

    // Written only once the logger's own thread gets to it.
    QVERIFY(!readFile(m_logFile).contains(QStringLiteral("from a worker")));
    QTRY_VERIFY(readFile(m_logFile).contains(
        QStringLiteral(" WARNING [veklari.database] from a worker\n")));
}

QTEST_GUILESS_MAIN(TestFileLogger)
#include "tst_filelogger.moc"
