#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "util/templatestringhelper.h"

#include <QtTest>
#include <array>
#include <tuple>

class TestTemplateStringHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void dollarCodes_data();
    void dollarCodes();
    void braces_data();
    void braces();
    void numbersInLocaleFormat();
    void extraVariablesWinAndAreExpandedAgain();
    void escaping_data();
    void escaping();
    void barcodeUsesFirstPrintedAccount();
    void fileNames_data();
    void fileNames();
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
    QTest::addColumn<int>("invoiceType");
    QTest::addColumn<int>("printType");
    QTest::addColumn<QString>("expected");
    // Invoice 42 of customer 17, "Äijä & Co".
    const QList<std::tuple<const char*, const char*, int, int, const char*>> rows {
        { "export default", "lasku-$i-$n.pdf", 0, 0, "lasku-42-aija-co.pdf" },
        { "name kept", "$N", 0, 0, "Äijä & Co" },
        { "trailing dollar", "100$", 0, 0, "100" },
        { "double dollar", "$$5", 0, 0, "$5" },
        { "unknown then number", "$Q$i", 0, 0, "42" },
        { "reminder title", "$h-$i.pdf", 0, 3, "maksumuistutus-42.pdf" },
        { "credit note title", "$H", 2, 0, "Hyvityslasku" },
        { "print type wins from 3", "$H", 2, 5, "Lähete" },
        { "type out of range", "$H", 0, 6, "Lasku" },
        { "invoice type out of range", "$H", 9, 0, "Lasku" },
        { "customer number", "$J-$j", 0, 0, "17-17" },
        { "street", "$S|$s", 0, 0, "Kauppakatu 5 B|kauppakatu-5-b" },
        { "town and post code", "$P $p $T $t", 0, 0, "00100 00100 Hämeenlinna hameenlinna" },
        { "e-mail", "$E $e", 0, 0, "äitilasku@esimerkki.fi aitilaskuesimerkkifi" },
        { "vat number and reference", "$V $R/$r", 0, 0, "FI12345671 1234561/1234561" },
    };
    for (const auto& [tag, text, invoiceType, printType, expected] : rows)
        QTest::newRow(tag) << QString::fromUtf8(text) << invoiceType << printType
                           << QString::fromUtf8(expected);
}

void TestTemplateStringHelper::dollarCodes()
{
    QFETCH(QString, text);
    QFETCH(int, invoiceType);
    QFETCH(int, printType);
    QFETCH(QString, expected);
    m_invoice.type = invoiceType;
    TemplateStringHelper helper(&m_registry);
    QCOMPARE(helper.substituteShortVariables(text, &m_invoice, &m_customer, printType), expected);
    // Without the invoice or the customer the text stays as it is.
    QCOMPARE(helper.substituteShortVariables(text, nullptr, &m_customer, printType), text);
    QCOMPARE(helper.substituteShortVariables(text, &m_invoice, nullptr, printType), text);
}

void TestTemplateStringHelper::braces_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("given"); // "I" the invoice, "C" the customer
    QTest::addColumn<QString>("expected");
    const QList<std::array<const char*, 4>> rows {
        { "one space each side", "Hei {{ customer/name }}!", "IC", "Hei Äijä & Co!" },
        { "two spaces stay", "{{ customer/name  }}", "IC", "{{ customer/name  }}" },
        { "unknown name", "a{{nothing}}b", "IC", "ab" },
        { "customer name without customer", "{{customer/name}}", "I", "" },
        { "customer name without invoice", "{{customer/name}}", "C", "Äijä & Co" },
        { "invoice name without invoice", "{{number}}", "C", "" },
        { "payment terms", "{{paymentTerms}}", "IC", "14 päivää netto" },
        { "grouped reference", "{{referenceNumber}}", "IC", "12 34561" },
        { "spy reference", "{{referenceNumberSpy}}", "IC", "00000000000001234561" },
        { "notice texts", "{{noticeText1}}/{{noticeText2}}", "IC", "Kiitos tilauksesta/" },
        { "customer fields", "{{customer/number}} {{customer/postCode}} {{customer/custom1}}", "C",
            "17 00100 Oma kenttä" },
        { "encoded e-mail", "{{customer/emailAddressEncoded}}", "C",
            "%C3%A4iti%2Blasku@esimerkki.fi" },
        { "reference template", "{I}00", "IC", "4200" },
        { "padded left", "{I6}", "IC", "000042" },
        { "padded left, marked", "{I6>}", "IC", "000042" },
        { "padded right", "{I6<}", "IC", "420000" },
        { "other mark", "{I6x}", "IC", "42" },
        { "spaces inside", "{ C4 }", "IC", "0017" },
        { "no invoice", "x{I}y", "C", "xy" },
        { "no customer", "x{C}y", "I", "xy" },
        { "unknown letter", "{X9}", "IC", "" },
        { "lower case letter", "{i}", "IC", "" },
        { "bad width", "{Iab}", "IC", "" },
        { "too long for a short code", "{I12345}", "IC", "{I12345}" },
        { "both forms", "Lasku {{number}}, asiakas {C3}", "IC", "Lasku 42, asiakas 017" },
    };
    for (const auto& row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromLatin1(row[2])
                              << QString::fromUtf8(row[3]);
}

