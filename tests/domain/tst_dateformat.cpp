#include "domain/dateformat.h"

#include <QTest>

class TestDateFormat : public QObject
{
    Q_OBJECT

private slots:
    void parse_data()
    {
        QTest::addColumn<QDate>("today");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDate>("expected");

        const QDate march3(2025, 3, 3);
        QTest::addRow("day only") << march3 << "15" << QDate(2025, 3, 15);
        QTest::addRow("eight digits") << march3 << "15032024" << QDate(2024, 3, 15);
        QTest::addRow("mixed separators") << march3 << "24.12,2025" << QDate(2025, 12, 24);
        QTest::addRow("leap day this year") << QDate(2024, 1, 10) << "29.2" << QDate(2024, 2, 29);

        const QDate invalid;
        QTest::addRow("impossible date") << march3 << "31.2.2025" << invalid;
        QTest::addRow("no leap day") << march3 << "29.2" << invalid;
        QTest::addRow("two-digit year") << march3 << "15.3.24" << invalid;
        QTest::addRow("seven digits") << march3 << "1532024" << invalid;
    }

    void parse()
    {
        QFETCH(QDate, today);
        QFETCH(QString, text);
        QFETCH(QDate, expected);
        const DateFormat format(today);
        QCOMPARE(format.parse(text), expected);
    }

    void formatParseRoundTrip()
    {
        QCOMPARE(DateFormat().format(QDate(2025, 3, 5)) + DateFormat().format(QDate()),
            QStringLiteral("5.3.2025"));
        const DateFormat format(QDate(2025, 3, 3));
        for (QDate date(2023, 1, 1); date <= QDate(2025, 12, 31); date = date.addDays(1))
            QCOMPARE(format.parse(format.format(date)), date);
    }
};

QTEST_GUILESS_MAIN(TestDateFormat)
#include "tst_dateformat.moc"
