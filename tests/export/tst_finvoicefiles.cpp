#include "domain/customer.h"
#include "expected.h"
#include "export/finvoicevalidator.h"
#include "finvoicereader.h"
#include "invoicefixture.h"
#include "print/xmlscriptengine.h"

#include <QtTest>

// Finvoice files written by the built-in script for every kind of invoice, in every version, with
// and without the envelope: each validates against the official schema of its version, and the
// figures read back equal those computed here from the rows.
class TestFinvoiceFiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void documents_data();
    void documents();
    void bankAccounts_data();
    void bankAccounts();
    void oneFileForAll();

private:
    struct Case
    {
        int id = -1;
        int number = 0;
        int printType = 0;
        QList<InvoiceItem> items;
        long long balance = 0;
        QString typeCode, status, buyerName, countryCode;
        QString rowText; // of the first row, as read back
    };

    QString newFile() { return m_dir.filePath(QStringLiteral("%1.xml").arg(++m_files)); }
    // Writes and validates; the reader holds the file, warnings what the engine reported.
    bool writeValid(int id, const QString& version, bool soapEnv, FinvoiceReader* reader,
        int printType = 0, QStringList* warnings = nullptr);

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
    int m_files = 0;
    QMap<QString, Case> m_cases;
};

namespace {
using Expected::plainEuros;
using Expected::rowTotal;

const QStringList versions { "1.3", "2.01", "3.0" };
const QStringList ibans { "FI3457200020086597", "FI5211443500061725", "FI1540060010033455" };
const QStringList bics { "OKOYFIHH", "NDEAFIHH", "ITELFIHH" };

InvoiceItem row(const char* number, const char* name, long long quantity, const char* unit,
    long long amount, bool vatExcluded, int vatRate, int discount = 0, const char* text = "")
{
    return { -1, -1, QString::fromUtf8(number), QString::fromUtf8(name), quantity,
        QString::fromUtf8(unit), amount, vatRate, vatExcluded, discount, QString::fromUtf8(text) };
}

// Scaled integers as Finvoice writes them: "25,5", "14", "-7,5".
QString decimal(long long value, int scale)
{
    long long divisor = 1;
    for (int i = 0; i < scale; ++i)
        divisor *= 10;
    QString fraction = QString::number(std::llabs(value) % divisor).rightJustified(scale, '0');
    while (fraction.endsWith('0'))
        fraction.chop(1);
    return (value < 0 ? QStringLiteral("-") : QString())
        + QString::number(std::llabs(value) / divisor)
        + (fraction.isEmpty() ? QString() : QStringLiteral(",") + fraction);
}
} // namespace

