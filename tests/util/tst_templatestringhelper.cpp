#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "util/templatestringhelper.h"

#include <QtTest>

class TestTemplateStringHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void dollarCodes_data();
    void dollarCodes();
    void dollarCodesNeedInvoiceAndCustomer();
    void braces_data();
    void braces();
    void numbersInLocaleFormat();
    void extraVariablesWinAndAreExpandedAgain();
    void escaping_data();
    void escaping();
    void barcodeUsesFirstPrintedAccount();
    void toAscii_data();
    void toAscii();
    void removeInvalidCharacters_data();
    void removeInvalidCharacters();
    void addSuffixToFilename();

private:
    Registry m_registry;
    Invoice m_invoice;
    Customer m_customer;
};

void TestTemplateStringHelper::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestTemplateStringHelper::init()
{
    m_invoice.clear();
    m_invoice.id = 5;
    m_invoice.number = 42;
    m_invoice.type = 0;
    m_invoice.date = QDate(2024, 3, 1);
    m_invoice.dueDate = QDate(2024, 3, 15);
    m_invoice.paymentTerms = QStringLiteral("14 päivää netto");
    m_invoice.referenceNumber = QStringLiteral("1234561");
    m_invoice.totalAmount = 123456;
    m_invoice.balance = 100;
    m_invoice.interestOnArrears = 825;
    m_invoice.setProperty(QStringLiteral("t1"), QStringLiteral("Kiitos tilauksesta"));

    m_customer.clear();
    m_customer.id = 3;
    m_customer.number = 17;
    m_customer.name = QStringLiteral("Äijä & Co");
    m_customer.streetName = QStringLiteral("Kauppakatu 5 B");
    m_customer.postCode = QStringLiteral("00100");
    m_customer.townName = QStringLiteral("Hämeenlinna");
    m_customer.emailAddress = QStringLiteral("äiti+lasku@esimerkki.fi");
    m_customer.vatNumber = QStringLiteral("FI12345671");
    m_customer.setProperty(QStringLiteral("c1"), QStringLiteral("Oma kenttä"));
    m_registry.copyBankAccountsFrom({});
}

void TestTemplateStringHelper::dollarCodes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("invoiceNumber");
    QTest::addColumn<int>("invoiceType");
    QTest::addColumn<int>("printType");
    QTest::addColumn<QString>("expected");

    QTest::addRow("export default") << "lasku-$i-$n.pdf" << 7 << 0 << 0 << "lasku-7-aija-co.pdf";
    QTest::addRow("name kept") << "$N" << 7 << 0 << 0 << "Äijä & Co";
    QTest::addRow("trailing dollar") << "100$" << 7 << 0 << 0 << "100";
    QTest::addRow("double dollar") << "$$5" << 7 << 0 << 0 << "$5";
    QTest::addRow("unknown code") << "$x" << 7 << 0 << 0 << "";
    QTest::addRow("unknown then number") << "$Q$i" << 7 << 0 << 0 << "7";
    QTest::addRow("reminder title") << "$h-$i.pdf" << 1024 << 0 << 3 << "maksumuistutus-1024.pdf";
    QTest::addRow("credit note title") << "$H" << 1 << 2 << 0 << "Hyvityslasku";
    QTest::addRow("print type wins from 3") << "$H" << 1 << 2 << 5 << "Lähete";
    QTest::addRow("delivery note ascii") << "$h" << 1 << 0 << 5 << "lahete";
    QTest::addRow("type out of range") << "$H" << 1 << 0 << 6 << "Lasku";
    QTest::addRow("invoice type out of range") << "$H" << 1 << 9 << 0 << "Lasku";
    QTest::addRow("customer number") << "$J-$j" << 1 << 0 << 0 << "17-17";
    QTest::addRow("street") << "$S|$s" << 1 << 0 << 0 << "Kauppakatu 5 B|kauppakatu-5-b";
    QTest::addRow("town and post code")
        << "$P $p $T $t" << 1 << 0 << 0 << "00100 00100 Hämeenlinna hameenlinna";
    QTest::addRow("e-mail") << "$E $e" << 1 << 0 << 0
                            << "äitilasku@esimerkki.fi aitilaskuesimerkkifi";
    QTest::addRow("vat number") << "$V$v" << 1 << 0 << 0 << "FI12345671FI12345671";
    QTest::addRow("reference") << "viite $R/$r" << 1 << 0 << 0 << "viite 1234561/1234561";
    QTest::addRow("empty") << "" << 1 << 0 << 0 << "";
}

