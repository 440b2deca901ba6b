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

static const QString longName
    = QStringLiteral("Asunto Oy Pohjanmaan Puutavara- ja Rakennustarvikekauppa Nordic Timber AB");

enum Report
{
    InvoiceList,
    PaymentList,
    CustomerList,
    ProductList
};

// The four list reports once per back-end: balances, CSV read back, and their default scripts
// rendered to PDF and read with poppler.
class TestListPrintModels : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void invoiceListBalanceAtDate_data();
    void invoiceListBalanceAtDate();
    void csv_data();
    void csv();
    void reportPdf_data();
    void reportPdf();
    void reportsFitTheMargins_data();
    void reportsFitTheMargins();

private:
    std::unique_ptr<ListPrintModel> newModel(int report);
    // The report's own script through ScriptHelper, into a PDF file.
    bool printReport(ListPrintModel* model, int report, bool landscape, const QString& fileName);
    bool exec(const QString& sql) { return m_fixture.testDatabase()->exec({ sql }); }

    InvoiceFixture m_fixture { VEKLARI_TEST_BACKEND };
    QTemporaryDir m_dir;
    QMap<int, long long> m_totals; // by invoice number, in cents
};

// 1003 is a delivery note, 1004 of a customer whose texts a spreadsheet would run as formulas.
// The second customer, of 1002 and 1003, has a name too long for any column.
// 1002 is paid in two parts, 500,00 on 10.3. and the rest on 2.4.; 1004 has 20,00 paid on 1.2.
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
    const QMap<int, QList<InvoiceItem>> items { { 1001, InvoiceFixture::sampleItems() },
        { 1002, InvoiceFixture::manyItems(6) }, { 1003, InvoiceFixture::sampleItems() },
        { 1004, rent } };
    const QStringList dates { "2025-03-01", "2025-03-15", "2025-02-10", "2025-02-24", "2025-03-20",
        "2025-04-03", "2025-01-05", "2025-01-19" }; // invoice and due dates
    QMap<int, int> ids;
    for (int number = 1001; number <= 1004; ++number) {
        m_totals.insert(number, Expected::total(items.value(number)));
        const long long paid = number == 1002 ? m_totals.value(1002) : number == 1004 ? 2000 : 0;
        ids[number] = m_fixture.addInvoice(
            number == 1003 ? 5 : 0, items.value(number), number, number == 1001 ? 0 : 1, int(paid));
        const int i = 2 * (number - 1001);
        QVERIFY(ids[number] > 0
            && exec(QStringLiteral("UPDATE invoice SET date = '%1', due_date = '%2' WHERE id = %3")
                        .arg(dates.at(i), dates.at(i + 1))
                        .arg(ids[number])));
    }
    QVERIFY(exec(QStringLiteral("UPDATE invoice SET customer_id = %1 WHERE number = 1004")
                     .arg(customer.id)));
    QVERIFY(exec(QStringLiteral("UPDATE customer SET name = '%1' WHERE number = 2").arg(longName)));
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

void TestListPrintModels::invoiceListBalanceAtDate_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<int>("paymentStatus");
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QList<long long>>("paidBefore"); // per listed invoice, -1 for all
    QTest::addRow("open between the payments")
        << QDate(2025, 3, 31) << 1 << QList<int> { 1001, 1002, 1003, 1004 }
        << QList<long long> { 0, 50000, 0, 2000 };
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

