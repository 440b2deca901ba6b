#include "domain/invoiceitem.h"

#include <QTest>

class TestInvoiceItem : public QObject
{
    Q_OBJECT

private slots:
    void amounts_data()
    {
        // quantity and unit price in 1/10000, discount and rate in 1/100 %.
        QTest::addColumn<qint64>("quantity");
        QTest::addColumn<qint64>("amount");
        QTest::addColumn<int>("discount");
        QTest::addColumn<int>("rate");
        QTest::addColumn<bool>("vatExcluded");
        QTest::addColumn<qint64>("amountVatExcluded");
        QTest::addColumn<qint64>("amountVatIncluded");
        QTest::addColumn<qint64>("unitVatExcluded");
        QTest::addColumn<qint64>("unitVatIncluded");
        QTest::addColumn<qint64>("totalVatExcluded");
        QTest::addColumn<qint64>("totalVatIncluded");
        QTest::addColumn<int>("discountAmount");

        auto row = [](const char* name, qint64 quantity, qint64 amount, int discount, int rate,
                       bool vatExcluded, qint64 amountVatExcluded, qint64 amountVatIncluded,
                       qint64 unitVatExcluded, qint64 unitVatIncluded, qint64 totalVatExcluded,
                       qint64 totalVatIncluded, int discountAmount) {
            QTest::addRow("%s", name)
                << quantity << amount << discount << rate << vatExcluded << amountVatExcluded
                << amountVatIncluded << unitVatExcluded << unitVatIncluded << totalVatExcluded
                << totalVatIncluded << discountAmount;
        };
        // The expected figures were worked out independently with exact
        // big-integer arithmetic from the rules for rows.
        row("two at 12,50 incl.", 20000, 125000, 0, 2400, false, 100800, 125000, 100800, 125000,
            2016, 2500, 0);
        // 10 % off: 22,50, the discount 2,50; 22,50 / 1,24 = 18,145 -> 18,15.
        row("with 10 % discount", 20000, 125000, 1000, 2400, false, 100800, 125000, 90700, 112500,
            1815, 2250, 250);
        row("VAT excluded 14 %", 30000, 50000, 0, 1400, true, 50000, 57000, 50000, 57000, 1500,
            1710, 0);
        // 1,2345 + 24 % = 1,53078 -> 1,5308; no trailing zeros to honour.
        row("four-decimal price", 10000, 12345, 0, 2400, true, 12345, 15308, 12345, 15308, 123, 153,
            0);
        row("half cent rounds up", 10000, 50, 0, 0, true, 50, 50, 50, 50, 1, 1, 0);
        row("25.5 % with discount", 15000, 33333, 1500, 2550, true, 33333, 41833, 28333, 35558, 425,
            533, 95);
        // 100 000 units at 100 000,00: the product quantity * price *
        // (10000 - discount) is 10^22 and does not fit in 64 bits.
        row("beyond 64-bit product", 1000000000, 1000000000, 0, 2550, false, 796812700, 1000000000,
            796812700, 1000000000, 796812749000, 1000000000000, 0);
    }

    void amounts()
    {
        QFETCH(qint64, quantity);
        QFETCH(qint64, amount);
        QFETCH(int, discount);
        QFETCH(int, rate);
        QFETCH(bool, vatExcluded);
        InvoiceItem item;
        item.quantity = quantity;
        if (vatExcluded)
            item.setAmountVatExcluded(amount);
        else
            item.setAmountVatIncluded(amount);
        QCOMPARE(item.vatExcluded, vatExcluded);
        item.discount = discount;
        item.vatRate = rate;

        QTEST(qint64(item.amountVatExcluded()), "amountVatExcluded");
        QTEST(qint64(item.amountVatIncluded()), "amountVatIncluded");
        QTEST(qint64(item.unitAmountVatExcluded()), "unitVatExcluded");
        QTEST(qint64(item.unitAmountVatIncluded()), "unitVatIncluded");
        QTEST(qint64(item.totalAmountVatExcluded()), "totalVatExcluded");
        QTEST(qint64(item.totalAmountVatIncluded()), "totalVatIncluded");
        QTEST(item.discountAmount(), "discountAmount");
    }
};

QTEST_GUILESS_MAIN(TestInvoiceItem)
#include "tst_invoiceitem.moc"
