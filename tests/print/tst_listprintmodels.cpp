#include "core/registry.h"
#include "domain/customer.h"
#include "domain/decimal.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "expected.h"
#include "invoicefixture.h"
#include "pdftools.h"
#include "print/customerlistprintmodel.h"
#include "print/invoicelistprintmodel.h"
#include "print/paymentprintmodel.h"
#include "print/printscriptengine.h"
#include "print/productlistprintmodel.h"
#include "print/scripthelper.h"
#include "print/scriptpdfwriter.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QtTest>
#include <memory>

using Expected::euros;

enum Report
{
    InvoiceList,
    PaymentList,
    CustomerList,
    ProductList
};

// The four list reports, once per database back-end: their data, sort
// orders, criteria texts and CSV read back, and their default scripts
// rendered to PDF and read with poppler.
class TestListPrintModels : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void invoiceListTotals_data();
    void invoiceListTotals();
    void invoiceListBalanceAtDate_data();
    void invoiceListBalanceAtDate();
    void sort_data();
    void sort();
    void csv_data();
    void csv();
    void reportPdf_data();
    void reportPdf();

private:
    std::unique_ptr<ListPrintModel> newModel(int report);
    bool exec(const QString& sql) { return m_fixture.testDatabase()->exec({ sql }); }

    InvoiceFixture m_fixture { VEKLARI_TEST_BACKEND };
    QTemporaryDir m_dir;
    QMap<int, QList<InvoiceItem>> m_items; // by invoice number
    QMap<int, long long> m_totals; // by invoice number, in cents
};

// 1001 and 1002 are invoices, 1003 a delivery note, 1004 belongs to a
// customer whose texts a spreadsheet would run as formulas. 1002 is paid in
// two parts, 500,00 on 10.3. and the rest on 2.4., 1004 has 20,00 paid on 1.2.
void TestListPrintModels::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_fixture.registry()->loadSettings(m_dir.filePath(QStringLiteral("Veklari.ini")));
    std::unique_ptr<Query> query(m_fixture.testDatabase()->database()->query());
    Customer customer;
    customer.number = 3;
    customer.name = QStringLiteral("=HYPERLINK(\"http://x\";\"Avaa\")");
    customer.contact = QStringLiteral("Virtanen, Liisa");
    customer.phoneNumber = QStringLiteral("+358 40 765 4321");
    customer.country = QStringLiteral("Suomi");
    customer.streetName = QStringLiteral("Kauppakatu 1");
    customer.emailAddress = QStringLiteral("liisa@example.fi");
    QVERIFY2(query->saveCustomer(&customer), qPrintable(query->lastError()));
    // Number, name, price, VAT included, rate.
    const QList<QStringList> products { { "10", "Tuntityö", "850000", "0", "2550" },
        { "9", "Kilometrikorvaus", "5700", "1", "0" },
        { "A-1", "äänikirja", "249000", "1", "1400" },
        { "-5", "=SUM(A1)", "1000000", "0", "2550" } };
    for (const QStringList& data : products) {
        Product product;
        product.number = data.at(0);
        product.name = data.at(1);
        product.unitCode = QStringLiteral("kpl");
        product.amount = data.at(2).toLongLong();
        product.vatExcluded = data.at(3) == QLatin1String("0");
        product.vatRate = data.at(4).toInt();
        QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
    }
    QVERIFY(m_fixture.registry()->fetchProducts(query.get()));

    QList<InvoiceItem> rent = InvoiceFixture::manyItems(1);
    rent[0].amount = 1000000;
    rent[0].vatRate = 2400;
    m_items = { { 1001, InvoiceFixture::sampleItems() }, { 1002, InvoiceFixture::manyItems(6) },
        { 1003, InvoiceFixture::sampleItems() }, { 1004, rent } };
    // Invoice and due dates.
    const QStringList dates { "2025-03-01", "2025-03-15", "2025-02-10", "2025-02-24", "2025-03-20",
        "2025-04-03", "2025-01-05", "2025-01-19" };
    QMap<int, int> ids;
    for (int number = 1001; number <= 1004; ++number) {
        m_totals.insert(number, Expected::total(m_items.value(number)));
        const long long paid = number == 1002 ? m_totals.value(1002) : number == 1004 ? 2000 : 0;
        ids[number] = m_fixture.addInvoice(number == 1003 ? 5 : 0, m_items.value(number), number,
            number == 1001 ? 0 : 1, int(paid));
        const int i = 2 * (number - 1001);
        QVERIFY(ids[number] > 0
            && exec(QStringLiteral("UPDATE invoice SET date = '%1', due_date = '%2' WHERE id = %3")
                        .arg(dates.at(i), dates.at(i + 1))
                        .arg(ids[number])));
    }
    QVERIFY(exec(QStringLiteral("UPDATE invoice SET customer_id = %1 WHERE number = 1004")
                     .arg(customer.id)));
    const QList<std::tuple<int, QDate, long long, int>> payments {
        { 1002, QDate(2025, 3, 10), 50000, 0 },
        { 1002, QDate(2025, 4, 2), m_totals.value(1002) - 50000, 1 },
        { 1004, QDate(2025, 2, 1), 2000, 1 },
    };
    for (const auto& [number, date, amount, account] : payments) {
        Payment payment;
        payment.invoiceId = ids.value(number);
        payment.date = date;
        payment.amount = int(amount);
        payment.bankAccountId = m_fixture.registry()->bankAccountAt(account)->id;
        QVERIFY2(query->savePayment(&payment), qPrintable(query->lastError()));
    }
    QVERIFY(m_fixture.refresh());
}

