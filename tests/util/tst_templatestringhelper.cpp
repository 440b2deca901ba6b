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
    void init();

    void dollarCodes_data();
    void dollarCodes();
    void braces_data();
    void braces();
    void extraVariables();
    void fileNames_data();
    void fileNames();
    void addSuffixToFilename();

private:
    Settings m_settings;
    Invoice m_invoice;
    Customer m_customer;
};

void TestTemplateStringHelper::init()
{
    m_invoice.clear();
    m_invoice.number = 42;
    m_invoice.referenceNumber = QStringLiteral("1234561");
    m_invoice.totalAmount = 98765;
    m_invoice.balance = 100;
    m_invoice.interestOnArrears = 825;

    m_customer.clear();
    m_customer.number = 17;
    m_customer.name = QStringLiteral("Äijä & Co");
    m_customer.streetName = QStringLiteral("Kauppakatu 5 B");
    m_customer.postCode = QStringLiteral("00100");
    m_customer.townName = QStringLiteral("Hämeenlinna");
    m_customer.emailAddress = QStringLiteral("äiti+lasku@esimerkki.fi");
    m_customer.vatNumber = QStringLiteral("FI12345671");
    m_settings.setProperty(
        QStringLiteral("settings/periodForComplaints"), QStringLiteral("8 päivää"));
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
        { "trailing dollar", "100$", 0, 0, "100" },
        { "double dollar", "$$5", 0, 0, "$5" },
        { "reminder title", "$h-$i.pdf", 0, 3, "maksumuistutus-42.pdf" },
        { "credit note title", "$H", 2, 0, "Hyvityslasku" },
        { "type out of range", "$H", 0, 6, "Lasku" },
        { "customer fields", "$J $S|$s $p $T|$t $E|$e $V $R", 0, 0,
            "17 Kauppakatu 5 B|kauppakatu-5-b 00100 Hämeenlinna|hameenlinna "
            "äitilasku@esimerkki.fi|aitilaskuesimerkkifi FI12345671 1234561" },
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
    TemplateStringHelper helper(&m_settings);
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
        { "customer name without invoice", "{{customer/name}}", "C", "Äijä & Co" },
        { "invoice name without invoice", "{{number}}", "C", "" },
        { "grouped reference", "{{referenceNumber}}", "IC", "12 34561" },
        // "#" stands for the user's decimal point.
        { "amounts and percentage", "{{totalAmount}} {{balance}} {{interestOnArrears}}", "I",
            "987#65 1#00 8#25" },
        { "from the settings", "{{periodForComplaints}}", "I", "8 päivää" },
        { "customer's fields",
            "{{customer/number}}|{{customer/streetName}}|{{customer/postCode}} "
            "{{customer/townName}}|{{customer/vatNumber}}|{{customer/country}}|{{customer/x}}",
            "C", "17|Kauppakatu 5 B|00100 Hämeenlinna|FI12345671||" },
        { "encoded e-mail", "{{customer/emailAddressEncoded}}", "C",
            "%C3%A4iti%2Blasku@esimerkki.fi" },
        { "padded", "{I6}|{I6>}|{I6<}", "IC", "000042|000042|420000" },
        { "no invoice", "x{I}y{ C4 }", "C", "xy0017" },
        { "unknown letter", "{X9}", "IC", "" },
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
    expected.replace(QLatin1Char('#'), QLocale::system().decimalPoint());
    TemplateStringHelper helper(&m_settings);
    QCOMPARE(helper.substituteVariables(text, given.contains('I') ? &m_invoice : nullptr,
                 given.contains('C') ? &m_customer : nullptr),
        expected);
}

// Extra variables win over the built-in names and are expanded again; with
// escaping on, their values can stand between double quotes.
void TestTemplateStringHelper::extraVariables()
{
    TemplateStringHelper helper(&m_settings);
    auto expand = [&](const char* text) {
        return helper.substituteVariables(QString::fromUtf8(text), &m_invoice, &m_customer);
    };
    helper.appendVariable(QStringLiteral("number"), QStringLiteral("N:o"));
    helper.appendVariable(QStringLiteral("subject"), QStringLiteral("Lasku {I5}"));
    helper.appendVariable(QStringLiteral("path"), QStringLiteral("\"hi\" C:\\a.pdf"));
    QCOMPARE(expand("{{number}} {{ subject }} \"{{path}}\""),
        QStringLiteral("N:o Lasku 00042 \"\"hi\" C:\\a.pdf\""));
    helper.setEscapeEnabled(true);
    QCOMPARE(expand("\"{{path}}\""), QStringLiteral("\"\\\"hi\\\" C:\\\\a.pdf\""));
    helper.clearVariables();
    QCOMPARE(expand("{{number}}{{subject}}"), QStringLiteral("42"));
}

void TestTemplateStringHelper::fileNames_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("ascii");
    QTest::addColumn<QString>("valid");
    QTest::addRow("runs of spaces and hyphens") << "  --Åke  & -  Öst--  "
                                                << "ake-ost"
                                                << "  --Åke  & -  Öst--  ";
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
    const QFileInfo taken(dir.filePath(QStringLiteral("a.tar.gz")));
    QCOMPARE(
        TemplateStringHelper::addSuffixToFilename(taken).fileName(), QStringLiteral("a.tar-1.gz"));
    for (const char* name : { "a.tar-1.gz", "a.tar-2.gz" }) {
        QFile file(dir.filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QCOMPARE(TemplateStringHelper::addSuffixToFilename(taken).absoluteFilePath(),
        dir.filePath(QStringLiteral("a.tar-3.gz")));
}

QTEST_GUILESS_MAIN(TestTemplateStringHelper)
#include "tst_templatestringhelper.moc"
