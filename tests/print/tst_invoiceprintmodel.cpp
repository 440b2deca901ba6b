#include "domain/decimal.h"
#include "expected.h"
#include "invoicefixture.h"
#include "print/invoiceprintmodel.h"

#include <QtTest>

using Expected::rowTotal;

// The values scripts read from stored invoices against totals computed here, and invoices as CSV.
class TestInvoicePrintModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void paths_data();
    void paths();
    void vatBreakdown_data();
    void vatBreakdown();
    void exportToCsv_data();
    void exportToCsv();
    void barcodeAccount_data();
    void barcodeAccount();

private:
    bool load(InvoicePrintModel& model, int number);

    InvoiceFixture m_fixture { VEKLARI_TEST_BACKEND };
    QTemporaryDir m_dir;
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

void TestInvoicePrintModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    Decimal::registerMetaType();
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    QVERIFY(m_fixture.setSetting("invoiceForm/footer/text3", "Alv-rek."));
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 1001, 0, 50000) > 0);
    // A credit note of the sample rows turned negative.
    QList<InvoiceItem> credit = InvoiceFixture::sampleItems();
    for (InvoiceItem& item : credit)
        item.quantity = -item.quantity;
    QVERIFY(m_fixture.addInvoice(2, credit, 1003) > 0);
    QVERIFY(m_fixture.refresh());
}

bool TestInvoicePrintModel::load(InvoicePrintModel& model, int number)
{
    model.criteria().numberFrom = number;
    model.criteria().numberTo = number;
    return model.run();
}

void TestInvoicePrintModel::paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QVariant>("expected");

    const QList<InvoiceItem> items = InvoiceFixture::sampleItems();
    const long long total = Expected::total(items);
    const QString reference = withCheckDigit(QStringLiteral("100100"));
    const QList<QPair<const char*, QVariant>> rows {
        { "invoices/0/dueDate", QDate(2025, 3, 15) },
        // Not on the invoice: the company's setting of a new database.
        { "invoices/0/periodForComplaints", "8 päivää" },
        { "invoices/0/totalAmount", Decimal(total, 2).toVariant() },
        { "invoices/0/balance", Decimal(total - 50000, 2).toVariant() },
        { "invoices/0/referenceNumber", reference.left(2) + ' ' + reference.mid(2) },
        { "invoices/0/customer/vatNumber", "FI12345671" },
        // The description-only row counts as a row.
        { "invoices/0/items/length", 4 },
        { "invoices/0/items/1/discountPercent", Decimal(1000, 2).toVariant() },
        { "seller/vatNumber", "FI23456780" },
        { "seller/webAddressShort", "www.kuuseladesign.fi" },
        { "seller/bankAccounts/0/iban", "FI34 5720 0020 0865 97" },
        { "seller/bankAccounts/1/bbanRaw", "11443500061725" },
        { "settings/reminderText",
            "Pyydämme ystävällisesti maksamaan saatavamme. Mikäli kuitenkin olette jo "
            "suorittaneet tämän laskun, tämä maksumuistutus on aiheeton." },
        { "settings/footerText3", "Alv-rek." },
        { "Invoices/length", QVariant() },
    };
    for (const auto& row : rows)
        QTest::newRow(row.first) << QString::fromUtf8(row.first) << row.second;
    // Each priced row's VAT against the arithmetic done here.
    for (int i = 0; i < 3; ++i) {
        const QString prefix = QStringLiteral("invoices/0/items/%1/").arg(i);
        const long long included = rowTotal(items.at(i), true);
        const long long excluded = rowTotal(items.at(i), false);
        QTest::addRow("row %d vat", i)
            << prefix + "totalVatAmount" << Decimal(included - excluded, 2).toVariant();
    }
}

void TestInvoicePrintModel::paths()
{
    QFETCH(QString, path);
    QFETCH(QVariant, expected);
    InvoicePrintModel model(m_fixture.registry());
    QVERIFY2(load(model, 1001), qPrintable(model.lastError()));
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

// Sums per rate made here; the description-only row has no rate.
void TestInvoicePrintModel::vatBreakdown()
{
    QFETCH(int, mode);
    QVERIFY(m_fixture.setSetting("invoiceForm/roundingMode", QString::number(mode)));
    InvoicePrintModel model(m_fixture.registry());
    const bool ran = load(model, 1001);
    QVERIFY(m_fixture.setSetting("invoiceForm/roundingMode", QString()));
    QVERIFY2(ran, qPrintable(model.lastError()));
    QMap<int, long long> included;
    QMap<int, long long> excluded;
    for (const InvoiceItem& item : InvoiceFixture::sampleItems()) {
        included[item.vatRate] += rowTotal(item, true);
        excluded[item.vatRate] += rowTotal(item, false);
    }
    included.remove(0);
    QCOMPARE(model.value(QStringLiteral("invoices/0/vat/length")), QVariant(included.size()));
    long long totalExcluded = 0;
    int index = 0;
    for (auto it = included.constBegin(); it != included.constEnd(); ++it, ++index) {
        const long long base = mode == 2
            ? excluded.value(it.key())
            : Expected::roundHalfAway(it.value() / (1.0L + it.key() / 10000.0L));
        totalExcluded += base;
        const QString prefix = QStringLiteral("invoices/0/vat/%1/").arg(index);
        QCOMPARE(
            QVariantList({ model.value(prefix + "percent"), model.value(prefix + "vatAmount") }),
            QVariantList(
                { Decimal(it.key(), 2).toVariant(), Decimal(it.value() - base, 2).toVariant() }));
    }
    QCOMPARE(model.value(QStringLiteral("invoices/0/totalAmountVatExcluded")),
        Decimal(totalExcluded, 2).toVariant());
}

void TestInvoicePrintModel::exportToCsv_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QChar>("delimiter");
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("sign");
    QTest::addRow("invoice, comma") << 1001 << QChar(',') << "lasku" << 1;
    // A plain minus, so that a spreadsheet reads the amounts as numbers.
    QTest::addRow("credit note, semicolon") << 1003 << QChar(';') << "hyvityslasku" << -1;
}

