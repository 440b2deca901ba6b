#include "core/bankaccounttablemodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "ui/bankaccountdialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableView>
#include <QtTest>
#include <memory>

namespace {

// Records the warnings instead of showing message boxes.
class Dialog : public BankAccountDialog
{
public:
    using BankAccountDialog::BankAccountDialog;
    QStringList warnings;

protected:
    void showWarning(const QString& text) override { warnings.append(text); }
};

QList<BankAccount> storedAccounts(Database* database)
{
    QList<BankAccount> result;
    std::unique_ptr<Query> query(database->query());
    if (!query->fetchBankAccounts())
        return result;
    while (query->next()) {
        BankAccount account;
        query->bankAccount(&account);
        result.append(account);
    }
    return result;
}

// "shortName:rowNumber" of the stored accounts in display order, deleted
// ones marked with "-".
QString storedOrder(Database* database)
{
    QStringList parts;
    for (const BankAccount& account : storedAccounts(database)) {
        parts.append(account.shortName + QLatin1Char(':') + QString::number(account.rowNumber)
            + (account.deleted ? QStringLiteral("-") : QString()));
    }
    return parts.join(u' ');
}

template<typename T>
T* field(QWidget* dialog, const char* name)
{
    T* widget = dialog->findChild<T*>(QString::fromLatin1(name));
    if (!widget)
        qWarning("no widget %s", name);
    return widget;
}

void replaceText(QWidget* dialog, const char* name, const QString& text)
{
    QLineEdit* edit = field<QLineEdit>(dialog, name);
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Backspace);
    QTest::keyClicks(edit, text);
}

void click(QWidget* dialog, const char* name)
{
    QTest::mouseClick(field<QPushButton>(dialog, name), Qt::LeftButton);
}

void clickButton(QDialog* dialog, QDialogButtonBox::StandardButton which)
{
    QDialogButtonBox* box = dialog->findChild<QDialogButtonBox*>();
    QTest::mouseClick(box->button(which), Qt::LeftButton);
}

} // namespace

class TestBankAccountDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void addAccount();
    void invalidIbanIsRefused_data();
    void invalidIbanIsRefused();
    void editShowsFormattedIban();
    void moveAndRemove();
    void cancelLeavesEverythingAlone();

private:
    void addStoredAccount(const QString& shortName, const QString& iban, int rowNumber);

    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
};

void TestBankAccountDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestBankAccountDialog::init()
{
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    m_registry = std::make_unique<Registry>();
    m_registry->setDatabase(m_db->database());
    addStoredAccount(QStringLiteral("Nordea"), QStringLiteral("FI2112345600000785"), 1);
    addStoredAccount(QStringLiteral("OP"), QStringLiteral("FI4950009420028730"), 2);
    std::unique_ptr<Query> query(m_db->database()->query());
    QVERIFY(m_registry->fetchBankAccounts(query.get()));
}

void TestBankAccountDialog::cleanup()
{
    m_registry.reset();
    m_db.reset();
}

void TestBankAccountDialog::addStoredAccount(
    const QString& shortName, const QString& iban, int rowNumber)
{
    BankAccount account;
    account.name = shortName + QStringLiteral(" Pankki");
    account.shortName = shortName;
    account.iban = iban;
    account.bic = QStringLiteral("BANKFIHH");
    account.rowNumber = rowNumber;
    std::unique_ptr<Query> query(m_db->database()->query());
    QVERIFY(query->saveBankAccount(&account));
}

void TestBankAccountDialog::addAccount()
{
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    click(&dialog, "addButton");
    QCOMPARE(dialog.focusWidget(), field<QLineEdit>(&dialog, "nameEdit"));
    QTest::keyClicks(field<QLineEdit>(&dialog, "nameEdit"), QStringLiteral("Danske Bank"));
    QTest::keyClicks(field<QLineEdit>(&dialog, "shortNameEdit"), QStringLiteral("Danske"));
    QTest::keyClicks(
        field<QLineEdit>(&dialog, "ibanEdit"), QStringLiteral("fi57 8000 1700 0000 10"));
    QTest::keyClicks(field<QLineEdit>(&dialog, "bicEdit"), QStringLiteral("dabafihh"));
    QCheckBox* visible = field<QCheckBox>(&dialog, "visibleCheck");
    QVERIFY(visible->isChecked());
    QTest::mouseClick(visible, Qt::LeftButton);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings, QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const QList<BankAccount> stored = storedAccounts(m_db->database());
    QCOMPARE(stored.size(), 3);
    const BankAccount& added = stored.at(2);
    QCOMPARE(added.name, QStringLiteral("Danske Bank"));
    QCOMPARE(added.shortName, QStringLiteral("Danske"));
    QCOMPARE(added.iban, QStringLiteral("FI5780001700000010"));
    QCOMPARE(added.bic, QStringLiteral("DABAFIHH"));
    QCOMPARE(added.rowNumber, 3);
    QVERIFY(!added.visible);
    QVERIFY(!added.deleted);
    QCOMPARE(m_registry->bankAccountCount(), 3);
}

