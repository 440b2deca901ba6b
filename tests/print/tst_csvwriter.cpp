#include "print/csvwriter.h"

#include <QtTest>
#include <array>

// Text cells as a spreadsheet gets them: formulas made inert, numbers and telephone numbers kept.
class TestCsvWriter : public QObject
{
    Q_OBJECT

private slots:
    void formulaGuard_data();
    void formulaGuard();
};

void TestCsvWriter::formulaGuard_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("field"); // as written between the delimiters
    const QList<std::array<const char*, 3>> rows {
        { "equals", "=SUM(A1:A9)", "'=SUM(A1:A9)" },
        { "plus call", "+HYPERLINK(\"x\")", "\"'+HYPERLINK(\"\"x\"\")\"" },
        { "plus sum", "+1+1", "'+1+1" },
        { "minus command", "-2+3+cmd|' /C calc'!A0", "'-2+3+cmd|' /C calc'!A0" },
        { "minus text", "- ei toimitusta", "'- ei toimitusta" },
        { "at", "@SUM(1+1)", "'@SUM(1+1)" },
        { "tab before formula", "\t=1+1", "'\t=1+1" },
        { "carriage return before formula", "\r=1+1", "\"'\r=1+1\"" },
        { "tab before text", "\tTampere", "\tTampere" },
        { "negative amount", "-12,50", "-12,50" },
        { "negative grouped amount", "-1 234,56", "-1 234,56" },
        { "negative whole number", "-5", "-5" },
        { "date", "1.3.2025", "1.3.2025" },
        { "finnish phone", "+358 40 123 4567", "+358 40 123 4567" },
        { "british phone", "+44 20 7946 0000", "+44 20 7946 0000" },
        { "phone with area code", "+44 (0)20 7946-0000", "+44 (0)20 7946-0000" },
        { "phone and formula", "+358 40 123 4567+cmd|'/C calc'!A0",
            "'+358 40 123 4567+cmd|'/C calc'!A0" },
    };
    for (const auto& row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2]);
}

void TestCsvWriter::formulaGuard()
{
    QFETCH(QString, text);
    QFETCH(QString, field);
    CsvWriter csv(QStringLiteral(";"));
    csv.addText(QStringLiteral("A"));
    csv.addText(text);
    csv.endRow();
    QCOMPARE(csv.text(), "A;" + field + "\r\n");
}

QTEST_MAIN(TestCsvWriter)
#include "tst_csvwriter.moc"
