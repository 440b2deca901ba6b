#include "core/invoiceitemclipboard.h"
#include "core/invoiceitemtablemodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/product.h"
#include "recordfields.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QAbstractItemModelTester>
#include <QClipboard>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QtTest>

#include <memory>

namespace {

using Model = InvoiceItemTableModel;

// Division rounding half away from zero, in 128 bits.
long long roundedDivision(__int128 numerator, __int128 denominator)
{
    const __int128 half = denominator / 2;
    return static_cast<long long>(
        numerator >= 0 ? (numerator + half) / denominator : -((-numerator + half) / denominator));
}

} // namespace

class TestInvoiceItemTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void vatIncludedAndExcludedEntryAgree_data();
    void vatIncludedAndExcludedEntryAgree();
    void cellEdits_data();
    void cellEdits();
    void clipboardRoundTrip();
    void paymentEditing_data();
    void paymentEditing();

private:
    static void setCell(Model& model, int row, int column, const QString& text)
    {
        QVERIFY2(model.setData(model.index(row, column), text, Qt::EditRole),
            qPrintable(QStringLiteral("%1,%2 <- %3").arg(row).arg(column).arg(text)));
    }

    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<Model> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

void TestInvoiceItemTableModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    TestDatabase db(TestDatabase::SQLite);
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    // Number, name, price in 1/10000, VAT rate, price excluding VAT.
    const QList<std::tuple<const char*, const char*, int, int, bool>> products
        = { { "24", "Konsultointi", 1240000, 2400, false }, { "255", "Kaapeli", 80000, 2550, true },
              { "0", "Koulutus", 77700, 0, true } };
    for (const auto& [number, name, amount, vatRate, vatExcluded] : products) {
        Product product;
        product.number = QLatin1String(number);
        product.name = QLatin1String(name);
        product.unitCode = product.number == "24" ? QStringLiteral("h") : QStringLiteral("kpl");
        product.amount = amount;
        product.vatRate = vatRate;
        product.vatExcluded = vatExcluded;
        QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
    }
    // The products stay in the registry; the tests open databases of their own.
    m_registry = std::make_unique<Registry>();
    QVERIFY(m_registry->fetchProducts(query.get()));
}

void TestInvoiceItemTableModel::init()
{
    m_model = std::make_unique<Model>(m_registry.get());
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    m_model->setEditable(true);
}

void TestInvoiceItemTableModel::cleanup()
{
    m_tester.reset();
    m_model.reset();
}

void TestInvoiceItemTableModel::vatIncludedAndExcludedEntryAgree_data()
{
    QTest::addColumn<int>("vatRate");
    // The product, quantity, price with and without VAT and discount typed.
    QTest::addColumn<QStringList>("typed");
    QTest::addRow("24 %%, two") << 2400 << QStringList { "24", "2", "12.40", "10", "" };
    QTest::addRow("25.5 %%, discount")
        << 2550 << QStringList { "255", "3.5", "10.04", "8.00", "10" };
    QTest::addRow("no VAT, full discount")
        << 0 << QStringList { "0", "0.333", "7.77", "7.77", "100" };
}

void TestInvoiceItemTableModel::vatIncludedAndExcludedEntryAgree()
{
    QFETCH(int, vatRate);
    QFETCH(QStringList, typed);
    const QString product = typed.at(0), quantity = typed.at(1), priceIncluded = typed.at(2),
                  priceExcluded = typed.at(3), discount = typed.at(4);
    const long long scaledQuantity = qRound64(quantity.toDouble() * 10000);
    const long long scaledExcluded = qRound64(priceExcluded.toDouble() * 10000);
    const long long scaledDiscount = qRound64(discount.toDouble() * 100);

    // Independently: the row total before rounding is q * p * (1 - d) in
    // 1/10^12 of a euro; VAT-included p is the excluded price times (1 + r).
    const __int128 excludedExact
        = static_cast<__int128>(scaledQuantity) * scaledExcluded * (10000 - scaledDiscount);
    const long long excludedCents = roundedDivision(excludedExact, 10000000000LL);
    const long long includedCents
        = roundedDivision(excludedExact * (10000 + vatRate), __int128(10000000000LL) * 10000);

    Model excluded(m_registry.get());
    excluded.setEditable(true);
    excluded.setVatIncluded(false);
    for (Model* model : { m_model.get(), &excluded }) {
        QVERIFY(model->insertRow(0));
        setCell(*model, 0, Model::ProductColumn, product);
        setCell(*model, 0, Model::QuantityColumn, quantity);
        const QString price = model == &excluded ? priceExcluded : priceIncluded;
        // Typing the product's own price is no change: refused quietly.
        if (model->data(model->index(0, Model::PriceColumn), Qt::EditRole).toString() != price)
            model->setData(model->index(0, Model::PriceColumn), price);
        setCell(*model, 0, Model::DiscountColumn, discount);

        QCOMPARE(model->totalAmountVatIncluded(), includedCents);
        QCOMPARE(model->totalAmountVatExcluded(), excludedCents);
        // The breakdown takes the VAT out of the sum including VAT.
        QCOMPARE(model->totalVatAmount(),
            includedCents - roundedDivision(__int128(includedCents) * 10000, 10000 + vatRate));
    }
    // The same row, whichever way its price was typed.
    QCOMPARE(m_model->invoiceItemAt(0)->amountVatIncluded(),
        excluded.invoiceItemAt(0)->amountVatIncluded());
    QCOMPARE(excluded.invoiceItemAt(0)->amountVatExcluded(), scaledExcluded);
}

