#include "domain/decimal.h"

#include <QDebug>
#include <QMetaType>
#include <QTest>

#include <limits>

class TestDecimal : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        Decimal::registerMetaType();
        QCOMPARE(QMetaType::fromName("Decimal"), QMetaType::fromType<Decimal>());
    }

    void text_data()
    {
        QTest::addColumn<qint64>("value");
        QTest::addColumn<int>("scale");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<double>("number");
        QTest::addRow("cents") << Q_INT64_C(12345) << 2 << "123.45" << 123.45;
        QTest::addRow("below one negative") << Q_INT64_C(-5) << 2 << "-0.05" << -0.05;
        QTest::addRow("trailing zeros kept") << Q_INT64_C(1000000) << 4 << "100.0000" << 100.0;
        QTest::addRow("zero scale") << Q_INT64_C(42) << 0 << "42" << 42.0;
        QTest::addRow("smallest") << std::numeric_limits<qint64>::min() << 4
                                  << "-922337203685477.5808" << -922337203685477.5808;
    }

    // The same text through QDebug and through a QVariant, as item views
    // and scripts read it.
    void text()
    {
        QFETCH(qint64, value);
        QFETCH(int, scale);
        QFETCH(QString, expected);
        QString debugText;
        QDebug(&debugText).nospace() << Decimal(value, scale);
        QCOMPARE(debugText, expected);
        const QVariant variant = Decimal(value, scale).toVariant();
        QCOMPARE(variant.value<Decimal>(), Decimal(value, scale));
        QCOMPARE(variant.toString(), expected);
        QTEST(variant.toDouble(), "number");
    }
};

QTEST_GUILESS_MAIN(TestDecimal)
#include "tst_decimal.moc"
