#include "core/invoiceitemclipboard.h"
#include "core/invoiceitemtablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
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

#include <functional>
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

// Cents in the user's locale, e.g. 1 234.50.
QString money(long long cents)
{
    const QLocale locale;
    const QString sign = cents < 0 ? locale.negativeSign() : QString();
    const long long absolute = qAbs(cents);
    return sign + locale.toString(absolute / 100) + locale.decimalPoint()
        + QString::number(absolute % 100).rightJustified(2, QLatin1Char('0'));
}

Product makeProduct(const QString& number, const QString& name, long long amount, int vatRate,
    bool vatExcluded, const QString& unit = QStringLiteral("kpl"))
{
    Product product;
    product.number = number;
    product.name = name;
    product.unitCode = unit;
    product.amount = amount;
    product.vatRate = vatRate;
    product.vatExcluded = vatExcluded;
    return product;
}

struct Announced
{
    QList<QPair<QModelIndex, QModelIndex>> ranges;
    bool covers(int row, int column) const
    {
        for (const auto& range : ranges) {
            if (row >= range.first.row() && row <= range.second.row()
                && column >= range.first.column() && column <= range.second.column())
                return true;
        }
        return false;
    }
};

QStringList shownCells(const Model& model)
{
    QStringList cells;
    for (int row = 0; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column)
            cells.append(model.index(row, column).data().toString());
    }
    return cells;
}

// An invoice of a new customer, for rows to belong to; its id, -1 on failure.
int saveInvoice(Query* query, int number)
{
    Customer customer;
    customer.number = number;
    customer.name = QStringLiteral("Asiakas %1").arg(number);
    if (!query->saveCustomer(&customer))
        return -1;
    Invoice invoice;
    invoice.customerId = customer.id;
    invoice.number = number;
    invoice.date = QDate(2024, 5, 2);
    invoice.dueDate = invoice.date;
    return query->saveInvoice(&invoice) ? invoice.id : -1;
}

} // namespace

using Operation = std::function<void(Model&, Registry&)>;

class TestInvoiceItemTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void headersAndFlags();
    void vatIncludedAndExcludedEntryAgree_data();
    void vatIncludedAndExcludedEntryAgree();
    void cellEdits_data();
    void cellEdits();
    void vatFreeRows();
    void everyChangedCellIsAnnounced_data();
    void everyChangedCellIsAnnounced();
    void rowsInsertMoveAndRemove();
    void clipboardRoundTrip();
    void pastedLinesTakeTheProductRegister();
    void saveAndReload_data();
    void saveAndReload();

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
    const QList<Product> products = {
        makeProduct(QStringLiteral("24"), QStringLiteral("Konsultointi"), 1240000, 2400, false,
            QStringLiteral("h")),
        makeProduct(QStringLiteral("255"), QStringLiteral("Kaapeli"), 80000, 2550, true),
        makeProduct(QStringLiteral("14"), QStringLiteral("Lounas"), 28500, 1400, false),
        makeProduct(QStringLiteral("10"), QStringLiteral("Kirja"), 3850, 1000, false),
        makeProduct(QStringLiteral("0"), QStringLiteral("Koulutus"), 77700, 0, true),
    };
    for (Product product : products)
        QVERIFY2(query->saveProduct(&product), qPrintable(query->lastError()));
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