void TestInvoiceItemTableModel::cellEdits_data()
{
    QTest::addColumn<bool>("vatIncluded");
    QTest::addColumn<QStringList>("before"); // "column=text" edits of row 0 first
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QStringList>("fields"); // of the row afterwards
    auto row = [](const char* name, bool vatIncluded, const QStringList& before, int column,
                   const QString& text, bool accepted, const QStringList& fields) {
        QTest::addRow("%s", name) << vatIncluded << before << column << text << accepted << fields;
    };
    const int product = Model::ProductColumn;
    const int quantity = Model::QuantityColumn;
    const int price = Model::PriceColumn;
    row("product fills the row", true, {}, product, " 255 ", true,
        { "productNumber=255", "productName=Kaapeli", "unitCode=kpl", "amount=80000",
            "vatRate=2550", "vatExcluded=true" });
    // 1000 x 999 = 9 990 000 stays below the limit, 1000 x 1000 does not.
    row("quantity too large", true, { "0=24", "4=1000" }, quantity, "1000", false,
        { "quantity=0" });
    // Excluding VAT, the limit applies to the total with VAT added.
    row("price too large with VAT", false, { "0=24", "2=1000" }, price, "810", false,
        { "amount=1240000", "vatExcluded=false" });
    // Numbers too large to be read at all are refused, never wrapped.
    row("quantity too large to read", true, { "0=24", "2=3" }, quantity, "250000", false,
        { "quantity=30000" });
    row("price too large to read", true, { "0=24" }, price, "250000", false, { "amount=1240000" });
    row("discount too large to read", true, { "0=24", "5=10" }, Model::DiscountColumn,
        "99999999999", false, { "discount=1000" });
    row("price at the reading limit", true, {}, price, "214748.3647", true,
        { "amount=2147483647" });
    // The product's own price typed again, in either form, is no change.
    row("same price", true, { "0=24" }, price, " 124.00 ", false, { "amount=1240000" });
    row("new price without VAT", false, { "0=24" }, price, "100.5", true,
        { "amount=1005000", "vatExcluded=true" });
}

void TestInvoiceItemTableModel::cellEdits()
{
    QFETCH(bool, vatIncluded);
    QFETCH(QStringList, before);
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(bool, accepted);
    QFETCH(QStringList, fields);
    m_model->setVatIncluded(vatIncluded);
    QVERIFY(m_model->insertRow(0));
    for (const QString& edit : before)
        setCell(*m_model, 0, edit.section('=', 0, 0).toInt(), edit.section('=', 1));
    m_model->committed();
    QSignalSpy tooLarge(m_model.get(), &Model::tooLargeAmountEntered);
    QCOMPARE(m_model->setData(m_model->index(0, column), text), accepted);
    QCOMPARE(m_model->isChanged(), accepted);
    // Only amounts beyond the limit are announced as too large, with the reason.
    const bool tooLargeRow = QByteArray(QTest::currentDataTag()).contains("too large");
    QCOMPARE(tooLarge.count(), tooLargeRow ? 1 : 0);
    QCOMPARE(m_model->lastError().contains(QStringLiteral("liian suuri")), tooLargeRow);
    const QStringList stored = RecordFields::of(*m_model->invoiceItemAt(0));
    for (const QString& field : fields)
        QVERIFY2(stored.contains(field), qPrintable(field + " in " + stored.join(", ")));
}

