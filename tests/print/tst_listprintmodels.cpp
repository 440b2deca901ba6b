#include "core/registry.h"
#include "domain/customer.h"
#include "domain/decimal.h"
#include "domain/invoicecriteria.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/product.h"
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

#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>
#include <functional>
#include <memory>

// The four list reports, once per database back-end: their data, sort orders, criteria texts and
// CSV read back, and their default scripts rendered to PDF and read with poppler.
class TestListPrintModels : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void invoiceListTotals_data();
    void invoiceListTotals();
    void invoiceListBalanceAtDate_data();
    void invoiceListBalanceAtDate();
    void invoiceListSort_data();
    void invoiceListSort();
    void criteriaTexts_data();
    void criteriaTexts();
    void columnPaths();
    void invoiceListCsv_data();
    void invoiceListCsv();
    void extraFieldsFromConfiguration();
    void paymentList();
    void paymentListCsv();
    void customerAndProductLists();
    void reportPdf_data();
    void reportPdf();
    void manyInvoicesBreakPages();
    void customerListLandscape();

private:
    bool render(PrintModel* model, const char* script, const QString& fileName,
        QPageLayout::Orientation orientation = QPageLayout::Portrait);
    QString pdfText(const QString& fileName, int page = 0);
    int addPayment(int invoiceId, const QDate& date, int amount, int bankAccountIndex = 0);
    bool exec(const QString& sql);

    InvoiceFixture m_fixture { VEKLARI_TEST_BACKEND };
    QTemporaryDir m_dir;
    QString m_error;
    QMap<int, int> m_ids; // invoice number -> id
    QMap<int, long long> m_totals; // invoice number -> total in cents
    QMap<int, QList<InvoiceItem>> m_items;
    int m_formulaCustomerId = -1;
};

// Independent arithmetic: a row's VAT-included total in cents, rounded half
// away from zero once per row.
static long long roundHalfAway(long double value)
{
    return value < 0 ? -(long long)std::floor(-value + 0.5L) : (long long)std::floor(value + 0.5L);
}

static long long rowIncluded(const InvoiceItem& item)
{
    long double amount = (long double)item.quantity / 10000 * item.amount / 10000
        * (10000 - item.discount) / 10000;
    if (item.vatExcluded)
        amount *= 1.0L + item.vatRate / 10000.0L;
    return roundHalfAway(amount * 100);
}

static long long rowExcluded(const InvoiceItem& item)
{
    long double amount = (long double)item.quantity / 10000 * item.amount / 10000
        * (10000 - item.discount) / 10000;
    if (!item.vatExcluded)
        amount /= 1.0L + item.vatRate / 10000.0L;
    return roundHalfAway(amount * 100);
}

static long long invoiceTotal(const QList<InvoiceItem>& items)
{
    long long total = 0;
    for (const InvoiceItem& item : items)
        total += rowIncluded(item);
    return total;
}

// "1 398,04" with a plain space, "-12,50" for negatives.
static QString euros(long long cents)
{
    QString digits = QString::number(std::llabs(cents) / 100);
    for (int i = digits.size() - 3; i > 0; i -= 3)
        digits.insert(i, QLatin1Char(' '));
    return (cents < 0 ? QStringLiteral("-") : QString()) + digits + QLatin1Char(',')
        + QStringLiteral("%1").arg(std::llabs(cents) % 100, 2, 10, QLatin1Char('0'));
}

// A spreadsheet's reading of CSV: quoted fields may hold delimiters,
// doubled quotes and line breaks.
static QList<QStringList> parseCsv(const QByteArray& data, QChar delimiter, bool* bom)
{
    QByteArray bytes = data;
    *bom = bytes.startsWith("\xEF\xBB\xBF");
    if (*bom)
        bytes.remove(0, 3);
    const QString text = QString::fromUtf8(bytes);
    QList<QStringList> rows;
    QStringList row;
    QString field;
    bool quoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (quoted) {
            if (c == QLatin1Char('"')) {
                if (i + 1 < text.size() && text.at(i + 1) == QLatin1Char('"')) {
                    field += c;
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                field += c;
            }
        } else if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == delimiter) {
            row.append(field);
            field.clear();
        } else if (c == QLatin1Char('\r')) {
            continue;
        } else if (c == QLatin1Char('\n')) {
            row.append(field);
            rows.append(row);
            row.clear();
            field.clear();
        } else {
            field += c;
        }
    }
    if (!field.isEmpty() || !row.isEmpty()) {
        row.append(field);
        rows.append(row);
    }
    return rows;
}

static QStringList extraWords()
{
    return { QStringLiteral("maa"), QStringLiteral("puhelinnumero"),
        QStringLiteral("alv-erittely") };
}

static QByteArray readFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return QByteArray();
    return file.readAll();
}

static InvoiceItem oneRow(long long price, int vatRate, const QString& name)
{
    InvoiceItem item;
    item.productNumber = QStringLiteral("1");
    item.productName = name;
    item.quantity = 10000;
    item.unitCode = QStringLiteral("kpl");
    item.amount = price;
    item.vatExcluded = true;
    item.vatRate = vatRate;
    return item;
}

bool TestListPrintModels::exec(const QString& sql)
{
    if (!m_fixture.testDatabase()->exec({ sql })) {
        m_error = m_fixture.testDatabase()->lastError();
        return false;
    }
    return true;
}

