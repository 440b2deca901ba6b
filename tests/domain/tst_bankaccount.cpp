#include "domain/bankaccount.h"

#include <QTest>

namespace {

// The printed account number to the 14-digit machine form: zeros after the
// bank's six digits, or after the seventh digit for savings and cooperative
// banks (groups 4 and 5).
QString machineForm(const QString& printed)
{
    const QString bank = printed.section(QLatin1Char('-'), 0, 0);
    QString rest = printed.section(QLatin1Char('-'), 1);
    const bool afterSeventh
        = bank.startsWith(QLatin1Char('4')) || bank.startsWith(QLatin1Char('5'));
    const QString head = afterSeventh ? bank + rest.left(1) : bank;
    if (afterSeventh)
        rest.remove(0, 1);
    return head + rest.rightJustified(14 - head.size(), QLatin1Char('0'));
}

} // namespace

class TestBankAccount : public QObject
{
    Q_OBJECT

private slots:
    void isValidIban()
    {
        // Published example accounts of the banks and the IBAN registry.
        QVERIFY(BankAccount::isValidIban("fi21 1234 5600 0007 85"));
        QVERIFY(BankAccount::isValidIban("MT84MALT011000012345MTLCAST001S"));
        QVERIFY(!BankAccount::isValidIban("FIAB12345600000785"));
        QCOMPARE(BankAccount::formatIban("SE4550000000058398257466"),
            QStringLiteral("SE45 5000 0000 0583 9825 7466"));
    }

    void formatBban_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("printed");
        QTest::addRow("group 1") << "FI2112345600000785"
                                 << "123456-785";
        QTest::addRow("group 4") << "FI3840552010002345"
                                 << "405520-12345";
        QTest::addRow("group 5, short") << "FI2150000120000004"
                                        << "500001-24";
        QTest::addRow("letters unchanged") << "1234560000078X"
                                           << "1234560000078X";
    }

    void formatBban()
    {
        QFETCH(QString, input);
        QFETCH(QString, printed);
        if (input.startsWith(QLatin1String("FI"))) {
            input = BankAccount::ibanToBban(input);
            // And back: the printed number pads to the same machine form.
            QCOMPARE(machineForm(printed), input);
        }
        QCOMPARE(BankAccount::formatBban(input), printed);
        // Anything but a Finnish machine-form IBAN is left as it is.
        QCOMPARE(BankAccount::ibanToBban(printed), printed);
    }
};

QTEST_GUILESS_MAIN(TestBankAccount)
#include "tst_bankaccount.moc"
