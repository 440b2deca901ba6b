#include "core/bankaccounttablemodel.h"
#include "core/customertablemodel.h"
#include "core/producttablemodel.h"
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
    static constexpr auto base = &SampleRecords::customer;
};

template<>
struct Register<Product>
{
    using Model = ProductTableModel;
    static constexpr const char* table = "product";
    static constexpr bool keepsDeleted = false;
    static constexpr auto fetch = &Query::fetchProducts;
    static constexpr auto read = &Query::product;
    static constexpr auto base = &SampleRecords::product;
};

template<>
struct Register<BankAccount>
{
    using Model = BankAccountTableModel;
    static constexpr const char* table = "bank_account";
    static constexpr bool keepsDeleted = true;
    static constexpr auto fetch = &Query::fetchBankAccounts;
    static constexpr auto read = &Query::bankAccount;
    static constexpr auto base = &SampleRecords::bankAccount;
};

// A record of the register numbered n.
template<typename T>
T sample(int n, const QString& name)
{
    T record = Register<T>::base();
    record.name = name;
    if constexpr (std::is_same_v<T, Product>)
        record.number = QString::number(n);
    else if constexpr (std::is_same_v<T, Customer>)
        record.number = n;
    else
        record.shortName = QString::number(n);
    if constexpr (Register<T>::keepsDeleted)
        record.deleted = false;
    return record;
}

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

} // namespace

class TestRecordTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void saveAndRollBack_data();
    void saveAndRollBack();

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

    model.addRecord(sample<T>(1, QStringLiteral("Åström & Söner")));
    model.addRecord(sample<T>(2, QStringLiteral("Poistettava")));
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
    const int goodRow = model.addRecord(sample<T>(3, QStringLiteral("Hyvä")));
    const int badRow = model.addRecord(sample<T>(4, QStringLiteral("Virhe")));
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    QVERIFY(!model.save(db.database()));
    QVERIFY2(model.lastError().contains(QStringLiteral("hylätty")), qPrintable(model.lastError()));
    const QMap<int, T> after = stored<T>(db.database());
    QCOMPARE(after.keys(), rows.keys());
    for (const T& record : rows)
        QCOMPARE(RecordFields::of(after.value(record.id)), RecordFields::of(record));
    QCOMPARE(
        names(registered<T>(&registry), preexisting), QStringLiteral("Åström & Söner Poistettava"));
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

QTEST_MAIN(TestRecordTableModel)
#include "tst_recordtablemodel.moc"
