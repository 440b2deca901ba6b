#include "core/filelogger.h"
#include "core/registry.h"
#include "domain/logging.h"
#include "domain/printscript.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

namespace {

QString readFile(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? QString::fromUtf8(file.readAll())
                                                            : QString();
}

} // namespace

// The log file: its lines, its filter and the names the configuration gives
// it; the stored scripts the script loader reads through the registry.
class TestRegistry : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void formatLine_data();
    void formatLine();
    void debugFilter();
    void setupLogging_data();
    void setupLogging();
    void logFileNames_data();
    void logFileNames();
    void missingDirectories();
    void configFileName();
    void storedScripts();

private:
    QString newDirectory()
    {
        const QString path = m_dir.filePath(QString::number(++m_counter));
        QDir().mkpath(path);
        return path;
    }
    // A configuration file in the directory with the keys given.
    static QString iniWith(const QString& dir, const QVariantMap& keys)
    {
        const QString iniFile = QDir(dir).filePath(QStringLiteral("veklari.ini"));
        QSettings ini(iniFile, QSettings::IniFormat);
        for (auto it = keys.cbegin(); it != keys.cend(); ++it)
            ini.setValue(it.key(), it.value());
        return iniFile;
    }

    QTemporaryDir m_dir;
    int m_counter = 0;
};

void TestRegistry::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QCoreApplication::setApplicationName(QStringLiteral("Veklari"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VEKLARI_VERSION));
    installFileLogger();
}

void TestRegistry::formatLine_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("category");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("expectedRest");
    auto row = [](QtMsgType type, const QByteArray& category, const QString& message,
                   const QString& rest) {
        QTest::addRow("%s", qPrintable(rest)) << int(type) << category << message << rest;
    };
    row(QtDebugMsg, "veklari.ui", "Veklari 2.0", " DEBUG [veklari.ui] Veklari 2.0");
    row(QtWarningMsg, "veklari.database", "Tietokantavirhe: ei yhteyttä",
        " WARNING [veklari.database] Tietokantavirhe: ei yhteyttä");
    row(QtWarningMsg, QByteArray(), "plain", " WARNING plain");
}

void TestRegistry::formatLine()
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
void TestRegistry::debugFilter()
{
    const QString logFile = m_dir.filePath(QStringLiteral("filter.log"));
    FileLogger::getInstance()->setOutputFileName(logFile);
    FileLogger::getInstance()->setEnabled(true);
    FileLogger::getInstance()->setDebugEnabled(false);
    qCDebug(logDatabase) << "debug probe";
    qCDebug(logWs) << "debug probe";
    qCWarning(logDatabase) << "warning probe";
    FileLogger::getInstance()->setDebugEnabled(true);
    qCDebug(logUi) << "debug probe";
    const QString log = readFile(logFile);
    QVERIFY(!log.contains(QStringLiteral(" DEBUG [veklari.database] debug probe\n")));
    QVERIFY(log.contains(QStringLiteral(" DEBUG [veklari.ws] debug probe\n")));
    QVERIFY(log.contains(QStringLiteral(" WARNING [veklari.database] warning probe\n")));
    QVERIFY(log.contains(QStringLiteral(" DEBUG [veklari.ui] debug probe\n")));
}

void TestRegistry::setupLogging_data()
{
    QTest::addColumn<QVariantMap>("stored");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("debugEnabled");
    QTest::addRow("nothing stored") << QVariantMap() << true << false;
    QTest::addRow("debug on") << QVariantMap { { "logging/debugEnabled", true } } << true << true;
    QTest::addRow("disabled") << QVariantMap { { "logging/enabled", false },
        { "logging/debugEnabled", true } }
                              << false << true;
}

void TestRegistry::setupLogging()
{
    QFETCH(QVariantMap, stored);
    QFETCH(bool, enabled);
    QFETCH(bool, debugEnabled);
    const QString dir = newDirectory();
    const QString iniFile = iniWith(dir, stored);
    {
        Registry registry;
        registry.loadSettings(iniFile);
        registry.setupLogging();
        FileLogger* logger = FileLogger::getInstance();
        QCOMPARE(logger->isEnabled(), enabled);
        QCOMPARE(logger->isDebugEnabled(), debugEnabled);
        logger->setEnabled(true);
    }
    // Missing keys are written to the file itself, stored ones kept.
    QSettings written(iniFile, QSettings::IniFormat);
    QCOMPARE(written.value("logging/filename").toString()
            + written.value("logging/enabled").toString()
            + written.value("logging/debugEnabled").toString(),
        "Veklari.log" + QVariant(enabled).toString() + QVariant(debugEnabled).toString());
    // The version line goes out at debug level.
    const QString log = readFile(QDir(dir).filePath(QStringLiteral("Veklari.log")));
    QCOMPARE(log.contains(QStringLiteral(" DEBUG [veklari.ui] Veklari " VEKLARI_VERSION "\n")),
        enabled && debugEnabled);
}

