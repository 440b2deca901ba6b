#include "domain/bankaccount.h"
#include "domain/invoice.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

// The 7-3-1 rule seen from the complete reference: the check digit weighs
// 1 and the digits before it 7, 3, 1, 7, ... from the right, and the whole
// weighted sum is a multiple of ten.
bool referenceSumsToTen(const QString& reference)
{
    static const int weights[3] = { 1, 7, 3 };
    int sum = 0;
    for (int i = 0; i < reference.size(); ++i) {
        const int digit = reference.at(reference.size() - 1 - i).unicode() - '0';
        if (digit < 0 || digit > 9)
            return false;
        sum += digit * weights[i % 3];
    }
    return sum % 10 == 0;
}

// ISO 7064 mod 97 of a text with letters (A = 10 ... Z = 35), taken nine
// digits at a time so that any length fits.
int mod97(const QString& text)
{
    QString digits;
    for (const QChar c : text) {
        if (c.isLetter())
            digits += QString::number(c.toUpper().unicode() - 'A' + 10);
        else
            digits += c;
    }
    qint64 remainder = 0;
    while (!digits.isEmpty()) {
        const QString chunk = QString::number(remainder) + digits.left(9);
        digits.remove(0, 9);
        remainder = chunk.toLongLong() % 97;
    }
    return int(remainder);
}

// An RF reference is valid when "RFxx" moved to the end gives remainder 1.
bool isValidRf(const QString& rf)
{
    return rf.startsWith(QLatin1String("RF")) && rf.size() > 4
        && mod97(rf.mid(4) + rf.left(4)) == 1;
}

QString randomDigits(QRandomGenerator& random, int length)
{
    QString digits;
    for (int i = 0; i < length; ++i)
        digits += QChar(u'0' + int(random.bounded(10)));
    return digits;
}

Invoice sampleInvoice()
{
    Invoice invoice;
    invoice.totalAmount = 488315;
    invoice.balance = 100000;
    invoice.referenceNumber = QStringLiteral("868516259619897");
    invoice.dueDate = QDate(2010, 6, 12);
    return invoice;
}

BankAccount account(const QString& iban)
{
    BankAccount bankAccount;
    bankAccount.iban = iban;
    return bankAccount;
}

} // namespace

class TestInvoice : public QObject
{
    Q_OBJECT

private slots:
    void dueDate_data()
    {
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QString>("terms");
        QTest::addColumn<QDate>("expected");
        QTest::addRow("fourteen days")
            << QDate(2025, 3, 1) << "14 päivää netto" << QDate(2025, 3, 15);
        QTest::addRow("month end") << QDate(2025, 1, 31) << "30 pv" << QDate(2025, 3, 2);
        QTest::addRow("leap year") << QDate(2024, 2, 15) << "14" << QDate(2024, 2, 29);
        QTest::addRow("first number inside text")
            << QDate(2025, 3, 1) << "netto 7 pv, 2 % 3 pv" << QDate(2025, 3, 8);
        QTest::addRow("no number") << QDate(2025, 3, 1) << "Käteinen" << QDate();
        QTest::addRow("no invoice date") << QDate() << "14 pv" << QDate();
        QTest::addRow("overlong number")
            << QDate(2025, 3, 1) << "99999999999999999999 pv" << QDate();
    }

    void dueDate()
    {
        QFETCH(QDate, date);
        QFETCH(QString, terms);
        QFETCH(QDate, expected);
        Invoice invoice;
        invoice.date = date;
        invoice.paymentTerms = terms;
        const QDate due = invoice.calculateDueDate();
        QCOMPARE(due.isValid(), expected.isValid());
        if (expected.isValid())
            QCOMPARE(due, expected);
    }