void TestFinvoiceFiles::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    QVERIFY(m_fixture.setSetting("finvoice/senderId", "003723456780"));
    QVERIFY(m_fixture.setSetting("finvoice/intermediatorId", "OKOYFIHH"));
    QVERIFY(m_fixture.setSetting("finvoice/defaultReceiverId", "TULOSTUS"));

    auto customer = [](const char* name, const char* street, const char* postCode, const char* town,
                        const char* country, const char* vatNumber) {
        Customer c;
        c.name = QString::fromUtf8(name);
        c.streetName = QString::fromUtf8(street);
        c.postCode = QString::fromUtf8(postCode);
        c.townName = QString::fromUtf8(town);
        c.country = QString::fromUtf8(country);
        c.vatNumber = QString::fromUtf8(vatNumber);
        return c;
    };
    Customer eInvoiced
        = customer("Verkkokauppa Ketola Oy", "Kauppakatu 3", "00100", "Helsinki", "", "2345678-0");
    eInvoiced.setProperty(QStringLiteral("e1"), "NDEAFIHH");
    eInvoiced.setProperty(QStringLiteral("e2"), "003723456780");
    const int foreign = m_fixture.addCustomer(customer(
        "Svensk Form AB", "Storgatan 8", "111 22", "Stockholm", "Ruotsi", "SE556677889901"));
    const int eInvoice = m_fixture.addCustomer(eInvoiced);
    const int special = m_fixture.addCustomer(
        customer("Ääni & Kuva <Studio> Жук 😀", "Mäkitie 1 & 2", "00200", "Helsinki", "", ""));
    QVERIFY2(foreign > 0 && eInvoice > 0 && special > 0, qPrintable(m_fixture.lastError()));

    const QList<InvoiceItem> twoRates = InvoiceFixture::sampleItems();
    const QList<InvoiceItem> oneRate { row("301", "Kuvaus", 20000, "h", 720000, true, 2550),
        row("302", "Matkakulut", 10000, "kpl", 453000, false, 2550, 500) };
    QList<InvoiceItem> negative = twoRates;
    for (InvoiceItem& item : negative)
        item.quantity = -item.quantity;
    const QList<InvoiceItem> zeroRate { row("401", "Suunnittelu", 20000, "h", 1500000, true, 0),
        row("402", "Lisenssi", 10000, "kpl", 999900, true, 0) };
    const QList<InvoiceItem> specialRows { row(
        "501", "Äänitys & <miksaus>", 30000, "h", 650000, true, 2550, 0, "Kiitos – “hyvää” 😀") };

    const char* const virtanen = "Rautakauppa Virtanen Oy";
    const struct
    {
        const char* name;
        int storedType, printType;
        QList<InvoiceItem> items;
        int customer;
        long long paid;
        const char *typeCode, *status, *buyerName;
    } cases[] = {
        { "invoice", 0, 0, twoRates, 0, 0, "INV01", "NOTPAID", virtanen },
        { "one VAT rate", 0, 0, oneRate, 0, 0, "INV01", "NOTPAID", virtanen },
        { "interest invoice", 1, 0, oneRate, 0, 0, "INV03", "NOTPAID", virtanen },
        { "credit note", 2, 0, negative, 0, 0, "INV02", "NOTPAID", virtanen },
        { "reminder", 0, 3, twoRates, 0, 10000, "INV08", "PARTLYPAID", virtanen },
        { "receipt", 0, 4, twoRates, 0, Expected::total(twoRates), "INV01", "PAID", virtanen },
        { "delivery note", 3, 0, twoRates, 0, 0, "DEV01", "NOTPAID", virtanen },
        { "foreign customer", 0, 0, zeroRate, foreign, 0, "INV01", "NOTPAID", "Svensk Form AB" },
        { "e-invoice customer", 0, 0, oneRate, eInvoice, 0, "INV01", "NOTPAID",
            "Verkkokauppa Ketola Oy" },
        // What ISO-8859-15 lacks is replaced; the markup characters come back as they were.
        { "special characters", 0, 0, specialRows, special, 0, "INV01", "NOTPAID",
            "Ääni & Kuva <Studio> ??? ?" },
    };
    int number = 3001;
    for (const auto& data : cases) {
        Case c { -1, number++, data.printType, data.items, Expected::total(data.items) - data.paid,
            data.typeCode, data.status, QString::fromUtf8(data.buyerName),
            data.customer == foreign ? "SE" : "FI", data.items.first().text };
        if (data.customer == special)
            c.rowText = QStringLiteral("Kiitos - \"hyvää\" ?");
        c.id
            = m_fixture.addInvoice(data.storedType, data.items, c.number, data.customer, data.paid);
        QVERIFY2(c.id > 0, qPrintable(m_fixture.lastError()));
        m_cases.insert(QString::fromLatin1(data.name), c);
    }
}

bool TestFinvoiceFiles::writeValid(int id, const QString& version, bool soapEnv,
    FinvoiceReader* reader, int printType, QStringList* warnings)
{
    XmlScriptEngine engine;
    engine.setSoapEnvEnabled(soapEnv);
    const QString file = newFile();
    if (!m_fixture.writeFinvoice(id, version, file, &engine, false, printType)) {
        qWarning() << m_fixture.lastError();
        return false;
    }
    if (warnings)
        *warnings = engine.warnings();
    FinvoiceValidator validator;
    if (!validator.validateFile(file) || validator.documentCount() != 1) {
        qWarning() << validator.lastError() << validator.findings();
        return false;
    }
    if (!reader->readFile(file)) {
        qWarning() << reader->error();
        return false;
    }
    return reader->partCount() == (soapEnv ? 2 : 1);
}

