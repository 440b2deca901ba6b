#include <QtSql>
#include <QtTest>

// Runs the veklari program itself.
class TestProgram : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void usageError_data();
    void usageError();
    void startsOnNewSQLiteDatabase_data();
    void startsOnNewSQLiteDatabase();

private:
    QProcessEnvironment environment(const QString& home) const;

    QTemporaryDir m_dir;
    int m_counter = 0;
};

void TestProgram::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QVERIFY2(QFileInfo(QStringLiteral(VEKLARI_EXECUTABLE)).isExecutable(), VEKLARI_EXECUTABLE);
}

QProcessEnvironment TestProgram::environment(const QString& home) const
{
    // The per-user configuration is pointed into the test's own directory.
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), QDir(home).filePath(QStringLiteral("config")));
    env.remove(QStringLiteral("QT_LOGGING_RULES"));
    return env;
}

void TestProgram::usageError_data()
{
    QTest::addColumn<QStringList>("arguments");

    QTest::addRow("two numbers") << QStringList { "1", "2" };
    QTest::addRow("-c without file") << QStringList { "-c" };
}

void TestProgram::usageError()
{
    QFETCH(QStringList, arguments);

    const QString home = m_dir.filePath(QStringLiteral("home-%1").arg(++m_counter));
    QVERIFY(QDir().mkpath(home));
    QProcess process;
    process.setProcessEnvironment(environment(home));
    process.setWorkingDirectory(home);
    process.start(QStringLiteral(VEKLARI_EXECUTABLE), arguments);
    QVERIFY(process.waitForFinished(30000));

    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 255);
    const QStringList lines = QString::fromUtf8(process.readAllStandardError())
                                  .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QVERIFY(lines.contains(QStringLiteral("Usage: veklari [-c CONFIG] [NUMBER]")));
    QVERIFY(process.readAllStandardOutput().isEmpty());
    // It stopped before reading any configuration.
    QVERIFY(QDir(home).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).isEmpty());
}

void TestProgram::startsOnNewSQLiteDatabase_data()
{
    QTest::addColumn<bool>("debugEnabled");
    QTest::addRow("debug on") << true;
    QTest::addRow("debug off") << false;
}

void TestProgram::startsOnNewSQLiteDatabase()
{
    QFETCH(bool, debugEnabled);

    const QString home = m_dir.filePath(QStringLiteral("home-%1").arg(++m_counter));
    const QDir dir(m_dir.filePath(QStringLiteral("conf-%1").arg(m_counter)));
    QVERIFY(QDir().mkpath(home));
    QVERIFY(QDir().mkpath(dir.path()));
    const QString iniFile = dir.filePath(QStringLiteral("veklari.ini"));
    {
        QSettings ini(iniFile, QSettings::IniFormat);
        ini.setValue(QStringLiteral("logging/debugEnabled"), debugEnabled);
    }

    QProcess process;
    process.setProcessEnvironment(environment(home));
    process.setWorkingDirectory(home);
    process.start(QStringLiteral(VEKLARI_EXECUTABLE), { QStringLiteral("-c"), iniFile });
    QVERIFY(process.waitForStarted(30000));

    // The last-used number is written once the database is open and loaded.
    auto startedUp = [&] {
        QSettings ini(iniFile, QSettings::IniFormat);
        return ini.value(QStringLiteral("databases/lastUsed")).toInt() == 1;
    };
    QTRY_VERIFY_WITH_TIMEOUT(startedUp() || process.state() == QProcess::NotRunning, 60000);
    QCOMPARE(process.state(), QProcess::Running);

    QFile logFile(dir.filePath(QStringLiteral("Veklari.log")));
    QString log;
    if (logFile.open(QIODevice::ReadOnly | QIODevice::Text))
        log = QString::fromUtf8(logFile.readAll());
    process.terminate();
    if (!process.waitForFinished(10000)) {
        process.kill();
        process.waitForFinished(10000);
    }

    const QRegularExpression versionLine(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d DEBUG \\[veklari\\.ui\\] "
                       "Veklari 1\\.28\\.1$"),
        QRegularExpression::MultilineOption);
    QCOMPARE(versionLine.match(log).hasMatch(), debugEnabled);
    QCOMPARE(log.contains(QStringLiteral(" DEBUG [veklari.ui] Haetaan laskujen tiedot\n")),
        debugEnabled);
    QVERIFY2(!log.contains(QStringLiteral(" WARNING [veklari.")), qPrintable(log));
    // The configuration went nowhere else.
    QVERIFY(!QFileInfo::exists(QDir(home).filePath(QStringLiteral("config/Veklari"))));

    // A new database at the current schema version beside the INI file.
    const QString fileName = dir.filePath(QStringLiteral("laskutus.sqlite"));
    QVERIFY(QFileInfo::exists(fileName));
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(
            QStringLiteral("QSQLITE"), QStringLiteral("check-%1").arg(m_counter));
        db.setDatabaseName(fileName);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        QVERIFY(db.open());
        QSqlQuery query(db);
        QVERIFY(query.exec(QStringLiteral("SELECT version FROM settings")));
        QVERIFY(query.next());
        QCOMPARE(query.value(0).toInt(), 10);
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("check-%1").arg(m_counter));
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
