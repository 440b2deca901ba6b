#include "domain/referencenumber.h"

#include <QTest>

namespace {

// The 7-3-1 check digit, weights from the right.
QString withCheckDigit(const QString& base)
{
    static const int weights[] = { 7, 3, 1 };
    int sum = 0;
    for (int i = 0; i < base.size(); ++i)
        sum += base.at(base.size() - 1 - i).digitValue() * weights[i % 3];
    return base + QString::number((10 - sum % 10) % 10);
}

// ISO 11649: the reference and "RF00" (R = 27, F = 15) taken modulo 97 a
// digit at a time; the check digits are 98 minus the remainder.
QString rf(const QString& reference)
{
    int remainder = 0;
    for (const QChar c : reference + QStringLiteral("271500"))
        remainder = (remainder * 10 + c.digitValue()) % 97;
    return QStringLiteral("RF%1").arg(98 - remainder, 2, 10, QLatin1Char('0')) + reference;
}

QString withWrongLastDigit(const QString& reference)
{
    QString wrong = reference;
    wrong[wrong.size() - 1] = QChar(u'0' + (wrong.back().digitValue() + 1) % 10);
    return wrong;
}

} // namespace

class TestReferenceNumber : public QObject
{
    Q_OBJECT

private slots:
    void isValid_data()
    {
        QTest::addColumn<QString>("reference");
        QTest::addColumn<bool>("valid");
        const QString good = withCheckDigit(QStringLiteral("123456"));
        const QString longest = withCheckDigit(QStringLiteral("1234567890123456789"));
        QTest::newRow("national") << good << true;
        QTest::newRow("grouped by spaces") << good.left(2) + u' ' + good.mid(2) << true;
        QTest::newRow("wrong check digit") << withWrongLastDigit(good) << false;
        QTest::newRow("shortest") << withCheckDigit(QStringLiteral("100")) << true;
        QTest::newRow("three digits") << withCheckDigit(QStringLiteral("10")) << false;
        QTest::newRow("twenty digits") << longest << true;
        QTest::newRow("twenty-one digits") << withCheckDigit(longest) << false;
        QTest::newRow("a letter") << QStringLiteral("12A45") << false;
        QTest::newRow("a dash") << QStringLiteral("1232-3") << false;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("ISO example") << QStringLiteral("RF18 5390 0754 7034") << true;
        QTest::newRow("rf in lower case") << rf(good).toLower() << true;
        QTest::newRow("rf wrong check digits") << withWrongLastDigit(rf(good)) << false;
        QTest::newRow("rf without reference") << QStringLiteral("RF18") << false;
        QTest::newRow("rf of 26 characters")
            << rf(QStringLiteral("1234567890123456789012")) << false;
        QTest::newRow("rf of 25 characters") << rf(QStringLiteral("123456789012345678901")) << true;
    }

    void isValid()
    {
        QFETCH(QString, reference);
        QFETCH(bool, valid);
        QCOMPARE(ReferenceNumber::isValid(reference), valid);
    }

    void fromBase_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("national");
        QTest::newRow("spaces") << "4242 0324" << withCheckDigit(QStringLiteral("42420324"));
        QTest::newRow("longest") << "1234567890123456789"
                                 << withCheckDigit(QStringLiteral("1234567890123456789"));
        // As every reference the program makes: no leading zeros, three
        // digits at least.
        QTest::newRow("leading zeros") << "0042" << QStringLiteral("4200");
        QTest::newRow("twenty digits") << "12345678901234567890" << QString();
        QTest::newRow("a letter") << "12a" << QString();
        QTest::newRow("empty") << "" << QString();
    }

    void fromBase()
    {
        QFETCH(QString, base);
        QFETCH(QString, national);
        QCOMPARE(ReferenceNumber::national(base), national);
        QCOMPARE(ReferenceNumber::rf(base), national.isEmpty() ? QString() : rf(national));
        if (!national.isEmpty())
            QVERIFY(ReferenceNumber::isValid(national) && ReferenceNumber::isValid(rf(national)));
    }
};

QTEST_MAIN(TestReferenceNumber)
#include "tst_referencenumber.moc"