void TestTemplateStringHelper::dollarCodes()
{
    QFETCH(QString, text);
    QFETCH(int, invoiceNumber);
    QFETCH(int, invoiceType);
    QFETCH(int, printType);
    QFETCH(QString, expected);

    m_invoice.number = invoiceNumber;
    m_invoice.type = invoiceType;
    TemplateStringHelper helper(&m_registry);
    QCOMPARE(helper.substituteShortVariables(text, &m_invoice, &m_customer, printType), expected);
}

void TestTemplateStringHelper::dollarCodesNeedInvoiceAndCustomer()
{
    TemplateStringHelper helper(&m_registry);
    QCOMPARE(helper.substituteShortVariables(QStringLiteral("a-$i"), nullptr, &m_customer, 0),
        QStringLiteral("a-$i"));
    QCOMPARE(helper.substituteShortVariables(QStringLiteral("a-$n"), &m_invoice, nullptr, 0),
        QStringLiteral("a-$n"));
}

void TestTemplateStringHelper::braces_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("withInvoice");
    QTest::addColumn<bool>("withCustomer");
    QTest::addColumn<QString>("expected");

    QTest::addRow("no spaces") << "{{customer/name}}" << true << true << "Äijä & Co";
    QTest::addRow("one space each side")
        << "Hei {{ customer/name }}!" << true << true << "Hei Äijä & Co!";
    QTest::addRow("two spaces stay")
        << "{{ customer/name  }}" << true << true << "{{ customer/name  }}";
    QTest::addRow("unknown name") << "a{{nothing}}b" << true << true << "ab";
    QTest::addRow("customer name without customer") << "{{customer/name}}" << true << false << "";
    QTest::addRow("customer name without invoice")
        << "{{customer/name}}" << false << true << "Äijä & Co";
    QTest::addRow("invoice name without invoice") << "{{number}}" << false << true << "";
    QTest::addRow("number") << "{{number}}" << true << true << "42";
    QTest::addRow("payment terms") << "{{paymentTerms}}" << true << true << "14 päivää netto";
    QTest::addRow("grouped reference") << "{{referenceNumber}}" << true << true << "12 34561";
    QTest::addRow("raw reference") << "{{referenceNumberRaw}}" << true << true << "1234561";
    QTest::addRow("spy reference")
        << "{{referenceNumberSpy}}" << true << true << "00000000000001234561";
    QTest::addRow("notice text") << "{{noticeText1}}/{{noticeText2}}" << true << true
                                 << "Kiitos tilauksesta/";
    QTest::addRow("customer fields") << "{{customer/number}} {{customer/postCode}} "
                                        "{{customer/townName}} {{customer/custom1}}"
                                     << false << true << "17 00100 Hämeenlinna Oma kenttä";
    QTest::addRow("encoded e-mail")
        << "{{customer/emailAddressEncoded}}" << false << true << "%C3%A4iti%2Blasku@esimerkki.fi";
    QTest::addRow("reference template") << "{I}00" << true << true << "4200";
    QTest::addRow("padded left") << "{I6}" << true << true << "000042";
    QTest::addRow("padded left, marked") << "{I6>}" << true << true << "000042";
    QTest::addRow("padded right") << "{I6<}" << true << true << "420000";
    QTest::addRow("other mark") << "{I6x}" << true << true << "42";
    QTest::addRow("mark only") << "{I<}" << true << true << "42";
    QTest::addRow("spaces inside") << "{ C4 }" << true << true << "0017";
    QTest::addRow("customer number") << "{C}" << true << true << "17";
    QTest::addRow("no invoice") << "x{I}y" << false << true << "xy";
    QTest::addRow("no customer") << "x{C}y" << true << false << "xy";
    QTest::addRow("unknown letter") << "{X9}" << true << true << "";
    QTest::addRow("lower case letter") << "{i}" << true << true << "";
    QTest::addRow("bad width") << "{Iab}" << true << true << "";
    QTest::addRow("short code of four") << "{ab}" << true << true << "";
    QTest::addRow("too long for a short code") << "{I12345}" << true << true << "{I12345}";
    QTest::addRow("both forms") << "Lasku {{number}}, asiakas {C3}" << true << true
                                << "Lasku 42, asiakas 017";
}