int TestListPrintModels::addPayment(
    int invoiceId, const QDate& date, int amount, int bankAccountIndex)
{
    std::unique_ptr<Query> query(m_fixture.testDatabase()->database()->query());
    Payment payment;
    payment.invoiceId = invoiceId;
    payment.date = date;
    payment.amount = amount;
    payment.bankAccountId = m_fixture.registry()->bankAccountAt(bankAccountIndex)->id;
    if (!query->savePayment(&payment)) {
        m_error = query->lastError();
        return -1;
    }
    return payment.id;
}

void TestListPrintModels::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_fixture.registry()->loadSettings(m_dir.filePath(QStringLiteral("Veklari.ini")));

    // A customer whose texts a spreadsheet would run as formulas.
    {
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
        m_formulaCustomerId = customer.id;
    }
    QVERIFY2(m_fixture.refresh(), qPrintable(m_fixture.lastError()));
    {
        std::unique_ptr<Query> query(m_fixture.testDatabase()->database()->query());
        const struct
        {
            const char* number;
            const char* name;
            long long amount;
            bool vatExcluded;
            int vatRate;
        } products[] = { { "10", "Tuntityö", 850000, true, 2550 },
            { "9", "Kilometrikorvaus", 5700, false, 0 },
            { "A-1", "äänikirja", 249000, false, 1400 },
            { "-5", "=SUM(A1)", 1000000, true, 2550 } };
        for (const auto& data : products) {
            Product product;
            product.number = QString::fromUtf8(data.number);
            product.name = QString::fromUtf8(data.name);
            product.unitCode = QStringLiteral("kpl");
            product.amount = data.amount;
            product.vatExcluded = data.vatExcluded;
            product.vatRate = data.vatRate;
            QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
        }
        QVERIFY(m_fixture.registry()->fetchProducts(query.get()));
    }

    struct
    {
        int number;
        int type;
        int customer;
        QList<InvoiceItem> items;
        QDate date;
        QDate dueDate;
    } invoices[] = {
        { 1001, 0, 0, InvoiceFixture::sampleItems(), QDate(2025, 3, 1), QDate(2025, 3, 15) },
        { 1002, 0, 1, InvoiceFixture::manyItems(6), QDate(2025, 2, 10), QDate(2025, 2, 24) },
        { 1003, 5, 1, InvoiceFixture::sampleItems(), QDate(2025, 3, 20), QDate(2025, 4, 3) },
        { 1004, 0, 2, { oneRow(1000000, 2400, QStringLiteral("Vuokra")) }, QDate(2025, 1, 5),
            QDate(2025, 1, 19) },
    };
    for (const auto& data : invoices) {
        // The fixture knows its own two customers; the third is set below.
        const int id = m_fixture.addInvoice(
            data.type, data.items, data.number, data.customer == 2 ? 0 : data.customer);
        QVERIFY2(id >= 0, qPrintable(m_fixture.lastError()));
        QVERIFY2(
            exec(QStringLiteral("UPDATE invoice SET date = '%1', due_date = '%2' WHERE id = %3")
                     .arg(data.date.toString(Qt::ISODate), data.dueDate.toString(Qt::ISODate))
                     .arg(id)),
            qPrintable(m_error));
        if (data.customer == 2)
            QVERIFY(exec(QStringLiteral("UPDATE invoice SET customer_id = %1 WHERE id = %2")
                             .arg(m_formulaCustomerId)
                             .arg(id)));
        m_ids.insert(data.number, id);
        m_totals.insert(data.number, invoiceTotal(data.items));
        m_items.insert(data.number, data.items);
    }
    // 1002 paid in two parts, 1004 partly paid.
    const long long total1002 = m_totals.value(1002);
    QVERIFY(addPayment(m_ids.value(1002), QDate(2025, 3, 10), 50000, 0) > 0);
    QVERIFY(addPayment(m_ids.value(1002), QDate(2025, 4, 2), int(total1002 - 50000), 1) > 0);
    QVERIFY(addPayment(m_ids.value(1004), QDate(2025, 2, 1), 2000, 1) > 0);
    QVERIFY(exec(QStringLiteral("UPDATE invoice SET balance = 0 WHERE number = 1002")));
    QVERIFY(exec(
        QStringLiteral("UPDATE invoice SET balance = total_amount - 2000 WHERE number = 1004")));
}

bool TestListPrintModels::render(PrintModel* model, const char* script, const QString& fileName,
    QPageLayout::Orientation orientation)
{
    PrintScriptEngine engine;
    engine.setModel(model);
    ScriptHelper helper(m_fixture.registry());
    bool loaded = false;
    const QByteArray name(script);
    if (name == "invoice-list")
        loaded = helper.loadInvoiceListScript(&engine);
    else if (name == "payment-list")
        loaded = helper.loadPaymentListScript(&engine);
    else if (name == "customer-list")
        loaded = helper.loadCustomerListScript(&engine);
    else
        loaded = helper.loadProductListScript(&engine);
    if (!loaded) {
        m_error = engine.lastError();
        return false;
    }
    if (engine.supportedOrientations() != 3) {
        m_error = QStringLiteral("the script does not offer both orientations");
        return false;
    }
    ScriptPdfWriter writer;
    writer.setTitle(model->title());
    writer.setOrientation(orientation);
    if (!writer.write(&engine, fileName)) {
        m_error = writer.lastError();
        return false;
    }
    return true;
}

QString TestListPrintModels::pdfText(const QString& fileName, int page)
{
    QString text = PdfTools::text(fileName, page);
    text.replace(QChar(0x00A0), QLatin1Char(' '));
    text.replace(QChar(0x202F), QLatin1Char(' '));
    return text;
}

