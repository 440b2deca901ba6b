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
    void debugFilter();

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

// Debug lines are dropped unless debug is on, except those of the ws
// category; warnings always pass.
void TestFileLogger::debugFilter()
{
    qCDebug(logDatabase) << "debug probe";
    qCDebug(logWs) << "debug probe";
    qCWarning(logDatabase) << "warning probe";
    FileLogger::getInstance()->setDebugEnabled(true);
    qCDebug(logUi) << "debug probe";
    const QString log = readFile(m_logFile);
    QVERIFY(!log.contains(QStringLiteral(" DEBUG [veklari.database] debug probe\n")));
    QVERIFY(log.contains(QStringLiteral(" DEBUG [veklari.ws] debug probe\n")));
    QVERIFY(log.contains(QStringLiteral(" WARNING [veklari.database] warning probe\n")));
    QVERIFY(log.contains(QStringLiteral(" DEBUG [veklari.ui] debug probe\n")));
}

QTEST_GUILESS_MAIN(TestFileLogger)
#include "tst_filelogger.moc"
