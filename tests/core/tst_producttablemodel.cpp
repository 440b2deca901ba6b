#include "core/producttablemodel.h"
#include "core/producttreemodel.h"
#include "core/registry.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>
#include <memory>

namespace {

Product makeProduct(const QString& number, const QString& name, const QString& category)
{
    Product product;
    product.number = number;
    product.name = name;
    product.unitCode = QStringLiteral("h");
    product.amount = 650000; // 65,00
    product.vatRate = 2550;
    product.vatExcluded = true;
    product.category = category;
    return product;
}

QMap<QString, Product> storedProducts(Database* database)
{
    QMap<QString, Product> result;
    std::unique_ptr<Query> query(database->query());
    if (!query->fetchProducts())
        return result;
    while (query->next()) {
        Product product;
        query->product(&product);
        result.insert(product.number, product);
    }
    return result;
}

QStringList refusingTrigger(TestDatabase::Backend backend)
{
    if (backend == TestDatabase::SQLite) {
        return { QStringLiteral("CREATE TRIGGER refuse_product BEFORE INSERT ON product "
                                "WHEN NEW.number = 'X13' BEGIN "
                                "SELECT RAISE(ABORT, 'tuote hylätty'); END") };
    }
    return { QStringLiteral("CREATE FUNCTION refuse_product() RETURNS trigger AS $$ BEGIN "
                            "IF NEW.number = 'X13' THEN RAISE EXCEPTION 'tuote hylätty'; "
                            "END IF; RETURN NEW; END $$ LANGUAGE plpgsql"),
        QStringLiteral("CREATE TRIGGER refuse_product BEFORE INSERT ON product FOR EACH ROW "
                       "EXECUTE FUNCTION refuse_product()") };
}

// The tree as text: "category: number number; category: number".
QString treeText(const ProductTreeModel& tree)
{
    QStringList groups;
    for (int group = 0; group < tree.rowCount(); ++group) {
        const QModelIndex parent = tree.index(group, 0);
        QStringList numbers;
        for (int row = 0; row < tree.rowCount(parent); ++row)
            numbers.append(tree.index(row, 0, parent).data().toString());
        groups.append(parent.data().toString() + QStringLiteral(": ") + numbers.join(u' '));
    }
    return groups.join(QStringLiteral("; "));
}

} // namespace

class TestProductTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void addEditRemoveRoundTrip_data();
    void addEditRemoveRoundTrip();
    void failedSaveRollsBackEverything_data();
    void failedSaveRollsBackEverything();
    void displayedAmounts_data();
    void displayedAmounts();
    void treeGroupsByCategory_data();
    void treeGroupsByCategory();
    void treeFollowsEdits();

private:
    void addBackends();
};

void TestProductTableModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestProductTableModel::addBackends()
{
    QTest::addColumn<int>("backend");
    QTest::addRow("sqlite") << int(TestDatabase::SQLite);
    QTest::addRow("postgresql") << int(TestDatabase::PostgreSQL);
}

void TestProductTableModel::addEditRemoveRoundTrip_data()
{
    addBackends();
}

