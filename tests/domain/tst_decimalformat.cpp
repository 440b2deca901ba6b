#include "domain/constants.h"
#include "domain/decimalformat.h"

#include <QRandomGenerator>
#include <QTest>

#include <limits>

namespace {

QLocale finnish()
{
    return QLocale(QLocale::Finnish, QLocale::Finland);
}

// Expectations are written with "_" for the group separator, "," for the
// decimal point and "-" for the sign; the locale's own characters replace
// them, so the tests follow whatever the locale data says.
QString finnishText(QString text)
{
    const QLocale locale = finnish();
    text.replace(QLatin1Char('_'), locale.groupSeparator());
    text.replace(QLatin1Char('-'), locale.negativeSign());
    return text;
}

DecimalFormat finnishFormat(int fractionDigits, int minFractionDigits)
{
    DecimalFormat format(fractionDigits, minFractionDigits);
    format.setLocale(finnish());
    return format;
}

} // namespace

class TestDecimalFormat : public QObject
{
    Q_OBJECT

private slots:
    void setLocaleTakesSeparators()
    {
        DecimalFormat format(2, 2);
        format.setDecimalPoint(QStringLiteral("#"));
        format.setLocale(finnish());
        QCOMPARE(format.decimalPoint(), QStringLiteral(","));
        QCOMPARE(format.negativeSign(), finnish().negativeSign());
        QCOMPARE(format.locale(), finnish());
    }

    void format_data()
    {
        QTest::addColumn<int>("fractionDigits");
        QTest::addColumn<int>("minFractionDigits");
        QTest::addColumn<bool>("grouping");
        QTest::addColumn<qint64>("value");
        QTest::addColumn<QString>("expected");

        QTest::addRow("price grouped") << 4 << 2 << true << Q_INT64_C(123450000) << "12_345,00";
        QTest::addRow("price negative") << 4 << 2 << true << Q_INT64_C(-25000) << "-2,50";
        QTest::addRow("price ungrouped") << 4 << 2 << false << Q_INT64_C(123450000) << "12345,00";
        QTest::addRow("quantity whole") << 4 << 0 << true << Q_INT64_C(10000) << "1";
        QTest::addRow("quantity negative fraction") << 4 << 0 << true << Q_INT64_C(-1) << "-0,0001";
        QTest::addRow("cents million")
            << 2 << 2 << true << Q_INT64_C(123456789012) << "1_234_567_890,12";
        QTest::addRow("percentage half") << 2 << 0 << true << Q_INT64_C(2550) << "25,5";
        QTest::addRow("negative digits count as none") << -3 << 0 << true << Q_INT64_C(1) << "1";
        QTest::addRow("more minimum than digits") << 2 << 4 << true << Q_INT64_C(150) << "1,50";
        QTest::addRow("smallest 64-bit")
            << 2 << 2 << true << std::numeric_limits<qint64>::min() << "-92_233_720_368_547_758,08";
        QTest::addRow("largest 64-bit")
            << 4 << 0 << false << std::numeric_limits<qint64>::max() << "922337203685477,5807";
    }

    void format()
    {
        QFETCH(int, fractionDigits);
        QFETCH(int, minFractionDigits);
        QFETCH(bool, grouping);
        QFETCH(qint64, value);
        QFETCH(QString, expected);
        DecimalFormat decimalFormat = finnishFormat(fractionDigits, minFractionDigits);
        decimalFormat.setGrouping(grouping);
        QCOMPARE(decimalFormat.format(value), finnishText(expected));
    }

    void parse_data()
    {
        QTest::addColumn<int>("fractionDigits");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<qint64>("expected");

        QTest::addRow("extra digits dropped") << 4 << "1,23456" << true << Q_INT64_C(12345);
        QTest::addRow("leading point") << 2 << ",5" << true << Q_INT64_C(50);
        QTest::addRow("letters") << 2 << "abc" << false << Q_INT64_C(0);
        QTest::addRow("integer") << 4 << "12" << true << Q_INT64_C(120000);
        QTest::addRow("point accepted too") << 4 << "1.5" << true << Q_INT64_C(15000);
        QTest::addRow("negative cents") << 2 << "-0,05" << true << Q_INT64_C(-5);
        QTest::addRow("locale minus sign")
            << 4 << QString(finnish().negativeSign() + "1,5") << true << Q_INT64_C(-15000);
        QTest::addRow("group separator rejected")
            << 2 << QString("12" + finnish().groupSeparator() + "345,00") << false << Q_INT64_C(0);
        QTest::addRow("plain space rejected") << 2 << "12 345" << false << Q_INT64_C(0);
        QTest::addRow("letter in fraction") << 2 << "1,2x" << false << Q_INT64_C(0);
        QTest::addRow("no fraction digits") << 0 << "17,9" << true << Q_INT64_C(17);
        QTest::addRow("largest 32-bit") << 0 << "2147483647" << true << Q_INT64_C(2147483647);
        QTest::addRow("beyond 32-bit integer") << 0 << "2147483648" << false << Q_INT64_C(0);
        QTest::addRow("overlong") << 2 << "99999999999999999999" << false << Q_INT64_C(0);
        // 214749 * 10000 = 2147490000 does not fit in 32 bits and wraps to
        // 2147490000 - 2^32.
        QTest::addRow("scaled beyond 32-bit wraps")
            << 4 << "214749" << true << Q_INT64_C(2147490000) - Q_INT64_C(4294967296);
    }

    void parse()
    {
        QFETCH(int, fractionDigits);
        QFETCH(QString, text);
        QFETCH(bool, ok);
        QFETCH(qint64, expected);
        const DecimalFormat format = finnishFormat(fractionDigits, 0);
        bool parsedOk = !ok;
        QCOMPARE(format.parse(text, parsedOk), expected);
        QCOMPARE(parsedOk, ok);
    }

    void parseWithPointLocale()
    {
        DecimalFormat format(2, 2);
        format.setLocale(QLocale::c());
        bool ok = false;
        QCOMPARE(format.parse(QStringLiteral("3.25"), ok), Q_INT64_C(325));
        QVERIFY(ok);
        // A comma is not a decimal point in a point locale.
        QCOMPARE(format.parse(QStringLiteral("3,25"), ok), Q_INT64_C(0));
        QVERIFY(!ok);
    }

    void roundTrip()
    {
        const QList<QPair<int, int>> scales
            = { { Constants::amountFractionDigits, Constants::amountMinFractionDigits },
                  { Constants::quantityFractionDigits, Constants::quantityMinFractionDigits },
                  { Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits },
                  { Constants::percentageFractionDigits, Constants::percentageMinFractionDigits } };
        QRandomGenerator random(20250303);
        for (const auto& scale : scales) {
            DecimalFormat format = finnishFormat(scale.first, scale.second);
            format.setGrouping(false);
            for (int i = 0; i < 2000; ++i) {
                const qint64 value = qint64(random.bounded(-2147483647, 2147483647));
                bool ok = false;
                const QString text = format.format(value);
                QCOMPARE(format.parse(text, ok), value);
                QVERIFY2(ok, qPrintable(text));
            }
        }
    }
};

QTEST_GUILESS_MAIN(TestDecimalFormat)
#include "tst_decimalformat.moc"