void TestInvoiceItemTableModel::headersAndFlags()
{
    const QStringList headers = { "Tuote", "Selite", "Määrä", "Yksikkö", "à-hinta, ALV",
        "Alennus-%", "Alennettu à-hinta", "ALV-%", "Yhteensä" };
    QCOMPARE(m_model->columnCount(), headers.size());
    for (int column = 0; column < headers.size(); ++column)
        QCOMPARE(m_model->headerData(column, Qt::Horizontal).toString(), headers.at(column));
    QSignalSpy headerSpy(m_model.get(), &QAbstractItemModel::headerDataChanged);
    m_model->setVatIncluded(false);
    QCOMPARE(m_model->headerData(Model::PriceColumn, Qt::Horizontal).toString(),
        QStringLiteral("à-hinta, ei ALV"));
    QCOMPARE(headerSpy.count(), 1);

    // Texts left, numbers right; the derived columns are never edited.
    QVERIFY(m_model->insertRow(0));
    for (int column = 0; column < m_model->columnCount(); ++column) {
        const QModelIndex index = m_model->index(0, column);
        const bool left = column == 0 || column == 1 || column == 3;
        QCOMPARE(index.data(Qt::TextAlignmentRole).toInt(),
            int((left ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter));
        QCOMPARE(bool(index.flags() & Qt::ItemIsEditable), column <= Model::DiscountColumn);
        QCOMPARE(m_model->setData(index, QStringLiteral("5")), column <= Model::DiscountColumn);
    }
    QVERIFY(!m_model->setData(m_model->index(0, 1), QStringLiteral("x"), Qt::DisplayRole));
    m_model->setEditable(false);
    QVERIFY(!(m_model->index(0, 1).flags() & Qt::ItemIsEditable));
    QVERIFY(!m_model->setData(m_model->index(0, 1), QStringLiteral("x")));
}

void TestInvoiceItemTableModel::vatIncludedAndExcludedEntryAgree_data()
{
    QTest::addColumn<QString>("product");
    QTest::addColumn<int>("vatRate");
    QTest::addColumn<QString>("quantity");
    QTest::addColumn<long long>("scaledQuantity");
    QTest::addColumn<QString>("priceIncluded");
    QTest::addColumn<QString>("priceExcluded");
    QTest::addColumn<long long>("scaledExcluded");
    QTest::addColumn<QString>("discount");
    QTest::addColumn<int>("scaledDiscount");

    QTest::newRow("24 %, two") << "24" << 2400 << "2" << 20000LL << "12.40"
                               << "10" << 100000LL << "" << 0;
    QTest::newRow("25.5 %, discount") << "255" << 2550 << "3.5" << 35000LL << "10.04"
                                      << "8.00" << 80000LL << "10" << 1000;
    QTest::newRow("14 %, half discount") << "14" << 1400 << "1.25" << 12500LL << "2.85"
                                         << "2.5" << 25000LL << "12.5" << 1250;
    QTest::newRow("10 %, four decimals") << "10" << 1000 << "10" << 100000LL << "0.385"
                                         << "0.35" << 3500LL << "0" << 0;
    QTest::addRow("no VAT, full discount") << "0" << 0 << "0.333" << 3330LL << "7.77"
                                           << "7.77" << 77700LL << "100" << 10000;
    QTest::addRow("credit") << "24" << 2400 << "-3" << -30000LL << "12.40"
                            << "10" << 100000LL << "" << 0;
}

void TestInvoiceItemTableModel::vatIncludedAndExcludedEntryAgree()
{
    QFETCH(QString, product);
    QFETCH(int, vatRate);
    QFETCH(QString, quantity);
    QFETCH(long long, scaledQuantity);
    QFETCH(QString, priceIncluded);
    QFETCH(QString, priceExcluded);
    QFETCH(long long, scaledExcluded);
    QFETCH(QString, discount);
    QFETCH(int, scaledDiscount);

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
        QCOMPARE(model->index(0, Model::TotalColumn).data().toString(),
            money(model == &excluded ? excludedCents : includedCents));
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
    const int discount = Model::DiscountColumn;
    row("product fills the row", true, {}, product, " 255 ", true,
        { "productNumber=255", "productName=Kaapeli", "unitCode=kpl", "amount=80000",
            "vatRate=2550", "vatExcluded=true" });
    row("unknown product keeps price and text", true, { "0=24", "1=  Työt ", "2=2" }, product,
        "9999", true, { "productNumber=", "productName=", "text=Työt", "amount=1240000" });
    row("discount clamped to 100", true, { "5=3" }, discount, "150", true, { "discount=10000" });
    row("negative discount is none", true, { "5=3" }, discount, "-5", true, { "discount=0" });
    row("empty discount is none", true, { "5=3" }, discount, "", true, { "discount=0" });
    row("fractional discount", true, {}, discount, "12.5", true, { "discount=1250" });
    // 1000 x 999 = 9 990 000 stays below the limit, 1000 x 1000 does not.
    row("quantity within", true, { "0=24", "4=1000" }, quantity, "999", true,
        { "quantity=9990000" });
    row("quantity too large", true, { "0=24", "4=1000" }, quantity, "1000", false,
        { "quantity=0" });
    row("price within", true, { "0=24", "2=1000" }, price, "999.99", true, { "amount=9999900" });
    row("price too large", true, { "0=24", "2=1000" }, price, "1000.01", false,
        { "amount=1240000" });
    // Excluding VAT, the limit applies to the total with VAT added.
    row("price within with VAT", false, { "0=24", "2=1000" }, price, "800", true,
        { "amount=8000000", "vatExcluded=true" });
    row("price too large with VAT", false, { "0=24", "2=1000" }, price, "810", false,
        { "amount=1240000", "vatExcluded=false" });
    row("not a number", true, { "0=24" }, quantity, "abc", false, { "quantity=0" });
    // The product's own price typed again, in either form, is no change.
    row("same price", true, { "0=24" }, price, " 124.00 ", false, { "amount=1240000" });
    row("same price without VAT", false, { "0=24" }, price, "100", false,
        { "amount=1240000", "vatExcluded=false" });
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
    // Only amounts beyond the limit are announced as too large.
    QCOMPARE(tooLarge.count(), QByteArray(QTest::currentDataTag()).contains("too large") ? 1 : 0);
    const QStringList stored = RecordFields::of(*m_model->invoiceItemAt(0));
    for (const QString& field : fields)
        QVERIFY2(stored.contains(field), qPrintable(field + " in " + stored.join(", ")));
}

void TestInvoiceItemTableModel::vatFreeRows()
{
    m_model->setVatFree(true);
    QVERIFY(m_model->insertRow(0));
    setCell(*m_model, 0, Model::ProductColumn, QStringLiteral("24"));
    QCOMPARE(m_model->invoiceItemAt(0)->vatRate, 0);
    m_model->addVatToInvoiceItems();
    QCOMPARE(m_model->invoiceItemAt(0)->vatRate, 2400);
    m_model->removeVatFromInvoiceItems();
    QCOMPARE(m_model->index(0, Model::VatColumn).data().toString(), QStringLiteral("0"));
    // The row shows its product by number and name, edits by number.
    QCOMPARE(m_model->index(0, 0).data().toString(), QStringLiteral("24 Konsultointi"));
    QCOMPARE(m_model->index(0, 0).data(Qt::EditRole).toString(), QStringLiteral("24"));
    QCOMPARE(m_model->emptyProduct(), -1);
}

void TestInvoiceItemTableModel::everyChangedCellIsAnnounced_data()
{
    QTest::addColumn<Operation>("operation");
    auto row = [](const char* name, const Operation& operation) {
        QTest::addRow("%s", name) << operation;
    };
    auto edit = [](int column, const char* text) {
        return [=](Model& model, Registry&) { setCell(model, 1, column, QLatin1String(text)); };
    };
    row("product", edit(Model::ProductColumn, "24"));
    row("quantity", edit(Model::QuantityColumn, "4"));
    row("price", edit(Model::PriceColumn, "20"));
    row("discount", edit(Model::DiscountColumn, "50"));
    row("text", edit(Model::TextColumn, "Uusi"));
    row("VAT mode", [](Model& model, Registry&) { model.setVatIncluded(false); });
    row("remove VAT", [](Model& model, Registry&) { model.removeVatFromInvoiceItems(); });
    row("add VAT", [](Model& model, Registry&) { model.addVatToInvoiceItems(); });
    row("interest row",
        [](Model& model, Registry&) { model.setQuantityAndAmountAndVat0(1, 10000, 123400); });
    row("set product", [](Model& model, Registry& registry) {
        bool found = false;
        model.setProduct(1, registry.productByNumber(QStringLiteral("14"), found));
    });
}

void TestInvoiceItemTableModel::everyChangedCellIsAnnounced()
{
    QFETCH(Operation, operation);
    for (int row = 0; row < 2; ++row) {
        QVERIFY(m_model->insertRow(row));
        setCell(*m_model, row, Model::ProductColumn, QStringLiteral("255"));
        setCell(*m_model, row, Model::QuantityColumn, QStringLiteral("3"));
        setCell(*m_model, row, Model::DiscountColumn, QStringLiteral("5"));
    }
    if (QByteArray(QTest::currentDataTag()) == "add VAT")
        m_model->removeVatFromInvoiceItems();

    const QStringList before = shownCells(*m_model);
    Announced announced;
    connect(m_model.get(), &QAbstractItemModel::dataChanged, this,
        [&](const QModelIndex& from, const QModelIndex& to) {
            announced.ranges.append({ from, to });
        });
    operation(*m_model, *m_registry);

    const QStringList after = shownCells(*m_model);
    int changed = 0;
    for (int i = 0; i < after.size(); ++i) {
        if (before.at(i) == after.at(i))
            continue;
        ++changed;
        const int row = i / Model::ColumnCount;
        const int column = i % Model::ColumnCount;
        QVERIFY2(announced.covers(row, column),
            qPrintable(QStringLiteral("cell %1,%2 changed from %3 to %4 unannounced")
                           .arg(row)
                           .arg(column)
                           .arg(before.at(i), after.at(i))));
    }
    QVERIFY(changed > 0);
    QVERIFY(m_model->isChanged());
}

void TestInvoiceItemTableModel::rowsInsertMoveAndRemove()
{
    for (const char* text : { "a", "b", "c" }) {
        QVERIFY(m_model->insertRow(m_model->rowCount()));
        m_model->setText(m_model->rowCount() - 1, QLatin1String(text));
    }
    QVERIFY(!m_model->insertRow(5));
    QVERIFY(m_model->moveRow(0, 2));
    auto texts = [&] {
        QString result;
        for (int row = 0; row < m_model->rowCount(); ++row)
            result += m_model->invoiceItemAt(row)->text;
        return result;
    };
    QCOMPARE(texts(), QStringLiteral("bca"));
    QVERIFY(m_model->moveRow(2, 1));
    QCOMPARE(texts(), QStringLiteral("bac"));
    QVERIFY(!m_model->moveRow(3, 0));
    QVERIFY(!m_model->moveRow(0, 3));
    QVERIFY(!m_model->moveRow(0, -1));
    QVERIFY(!m_model->removeRow(3));
    QVERIFY(!m_model->removeRow(-1));

    // Empty rows: no product, no text and no price.
    QVERIFY(m_model->insertRow(1));
    QVERIFY(m_model->insertRow(0));
    setCell(*m_model, 0, Model::QuantityColumn, QStringLiteral("2"));
    QVERIFY(m_model->insertRow(4));
    setCell(*m_model, 4, Model::PriceColumn, QStringLiteral("1"));
    QCOMPARE(m_model->rowCount(), 6);
    m_model->removeEmptyRows();
    QCOMPARE(m_model->rowCount(), 4);
    QCOMPARE(texts(), QStringLiteral("bac"));
    QCOMPARE(m_model->invoiceItemAt(2)->amountVatIncluded(), 10000LL);
}

void TestInvoiceItemTableModel::clipboardRoundTrip()
{
    for (int row = 0; row < 3; ++row)
        QVERIFY(m_model->insertRow(row));
    setCell(*m_model, 0, Model::ProductColumn, QStringLiteral("24"));
    setCell(*m_model, 0, Model::TextColumn, QStringLiteral("Suunnittelu"));
    setCell(*m_model, 0, Model::QuantityColumn, QStringLiteral("7.5"));
    setCell(*m_model, 0, Model::DiscountColumn, QStringLiteral("15"));
    setCell(*m_model, 1, Model::TextColumn, QStringLiteral("Ei kopioida"));
    setCell(*m_model, 2, Model::ProductColumn, QStringLiteral("255"));
    setCell(*m_model, 2, Model::QuantityColumn, QStringLiteral("-2"));
    setCell(*m_model, 2, Model::PriceColumn, QStringLiteral("9.95"));
    setCell(*m_model, 2, Model::UnitColumn, QStringLiteral("m"));

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

void TestInvoiceItemTableModel::pastedLinesTakeTheProductRegister()
{
    // Lines from another invoice: a known product under an old name and VAT
    // rate, an unknown product, a six-field line and a line of text.
    const QString text = QStringLiteral("24\tVanha nimi\tTyöt\t3\th\t50.00\t10\t135.00\n"
                                        "777\tPoistunut\tJotain\t2\tkpl\t5\t\t10\n"
                                        "24\tKonsultointi\tKuusi\t1\th\t124\n"
                                        "pelkkää tekstiä\n"
                                        "\t\tVain teksti\tx\t\tabc\t\t\n");
    QCOMPARE(m_model->invoiceItemsFromString(text), 3);
    QCOMPARE(m_model->rowCount(), 3);

    const InvoiceItem* known = m_model->invoiceItemAt(0);
    QCOMPARE(known->productName, QStringLiteral("Konsultointi"));
    QCOMPARE(known->vatRate, 2400);
    QCOMPARE(known->text, QStringLiteral("Työt"));
    QCOMPARE(known->quantity, 30000LL);
    QCOMPARE(known->amountVatIncluded(), 500000LL);
    QCOMPARE(known->discount, 1000);

    const InvoiceItem* unknown = m_model->invoiceItemAt(1);
    QVERIFY(unknown->productNumber.isEmpty());
    QVERIFY(unknown->productName.isEmpty());
    QCOMPARE(unknown->text, QStringLiteral("Jotain"));
    QCOMPARE(unknown->amountVatIncluded(), 50000LL);
    QCOMPARE(unknown->discount, 0);

    const InvoiceItem* textOnly = m_model->invoiceItemAt(2);
    QCOMPARE(textOnly->text, QStringLiteral("Vain teksti"));
    QCOMPARE(textOnly->quantity, 0LL);
    QCOMPARE(textOnly->amount, 0LL);

    // Prices of a VAT-free model are pasted excluding VAT at rate 0.
    Model vatFree(m_registry.get());
    vatFree.setVatFree(true);
    vatFree.setVatIncluded(false);
    QCOMPARE(vatFree.invoiceItemsFromString(text.section(QLatin1Char('\n'), 0, 0)), 1);
    QCOMPARE(vatFree.invoiceItemAt(0)->vatRate, 0);
    QCOMPARE(vatFree.invoiceItemAt(0)->amountVatExcluded(), 500000LL);
}

void TestInvoiceItemTableModel::saveAndReload_data()
{
    QTest::addColumn<int>("backend");
    QTest::addRow("SQLite") << int(TestDatabase::SQLite);
    QTest::addRow("PostgreSQL") << int(TestDatabase::PostgreSQL);
}

void TestInvoiceItemTableModel::saveAndReload()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    std::unique_ptr<Query> query(db.database()->query());
    const int invoiceId = saveInvoice(query.get(), 1);
    QVERIFY2(invoiceId >= 0, qPrintable(query->lastError()));

    const QStringList texts = { "eka", "toka", "kolmas" };
    for (int row = 0; row < texts.size(); ++row) {
        QVERIFY(m_model->insertRow(row));
        setCell(*m_model, row, Model::ProductColumn, QStringLiteral("24"));
        setCell(*m_model, row, Model::TextColumn, texts.at(row));
        setCell(*m_model, row, Model::QuantityColumn, QString::number(row + 1));
    }
    QVERIFY(db.database()->transaction());
    QVERIFY2(m_model->saveInvoiceItems(query.get(), invoiceId), qPrintable(query->lastError()));
    QVERIFY(db.database()->commit());
    m_model->committed();
    QVERIFY(!m_model->isChanged());
    const QString countSql
        = QStringLiteral("SELECT count(*) FROM invoice_item WHERE invoice_id = %1").arg(invoiceId);
    QCOMPARE(db.value(countSql).toInt(), 3);

    Model loaded(m_registry.get());
    QAbstractItemModelTester tester(&loaded);
    loaded.setEditable(true);
    QVERIFY2(loaded.loadInvoiceItems(query.get(), invoiceId), qPrintable(query->lastError()));
    QCOMPARE(loaded.rowCount(), 3);
    for (int row = 0; row < 3; ++row) {
        QCOMPARE(loaded.invoiceItemAt(row)->text, texts.at(row));
        QCOMPARE(loaded.invoiceItemAt(row)->quantity, (row + 1) * 10000LL);
        QCOMPARE(loaded.invoiceItemAt(row)->productName, QStringLiteral("Konsultointi"));
    }
    QCOMPARE(loaded.totalAmountVatIncluded(), m_model->totalAmountVatIncluded());

    // A saved row removed, a never-saved row added and removed again, a new
    // row kept and the order changed.
    const int removedId = loaded.invoiceItemAt(1)->id;
    QVERIFY(loaded.removeRow(1));
    QVERIFY(loaded.insertRow(2));
    loaded.setText(2, QStringLiteral("pois"));
    QVERIFY(loaded.removeRow(2));
    QVERIFY(loaded.insertRow(0));
    loaded.setText(0, QStringLiteral("uusi"));
    QVERIFY(loaded.moveRow(2, 1));
    QVERIFY(loaded.isChanged());
    QVERIFY(db.database()->transaction());
    QVERIFY2(loaded.saveInvoiceItems(query.get(), invoiceId), qPrintable(query->lastError()));
    QVERIFY(db.database()->commit());
    loaded.committed();

    QCOMPARE(db.value(countSql).toInt(), 3);
    QCOMPARE(
        db.value(QStringLiteral("SELECT count(*) FROM invoice_item WHERE id = %1").arg(removedId))
            .toInt(),
        0);
    Model again(m_registry.get());
    QVERIFY(again.loadInvoiceItems(query.get(), invoiceId));
    QStringList order;
    for (int row = 0; row < again.rowCount(); ++row) {
        order.append(again.invoiceItemAt(row)->text);
        QCOMPARE(again.invoiceItemAt(row)->rowNumber, row);
    }
    QCOMPARE(order, QStringList({ "uusi", "kolmas", "eka" }));

    // Unchanged, the model writes nothing back over changes made elsewhere.
    QVERIFY(
        db.exec({ QStringLiteral("UPDATE invoice_item SET text = 'muualla' WHERE invoice_id = %1")
                      .arg(invoiceId) }));
    QVERIFY(again.saveInvoiceItems(query.get(), invoiceId));
    QCOMPARE(db.value(countSql + QStringLiteral(" AND text = 'muualla'")).toInt(), 3);

    // Removing every row deletes them all on the next save.
    again.deleteInvoiceItems();
    QCOMPARE(again.rowCount(), 0);
    QVERIFY(again.saveInvoiceItems(query.get(), invoiceId));
    again.committed();
    QCOMPARE(db.value(countSql).toInt(), 0);
}

QTEST_MAIN(TestInvoiceItemTableModel)
#include "tst_invoiceitemtablemodel.moc"
