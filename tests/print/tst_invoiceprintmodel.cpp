#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/decimal.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/settings.h"
#include "invoicefixture.h"
#include "print/csvwriter.h"
#include "print/invoiceprintmodel.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

#ifndef VEKLARI_TEST_BACKEND
#define VEKLARI_TEST_BACKEND TestDatabase::SQLite
#endif

// The values that scripts read from a stored invoice, checked against the
// stored data and against totals computed here independently.
class TestInvoicePrintModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void paths_data();
    void paths();
    void vatBreakdown_data();
    void vatBreakdown();
    void barcodes_data();
    void barcodes();
    void withoutBankAccounts();
    void printedType_data();
    void printedType();
    void copyInvoice();
    void severalInvoices();
    void csvWriter_data();
    void csvWriter();
    void exportToCsv();
    void creditNoteCsv();

private:
    InvoiceFixture m_fixture { VEKLARI_TEST_BACKEND };
    int m_id = -1;
    int m_creditId = -1;
};

// A national reference number: the base and its 7-3-1 check digit.
static QString withCheckDigit(const QString& base)
{
    static const int weights[] = { 7, 3, 1 };
    int sum = 0;
    for (int i = 0; i < base.size(); ++i)
        sum += base.at(base.size() - 1 - i).digitValue() * weights[i % 3];
    return base + QString::number((10 - sum % 10) % 10);
}

static long long roundHalfAway(long double value)
{
    return value < 0 ? -(long long)std::floor(-value + 0.5L) : (long long)std::floor(value + 0.5L);
}

// Row totals in cents: VAT included and excluded.
static long long rowTotal(const InvoiceItem& item, bool vatIncluded)
{
    long double amount = (long double)item.quantity / 10000 * item.amount / 10000
        * (10000 - item.discount) / 10000;
    const long double factor = 1.0L + item.vatRate / 10000.0L;
    if (item.vatExcluded && vatIncluded)
        amount *= factor;
    if (!item.vatExcluded && !vatIncluded)
        amount /= factor;
    return roundHalfAway(amount * 100);
}

void TestInvoicePrintModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    Decimal::registerMetaType();
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    QVERIFY(m_fixture.setSetting(QStringLiteral("invoiceForm/logoHeight"), QStringLiteral("25")));
    QVERIFY(m_fixture.setSetting(
        QStringLiteral("invoiceForm/footer/text3"), QStringLiteral("Alv-rek.")));
    QVERIFY(
        m_fixture.setSetting(QStringLiteral("finvoice/senderId"), QStringLiteral("003723456780")));
    QVERIFY(
        m_fixture.setSetting(QStringLiteral("finvoice/epiInstructionId"), QStringLiteral("00")));
    QVERIFY(m_fixture.setSetting(
        QStringLiteral("invoiceForm/invoiceItemOptions"), QStringLiteral("3")));
    m_id = m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 1001, 0, 50000);
    QVERIFY2(m_id > 0, qPrintable(m_fixture.lastError()));
    m_creditId = m_fixture.addInvoice(2, InvoiceFixture::sampleItems(), 1002, 1);
    QVERIFY(m_fixture.refresh());
}

