#include "domain/decimal.h"

#include <QDebug>
#include <QMetaType>
#include <QTest>

#include <limits>

class TestDecimal : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { Decimal::registerMetaType(); }

    void debugOperator_data()
    {
        QTest::addColumn<qint64>("value");
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("expected");
        QTest::addRow("two decimals") << Q_INT64_C(12345) << 2 << "123.45";
        QTest::addRow("negative") << Q_INT64_C(-12345) << 2 << "-123.45";
        QTest::addRow("below one") << Q_INT64_C(5) << 2 << "0.05";
        QTest::addRow("below one negative") << Q_INT64_C(-5) << 2 << "-0.05";
        QTest::addRow("four decimals") << Q_INT64_C(7) << 4 << "0.0007";
        QTest::addRow("trailing zeros kept") << Q_INT64_C(1000000) << 4 << "100.0000";
        QTest::addRow("zero scale") << Q_INT64_C(100) << 0 << "100";
        QTest::addRow("zero") << Q_INT64_C(0) << 0 << "0";
        QTest::addRow("zero with scale") << Q_INT64_C(0) << 2 << "0.00";
        QTest::addRow("no grouping") << Q_INT64_C(123456789012) << 2 << "1234567890.12";
        QTest::addRow("smallest") << std::numeric_limits<qint64>::min() << 4
                                  << "-922337203685477.5808";
        QTest::addRow("largest") << std::numeric_limits<qint64>::max() << 0
                                 << "9223372036854775807";
    }

    void debugOperator()
    {
        QFETCH(qint64, value);
        QFETCH(int, scale);
        QFETCH(QString, expected);
        QString text;
        QDebug(&text).nospace() << Decimal(value, scale);
        QCOMPARE(text, expected);
    }

    void defaultConstructed()
    {
        const Decimal decimal;
        QCOMPARE(decimal.toLongLong(), Q_INT64_C(0));
        QCOMPARE(decimal.scale(), 0);
        QVERIFY(Decimal(1, 2) != Decimal(1, 3));
        QVERIFY(Decimal(1, 2) == Decimal(1, 2));
    }

    void variantRoundTrip()
    {
        const Decimal decimal(-123456789, 4);
        const QVariant variant = decimal.toVariant();
        QCOMPARE(variant.metaType(), QMetaType::fromType<Decimal>());
        QVERIFY(variant.canConvert<Decimal>());
        QCOMPARE(variant.value<Decimal>(), decimal);
        // A copy travels as a value, not by reference.
        QVariant copy = variant;
        copy.setValue(Decimal(1, 0));
        QCOMPARE(variant.value<Decimal>(), decimal);
    }

    void registeredByName()
    {
        const QMetaType type = QMetaType::fromName("Decimal");
        QVERIFY(type.isValid());
        QCOMPARE(type, QMetaType::fromType<Decimal>());
        // Registering twice is harmless.
        Decimal::registerMetaType();
        QCOMPARE(QMetaType::fromName("Decimal"), type);
    }

    void variantConversions_data()
    {
        QTest::addColumn<qint64>("value");
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("number");
        QTest::addRow("cents") << Q_INT64_C(12345) << 2 << "123.45" << 123.45;
        QTest::addRow("negative") << Q_INT64_C(-15) << 4 << "-0.0015" << -0.0015;
        QTest::addRow("integer") << Q_INT64_C(42) << 0 << "42" << 42.0;
    }

    void variantConversions()
    {
        QFETCH(qint64, value);
        QFETCH(int, scale);
        QFETCH(QString, text);
        QFETCH(double, number);
        const QVariant variant = Decimal(value, scale).toVariant();
        QVERIFY(variant.canConvert<QString>());
        QCOMPARE(variant.toString(), text);
        QCOMPARE(variant.toDouble(), number);
    }
};

QTEST_GUILESS_MAIN(TestDecimal)
#include "tst_decimal.moc"