void TestInvoicePrintModel::exportToCsv()
{
    QFETCH(int, number);
    QFETCH(QChar, delimiter);
    QFETCH(QString, type);
    QFETCH(int, sign);
    InvoicePrintModel model(m_fixture.registry());
    QVERIFY(load(model, number));
    const QString file = m_dir.filePath(QStringLiteral("laskut.csv"));
    QVERIFY2(model.exportToCSV(file, QString(delimiter)), qPrintable(model.lastError()));
    bool bom = false;
    const QList<QStringList> rows = Expected::readCsv(file, delimiter, &bom);
    QVERIFY(bom);
    // The invoice, an empty line, the header of rows and four rows.
    QCOMPARE(rows.size(), 1 + 1 + 1 + 1 + 4);
    QCOMPARE(
        rows.at(0).mid(12, 3).join('|'), QStringLiteral("Viitteemme|Viivästyskorko|Viitenumero"));
    QCOMPARE(rows.at(3).mid(5, 3).join('|'), QStringLiteral("Yksikkö|à-hinta|Veroton"));
    const QString total
        = Expected::plainEuros(sign * Expected::total(InvoiceFixture::sampleItems()));
    const QStringList& invoice = rows.at(1);
    QCOMPARE(QStringList({ invoice.at(0), invoice.at(5), invoice.at(6), invoice.at(7),
                 invoice.at(13), invoice.at(17) }),
        QStringList({ QString::number(number), "Jyväskylä", type, "1.3.2025", "8", total }));

    // 1 x 450,00 less 10 % at 25,5 %.
    const InvoiceItem item = InvoiceFixture::sampleItems().at(1);
    const long long included = sign * rowTotal(item, true);
    const long long excluded = sign * rowTotal(item, false);
    QCOMPARE(rows.at(5),
        (QStringList { QString::number(number), "102", "Logon viimeistely", "",
            sign < 0 ? "-1" : "1", "kpl", "450,00", Expected::plainEuros(excluded), "25,5",
            Expected::plainEuros(included - excluded), Expected::plainEuros(included) }));
    QVERIFY(!model.exportToCSV(m_dir.filePath(QStringLiteral("ei/ole/hakemistoa.csv")), ";"));
}

void TestInvoicePrintModel::barcodeAccount_data()
{
    QTest::addColumn<bool>("firstShown"); // the first stored account is shown on invoices
    QTest::addColumn<QString>("digits"); // of the account the barcode names
    QTest::addRow("first account shown") << true << "3457200020086597";
    QTest::addRow("first account hidden") << false << "5211443500061725";
}

// The bank barcode names the seller's account printed first on the invoice.
void TestInvoicePrintModel::barcodeAccount()
{
    QFETCH(bool, firstShown);
    QFETCH(QString, digits);
    const auto show = [this](bool visible) {
        return m_fixture.testDatabase()->exec({ QStringLiteral(
                   "UPDATE bank_account SET visible = %1 WHERE name = 'Osuuspankki'")
                                                    .arg(visible ? "TRUE" : "FALSE") })
            && m_fixture.refresh();
    };
    QVERIFY(show(firstShown));
    InvoicePrintModel model(m_fixture.registry());
    const bool loaded = load(model, 1001);
    QVERIFY(show(true));
    QVERIFY2(loaded, qPrintable(model.lastError()));
    QCOMPARE(
        model.value(QStringLiteral("seller/bankAccounts/0/ibanRaw")).toString(), "FI" + digits);
    for (const char* path :
        { "invoices/0/barcode", "invoices/0/balanceBarcode", "invoices/0/barcode4" })
        QCOMPARE(model.value(QString::fromLatin1(path)).toString().mid(1, digits.size()), digits);
}

QTEST_MAIN(TestInvoicePrintModel)
#include "tst_invoiceprintmodel.moc"