void TestInvoicePrintModel::paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QVariant>("expected");

    const QList<InvoiceItem> items = InvoiceFixture::sampleItems();
    long long total = 0;
    for (const InvoiceItem& item : items)
        total += rowTotal(item, true);

    QTest::addRow("invoice count") << "invoices/length" << QVariant(1);
    QTest::addRow("number") << "invoices/0/number" << QVariant(1001);
    QTest::addRow("type") << "invoices/0/type" << QVariant(0);
    QTest::addRow("date") << "invoices/0/date" << QVariant(QDate(2025, 3, 1));
    QTest::addRow("due date") << "invoices/0/dueDate" << QVariant(QDate(2025, 3, 15));
    QTest::addRow("no delivery date") << "invoices/0/hasDeliveryDate" << QVariant(false);
    QTest::addRow("payment terms") << "invoices/0/paymentTerms" << QVariant("14 päivää netto");
    QTest::addRow("delivery") << "invoices/0/delivery" << QVariant("Nouto");
    QTest::addRow("buyer reference") << "invoices/0/buyerRef" << QVariant("Tilaus 4471");
    QTest::addRow("seller reference") << "invoices/0/sellerRef" << QVariant("Kaisa Kuusela");
    QTest::addRow("interest") << "invoices/0/interestOnArrears" << Decimal(800, 2).toVariant();
    // Not on the invoice: the company's setting from the new database.
    QTest::addRow("period for complaints")
        << "invoices/0/periodForComplaints" << QVariant("8 päivää");
    QTest::addRow("total") << "invoices/0/totalAmount" << Decimal(total, 2).toVariant();
    QTest::addRow("balance") << "invoices/0/balance" << Decimal(total - 50000, 2).toVariant();
    const QString reference = withCheckDigit(QStringLiteral("100100"));
    QTest::addRow("reference") << "invoices/0/referenceNumber"
                               << QVariant(reference.left(2) + ' ' + reference.mid(2));
    QTest::addRow("reference raw") << "invoices/0/referenceNumberRaw" << QVariant(reference);
    QTest::addRow("reference in bank files")
        << "invoices/0/referenceNumberSpy" << QVariant(reference.rightJustified(20, '0'));
    QTest::addRow("notice text") << "invoices/0/noticeText1" << QVariant("Kiitos tilauksestanne!");
    QTest::addRow("form notice text") << "invoices/0/noticeText2" << QVariant("Lasku 1001");
    QTest::addRow("customer number") << "invoices/0/customer/number" << QVariant(1);
    QTest::addRow("customer name")
        << "invoices/0/customer/name" << QVariant("Rautakauppa Virtanen Oy");
    QTest::addRow("customer contact")
        << "invoices/0/customer/contact" << QVariant("Matti Virtanen");
    QTest::addRow("customer town") << "invoices/0/customer/townName" << QVariant("Jyväskylä");
    QTest::addRow("customer business id")
        << "invoices/0/customer/businessId" << QVariant("1234567-1");
    QTest::addRow("customer vat number")
        << "invoices/0/customer/vatNumber" << QVariant("FI12345671");
    QTest::addRow("customer has business id")
        << "invoices/0/customer/hasBusinessId" << QVariant(true);
    QTest::addRow("customer language unset") << "invoices/0/customer/language" << QVariant("");
    QTest::addRow("row count") << "invoices/0/items/length" << QVariant(4);
    QTest::addRow("row product") << "invoices/0/items/1/productName"
                                 << QVariant("Logon viimeistely");
    QTest::addRow("row text") << "invoices/0/items/3/text"
                              << QVariant("Toimitus sovitusti 14.3.2025.");
    QTest::addRow("row quantity") << "invoices/0/items/0/quantity" << Decimal(75000, 4).toVariant();
    QTest::addRow("row unit") << "invoices/0/items/0/unitCode" << QVariant("h");
    QTest::addRow("row unit price")
        << "invoices/0/items/0/amountVatExcluded" << Decimal(850000, 4).toVariant();
    QTest::addRow("row discount") << "invoices/0/items/1/discountPercent"
                                  << Decimal(1000, 2).toVariant();
    QTest::addRow("row vat rate") << "invoices/0/items/2/vatRate" << Decimal(1400, 2).toVariant();
    for (int i = 0; i < 3; ++i) {
        const long long included = rowTotal(items.at(i), true);
        const long long excluded = rowTotal(items.at(i), false);
        QTest::addRow("row %d total", i) << QStringLiteral("invoices/0/items/%1/totalAmount").arg(i)
                                         << Decimal(included, 2).toVariant();
        QTest::addRow("row %d total without vat", i)
            << QStringLiteral("invoices/0/items/%1/totalAmountVatExcluded").arg(i)
            << Decimal(excluded, 2).toVariant();
        QTest::addRow("row %d vat", i)
            << QStringLiteral("invoices/0/items/%1/totalVatAmount").arg(i)
            << Decimal(included - excluded, 2).toVariant();
    }
    QTest::addRow("seller name") << "seller/name" << QVariant("Kuusela Design Oy");
    QTest::addRow("seller street") << "seller/streetName" << QVariant("Hämeenkatu 12 B 7");
    QTest::addRow("seller business id") << "seller/businessId" << QVariant("2345678-0");
    QTest::addRow("seller vat number") << "seller/vatNumber" << QVariant("FI23456780");
    QTest::addRow("seller phone") << "seller/phoneNumber" << QVariant("040 123 4567");
    QTest::addRow("seller web") << "seller/webAddress" << QVariant("https://www.kuuseladesign.fi");
    QTest::addRow("seller web short")
        << "seller/webAddressShort" << QVariant("www.kuuseladesign.fi");
    QTest::addRow("seller has no logo") << "seller/hasLogo" << QVariant(false);
    QTest::addRow("visible accounts") << "seller/bankAccounts/length" << QVariant(2);
    QTest::addRow("all accounts") << "seller/bankAccountsAll/length" << QVariant(3);
    QTest::addRow("iban") << "seller/bankAccounts/0/iban" << QVariant("FI34 5720 0020 0865 97");
    QTest::addRow("iban raw") << "seller/bankAccounts/0/ibanRaw" << QVariant("FI3457200020086597");
    QTest::addRow("bban raw") << "seller/bankAccounts/1/bbanRaw" << QVariant("11443500061725");
    QTest::addRow("bic") << "seller/bankAccounts/1/bic" << QVariant("NDEAFIHH");
    QTest::addRow("hidden account in all")
        << "seller/bankAccountsAll/2/name" << QVariant("Säästöpankki");
    QTest::addRow("hidden account not visible")
        << "seller/bankAccountsAll/2/visible" << QVariant(false);
    QTest::addRow("barcode visible") << "settings/barcodeVisible" << QVariant(true);
    QTest::addRow("logo height") << "settings/logoHeight" << QVariant(25);
    QTest::addRow("row options") << "settings/invoiceItemOptions" << QVariant(3);
    QTest::addRow("rounding mode default") << "settings/roundingMode" << QVariant(1);
    QTest::addRow("reminder text") << "settings/reminderText"
                                   << QVariant("Pyydämme ystävällisesti maksamaan saatavamme. "
                                               "Mikäli kuitenkin olette jo suorittaneet tämän "
                                               "laskun, tämä maksumuistutus on aiheeton.");
    QTest::addRow("sender id") << "settings/senderId" << QVariant("003723456780");
    QTest::addRow("payment instruction") << "settings/epiPaymentInstructionId" << QVariant("00");
    QTest::addRow("footer text") << "settings/footerText1" << QVariant("Kotipaikka Tampere");
    QTest::addRow("footer text 3") << "settings/footerText3" << QVariant("Alv-rek.");
    QTest::addRow("no footer text 4") << "settings/footerText4" << QVariant();
    QTest::addRow("invoice out of range") << "invoices/1/number" << QVariant();
    QTest::addRow("negative index") << "invoices/-1/number" << QVariant();
    QTest::addRow("row out of range") << "invoices/0/items/4/text" << QVariant();
    QTest::addRow("account out of range") << "seller/bankAccounts/2/iban" << QVariant();
    QTest::addRow("unknown field") << "invoices/0/colour" << QVariant();
    QTest::addRow("unknown root") << "customers/length" << QVariant();
    QTest::addRow("empty path") << "" << QVariant();
    QTest::addRow("trailing slash") << "invoices/0/number/" << QVariant();
    QTest::addRow("case matters") << "Invoices/length" << QVariant();
}