void TestFinvoiceFiles::documents_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("soapEnv");
    for (auto it = m_cases.constBegin(); it != m_cases.constEnd(); ++it) {
        for (const QString& version : versions) {
            for (const bool soapEnv : { true, false })
                QTest::addRow("%s, %s%s", qPrintable(it.key()), qPrintable(version),
                    soapEnv ? ", envelope" : "")
                    << it.key() << version << soapEnv;
        }
    }
}

void TestFinvoiceFiles::documents()
{
    QFETCH(QString, name);
    QFETCH(QString, version);
    QFETCH(bool, soapEnv);
    const Case c = m_cases.value(name);
    FinvoiceReader reader;
    QStringList warnings;
    QVERIFY(writeValid(c.id, version, soapEnv, &reader, c.printType, &warnings));
    QVERIFY(!reader.bytes().contains('\x1A'));
    // Жук, 😀, the dash and the quotes, each once.
    QCOMPARE(warnings.size(), name == "special characters" ? 7 : 0);
    const int part = soapEnv ? 1 : 0;
    auto value = [&](const QString& path) { return reader.value(part, "Finvoice/" + path); };
    auto values = [&](const QString& path) { return reader.values(part, "Finvoice/" + path); };

    // The breakdown by rate and the rows, from the rows that carry an amount.
    QMap<int, long long> included;
    QStringList rowAmounts;
    QStringList rowBases;
    QStringList quantities;
    for (const InvoiceItem& item : c.items) {
        if (item.quantity == 0)
            continue;
        included[item.vatRate] += rowTotal(item, true);
        rowAmounts.append(plainEuros(rowTotal(item, true)));
        rowBases.append(plainEuros(rowTotal(item, false)));
        quantities.append(decimal(item.quantity, 4));
    }
    QStringList rates;
    QStringList bases;
    QStringList vats;
    long long total = 0;
    long long base = 0;
    for (auto it = included.constBegin(); it != included.constEnd(); ++it) {
        const long long rateBase
            = Expected::roundHalfAway(it.value() / (1.0L + it.key() / 10000.0L));
        rates.append(decimal(it.key(), 2));
        bases.append(plainEuros(rateBase));
        vats.append(plainEuros(it.value() - rateBase));
        total += it.value();
        base += rateBase;
    }

    QCOMPARE(value("InvoiceDetails/InvoiceNumber"), QString::number(c.number));
    QCOMPARE(value("InvoiceDetails/InvoiceTypeCode"), c.typeCode);
    QCOMPARE(value("PaymentStatusDetails/PaymentStatusCode"), c.status);
    QCOMPARE(value("InvoiceDetails/InvoiceDate"), QString("20250301"));
    QCOMPARE(value("InvoiceDetails/InvoiceDate@Format"), QString("CCYYMMDD"));
    QCOMPARE(value("InvoiceDetails/PaymentTermsDetails/InvoiceDueDate"), QString("20250315"));
    QCOMPARE(value("InvoiceDetails/InvoiceTotalVatIncludedAmount"), plainEuros(total));
    QCOMPARE(value("InvoiceDetails/InvoiceTotalVatExcludedAmount"), plainEuros(base));
    QCOMPARE(value("InvoiceDetails/InvoiceTotalVatAmount"), plainEuros(total - base));
    QCOMPARE(values("InvoiceDetails/VatSpecificationDetails/VatRatePercent"), rates);
    QCOMPARE(values("InvoiceDetails/VatSpecificationDetails/VatBaseAmount"), bases);
    QCOMPARE(values("InvoiceDetails/VatSpecificationDetails/VatRateAmount"), vats);
    QCOMPARE(values("InvoiceRow/RowAmount"), rowAmounts);
    QCOMPARE(values("InvoiceRow/RowVatExcludedAmount"), rowBases);
    QCOMPARE(values("InvoiceRow/InvoicedQuantity"), quantities);
    QCOMPARE(values("InvoiceRow/RowFreeText").value(0), c.rowText);
    QCOMPARE(value("BuyerPartyDetails/BuyerOrganisationName"), c.buyerName);
    QCOMPARE(values("BuyerPartyDetails/BuyerPostalAddressDetails/CountryCode"),
        version == "3.0" ? QStringList(c.countryCode) : QStringList());

    const QString epi = "EpiDetails/EpiPaymentInstructionDetails/";
    QCOMPARE(value(epi + "EpiRemittanceInfoIdentifier"), m_fixture.referenceNumber(c.number));
    QCOMPARE(value(epi + "EpiDateOptionDate"), QString("20250315"));
    const bool nothingToPay = c.typeCode == "DEV01" || c.status == "PAID";
    QCOMPARE(value(epi + "EpiInstructedAmount"), plainEuros(nothingToPay ? 0 : c.balance));
    QCOMPARE(
        value("EpiDetails/EpiPartyDetails/EpiBeneficiaryPartyDetails/EpiAccountID"), ibans.first());
    QCOMPARE(value("EpiDetails/EpiPartyDetails/EpiBfiPartyDetails/EpiBfiIdentifier"), bics.first());
}

