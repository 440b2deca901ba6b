#include "core/commandline.h"

#include <QtTest>

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void parse_data();
    void parse();
};

void TestCommandLine::parse_data()
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

void TestCommandLine::parse()
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

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
