#include "domain/bankaccount.h"

#include <QtTest>

class TestIban : public QObject
{
    Q_OBJECT

private slots:
    void isValidIban_data();
    void isValidIban();
};

void TestIban::isValidIban_data()
{
    QTest::addColumn<QString>("iban");
    QTest::addColumn<bool>("valid");

    // Published example accounts of the banks and the IBAN registry.
    QTest::addRow("Finnish, machine form") << "FI2112345600000785" << true;
    QTest::addRow("Finnish, printed groups") << "FI21 1234 5600 0007 85" << true;
    QTest::addRow("Finnish, lower case") << "fi21 1234 5600 0007 85" << true;
    QTest::addRow("Finnish, savings bank") << "FI5542345670000081" << true;
    QTest::addRow("Finnish, OP") << "FI4950009420028730" << true;
    QTest::addRow("German") << "DE89 3704 0044 0532 0130 00" << true;
    QTest::addRow("British, letters in the account") << "GB82WEST12345698765432" << true;
    QTest::addRow("Norwegian, shortest") << "NO9386011117947" << true;
    QTest::addRow("French, letter inside") << "FR1420041010050500013M02606" << true;
    QTest::addRow("Swedish") << "SE4550000000058398257466" << true;
    QTest::addRow("Maltese, longest in use") << "MT84MALT011000012345MTLCAST001S" << true;

    QTest::addRow("Finnish, wrong check digits") << "FI2212345600000785" << false;
    QTest::addRow("Finnish, digit typed wrong") << "FI2112345600000786" << false;
    QTest::addRow("Finnish, two digits swapped") << "FI2112345600007085" << false;
    QTest::addRow("German, wrong check digits") << "DE88370400440532013000" << false;
    QTest::addRow("Finnish, one digit short") << "FI211234560000078" << false;
    QTest::addRow("Finnish, one digit too many") << "FI21123456000007850" << false;
    QTest::addRow("no country code") << "2112345600000785" << false;
    QTest::addRow("letters as check digits") << "FIAB12345600000785" << false;
    QTest::addRow("hyphen") << "FI21-1234-5600-0007-85" << false;
    QTest::addRow("national account only") << "123456-785" << false;
    QTest::addRow("empty") << "" << false;
    QTest::addRow("over 34 characters") << "DE89370400440532013000000000000000000" << false;
}

void TestIban::isValidIban()
{
    QFETCH(QString, iban);
    QFETCH(bool, valid);
    QCOMPARE(BankAccount::isValidIban(iban), valid);
}

QTEST_MAIN(TestIban)
#include "tst_iban.moc"
