#include "core/bankaccounttablemodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QtTest>
#include <memory>

namespace {

BankAccount makeAccount(const QString& name, const QString& iban, const QString& bic)
{
    BankAccount account;
    account.name = name;
    account.shortName = name.left(3);
    account.iban = iban;
    account.bic = bic;
    return account;
}

// Stored accounts in display order as "shortName:rowNumber[:deleted][:hidden]".
QStringList storedOrder(Database* database, QList<BankAccount>* accounts = nullptr)
{
    QStringList result;
    std::unique_ptr<Query> query(database->query());
    if (!query->fetchBankAccounts())
        return { QStringLiteral("fetch failed") };
    while (query->next()) {
        BankAccount account;
        query->bankAccount(&account);
        QString text = account.shortName + QLatin1Char(':') + QString::number(account.rowNumber);
        if (account.deleted)
            text += QStringLiteral(":deleted");
        if (!account.visible)
            text += QStringLiteral(":hidden");
        result.append(text);
        if (accounts)
            accounts->append(account);
    }
    return result;
}

// The short names of the model's rows in order.
QStringList modelOrder(const BankAccountTableModel& model)
{
    QStringList result;
    for (int row = 0; row < model.rowCount(); ++row)
        result.append(model.accountAt(row)->shortName);
    return result;
}

QStringList refusingTrigger(TestDatabase::Backend backend)
{
    if (backend == TestDatabase::SQLite) {
        return { QStringLiteral("CREATE TRIGGER refuse_account BEFORE INSERT ON bank_account "
                                "WHEN NEW.bic = 'XXXXFIHH' BEGIN "
                                "SELECT RAISE(ABORT, 'tili hylätty'); END") };
    }
    return { QStringLiteral("CREATE FUNCTION refuse_account() RETURNS trigger AS $$ BEGIN "
                            "IF NEW.bic = 'XXXXFIHH' THEN RAISE EXCEPTION 'tili hylätty'; "
                            "END IF; RETURN NEW; END $$ LANGUAGE plpgsql"),
        QStringLiteral("CREATE TRIGGER refuse_account BEFORE INSERT ON bank_account FOR EACH ROW "
                       "EXECUTE FUNCTION refuse_account()") };
}

} // namespace

class TestBankAccountTableModel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void addEditMoveRemoveRoundTrip_data();
    void addEditMoveRemoveRoundTrip();
    void failedSaveRollsBackEverything_data();
    void failedSaveRollsBackEverything();
    void moveSkipsDeletedAccounts_data();
    void moveSkipsDeletedAccounts();
    void ibanShownFormatted();

private:
    void addBackends();
};

void TestBankAccountTableModel::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestBankAccountTableModel::addBackends()
{
    QTest::addColumn<int>("backend");
    QTest::addRow("sqlite") << int(TestDatabase::SQLite);
    QTest::addRow("postgresql") << int(TestDatabase::PostgreSQL);
}

void TestBankAccountTableModel::addEditMoveRemoveRoundTrip_data()
{
    addBackends();
}

void TestBankAccountTableModel::addEditMoveRemoveRoundTrip()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    Registry registry;

    BankAccountTableModel model(&registry);
    QAbstractItemModelTester tester(&model);
    model.load();
    model.addAccount(makeAccount(QStringLiteral("Nordea"), QStringLiteral("FI2112345600000785"),
        QStringLiteral("NDEAFIHH")));
    BankAccount op = makeAccount(
        QStringLiteral("OP"), QStringLiteral("FI4950009420028730"), QStringLiteral("OKOYFIHH"));
    op.visible = false;
    model.addAccount(op);
    model.addAccount(makeAccount(QStringLiteral("Danske Bank"),
        QStringLiteral("FI5780001700000010"), QStringLiteral("DABAFIHH")));

    QSignalSpy fetched(&registry, &Registry::bankAccountsFetched);
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    QCOMPARE(fetched.count(), 1);
    QList<BankAccount> accounts;
    QCOMPARE(
        storedOrder(db.database(), &accounts), QStringList({ "Nor:1", "OP:2:hidden", "Dan:3" }));
    QCOMPARE(accounts.at(0).name, QStringLiteral("Nordea"));
    QCOMPARE(accounts.at(0).iban, QStringLiteral("FI2112345600000785"));
    QCOMPARE(accounts.at(0).bic, QStringLiteral("NDEAFIHH"));
    QCOMPARE(registry.bankAccountCount(), 3);
    QVERIFY(registry.bankAccountAt(0) != model.accountAt(0));
    QCOMPARE(registry.bankAccountAt(0)->id, model.accountAt(0)->id);

    // Danske Bank to the top, OP edited and Nordea removed.
    QCOMPARE(model.moveAccount(2, true), 1);
    QCOMPARE(model.moveAccount(1, true), 0);
    QCOMPARE(model.moveAccount(0, true), -1);
    QCOMPARE(modelOrder(model), QStringList({ "Dan", "Nor", "OP" }));
    BankAccount edited = *model.accountAt(2);
    edited.visible = true;
    edited.bic = QStringLiteral("OKOYFIHHXXX");
    QVERIFY(model.setAccount(2, edited));
    QVERIFY(model.removeAccount(1));
    QCOMPARE(model.rowCount(), 3);
    QVERIFY(model.index(1, 0).data(BankAccountTableModel::DeletedRole).toBool());
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));

    accounts.clear();
    QCOMPARE(
        storedOrder(db.database(), &accounts), QStringList({ "Dan:1", "Nor:2:deleted", "OP:3" }));
    QCOMPARE(accounts.at(2).bic, QStringLiteral("OKOYFIHHXXX"));
    QCOMPARE(db.value(QStringLiteral("SELECT COUNT(*) FROM bank_account")).toInt(), 3);
    QCOMPARE(registry.bankAccountCount(), 3);
    QCOMPARE(registry.bankAccountAt(0)->shortName, QStringLiteral("Dan"));
    QVERIFY(registry.bankAccountAt(1)->deleted);
}