void TestFinvoiceFiles::bankAccounts_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<int>("accounts");
    for (const QString& version : versions) {
        for (const int accounts : { 1, 3 })
            QTest::addRow("%s, %d", qPrintable(version), accounts) << version << accounts;
    }
}

void TestFinvoiceFiles::bankAccounts()
{
    QFETCH(QString, version);
    QFETCH(int, accounts);
    QVERIFY(m_fixture.showBankAccounts(accounts));
    FinvoiceReader reader;
    const bool written = writeValid(m_cases.value("invoice").id, version, false, &reader);
    QVERIFY(m_fixture.showBankAccounts(2));
    QVERIFY(written);
    const QString account = "Finvoice/SellerInformationDetails/SellerAccountDetails/";
    QCOMPARE(reader.values(0, account + "SellerAccountID"), ibans.mid(0, accounts));
    QCOMPARE(reader.values(0, account + "SellerBic"), bics.mid(0, accounts));
    QCOMPARE(reader.values(0, account + "SellerAccountID@IdentificationSchemeName"),
        QStringList(accounts, "IBAN"));
}

// The export's one file for all: envelope and document after envelope and document, each
// document checked against the schema of its own version.
void TestFinvoiceFiles::oneFileForAll()
{
    const QString file = newFile();
    const QStringList names { "invoice", "credit note", "special characters" };
    XmlScriptEngine engine;
    for (int i = 0; i < names.size(); ++i) {
        const Case c = m_cases.value(names.at(i));
        QVERIFY2(m_fixture.writeFinvoice(c.id, versions.at(i), file, &engine, i > 0),
            qPrintable(m_fixture.lastError()));
    }
    FinvoiceValidator validator;
    QVERIFY2(validator.validateFile(file), qPrintable(validator.findings().join('\n')));
    QCOMPARE(validator.documentCount(), names.size());
    FinvoiceReader reader;
    QVERIFY2(reader.readFile(file), qPrintable(reader.error()));
    QCOMPARE(reader.partCount(), 2 * names.size());
    for (int i = 0; i < names.size(); ++i) {
        QCOMPARE(reader.value(2 * i + 1, "Finvoice@Version"), versions.at(i));
        QCOMPARE(reader.value(2 * i + 1, "Finvoice/InvoiceDetails/InvoiceNumber"),
            QString::number(m_cases.value(names.at(i)).number));
    }
}

QTEST_MAIN(TestFinvoiceFiles)
#include "tst_finvoicefiles.moc"
