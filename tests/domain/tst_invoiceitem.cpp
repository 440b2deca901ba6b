#include "domain/invoiceitem.h"
#include "domain/product.h"

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

        // The expected figures were worked out independently with exact
        // big-integer arithmetic from the rules for rows.
        // 2 x 12,50 incl. 24 %: 25,00 / 1,24 = 20,1613 -> 20,16; the unit
        // price without VAT 10,0806 keeps only cents like the price entered.
        QTest::addRow("two at 12,50 incl.")
            << Q_INT64_C(20000) << Q_INT64_C(125000) << 0 << 2400 << false << Q_INT64_C(100800)
            << Q_INT64_C(125000) << Q_INT64_C(100800) << Q_INT64_C(125000) << Q_INT64_C(2016)
            << Q_INT64_C(2500) << 0;
        // 10 % off: 22,50, the discount 2,50; 22,50 / 1,24 = 18,145 -> 18,15.
        QTest::addRow("with 10 %% discount")
            << Q_INT64_C(20000) << Q_INT64_C(125000) << 1000 << 2400 << false << Q_INT64_C(100800)
            << Q_INT64_C(125000) << Q_INT64_C(90700) << Q_INT64_C(112500) << Q_INT64_C(1815)
            << Q_INT64_C(2250) << 250;
        QTest::addRow("VAT excluded 14 %%")
            << Q_INT64_C(30000) << Q_INT64_C(50000) << 0 << 1400 << true << Q_INT64_C(50000)
            << Q_INT64_C(57000) << Q_INT64_C(50000) << Q_INT64_C(57000) << Q_INT64_C(1500)
            << Q_INT64_C(1710) << 0;
        // 1,2345 + 24 % = 1,53078 -> 1,5308; no trailing zeros to honour.
        QTest::addRow("four-decimal price")
            << Q_INT64_C(10000) << Q_INT64_C(12345) << 0 << 2400 << true << Q_INT64_C(12345)
            << Q_INT64_C(15308) << Q_INT64_C(12345) << Q_INT64_C(15308) << Q_INT64_C(123)
            << Q_INT64_C(153) << 0;
        QTest::addRow("credit row")
            << Q_INT64_C(-20000) << Q_INT64_C(125000) << 0 << 2400 << false << Q_INT64_C(100800)
            << Q_INT64_C(125000) << Q_INT64_C(100800) << Q_INT64_C(125000) << Q_INT64_C(-2016)
            << Q_INT64_C(-2500) << 0;
        QTest::addRow("half cent rounds up")
            << Q_INT64_C(10000) << Q_INT64_C(50) << 0 << 0 << true << Q_INT64_C(50) << Q_INT64_C(50)
            << Q_INT64_C(50) << Q_INT64_C(50) << Q_INT64_C(1) << Q_INT64_C(1) << 0;
        QTest::addRow("half cent negative") << Q_INT64_C(-10000) << Q_INT64_C(50) << 0 << 0 << true
                                            << Q_INT64_C(50) << Q_INT64_C(50) << Q_INT64_C(50)
                                            << Q_INT64_C(50) << Q_INT64_C(-1) << Q_INT64_C(-1) << 0;
        QTest::addRow("25.5 %% with discount")
            << Q_INT64_C(15000) << Q_INT64_C(33333) << 1500 << 2550 << true << Q_INT64_C(33333)
            << Q_INT64_C(41833) << Q_INT64_C(28333) << Q_INT64_C(35558) << Q_INT64_C(425)
            << Q_INT64_C(533) << 95;
        QTest::addRow("13.5 %% with discount")
            << Q_INT64_C(25000) << Q_INT64_C(19900) << 500 << 1350 << false << Q_INT64_C(17500)
            << Q_INT64_C(19900) << Q_INT64_C(16700) << Q_INT64_C(18905) << Q_INT64_C(416)
            << Q_INT64_C(473) << 25;
        QTest::addRow("full discount")
            << Q_INT64_C(10000) << Q_INT64_C(100000) << 10000 << 2400 << false << Q_INT64_C(80600)
            << Q_INT64_C(100000) << Q_INT64_C(0) << Q_INT64_C(0) << Q_INT64_C(0) << Q_INT64_C(0)
            << 1000;
        QTest::addRow("fractional quantity")
            << Q_INT64_C(12345) << Q_INT64_C(6789) << 250 << 1000 << true << Q_INT64_C(6789)
            << Q_INT64_C(7468) << Q_INT64_C(6619) << Q_INT64_C(7281) << Q_INT64_C(82)
            << Q_INT64_C(90) << 2;
        QTest::addRow("large row")
            << Q_INT64_C(10000000) << Q_INT64_C(99999999) << 0 << 2400 << false
            << Q_INT64_C(80645160) << Q_INT64_C(99999999) << Q_INT64_C(80645160)
            << Q_INT64_C(99999999) << Q_INT64_C(806451604) << Q_INT64_C(999999990) << 0;
        // 100 000 units at 100 000,00: the product quantity * price *
        // (10000 - discount) is 10^22 and does not fit in 64 bits.
        QTest::addRow("beyond 64-bit product")
            << Q_INT64_C(1000000000) << Q_INT64_C(1000000000) << 0 << 2550 << false
            << Q_INT64_C(796812700) << Q_INT64_C(1000000000) << Q_INT64_C(796812700)
            << Q_INT64_C(1000000000) << Q_INT64_C(796812749000) << Q_INT64_C(1000000000000) << 0;
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

    void fromProduct()
    {
        Product product;
        product.number = QStringLiteral("P-7");
        product.name = QStringLiteral("Suunnittelutyö");
        product.unitCode = QStringLiteral("h");
        product.amount = 800000;
        product.vatRate = 2550;
        product.vatExcluded = true;
        InvoiceItem item;
        item.quantity = 75000;
        product.toInvoiceItem(&item);
        QCOMPARE(item.productNumber, product.number);
        QCOMPARE(item.productName, product.name);
        QCOMPARE(item.unitCode, product.unitCode);
        // 7,5 h at 80,00 + 25,5 % = 600,00 + 153,00.
        QCOMPARE(item.totalAmountVatExcluded(), 60000LL);
        QCOMPARE(item.totalAmountVatIncluded(), 75300LL);
    }

    void copyIsIndependent()
    {
        InvoiceItem source;
        source.id = 11;
        source.invoiceId = 12;
        source.productNumber = QStringLiteral("A1");
        source.productName = QStringLiteral("Tuote");
        source.quantity = 30000;
        source.unitCode = QStringLiteral("kpl");
        source.amount = 123400;
        source.vatRate = 1400;
        source.vatExcluded = true;
        source.discount = 500;
        source.text = QStringLiteral("Rivin teksti");
        source.rowNumber = 4;
        InvoiceItem target;
        source.copy(&target);
        QCOMPARE(target.id, 11);
        QCOMPARE(target.invoiceId, 12);
        QCOMPARE(target.productNumber, source.productNumber);
        QCOMPARE(target.productName, source.productName);
        QCOMPARE(target.quantity, 30000LL);
        QCOMPARE(target.unitCode, source.unitCode);
        QCOMPARE(target.amount, 123400LL);
        QCOMPARE(target.vatRate, 1400);
        QCOMPARE(target.vatExcluded, true);
        QCOMPARE(target.discount, 500);
        QCOMPARE(target.text, source.text);
        QCOMPARE(target.rowNumber, 4);
        target.text.append(QStringLiteral(" muutettu"));
        target.quantity = 1;
        QCOMPARE(source.text, QStringLiteral("Rivin teksti"));
        QCOMPARE(source.quantity, 30000LL);
    }

    void defaults()
    {
        const InvoiceItem item;
        QCOMPARE(item.id, -1);
        QCOMPARE(item.invoiceId, -1);
        QCOMPARE(item.quantity, 0LL);
        QCOMPARE(item.amount, 0LL);
        QVERIFY(!item.vatExcluded);
        QCOMPARE(item.totalAmountVatIncluded(), 0LL);
        QCOMPARE(item.discountAmount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestInvoiceItem)
#include "tst_invoiceitem.moc"