std::unique_ptr<ListPrintModel> TestListPrintModels::newModel(int report)
{
    Registry* registry = m_fixture.registry();
    switch (report) {
    case InvoiceList:
        return std::make_unique<InvoiceListPrintModel>(registry);
    case PaymentList:
        return std::make_unique<PaymentPrintModel>(registry);
    case CustomerList:
        return std::make_unique<CustomerListPrintModel>(registry);
    default:
        return std::make_unique<ProductListPrintModel>(registry);
    }
}

void TestListPrintModels::invoiceListTotals_data()
{
    QTest::addColumn<int>("paymentStatus");
    QTest::addColumn<int>("types");
    QTest::addColumn<int>("roundingMode");
    QTest::addColumn<QList<int>>("numbers");
    QTest::addRow("open") << 1 << -1 << 1 << QList<int> { 1001, 1003, 1004 };
    QTest::addRow("delivery notes") << -1 << (1 << 5) << 1 << QList<int> { 1003 };
    QTest::addRow("rows' own VAT") << -1 << -1 << 2 << QList<int> { 1001, 1002, 1003, 1004 };
}

// The list's totals and VAT breakdown against sums made here from the rows:
// VAT-included sums per rate with the VAT-excluded part taken out of each
// sum, or in mode 2 summed from the rows.
void TestListPrintModels::invoiceListTotals()
{
    QFETCH(int, paymentStatus);
    QFETCH(int, types);
    QFETCH(int, roundingMode);
    QFETCH(QList<int>, numbers);
    QVERIFY(m_fixture.setSetting(
        QStringLiteral("invoiceForm/roundingMode"), QString::number(roundingMode)));
    InvoiceListPrintModel model(m_fixture.registry());
    model.criteria().paymentStatus = paymentStatus;
    model.criteria().types = types;
    const bool ran = model.run();
    QVERIFY(m_fixture.setSetting(QStringLiteral("invoiceForm/roundingMode"), QStringLiteral("1")));
    QVERIFY2(ran, qPrintable(model.lastError()));
    QCOMPARE(model.invoiceCount(), numbers.size());

    long long total = 0;
    long long balance = 0;
    QMap<int, long long> included;
    QMap<int, long long> excludedByRows;
    for (int number : numbers) {
        total += m_totals.value(number);
        balance += number == 1002 ? 0 : m_totals.value(number) - (number == 1004 ? 2000 : 0);
        for (const InvoiceItem& item : m_items.value(number)) {
            if (item.quantity != 0) {
                included[item.vatRate] += Expected::rowTotal(item, true);
                excludedByRows[item.vatRate] += Expected::rowTotal(item, false);
            }
        }
    }
    auto cents
        = [&](const QString& path) { return model.value(path).value<Decimal>().toLongLong(); };
    QCOMPARE(cents("totalAmount"), total);
    QCOMPARE(cents("totalBalance"), balance);
    QCOMPARE(model.value(QStringLiteral("vat/length")).toInt(), included.size());
    long long excludedSum = 0;
    int index = 0;
    for (auto it = included.constBegin(); it != included.constEnd(); ++it, ++index) {
        const QString prefix = QStringLiteral("vat/%1/").arg(index);
        const long long excluded = roundingMode == 2
            ? excludedByRows.value(it.key())
            : Expected::roundHalfAway(it.value() / (1.0L + it.key() / 10000.0L));
        QCOMPARE(cents(prefix + "percent"), it.key());
        QCOMPARE(cents(prefix + "amount"), it.value());
        QCOMPARE(cents(prefix + "amountVatExcluded"), excluded);
        excludedSum += excluded;
    }
    QCOMPARE(cents("totalAmountVatExcluded"), excludedSum);
    QCOMPARE(cents("totalVatAmount"), total - excludedSum);
}