void TestTemplateStringHelper::braces()
{
    QFETCH(QString, text);
    QFETCH(QString, given);
    QFETCH(QString, expected);
    TemplateStringHelper helper(&m_registry);
    QCOMPARE(helper.substituteVariables(text, given.contains('I') ? &m_invoice : nullptr,
                 given.contains('C') ? &m_customer : nullptr),
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
    QTest::addColumn<QString>("expected");
    QTest::addRow("on") << true << "\\\"hi\\\" C:\\\\Temp\\\\a.pdf";
    QTest::addRow("off") << false << "\"hi\" C:\\Temp\\a.pdf";
}

void TestTemplateStringHelper::escaping()
{
    QFETCH(bool, enabled);
    QFETCH(QString, expected);

    TemplateStringHelper helper(&m_registry);
    QVERIFY(!helper.escapeEnabled());
    helper.setEscapeEnabled(enabled);
    helper.appendVariable(
        QStringLiteral("attachmentPath"), QStringLiteral("\"hi\" C:\\Temp\\a.pdf"));
    QCOMPARE(helper.substituteVariables(
                 QStringLiteral("--attach \"{{attachmentPath}}\""), &m_invoice, &m_customer),
        QStringLiteral("--attach \"%1\"").arg(expected));
}

// Version, the digits of the first account that is shown and not removed,
// then euros and cents of the total or the balance.
void TestTemplateStringHelper::barcodeUsesFirstPrintedAccount()
{
    BankAccount accounts[3];
    const char* const ibans[]
        = { "FI2112345600000785", "FI5810171000000122", "FI7944052020036082" };
    for (int i = 0; i < 3; ++i) {
        accounts[i].id = i + 1;
        accounts[i].iban = QLatin1String(ibans[i]);
    }
    accounts[0].visible = false;
    accounts[1].deleted = true;
    m_registry.copyBankAccountsFrom({ &accounts[0], &accounts[1], &accounts[2] });
    TemplateStringHelper helper(&m_registry);
    auto value = [&](const char* name) {
        return helper.valueForVariable(QLatin1String(name), &m_invoice, nullptr);
    };
    QCOMPARE(value("barcode").size(), 54);
    QVERIFY(value("barcode").endsWith(QStringLiteral("240315")));
    QCOMPARE(value("barcode4"), value("barcode"));
    QVERIFY(value("barcode").startsWith(QStringLiteral("4794405202003608200123456")));
    QVERIFY(value("balanceBarcode").startsWith(QStringLiteral("4794405202003608200000100")));
    QVERIFY(value("barcode5").startsWith(QStringLiteral("5794405202003608200123456")));

    accounts[2].visible = false;
    m_registry.copyBankAccountsFrom({ &accounts[0], &accounts[1], &accounts[2] });
    QVERIFY(value("barcode").isEmpty() && !value("barcode").isNull());
}

void TestTemplateStringHelper::fileNames_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("ascii");
    QTest::addColumn<QString>("valid");
    QTest::addRow("company") << "Matti Meikäläinen Oy"
                             << "matti-meikalainen-oy"
                             << "Matti Meikäläinen Oy";
    QTest::addRow("runs of spaces and hyphens") << "  --Åke  -  Öst--  "
                                                << "ake-ost"
                                                << "  --Åke  -  Öst--  ";
    QTest::addRow("punctuation and sharp s") << "Über/Straße 3."
                                             << "uberstrae-3"
                                             << "ÜberStraße 3.";
    QTest::addRow("ampersand between spaces") << "A & B"
                                              << "a-b"
                                              << "A & B";
    QTest::addRow("other script digits") << "a\u0663b"
                                         << "a\u0663b"
                                         << "a\u0663b";
    QTest::addRow("all thirteen removed") << "a|b\\c!d?e*f<g\"h:i>j+k[l]m/n"
                                          << "abcdefghijklmn"
                                          << "abcdefghijklmn";
}

// toAscii() for file names made of names, removeInvalidCharacters() for
// names kept as they are.
void TestTemplateStringHelper::fileNames()
{
    QFETCH(QString, text);
    QFETCH(QString, ascii);
    QFETCH(QString, valid);
    QCOMPARE(TemplateStringHelper::toAscii(text), ascii);
    QCOMPARE(TemplateStringHelper::removeInvalidCharacters(text), valid);
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
