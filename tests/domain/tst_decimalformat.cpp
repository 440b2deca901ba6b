#include "domain/dateformat.h"
#include "domain/decimalformat.h"

#include <QTest>

#include <limits>

namespace {

QLocale finnish()
{
    return QLocale(QLocale::Finnish, QLocale::Finland);
}

// "_" and "-" in the expectations stand for the locale's group separator and sign.
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

// Numbers in the Finnish locale and dates against an injected today.
class TestDecimalFormat : public QObject
{
    Q_OBJECT

private slots:
    void format_data()
    {
        QTest::addColumn<int>("fractionDigits");
        QTest::addColumn<int>("minFractionDigits");
        QTest::addColumn<bool>("grouping");
        QTest::addColumn<qint64>("value");
        QTest::addColumn<QString>("expected");

        QTest::addRow("price grouped") << 4 << 2 << true << Q_INT64_C(123450000) << "12_345,00";
        QTest::addRow("quantity negative fraction") << 4 << 0 << true << Q_INT64_C(-1) << "-0,0001";
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
        QTest::addRow("letters") << 2 << "abc" << false << Q_INT64_C(0);
        QTest::addRow("comma only in a comma locale") << -2 << "3,25" << false << Q_INT64_C(0);
        QTest::addRow("point accepted too") << 4 << "1.5" << true << Q_INT64_C(15000);
        QTest::addRow("locale minus sign")
            << 4 << QString(finnish().negativeSign() + "1,5") << true << Q_INT64_C(-15000);
        QTest::addRow("no fraction digits") << 0 << "17,9" << true << Q_INT64_C(17);
    }

    void parse()
    {
        QFETCH(int, fractionDigits);
        QFETCH(QString, text);
        QFETCH(bool, ok);
        QFETCH(qint64, expected);
        DecimalFormat format = finnishFormat(qAbs(fractionDigits), 0);
        if (fractionDigits < 0) // a negative count stands for the C locale
            format.setLocale(QLocale::c());
        bool parsedOk = !ok;
        QCOMPARE(format.parse(text, parsedOk), expected);
        QCOMPARE(parsedOk, ok);
    }

    // The scaled value must fit in 32 bits; beyond that a number is too large,
    // never wrapped into another one.
    void parseLimit_data()
    {
        using Status = DecimalFormat::ParseStatus;
        QTest::addColumn<int>("fractionDigits");
        QTest::addColumn<QString>("text");
        QTest::addColumn<Status>("status");
        QTest::addColumn<qint64>("expected");

        const qint64 max = Q_INT64_C(2147483647);
        QTest::addRow("price just below") << 4 << "214748,3646" << Status::Ok << max - 1;
        QTest::addRow("price at the limit") << 4 << "214748,3647" << Status::Ok << max;
        QTest::addRow("price just above") << 4 << "214748,3648" << Status::TooLarge << Q_INT64_C(0);
        QTest::addRow("price without decimals")
            << 4 << "250000" << Status::TooLarge << Q_INT64_C(0);
        QTest::addRow("negative at the limit") << 4 << "-214748,3647" << Status::Ok << -max;
        QTest::addRow("negative just above")
            << 4 << "-214748,3648" << Status::TooLarge << Q_INT64_C(0);
        QTest::addRow("cents at the limit") << 2 << "21474836.47" << Status::Ok << max;
        QTest::addRow("cents just above") << 2 << "21474836.48" << Status::TooLarge << Q_INT64_C(0);
        QTest::addRow("integer just above")
            << 0 << "2147483648" << Status::TooLarge << Q_INT64_C(0);
        QTest::addRow("beyond 64 bits")
            << 2 << "99999999999999999999,5" << Status::TooLarge << Q_INT64_C(0);
        QTest::addRow("not a number") << 2 << "99999999999x" << Status::Invalid << Q_INT64_C(0);
    }

    void parseLimit()
    {
        using Status = DecimalFormat::ParseStatus;
        QFETCH(int, fractionDigits);
        QFETCH(QString, text);
        QFETCH(Status, status);
        QFETCH(qint64, expected);
        const DecimalFormat format = finnishFormat(fractionDigits, 0);
        Status parsed = Status::Invalid;
        QCOMPARE(format.parse(text, parsed), expected);
        QCOMPARE(parsed, status);
        bool ok = status != Status::Ok;
        QCOMPARE(format.parse(text, ok), expected);
        QCOMPARE(ok, status == Status::Ok);
    }

    void dateParse_data()
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

    void dateParse()
    {
        QFETCH(QDate, today);
        QFETCH(QString, text);
        QFETCH(QDate, expected);
        const DateFormat format(today);
        QCOMPARE(format.parse(text), expected);
    }

    void dateFormatParseRoundTrip()
    {
        QCOMPARE(DateFormat().format(QDate(2025, 3, 5)) + DateFormat().format(QDate()),
            QStringLiteral("5.3.2025"));
        const DateFormat format(QDate(2025, 3, 3));
        for (QDate date(2023, 1, 1); date <= QDate(2025, 12, 31); date = date.addDays(1))
            QCOMPARE(format.parse(format.format(date)), date);
    }
};

QTEST_GUILESS_MAIN(TestDecimalFormat)
#include "tst_decimalformat.moc"
