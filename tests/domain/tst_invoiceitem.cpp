#include "domain/invoiceitem.h"

#include <QTest>

using Amounts = QList<qint64>;

class TestInvoiceItem : public QObject
{
    Q_OBJECT

private slots:
    void amounts_data()
    {
        // quantity and unit price in 1/10000, discount and rate in 1/100 %.
        QTest::addColumn<Amounts>("row"); // quantity, price, discount, rate, VAT excluded
        // The price excluding and including VAT, the unit prices after the
        // discount, the row totals in cents and the discount amount.
        QTest::addColumn<Amounts>("expected");
        // The expected figures were worked out independently with exact
        // big-integer arithmetic from the rules for rows.
        // 10 % off: 22,50, the discount 2,50; 22,50 / 1,24 = 18,145 -> 18,15.
        QTest::addRow("with 10 %% discount") << Amounts { 20000, 125000, 1000, 2400,
            0 } << Amounts { 100800, 125000, 90700, 112500, 1815, 2250, 250 };
        // 1,2345 + 24 % = 1,53078 -> 1,5308; no trailing zeros to honour.
        QTest::addRow("four-decimal price") << Amounts { 10000, 12345, 0, 2400, 1 }
                                            << Amounts { 12345, 15308, 12345, 15308, 123, 153, 0 };
        QTest::addRow("half cent rounds up")
            << Amounts { 10000, 50, 0, 0, 1 } << Amounts { 50, 50, 50, 50, 1, 1, 0 };
        QTest::addRow("25.5 %% with discount") << Amounts { 15000, 33333, 1500, 2550,
            1 } << Amounts { 33333, 41833, 28333, 35558, 425, 533, 95 };
        // 100 000 units at 100 000,00: the product quantity * price *
        // (10000 - discount) is 10^22 and does not fit in 64 bits.
        QTest::addRow("beyond 64-bit product") << Amounts { 1000000000, 1000000000, 0, 2550, 0 }
                                               << Amounts { 796812700, 1000000000, 796812700,
                                                      1000000000, 796812749000, 1000000000000, 0 };
    }

    void amounts()
    {
        QFETCH(Amounts, row);
        InvoiceItem item;
        item.quantity = row.at(0);
        if (row.at(4))
            item.setAmountVatExcluded(row.at(1));
        else
            item.setAmountVatIncluded(row.at(1));
        QCOMPARE(item.vatExcluded, bool(row.at(4)));
        item.discount = int(row.at(2));
        item.vatRate = int(row.at(3));
        QTEST(Amounts({ item.amountVatExcluded(), item.amountVatIncluded(),
                  item.unitAmountVatExcluded(), item.unitAmountVatIncluded(),
                  item.totalAmountVatExcluded(), item.totalAmountVatIncluded(),
                  item.discountAmount() }),
            "expected");
    }
};

QTEST_GUILESS_MAIN(TestInvoiceItem)
#include "tst_invoiceitem.moc"