void TestListPrintModels::csv_data()
{
    QTest::addColumn<int>("report");
    QTest::addColumn<QString>("extraFields");
    QTest::addColumn<bool>("configured"); // extraFields from the configuration file
    QTest::addColumn<QChar>("delimiter");
    QTest::addColumn<QString>("header"); // the cells joined with "|"
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("cells");
    QTest::addColumn<QString>("order"); // the first column, if given

    const QString formula = QStringLiteral("'=HYPERLINK(\"http://x\";\"Avaa\")");
    const QString reference = Expected::groupedReference(m_fixture.referenceNumber(1004));
    // 1004 has only the 24 % rate: the other rates' cells are empty.
    QTest::addRow("invoices, comma")
        << int(InvoiceList) << "maa,puhelinnumero,alv-erittely" << false << QChar(',')
        << "Numero|Päivämäärä|Eräpäivä|Toimituspäivä|Asiakasnumero|Nimi|Veroton|ALV|Verollinen|"
           "Avoin saldo|Viitenumero|Maa|Puhelinnumero|Veroton (14 %)|ALV (14 %)|Verollinen (14 %)|"
           "Veroton (24 %)|ALV (24 %)|Verollinen (24 %)|Veroton (25,5 %)|ALV (25,5 %)|"
           "Verollinen (25,5 %)"
        << 4
        << QStringLiteral("1004|5.1.2025|19.1.2025||3|%1|100,00|24,00|124,00|104,00|%2|Suomi|"
                          "+358 40 765 4321||||100,00|24,00|124,00|||")
               .arg(formula, reference)
        << "";
    // The delivery date is not part of the journal's CSV.
    QTest::addRow("payments, configured bank fields")
        << int(PaymentList) << "iban,pankki , bic,tilinumero" << true << QChar(',')
        << "Numero|Päivämäärä|Eräpäivä|Asiakasnumero|Nimi|Yhteensä|Suoritus|Maksupäivä|"
           "Pankkitili|IBAN|Pankki|BIC|Tilinumero"
        << 1
        << "1004|5.1.2025|19.1.2025|3|" + formula
            + "|124,00|20,00|1.2.2025|Nordea|FI52 1144 3500 0617 25|Nordea|NDEAFIHH|114435-61725"
        << "";
    // The one field holds a business id or a VAT number.
    QTest::addRow("customers") << int(CustomerList) << "" << false << QChar(',')
                               << "Nro|Nimi|Maa|Yhteyshenkilö|Puhelinnumero|VAT-numero|"
                                  "Verkkolaskuvälittäjän tunnus|Verkkolaskuosoite|Oma 1|Oma 2"
                               << 1 << "1|Rautakauppa Virtanen Oy||Matti Virtanen||FI12345671||||"
                               << "";
    // The product number "-5" sorts and is written as a number; the name "=SUM(A1)" is guarded.
    QTest::addRow("products") << int(ProductList) << "" << false << QChar(';')
                              << "Nro|Nimi|Yksikkö|Veroton|Verollinen|ALV-%|Tuoteryhmä" << 1
                              << "-5|'=SUM(A1)|kpl|100,00|125,50|25,5|"
                              << "Nro|-5|9|10|999|A-1";
}

void TestListPrintModels::csv()
{
    QFETCH(int, report);
    QFETCH(QString, extraFields);
    QFETCH(bool, configured);
    QFETCH(QChar, delimiter);
    QFETCH(QString, header);
    QFETCH(int, line);
    QFETCH(QString, cells);
    QFETCH(QString, order);

    const std::unique_ptr<ListPrintModel> model = newModel(report);
    QSettings* settings = m_fixture.registry()->appSettings();
    const QString key = model->settingsGroup() + QStringLiteral("/extraFields");
    if (configured)
        settings->setValue(key, extraFields);
    else if (!extraFields.isEmpty())
        model->setExtraFields(extraFields.split(QLatin1Char(',')));
    QVERIFY2(model->run(), qPrintable(model->lastError()));
    const QString fileName = m_dir.filePath(QStringLiteral("raportti.csv"));
    const bool written = model->exportToCSV(fileName, QString(delimiter));
    settings->remove(key);
    QVERIFY2(written, qPrintable(model->lastError()));

    bool bom = false;
    const QList<QStringList> rows = Expected::readCsv(fileName, delimiter, &bom);
    QVERIFY(bom);
    QCOMPARE(rows.value(0).join(QLatin1Char('|')), header);
    QCOMPARE(rows.value(line).join(QLatin1Char('|')), cells);
    QStringList first;
    for (const QStringList& row : rows)
        first.append(row.value(0));
    if (!order.isEmpty())
        QCOMPARE(first.join('|'), order);
}

void TestListPrintModels::reportPdf_data()
{
    QTest::addColumn<int>("report"); // the payment list in landscape
    QTest::addColumn<QString>("present"); // joined with "|"
    QTest::addColumn<QString>("absent");
    const QString date = QDate::currentDate().toString(QStringLiteral("d.M.yyyy"));
    // The open invoices without the delivery date, customer number and reference columns.
    QTest::addRow("invoice list") << int(InvoiceList)
                                  << QStringList { "Laskuluettelo|Avoimet laskut", date,
                                         "Rautakauppa Virtanen Oy|ALV-erittely",
                                         euros(m_totals.value(1001)),
                                         euros(m_totals.value(1001) + m_totals.value(1003)
                                             + m_totals.value(1004)) }
                                         .join('|')
                                  << "Viitenumero|Asiakasnro|Toimituspäivä";
    QTest::addRow("payment list")
        << int(PaymentList)
        << "Suorituspäiväkirja|Maksusuoritukset ajalta 1.1.2025 - 31.3.2025|500,00|520,00|"
           "Osuuspankki|10.3.2025|"
            + date
        << "2.4.2025";
    // The customer list prints no date; its e-mail column needs a landscape page.
    QTest::addRow("customer list")
        << int(CustomerList) << "Asiakasluettelo|Storgatan 8|Teollisuustie 4|Kuusela Design Oy"
        << "Sähköposti|" + date;
    QTest::addRow("product list") << int(ProductList)
                                  << "Tuoteluettelo|Viivästyskorko|Tuntityö|85,00|106,68|" + date
                                  << "";
}