void TestBankAccountDialog::invalidIbanIsRefused_data()
{
    QTest::addColumn<QString>("iban");
    QTest::addRow("wrong check digits") << "FI22 1234 5600 0007 85";
    QTest::addRow("digit typed wrong") << "FI21 1234 5600 0007 86";
    QTest::addRow("national form") << "123456-785";
    QTest::addRow("too short") << "FI21 1234 5600 0007";
    QTest::addRow("empty") << "";
}

void TestBankAccountDialog::invalidIbanIsRefused()
{
    QFETCH(QString, iban);
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    replaceText(&dialog, "ibanEdit", iban);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings,
        QStringList({ "IBAN-tilinumero on virheellinen. Tarkista numero tiliotteesta." }));
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(dialog.focusWidget(), field<QLineEdit>(&dialog, "ibanEdit"));
    QCOMPARE(storedAccounts(m_db->database()).at(0).iban, QStringLiteral("FI2112345600000785"));

    // A new account cannot be started before the shown one is fixed.
    click(&dialog, "addButton");
    QCOMPARE(dialog.warnings.size(), 2);
    QCOMPARE(dialog.model()->rowCount(), 2);
}

void TestBankAccountDialog::editShowsFormattedIban()
{
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(
        field<QLineEdit>(&dialog, "ibanEdit")->text(), QStringLiteral("FI21 1234 5600 0007 85"));
    dialog.selectRow(1);
    QCOMPARE(
        field<QLineEdit>(&dialog, "ibanEdit")->text(), QStringLiteral("FI49 5000 9420 0287 30"));
    replaceText(&dialog, "bicEdit", QStringLiteral("OKOYFIHH"));
    QTest::keyClick(field<QLineEdit>(&dialog, "bicEdit"), Qt::Key_Return);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const QList<BankAccount> stored = storedAccounts(m_db->database());
    QCOMPARE(stored.at(1).bic, QStringLiteral("OKOYFIHH"));
    QCOMPARE(stored.at(1).iban, QStringLiteral("FI4950009420028730"));
    QCOMPARE(stored.at(0).bic, QStringLiteral("BANKFIHH"));
}

void TestBankAccountDialog::moveAndRemove()
{
    addStoredAccount(QStringLiteral("Danske"), QStringLiteral("FI5780001700000010"), 3);
    std::unique_ptr<Query> query(m_db->database()->query());
    QVERIFY(m_registry->fetchBankAccounts(query.get()));

    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QTableView* view = field<QTableView>(&dialog, "accountView");
    // Danske to the top, then remove OP.
    dialog.selectRow(2);
    click(&dialog, "upButton");
    click(&dialog, "upButton");
    QCOMPARE(dialog.currentRow(), 0);
    QCOMPARE(field<QLineEdit>(&dialog, "shortNameEdit")->text(), QStringLiteral("Danske"));
    click(&dialog, "upButton");
    QCOMPARE(dialog.currentRow(), 0);
    dialog.selectRow(1);
    QCOMPARE(field<QLineEdit>(&dialog, "shortNameEdit")->text(), QStringLiteral("Nordea"));
    click(&dialog, "removeButton");
    QCOMPARE(view->model()->rowCount(), 2);
    // OP moves up past the hidden Nordea.
    dialog.selectRow(2);
    click(&dialog, "upButton");
    QCOMPARE(dialog.currentRow(), 0);
    QCOMPARE(field<QLineEdit>(&dialog, "shortNameEdit")->text(), QStringLiteral("OP"));
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(storedOrder(m_db->database()), QStringLiteral("OP:1 Nordea:2- Danske:3"));
    QCOMPARE(m_registry->bankAccountCount(), 3);
    QCOMPARE(m_registry->bankAccountAt(0)->shortName, QStringLiteral("OP"));
}

void TestBankAccountDialog::cancelLeavesEverythingAlone()
{
    BankAccount* first = m_registry->bankAccountAt(0);
    {
        Dialog dialog(m_registry.get());
        replaceText(&dialog, "nameEdit", QStringLiteral("Muutettu"));
        click(&dialog, "downButton");
        click(&dialog, "removeButton");
        click(&dialog, "addButton");
        clickButton(&dialog, QDialogButtonBox::Cancel);
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }
    QCOMPARE(storedOrder(m_db->database()), QStringLiteral("Nordea:1 OP:2"));
    QCOMPARE(m_registry->bankAccountAt(0), first);
    QCOMPARE(first->name, QStringLiteral("Nordea Pankki"));
    QVERIFY(!first->deleted);
}

QTEST_MAIN(TestBankAccountDialog)
#include "tst_bankaccountdialog.moc"