void TestInvoicePrintModel::paths()
{
    QFETCH(QString, path);
    QFETCH(QVariant, expected);
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().id = m_id;
    QVERIFY2(model.run(), qPrintable(model.lastError()));
    const QVariant value = model.value(path);
    QCOMPARE(value.isValid(), expected.isValid());
    if (expected.typeId() == QMetaType::QString)
        QCOMPARE(value.toString(), expected.toString());
    else
        QCOMPARE(value, expected);
}

void TestInvoicePrintModel::vatBreakdown_data()
{
    QTest::addColumn<int>("mode");
    QTest::addRow("from the VAT-included sums") << 1;
    QTest::addRow("from the rows' own VAT") << 2;
}

void TestInvoicePrintModel::vatBreakdown()
{
    QFETCH(int, mode);
    QVERIFY(
        m_fixture.setSetting(QStringLiteral("invoiceForm/roundingMode"), QString::number(mode)));
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().id = m_id;
    const bool ran = model.run();
    QVERIFY(m_fixture.setSetting(QStringLiteral("invoiceForm/roundingMode"), QString()));
    QVERIFY2(ran, qPrintable(model.lastError()));
    QCOMPARE(model.value(QStringLiteral("settings/roundingMode")), QVariant(mode));

    // Independent sums per rate; the description-only row has no rate.
    QMap<int, long long> included;
    QMap<int, long long> excluded;
    for (const InvoiceItem& item : InvoiceFixture::sampleItems()) {
        if (item.quantity == 0)
            continue;
        included[item.vatRate] += rowTotal(item, true);
        excluded[item.vatRate] += rowTotal(item, false);
    }
    QCOMPARE(model.value(QStringLiteral("invoices/0/vat/length")), QVariant(included.size()));
    long long totalExcluded = 0;
    int index = 0;
    for (auto it = included.constBegin(); it != included.constEnd(); ++it, ++index) {
        const int rate = it.key();
        const long long base = mode == 2
            ? excluded.value(rate)
            : roundHalfAway((long double)it.value() / (1.0L + rate / 10000.0L));
        totalExcluded += base;
        const QString prefix = QStringLiteral("invoices/0/vat/%1/").arg(index);
        QCOMPARE(model.value(prefix + "percent"), Decimal(rate, 2).toVariant());
        QCOMPARE(model.value(prefix + "amount"), Decimal(it.value(), 2).toVariant());
        QCOMPARE(model.value(prefix + "amountVatExcluded"), Decimal(base, 2).toVariant());
        QCOMPARE(model.value(prefix + "vatAmount"), Decimal(it.value() - base, 2).toVariant());
    }
    QCOMPARE(model.value(QStringLiteral("invoices/0/totalAmountVatExcluded")),
        Decimal(totalExcluded, 2).toVariant());
}

