#include "print/csvwriter.h"

#include <QtTest>

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

    QTest::addRow("equals") << "=SUM(A1:A9)"
                            << "'=SUM(A1:A9)";
    QTest::addRow("plus call") << "+HYPERLINK(\"http://x\")"
                               << "\"'+HYPERLINK(\"\"http://x\"\")\"";
    QTest::addRow("plus sum") << "+1+1"
                              << "'+1+1";
    QTest::addRow("minus command") << "-2+3+cmd|' /C calc'!A0"
                                   << "'-2+3+cmd|' /C calc'!A0";
    QTest::addRow("minus text") << "- ei toimitusta"
                                << "'- ei toimitusta";
    QTest::addRow("at") << "@SUM(1+1)"
                        << "'@SUM(1+1)";
    QTest::addRow("tab before formula") << "\t=1+1"
                                        << "'\t=1+1";
    QTest::addRow("carriage return before formula") << "\r=1+1"
                                                    << "\"'\r=1+1\"";
    QTest::addRow("tab before text") << "\tTampere"
                                     << "\tTampere";
    QTest::addRow("negative amount") << "-12,50"
                                     << "-12,50";
    QTest::addRow("negative grouped amount") << "-1 234,56"
                                             << "-1 234,56";
    QTest::addRow("negative whole number") << "-5"
                                           << "-5";
    QTest::addRow("date") << "1.3.2025"
                          << "1.3.2025";
    QTest::addRow("finnish phone") << "+358 40 123 4567"
                                   << "+358 40 123 4567";
    QTest::addRow("british phone") << "+44 20 7946 0000"
                                   << "+44 20 7946 0000";
    QTest::addRow("phone with area code and hyphen") << "+44 (0)20 7946-0000"
                                                     << "+44 (0)20 7946-0000";
    QTest::addRow("phone followed by a formula") << "+358 40 123 4567+cmd|'/C calc'!A0"
                                                 << "'+358 40 123 4567+cmd|'/C calc'!A0";
    QTest::addRow("plain text") << "Kuusela Design Oy"
                                << "Kuusela Design Oy";
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