void TestListPrintModels::invoiceListTotals_data()
{
    QTest::addColumn<int>("paymentStatus");
    QTest::addColumn<int>("types");
    QTest::addColumn<int>("roundingMode");
    QTest::addColumn<QList<int>>("numbers");

    QTest::addRow("all") << -1 << -1 << 1 << QList<int> { 1001, 1002, 1003, 1004 };
    QTest::addRow("open") << 1 << -1 << 1 << QList<int> { 1001, 1003, 1004 };
    QTest::addRow("paid") << 0 << -1 << 1 << QList<int> { 1002 };
    QTest::addRow("delivery notes") << -1 << (1 << 5) << 1 << QList<int> { 1003 };
    QTest::addRow("invoices") << -1 << 1 << 1 << QList<int> { 1001, 1002, 1004 };
    QTest::addRow("all, from the rows' VAT-excluded totals")
        << -1 << -1 << 2 << QList<int> { 1001, 1002, 1003, 1004 };
}

// The list's totals and VAT breakdown against sums made here from the rows.
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
    QVERIFY2(model.run(), qPrintable(model.lastError()));
    QCOMPARE(model.value(QStringLiteral("invoices/length")).toInt(), numbers.size());

    long long total = 0;
    long long balance = 0;
    QMap<int, long long> included;
    QMap<int, long long> excludedByRows;
    for (int i = 0; i < numbers.size(); ++i) {
        const int number = numbers.at(i);
        const QString prefix = QStringLiteral("invoices/%1/").arg(i);
        QCOMPARE(model.value(prefix + "number").toInt(), number);
        const long long invoiceTotal = m_totals.value(number);
        QCOMPARE(model.value(prefix + "totalAmount").value<Decimal>().toLongLong(), invoiceTotal);
        const long long excluded
            = model.value(prefix + "totalAmountVatExcluded").value<Decimal>().toLongLong();
        const long long vat = model.value(prefix + "totalVatAmount").value<Decimal>().toLongLong();
        QCOMPARE(excluded + vat, invoiceTotal);
        total += invoiceTotal;
        balance += model.value(prefix + "balance").value<Decimal>().toLongLong();
        for (const InvoiceItem& item : m_items.value(number)) {
            if (item.quantity != 0) {
                included[item.vatRate] += rowIncluded(item);
                excludedByRows[item.vatRate] += rowExcluded(item);
            }
        }
    }
    QCOMPARE(model.value(QStringLiteral("totalAmount")).value<Decimal>().toLongLong(), total);
    QCOMPARE(model.value(QStringLiteral("totalBalance")).value<Decimal>().toLongLong(), balance);

    // The breakdown over the whole list: VAT-included sums per rate, the
    // VAT-excluded part taken out of each sum, or in mode 2 summed from the
    // rows.
    QCOMPARE(model.value(QStringLiteral("vat/length")).toInt(), included.size());
    long long excludedSum = 0;
    int index = 0;
    for (auto it = included.constBegin(); it != included.constEnd(); ++it, ++index) {
        const QString prefix = QStringLiteral("vat/%1/").arg(index);
        QCOMPARE(model.value(prefix + "percent").value<Decimal>().toLongLong(), it.key());
        QCOMPARE(model.value(prefix + "amount").value<Decimal>().toLongLong(), it.value());
        const long long excluded = roundingMode == 2
            ? excludedByRows.value(it.key())
            : roundHalfAway(it.value() / (1.0L + it.key() / 10000.0L));
        QCOMPARE(model.value(prefix + "amountVatExcluded").value<Decimal>().toLongLong(), excluded);
        QCOMPARE(
            model.value(prefix + "vatAmount").value<Decimal>().toLongLong(), it.value() - excluded);
        excludedSum += excluded;
    }
    QCOMPARE(model.value(QStringLiteral("totalAmountVatExcluded")).value<Decimal>().toLongLong(),
        excludedSum);
    QCOMPARE(model.value(QStringLiteral("totalVatAmount")).value<Decimal>().toLongLong(),
        total - excludedSum);
    QVERIFY(m_fixture.setSetting(QStringLiteral("invoiceForm/roundingMode"), QStringLiteral("1")));
}

void TestListPrintModels::invoiceListBalanceAtDate_data()
{
    QTest::addColumn<QDate>("date");
    QTest::addColumn<int>("paymentStatus");
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QList<long long>>("paidBefore"); // per listed invoice

    // 1002 gets 500,00 on 10.3. and the rest on 2.4.; 1004 gets 20,00 on 1.2.
    QTest::addRow("open before any payment")
        << QDate(2025, 1, 31) << 1 << QList<int> { 1001, 1002, 1003, 1004 }
        << QList<long long> { 0, 0, 0, 0 };
    QTest::addRow("open between the two payments")
        << QDate(2025, 3, 31) << 1 << QList<int> { 1001, 1002, 1003, 1004 }
        << QList<long long> { 0, 50000, 0, 2000 };
    QTest::addRow("open on the day of the last payment") << QDate(2025, 4,
        2) << 1 << QList<int> { 1001, 1003, 1004 } << QList<long long> { 0, 0, 2000 };
    QTest::addRow("paid by the day of the last payment")
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
        const long long expected = paidBefore.at(i) < 0 ? 0 : total - paidBefore.at(i);
        QCOMPARE(
            model.value(QStringLiteral("invoices/%1/balance").arg(i)).value<Decimal>().toLongLong(),
            expected);
    }
}

