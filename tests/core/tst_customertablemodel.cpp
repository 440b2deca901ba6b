#include "core/customertablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>
#include <memory>

namespace {

Customer makeCustomer(int number, const QString& name)
{
    Customer customer;
    customer.number = number;
    customer.name = name;
    customer.streetName = QStringLiteral("Hämeenkatu 12 B 4");
    customer.postCode = QStringLiteral("33100");
    customer.townName = QStringLiteral("Tampere");
    customer.country = QStringLiteral("Suomi");
    customer.contact = QStringLiteral("Liisa Virtanen");
    customer.vatNumber = QStringLiteral("1572860-0");
    customer.referenceNumber = QStringLiteral("1232");
    customer.emailAddress = QStringLiteral("laskut@esimerkki.fi");
    customer.phoneNumber = QStringLiteral("040 123 4567");
    customer.paymentTerms = QStringLiteral("21 päivää netto");
    customer.setProperty(QStringLiteral("l"), QStringLiteral("sv"));
    customer.setProperty(QStringLiteral("c1"), QStringLiteral("Sopimus 2024/7"));
    customer.setProperty(QStringLiteral("e2"), QStringLiteral("003715728600"));
    return customer;
}

// Every stored customer, read on a query of its own, by number.
QMap<int, Customer> storedCustomers(Database* database)
{
    QMap<int, Customer> result;
    std::unique_ptr<Query> query(database->query());
    if (!query->fetchCustomers())
        return result;
    while (query->next()) {
        Customer customer;
        query->customer(&customer);
        result.insert(customer.number, customer);
    }
    return result;
}

QStringList refusingTrigger(TestDatabase::Backend backend)
{
    if (backend == TestDatabase::SQLite) {
        return { QStringLiteral("CREATE TRIGGER refuse_customer BEFORE INSERT ON customer "
                                "WHEN NEW.name = 'Virhe Oy' BEGIN "
                                "SELECT RAISE(ABORT, 'asiakas hylätty'); END") };
    }
    return { QStringLiteral("CREATE FUNCTION refuse_customer() RETURNS trigger AS $$ BEGIN "
                            "IF NEW.name = 'Virhe Oy' THEN RAISE EXCEPTION 'asiakas hylätty'; "
                            "END IF; RETURN NEW; END $$ LANGUAGE plpgsql"),
        QStringLiteral("CREATE TRIGGER refuse_customer BEFORE INSERT ON customer FOR EACH ROW "
                       "EXECUTE FUNCTION refuse_customer()") };
}

} // namespace

class TestCustomerTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void addEditRemoveRoundTrip_data();
    void addEditRemoveRoundTrip();
    void failedSaveRollsBackEverything_data();
    void failedSaveRollsBackEverything();
    void nextFreeNumber_data();
    void nextFreeNumber();
    void numberInUse();
    void unsavedCustomerRemovedAtOnce();
    void saveWithoutDatabase();

private:
    void addBackends();
};

void TestCustomerTableModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestCustomerTableModel::addBackends()
{
    QTest::addColumn<int>("backend");
    QTest::addRow("sqlite") << int(TestDatabase::SQLite);
    QTest::addRow("postgresql") << int(TestDatabase::PostgreSQL);
}

void TestCustomerTableModel::addEditRemoveRoundTrip_data()
{
    addBackends();
}