// The virtual barcode built here from its parts: version, the IBAN's
// digits, euros and cents, reference, due date.
static QString expectedBarcode(int version, long long cents, const QString& reference)
{
    QString text = QString::number(version) + QStringLiteral("3457200020086597");
    text += QString::number(cents).rightJustified(8, QLatin1Char('0'));
    if (version == 4) {
        text += QStringLiteral("000") + reference.rightJustified(20, QLatin1Char('0'));
    } else {
        // RF check digits: the reference followed by "RF00" as digits, mod 97.
        const QString digits = reference + QStringLiteral("271500");
        int remainder = 0;
        for (const QChar c : digits)
            remainder = (remainder * 10 + c.digitValue()) % 97;
        const QString check = QStringLiteral("%1").arg(98 - remainder, 2, 10, QLatin1Char('0'));
        text += (check + reference).rightJustified(23, QLatin1Char('0'));
    }
    return text + QStringLiteral("250315");
}

void TestInvoicePrintModel::barcodes_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("version");
    QTest::addColumn<bool>("balance");
    QTest::addRow("barcode") << "barcode" << 5 << false;
    QTest::addRow("barcode5") << "barcode5" << 5 << false;
    QTest::addRow("barcode4") << "barcode4" << 4 << false;
    QTest::addRow("balance barcode") << "balanceBarcode" << 5 << true;
    QTest::addRow("balance barcode4") << "balanceBarcode4" << 4 << true;
}

void TestInvoicePrintModel::barcodes()
{
    QFETCH(QString, path);
    QFETCH(int, version);
    QFETCH(bool, balance);
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().id = m_id;
    QVERIFY(model.run());
    long long total = 0;
    for (const InvoiceItem& item : InvoiceFixture::sampleItems())
        total += rowTotal(item, true);
    const QString barcode = model.value(QStringLiteral("invoices/0/") + path).toString();
    QCOMPARE(barcode.size(), 54);
    QCOMPARE(barcode,
        expectedBarcode(version, balance ? total - 50000 : total, withCheckDigit("100100")));
    QCOMPARE(model.createBarcode(model.invoice(0), version, balance), barcode);
}