void TestTemplateStringHelper::braces()
{
    QFETCH(QString, text);
    QFETCH(bool, withInvoice);
    QFETCH(bool, withCustomer);
    QFETCH(QString, expected);

    TemplateStringHelper helper(&m_registry);
    QCOMPARE(helper.substituteVariables(
                 text, withInvoice ? &m_invoice : nullptr, withCustomer ? &m_customer : nullptr),
        expected);
}

void TestTemplateStringHelper::numbersInLocaleFormat()
{
    TemplateStringHelper helper(&m_registry);
    const QLocale locale;
    // 123456 cents and 8.25 %, in the user's locale.
    QCOMPARE(helper.valueForVariable(QStringLiteral("totalAmount"), &m_invoice, nullptr),
        locale.toString(1234) + locale.decimalPoint() + QStringLiteral("56"));
    QCOMPARE(helper.valueForVariable(QStringLiteral("balance"), &m_invoice, nullptr),
        QStringLiteral("1") + locale.decimalPoint() + QStringLiteral("00"));
    QCOMPARE(helper.valueForVariable(QStringLiteral("interestOnArrears"), &m_invoice, nullptr),
        QStringLiteral("8") + locale.decimalPoint() + QStringLiteral("25"));
    m_invoice.interestOnArrears = 800;
    QCOMPARE(helper.valueForVariable(QStringLiteral("interestOnArrears"), &m_invoice, nullptr),
        QStringLiteral("8"));
    QCOMPARE(helper.valueForVariable(QStringLiteral("dueDate"), &m_invoice, nullptr),
        QLocale::system().toString(QDate(2024, 3, 15), QLocale::ShortFormat));

    m_registry.settings()->setProperty(
        QStringLiteral("settings/periodForComplaints"), QStringLiteral("8 päivää"));
    QCOMPARE(helper.valueForVariable(QStringLiteral("periodForComplaints"), &m_invoice, nullptr),
        QStringLiteral("8 päivää"));
}

void TestTemplateStringHelper::extraVariablesWinAndAreExpandedAgain()
{
    TemplateStringHelper helper(&m_registry);
    helper.appendVariable(QStringLiteral("number"), QStringLiteral("N:o"));
    helper.appendVariable(QStringLiteral("subject"), QStringLiteral("Lasku {I5}"));
    QCOMPARE(helper.substituteVariables(
                 QStringLiteral("{{number}} {{ subject }}"), &m_invoice, &m_customer),
        QStringLiteral("N:o Lasku 00042"));
    helper.appendVariable(QStringLiteral("subject"), QStringLiteral("Muistutus"));
    QCOMPARE(helper.substituteVariables(QStringLiteral("{{subject}}"), &m_invoice, &m_customer),
        QStringLiteral("Muistutus"));
    helper.clearVariables();
    QCOMPARE(helper.substituteVariables(
                 QStringLiteral("{{number}}{{subject}}"), &m_invoice, &m_customer),
        QStringLiteral("42"));
}

void TestTemplateStringHelper::escaping_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");

    QTest::addRow("quotes and backslash") << true << "\"hi\"\\"
                                          << "\\\"hi\\\"\\\\";
    QTest::addRow("off") << false << "\"hi\"\\"
                         << "\"hi\"\\";
    QTest::addRow("plain text") << true << "Matti"
                                << "Matti";
    QTest::addRow("windows path") << true << "C:\\Temp\\a.pdf"
                                  << "C:\\\\Temp\\\\a.pdf";
}

void TestTemplateStringHelper::escaping()
{
    QFETCH(bool, enabled);
    QFETCH(QString, value);
    QFETCH(QString, expected);

    TemplateStringHelper helper(&m_registry);
    QVERIFY(!helper.escapeEnabled());
    helper.setEscapeEnabled(enabled);
    helper.appendVariable(QStringLiteral("attachmentPath"), value);
    QCOMPARE(helper.substituteVariables(
                 QStringLiteral("--attach \"{{attachmentPath}}\""), &m_invoice, &m_customer),
        QStringLiteral("--attach \"%1\"").arg(expected));
}

