#include "domain/invoiceitem.h"
#include "domain/vat.h"

#include <QRandomGenerator>
#include <QTest>

#include <limits>

namespace {

// Rounding half away from zero done on the decimal text, digit by digit,
// independent of the integer arithmetic under test.
long long textRound(long long value, int digits)
{
    if (digits <= 0)
        return value;
    QString text = QString::number(value);
    const bool negative = text.startsWith(QLatin1Char('-'));
    if (negative)
        text.remove(0, 1);
    if (text.size() < digits + 1)
        text.prepend(QString(digits + 1 - text.size(), QLatin1Char('0')));
    QString head = text.left(text.size() - digits);
    if (text.at(text.size() - digits) >= QLatin1Char('5')) {
        int i = head.size() - 1;
        while (i >= 0 && head.at(i) == QLatin1Char('9'))
            head[i--] = QLatin1Char('0');
        if (i < 0)
            head.prepend(QLatin1Char('1'));
        else
            head[i] = QChar(head.at(i).unicode() + 1);
    }
    return negative ? -head.toLongLong() : head.toLongLong();
}

InvoiceItem row(long long quantity, long long amount, int vatRate, bool vatExcluded)
{
    InvoiceItem item;
    item.quantity = quantity;
    item.amount = amount;
    item.vatRate = vatRate;
    item.vatExcluded = vatExcluded;
    return item;
}

// 2 x 12,50 at 24 % VAT included (2500 / 2016), 1 x 10,00 at 24 % VAT
// included (1000 / 806), 3 x 5,00 at 14 % VAT excluded (1710 / 1500) and
// 1 x 1,99 at 0 % (199 / 199).
Vat sampleBreakdown(int mode)
{
    Vat breakdown;
    breakdown.setRoundingMode(mode);
    for (const InvoiceItem& item :
        { row(20000, 125000, 2400, false), row(10000, 100000, 2400, false),
            row(30000, 50000, 1400, true), row(10000, 19900, 0, false) })
        breakdown.addInvoiceItem(&item);
    return breakdown;
}

} // namespace

class TestVat : public QObject
{
    Q_OBJECT

private slots:
    void roundMatchesTextArithmetic()
    {
        QRandomGenerator random(1000);
        for (int digits = 1; digits <= 18; ++digits) {
            for (int i = 0; i < 3000; ++i) {
                // Mix short and long values so that every digit position is hit.
                const int length = 1 + int(random.bounded(18));
                long long value = 0;
                for (int d = 0; d < length; ++d)
                    value = value * 10 + int(random.bounded(10));
                if (random.bounded(2))
                    value = -value;
                QCOMPARE(Vat::round(value, digits), textRound(value, digits));
            }
        }
        QCOMPARE(Vat::round(std::numeric_limits<qint64>::max(), 18), 9LL);
    }

    // Split so that nothing leaves 64 bits: amount = high * 10^9 + low, and
    // only low * factor / 10^9 needs rounding; addVat adds amount * rate.
    void largeAmountsExact()
    {
        for (int rate : { 0, 1000, 1400, 2400, 2550 }) {
            // 10^9 / (1 + rate), truncated, in exact integers.
            const long long factor = Q_INT64_C(10000000000000) / (10000 + rate);
            QRandomGenerator64 random(quint64(rate) + 7);
            for (long long limit :
                { qint64(1000), qint64(10000000000), qint64(1000000000000000) }) {
                for (int i = 0; i < 500; ++i) {
                    const long long amount = qint64(random.bounded(quint64(limit) + 1));
                    const long long without
                        = amount / 1000000000 * factor + textRound(amount % 1000000000 * factor, 9);
                    const long long with = amount + textRound(amount * rate, 4);
                    QCOMPARE(Vat::substractVat(amount, rate), without);
                    QCOMPARE(Vat::substractVat(-amount, rate), -without);
                    QCOMPARE(Vat::addVat(amount, rate), with);
                    QCOMPARE(Vat::addVat(-amount, rate), -with);
                }
            }
        }
    }

    void breakdown_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("rate");
        QTest::addColumn<qint64>("included");
        QTest::addColumn<qint64>("excluded");
        // Default mode: VAT taken once from each rate's VAT-included sum:
        // 3500 / 1.24 = 2822.58 -> 2823, 1710 / 1.14 = 1500.
        QTest::addRow("default 24 %%") << 0 << 2400 << qint64(3500) << qint64(2823);
        // Mode 2: the rows' own VAT-excluded totals, 2016 + 806.
        QTest::addRow("mode 2 24 %%") << 2 << 2400 << qint64(3500) << qint64(2822);
        // Totals: 5409 in all; excluded 2823 + 1500 + 199, or 2822 + 1500 + 199.
        QTest::addRow("default total") << 0 << -1 << qint64(5409) << qint64(4522);
        QTest::addRow("mode 2 total") << 2 << -1 << qint64(5409) << qint64(4521);
    }

    void breakdown()
    {
        QFETCH(int, mode);
        QFETCH(int, rate);
        const Vat b = sampleBreakdown(mode);
        QCOMPARE(b.vatRates(), QList<int>({ 0, 1400, 2400 }));
        const QList<qint64> found = rate < 0
            ? QList<qint64> { b.totalAmountVatIncluded(), b.totalAmountVatExcluded(),
                  b.totalVatAmount() }
            : QList<qint64> { b.totalAmountVatIncluded(rate), b.totalAmountVatExcluded(rate),
                  b.totalVatAmount(rate) };
        QFETCH(qint64, included);
        QFETCH(qint64, excluded);
        QCOMPARE(found, QList<qint64>({ included, excluded, included - excluded }));
    }

    void defaultModeExcludedTotalIs32Bit()
    {
        // The per-rate sum of the default mode has always been a 32-bit
        // integer: 30 000 000,00 at 0 % and 15 000 000,00 at 10 % do not fit.
        // 1500000000 * 0.909090909 = 1363636363.5, rounded up.
        Vat breakdown;
        breakdown.addVatIncludedAmount(qint64(3000000000), 0);
        breakdown.addVatIncludedAmount(qint64(1500000000), 1000);
        const long long exact = qint64(3000000000) + qint64(1363636364);
        QCOMPARE(breakdown.totalAmountVatExcluded(), exact - qint64(4294967296));
        breakdown.setRoundingMode(2);
        QCOMPARE(breakdown.totalAmountVatExcluded(), exact);
    }
};

QTEST_GUILESS_MAIN(TestVat)
#include "tst_vat.moc"