void TestRegistry::logFileNames_data()
{
    // The name configured and the one used; DIR is the configuration's directory.
    QTest::addColumn<QStringList>("names");
    QTest::addRow("empty") << QStringList { "", "DIR/Veklari.log" };
    QTest::addRow("relative path") << QStringList { "../sub/x.log", "DIR/../sub/x.log" };
    QTest::addRow("absolute") << QStringList { "ABS/elsewhere.log", "ABS/elsewhere.log" };
    QTest::addRow("standard error") << QStringList { "-", "-" };
}

void TestRegistry::logFileNames()
{
    QFETCH(QStringList, names);
    QString configured = names.at(0);
    QString expected = names.at(1);
    const QString dir = newDirectory();
    const QString elsewhere = newDirectory();
    configured.replace(QStringLiteral("ABS"), elsewhere);
    expected.replace(QStringLiteral("DIR"), dir).replace(QStringLiteral("ABS"), elsewhere);
    Registry registry;
    registry.loadSettings(iniWith(dir, { { "logging/filename", configured } }));
    registry.setupLogging();
    QCOMPARE(FileLogger::getInstance()->outputFileName(), expected);
    // The configured name stays as the user wrote it.
    QCOMPARE(registry.appSettings()->value(QStringLiteral("logging/filename")).toString(),
        configured.isEmpty() ? QStringLiteral("Veklari.log") : configured);
}

// A new account may lack even the configuration directory's parent: the
// whole path is made and the first run keeps its log.
void TestRegistry::missingDirectories()
{
    const QString dir = newDirectory() + QStringLiteral("/config/Veklari");
    {
        Registry registry;
        registry.loadSettings(dir + QStringLiteral("/Veklari.ini"));
        registry.setupLogging();
        qCWarning(logUi) << "ensimmäinen ajo";
    }
    QVERIFY(readFile(dir + QStringLiteral("/Veklari.log")).contains("ensimmäinen ajo"));
}

// The file is named without making it or its directory; it is the one that
// loadSettings() then reads.
void TestRegistry::configFileName()
{
    const QString dir = newDirectory() + QStringLiteral("/puuttuu");
    const QString iniFile = dir + QStringLiteral("/oma.ini");
    QCOMPARE(Registry::configFileName(iniFile), iniFile);
    QVERIFY(!QFileInfo::exists(dir));

    const QString perUser = Registry::configFileName(QString());
    QVERIFY2(perUser.endsWith(QStringLiteral("/Veklari/Veklari.ini")), qPrintable(perUser));
    Registry registry;
    registry.loadSettings(QString());
    QCOMPARE(registry.appSettings()->fileName(), perUser);
}

// Scripts are listed by type and name, so the Finvoice "apu" comes before
// the invoice one; an empty script is empty, not missing.
void TestRegistry::storedScripts()
{
    TestDatabase database(TestDatabase::SQLite);
    QVERIFY2(database.open(), qPrintable(database.lastError()));
    Registry registry;
    QCOMPARE(registry.storedScriptSource(1), QByteArray());
    registry.setDatabase(database.database());
    std::unique_ptr<Query> query(database.database()->query());
    QMap<QString, int> ids; // "type/name"
    for (const auto& [type, name, source] : { std::array<const char*, 3> { "invoice", "apu", "1" },
             { "finvoice", "apu", "2" }, { "invoice", "tyhjä", "" } }) {
        PrintScript script;
        script.type = QLatin1String(type);
        script.name = QString::fromUtf8(name);
        script.sourceCode = QLatin1String(source);
        QVERIFY2(query->savePrintScript(&script), qPrintable(query->lastError()));
        ids.insert(script.type + QLatin1Char('/') + script.name, script.id);
    }
    QVERIFY(registry.fetchPrintScripts(query.get()));
    QCOMPARE(registry.storedScriptId(QStringLiteral("apu")), ids.value("finvoice/apu"));
    QCOMPARE(registry.storedScriptId(QStringLiteral("APU")), -1);
    QCOMPARE(registry.storedScriptSource(ids.value("invoice/apu")), QByteArray("1"));
    const QByteArray empty
        = registry.storedScriptSource(ids.value(QStringLiteral("invoice/tyhjä")));
    QVERIFY(!empty.isNull() && empty.isEmpty());
    QVERIFY(registry.storedScriptSource(9999).isNull());
    registry.setDatabase(nullptr);
}

QTEST_GUILESS_MAIN(TestRegistry)
#include "tst_registry.moc"