void TestListPrintModels::invoiceListBalanceAtDate_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<int>("paymentStatus");
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QList<long long>>("paidBefore"); // per listed invoice, -1 for all
    QTest::addRow("open between the payments")
        << QDate(2025, 3, 31) << 1 << QList<int> { 1001, 1002, 1003, 1004 }
        << QList<long long> { 0, 50000, 0, 2000 };
    QTest::addRow("open on the last payment day") << QDate(2025, 4,
        2) << 1 << QList<int> { 1001, 1003, 1004 } << QList<long long> { 0, 0, 2000 };
    QTest::addRow("paid by the last payment day")
        << QDate(2025, 4, 2) << 0 << QList<int> { 1002 } << QList<long long> { -1 };
    QTest::addRow("paid before the last payment")
        << QDate(2025, 4, 1) << 0 << QList<int> {} << QList<long long> {};
}

void TestListPrintModels::invoiceListBalanceAtDate()
{
    QFETCH(QDate, date);
    QFETCH(int, paymentStatus);
    QFETCH(QList<int>, numbers);
    QFETCH(QList<long long>, paidBefore);
    InvoiceListPrintModel model(m_fixture.registry());
    model.criteria().balanceDate = date;
    model.criteria().paymentStatus = paymentStatus;
    QVERIFY2(model.run(), qPrintable(model.lastError()));
    QCOMPARE(model.invoiceCount(), numbers.size());
    for (int i = 0; i < numbers.size(); ++i) {
        QCOMPARE(model.invoiceAt(i).number, numbers.at(i));
        const long long total = m_totals.value(numbers.at(i));
        QCOMPARE(
            model.value(QStringLiteral("invoices/%1/balance").arg(i)).value<Decimal>().toLongLong(),
            paidBefore.at(i) < 0 ? 0 : total - paidBefore.at(i));
    }
}

void TestListPrintModels::sort_data()
{
    QTest::addColumn<int>("report");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QStringList>("values");
    // An empty town first.
    QTest::addRow("customers by town")
        << int(CustomerList) << int(CustomerListPrintModel::TownNameColumn) << "number"
        << QStringList { "3", "1", "2" };
    // Product numbers are texts compared as numbers where they are numbers.
    QTest::addRow("products by number")
        << int(ProductList) << -1 << "number" << QStringList { "-5", "9", "10", "999", "A-1" };
}

void TestListPrintModels::sort()
{
    QFETCH(int, report);
    QFETCH(int, column);
    QFETCH(QString, field);
    QFETCH(QStringList, values);
    const std::unique_ptr<ListPrintModel> model = newModel(report);
    QVERIFY2(model->run(), qPrintable(model->lastError()));
    if (column >= 0)
        model->sort(column);
    const QString rows = QStringList { "invoices", "payments", "customers", "products" }.at(report);
    QCOMPARE(model->value(rows + QStringLiteral("/length")).toInt(), values.size());
    QStringList read;
    for (int i = 0; i < values.size(); ++i)
        read.append(
            model->value(QStringLiteral("%1/%2/%3").arg(rows).arg(i).arg(field)).toString());
    QCOMPARE(read, values);
}