void TestCustomerTableModel::addEditRemoveRoundTrip()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    Registry registry;
    registry.setDatabase(db.database());

    CustomerTableModel model(&registry);
    QAbstractItemModelTester tester(&model);
    model.load();
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(model.nextFreeNumber(), 1);

    QSignalSpy fetched(&registry, &Registry::customersFetched);
    model.addCustomer(makeCustomer(1, QStringLiteral("Kivijalka Oy")));
    Customer second = makeCustomer(2, QStringLiteral("Åström & Söner Ab"));
    second.setProperty(QStringLiteral("e3"), QStringLiteral("003712345678"));
    model.addCustomer(second);
    QVERIFY(model.isModified());
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    QVERIFY(!model.isModified());
    QCOMPARE(fetched.count(), 1);

    QMap<int, Customer> stored = storedCustomers(db.database());
    QCOMPARE(stored.size(), 2);
    const Customer& first = stored.value(1);
    QCOMPARE(first.name, QStringLiteral("Kivijalka Oy"));
    QCOMPARE(first.streetName, QStringLiteral("Hämeenkatu 12 B 4"));
    QCOMPARE(first.postCode, QStringLiteral("33100"));
    QCOMPARE(first.townName, QStringLiteral("Tampere"));
    QCOMPARE(first.country, QStringLiteral("Suomi"));
    QCOMPARE(first.contact, QStringLiteral("Liisa Virtanen"));
    QCOMPARE(first.vatNumber, QStringLiteral("1572860-0"));
    QCOMPARE(first.referenceNumber, QStringLiteral("1232"));
    QCOMPARE(first.emailAddress, QStringLiteral("laskut@esimerkki.fi"));
    QCOMPARE(first.phoneNumber, QStringLiteral("040 123 4567"));
    QCOMPARE(first.paymentTerms, QStringLiteral("21 päivää netto"));
    QCOMPARE(first.property(QStringLiteral("l")).toString(), QStringLiteral("sv"));
    QCOMPARE(first.property(QStringLiteral("c1")).toString(), QStringLiteral("Sopimus 2024/7"));
    QCOMPARE(first.property(QStringLiteral("e2")).toString(), QStringLiteral("003715728600"));
    QVERIFY(!first.deleted);
    QCOMPARE(
        stored.value(2).property(QStringLiteral("e3")).toString(), QStringLiteral("003712345678"));

    // The model's rows got the new ids; the registry has copies of its own.
    QCOMPARE(registry.customerCount(), 2);
    for (int row = 0; row < 2; ++row) {
        const Customer* mine = model.customerAt(row);
        QVERIFY(mine->id >= 0);
        bool found = false;
        Customer* theirs = registry.customerById(mine->id, found);
        QVERIFY(found);
        QVERIFY(theirs != mine);
        QCOMPARE(theirs->name, mine->name);
    }

    // Edit the first, remove the second.
    const int firstRow = model.rowOfId(first.id);
    const int secondRow = model.rowOfId(stored.value(2).id);
    Customer edited = *model.customerAt(firstRow);
    edited.name = QStringLiteral("Kivijalka ja Kumpp. Oy");
    edited.setPropertyIfNotEmpty(QStringLiteral("c1"), QString());
    QVERIFY(model.setCustomer(firstRow, edited));
    QVERIFY(model.removeCustomer(secondRow));
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.index(secondRow, 0).data(CustomerTableModel::DeletedRole).toBool(), true);
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));

    stored = storedCustomers(db.database());
    QCOMPARE(stored.size(), 2);
    QCOMPARE(stored.value(1).name, QStringLiteral("Kivijalka ja Kumpp. Oy"));
    QVERIFY(!stored.value(1).properties.contains(QStringLiteral("c1")));
    QCOMPARE(stored.value(1).property(QStringLiteral("l")).toString(), QStringLiteral("sv"));
    QVERIFY(!stored.value(1).deleted);
    QVERIFY(stored.value(2).deleted);
    QCOMPARE(db.value(QStringLiteral("SELECT COUNT(*) FROM customer")).toInt(), 2);

    // The registry was refreshed from the database, deleted one included.
    bool found = false;
    Customer* removed = registry.customerByNumber(2, found);
    QVERIFY(found);
    QVERIFY(removed->deleted);
    QCOMPARE(registry.customerByNumber(1, found)->name, QStringLiteral("Kivijalka ja Kumpp. Oy"));

    // A fresh model sees the deleted customer flagged.
    CustomerTableModel reloaded(&registry);
    reloaded.load();
    QCOMPARE(reloaded.rowCount(), 2);
    const int row = reloaded.rowOfId(removed->id);
    QVERIFY(reloaded.index(row, CustomerTableModel::NameColumn)
                .data(CustomerTableModel::DeletedRole)
                .toBool());
}

void TestCustomerTableModel::failedSaveRollsBackEverything_data()
{
    addBackends();
}