void TestBankAccountTableModel::failedSaveRollsBackEverything_data()
{
    addBackends();
}

void TestBankAccountTableModel::failedSaveRollsBackEverything()
{
    QFETCH(int, backend);
    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    QVERIFY2(db.exec(refusingTrigger(db.backend())), qPrintable(db.lastError()));
    Registry registry;

    BankAccountTableModel model(&registry);
    model.load();
    model.addAccount(makeAccount(QStringLiteral("Nordea"), QStringLiteral("FI2112345600000785"),
        QStringLiteral("NDEAFIHH")));
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    BankAccount* registryAccount = registry.bankAccountAt(0);

    model.removeAccount(0);
    const int goodRow = model.addAccount(
        makeAccount(QStringLiteral("OP"), QStringLiteral("FI4950009420028730"), "OKOYFIHH"));
    const int badRow = model.addAccount(
        makeAccount(QStringLiteral("Huijaus"), QStringLiteral("FI2112345600000785"), "XXXXFIHH"));
    QVERIFY(!model.save(db.database()));
    QVERIFY(model.lastError().contains(QStringLiteral("tili hylätty")));
    QCOMPARE(storedOrder(db.database()), QStringList({ "Nor:1" }));
    QCOMPARE(registry.bankAccountAt(0), registryAccount);
    QVERIFY(!registryAccount->deleted);
    QCOMPARE(model.accountAt(goodRow)->id, -1);

    model.removeAccount(badRow);
    QVERIFY2(model.save(db.database()), qPrintable(model.lastError()));
    QCOMPARE(storedOrder(db.database()), QStringList({ "Nor:1:deleted", "OP:2" }));
}

void TestBankAccountTableModel::moveSkipsDeletedAccounts_data()
{
    QTest::addColumn<QList<bool>>("deleted"); // of A, B, C, D
    QTest::addColumn<int>("row");
    QTest::addColumn<bool>("up");
    QTest::addColumn<int>("newRow");
    QTest::addColumn<QString>("order");
    QTest::addRow("plain up") << QList<bool> { 0, 0, 0, 0 } << 2 << true << 1 << "A C* B* D";
    QTest::addRow("plain down") << QList<bool> { 0, 0, 0, 0 } << 0 << false << 1 << "B* A* C D";
    QTest::addRow("over one deleted")
        << QList<bool> { 0, 1, 0, 0 } << 2 << true << 0 << "C* B A* D";
    QTest::addRow("over two deleted down")
        << QList<bool> { 0, 1, 1, 0 } << 0 << false << 3 << "D* B C A*";
    QTest::addRow("only deleted above")
        << QList<bool> { 1, 0, 0, 0 } << 1 << true << -1 << "A B C D";
    QTest::addRow("last down") << QList<bool> { 0, 0, 0, 0 } << 3 << false << -1 << "A B C D";
}

void TestBankAccountTableModel::moveSkipsDeletedAccounts()
{
    QFETCH(QList<bool>, deleted);
    QFETCH(int, row);
    QFETCH(bool, up);
    QFETCH(int, newRow);
    QFETCH(QString, order);

    QList<BankAccount*> accounts;
    const QStringList names = { "A", "B", "C", "D" };
    for (int i = 0; i < names.size(); ++i) {
        BankAccount* account = new BankAccount();
        account->id = i + 1;
        account->shortName = names.at(i);
        account->rowNumber = i + 1;
        account->deleted = deleted.at(i);
        accounts.append(account);
    }
    Registry registry;
    registry.copyBankAccountsFrom(accounts);
    qDeleteAll(accounts);

    BankAccountTableModel model(&registry);
    QAbstractItemModelTester tester(&model);
    model.load();
    QVERIFY(!model.isModified());
    QCOMPARE(model.moveAccount(row, up), newRow);

    // "*" marks the accounts whose rowNumber changed and need saving.
    QStringList result;
    for (int i = 0; i < model.rowCount(); ++i) {
        const BankAccount* account = model.accountAt(i);
        QCOMPARE(account->rowNumber, i + 1);
        const bool moved = account->id != i + 1;
        result.append(account->shortName + (moved ? QStringLiteral("*") : QString()));
    }
    QCOMPARE(result.join(u' '), order);
    QCOMPARE(model.isModified(), newRow >= 0);
}

void TestBankAccountTableModel::ibanShownFormatted()
{
    Registry registry;
    BankAccountTableModel model(&registry);
    model.addAccount(makeAccount(QStringLiteral("Nordea"), QStringLiteral("FI2112345600000785"),
        QStringLiteral("NDEAFIHH")));
    QCOMPARE(model.index(0, BankAccountTableModel::IbanColumn).data().toString(),
        QStringLiteral("FI21 1234 5600 0007 85"));
    QCOMPARE(model.index(0, BankAccountTableModel::IbanColumn).data(Qt::EditRole).toString(),
        QStringLiteral("FI2112345600000785"));
}

QTEST_MAIN(TestBankAccountTableModel)
#include "tst_bankaccounttablemodel.moc"