void TestListPrintModels::csv_data()
{
    QTest::addColumn<int>("report");
    QTest::addColumn<int>("columns"); // bits of the visible columns, -1 for all
    QTest::addColumn<QString>("extraFields");
    QTest::addColumn<bool>("configured"); // extraFields from the configuration file
    QTest::addColumn<QChar>("delimiter");
    QTest::addColumn<QString>("header"); // the cells joined with "|"
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("cells");

    const QString formula = QStringLiteral("'=HYPERLINK(\"http://x\";\"Avaa\")");
    const QString reference = Expected::groupedReference(m_fixture.referenceNumber(1004));
    // 1004 has only the 24 % rate: the other rates' cells are empty.
    QTest::addRow("invoices, comma")
        << int(InvoiceList) << -1 << "maa,puhelinnumero,alv-erittely" << false << QChar(',')
        << "Numero|Päivämäärä|Eräpäivä|Toimituspäivä|Asiakasnumero|Nimi|Veroton|ALV|Verollinen|"
           "Avoin saldo|Viitenumero|Maa|Puhelinnumero|Veroton (14 %)|ALV (14 %)|Verollinen (14 %)|"
           "Veroton (24 %)|ALV (24 %)|Verollinen (24 %)|Veroton (25,5 %)|ALV (25,5 %)|"
           "Verollinen (25,5 %)"
        << 4
        << QStringLiteral("1004|5.1.2025|19.1.2025||3|%1|100,00|24,00|124,00|104,00|%2|Suomi|"
                          "'+358 40 765 4321||||100,00|24,00|124,00|||")
               .arg(formula, reference);
    // Chosen columns; blanks around the commas and unknown words are ignored.
    QTest::addRow("invoices, configured extra fields")
        << int(InvoiceList)
        << ((1 << InvoiceListPrintModel::NumberColumn)
               | (1 << InvoiceListPrintModel::TotalAmountVatIncludedColumn))
        << "maa , puhelinnumero,,  Postinumero , lähiosoite,yhteyshenkilö,sähköpostiosoite,x"
        << true << QChar(';')
        << "Numero|Verollinen|Maa|Puhelinnumero|Postinumero|Lähiosoite|Yhteyshenkilö|"
           "Sähköpostiosoite"
        << 4
        << "1004|124,00|Suomi|'+358 40 765 4321||Kauppakatu 1|Virtanen, Liisa|liisa@example.fi";
    // The delivery date is not part of the journal's CSV.
    QTest::addRow("payments, configured bank fields")
        << int(PaymentList) << -1 << "iban,pankki , bic,tilinumero" << true << QChar(',')
        << "Numero|Päivämäärä|Eräpäivä|Asiakasnumero|Nimi|Yhteensä|Suoritus|Maksupäivä|"
           "Pankkitili|IBAN|Pankki|BIC|Tilinumero"
        << 1
        << "1004|5.1.2025|19.1.2025|3|" + formula
            + "|124,00|20,00|1.2.2025|Nordea|FI52 1144 3500 0617 25|Nordea|NDEAFIHH|114435-61725";
    // The one field holds a business id or a VAT number.
    QTest::addRow("customers") << int(CustomerList) << -1 << "" << false << QChar(',')
                               << "Nro|Nimi|Maa|Yhteyshenkilö|Puhelinnumero|VAT-numero|"
                                  "Verkkolaskuvälittäjän tunnus|Verkkolaskuosoite|Oma 1|Oma 2"
                               << 1 << "1|Rautakauppa Virtanen Oy||Matti Virtanen||FI12345671||||";
    // A product number like "-5" is text, not a number.
    QTest::addRow("products") << int(ProductList) << -1 << "" << false << QChar(';')
                              << "Nro|Nimi|Yksikkö|Veroton|Verollinen|ALV-%|Tuoteryhmä" << 1
                              << "'-5|'=SUM(A1)|kpl|100,00|125,50|25,5|";
}

void TestListPrintModels::csv()
{
    QFETCH(int, report);
    QFETCH(int, columns);
    QFETCH(QString, extraFields);
    QFETCH(bool, configured);
    QFETCH(QChar, delimiter);
    QFETCH(QString, header);
    QFETCH(int, line);
    QFETCH(QString, cells);

    const std::unique_ptr<ListPrintModel> model = newModel(report);
    QSettings* settings = m_fixture.registry()->appSettings();
    const QString key = model->settingsGroup() + QStringLiteral("/extraFields");
    if (configured)
        settings->setValue(key, extraFields);
    else if (!extraFields.isEmpty())
        model->setExtraFields(extraFields.split(QLatin1Char(',')));
    if (columns >= 0)
        model->setColumnFlags(columns);
    QVERIFY2(model->run(), qPrintable(model->lastError()));
    const QString fileName = m_dir.filePath(QStringLiteral("raportti.csv"));
    const bool written = model->exportToCSV(fileName, QString(delimiter));
    settings->remove(key);
    QVERIFY2(written, qPrintable(model->lastError()));

    bool bom = false;
    const QList<QStringList> rows = Expected::readCsv(fileName, delimiter, &bom);
    QVERIFY(bom);
    QCOMPARE(rows.value(0).join(QLatin1Char('|')), header);
    for (const QStringList& row : rows)
        QCOMPARE(row.size(), rows.value(0).size());
    QCOMPARE(rows.value(line).join(QLatin1Char('|')), cells);
}

