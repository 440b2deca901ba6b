#include "core/databaselist.h"

#include <QSettings>
#include <QtTest>

class TestDatabaseList : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void read_data();
    void read();
    void changesAreWrittenBack();
    void defaultEntryOfEmptyList();

private:
    // A configuration file of the lines given, read afresh.
    std::unique_ptr<QSettings> configuration(const QString& lines);

    QTemporaryDir m_dir;
    QString m_file;
    int m_counter = 0;
};

void TestDatabaseList::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestDatabaseList::init()
{
    m_file = m_dir.filePath(QStringLiteral("veklari-%1.ini").arg(++m_counter));
}

std::unique_ptr<QSettings> TestDatabaseList::configuration(const QString& lines)
{
    QFile file(m_file);
    if (!lines.isNull()) {
        if (!file.open(QIODevice::WriteOnly))
            return nullptr;
        file.write(lines.toUtf8());
        file.close();
    }
    return std::make_unique<QSettings>(m_file, QSettings::IniFormat);
}

void TestDatabaseList::read_data()
{
    QTest::addColumn<QString>("ini");
    // "number name" of each entry, then the number of its group.
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<int>("lastUsed");

    const QString entries = QStringLiteral("settings\\1\\number=4\nsettings\\1\\name=Alpha\n"
                                           "settings\\2\\number=7\n"
                                           "settings\\2\\filename=/data/beta.sqlite\n"
                                           "settings\\3\\number=9\nsettings\\3\\type=PostgreSQL\n"
                                           "settings\\3\\databaseName=gamma\n");
    const QStringList all = { "4 Alpha 1", "7 beta 2", "9 gamma 3" };
    QTest::newRow("with size") << "[databases]\nlastUsed=7\nsettings\\size=3\n" + entries << all
                               << 7;
    QTest::newRow("without size") << "[databases]\n" + entries << all << -1;
    QTest::newRow("stale groups past the size")
        << "[databases]\nsettings\\size=2\n" + entries << all.mid(0, 2) << -1;
    QTest::newRow("gap without size")
        << "[databases]\nsettings\\1\\number=1\nsettings\\3\\number=3\n"
        << QStringList { "1  1", "3  3" } << -1;
    QTest::newRow("gap with size")
        << "[databases]\nsettings\\size=3\nsettings\\1\\number=1\nsettings\\3\\number=3\n"
        << QStringList { "1  1", "3  3" } << -1;
    QTest::newRow("numbered past nine")
        << "[databases]\nsettings\\10\\number=10\nsettings\\2\\number=2\nsettings\\1\\number=1\n"
        << QStringList { "1  1", "2  2", "10  10" } << -1;
    QTest::newRow("empty") << QString("") << QStringList() << -1;
    QTest::newRow("only the last used") << "[databases]\nlastUsed=3\nsettings\\size=0\n"
                                        << QStringList() << 3;
}

void TestDatabaseList::read()
{
    QFETCH(QString, ini);
    QFETCH(QStringList, entries);
    QFETCH(int, lastUsed);

    const std::unique_ptr<QSettings> settings = configuration(ini);
    const DatabaseList list(settings.get());
    QStringList found;
    for (int i = 0; i < list.count(); ++i) {
        const DatabaseList::Entry entry = list.entry(i);
        // The group is where a back-end finds the entry's keys.
        settings->beginGroup(list.group(i));
        const int number = settings->value(QStringLiteral("number")).toInt();
        settings->endGroup();
        QCOMPARE(number, DatabaseList::number(entry));
        found.append(QStringLiteral("%1 %2 %3")
                         .arg(number)
                         .arg(DatabaseList::displayName(entry), list.group(i).section('/', -1)));
    }
    QCOMPARE(found, entries);
    QCOMPARE(list.lastUsed(), lastUsed);
    QCOMPARE(list.indexOfNumber(entries.isEmpty() ? 1 : entries.last().section(' ', 0, 0).toInt()),
        int(entries.size()) - 1);
}

void TestDatabaseList::changesAreWrittenBack()
{
    std::unique_ptr<QSettings> settings
        = configuration(QStringLiteral("[databases]\nlastUsed=3\n"
                                       "settings\\1\\number=1\nsettings\\1\\filename=/a.sqlite\n"
                                       "settings\\3\\number=3\nsettings\\3\\type=postgresql\n"
                                       "settings\\3\\sslmode=require\n"));
    DatabaseList list(settings.get());
    QCOMPARE(list.count(), 2);
    list.remove(0);
    const DatabaseList::Entry added = list.newEntry();
    QCOMPARE(DatabaseList::number(added), 4);
    QCOMPARE(added.value(QStringLiteral("filename")).toString(),
        m_dir.filePath(QStringLiteral("laskutus-4.sqlite")));
    QCOMPARE(list.add(added), 1);
    QCOMPARE(list.indexOfNumber(1), -1);
    list.setLastUsed(4);
    list.write();
    settings.reset();

    settings = configuration(QString());
    const DatabaseList reread(settings.get());
    QCOMPARE(reread.count(), 2);
    QCOMPARE(settings->value(QStringLiteral("databases/settings/size")).toInt(), 2);
    QCOMPARE(settings->childGroups(), QStringList { QStringLiteral("databases") });
    settings->beginGroup(QStringLiteral("databases/settings"));
    QCOMPARE(settings->childGroups(), QStringList({ "1", "2" }));
    settings->endGroup();
    // A key of a later version stays with its entry.
    QCOMPARE(
        reread.entry(0).value(QStringLiteral("sslmode")).toString(), QStringLiteral("require"));
    QVERIFY(DatabaseList::isPostgreSQL(reread.entry(0)));
    QCOMPARE(DatabaseList::number(reread.entry(1)), 4);
    QCOMPARE(reread.entry(1).value(QStringLiteral("filename")), added.value("filename"));
    QCOMPARE(reread.lastUsed(), 4);
}

void TestDatabaseList::defaultEntryOfEmptyList()
{
    std::unique_ptr<QSettings> settings
        = configuration(QStringLiteral("[databases]\nlastUsed=2\n"));
    DatabaseList list(settings.get());
    QCOMPARE(list.addDefault(), 1);
    settings.reset();
    settings = configuration(QString());
    const DatabaseList reread(settings.get());
    QCOMPARE(reread.count(), 1);
    QVERIFY(!DatabaseList::isPostgreSQL(reread.entry(0)));
    QCOMPARE(reread.entry(0).value(QStringLiteral("filename")).toString(),
        m_dir.filePath(QStringLiteral("laskutus.sqlite")));
    QCOMPARE(DatabaseList::displayName(reread.entry(0)), QStringLiteral("laskutus"));
}

QTEST_MAIN(TestDatabaseList)
#include "tst_databaselist.moc"
