#include "domain/bankaccount.h"
#include "domain/invoice.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

// The 7-3-1 rule seen from the complete reference: the check digit weighs 1
// and the digits before it 7, 3, 1, 7, ... from the right; the sum ends in 0.
bool referenceSumsToTen(const QString& reference)
{
    static const int weights[3] = { 1, 7, 3 };
    int sum = 0;
    for (int i = 0; i < reference.size(); ++i)
        sum += reference.at(reference.size() - 1 - i).digitValue() * weights[i % 3];
    return sum % 10 == 0;
}

// ISO 7064 mod 97 of a text with letters (A = 10 ... Z = 35), nine digits at
// a time so that any length fits.
int mod97(const QString& text)
{
    QString digits;
    for (const QChar c : text)
        digits += c.isLetter() ? QString::number(c.unicode() - 'A' + 10) : QString(c);
    qint64 remainder = 0;
    for (; !digits.isEmpty(); digits.remove(0, 9))
        remainder = (QString::number(remainder) + digits.left(9)).toLongLong() % 97;
    return int(remainder);
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

class TestInvoice : public QObject
{
    Q_OBJECT

private slots:
    void dueDateWithoutDays()
    {
        Invoice invoice;
        invoice.date = QDate(2025, 3, 1);
        invoice.paymentTerms = QStringLiteral("Käteinen");
        QCOMPARE(invoice.calculateDueDate(), QDate());
        invoice.paymentTerms = QStringLiteral("14 päivää netto");
        QCOMPARE(invoice.calculateDueDate(), QDate(2025, 3, 15));
    }

    void appendCheckDigit_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::addRow("separators and leading zeros dropped, padded right") << "00 4-2"
                                                                            << "4200";
        // The last 19 of 25 digits: weighted sum 334, check 6.
        QTest::addRow("25 digits") << "1234567890123456789012345"
                                   << "78901234567890123456";
    }

    void appendCheckDigit()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(Invoice::appendCheckDigitToReferenceNumber(text), expected);
        QVERIFY(referenceSumsToTen(expected));
    }

    // Random references against the 7-3-1 rule and the mod 97 of ISO 11649.
    void referencesAgainstIndependentSums()
    {
        QRandomGenerator random(4242);
        for (int i = 0; i < 5000; ++i) {
            QString base = QString::number(random.bounded(1, 10));
            for (int length = 1 + int(random.bounded(19)); base.size() < length;)
                base += QString::number(random.bounded(10));
            const QString reference = Invoice::appendCheckDigitToReferenceNumber(base);
            QVERIFY2(referenceSumsToTen(reference), qPrintable(reference));
            QVERIFY(reference.size() >= 4 && reference.size() <= 20);
            if (base.size() >= 3)
                QCOMPARE(reference.chopped(1), base);
            QCOMPARE(Invoice::calculateReferenceNumberCheckDigit(reference.chopped(1)),
                reference.right(1).toInt());
            const QString rf = Invoice::referenceNumberToRf(reference);
            QCOMPARE(rf.mid(4), reference);
            QVERIFY2(mod97(rf.mid(4) + rf.left(4)) == 1, qPrintable(rf));
        }
        // The ISO example; spaces are dropped, anything else gives no RF form.
        QCOMPARE(Invoice::referenceNumberToRf("539007547034"), QStringLiteral("RF18539007547034"));
        QCOMPARE(Invoice::referenceNumberToRf("12-34"), QString());
        QCOMPARE(Invoice::calculateReferenceNumberCheckDigit(QString()), 0);
    }

    void barcode_data()
    {
        QTest::addColumn<QString>("iban");
        QTest::addColumn<int>("version");
        QTest::addColumn<int>("amount");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<QDate>("dueDate");
        QTest::addColumn<QString>("expected");
        // The worked example of the Finnish bank barcode guide: 4883,15 EUR,
        // reference 86851 62596 19897, due 12.6.2010.
        const QString guide = QStringLiteral("FI7944052020036082");
        QTest::addRow("guide example")
            << guide << 4 << 488315 << "868516259619897" << QDate(2010, 6, 12)
            << "479440520200360820048831500000000868516259619897100612";
        QTest::addRow("amount too long is not cut")
            << "FI5810171000000122" << 4 << 123456789 << "1232" << QDate(2026, 1, 2)
            << "4581017100000012212345678900000000000000000001232260102";
        // Version 5: RF, its check digits (RF09) and the reference, padded in
        // front of the check digits.
        QTest::addRow("version 5")
            << guide << 5 << 488315 << "868516259619897" << QDate(2010, 6, 12)
            << "579440520200360820048831500000009868516259619897100612";
        QTest::addRow("letters in reference")
            << guide << 4 << 2500 << "12a4" << QDate(2025, 3, 17) << "";
    }

    void barcode()
    {
        QFETCH(QString, iban);
        QFETCH(int, version);
        QFETCH(int, amount);
        QFETCH(QString, expected);
        Invoice invoice;
        invoice.totalAmount = amount;
        invoice.balance = 1;
        QFETCH(QString, reference);
        QFETCH(QDate, dueDate);
        invoice.referenceNumber = reference;
        invoice.dueDate = dueDate;
        BankAccount account;
        account.iban = iban;
        QCOMPARE(invoice.barcode(&account, version, false), expected);
        if (version == 4)
            QCOMPARE(invoice.barcode(&account), expected);
        // The balance in place of the total when asked.
        std::swap(invoice.totalAmount, invoice.balance);
        QCOMPARE(invoice.barcode(&account, version, true), expected);
        QCOMPARE(invoice.barcode(nullptr), QString());
    }

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

QTEST_GUILESS_MAIN(TestInvoice)
#include "tst_invoice.moc"