void TestListPrintModels::invoiceListSort_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QList<int>>("numbers");

    QTest::addRow("number") << int(InvoiceListPrintModel::NumberColumn)
                            << QList<int> { 1001, 1002, 1003, 1004 };
    QTest::addRow("date") << int(InvoiceListPrintModel::DateColumn)
                          << QList<int> { 1004, 1002, 1001, 1003 };
    QTest::addRow("due date") << int(InvoiceListPrintModel::DueDateColumn)
                              << QList<int> { 1004, 1002, 1001, 1003 };
    // Same customer: the invoice number decides.
    QTest::addRow("customer number") << int(InvoiceListPrintModel::CustomerNumberColumn)
                                     << QList<int> { 1001, 1002, 1003, 1004 };
    // "=HYPERLINK" sorts before letters; then Nordic before Rautakauppa.
    QTest::addRow("customer name")
        << int(InvoiceListPrintModel::CustomerNameColumn) << QList<int> { 1004, 1002, 1003, 1001 };
    QTest::addRow("balance") << int(InvoiceListPrintModel::BalanceColumn)
                             << QList<int> { 1002, 1001, 1003, 1004 };
}

void TestListPrintModels::invoiceListSort()
{
    QFETCH(int, column);
    QFETCH(QList<int>, numbers);

    InvoiceListPrintModel model(m_fixture.registry());
    QVERIFY2(model.run(), qPrintable(model.lastError()));
    model.sort(column);
    QList<int> order;
    for (int i = 0; i < model.invoiceCount(); ++i)
        order.append(model.value(QStringLiteral("invoices/%1/number").arg(i)).toInt());
    if (column == InvoiceListPrintModel::BalanceColumn) {
        // Balances of 1001 and 1003 are equal; the rest follows from the totals.
        QList<int> expected { 1002 };
        QList<int> open { 1001, 1003, 1004 };
        std::stable_sort(open.begin(), open.end(), [this](int a, int b) {
            const long long x = m_totals.value(a) - (a == 1004 ? 2000 : 0);
            const long long y = m_totals.value(b) - (b == 1004 ? 2000 : 0);
            return x < y;
        });
        numbers = expected + open;
    }
    QCOMPARE(order, numbers);
    QCOMPARE(model.sortColumn(), column);
}

void TestListPrintModels::criteriaTexts_data()
{
    QTest::addColumn<std::function<void(InvoiceCriteria&)>>("setUp");
    QTest::addColumn<QStringList>("texts");

    QTest::addRow("everything") << std::function<void(InvoiceCriteria&)>([](InvoiceCriteria&) {})
                                << QStringList { "Laskut" };
    QTest::addRow("open") << std::function<void(InvoiceCriteria&)>([](InvoiceCriteria& c) {
        c.paymentStatus = 1;
    }) << QStringList { "Avoimet laskut" };
    QTest::addRow("open at a date") << std::function<void(InvoiceCriteria&)>(
        [](InvoiceCriteria& c) {
            c.paymentStatus = 1;
            c.balanceDate = QDate(2025, 6, 30);
        }) << QStringList { "Avoimet laskut 30.6.2025" };
    QTest::addRow("paid before a date") << std::function<void(InvoiceCriteria&)>(
        [](InvoiceCriteria& c) {
            c.paymentStatus = 0;
            c.balanceDate = QDate(2025, 1, 1);
        }) << QStringList { "Ennen 1.1.2025 maksetut laskut" };
    QTest::addRow("paid in a range") << std::function<void(InvoiceCriteria&)>(
        [](InvoiceCriteria& c) {
            c.paymentStatus = 0;
            c.dateFrom = QDate(2025, 1, 1);
            c.dateTo = QDate(2025, 3, 31);
        }) << QStringList { "Maksetut laskut väliltä 1.1.2025 - 31.3.2025" };
    QTest::addRow("all in a range") << std::function<void(InvoiceCriteria&)>(
        [](InvoiceCriteria& c) {
            c.dateFrom = QDate(2025, 1, 1);
            c.dateTo = QDate(2025, 12, 31);
        }) << QStringList { "Laskut 1.1.2025 - 31.12.2025" };
    QTest::addRow("delivery notes in a range") << std::function<void(InvoiceCriteria&)>(
        [](InvoiceCriteria& c) {
            c.types = 1 << 5;
            c.dateFrom = QDate(2025, 2, 1);
            c.dateTo = QDate(2025, 2, 28);
        }) << QStringList { "Lähetteet ajalta 1.2.2025 - 28.2.2025" };
    QTest::addRow("search phrase") << std::function<void(InvoiceCriteria&)>([](InvoiceCriteria& c) {
        c.text = QStringLiteral("*logo*");
    }) << QStringList { "Laskut", "Hakusanalla *logo*" };
}

void TestListPrintModels::criteriaTexts()
{
    QFETCH(std::function<void(InvoiceCriteria&)>, setUp);
    QFETCH(QStringList, texts);

    InvoiceListPrintModel model(m_fixture.registry());
    setUp(model.criteria());
    QVERIFY2(model.run(), qPrintable(model.lastError()));
    QCOMPARE(model.criteriaTexts(), texts);
    QCOMPARE(model.value(QStringLiteral("criteria/length")).toInt(), texts.size());
    for (int i = 0; i < texts.size(); ++i)
        QCOMPARE(model.value(QStringLiteral("criteria/%1").arg(i)).toString(), texts.at(i));
    QVERIFY(!model.value(QStringLiteral("criteria/%1").arg(texts.size())).isValid());
}