void TestInvoicePrintModel::withoutBankAccounts()
{
    QVERIFY(m_fixture.testDatabase()->exec(
        { QStringLiteral("UPDATE bank_account SET visible = FALSE") }));
    QVERIFY(m_fixture.refresh());
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().id = m_id;
    const bool ran = model.run();
    QVERIFY(m_fixture.testDatabase()->exec({ QStringLiteral(
        "UPDATE bank_account SET visible = TRUE WHERE iban <> 'FI1540060010033455'") }));
    QVERIFY(m_fixture.refresh());
    QVERIFY(ran);
    QCOMPARE(model.value(QStringLiteral("seller/bankAccounts/length")), QVariant(0));
    QCOMPARE(model.value(QStringLiteral("seller/bankAccountsAll/length")), QVariant(3));
    for (const char* path :
        { "barcode", "barcode4", "barcode5", "balanceBarcode", "balanceBarcode4" }) {
        const QVariant value = model.value(QStringLiteral("invoices/0/") + QLatin1String(path));
        QVERIFY(value.isValid());
        QCOMPARE(value.toString(), QString());
    }
}

void TestInvoicePrintModel::printedType_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<int>("forced");
    QTest::addColumn<int>("printed");
    QTest::addRow("invoice") << 0 << 0 << 0;
    QTest::addRow("interest invoice") << 1 << 0 << 1;
    QTest::addRow("credit note") << 2 << 0 << 2;
    QTest::addRow("stored 3 moves up") << 3 << 0 << 5;
    QTest::addRow("stored 4 moves up") << 4 << 0 << 6;
    QTest::addRow("receipt over a credit note") << 2 << 4 << 4;
    QTest::addRow("reminder") << 0 << 3 << 3;
    QTest::addRow("delivery note") << 1 << 5 << 5;
}

void TestInvoicePrintModel::printedType()
{
    QFETCH(int, stored);
    QFETCH(int, forced);
    QFETCH(int, printed);
    const int id = m_fixture.addInvoice(stored, InvoiceFixture::sampleItems(), 1100 + stored);
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().id = id;
    model.setPrintType(forced);
    QVERIFY(model.run());
    QCOMPARE(model.value(QStringLiteral("invoices/0/type")), QVariant(printed));
    QCOMPARE(model.printedType(model.invoice(0)), printed);
}

void TestInvoicePrintModel::copyInvoice()
{
    InvoicePrintModel all(m_fixture.registry());
    all.criteria().numberFrom = 1001;
    all.criteria().numberTo = 1002;
    QVERIFY(all.run());
    QCOMPARE(all.invoiceCount(), 2);

    InvoicePrintModel single(m_fixture.registry());
    single.copyInvoice(&all, 1);
    QCOMPARE(single.invoiceCount(), 1);
    QCOMPARE(single.value(QStringLiteral("invoices/0/number")), QVariant(1002));
    QCOMPARE(single.value(QStringLiteral("invoices/0/type")), QVariant(2));
    QCOMPARE(single.value(QStringLiteral("invoices/0/items/length")), QVariant(4));
    QCOMPARE(single.value(QStringLiteral("invoices/0/customer/name")).toString(),
        QStringLiteral("Nordic Timber AB"));
    QCOMPARE(single.value(QStringLiteral("invoices/0/customer/language")).toString(),
        QStringLiteral("sv"));
    // The seller's accounts come along, and the copy is independent.
    QCOMPARE(single.value(QStringLiteral("seller/bankAccounts/length")), QVariant(2));
    QCOMPARE(single.value(QStringLiteral("invoices/0/barcode")),
        all.value(QStringLiteral("invoices/1/barcode")));
    all.clear();
    QCOMPARE(single.value(QStringLiteral("invoices/0/items/0/productName")).toString(),
        QStringLiteral("Graafinen suunnittelu"));
}

void TestInvoicePrintModel::severalInvoices()
{
    const int first = m_fixture.addInvoice(0, InvoiceFixture::manyItems(3), 2001);
    const int second = m_fixture.addInvoice(0, InvoiceFixture::manyItems(5), 2002);
    QVERIFY(first > 0 && second > 0);
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().numberFrom = 2001;
    model.criteria().numberTo = 2002;
    QVERIFY(model.run());
    // Alternate between the invoices: each sees its own rows.
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(model.value(QStringLiteral("invoices/1/items/length")), QVariant(5));
        QCOMPARE(model.value(QStringLiteral("invoices/0/items/length")), QVariant(3));
        QCOMPARE(model.value(QStringLiteral("invoices/1/items/4/text")).toString(),
            QStringLiteral("Työvaihe 5"));
        QCOMPARE(model.value(QStringLiteral("invoices/0/items/2/text")).toString(),
            QStringLiteral("Työvaihe 3"));
    }
    QCOMPARE(model.invoiceItems(1).size(), 5);
}

