#include "core/bankaccounttablemodel.h"
#include "core/customertablemodel.h"
#include "core/producttablemodel.h"
#include "core/producttreemodel.h"
#include "core/registry.h"
#include "recordfields.h"
#include "samplerecords.h"
#include "testdatabase.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>
#include <memory>

namespace {

// What the generic checks need to know of each register.
template<typename T>
struct Register;

template<>
struct Register<Customer>
{
    using Model = CustomerTableModel;
    static constexpr const char* table = "customer";
    static constexpr bool keepsDeleted = true;
    static constexpr auto fetch = &Query::fetchCustomers;
    static constexpr auto read = &Query::customer;
    static Customer sample(int n, const QString& name)
    {
        Customer customer = SampleRecords::customer();
        customer.number = n;
        customer.name = name;
        customer.deleted = false;
        return customer;
    }
};

template<>
struct Register<Product>
{
    using Model = ProductTableModel;
    static constexpr const char* table = "product";
    static constexpr bool keepsDeleted = false;
    static constexpr auto fetch = &Query::fetchProducts;
    static constexpr auto read = &Query::product;
    static Product sample(int n, const QString& name)
    {
        Product product = SampleRecords::product();
        product.number = QString::number(n);
        product.name = name;
        return product;
    }
};

template<>
struct Register<BankAccount>
{
    using Model = BankAccountTableModel;
    static constexpr const char* table = "bank_account";
    static constexpr bool keepsDeleted = true;
    static constexpr auto fetch = &Query::fetchBankAccounts;
    static constexpr auto read = &Query::bankAccount;
    static BankAccount sample(int n, const QString& name)
    {
        BankAccount account = SampleRecords::bankAccount();
        account.shortName = QString::number(n);
        account.name = name;
        account.deleted = false;
        return account;
    }
};

// Every stored record by id, read on a query of its own.
template<typename T>
QMap<int, T> stored(Database* database)
{
    QMap<int, T> result;
    std::unique_ptr<Query> query(database->query());
    if (!(query.get()->*Register<T>::fetch)())
        return result;
    while (query->next()) {
        T record;
        (query.get()->*Register<T>::read)(&record);
        result.insert(record.id, record);
    }
    return result;
}

// The names of the records, "-" after a deleted one, leaving out the ids of
// skip.
template<typename T>
QString names(const QList<T>& records, const QList<int>& skip)
{
    QStringList result;
    for (const T& record : records) {
        bool deleted = false;
        if constexpr (Register<T>::keepsDeleted)
            deleted = record.deleted;
        if (!skip.contains(record.id))
            result.append(record.name + (deleted ? QStringLiteral("-") : QString()));
    }
    return result.join(u' ');
}

// The registry's records as a new model finds them.
template<typename T>
QList<T> registered(Registry* registry)
{
    typename Register<T>::Model model(registry);
    model.load();
    QList<T> result;
    for (int row = 0; row < model.rowCount(); ++row)
        result.append(*model.recordAt(row));
    return result;
}

// A trigger that refuses to insert a record named "Virhe".
QStringList refusingTrigger(TestDatabase::Backend backend, const QString& table)
{
    if (backend == TestDatabase::SQLite) {
        return { QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON %1 WHEN NEW.name = 'Virhe' "
                                "BEGIN SELECT RAISE(ABORT, 'hylätty'); END")
                     .arg(table) };
    }
    return { QStringLiteral("CREATE FUNCTION refuse() RETURNS trigger AS $$ BEGIN IF NEW.name = "
                            "'Virhe' THEN RAISE EXCEPTION 'hylätty'; END IF; RETURN NEW; END $$ "
                            "LANGUAGE plpgsql"),
        QStringLiteral("CREATE TRIGGER refuse BEFORE INSERT ON %1 FOR EACH ROW "
                       "EXECUTE FUNCTION refuse()")
            .arg(table) };
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

class TestRecordTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void saveAndRollBack_data();
    void saveAndRollBack();
    void nextFreeCustomerNumber();
    void shownValues();
    void treeGroupsByCategory();
    void treeFollowsEdits();
    void moveSkipsDeletedAccounts_data();
    void moveSkipsDeletedAccounts();

private:
    template<typename T>
    void saveAndRollBack(TestDatabase::Backend backend);
};

void TestRecordTableModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestRecordTableModel::saveAndRollBack_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("backend");
    for (int backend : { TestDatabase::SQLite, TestDatabase::PostgreSQL }) {
        const QByteArray name
            = TestDatabase::backendName(TestDatabase::Backend(backend)).toLatin1();
        QTest::addRow("customers %s", name.constData()) << 0 << backend;
        QTest::addRow("products %s", name.constData()) << 1 << backend;
        QTest::addRow("accounts %s", name.constData()) << 2 << backend;
    }
}

void TestRecordTableModel::saveAndRollBack()
{
    QFETCH(int, kind);
    QFETCH(int, backend);
    const auto on = TestDatabase::Backend(backend);
    if (kind == 0)
        saveAndRollBack<Customer>(on);
    else if (kind == 1)
        saveAndRollBack<Product>(on);
    else
        saveAndRollBack<BankAccount>(on);
}