void TestListPrintModels::columnPaths()
{
    InvoiceListPrintModel model(m_fixture.registry());
    model.setColumnFlags(
        (1 << InvoiceListPrintModel::NumberColumn) | (1 << InvoiceListPrintModel::BalanceColumn));
    QVERIFY(model.run());
    QCOMPARE(model.value(QStringLiteral("columns/number")), QVariant(true));
    QCOMPARE(model.value(QStringLiteral("columns/balance")), QVariant(true));
    QCOMPARE(model.value(QStringLiteral("columns/date")), QVariant(false));
    QCOMPARE(model.value(QStringLiteral("columns/referenceNumber")), QVariant(false));
    QVERIFY(!model.value(QStringLiteral("columns/nothing")).isValid());
    QCOMPARE(model.value(QStringLiteral("name")).toString(), QStringLiteral("Kuusela Design Oy"));
    QCOMPARE(model.value(QStringLiteral("invoices/0/customer/name")).toString(),
        QStringLiteral("Rautakauppa Virtanen Oy"));
    QCOMPARE(model.value(QStringLiteral("invoices/0/referenceNumberRaw")).toString(),
        m_fixture.referenceNumber(1001));
    QVERIFY(!model.value(QStringLiteral("invoices/4/number")).isValid());
    QVERIFY(!model.value(QStringLiteral("nothing")).isValid());

    PaymentPrintModel payments(m_fixture.registry());
    payments.setColumnFlags(
        PaymentPrintModel(nullptr).allColumns() & ~(1 << PaymentPrintModel::BankAccountColumn));
    QVERIFY(payments.run());
    QCOMPARE(payments.value(QStringLiteral("columns/paymentDate")), QVariant(true));
    QCOMPARE(payments.value(QStringLiteral("columns/bankAccount")), QVariant(false));
}

void TestListPrintModels::invoiceListCsv_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QChar>("delimiter");
    QTest::addRow("comma") << 0 << QChar(',');
    QTest::addRow("semicolon") << 1 << QChar(';');
}

void TestListPrintModels::invoiceListCsv()
{
    QFETCH(int, format);
    QFETCH(QChar, delimiter);

    InvoiceListPrintModel model(m_fixture.registry());
    model.setExtraFields(extraWords());
    QVERIFY2(model.run(), qPrintable(model.lastError()));
    const QString fileName = m_dir.filePath(QStringLiteral("laskut%1.csv").arg(format));
    QVERIFY2(model.exportToCSV(fileName, PrintModel::csvFormatToDelimiter(format)),
        qPrintable(model.lastError()));

    bool bom = false;
    const QList<QStringList> rows = parseCsv(readFile(fileName), delimiter, &bom);
    QVERIFY(bom);
    QCOMPARE(rows.size(), 5);
    const QStringList expectedHeadings { "Numero", "Päivämäärä", "Eräpäivä", "Toimituspäivä",
        "Asiakasnumero", "Nimi", "Veroton", "ALV", "Verollinen", "Avoin saldo", "Viitenumero",
        "Maa", "Puhelinnumero", "Veroton (14 %)", "ALV (14 %)", "Verollinen (14 %)",
        "Veroton (24 %)", "ALV (24 %)", "Verollinen (24 %)", "Veroton (25,5 %)", "ALV (25,5 %)",
        "Verollinen (25,5 %)" };
    QCOMPARE(rows.at(0), expectedHeadings);
    for (const QStringList& row : rows)
        QCOMPARE(row.size(), expectedHeadings.size());

    const QStringList& first = rows.at(1);
    QCOMPARE(first.at(0), QStringLiteral("1001"));
    QCOMPARE(first.at(1), QStringLiteral("1.3.2025"));
    QCOMPARE(first.at(2), QStringLiteral("15.3.2025"));
    QCOMPARE(first.at(3), QString());
    QCOMPARE(first.at(5), QStringLiteral("Rautakauppa Virtanen Oy"));
    // Decimal comma, no grouping, so that the cell is a number.
    QString total = euros(m_totals.value(1001));
    total.remove(QLatin1Char(' '));
    QCOMPARE(first.at(8), total);
    QCOMPARE(first.at(9), total);

    const QStringList& fourth = rows.at(4);
    QCOMPARE(fourth.at(0), QStringLiteral("1004"));
    // The formula-looking name and phone number are kept as text.
    QCOMPARE(fourth.at(5), QStringLiteral("'=HYPERLINK(\"http://x\";\"Avaa\")"));
    QCOMPARE(fourth.at(11), QStringLiteral("Suomi"));
    QCOMPARE(fourth.at(12), QStringLiteral("'+358 40 765 4321"));
    QCOMPARE(fourth.at(8), QStringLiteral("124,00"));
    QCOMPARE(fourth.at(9), QStringLiteral("104,00"));
    // 1004 has only the 24 % rate: the other rates' cells are empty.
    QCOMPARE(fourth.at(13), QString());
    QCOMPARE(fourth.at(16), QStringLiteral("100,00"));
    QCOMPARE(fourth.at(17), QStringLiteral("24,00"));
    QCOMPARE(fourth.at(18), QStringLiteral("124,00"));

    // With a comma delimiter the amounts are quoted; with a semicolon not.
    const QString raw = QString::fromUtf8(readFile(fileName));
    QCOMPARE(raw.contains(QStringLiteral("\"124,00\"")), format == 0);
}

