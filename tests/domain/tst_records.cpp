#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/entityutil.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/payment.h"
#include "domain/paymentcriteria.h"
#include "domain/printscript.h"
#include "domain/product.h"
#include "domain/settings.h"

#include <QTest>

using PropertyMap = QMap<QString, QVariant>;

class TestRecords : public QObject
{
    Q_OBJECT

private slots:
    void escape_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("stored");
        QTest::addRow("plain") << "EN"
                               << "EN";
        QTest::addRow("empty") << ""
                               << "";
        QTest::addRow("carriage return dropped") << "a\r\nb"
                                                 << "a\\nb";
        QTest::addRow("lone carriage return") << "a\rb"
                                              << "ab";
        QTest::addRow("backslash doubled") << "C:\\temp"
                                           << "C:\\\\temp";
        QTest::addRow("line feeds") << "\nx\n\n"
                                    << "\\nx\\n\\n";
        QTest::addRow("backslash n text") << "\\n"
                                          << "\\\\n";
        QTest::addRow("equals sign untouched") << "a=b"
                                               << "a=b";
    }

    void escape()
    {
        QFETCH(QString, value);
        QFETCH(QString, stored);
        const QString escaped = EntityUtil::escapeString(value);
        QCOMPARE(escaped, stored);
        QVERIFY(!escaped.contains(QLatin1Char('\n')));
        QVERIFY(!escaped.contains(QLatin1Char('\r')));
    }

    void unescape_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<QString>("value");
        QTest::addRow("line feed") << "a\\nb"
                                   << "a\nb";
        QTest::addRow("leading line feed") << "\\nb"
                                           << "\nb";
        QTest::addRow("consecutive line feeds") << "\\n\\n"
                                                << "\n\n";
        QTest::addRow("backslash") << "C:\\\\temp"
                                   << "C:\\temp";
        QTest::addRow("backslash then n") << "C:\\\\new"
                                          << "C:\\new";
        // An escaped backslash directly followed by an escaped line feed is
        // stored as three backslashes and n: the backslash comes back, the
        // line feed stays the text backslash, n.
        QTest::addRow("quirk: backslash before line feed") << "a\\\\\\n"
                                                           << "a\\\\n";
        QTest::addRow("plain") << "abc"
                               << "abc";
    }

    void unescape()
    {
        QFETCH(QString, stored);
        QFETCH(QString, value);
        QCOMPARE(EntityUtil::unescapeString(stored), value);
    }

    void escapeRoundTrip_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("readBack");
        QTest::addRow("multi-line") << "Rivi 1\nRivi 2"
                                    << "Rivi 1\nRivi 2";
        QTest::addRow("windows line ends") << "a\r\nb"
                                           << "a\nb";
        QTest::addRow("path") << "\\\\server\\share\\new"
                              << "\\\\server\\share\\new";
        QTest::addRow("backslash at end") << "end\\"
                                          << "end\\";
        QTest::addRow("quirk not restored") << "a\\\n"
                                            << "a\\\\n";
        QTest::addRow("unicode") << "Äänekoski € 😀"
                                 << "Äänekoski € 😀";
    }

    void escapeRoundTrip()
    {
        QFETCH(QString, value);
        QFETCH(QString, readBack);
        QCOMPARE(EntityUtil::unescapeString(EntityUtil::escapeString(value)), readBack);
    }

    void propertiesToString_data()
    {
        QTest::addColumn<PropertyMap>("properties");
        QTest::addColumn<QString>("text");
        QTest::addRow("empty") << PropertyMap() << "";
        QTest::addRow("key order")
            << PropertyMap { { "l", "EN" }, { "e2", "003712345678" } } << "e2=003712345678\nl=EN\n";
        QTest::addRow("case-sensitive order")
            << PropertyMap { { "b", "1" }, { "B", "2" }, { "a", "3" } } << "B=2\na=3\nb=1\n";
        QTest::addRow("escaped value")
            << PropertyMap { { "t1", "Kiitos\nTervetuloa" } } << "t1=Kiitos\\nTervetuloa\n";
        QTest::addRow("number and bool")
            << PropertyMap { { "n", 42 }, { "x", true } } << "n=42\nx=true\n";
        QTest::addRow("empty value") << PropertyMap { { "k", "" } } << "k=\n";
    }

    void propertiesToString()
    {
        QFETCH(PropertyMap, properties);
        QFETCH(QString, text);
        QCOMPARE(EntityUtil::propertiesToString(properties), text);
    }

    void propertiesFromString_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<PropertyMap>("properties");
        QTest::addRow("empty") << "" << PropertyMap();
        QTest::addRow("two lines") << "e2=003712345678\nl=EN\n"
                                   << PropertyMap { { "e2", "003712345678" }, { "l", "EN" } };
        QTest::addRow("no final line feed") << "a=1" << PropertyMap { { "a", "1" } };
        QTest::addRow("line without equals skipped") << "x\na=1\n" << PropertyMap { { "a", "1" } };
        QTest::addRow("empty key") << "=v\n" << PropertyMap { { "", "v" } };
        QTest::addRow("first equals splits") << "k=a=b\n" << PropertyMap { { "k", "a=b" } };
        QTest::addRow("blank lines skipped") << "\n\na=1\n\n\nb=2\n"
                                             << PropertyMap { { "a", "1" }, { "b", "2" } };
        QTest::addRow("later key wins") << "k=1\nk=2\n" << PropertyMap { { "k", "2" } };
        QTest::addRow("key kept as is") << " k\\n =v\n" << PropertyMap { { " k\\n ", "v" } };
        QTest::addRow("value unescaped") << "t=a\\nb\\\\c\n" << PropertyMap { { "t", "a\nb\\c" } };
        QTest::addRow("carriage return stays in value") << "k=v\r\n"
                                                        << PropertyMap { { "k", "v\r" } };
    }

    void propertiesFromString()
    {
        QFETCH(QString, text);
        QFETCH(PropertyMap, properties);
        PropertyMap parsed { { "stale", "old" } };
        EntityUtil::propertiesFromString(text, parsed);
        QCOMPARE(parsed, properties);
        for (auto it = parsed.constBegin(); it != parsed.constEnd(); ++it)
            QCOMPARE(it.value().metaType(), QMetaType::fromType<QString>());
    }

    void propertiesRoundTripThroughRecords()
    {
        Customer customer;
        customer.setProperty(QStringLiteral("l"), QStringLiteral("SV"));
        customer.setProperty(QStringLiteral("c1"), QStringLiteral("rivi\nkaksi\\"));
        customer.setProperty(QStringLiteral("n"), 5);
        Customer other;
        other.setProperty(QStringLiteral("gone"), 1);
        other.propertiesFromString(customer.propertiesToString());
        QCOMPARE(other.properties.size(), 3);
        QCOMPARE(other.property(QStringLiteral("l")).toString(), QStringLiteral("SV"));
        QCOMPARE(other.property(QStringLiteral("c1")).toString(), QStringLiteral("rivi\nkaksi\\"));
        // Numbers come back as text.
        QCOMPARE(other.property(QStringLiteral("n")), QVariant(QStringLiteral("5")));
        QVERIFY(!other.properties.contains(QStringLiteral("gone")));

        Invoice invoice;
        invoice.setProperty(QStringLiteral("t1"), QStringLiteral("Huom!\nMaksa ajallaan."));
        Invoice readInvoice;
        readInvoice.propertiesFromString(invoice.propertiesToString());
        QCOMPARE(readInvoice.properties, invoice.properties);

        Settings settings;
        settings.setProperty(QStringLiteral("settings/paymentTerms"), QStringLiteral("14 pv"));
        Settings readSettings;
        readSettings.propertiesFromString(settings.propertiesToString());
        QCOMPARE(readSettings.properties, settings.properties);
    }

    void propertyDefaults()
    {
        const Customer customer;
        QCOMPARE(customer.property(QStringLiteral("l"), QStringLiteral("FI")).toString(),
            QStringLiteral("FI"));
        QVERIFY(!customer.property(QStringLiteral("l")).isValid());
    }

    void setPropertyIfNotEmpty()
    {
        Customer customer;
        customer.setProperty(QStringLiteral("c1"), QStringLiteral("x"));
        customer.setPropertyIfNotEmpty(QStringLiteral("c1"), QString());
        QVERIFY(!customer.properties.contains(QStringLiteral("c1")));
        customer.setPropertyIfNotEmpty(QStringLiteral("c2"), QStringLiteral("y"));
        QCOMPARE(customer.property(QStringLiteral("c2")).toString(), QStringLiteral("y"));
        customer.setPropertyIfNotEmpty(QStringLiteral("c3"), QString());
        QVERIFY(!customer.properties.contains(QStringLiteral("c3")));

        Invoice invoice;
        invoice.setPropertyIfNotEmpty(QStringLiteral("t1"), QStringLiteral("teksti"));
        QCOMPARE(invoice.propertiesToString(), QStringLiteral("t1=teksti\n"));
        invoice.setPropertyIfNotEmpty(QStringLiteral("t1"), QString());
        QVERIFY(invoice.properties.isEmpty());

        Settings settings;
        settings.setPropertyIfNotEmpty(QStringLiteral("finvoice/senderId"), QStringLiteral("1"));
        settings.setPropertyIfNotEmpty(QStringLiteral("finvoice/senderId"), QString());
        QCOMPARE(settings.propertiesToString(), QString());
    }

    void prefixes()
    {
        Invoice invoice;
        invoice.setProperty(QStringLiteral("attributes/Tilaus"), QStringLiteral("123"));
        invoice.setProperty(QStringLiteral("attributes/Projekti"), QStringLiteral("A"));
        invoice.setProperty(QStringLiteral("Attributes/upper"), QStringLiteral("B"));
        invoice.setProperty(QStringLiteral("t1"), QStringLiteral("C"));
        const PropertyMap attributes = invoice.propertiesWithPrefix(QStringLiteral("attributes/"));
        QCOMPARE(attributes.keys(), QStringList({ "attributes/Projekti", "attributes/Tilaus" }));
        invoice.removePropertiesWithPrefix(QStringLiteral("attributes/"));
        QCOMPARE(invoice.properties.keys(), QStringList({ "Attributes/upper", "t1" }));
        invoice.setProperties(PropertyMap { { "t1", "D" }, { "attributes/x", "E" } });
        QCOMPARE(invoice.property(QStringLiteral("t1")).toString(), QStringLiteral("D"));
        QCOMPARE(invoice.properties.size(), 3);

        Customer customer;
        customer.setProperty(QStringLiteral("e1"), 1);
        customer.setProperty(QStringLiteral("e2"), 2);
        customer.setProperty(QStringLiteral("l"), 3);
        customer.removeProperties(QStringLiteral("e"));
        QCOMPARE(customer.properties.keys(), QStringList({ "l" }));

        Settings settings;
        settings.setProperty(QStringLiteral("email/subject"), 1);
        settings.setProperty(QStringLiteral("email/body"), 2);
        settings.setProperty(QStringLiteral("settings/paymentTerms"), 3);
        settings.removeProperties(QStringLiteral("email/"));
        settings.removeProperty(QStringLiteral("missing"));
        QCOMPARE(settings.properties.keys(), QStringList({ "settings/paymentTerms" }));
        settings.removeProperty(QStringLiteral("settings/paymentTerms"));
        QVERIFY(settings.properties.isEmpty());
    }

    void referenceNumberTemplate_data()
    {
        QTest::addColumn<QString>("configured");
        QTest::addColumn<QString>("suffix");
        QTest::addColumn<QString>("expected");
        QTest::addRow("neither") << ""
                                 << ""
                                 << "{I}00";
        QTest::addRow("one-digit suffix") << ""
                                          << "5"
                                          << "{I}05";
        QTest::addRow("two-digit suffix") << ""
                                          << "12"
                                          << "{I}12";
        QTest::addRow("long suffix") << ""
                                     << "123"
                                     << "{I}123";
        QTest::addRow("template wins") << "{C}{I}"
                                       << "5"
                                       << "{C}{I}";
        QTest::addRow("template alone") << "9{I}"
                                        << ""
                                        << "9{I}";
    }

    void referenceNumberTemplate()
    {
        QFETCH(QString, configured);
        QFETCH(QString, suffix);
        QFETCH(QString, expected);
        Settings settings;
        if (!configured.isEmpty())
            settings.setProperty(QStringLiteral("settings/referenceNumberTemplate"), configured);
        if (!suffix.isEmpty())
            settings.setProperty(QStringLiteral("settings/referenceNumberSuffix"), suffix);
        QCOMPARE(settings.referenceNumberTemplate(), expected);
        // Read back from the stored text, where every value is a string.
        Settings stored;
        stored.propertiesFromString(settings.propertiesToString());
        QCOMPARE(stored.referenceNumberTemplate(), expected);
    }

    void referenceNumberTemplateNumericSuffix()
    {
        Settings settings;
        settings.setProperty(QStringLiteral("settings/referenceNumberTemplate"), QString());
        settings.setProperty(QStringLiteral("settings/referenceNumberSuffix"), 7);
        QCOMPARE(settings.referenceNumberTemplate(), QStringLiteral("{I}07"));
    }

    void businessId_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("businessId");
        QTest::addColumn<bool>("vatNumber");
        // 0112038: 0*7+1*9+1*10+2*5+0*8+3*4+8*2 = 57, 57 mod 11 = 2, check 9.
        QTest::addRow("valid id") << "0112038-9" << true << false;
        // 1572860: sum 220, remainder 0, check 0.
        QTest::addRow("remainder zero") << "1572860-0" << true << false;
        // 2617416: sum 161, remainder 7, check 4.
        QTest::addRow("valid id 2") << "2617416-4" << true << false;
        QTest::addRow("surrounding spaces") << " 2617416-4 " << true << false;
        QTest::addRow("wrong check digit") << "0112038-8" << false << false;
        QTest::addRow("no hyphen") << "01120389" << false << false;
        QTest::addRow("too short") << "112038-9" << false << false;
        QTest::addRow("letters") << "O112038-9" << false << false;
        QTest::addRow("empty") << "" << false << false;
        // 0000006: sum 12, remainder 1: no check digit can be valid.
        QTest::addRow("remainder one, 0") << "0000006-0" << false << false;
        QTest::addRow("remainder one, 1") << "0000006-1" << false << false;
        QTest::addRow("remainder one, 9") << "0000006-9" << false << false;
        QTest::addRow("vat number") << "FI01120389" << false << true;
        QTest::addRow("vat number lower case") << "fi01120389" << false << true;
        QTest::addRow("vat number spaced") << "FI 0112 0389" << false << true;
        QTest::addRow("vat wrong check digit") << "FI01120388" << false << false;
        QTest::addRow("vat remainder one") << "FI00000061" << false << false;
        QTest::addRow("other country") << "SE01120389" << false << false;
        QTest::addRow("vat with hyphen") << "FI0112038-9" << false << false;
    }

    void businessId()
    {
        QFETCH(QString, text);
        QFETCH(bool, businessId);
        QFETCH(bool, vatNumber);
        QCOMPARE(Customer::isValidBusinessId(text), businessId);
        QCOMPARE(Customer::isValidVatNumber(text), vatNumber);
        QCOMPARE(Customer::isValidVatNumberOrBusinessId(text), businessId || vatNumber);
    }

    void businessIdCheckDigitAgainstHandSum()
    {
        // Every seven-digit prefix of a range, checked against the rule
        // written out here: weights 7 9 10 5 8 4 2, mod 11, 1 has no digit.
        static const int weights[7] = { 7, 9, 10, 5, 8, 4, 2 };
        for (int number = 1234000; number < 1236000; ++number) {
            const QString digits = QString::number(number).rightJustified(7, QLatin1Char('0'));
            int sum = 0;
            for (int i = 0; i < 7; ++i)
                sum += digits.at(i).digitValue() * weights[i];
            const int remainder = sum % 11;
            const int expected = remainder == 1 ? -1 : (remainder == 0 ? 0 : 11 - remainder);
            QCOMPARE(Customer::businessIdCheckDigit(digits), expected);
            for (int check = 0; check <= 9; ++check) {
                const QString id = digits + QLatin1Char('-') + QString::number(check);
                QCOMPARE(Customer::isValidBusinessId(id), check == expected);
            }
        }
        QCOMPARE(Customer::businessIdCheckDigit(QStringLiteral("123456")), -1);
        QCOMPARE(Customer::businessIdCheckDigit(QStringLiteral("123456x")), -1);
    }

    void conversions_data()
    {
        QTest::addColumn<QString>("businessId");
        QTest::addColumn<QString>("vatNumber");
        QTest::addRow("first") << "0112038-9"
                               << "FI01120389";
        QTest::addRow("remainder zero") << "1572860-0"
                                        << "FI15728600";
        QTest::addRow("another") << "2617416-4"
                                 << "FI26174164";
    }

    void conversions()
    {
        QFETCH(QString, businessId);
        QFETCH(QString, vatNumber);
        QCOMPARE(Customer::convertBusinessIdToVatNumber(businessId), vatNumber);
        QCOMPARE(Customer::convertVatNumberToBusinessId(vatNumber), businessId);
        QCOMPARE(Customer::convertVatNumberToBusinessId(vatNumber.toLower()), businessId);
        QCOMPARE(Customer::convertBusinessIdToVatNumber(
                     Customer::convertVatNumberToBusinessId(vatNumber)),
            vatNumber);
    }

    void invalidConversionsUnchanged_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addRow("bad check digit") << "0112038-8";
        QTest::addRow("bad vat") << "FI01120388";
        QTest::addRow("foreign vat") << "SE556677889901";
        QTest::addRow("empty") << "";
        QTest::addRow("letters") << "abc";
    }

    void invalidConversionsUnchanged()
    {
        QFETCH(QString, text);
        QCOMPARE(Customer::convertBusinessIdToVatNumber(text), text);
        QCOMPARE(Customer::convertVatNumberToBusinessId(text), text);
    }

    void customerCopyAndClear()
    {
        Customer source;
        source.id = 3;
        source.number = 1001;
        source.name = QStringLiteral("Oy Esimerkki Ab");
        source.streetName = QStringLiteral("Katu 1");
        source.postCode = QStringLiteral("00100");
        source.townName = QStringLiteral("Helsinki");
        source.country = QStringLiteral("Suomi");
        source.contact = QStringLiteral("Maija");
        source.vatNumber = QStringLiteral("0112038-9");
        source.referenceNumber = QStringLiteral("1232");
        source.emailAddress = QStringLiteral("maija@example.fi");
        source.phoneNumber = QStringLiteral("040 123");
        source.paymentTerms = QStringLiteral("14 pv netto");
        source.deleted = true;
        source.setProperty(QStringLiteral("l"), QStringLiteral("EN"));

        Customer target;
        target.setProperty(QStringLiteral("old"), 1);
        source.copy(&target);
        QCOMPARE(target.id, 3);
        QCOMPARE(target.number, 1001);
        QCOMPARE(target.name, source.name);
        QCOMPARE(target.streetName, source.streetName);
        QCOMPARE(target.postCode, source.postCode);
        QCOMPARE(target.townName, source.townName);
        QCOMPARE(target.country, source.country);
        QCOMPARE(target.contact, source.contact);
        QCOMPARE(target.vatNumber, source.vatNumber);
        QCOMPARE(target.referenceNumber, source.referenceNumber);
        QCOMPARE(target.emailAddress, source.emailAddress);
        QCOMPARE(target.phoneNumber, source.phoneNumber);
        QCOMPARE(target.paymentTerms, source.paymentTerms);
        QCOMPARE(target.deleted, true);
        QCOMPARE(target.properties, source.properties);

        target.setProperty(QStringLiteral("l"), QStringLiteral("SV"));
        target.name = QStringLiteral("Muu");
        QCOMPARE(source.property(QStringLiteral("l")).toString(), QStringLiteral("EN"));
        QCOMPARE(source.name, QStringLiteral("Oy Esimerkki Ab"));

        target.clear();
        QCOMPARE(target.id, -1);
        QCOMPARE(target.number, -1);
        QVERIFY(target.name.isEmpty());
        QVERIFY(target.paymentTerms.isEmpty());
        QVERIFY(!target.deleted);
        QVERIFY(target.properties.isEmpty());
        QCOMPARE(source.properties.size(), 1);
    }

    void invoiceCopyAndClear()
    {
        Invoice source;
        source.id = 5;
        source.customerId = 6;
        source.type = 2;
        source.number = 1234;
        source.date = QDate(2025, 3, 1);
        source.paymentTerms = QStringLiteral("14 päivää netto");
        source.delivery = QStringLiteral("Nouto");
        source.deliveryDate = QDate(2025, 2, 28);
        source.buyerRef = QStringLiteral("Ostaja");
        source.sellerRef = QStringLiteral("Myyjä");
        source.interestOnArrears = 800;
        source.dueDate = QDate(2025, 3, 15);
        source.referenceNumber = QStringLiteral("12344");
        source.totalAmount = 12400;
        source.balance = 400;
        source.setProperty(QStringLiteral("t1"), QStringLiteral("x"));

        Invoice target;
        source.copy(&target);
        QCOMPARE(target.id, 5);
        QCOMPARE(target.customerId, 6);
        QCOMPARE(target.type, 2);
        QCOMPARE(target.number, 1234);
        QCOMPARE(target.date, source.date);
        QCOMPARE(target.paymentTerms, source.paymentTerms);
        QCOMPARE(target.delivery, source.delivery);
        QCOMPARE(target.deliveryDate, source.deliveryDate);
        QCOMPARE(target.buyerRef, source.buyerRef);
        QCOMPARE(target.sellerRef, source.sellerRef);
        QCOMPARE(target.interestOnArrears, 800);
        QCOMPARE(target.dueDate, source.dueDate);
        QCOMPARE(target.referenceNumber, source.referenceNumber);
        QCOMPARE(target.totalAmount, 12400);
        QCOMPARE(target.balance, 400);
        QCOMPARE(target.properties, source.properties);
        target.setProperty(QStringLiteral("t1"), QStringLiteral("y"));
        QCOMPARE(source.property(QStringLiteral("t1")).toString(), QStringLiteral("x"));

        target.clear();
        QCOMPARE(target.id, -1);
        QCOMPARE(target.customerId, -1);
        QCOMPARE(target.type, 0);
        QCOMPARE(target.number, 0);
        QVERIFY(target.date.isNull());
        QVERIFY(target.deliveryDate.isNull());
        QVERIFY(target.dueDate.isNull());
        QVERIFY(target.referenceNumber.isEmpty());
        QCOMPARE(target.totalAmount, 0);
        QCOMPARE(target.balance, 0);
        QCOMPARE(target.interestOnArrears, 0);
        QVERIFY(target.properties.isEmpty());
    }

    void settingsCopyAndClear()
    {
        Settings source;
        source.sellerName = QStringLiteral("Toiminimi Virtanen");
        source.sellerStreetName = QStringLiteral("Tie 2");
        source.sellerPostCode = QStringLiteral("33100");
        source.sellerTownName = QStringLiteral("Tampere");
        source.sellerCountry = QStringLiteral("Suomi");
        source.sellerBusinessId = QStringLiteral("2617416-4");
        source.sellerLogo = QByteArray("\x89PNG\r\n", 6);
        source.setProperty(QStringLiteral("settings/paymentTerms"), QStringLiteral("14"));
        Settings target;
        source.copy(&target);
        QCOMPARE(target.sellerName, source.sellerName);
        QCOMPARE(target.sellerStreetName, source.sellerStreetName);
        QCOMPARE(target.sellerPostCode, source.sellerPostCode);
        QCOMPARE(target.sellerTownName, source.sellerTownName);
        QCOMPARE(target.sellerCountry, source.sellerCountry);
        QCOMPARE(target.sellerBusinessId, source.sellerBusinessId);
        QCOMPARE(target.sellerLogo, source.sellerLogo);
        QCOMPARE(target.properties, source.properties);
        target.sellerLogo[0] = 'X';
        target.setProperty(QStringLiteral("settings/paymentTerms"), QStringLiteral("30"));
        QCOMPARE(source.sellerLogo.at(0), '\x89');
        QCOMPARE(source.property(QStringLiteral("settings/paymentTerms")).toString(),
            QStringLiteral("14"));
        target.clear();
        QVERIFY(target.sellerName.isEmpty());
        QVERIFY(target.sellerLogo.isEmpty());
        QVERIFY(target.properties.isEmpty());
    }

    void smallRecords()
    {
        Payment payment;
        QCOMPARE(payment.id, -1);
        QCOMPARE(payment.invoiceId, -1);
        QCOMPARE(payment.bankAccountId, -1);
        QVERIFY(payment.date.isNull());
        payment.amount = 1500;
        payment.date = QDate(2025, 3, 10);
        Payment paymentCopy;
        payment.copy(&paymentCopy);
        QCOMPARE(paymentCopy.amount, 1500);
        QCOMPARE(paymentCopy.date, payment.date);
        QCOMPARE(paymentCopy.bankAccountId, -1);

        BankAccount account;
        QVERIFY(account.visible);
        QVERIFY(!account.deleted);
        QCOMPARE(account.id, -1);
        account.iban = QStringLiteral("FI2112345600000785");
        account.bic = QStringLiteral("NDEAFIHH");
        account.rowNumber = 2;
        account.visible = false;
        BankAccount accountCopy;
        account.copy(&accountCopy);
        QCOMPARE(accountCopy.iban, account.iban);
        QCOMPARE(accountCopy.bic, account.bic);
        QCOMPARE(accountCopy.rowNumber, 2);
        QVERIFY(!accountCopy.visible);

        Product product;
        product.id = 4;
        product.number = QStringLiteral("A-1");
        product.category = QStringLiteral("Palvelut");
        product.amount = 500000;
        Product productCopy;
        product.copy(&productCopy);
        QCOMPARE(productCopy.id, 4);
        QCOMPARE(productCopy.number, product.number);
        QCOMPARE(productCopy.category, product.category);
        QCOMPARE(productCopy.amount, 500000LL);
        productCopy.clear();
        QCOMPARE(productCopy.id, -1);
        QCOMPARE(productCopy.amount, 0LL);
        QVERIFY(!productCopy.vatExcluded);

        PrintScript script;
        QCOMPARE(script.id, -1);
        script.type = QStringLiteral("invoice");
        script.sourceCode = QStringLiteral("print();");
        PrintScript scriptCopy;
        script.copy(&scriptCopy);
        QCOMPARE(scriptCopy.type, script.type);
        QCOMPARE(scriptCopy.sourceCode, script.sourceCode);
    }

    void criteria()
    {
        InvoiceCriteria criteria;
        QCOMPARE(criteria.numberFrom, -1);
        QCOMPARE(criteria.types, -1);
        QCOMPARE(criteria.paymentStatus, -1);
        QCOMPARE(criteria.limit, -1);
        QVERIFY(!criteria.descending);
        criteria.dateFrom = QDate(2025, 1, 1);
        criteria.text = QStringLiteral("*työ*");
        criteria.types = 0b101;
        InvoiceCriteria criteriaCopy;
        criteria.copy(&criteriaCopy);
        QCOMPARE(criteriaCopy.dateFrom, criteria.dateFrom);
        QCOMPARE(criteriaCopy.text, criteria.text);
        QCOMPARE(criteriaCopy.types, 5);
        criteriaCopy.clear();
        QVERIFY(criteriaCopy.dateFrom.isNull());
        QCOMPARE(criteriaCopy.types, -1);

        PaymentCriteria payments;
        QCOMPARE(payments.idFrom, -1);
        QCOMPARE(payments.bankAccountId, -1);
        payments.invoiceId = 9;
        PaymentCriteria paymentsCopy;
        payments.copy(&paymentsCopy);
        QCOMPARE(paymentsCopy.invoiceId, 9);
        paymentsCopy.clear();
        QCOMPARE(paymentsCopy.invoiceId, -1);
    }
};

QTEST_GUILESS_MAIN(TestRecords)
#include "tst_records.moc"
