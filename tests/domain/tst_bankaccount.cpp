#include "domain/bankaccount.h"

#include <QTest>

namespace {

// IBAN check: the first four characters moved to the end, letters as two
// digits (A = 10), the whole number modulo 97 is 1. Keeps the test accounts
// real.
bool ibanChecksOut(const QString& iban)
{
    const QString moved = iban.mid(4) + iban.left(4);
    int remainder = 0;
    for (const QChar c : moved) {
        if (c.isDigit())
            remainder = (remainder * 10 + c.digitValue()) % 97;
        else
            remainder = (remainder * 100 + c.unicode() - 'A' + 10) % 97;
    }
    return remainder == 1;
}

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
    void isValidIban_data()
    {
        QTest::addColumn<QString>("iban");
        QTest::addColumn<bool>("valid");
        // Published example accounts of the banks and the IBAN registry.
        QTest::addRow("Finnish, printed groups, lower case") << "fi21 1234 5600 0007 85" << true;
        QTest::addRow("British, letters in the account") << "GB82WEST12345698765432" << true;
        QTest::addRow("Norwegian, shortest") << "NO9386011117947" << true;
        QTest::addRow("Maltese, longest in use") << "MT84MALT011000012345MTLCAST001S" << true;
        QTest::addRow("letters as check digits") << "FIAB12345600000785" << false;
        QTest::addRow("over 34 characters") << "DE89370400440532013000000000000000000" << false;
    }

    void isValidIban()
    {
        QFETCH(QString, iban);
        QTEST(BankAccount::isValidIban(iban), "valid");
    }

    void ibanForms()
    {
        QCOMPARE(BankAccount::ibanToBban(QStringLiteral("FI2112345600000785")),
            QStringLiteral("12345600000785"));
        QCOMPARE(BankAccount::formatIban(QStringLiteral("SE4550000000058398257466")),
            QStringLiteral("SE45 5000 0000 0583 9825 7466"));
        // Anything but a Finnish machine-form IBAN is left as it is.
        for (const QString iban : { "SE4550000000058398257466", "FI21 1234 5600 0007 85", "FI2" })
            QCOMPARE(BankAccount::ibanToBban(iban), iban);
    }

    void formatBban_data()
    {
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("printed");
        auto row = [](const char* name, const QString& input, const QString& printed) {
            QTest::addRow("%s", name) << input << printed;
        };
        // From real IBANs of the bank groups: zeros after six digits, or
        // after seven in groups 4 and 5.
        row("group 1", "FI2112345600000785", "123456-785");
        row("group 4", "FI3840552010002345", "405520-12345");
        row("group 5, short", "FI2150000120000004", "500001-24");
        row("all zeros after bank", "12345600000000", "123456-0");
        row("printed form unchanged", "123456-785", "123456-785");
        row("letters unchanged", "1234560000078X", "1234560000078X");
    }

    void formatBban()
    {
        QFETCH(QString, input);
        QFETCH(QString, printed);
        if (input.startsWith(QLatin1String("FI"))) {
            QVERIFY(ibanChecksOut(input));
            input = BankAccount::ibanToBban(input);
            // And back: the printed number pads to the same machine form.
            QCOMPARE(machineForm(printed), input);
        }
        QCOMPARE(BankAccount::formatBban(input), printed);
    }
};

QTEST_GUILESS_MAIN(TestBankAccount)
#include "tst_bankaccount.moc"