    void appendCheckDigit_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        // 6*7 + 5*3 + 4*1 + 3*7 + 2*3 + 1*1 = 89 -> 1.
        QTest::addRow("plain") << "123456"
                               << "1234561";
        QTest::addRow("letters only") << "abc"
                                      << "1009";
        QTest::addRow("leading zeros, padded right") << "0042"
                                                     << "4200";
        QTest::addRow("one digit padded") << "5"
                                          << "5005";
        QTest::addRow("separators dropped") << "12 34-56"
                                            << "1234561";
        QTest::addRow("digits of another script")
            << QString::fromUtf8("\u0661\u0662\u0663\u0664\u0665\u0666") << "1234561";
        // The last 19 of 25 digits: weighted sum 334, check 6.
        QTest::addRow("25 digits") << "1234567890123456789012345"
                                   << "78901234567890123456";
    }

    void appendCheckDigit()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const QString reference = Invoice::appendCheckDigitToReferenceNumber(text);
        QCOMPARE(reference, expected);
        QVERIFY(referenceSumsToTen(reference));
    }

    void appendCheckDigitRandom()
    {
        QRandomGenerator random(4242);
        for (int i = 0; i < 5000; ++i) {
            const int length = 1 + int(random.bounded(19));
            QString base = randomDigits(random, length);
            base[0] = QChar(u'1' + int(random.bounded(9)));
            const QString reference = Invoice::appendCheckDigitToReferenceNumber(base);
            QVERIFY2(referenceSumsToTen(reference), qPrintable(reference));
            QVERIFY(reference.size() >= 4 && reference.size() <= 20);
            if (length >= 3)
                QCOMPARE(reference.left(length), base);
            QCOMPARE(Invoice::calculateReferenceNumberCheckDigit(reference.chopped(1)),
                reference.right(1).toInt());
        }
        QCOMPARE(Invoice::calculateReferenceNumberCheckDigit(QString()), 0);
    }

    void formats_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QString>("grouped");
        QTest::addColumn<QString>("spy");
        // Validity is the length alone: the check digit is not examined.
        QTest::addRow("too short") << "12" << false << "12"
                                   << "00000000000000000012";
        QTest::addRow("wrong check digit") << "1234562" << true << "12 34562"
                                           << "00000000000001234562";
        QTest::addRow("nineteen") << "1234567890123456789" << true << "1234 56789 01234 56789"
                                  << "01234567890123456789";
        QTest::addRow("twenty") << "12345678901234567894" << false << "12345 67890 12345 67894"
                                << "12345678901234567894";
        QTest::addRow("longer") << "123456789012345678945" << false << "1 23456 78901 23456 78945"
                                << "123456789012345678945";
        QTest::addRow("already grouped") << "12 34561" << true << "12 34561"
                                         << "00000000000012 34561";
        QTest::addRow("rf") << "RF341234561" << true << "RF34 1234 561"
                            << "000000000RF341234561";
    }

    void formats()
    {
        QFETCH(QString, text);
        QTEST(Invoice::isValidReferenceNumber(text), "valid");
        QTEST(Invoice::formatReferenceNumber(text), "grouped");
        QTEST(Invoice::formatSpyReferenceNumber(text), "spy");
    }

    void referenceNumberToRf_data()
    {
        QTest::addColumn<QString>("reference");
        QTest::addColumn<QString>("expected");
        // The example of the ISO 11649 standard.
        QTest::addRow("iso example") << "539007547034"
                                     << "RF18539007547034";
        QTest::addRow("finnish example") << "868516259619897"
                                         << "RF09868516259619897";
        QTest::addRow("spaces dropped") << "12 32"
                                        << "RF111232";
        QTest::addRow("hyphen") << "12-34"
                                << "";
        QTest::addRow("empty") << ""
                               << "";
    }

    void referenceNumberToRf()
    {
        QFETCH(QString, reference);
        QFETCH(QString, expected);
        const QString rf = Invoice::referenceNumberToRf(reference);
        QCOMPARE(rf, expected);
        if (!rf.isEmpty())
            QVERIFY(isValidRf(rf));
    }

    void referenceNumberToRfRandom()
    {
        QRandomGenerator random(97);
        for (int i = 0; i < 5000; ++i) {
            const QString reference = Invoice::appendCheckDigitToReferenceNumber(
                randomDigits(random, 1 + int(random.bounded(19))));
            const QString rf = Invoice::referenceNumberToRf(reference);
            QVERIFY2(isValidRf(rf), qPrintable(rf));
            QCOMPARE(rf.mid(4), reference);
        }
    }

    void barcodeVersion4_data()
    {
        QTest::addColumn<QString>("iban");
        QTest::addColumn<bool>("useBalance");
        QTest::addColumn<int>("amount");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<QDate>("dueDate");
        QTest::addColumn<QString>("expected");
        // The worked example of the Finnish bank barcode guide: 4883,15 EUR,
        // reference 86851 62596 19897, due 12.6.2010.
        QTest::addRow("guide example")
            << "FI7944052020036082" << false << 488315 << "868516259619897" << QDate(2010, 6, 12)
            << "479440520200360820048831500000000868516259619897100612";
        QTest::addRow("balance") << "FI2112345600000785" << true << 100000 << "1232"
                                 << QDate(2025, 3, 17)
                                 << "421123456000007850010000000000000000000000001232250317";
        QTest::addRow("no due date, negative amount")
            << "FI3715903000000776" << false << -2500 << "1234561" << QDate()
            << "437159030000007760000000000000000000000001234561000000";
        QTest::addRow("amount too long is not cut")
            << "FI5810171000000122" << false << 123456789 << "1232" << QDate(2026, 1, 2)
            << "4581017100000012212345678900000000000000000001232260102";
        QTest::addRow("swedish iban")
            << "SE4550000000058398257466" << false << 2500 << "1232" << QDate(2025, 3, 17) << "";
        QTest::addRow("danish iban of finnish length")
            << "DK5000400440116243" << false << 2500 << "1232" << QDate(2025, 3, 17) << "";
        QTest::addRow("iban with spaces")
            << "FI21 1234 5600 0007 85" << false << 2500 << "1232" << QDate(2025, 3, 17) << "";
        QTest::addRow("letters in reference")
            << "FI2112345600000785" << false << 2500 << "12a4" << QDate(2025, 3, 17) << "";
    }

    void barcodeVersion4()
    {
        QFETCH(QString, iban);
        QFETCH(bool, useBalance);
        QFETCH(int, amount);
        QFETCH(QString, reference);
        QFETCH(QDate, dueDate);
        QFETCH(QString, expected);
        Invoice invoice;
        invoice.totalAmount = useBalance ? amount + 55555 : amount;
        invoice.balance = useBalance ? amount : 1;
        invoice.referenceNumber = reference;
        invoice.dueDate = dueDate;
        BankAccount bankAccount = account(iban);
        QCOMPARE(invoice.barcode(&bankAccount, 4, useBalance), expected);
        if (!useBalance)
            QCOMPARE(invoice.barcode(&bankAccount), expected);
    }

    void barcodeVersion5_data()
    {
        QTest::addColumn<QString>("reference");
        QTest::addColumn<QString>("referencePart");
        // RF, its check digits and the reference, zero-padded in front of
        // the check digits.
        QTest::addRow("guide reference") << "868516259619897"
                                         << "00000009868516259619897";
        QTest::addRow("short reference") << "1232"
                                         << "00000000000000000111232";
        QTest::addRow("longest reference")
            << "12345678901234567894" << QString("0" + QString("RF") + "12345678901234567894");
    }

    void barcodeVersion5()
    {
        QFETCH(QString, reference);
        QFETCH(QString, referencePart);
        Invoice invoice = sampleInvoice();
        invoice.referenceNumber = reference;
        // The expected check digits come from the independent mod 97.
        const int check = 98 - mod97(reference + QStringLiteral("RF00"));
        referencePart.replace(QLatin1String("RF"), QString::number(check).rightJustified(2, '0'));
        BankAccount bankAccount = account(QStringLiteral("FI7944052020036082"));
        QCOMPARE(invoice.barcode(&bankAccount, 5, false),
            QStringLiteral("5794405202003608200488315") + referencePart + QStringLiteral("100612"));
        // Only versions 4 and 5, and only with an account.
        QCOMPARE(invoice.barcode(&bankAccount, 3, false), QString());
        QCOMPARE(invoice.barcode(&bankAccount, 6, false), QString());
        QCOMPARE(invoice.barcode(nullptr), QString());
    }
};

QTEST_GUILESS_MAIN(TestInvoice)
#include "tst_invoice.moc"