void TestInvoicePrintModel::csvWriter_data()
{
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<QString>("field");
    QTest::addColumn<bool>("number");
    QTest::addColumn<QString>("written");
    QTest::addRow("plain") << ";"
                           << "Kuusela" << false << "Kuusela";
    QTest::addRow("delimiter quoted") << ";"
                                      << "a;b" << false << "\"a;b\"";
    QTest::addRow("comma with comma delimiter") << ","
                                                << "12,50" << true << "\"12,50\"";
    QTest::addRow("comma with semicolon delimiter") << ";"
                                                    << "12,50" << true << "12,50";
    QTest::addRow("quotes doubled") << ";"
                                    << "Oy \"Ab\"" << false << "\"Oy \"\"Ab\"\"\"";
    QTest::addRow("line feed") << ";"
                               << "rivi\ntoinen" << false << "\"rivi\ntoinen\"";
    QTest::addRow("formula") << ";"
                             << "=HYPERLINK(\"x\")" << false << "\"'=HYPERLINK(\"\"x\"\")\"";
    QTest::addRow("plus") << ";"
                          << "+358 40 123" << false << "'+358 40 123";
    QTest::addRow("minus text") << ";"
                                << "-1+2" << false << "'-1+2";
    QTest::addRow("at sign") << ";"
                             << "@SUM(A1)" << false << "'@SUM(A1)";
    QTest::addRow("tab") << ";"
                         << "\tx" << false << "'\tx";
    QTest::addRow("carriage return") << ";"
                                     << "\rx" << false << "\"'\rx\"";
    QTest::addRow("negative amount stays a number") << ";"
                                                    << "-12,50" << true << "-12,50";
    QTest::addRow("empty") << ";"
                           << "" << false << "";
    QTest::addRow("utf-8") << ";"
                           << "Hämeenkatu €" << false << "Hämeenkatu €";
}

void TestInvoicePrintModel::csvWriter()
{
    QFETCH(QString, delimiter);
    QFETCH(QString, field);
    QFETCH(bool, number);
    QFETCH(QString, written);
    CsvWriter csv(delimiter);
    csv.addText(QStringLiteral("eka"));
    if (number)
        csv.addNumber(field);
    else
        csv.addText(field);
    csv.endRow();
    QCOMPARE(csv.text(), QStringLiteral("eka") + delimiter + written + QStringLiteral("\r\n"));
}

// Splits CSV text into rows of fields, honouring quotes.
static QList<QStringList> parseCsv(const QString& text, QChar delimiter)
{
    QList<QStringList> rows;
    QStringList row;
    QString field;
    bool quoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (quoted) {
            if (c == '"' && i + 1 < text.size() && text.at(i + 1) == '"') {
                field += '"';
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                field += c;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == delimiter) {
            row << field;
            field.clear();
        } else if (c == '\r' && i + 1 < text.size() && text.at(i + 1) == '\n') {
            row << field;
            rows << row;
            row.clear();
            field.clear();
            ++i;
        } else {
            field += c;
        }
    }
    return rows;
}