void TestCustomerTableModel::failedSaveRollsBackEverything()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    QVERIFY2(db.exec(refusingTrigger(db.backend())), qPrintable(db.lastError()));
    Registry registry;
    registry.setDatabase(db.database());

    CustomerTableModel model(&registry);
    model.load();
    model.addCustomer(makeCustomer(1, QStringLiteral("Vanha Asiakas Oy")));
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    Customer* registryCustomer = registry.customerAt(0);
    QVERIFY(registryCustomer);

    // An update, a good insert and then an insert that the trigger refuses.
    Customer edited = *model.customerAt(0);
    edited.name = QStringLiteral("Muutettu Oy");
    model.setCustomer(0, edited);
    const int goodRow = model.addCustomer(makeCustomer(2, QStringLiteral("Hyvä Oy")));
    const int badRow = model.addCustomer(makeCustomer(3, QStringLiteral("Virhe Oy")));
    QSignalSpy fetched(&registry, &Registry::customersFetched);
    QVERIFY(!model.save(db.database()));
    QVERIFY(model.lastError().contains(QStringLiteral("asiakas hylätty")));
    QCOMPARE(fetched.count(), 0);

    QMap<int, Customer> stored = storedCustomers(db.database());
    QCOMPARE(stored.size(), 1);
    QCOMPARE(stored.value(1).name, QStringLiteral("Vanha Asiakas Oy"));
    QCOMPARE(registry.customerCount(), 1);
    QCOMPARE(registry.customerAt(0), registryCustomer);
    QCOMPARE(registryCustomer->name, QStringLiteral("Vanha Asiakas Oy"));
    // The edits are kept, and the rolled-back insert lost its id.
    QCOMPARE(model.customerAt(goodRow)->id, -1);
    QCOMPARE(model.customerAt(0)->name, QStringLiteral("Muutettu Oy"));
    QVERIFY(model.isModified());

    // Dropping the refused customer lets the rest through on the next try.
    QVERIFY(model.removeCustomer(badRow));
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    stored = storedCustomers(db.database());
    QCOMPARE(stored.size(), 2);
    QCOMPARE(stored.value(1).name, QStringLiteral("Muutettu Oy"));
    QCOMPARE(stored.value(2).name, QStringLiteral("Hyvä Oy"));
    QCOMPARE(registry.customerCount(), 2);
}

void TestCustomerTableModel::nextFreeNumber_data()
{
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QList<bool>>("deleted");
    QTest::addColumn<int>("expected");
    QTest::addRow("empty") << QList<int>() << QList<bool>() << 1;
    QTest::addRow("gap is not reused") << QList<int> { 1, 5, 3 } << QList<bool> { 0, 0, 0 } << 6;
    QTest::addRow("deleted keeps its number")
        << QList<int> { 1, 2, 40 } << QList<bool> { 0, 0, 1 } << 41;
    QTest::addRow("large") << QList<int> { 100999 } << QList<bool> { 0 } << 101000;
}

void TestCustomerTableModel::nextFreeNumber()
{
    QFETCH(QList<int>, numbers);
    QFETCH(QList<bool>, deleted);
    QFETCH(int, expected);

    QList<Customer*> customers;
    for (int i = 0; i < numbers.size(); ++i) {
        Customer* customer = new Customer();
        customer->id = i + 1;
        customer->number = numbers.at(i);
        customer->deleted = deleted.at(i);
        customers.append(customer);
    }
    Registry registry;
    registry.copyCustomersFrom(customers);
    qDeleteAll(customers);

    CustomerTableModel model(&registry);
    model.load();
    QCOMPARE(model.nextFreeNumber(), expected);
    QCOMPARE(model.rowOfNumber(expected), -1);
}

void TestCustomerTableModel::numberInUse()
{
    Registry registry;
    CustomerTableModel model(&registry);
    model.load();
    const int first = model.addCustomer(makeCustomer(10, QStringLiteral("A")));
    const int second = model.addCustomer(makeCustomer(11, QStringLiteral("B")));
    QCOMPARE(model.rowOfNumber(10, second), first);
    QCOMPARE(model.rowOfNumber(10, first), -1);
    QCOMPARE(model.rowOfNumber(12), -1);
}

void TestCustomerTableModel::unsavedCustomerRemovedAtOnce()
{
    Registry registry;
    CustomerTableModel model(&registry);
    QAbstractItemModelTester tester(&model);
    model.load();
    model.addCustomer(makeCustomer(1, QStringLiteral("A")));
    model.addCustomer(makeCustomer(2, QStringLiteral("B")));
    QVERIFY(model.removeCustomer(0));
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(model.customerAt(0)->name, QStringLiteral("B"));
    QVERIFY(!model.removeCustomer(5));
}

void TestCustomerTableModel::saveWithoutDatabase()
{
    Registry registry;
    CustomerTableModel model(&registry);
    model.load();
    model.addCustomer(makeCustomer(1, QStringLiteral("A")));
    QVERIFY(!model.save(nullptr));
    QVERIFY(!model.lastError().isEmpty());
    QCOMPARE(registry.customerCount(), 0);
}

QTEST_MAIN(TestCustomerTableModel)
#include "tst_customertablemodel.moc"