void TestListPrintModels::extraFieldsFromConfiguration()
{
    QSettings* settings = m_fixture.registry()->appSettings();
    QVERIFY(settings);
    settings->setValue(QStringLiteral("invoiceListPrint/extraFields"),
        QStringLiteral("maa , puhelinnumero,,  Postinumero , lähiosoite,yhteyshenkilö,"
                       "sähköpostiosoite"));
    settings->setValue(
        QStringLiteral("paymentPrint/extraFields"), QStringLiteral("iban,pankki , bic"));

    InvoiceListPrintModel model(m_fixture.registry());
    model.setColumnFlags(1 << InvoiceListPrintModel::NumberColumn);
    model.criteria().number = 1004;
    QVERIFY(model.run());
    const QString fileName = m_dir.filePath(QStringLiteral("extra.csv"));
    QVERIFY(model.exportToCSV(fileName, QStringLiteral(";")));
    bool bom = false;
    QList<QStringList> rows = parseCsv(readFile(fileName), QLatin1Char(';'), &bom);
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.at(0),
        (QStringList { "Numero", "Maa", "Puhelinnumero", "Postinumero", "Lähiosoite",
            "Yhteyshenkilö", "Sähköpostiosoite" }));
    QCOMPARE(rows.at(1),
        (QStringList { "1004", "Suomi", "'+358 40 765 4321", "", "Kauppakatu 1", "Virtanen, Liisa",
            "liisa@example.fi" }));

    PaymentPrintModel payments(m_fixture.registry());
    payments.setColumnFlags(
        (1 << PaymentPrintModel::NumberColumn) | (1 << PaymentPrintModel::PaymentAmountColumn));
    payments.criteria().dateFrom = QDate(2025, 2, 1);
    payments.criteria().dateTo = QDate(2025, 2, 1);
    QVERIFY(payments.run());
    QVERIFY(payments.exportToCSV(fileName, QStringLiteral(",")));
    rows = parseCsv(readFile(fileName), QLatin1Char(','), &bom);
    QCOMPARE(rows.size(), 2);
    QCOMPARE(rows.at(0), (QStringList { "Numero", "Suoritus", "IBAN", "Pankki", "BIC" }));
    QCOMPARE(rows.at(1),
        (QStringList { "1004", "20,00", "FI52 1144 3500 0617 25", "Nordea", "NDEAFIHH" }));
    settings->remove(QStringLiteral("invoiceListPrint/extraFields"));
    settings->remove(QStringLiteral("paymentPrint/extraFields"));
}

void TestListPrintModels::paymentList()
{
    PaymentPrintModel model(m_fixture.registry());
    QVERIFY2(model.run(), qPrintable(model.lastError()));
    QCOMPARE(model.value(QStringLiteral("payments/length")).toInt(), 3);
    // By payment date.
    QCOMPARE(model.value(QStringLiteral("payments/0/date")).toDate(), QDate(2025, 2, 1));
    QCOMPARE(model.value(QStringLiteral("payments/0/invoice/number")).toInt(), 1004);
    QCOMPARE(model.value(QStringLiteral("payments/1/invoice/number")).toInt(), 1002);
    QCOMPARE(model.value(QStringLiteral("payments/2/date")).toDate(), QDate(2025, 4, 2));
    QCOMPARE(model.value(QStringLiteral("payments/1/bankAccount/name")).toString(),
        QStringLiteral("Osuuspankki"));
    QCOMPARE(model.value(QStringLiteral("payments/1/bankAccount/bic")).toString(),
        QStringLiteral("OKOYFIHH"));
    QCOMPARE(model.value(QStringLiteral("payments/0/customer/name")).toString(),
        QStringLiteral("=HYPERLINK(\"http://x\";\"Avaa\")"));
    QCOMPARE(model.value(QStringLiteral("payments/0/invoice/type")).toInt(), 0);
    // Every payment once, every invoice's total once.
    QCOMPARE(model.totalPaymentAmount(), m_totals.value(1002) + 2000);
    QCOMPARE(model.value(QStringLiteral("totalAmount")).value<Decimal>().toLongLong(),
        m_totals.value(1002) + m_totals.value(1004));
    QCOMPARE(model.criteriaTexts(), QStringList { "Maksusuoritukset" });

    model.sort(PaymentPrintModel::PaymentAmountColumn);
    QCOMPARE(model.paymentAt(0).amount, 2000);
    model.sort(PaymentPrintModel::NumberColumn);
    QCOMPARE(model.value(QStringLiteral("payments/0/invoice/number")).toInt(), 1002);
    QCOMPARE(model.value(QStringLiteral("payments/0/date")).toDate(), QDate(2025, 3, 10));

    PaymentPrintModel range(m_fixture.registry());
    range.criteria().dateFrom = QDate(2025, 3, 1);
    range.criteria().dateTo = QDate(2025, 3, 31);
    range.criteria().bankAccountId = m_fixture.registry()->bankAccountAt(0)->id;
    QVERIFY(range.run());
    QCOMPARE(range.paymentCount(), 1);
    QCOMPARE(range.paymentAt(0).amount, 50000);
    QCOMPARE(range.criteriaTexts(),
        (QStringList { "Maksusuoritukset ajalta 1.3.2025 - 31.3.2025", "Pankkitili Osuuspankki" }));
}

void TestListPrintModels::paymentListCsv()
{
    PaymentPrintModel model(m_fixture.registry());
    model.setExtraFields({ QStringLiteral("tilinumero") });
    QVERIFY(model.run());
    const QString fileName = m_dir.filePath(QStringLiteral("suoritukset.csv"));
    QVERIFY2(model.exportToCSV(fileName, QStringLiteral(",")), qPrintable(model.lastError()));
    bool bom = false;
    const QList<QStringList> rows = parseCsv(readFile(fileName), QLatin1Char(','), &bom);
    QVERIFY(bom);
    QCOMPARE(rows.size(), 4);
    QCOMPARE(rows.at(0),
        (QStringList { "Numero", "Päivämäärä", "Eräpäivä", "Asiakasnumero", "Nimi", "Yhteensä",
            "Suoritus", "Maksupäivä", "Pankkitili", "Tilinumero" }));
    QCOMPARE(rows.at(1).at(0), QStringLiteral("1004"));
    QCOMPARE(rows.at(1).at(4), QStringLiteral("'=HYPERLINK(\"http://x\";\"Avaa\")"));
    QCOMPARE(rows.at(1).at(6), QStringLiteral("20,00"));
    QCOMPARE(rows.at(1).at(7), QStringLiteral("1.2.2025"));
    QCOMPARE(rows.at(1).at(8), QStringLiteral("Nordea"));
    QCOMPARE(rows.at(2).at(6), QStringLiteral("500,00"));
    QVERIFY(!rows.at(3).at(9).isEmpty());
}