void TestInvoiceItemTableModel::clipboardRoundTrip()
{
    const QList<QStringList> rows { { "24", "Suunnittelu", "7.5", "", "", "15" },
        { "", "Ei kopioida" }, { "255", "", "-2", "m", "9.95" } };
    for (int row = 0; row < rows.size(); ++row) {
        QVERIFY(m_model->insertRow(row));
        for (int column = 0; column < rows.at(row).size(); ++column) {
            if (!rows.at(row).at(column).isEmpty())
                setCell(*m_model, row, column, rows.at(row).at(column));
        }
    }
    InvoiceItemClipboard source(m_model.get());
    QCOMPARE(source.copyRowsToClipboard({ 2, 0, 7 }), 2);
    const QString text = QGuiApplication::clipboard()->text();
    QCOMPARE(text.count(QLatin1Char('\n')), 2);
    QCOMPARE(text.section(QLatin1Char('\n'), 0, 0).split(QLatin1Char('\t')).size(), 8);
    QVERIFY(text.startsWith(QStringLiteral("24\tKonsultointi\tSuunnittelu\t7")));

    Model target(m_registry.get());
    target.setEditable(true);
    QVERIFY(target.insertRow(0));
    InvoiceItemClipboard pasting(&target);
    QCOMPARE(pasting.pasteRowsFromClipboard(), 2);
    QCOMPARE(target.rowCount(), 3);
    QVERIFY(target.isChanged());
    // The same rows, as new ones.
    for (const auto& pair : { qMakePair(0, 1), qMakePair(2, 2) }) {
        InvoiceItem original;
        m_model->invoiceItemAt(pair.first)->copy(&original);
        original.rowNumber = target.invoiceItemAt(pair.second)->rowNumber;
        QCOMPARE(RecordFields::of(*target.invoiceItemAt(pair.second)), RecordFields::of(original));
    }

    // Cut: copied, then removed from the source.
    QCOMPARE(source.cutRowsToClipboard({ 1 }), 1);
    QCOMPARE(m_model->rowCount(), 2);
    QVERIFY(QGuiApplication::clipboard()->text().contains(QStringLiteral("Ei kopioida")));
}

void TestInvoiceItemTableModel::paymentEditing_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("editable");
    QTest::addColumn<QString>("expected"); // date and amount afterwards
    QTest::addRow("date as digits") << 0 << "15032024" << true << "2024-03-15 5000";
    QTest::addRow("impossible date") << 0 << "31.2.2024" << true << "2024-02-01 5000";
    QTest::addRow("date cleared") << 0 << "" << true << " 5000";
    QTest::addRow("amount") << 1 << " -1234.5 " << true << "2024-02-01 -123450";
    QTest::addRow("same amount") << 1 << "50" << true << "2024-02-01 5000";
    QTest::addRow("amount too large") << 1 << "21474836.48" << true << "2024-02-01 5000";
    QTest::addRow("largest amount") << 1 << "21474836.47" << true << "2024-02-01 2147483647";
    QTest::addRow("read-only") << 1 << "7" << false << "2024-02-01 5000";
}

void TestInvoiceItemTableModel::paymentEditing()
{
    QFETCH(int, column);
    QFETCH(QString, value);
    QFETCH(bool, editable);
    QFETCH(QString, expected);
    Registry registry;
    PaymentTableModel model(&registry);
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Payment payment;
    payment.date = QDate(2024, 2, 1);
    payment.amount = 5000;
    model.setEditable(true);
    model.addPayment(payment);
    model.committed();
    model.setEditable(editable);
    QCOMPARE(bool(model.index(0, column).flags() & Qt::ItemIsEditable), editable);

    QSignalSpy spy(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy tooLarge(&model, &PaymentTableModel::tooLargeAmountEntered);
    const bool accepted = model.setData(model.index(0, column), value);
    QCOMPARE(tooLarge.count(), QByteArray(QTest::currentDataTag()).contains("too large") ? 1 : 0);
    const Payment* edited = model.paymentAt(0);
    QCOMPARE(
        edited->date.toString(Qt::ISODate) + QLatin1Char(' ') + QString::number(edited->amount),
        expected);
    QCOMPARE(accepted, expected != QStringLiteral("2024-02-01 5000"));
    QCOMPARE(QList<int>({ model.isChanged(), int(spy.count()) }), QList<int>(2, accepted));
}

QTEST_MAIN(TestInvoiceItemTableModel)
#include "tst_invoiceitemtablemodel.moc"