void TestListPrintModels::reportPdf_data()
{
    QTest::addColumn<int>("report");
    QTest::addColumn<bool>("landscape");
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QStringList>("absent");
    const QString date = QDate::currentDate().toString(QStringLiteral("d.M.yyyy"));
    // The open invoices without the delivery date, customer number and
    // reference columns.
    QTest::addRow("invoice list")
        << int(InvoiceList) << false
        << QStringList { "Laskuluettelo", "Avoimet laskut", "Rautakauppa Virtanen Oy",
               euros(m_totals.value(1001)), "ALV-erittely",
               euros(m_totals.value(1001) + m_totals.value(1003) + m_totals.value(1004)), date }
        << QStringList { "Viitenumero", "Asiakasnro", "Toimituspäivä" };
    QTest::addRow("payment list") << int(PaymentList) << true
                                  << QStringList { "Suorituspäiväkirja",
                                         "Maksusuoritukset ajalta 1.1.2025 - 31.3.2025", "500,00",
                                         "520,00", "Osuuspankki", "10.3.2025", date }
                                  << QStringList { "2.4.2025" };
    // The footer's date is given as a Date object, which formatDate() does
    // not read: the customer list prints no date. The e-mail column needs
    // the width of a landscape page.
    QTest::addRow("customer list") << int(CustomerList) << false
                                   << QStringList { "Asiakasluettelo", "Nordic Timber AB",
                                          "Teollisuustie 4", "Kuusela Design Oy" }
                                   << QStringList { "Sähköposti", date };
    QTest::addRow("customer list, landscape")
        << int(CustomerList) << true << QStringList { "liisa@example.fi" } << QStringList();
    QTest::addRow("product list") << int(ProductList) << false
                                  << QStringList { "Tuoteluettelo", "Viivästyskorko", "Tuntityö",
                                         "85,00", "106,68", date }
                                  << QStringList();
}

// The report's own script through ScriptHelper, into a PDF file.
void TestListPrintModels::reportPdf()
{
    QFETCH(int, report);
    QFETCH(bool, landscape);
    QFETCH(QStringList, present);
    QFETCH(QStringList, absent);
    const std::unique_ptr<ListPrintModel> model = newModel(report);
    if (auto* invoices = qobject_cast<InvoiceListPrintModel*>(model.get())) {
        invoices->criteria().paymentStatus = 1;
        invoices->setColumnFlags(invoices->allColumns()
            & ~((1 << InvoiceListPrintModel::DeliveryDateColumn)
                | (1 << InvoiceListPrintModel::CustomerNumberColumn)
                | (1 << InvoiceListPrintModel::ReferenceNumberColumn)));
    } else if (auto* payments = qobject_cast<PaymentPrintModel*>(model.get())) {
        payments->criteria().dateFrom = QDate(2025, 1, 1);
        payments->criteria().dateTo = QDate(2025, 3, 31);
    }
    QVERIFY2(model->run(), qPrintable(model->lastError()));
    PrintScriptEngine engine;
    engine.setModel(model.get());
    ScriptHelper helper(m_fixture.registry());
    QVERIFY(report == InvoiceList    ? helper.loadInvoiceListScript(&engine)
            : report == PaymentList  ? helper.loadPaymentListScript(&engine)
            : report == CustomerList ? helper.loadCustomerListScript(&engine)
                                     : helper.loadProductListScript(&engine));
    QCOMPARE(engine.supportedOrientations(), 3);
    ScriptPdfWriter writer;
    writer.setTitle(model->title());
    writer.setOrientation(landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    const QString fileName = m_dir.filePath(QStringLiteral("report%1.pdf").arg(report));
    QVERIFY2(writer.write(&engine, fileName), qPrintable(writer.lastError()));
    QCOMPARE(PdfTools::pageCount(fileName), 1);
    QVERIFY(PdfTools::info(fileName).contains(
        landscape ? QStringLiteral("842 x 595 pts") : QStringLiteral("595 x 842 pts")));
    const QString text = PdfTools::text(fileName);
    for (const QString& expected : present)
        QVERIFY2(text.contains(expected), qPrintable(expected + " missing from:\n" + text));
    for (const QString& unexpected : absent)
        QVERIFY2(!text.contains(unexpected), qPrintable(unexpected));
}

QTEST_MAIN(TestListPrintModels)
#include "tst_listprintmodels.moc"