bool TestListPrintModels::printReport(
    ListPrintModel* model, int report, bool landscape, const QString& fileName)
{
    PrintScriptEngine engine;
    engine.setModel(model);
    ScriptHelper helper(m_fixture.registry());
    ScriptPdfWriter writer;
    writer.setTitle(model->title());
    writer.setOrientation(landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    return model->run()
        && (report == InvoiceList        ? helper.loadInvoiceListScript(&engine)
                : report == PaymentList  ? helper.loadPaymentListScript(&engine)
                : report == CustomerList ? helper.loadCustomerListScript(&engine)
                                         : helper.loadProductListScript(&engine))
        && engine.supportedOrientations() == 3 && writer.write(&engine, fileName);
}

void TestListPrintModels::reportPdf()
{
    QFETCH(int, report);
    QFETCH(QString, present);
    QFETCH(QString, absent);
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
    const bool landscape = report == PaymentList;
    const QString fileName = m_dir.filePath(QStringLiteral("report%1.pdf").arg(report));
    QVERIFY(printReport(model.get(), report, landscape, fileName));
    QCOMPARE(PdfTools::pageCount(fileName), 1);
    QVERIFY(PdfTools::info(fileName).contains(landscape ? "842 x 595 pts" : "595 x 842 pts"));
    const QString text = PdfTools::text(fileName);
    for (const QString& expected : present.split('|'))
        QVERIFY2(text.contains(expected), qPrintable(expected + " missing from:\n" + text));
    for (const QString& unexpected : absent.split('|', Qt::SkipEmptyParts))
        QVERIFY2(!text.contains(unexpected), qPrintable(unexpected));
}

void TestListPrintModels::reportsFitTheMargins_data()
{
    QTest::addColumn<int>("report");
    QTest::addColumn<bool>("landscape");
    const QList<std::pair<int, const char*>> reports { { InvoiceList, "invoice list" },
        { PaymentList, "payment list" }, { CustomerList, "customer list" },
        { ProductList, "product list" } };
    for (const auto& [report, name] : reports) {
        QTest::addRow("%s, portrait", name) << report << false;
        QTest::addRow("%s, landscape", name) << report << true;
    }
}

// With every column shown, every word lies within the margins of the page, and the long customer
// name is printed whole, wrapped in its column.
void TestListPrintModels::reportsFitTheMargins()
{
    QFETCH(int, report);
    QFETCH(bool, landscape);
    constexpr double margin = 15; // millimetres
    constexpr double rounding = 0.1; // of positions to device pixels
    const std::unique_ptr<ListPrintModel> model = newModel(report);
    model->setColumnFlags(model->allColumns());
    const QString fileName = m_dir.filePath(QStringLiteral("margins.pdf"));
    QVERIFY(printReport(model.get(), report, landscape, fileName));

    // The PDF rounds its page to whole points; the scripts lay out A4 paper.
    QSizeF paper = QPageSize(QPageSize::A4).size(QPageSize::Millimeter);
    if (landscape)
        paper.transpose();
    const QRectF inside = QRectF(QPointF(margin, margin), paper - QSizeF(2 * margin, 2 * margin))
                              .adjusted(-rounding, -rounding, rounding, rounding);
    const QList<PdfTools::Page> pages = PdfTools::pages(fileName);
    QVERIFY(!pages.isEmpty());
    QStringList texts;
    for (const PdfTools::Page& page : pages) {
        for (const PdfTools::Word& word : page.words)
            QVERIFY2(inside.contains(word.box),
                qPrintable(
                    QStringLiteral("%1 ends at %2 mm").arg(word.text).arg(word.box.right())));
        texts += PdfTools::texts(page.words);
    }
    if (report == ProductList)
        return;
    int from = 0;
    for (const QString& part : longName.split(' ')) {
        from = texts.indexOf(part, from);
        QVERIFY2(from >= 0, qPrintable(part + " missing from: " + texts.join(' ')));
    }
}

QTEST_MAIN(TestListPrintModels)
#include "tst_listprintmodels.moc"
