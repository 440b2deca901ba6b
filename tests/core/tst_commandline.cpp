#include "core/commandline.h"

#include <QtTest>

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void parse_data();
    void parse();
    void parseResetsEarlierState();
};

void TestCommandLine::parse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("configFile");

    const QStringList none;
    QTest::addRow("no arguments") << none << true << -1 << QString();
    QTest::addRow("number") << QStringList { "2" } << true << 2 << QString();
    QTest::addRow("leading zero") << QStringList { "07" } << true << 7 << QString();
    QTest::addRow("plus sign") << QStringList { "+4" } << true << 4 << QString();
    QTest::addRow("not a number") << QStringList { "abc" } << true << 0 << QString();
    QTest::addRow("hexadecimal is not read") << QStringList { "0x10" } << true << 0 << QString();
    QTest::addRow("empty argument") << QStringList { "" } << true << 0 << QString();
    QTest::addRow("largest int") << QStringList { "2147483647" } << true << 2147483647 << QString();
    QTest::addRow("above int range") << QStringList { "2147483648" } << true << 0 << QString();
    QTest::addRow("below int range") << QStringList { "-2147483649" } << true << 0 << QString();
    QTest::addRow("far out of range")
        << QStringList { "99999999999999999999" } << true << 0 << QString();
    QTest::addRow("negative number") << QStringList { "-5" } << true << -5 << QString();
    // A negative NUMBER still counts as "none given", so another may follow.
    QTest::addRow("negative then number") << QStringList { "-5", "3" } << true << 3 << QString();
    QTest::addRow("two numbers") << QStringList { "1", "2" } << false << 1 << QString();
    QTest::addRow("zero then number") << QStringList { "0", "1" } << false << 0 << QString();
    QTest::addRow("text then number") << QStringList { "abc", "4" } << false << 0 << QString();
    QTest::addRow("-c alone") << QStringList { "-c" } << false << -1 << QString();
    QTest::addRow("-c last after number") << QStringList { "1", "-c" } << false << 1 << QString();
    QTest::addRow("-c file") << QStringList { "-c", "/tmp/x.ini" } << true << 0 << "/tmp/x.ini";
    QTest::addRow("-c numeric file") << QStringList { "-c", "5" } << true << 5 << "5";
    QTest::addRow("-c file then number")
        << QStringList { "-c", "/tmp/x.ini", "3" } << false << 0 << "/tmp/x.ini";
    QTest::addRow("number then -c file")
        << QStringList { "3", "-c", "/tmp/x.ini" } << false << 3 << "/tmp/x.ini";
    QTest::addRow("-c twice") << QStringList { "-c", "a.ini", "-c", "b.ini" } << false << 0
                              << "b.ini";
    QTest::addRow("-C is not the option") << QStringList { "-C" } << true << 0 << QString();
}

void TestCommandLine::parse()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, ok);
    QFETCH(int, number);
    QFETCH(QString, configFile);

    CommandLine commandLine;
    QCOMPARE(commandLine.parse(arguments), ok);
    QCOMPARE(commandLine.isOk(), ok);
    QCOMPARE(commandLine.number(), number);
    QCOMPARE(commandLine.configFile(), configFile);
}

void TestCommandLine::parseResetsEarlierState()
{
    CommandLine commandLine;
    QVERIFY(!commandLine.parse({ "1", "2" }));
    QVERIFY(commandLine.parse({}));
    QCOMPARE(commandLine.number(), -1);
    QVERIFY(commandLine.configFile().isEmpty());
    QVERIFY(commandLine.isOk());
    QCOMPARE(CommandLine::usage(), QStringLiteral("Usage: veklari [-c CONFIG] [NUMBER]"));
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