void TestListPrintModels::customerAndProductLists()
{
    ProductListPrintModel products(m_fixture.registry());
    QVERIFY(products.run());
    // The interest product of a new database is one of them.
    QCOMPARE(products.productCount(), 5);
    QStringList numbers;
    for (int i = 0; i < products.productCount(); ++i)
        numbers.append(products.value(QStringLiteral("products/%1/number").arg(i)).toString());
    QCOMPARE(numbers, (QStringList { "-5", "9", "10", "999", "A-1" }));
    // A price entered in cents stays in cents: 85,00 + 25,5 % is 106,675,
    // shown as 106,68; 24,90 with 14 % included is 21,84 without.
    QCOMPARE(products.value(QStringLiteral("products/2/amount")).value<Decimal>(),
        Decimal(roundHalfAway(8500 * 1.255L), 2));
    QCOMPARE(products.value(QStringLiteral("products/2/amountVatExcluded")).value<Decimal>(),
        Decimal(8500, 2));
    QCOMPARE(products.value(QStringLiteral("products/4/amountVatExcluded")).value<Decimal>(),
        Decimal(roundHalfAway(2490 / 1.14L), 2));
    // Kilometrikorvaus 0,57 at 0 %: the same both ways.
    QCOMPARE(products.value(QStringLiteral("products/1/amount")).value<Decimal>(), Decimal(57, 2));
    products.sort(ProductListPrintModel::NameColumn);
    QCOMPARE(
        products.value(QStringLiteral("products/0/name")).toString(), QStringLiteral("=SUM(A1)"));
    QCOMPARE(
        products.value(QStringLiteral("products/4/name")).toString(), QStringLiteral("äänikirja"));

    const QString fileName = m_dir.filePath(QStringLiteral("tuotteet.csv"));
    QVERIFY(products.exportToCSV(fileName, QStringLiteral(";")));
    bool bom = false;
    QList<QStringList> rows = parseCsv(readFile(fileName), QLatin1Char(';'), &bom);
    QCOMPARE(rows.at(0),
        (QStringList { "Nro", "Nimi", "Yksikkö", "Veroton", "Verollinen", "ALV-%", "Tuoteryhmä" }));
    QCOMPARE(
        rows.at(1), (QStringList { "'-5", "'=SUM(A1)", "kpl", "100,00", "125,50", "25,5", "" }));

    CustomerListPrintModel customers(m_fixture.registry());
    QVERIFY(customers.run());
    QCOMPARE(customers.value(QStringLiteral("customers/length")).toInt(), 3);
    customers.sort(CustomerListPrintModel::TownNameColumn);
    // An empty town first, then Jyväskylä before Vaasa.
    QCOMPARE(customers.value(QStringLiteral("customers/0/number")).toInt(), 3);
    QCOMPARE(customers.value(QStringLiteral("customers/1/townName")).toString(),
        QStringLiteral("Jyväskylä"));
    QVERIFY(customers.exportToCSV(fileName, QStringLiteral(",")));
    rows = parseCsv(readFile(fileName), QLatin1Char(','), &bom);
    QCOMPARE(rows.at(0),
        (QStringList { "Nro", "Nimi", "Maa", "Yhteyshenkilö", "Puhelinnumero", "VAT-numero",
            "Verkkolaskuvälittäjän tunnus", "Verkkolaskuosoite", "Oma 1", "Oma 2" }));
    QCOMPARE(rows.at(1).at(3), QStringLiteral("Virtanen, Liisa"));
    QCOMPARE(rows.at(2).at(5), QStringLiteral("FI12345671"));
}

void TestListPrintModels::reportPdf_data()
{
    QTest::addColumn<int>("report");
    QTest::addColumn<QStringList>("texts");

    const QString date = QDate::currentDate().toString(QStringLiteral("d.M.yyyy"));
    QTest::addRow("invoice list") << 0
                                  << QStringList { "Laskuluettelo", "Avoimet laskut",
                                         "Rautakauppa Virtanen Oy", euros(m_totals.value(1001)),
                                         "ALV-erittely", "Loppusumma",
                                         euros(m_totals.value(1001) + m_totals.value(1003)
                                             + m_totals.value(1004)),
                                         "Kuusela Design Oy", date };
    QTest::addRow("payment list") << 1
                                  << QStringList { "Suorituspäiväkirja",
                                         "Maksusuoritukset ajalta 1.1.2025 - 31.3.2025", "500,00",
                                         "20,00", "520,00", "Osuuspankki", "Nordea", "10.3.2025",
                                         date };
    QTest::addRow("customer list") << 2
                                   << QStringList { "Asiakasluettelo", "Nordic Timber AB",
                                          "Teollisuustie 4", "Jyväskylä", "Kuusela Design Oy" };
    QTest::addRow("product list") << 3
                                  << QStringList { "Tuoteluettelo", "Viivästyskorko", "Tuntityö",
                                         "85,00", "106,68", "25,5", date };
}

