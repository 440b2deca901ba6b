#include "core/filelogger.h"
#include "domain/logging.h"

#include <QtTest>

namespace {

QString readFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    return QString::fromUtf8(file.readAll());
}

} // namespace

class TestFileLogger : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void formatLine_data();
    void formatLine();
    void debugFilter_data();
    void debugFilter();
    void appendsToExistingFileWhileEnabled();
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
    row(QtWarningMsg, "veklari.database", "Tietokantavirhe: ei yhteyttä",
        " WARNING [veklari.database] Tietokantavirhe: ei yhteyttä");
    row(QtFatalMsg, "default", "f", " FATAL [default] f");
    row(QtWarningMsg, QByteArray(), "plain", " WARNING plain");
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
    const QDateTime logged = QDateTime::fromString(line.left(19), "yyyy-MM-ddTHH:mm:ss");
    QVERIFY(logged >= before && logged <= after);
    QCOMPARE(line.mid(19), expectedRest);
}

void TestFileLogger::debugFilter_data()
{
    QTest::addColumn<bool>("debugEnabled");
    QTest::addColumn<QString>("category");
    QTest::addColumn<bool>("logged");
    QTest::addRow("database, debug off") << false << "veklari.database" << false;
    QTest::addRow("ws, debug off") << false << "veklari.ws" << true;
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
    QFile file(fileName);
    QVERIFY(
        file.open(QIODevice::WriteOnly) && file.write("2020-01-01T00:00:00 INFO earlier line\n"));
    file.close();
    FileLogger* logger = FileLogger::getInstance();
    logger->setOutputFileName(fileName);
    logger->setEnabled(false);
    qCWarning(logUi) << "while disabled";
    logger->setEnabled(true);
    qCWarning(logUi) << "later line";

    const QStringList lines = readFile(fileName).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.value(0) + lines.value(1).mid(19) + lines.value(2),
        QStringLiteral("2020-01-01T00:00:00 INFO earlier line WARNING [veklari.ui] later line"));
    // Nothing went to the file that was in use before.
    QVERIFY(!readFile(m_logFile).contains(QStringLiteral("later line")));
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