void TestInvoicePrintModel::exportToCsv()
{
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().numberFrom = 1001;
    model.criteria().numberTo = 1002;
    QVERIFY(model.run());
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("laskut.csv"));
    QVERIFY2(model.exportToCSV(file, PrintModel::csvFormatToDelimiter(0)),
        qPrintable(model.lastError()));
    QFile saved(file);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    const QList<QStringList> rows = parseCsv(QString::fromUtf8(saved.readAll()), ',');

    const QStringList invoiceHeader { "Numero", "Asiakasnumero", "Nimi", "Lähiosoite",
        "Postinumero", "Postitoimipaikka", "Tyyppi", "Päivämäärä", "Eräpäivä", "Maksuehdot",
        "Toimitus", "Viitteenne", "Viitteemme", "Viivästyskorko", "Viitenumero", "Veroton", "ALV",
        "Verollinen", "Avoin saldo" };
    const QStringList rowHeader { "Numero", "Tuotenumero", "Nimi", "Selite", "Määrä", "Yksikkö",
        "à-hinta", "Veroton", "ALV-%", "ALV", "Verollinen" };
    // Two invoices, an empty line, the header of rows and four rows each.
    QCOMPARE(rows.size(), 1 + 2 + 1 + 1 + 8);
    QCOMPARE(rows.at(0), invoiceHeader);
    QCOMPARE(rows.at(4), rowHeader);

    long long total = 0;
    for (const InvoiceItem& item : InvoiceFixture::sampleItems())
        total += rowTotal(item, true);
    const QString totalText
        = QStringLiteral("%1,%2").arg(total / 100).arg(total % 100, 2, 10, QLatin1Char('0'));
    const QStringList& first = rows.at(1);
    QCOMPARE(first.size(), invoiceHeader.size());
    QCOMPARE(first.at(0), QStringLiteral("1001"));
    QCOMPARE(first.at(2), QStringLiteral("Rautakauppa Virtanen Oy"));
    QCOMPARE(first.at(5), QStringLiteral("Jyväskylä"));
    QCOMPARE(first.at(6), QStringLiteral("lasku"));
    QCOMPARE(first.at(7), QStringLiteral("1.3.2025"));
    QCOMPARE(first.at(13), QStringLiteral("8"));
    QCOMPARE(first.at(14), QStringLiteral("10 0100") + withCheckDigit("100100").right(1));
    QCOMPARE(first.at(17), totalText);
    QCOMPARE(rows.at(2).at(6), QStringLiteral("hyvityslasku"));

    const QStringList& row = rows.at(6);
    QCOMPARE(row.size(), rowHeader.size());
    QCOMPARE(row.at(0), QStringLiteral("1001"));
    QCOMPARE(row.at(2), QStringLiteral("Logon viimeistely"));
    QCOMPARE(row.at(4), QStringLiteral("1"));
    QCOMPARE(row.at(6), QStringLiteral("450,00"));
    QCOMPARE(row.at(7), QStringLiteral("405,00"));
    QCOMPARE(row.at(8), QStringLiteral("25,5"));
    QCOMPARE(row.at(10), QStringLiteral("508,28"));

    QVERIFY(!model.exportToCSV(dir.filePath(QStringLiteral("ei/ole/hakemistoa.csv")), ";"));
    QVERIFY(!model.lastError().isEmpty());
}

// A credit note's negative amounts stay numbers for a spreadsheet: a plain
// minus, and UTF-8 marked so that the Finnish letters survive.
void TestInvoicePrintModel::creditNoteCsv()
{
    QList<InvoiceItem> items = InvoiceFixture::sampleItems();
    long long total = 0;
    for (InvoiceItem& item : items) {
        item.quantity = -item.quantity;
        total += rowTotal(item, true);
    }
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().id = m_fixture.addInvoice(2, items, 1003);
    QVERIFY(model.run());
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("hyvitys.csv"));
    QVERIFY2(model.exportToCSV(file, QStringLiteral(";")), qPrintable(model.lastError()));
    QFile saved(file);
    QVERIFY(saved.open(QIODevice::ReadOnly));
    const QByteArray data = saved.readAll();
    QVERIFY(data.startsWith("\xEF\xBB\xBF"));
    const QList<QStringList> rows = parseCsv(QString::fromUtf8(data.mid(3)), ';');
    QVERIFY(total < 0);
    const QString totalText
        = QStringLiteral("-%1,%2").arg(-total / 100).arg(-total % 100, 2, 10, QLatin1Char('0'));
    QCOMPARE(rows.at(1).at(5), QStringLiteral("Jyväskylä"));
    QCOMPARE(rows.at(1).at(17), totalText);
    QCOMPARE(rows.at(1).at(18), totalText);
    QCOMPARE(rows.at(4).at(4), QStringLiteral("-7,5")); // hours
}

QTEST_MAIN(TestInvoicePrintModel)
#include "tst_invoiceprintmodel.moc"