void TestTemplateStringHelper::barcodeUsesFirstPrintedAccount()
{
    BankAccount hidden;
    hidden.id = 1;
    hidden.iban = QStringLiteral("FI2112345600000785");
    hidden.visible = false;
    BankAccount removed;
    removed.id = 2;
    removed.iban = QStringLiteral("FI5810171000000122");
    removed.deleted = true;
    BankAccount printed;
    printed.id = 3;
    printed.iban = QStringLiteral("FI7944052020036082");
    m_registry.copyBankAccountsFrom({ &hidden, &removed, &printed });

    TemplateStringHelper helper(&m_registry);
    const QString barcode = helper.valueForVariable(QStringLiteral("barcode"), &m_invoice, nullptr);
    QCOMPARE(barcode.size(), 54);
    // Version, the account digits, then the euros and cents of the total.
    QVERIFY2(barcode.startsWith(QStringLiteral("47944052020036082") + QStringLiteral("00123456")),
        qPrintable(barcode));
    QVERIFY(barcode.endsWith(QStringLiteral("240315")));
    QCOMPARE(helper.valueForVariable(QStringLiteral("barcode4"), &m_invoice, nullptr), barcode);
    QVERIFY(helper.valueForVariable(QStringLiteral("balanceBarcode"), &m_invoice, nullptr)
                .startsWith(QStringLiteral("4794405202003608200000100")));
    QVERIFY(helper.valueForVariable(QStringLiteral("barcode5"), &m_invoice, nullptr)
                .startsWith(QStringLiteral("5794405202003608200123456")));

    printed.visible = false;
    m_registry.copyBankAccountsFrom({ &hidden, &removed, &printed });
    QCOMPARE(helper.valueForVariable(QStringLiteral("barcode"), &m_invoice, nullptr), QString());
    QVERIFY(!helper.valueForVariable(QStringLiteral("barcode"), &m_invoice, nullptr).isNull());
}

void TestTemplateStringHelper::toAscii_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::addRow("company") << "Matti Meikäläinen Oy"
                             << "matti-meikalainen-oy";
    QTest::addRow("title") << "Lähete"
                           << "lahete";
    QTest::addRow("runs of spaces and hyphens") << "  --Åke  -  Öst--  "
                                                << "ake-ost";
    QTest::addRow("punctuation and sharp s") << "Über/Straße 3."
                                             << "uberstrae-3";
    QTest::addRow("ampersand between spaces") << "A & B"
                                              << "a-b";
    QTest::addRow("other script digits") << "a\u0663b"
                                         << "a\u0663b";
    QTest::addRow("empty") << ""
                           << "";
}

void TestTemplateStringHelper::toAscii()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(TemplateStringHelper::toAscii(text), expected);
}

void TestTemplateStringHelper::removeInvalidCharacters_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");

    QTest::addRow("all thirteen") << "a|b\\c!d?e*f<g\"h:i>j+k[l]m/n"
                                  << "abcdefghijklmn";
    QTest::addRow("kept as is") << "Äijä & Co. (Oy), 50%"
                                << "Äijä & Co. (Oy), 50%";
}

void TestTemplateStringHelper::removeInvalidCharacters()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QCOMPARE(TemplateStringHelper::removeInvalidCharacters(text), expected);
}

void TestTemplateStringHelper::addSuffixToFilename()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QFileInfo taken(dir.filePath(QStringLiteral("a.tar.gz")));
    QCOMPARE(
        TemplateStringHelper::addSuffixToFilename(taken).fileName(), QStringLiteral("a.tar-1.gz"));

    for (const char* name : { "a.tar-1.gz", "a.tar-2.gz" }) {
        QFile file(dir.filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    const QFileInfo free = TemplateStringHelper::addSuffixToFilename(taken);
    QCOMPARE(free.absoluteFilePath(), dir.filePath(QStringLiteral("a.tar-3.gz")));
    QVERIFY(!free.exists());
}

QTEST_GUILESS_MAIN(TestTemplateStringHelper)
#include "tst_templatestringhelper.moc"