template<typename T>
void TestRecordTableModel::saveAndRollBack(TestDatabase::Backend backend)
{
    TestDatabase db(backend);
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    Registry registry;
    registry.setDatabase(db.database());
    typename Register<T>::Model model(&registry);
    QAbstractItemModelTester tester(&model);
    model.load();
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.columnCount(), int(Register<T>::Model::ColumnCount));
    // A new database has its interest product already.
    const QList<int> preexisting = stored<T>(db.database()).keys();

    model.addRecord(Register<T>::sample(1, QStringLiteral("Åström & Söner")));
    model.addRecord(Register<T>::sample(2, QStringLiteral("Poistettava")));
    QVERIFY(model.isModified());
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    QVERIFY(!model.isModified());
    QMap<int, T> rows = stored<T>(db.database());
    QCOMPARE(rows.size(), preexisting.size() + 2);
    for (int row = 0; row < 2; ++row) {
        const T* mine = model.recordAt(row);
        QCOMPARE(RecordFields::of(rows.value(mine->id)), RecordFields::of(*mine));
    }

    // An update, a removal, a good insert and an insert the trigger refuses:
    // nothing of it is stored, in the database or in the registry.
    QVERIFY2(db.exec(refusingTrigger(backend, QLatin1String(Register<T>::table))),
        qPrintable(db.lastError()));
    T edited;
    model.recordAt(0)->copy(&edited);
    edited.name = QStringLiteral("Muutettu");
    QVERIFY(model.setRecord(0, edited));
    QVERIFY(model.removeRecord(1));
    const int goodRow = model.addRecord(Register<T>::sample(3, QStringLiteral("Hyvä")));
    const int badRow = model.addRecord(Register<T>::sample(4, QStringLiteral("Virhe")));
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QVERIFY(!model.save(db.database()));
    QVERIFY2(model.lastError().contains(QStringLiteral("hylätty")), qPrintable(model.lastError()));
    const QMap<int, T> after = stored<T>(db.database());
    QCOMPARE(after.keys(), rows.keys());
    for (const T& record : rows)
        QCOMPARE(RecordFields::of(after.value(record.id)), RecordFields::of(record));
    QCOMPARE(names(registered<T>(&registry), preexisting),
        QStringLiteral("Åström & Söner Poistettava"));
    // The edits are kept; the rolled-back insert lost its id.
    QCOMPARE(model.recordAt(goodRow)->id, -1);
    QVERIFY(model.isModified());
    QCOMPARE(reset.count(), 0);

    // The refused record was never stored, so it goes at once, and the rest
    // gets through, to a fresh model too.
    QVERIFY(model.removeRecord(badRow));
    QCOMPARE(model.rowCount(), badRow);
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    const QString expected = Register<T>::keepsDeleted
        ? QStringLiteral("Muutettu Poistettava- Hyvä")
        : QStringLiteral("Muutettu Hyvä");
    QCOMPARE(names(stored<T>(db.database()).values(), preexisting), expected);
    QCOMPARE(names(registered<T>(&registry), preexisting), expected);
    if constexpr (Register<T>::keepsDeleted)
        QVERIFY(model.index(1, 0).data(Register<T>::Model::DeletedRole).toBool());
}

void TestRecordTableModel::nextFreeCustomerNumber()
{
    Registry registry;
    CustomerTableModel model(&registry);
    QCOMPARE(model.nextFreeNumber(), 1);
    // A deleted customer keeps its number.
    for (const int number : { 1, 40, 3 }) {
        Customer customer = Register<Customer>::sample(number, QStringLiteral("Asiakas"));
        customer.deleted = number == 40;
        model.addRecord(customer);
    }
    QCOMPARE(model.nextFreeNumber(), 41);
}

void TestRecordTableModel::shownValues()
{
    Registry registry;
    ProductTableModel model(&registry);
    Product product = Register<Product>::sample(1, QStringLiteral("Tuote"));
    // Two decimals at least, four at most.
    for (const qint64 amount : { 650000, 12345 }) {
        product.amount = amount;
        product.vatRate = 2550;
        product.vatExcluded = amount > 100000;
        model.addRecord(product);
    }
    QStringList texts;
    for (int row = 0; row < 2; ++row) {
        for (int column : { ProductTableModel::AmountColumn, ProductTableModel::VatRateColumn,
                 ProductTableModel::VatModeColumn })
            texts.append(model.index(row, column).data().toString());
    }
    // Numbers follow the user's locale; the texts here are written in Finnish.
    QCOMPARE(texts.join(u'|'),
        QStringLiteral("65,00|25,5|Veroton|1,2345|25,5|Verollinen")
            .replace(u',', QLocale::system().decimalPoint()));
    QCOMPARE(model.headerData(ProductTableModel::VatModeColumn, Qt::Horizontal).toString(),
        QStringLiteral("Hinnan tyyppi"));

    BankAccountTableModel accounts(&registry);
    accounts.addRecord(Register<BankAccount>::sample(1, QStringLiteral("Nordea")));
    const QModelIndex iban = accounts.index(0, BankAccountTableModel::IbanColumn);
    QCOMPARE(iban.data().toString(), QStringLiteral("FI21 1234 5600 0007 85"));
    QCOMPARE(iban.data(Qt::EditRole).toString(), QStringLiteral("FI2112345600000785"));
}