void TestProductTableModel::addEditRemoveRoundTrip()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    Registry registry;
    registry.setDatabase(db.database());
    {
        std::unique_ptr<Query> query(db.database()->query());
        QVERIFY(registry.fetchProducts(query.get()));
    }
    // A new database has the interest product.
    QCOMPARE(registry.productCount(), 1);

    ProductTableModel model(&registry);
    QAbstractItemModelTester tester(&model);
    model.load();
    QCOMPARE(model.rowCount(), 1);

    Product consulting = makeProduct(
        QStringLiteral("100"), QStringLiteral("Konsultointi"), QStringLiteral("Palvelut"));
    Product paper = makeProduct(QStringLiteral("A4"), QStringLiteral("Kopiopaperi 500 arkkia"),
        QStringLiteral("Tarvikkeet"));
    paper.unitCode = QStringLiteral("pkt");
    paper.amount = 69900; // 6,99 including VAT
    paper.vatExcluded = false;
    paper.vatRate = 1400;
    model.addProduct(consulting);
    model.addProduct(paper);

    QSignalSpy begin(&registry, &Registry::beginUpdateProducts);
    QSignalSpy end(&registry, &Registry::endUpdateProducts);
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    QCOMPARE(begin.count(), 1);
    QCOMPARE(end.count(), 1);

    QMap<QString, Product> stored = storedProducts(db.database());
    QCOMPARE(stored.size(), 3);
    const Product& a4 = stored.value(QStringLiteral("A4"));
    QCOMPARE(a4.name, QStringLiteral("Kopiopaperi 500 arkkia"));
    QCOMPARE(a4.unitCode, QStringLiteral("pkt"));
    QCOMPARE(a4.amount, 69900LL);
    QCOMPARE(a4.vatRate, 1400);
    QVERIFY(!a4.vatExcluded);
    QCOMPARE(a4.category, QStringLiteral("Tarvikkeet"));
    QCOMPARE(stored.value(QStringLiteral("100")).amount, 650000LL);
    QVERIFY(stored.value(QStringLiteral("100")).vatExcluded);
    QCOMPARE(stored.value(QStringLiteral("100")).vatRate, 2550);

    QCOMPARE(registry.productCount(), 3);
    bool found = false;
    const Product* theirs = registry.productByNumber(QStringLiteral("A4"), found);
    QVERIFY(found);
    QVERIFY(theirs != model.productAt(model.rowOfNumber(QStringLiteral("A4"))));

    // Edit one, remove the interest product (products really go).
    const int a4Row = model.rowOfNumber(QStringLiteral("A4"));
    Product edited = *model.productAt(a4Row);
    edited.amount = 74900;
    edited.category.clear();
    QVERIFY(model.setProduct(a4Row, edited));
    const int interestId = stored.value(QStringLiteral("999")).id;
    QVERIFY(model.removeProduct(model.rowOfId(interestId)));
    QCOMPARE(model.rowCount(), 2);
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));

    stored = storedProducts(db.database());
    QCOMPARE(stored.size(), 2);
    QVERIFY(!stored.contains(QStringLiteral("999")));
    QCOMPARE(stored.value(QStringLiteral("A4")).amount, 74900LL);
    QCOMPARE(stored.value(QStringLiteral("A4")).category, QString());
    QCOMPARE(db.value(QStringLiteral("SELECT COUNT(*) FROM product WHERE id = %1").arg(interestId))
                 .toInt(),
        0);
    QCOMPARE(registry.productCount(), 2);
    QVERIFY(!model.isModified());
}

void TestProductTableModel::failedSaveRollsBackEverything_data()
{
    addBackends();
}

void TestProductTableModel::failedSaveRollsBackEverything()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    QVERIFY2(db.exec(refusingTrigger(db.backend())), qPrintable(db.lastError()));
    Registry registry;
    {
        std::unique_ptr<Query> query(db.database()->query());
        QVERIFY(registry.fetchProducts(query.get()));
    }
    Product* interest = registry.productAt(0);

    ProductTableModel model(&registry);
    model.load();
    model.addProduct(makeProduct(QStringLiteral("1"), QStringLiteral("Kahvi"), QString()));
    model.addProduct(makeProduct(QStringLiteral("2"), QStringLiteral("Tee"), QString()));
    Product edited = *model.productAt(0);
    edited.name = QStringLiteral("Korko");
    model.setProduct(0, edited);
    model.removeProduct(0);
    const int badRow = model.addProduct(
        makeProduct(QStringLiteral("X13"), QStringLiteral("Hylättävä"), QString()));

    QVERIFY(!model.save(db.database()));
    QVERIFY(model.lastError().contains(QStringLiteral("tuote hylätty")));
    const QMap<QString, Product> stored = storedProducts(db.database());
    QCOMPARE(stored.size(), 1);
    QCOMPARE(stored.value(QStringLiteral("999")).name, QStringLiteral("Viivästyskorko"));
    QCOMPARE(registry.productAt(0), interest);
    QCOMPARE(model.productAt(0)->id, -1);

    model.removeProduct(badRow);
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    QCOMPARE(storedProducts(db.database()).keys(), QStringList({ "1", "2" }));
}

void TestProductTableModel::displayedAmounts_data()
{
    QTest::addColumn<qlonglong>("amount");
    QTest::addColumn<int>("vatRate");
    QTest::addColumn<bool>("vatExcluded");
    QTest::addColumn<QString>("price");
    QTest::addColumn<QString>("rate");
    QTest::addColumn<QString>("mode");
    QTest::addRow("two decimals at least") << 650000LL << 2550 << true << "65,00"
                                           << "25,5"
                                           << "Veroton";
    QTest::addRow("four decimals at most") << 12345LL << 2400 << false << "1,2345"
                                           << "24"
                                           << "Verollinen";
    QTest::addRow("zero") << 0LL << 0 << false << "0,00"
                          << "0"
                          << "Verollinen";
    QTest::addRow("three decimals") << 10LL << 1000 << true << "0,001"
                                    << "10"
                                    << "Veroton";
}

