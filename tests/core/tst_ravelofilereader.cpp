#include "core/ravelofilereader.h"

#include <QtTest>

namespace {

QString dataPath(const QString& name)
{
    return qEnvironmentVariable("VEKLARI_TEST_DATA") + QStringLiteral("/ravelo/") + name;
}

} // namespace

class TestRaveloFileReader : public QObject
{
    Q_OBJECT

private slots:
    void goodDirectory();
    void goodEntries_data();
    void goodEntries();
    void brokenLines();
    void brokenHeader_data();
    void brokenHeader();
    void idsAreStable();
};

void TestRaveloFileReader::goodDirectory()
{
    RaveloFileReader reader;
    QVERIFY2(
        reader.readDirectory(dataPath(QStringLiteral("good"))), qPrintable(reader.lastError()));
    QVERIFY(reader.errors().isEmpty());
    // Both "*.rvt" files, in the order of their names; the text file is not read.
    QCOMPARE(reader.entries().size(), 10);
    QCOMPARE(reader.entries().first().fileName, QStringLiteral("2026-11.rvt"));
    QCOMPARE(reader.entries().last().fileName, QStringLiteral("tunnit-lokakuu.rvt"));
}

void TestRaveloFileReader::goodEntries_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("line");
    QTest::addColumn<QDate>("date");
    QTest::addColumn<QString>("start");
    QTest::addColumn<int>("minutes");
    QTest::addColumn<QString>("customer");
    QTest::addColumn<QString>("workType");
    QTest::addColumn<QString>("description");

    // Byte-order mark, line feeds, start and end.
    const QString november = QStringLiteral("2026-11.rvt");
    QTest::addRow("first line after the header and mark")
        << november << 0 << 2 << QDate(2026, 11, 2) << "08:30" << 195 << "Pajala Oy"
        << "Ohjelmointi" << QStringLiteral("Tilausnäkymä");
    QTest::addRow("comma in the description")
        << november << 1 << 3 << QDate(2026, 11, 2) << "12:15" << 225 << "Pajala Oy"
        << "Ohjelmointi" << QStringLiteral("Tilausnäkymä, testit");
    QTest::addRow("empty description")
        << november << 4 << 6 << QDate(2026, 11, 17) << "13:00" << 20 << "Kumpulan Puutarha"
        << "Palaveri"
        << "";
    // Carriage returns, columns in another order and capitalised, a duration.
    const QString october = QStringLiteral("tunnit-lokakuu.rvt");
    QTest::addRow("duration only")
        << october << 0 << 2 << QDate(2026, 10, 30) << "" << 65 << "Pajala Oy"
        << "Ohjelmointi"
        << "Korjaus";
    QTest::addRow("after a blank line")
        << october << 2 << 5 << QDate(2026, 10, 31) << "" << 50 << "Kumpulan Puutarha"
        << "Palaveri"
        << "Puhelu";
}

void TestRaveloFileReader::goodEntries()
{
    QFETCH(QString, file);
    QFETCH(int, index);
    RaveloFileReader reader;
    QVERIFY2(
        reader.readFile(dataPath(QStringLiteral("good/") + file)), qPrintable(reader.lastError()));
    QVERIFY(index < reader.entries().size());
    const RaveloEntry& entry = reader.entries().at(index);
    QCOMPARE(entry.fileName, file);
    QTEST(entry.lineNumber, "line");
    QTEST(entry.date, "date");
    QTEST(entry.start.toString(QStringLiteral("HH:mm")), "start");
    QTEST(entry.minutes, "minutes");
    QTEST(entry.customer, "customer");
    QTEST(entry.workType, "workType");
    QTEST(entry.description, "description");
}

void TestRaveloFileReader::brokenLines()
{
    QFile expectedFile(dataPath(QStringLiteral("broken/broken.expected")));
    QVERIFY(expectedFile.open(QIODevice::ReadOnly));
    const QStringList expected
        = QString::fromUtf8(expectedFile.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);

    RaveloFileReader reader;
    QVERIFY(!reader.readFile(dataPath(QStringLiteral("broken/broken.rvt"))));
    QCOMPARE(reader.errors(), expected);
    // The good lines around the bad ones are read, so that the user sees
    // what the file holds, but nothing else.
    QCOMPARE(reader.entries().size(), 2);
    QCOMPARE(reader.entries().at(0).lineNumber, 2);
    QCOMPARE(reader.entries().at(1).lineNumber, 16);
    QCOMPARE(reader.lastError(), expected.join(QLatin1Char('\n')));
}

void TestRaveloFileReader::brokenHeader_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("errors");
    QTest::addRow("unknown column")
        << "unknown-column.rvt"
        << QStringList { "unknown-column.rvt:1: tuntematon sarake \"hinta\"" };
    QTest::addRow("neither times nor duration")
        << "no-time-columns.rvt"
        << QStringList { "no-time-columns.rvt:1: sarake \"start\" puuttuu otsikosta",
               "no-time-columns.rvt:1: sarake \"end\" puuttuu otsikosta" };
    QTest::addRow("start without end, date twice")
        << "start-without-end.rvt"
        << QStringList { "start-without-end.rvt:1: sarake \"date\" on otsikossa kahdesti",
               "start-without-end.rvt:1: sarake \"end\" puuttuu otsikosta" };
    QTest::addRow("only a mark and blank lines")
        << "empty.rvt" << QStringList { "empty.rvt:1: otsikkorivi puuttuu" };
}

void TestRaveloFileReader::brokenHeader()
{
    QFETCH(QString, file);
    RaveloFileReader reader;
    QVERIFY(!reader.readFile(dataPath(QStringLiteral("broken/") + file)));
    QTEST(reader.errors(), "errors");
    // A file whose columns are unknown gives no entries at all.
    QVERIFY(reader.entries().isEmpty());
}

void TestRaveloFileReader::idsAreStable()
{
    const QString path = dataPath(QStringLiteral("good/tunnit-lokakuu.rvt"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray data = file.readAll();
    RaveloFileReader first;
    RaveloFileReader second;
    QVERIFY(first.read(data, QStringLiteral("tunnit-lokakuu.rvt")));
    // Another directory, the same file: the same ids.
    QVERIFY(second.readFile(path));
    QStringList ids;
    for (int i = 0; i < first.entries().size(); ++i) {
        QCOMPARE(first.entries().at(i).id, second.entries().at(i).id);
        ids.append(first.entries().at(i).id);
    }
    // The same line twice is two entries with ids of their own.
    QCOMPARE(ids.size(), 3);
    QCOMPARE(QSet<QString>(ids.cbegin(), ids.cend()).size(), 3);
    QVERIFY(ids.at(0).startsWith(QStringLiteral("tunnit-lokakuu.rvt/")));
}

QTEST_GUILESS_MAIN(TestRaveloFileReader)
#include "tst_ravelofilereader.moc"