void TestListPrintModels::reportPdf()
{
    QFETCH(int, report);
    QFETCH(QStringList, texts);

    std::unique_ptr<PrintModel> model;
    const char* script = nullptr;
    switch (report) {
    case 0: {
        auto* list = new InvoiceListPrintModel(m_fixture.registry());
        list->criteria().paymentStatus = 1;
        list->setColumnFlags(InvoiceListPrintModel(nullptr).allColumns()
            & ~((1 << InvoiceListPrintModel::DeliveryDateColumn)
                | (1 << InvoiceListPrintModel::CustomerNumberColumn)
                | (1 << InvoiceListPrintModel::ReferenceNumberColumn)));
        model.reset(list);
        script = "invoice-list";
        break;
    }
    case 1: {
        auto* list = new PaymentPrintModel(m_fixture.registry());
        list->criteria().dateFrom = QDate(2025, 1, 1);
        list->criteria().dateTo = QDate(2025, 3, 31);
        model.reset(list);
        script = "payment-list";
        break;
    }
    case 2:
        model.reset(new CustomerListPrintModel(m_fixture.registry()));
        script = "customer-list";
        break;
    default:
        model.reset(new ProductListPrintModel(m_fixture.registry()));
        script = "product-list";
        break;
    }
    QVERIFY2(model->run(), qPrintable(model->lastError()));
    const QString fileName = m_dir.filePath(QStringLiteral("report%1.pdf").arg(report));
    // All the journal's columns fit across a landscape page.
    QVERIFY2(render(model.get(), script, fileName,
                 report == 1 ? QPageLayout::Landscape : QPageLayout::Portrait),
        qPrintable(m_error));
    QCOMPARE(PdfTools::pageCount(fileName), 1);
    const QString text = pdfText(fileName);
    for (const QString& expected : texts)
        QVERIFY2(text.contains(expected),
            qPrintable(expected + QStringLiteral(" missing from:\n") + text));
    if (report == 0) {
        // Hidden columns are not printed.
        QVERIFY(!text.contains(QStringLiteral("Viitenumero")));
        QVERIFY(!text.contains(QStringLiteral("Asiakasnro")));
        QVERIFY(text.contains(QStringLiteral("Eräpäivä")));
    }
    if (report == 1)
        QVERIFY(!text.contains(QStringLiteral("2.4.2025")));
}

void TestListPrintModels::manyInvoicesBreakPages()
{
    InvoiceFixture fixture { VEKLARI_TEST_BACKEND };
    QVERIFY2(fixture.open(), qPrintable(fixture.lastError()));
    const int count = 130;
    long long total = 0;
    for (int i = 0; i < count; ++i) {
        const QList<InvoiceItem> items { oneRow(10000 + 100 * i, 2400, QStringLiteral("Rivi")) };
        QVERIFY(fixture.addInvoice(0, items, 2000 + i, i % 2) >= 0);
        total += invoiceTotal(items);
    }
    InvoiceListPrintModel model(fixture.registry());
    QVERIFY(model.run());
    const QString fileName = m_dir.filePath(QStringLiteral("many.pdf"));
    QVERIFY2(render(&model, "invoice-list", fileName), qPrintable(m_error));
    const int pages = PdfTools::pageCount(fileName);
    QVERIFY2(pages >= 3, qPrintable(QString::number(pages)));
    QStringList numbersSeen;
    for (int page = 1; page <= pages; ++page) {
        const QString text = pdfText(fileName, page);
        // Every page repeats the header and carries its page number.
        QVERIFY(text.contains(QStringLiteral("Viitenumero")));
        QVERIFY(text.contains(QStringLiteral("Sivu %1").arg(page)));
        for (int i = 0; i < count; ++i) {
            if (text.contains(QRegularExpression(QStringLiteral("^\\s*%1\\s").arg(2000 + i),
                    QRegularExpression::MultilineOption)))
                numbersSeen.append(QString::number(2000 + i));
        }
    }
    QCOMPARE(numbersSeen.size(), count);
    QVERIFY(pdfText(fileName, pages).contains(euros(total)));
}

void TestListPrintModels::customerListLandscape()
{
    CustomerListPrintModel model(m_fixture.registry());
    QVERIFY(model.run());
    const QString portrait = m_dir.filePath(QStringLiteral("asiakkaat-pysty.pdf"));
    const QString landscape = m_dir.filePath(QStringLiteral("asiakkaat-vaaka.pdf"));
    QVERIFY2(render(&model, "customer-list", portrait), qPrintable(m_error));
    QVERIFY2(
        render(&model, "customer-list", landscape, QPageLayout::Landscape), qPrintable(m_error));
    const QString wide = pdfText(landscape);
    const QString narrow = pdfText(portrait);
    QVERIFY(wide.contains(QStringLiteral("Sähköposti")));
    QVERIFY(wide.contains(QStringLiteral("liisa@example.fi")));
    QVERIFY(!narrow.contains(QStringLiteral("Sähköposti")));
    QVERIFY(narrow.contains(QStringLiteral("Yhteyshenkilö")));
    const QString info = QString::fromUtf8(PdfTools::run(QStringLiteral("pdfinfo"), { landscape }));
    QVERIFY2(info.contains(QRegularExpression(QStringLiteral("Page size:\\s+842 x 595 pts"))),
        qPrintable(info));
    // The footer's date is given as a Date object, which formatDate() does
    // not read: the customer list prints no date.
    const QString today = QDate::currentDate().toString(QStringLiteral("d.M.yyyy"));
    QVERIFY(!narrow.contains(today));
}

QTEST_MAIN(TestListPrintModels)
#include "tst_listprintmodels.moc"