void TestProductTableModel::displayedAmounts()
{
    QFETCH(qlonglong, amount);
    QFETCH(int, vatRate);
    QFETCH(bool, vatExcluded);
    QFETCH(QString, price);
    QFETCH(QString, rate);
    QFETCH(QString, mode);

    // Numbers follow the user's locale; the table above is written in Finnish.
    price.replace(u',', QLocale::system().decimalPoint());
    rate.replace(u',', QLocale::system().decimalPoint());
    Registry registry;
    ProductTableModel model(&registry);
    Product product = makeProduct(QStringLiteral("1"), QStringLiteral("Tuote"), QString());
    product.amount = amount;
    product.vatRate = vatRate;
    product.vatExcluded = vatExcluded;
    model.addProduct(product);
    QCOMPARE(model.index(0, ProductTableModel::AmountColumn).data().toString(), price);
    QCOMPARE(model.index(0, ProductTableModel::VatRateColumn).data().toString(), rate);
    QCOMPARE(model.index(0, ProductTableModel::VatModeColumn).data().toString(), mode);
}

void TestProductTableModel::treeGroupsByCategory_data()
{
    QTest::addColumn<QStringList>("products"); // "number/category"
    QTest::addColumn<QString>("tree");
    QTest::addRow("empty") << QStringList() << QString();
    QTest::addRow("one category") << QStringList { "2/Palvelut", "1/Palvelut" } << "Palvelut: 1 2";
    QTest::addRow("alphabetical, uncategorised last") << QStringList {
        "999/", "10/Tarvikkeet", "9/Palvelut", "A1/Tarvikkeet", "2/Ätyökalut", "11/Palvelut"
    } << "Palvelut: 9 11; Tarvikkeet: 10 A1; Ätyökalut: 2; Muut tuotteet: 999";
}

void TestProductTableModel::treeGroupsByCategory()
{
    QFETCH(QStringList, products);
    QFETCH(QString, tree);

    Registry registry;
    ProductTableModel model(&registry);
    ProductTreeModel treeModel(&model);
    QAbstractItemModelTester tester(&treeModel);
    for (const QString& entry : products) {
        const QStringList parts = entry.split(u'/');
        model.addProduct(makeProduct(parts.at(0), QStringLiteral("Tuote"), parts.at(1)));
    }
    QCOMPARE(treeText(treeModel), tree);

    // Every product maps back to its own table row.
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = treeModel.indexOfSourceRow(row);
        QVERIFY(index.isValid());
        QCOMPARE(treeModel.sourceRow(index), row);
        QCOMPARE(index.data().toString(), model.productAt(row)->number);
        QCOMPARE(treeModel.category(index), model.productAt(row)->category);
    }
}

void TestProductTableModel::treeFollowsEdits()
{
    Registry registry;
    ProductTableModel model(&registry);
    ProductTreeModel treeModel(&model);
    QAbstractItemModelTester tester(&treeModel);
    model.addProduct(makeProduct(QStringLiteral("1"), QStringLiteral("Kahvi"), "Juomat"));
    model.addProduct(makeProduct(QStringLiteral("2"), QStringLiteral("Pulla"), "Leivonnaiset"));
    QCOMPARE(treeText(treeModel), QStringLiteral("Juomat: 1; Leivonnaiset: 2"));

    // A change that keeps the grouping only updates the rows.
    QSignalSpy reset(&treeModel, &QAbstractItemModel::modelReset);
    QSignalSpy changed(&treeModel, &QAbstractItemModel::dataChanged);
    Product product = *model.productAt(0);
    product.name = QStringLiteral("Tumma kahvi");
    model.setProduct(0, product);
    QCOMPARE(reset.count(), 0);
    QVERIFY(changed.count() > 0);
    QCOMPARE(treeModel.indexOfSourceRow(0, ProductTableModel::NameColumn).data().toString(),
        QStringLiteral("Tumma kahvi"));

    // Moving the last product out of a category removes the category.
    product = *model.productAt(1);
    product.category = QStringLiteral("Juomat");
    model.setProduct(1, product);
    QCOMPARE(reset.count(), 1);
    QCOMPARE(treeText(treeModel), QStringLiteral("Juomat: 1 2"));

    model.removeProduct(0);
    QCOMPARE(treeText(treeModel), QStringLiteral("Juomat: 2"));
}

QTEST_MAIN(TestProductTableModel)
#include "tst_producttablemodel.moc"
