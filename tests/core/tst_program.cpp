#include "core/commandline.h"

#include <QtTest>

// The command line, and the veklari program itself run with its configuration
// pointed into the test's own directory.
class TestProgram : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void parse_data();
    void parse();
    void usageError();
    void startsOnNewSQLiteDatabase();

private:
    QString start(QProcess& process, const QStringList& arguments);

    QTemporaryDir m_dir;
    int m_counter = 0;
};

void TestProgram::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

// Starts the program in a new home directory, which it returns.
QString TestProgram::start(QProcess& process, const QStringList& arguments)
{
    const QString home = m_dir.filePath(QStringLiteral("home-%1").arg(++m_counter));
    QDir().mkpath(home);
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    env.remove(QStringLiteral("QT_LOGGING_RULES"));
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(home);
    process.start(QStringLiteral(VEKLARI_EXECUTABLE), arguments);
    return home;
}

void TestProgram::parse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("configFile");
    auto row = [](const char* name, const QStringList& arguments, bool ok, int number,
                   const QString& configFile = QString()) {
        QTest::addRow("%s", name) << arguments << ok << number << configFile;
    };
    row("no arguments", {}, true, -1);
    row("number", { "+07" }, true, 7);
    row("above int range", { "2147483648" }, true, 0);
    // A negative NUMBER still counts as "none given", so another may follow.
    row("negative then number", { "-5", "3" }, true, 3);
    row("two numbers", { "1", "2" }, false, 1);
    row("-c alone", { "-c" }, false, -1);
    row("-c numeric file", { "-c", "5" }, true, 5, "5");
    row("-c file then number", { "-c", "/tmp/x.ini", "3" }, false, 0, "/tmp/x.ini");
    row("-C is not the option", { "-C" }, true, 0);
}

void TestProgram::parse()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, ok);
    QFETCH(int, number);
    QFETCH(QString, configFile);

    // A parse starts afresh.
    CommandLine commandLine;
    commandLine.parse({ "-c", "old.ini", "1", "2" });
    QCOMPARE(commandLine.parse(arguments), ok);
    QCOMPARE(commandLine.isOk(), ok);
    QCOMPARE(commandLine.number(), number);
    QCOMPARE(commandLine.configFile(), configFile);
}

void TestProgram::usageError()
{
    QProcess process;
    const QString home = start(process, { QStringLiteral("1"), QStringLiteral("2") });
    QVERIFY(process.waitForFinished(30000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 255);
    QVERIFY(QString::fromUtf8(process.readAllStandardError())
                .split(QLatin1Char('\n'))
                .contains(QStringLiteral("Usage: veklari [-c CONFIG] [NUMBER]")));
    // It stopped before reading any configuration.
    QVERIFY(QDir(home).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).isEmpty());
}

void TestProgram::startsOnNewSQLiteDatabase()
{
    const QDir dir(m_dir.filePath(QStringLiteral("conf")));
    QVERIFY(QDir().mkpath(dir.path()));
    const QString iniFile = dir.filePath(QStringLiteral("veklari.ini"));
    QSettings(iniFile, QSettings::IniFormat).setValue("logging/debugEnabled", true);

    QProcess process;
    const QString home = start(process, { QStringLiteral("-c"), iniFile });
    // The last-used number is written once the database is open and loaded.
    QTRY_VERIFY_WITH_TIMEOUT(
        QSettings(iniFile, QSettings::IniFormat).value("databases/lastUsed").toInt() == 1
            || process.state() == QProcess::NotRunning,
        60000);
    QCOMPARE(process.state(), QProcess::Running);
    QFile logFile(dir.filePath(QStringLiteral("Veklari.log")));
    QVERIFY(logFile.open(QIODevice::ReadOnly | QIODevice::Text));
    const QString log = QString::fromUtf8(logFile.readAll());
    process.terminate();
    if (!process.waitForFinished(10000))
        process.kill();
    process.waitForFinished(10000);

    QVERIFY2(log.contains(QStringLiteral(" DEBUG [veklari.ui] Veklari " VEKLARI_VERSION "\n"))
            && log.contains(QStringLiteral(" DEBUG [veklari.ui] Haetaan laskujen tiedot\n")),
        qPrintable(log));
    QVERIFY2(!log.contains(QStringLiteral(" WARNING [veklari.")), qPrintable(log));
    // The configuration went nowhere else; the new database lies beside it.
    QVERIFY(!QFileInfo::exists(home + QStringLiteral("/config/Veklari")));
    QVERIFY(QFileInfo::exists(dir.filePath(QStringLiteral("laskutus.sqlite"))));
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
