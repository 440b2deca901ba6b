#include "domain/bankaccount.h"
#include "domain/invoice.h"

#include <QTest>

class TestInvoice : public QObject
{
    Q_OBJECT

private slots:
    void dueDate_data()
    {
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QString>("terms");
        QTest::addColumn<QDate>("expected");
        QTest::addRow("fourteen days")
            << QDate(2025, 3, 1) << "14 päivää netto" << QDate(2025, 3, 15);
        QTest::addRow("month end") << QDate(2025, 1, 31) << "30 pv" << QDate(2025, 3, 2);
        QTest::addRow("leap year") << QDate(2024, 2, 15) << "14" << QDate(2024, 2, 29);
        QTest::addRow("year change") << QDate(2024, 12, 20) << "21 päivää" << QDate(2025, 1, 10);
        QTest::addRow("number inside text")
            << QDate(2025, 3, 1) << "netto 7 pv, 2 % 3 pv" << QDate(2025, 3, 8);
        QTest::addRow("zero days") << QDate(2025, 3, 1) << "0 pv" << QDate(2025, 3, 1);
        QTest::addRow("leading zeros") << QDate(2025, 3, 1) << "007" << QDate(2025, 3, 8);
        QTest::addRow("no number") << QDate(2025, 3, 1) << "Käteinen" << QDate();
        QTest::addRow("empty terms") << QDate(2025, 3, 1) << "" << QDate();
        QTest::addRow("no invoice date") << QDate() << "14 pv" << QDate();
        QTest::addRow("overlong number")
            << QDate(2025, 3, 1) << "99999999999999999999 pv" << QDate();
    }

    void dueDate()
    {
        QFETCH(QDate, date);
        QFETCH(QString, terms);
        QFETCH(QDate, expected);
        Invoice invoice;
        invoice.date = date;
        invoice.paymentTerms = terms;
        const QDate due = invoice.calculateDueDate();
        QCOMPARE(due.isValid(), expected.isValid());
        if (expected.isValid())
            QCOMPARE(due, expected);
    }
};

QTEST_GUILESS_MAIN(TestInvoice)
#include "tst_invoice.moc"