void TestRecordTableModel::treeGroupsByCategory()
{
    Registry registry;
    ProductTableModel model(&registry);
    ProductTreeModel treeModel(&model);
    QAbstractItemModelTester tester(&treeModel);
    for (const char* entry :
        { "999/", "10/Tarvikkeet", "9/Palvelut", "A1/Tarvikkeet", "2/Ätyökalut", "11/Palvelut" }) {
        Product product = Register<Product>::sample(0, QStringLiteral("Tuote"));
        product.number = QString::fromUtf8(entry).section(u'/', 0, 0);
        product.category = QString::fromUtf8(entry).section(u'/', 1);
        model.addRecord(product);
    }
    QCOMPARE(treeText(treeModel),
        QStringLiteral("Palvelut: 9 11; Tarvikkeet: 10 A1; Ätyökalut: 2; Muut tuotteet: 999"));
    // Every product maps back to its own table row.
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex index = treeModel.indexOfSourceRow(row);
        QCOMPARE(treeModel.sourceRow(index), row);
        QCOMPARE(index.data().toString(), model.recordAt(row)->number);
    }
}

void TestRecordTableModel::treeFollowsEdits()
{
    Registry registry;
    ProductTableModel model(&registry);
    ProductTreeModel treeModel(&model);
    QAbstractItemModelTester tester(&treeModel);
    for (const char* category : { "Juomat", "Leivonnaiset" }) {
        Product product = Register<Product>::sample(model.rowCount() + 1, QStringLiteral("Kahvi"));
        product.category = QLatin1String(category);
        model.addRecord(product);
    }
    // A change that keeps the grouping only updates the rows.
    QSignalSpy reset(&treeModel, &QAbstractItemModel::modelReset);
    Product product = *model.recordAt(0);
    product.name = QStringLiteral("Tumma kahvi");
    model.setRecord(0, product);
    QCOMPARE(reset.count(), 0);
    QCOMPARE(treeModel.indexOfSourceRow(0, ProductTableModel::NameColumn).data().toString(),
        QStringLiteral("Tumma kahvi"));

    // Moving the last product out of a category removes the category.
    product = *model.recordAt(1);
    product.category = QStringLiteral("Juomat");
    model.setRecord(1, product);
    QCOMPARE(treeText(treeModel), QStringLiteral("Juomat: 1 2"));
    model.removeRecord(0);
    QCOMPARE(treeText(treeModel), QStringLiteral("Juomat: 2"));
}

void TestRecordTableModel::moveSkipsDeletedAccounts_data()
{
    QTest::addColumn<QList<bool>>("deleted"); // of A, B, C, D
    QTest::addColumn<int>("row");
    QTest::addColumn<bool>("up");
    QTest::addColumn<int>("newRow");
    QTest::addColumn<QString>("order"); // "*": a changed rowNumber to save
    QTest::addRow("over one") << QList<bool> { 0, 1, 0, 0 } << 2 << true << 0 << "C* B A* D";
    QTest::addRow("over two") << QList<bool> { 0, 1, 1, 0 } << 0 << false << 3 << "D* B C A*";
    QTest::addRow("deleted above") << QList<bool> { 1, 0, 0, 0 } << 1 << true << -1 << "A B C D";
    QTest::addRow("last down") << QList<bool> { 0, 0, 0, 0 } << 3 << false << -1 << "A B C D";
}

void TestRecordTableModel::moveSkipsDeletedAccounts()
{
    QFETCH(QList<bool>, deleted);
    QFETCH(int, row);
    QFETCH(bool, up);
    QFETCH(int, newRow);
    QFETCH(QString, order);

    QList<BankAccount*> accounts;
    for (int i = 0; i < deleted.size(); ++i) {
        accounts.append(new BankAccount());
        accounts.last()->id = i + 1;
        accounts.last()->shortName = QChar(u'A' + i);
        accounts.last()->rowNumber = i + 1;
        accounts.last()->deleted = deleted.at(i);
    }
    Registry registry;
    registry.copyBankAccountsFrom(accounts);
    qDeleteAll(accounts);
    BankAccountTableModel model(&registry);
    model.load();
    QCOMPARE(model.moveAccount(row, up), newRow);
    QStringList result;
    for (int i = 0; i < model.rowCount(); ++i) {
        const BankAccount* account = model.recordAt(i);
        QCOMPARE(account->rowNumber, i + 1);
        result.append(
            account->shortName + (account->id != i + 1 ? QStringLiteral("*") : QString()));
    }
    QCOMPARE(result.join(u' '), order);
    QCOMPARE(model.isModified(), newRow >= 0);
}

QTEST_MAIN(TestRecordTableModel)
#include "tst_recordtablemodel.moc"
