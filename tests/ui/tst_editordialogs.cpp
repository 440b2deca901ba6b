#include "core/producttreemodel.h"
#include "recordfields.h"
#include "testdatabase.h"
#include "tst_mainwindowfixture.h"
#include "ui/bankaccountdialog.h"
#include "ui/customerdialog.h"
#include "ui/formhelper.h"
#include "ui/productdialog.h"

#include <QPushButton>
#include <QStandardPaths>
#include <QTableView>
#include <QTreeView>
#include <QtTest>
#include <memory>

namespace {

template<typename T>
T* child(QObject* parent, const char* name)
{
    T* widget = parent->findChild<T*>(QString::fromLatin1(name));
    if (!widget)
        qWarning("no widget %s", name);
    return widget;
}

QLineEdit* edit(QObject* dialog, const char* name)
{
    return child<QLineEdit>(dialog, name);
}

void click(QObject* dialog, const char* name)
{
    QTest::mouseClick(child<QPushButton>(dialog, name), Qt::LeftButton);
}

// A dialog shown as the user sees it.
template<typename Dialog>
std::unique_ptr<Recorded<Dialog>> shown(Registry* registry)
{
    auto dialog = std::make_unique<Recorded<Dialog>>(registry);
    dialog->show();
    if (!QTest::qWaitForWindowExposed(dialog.get()))
        qWarning("the dialog was not shown");
    return dialog;
}

// The record without its id, field by field.
template<typename T>
QStringList fieldsOf(const T* record)
{
    if (!record)
        return { QStringLiteral("no record") };
    T copy = *record;
    copy.id = -1;
    return RecordFields::of(copy);
}

} // namespace

class TestEditorDialogs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void cancelLeavesEverythingAlone_data();
    void cancelLeavesEverythingAlone();
    void addCustomer();
    void customerChecks_data();
    void customerChecks();
    void removedCustomerIsKeptAndMarked();
    void searchFiltersCustomers();
    void parseDecimal_data();
    void parseDecimal();
    void addProduct();
    void productChecks_data();
    void productChecks();
    void editProductAndRegroup();
    void addAccount();
    void refusedIbans_data();
    void refusedIbans();
    void moveAndRemoveAccounts();

private:
    Database* database() const { return m_db->database(); }
    QString firstName(int kind) const;

    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
};

void TestEditorDialogs::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestEditorDialogs::init()
{
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    m_registry = std::make_unique<Registry>();
    m_registry->setDatabase(database());
    CustomerTableModel customers(m_registry.get());
    for (const auto& [number, name] :
        { std::pair(5, "Kivijalka Oy"), { 2, "Puutarha Lehtonen" } }) {
        Customer customer;
        customer.number = number;
        customer.name = QLatin1String(name);
        customer.townName = QStringLiteral("Lahti");
        customer.setProperty(QStringLiteral("x9"), QStringLiteral("kept"));
        customers.addRecord(customer);
    }
    ProductTableModel products(m_registry.get());
    Product coffee;
    coffee.number = QStringLiteral("10");
    coffee.name = QStringLiteral("Kahvi");
    coffee.unitCode = QStringLiteral("kg");
    coffee.amount = 129000;
    coffee.vatRate = 1400;
    coffee.category = QStringLiteral("Elintarvikkeet");
    products.addRecord(coffee);
    BankAccountTableModel accounts(m_registry.get());
    for (const auto& [name, iban] :
        { std::pair("Nordea", "FI2112345600000785"), { "OP", "FI4950009420028730" } }) {
        BankAccount account;
        account.shortName = QLatin1String(name);
        account.name = account.shortName + QStringLiteral(" Pankki");
        account.iban = QLatin1String(iban);
        account.bic = QStringLiteral("BANKFIHH");
        accounts.addRecord(account);
    }
    // The products get the new database's interest product too.
    QVERIFY(customers.save(database()) && products.save(database()) && accounts.save(database()));
}

void TestEditorDialogs::cleanup()
{
    m_registry.reset();
    m_db.reset();
}

QString TestEditorDialogs::firstName(int kind) const
{
    return kind == 0 ? m_registry->customerAt(0)->name
        : kind == 1  ? m_registry->productAt(0)->name
                     : m_registry->bankAccountAt(0)->name;
}

void TestEditorDialogs::cancelLeavesEverythingAlone_data()
{
    QTest::addColumn<int>("kind");
    QTest::addRow("customers") << 0;
    QTest::addRow("products") << 1;
    QTest::addRow("accounts") << 2;
}

void TestEditorDialogs::cancelLeavesEverythingAlone()
{
    QFETCH(int, kind);
    const QString table = QLatin1String(kind == 0 ? "customer"
            : kind == 1                           ? "product"
                                                  : "bank_account");
    const QStringList before = tableRows(database(), table);
    const QString name = firstName(kind);
    {
        std::unique_ptr<QDialog> dialog;
        if (kind == 0)
            dialog = shown<CustomerDialog>(m_registry.get());
        else if (kind == 1)
            dialog = shown<ProductDialog>(m_registry.get());
        else
            dialog = shown<BankAccountDialog>(m_registry.get());
        replaceText(edit(dialog.get(), "nameEdit"), QStringLiteral("Muutettu"));
        click(dialog.get(), "addButton");
        typeText(edit(dialog.get(), "nameEdit"), QStringLiteral("Uusi"));
        click(dialog.get(), "removeButton");
        click(dialog.get(), "removeButton");
        clickButton(dialog.get(), QDialogButtonBox::Cancel);
        QCOMPARE(dialog->result(), int(QDialog::Rejected));
    }
    QCOMPARE(tableRows(database(), table), before);
    // The registry's records were never edited.
    QCOMPARE(firstName(kind), name);
}

void TestEditorDialogs::addCustomer()
{
    auto dialog = shown<CustomerDialog>(m_registry.get());
    click(dialog.get(), "addButton");
    // The next free number is suggested.
    QCOMPARE(edit(dialog.get(), "numberEdit")->text(), QStringLiteral("6"));
    Customer expected;
    expected.number = 6;
    const struct
    {
        const char* field;
        QString* value;
        const char* text;
    } fields[] = {
        { "nameEdit", &expected.name, "Åström & Söner Ab" },
        { "streetNameEdit", &expected.streetName, "Kauppatori 1" },
        { "postCodeEdit", &expected.postCode, "65100" },
        { "townNameEdit", &expected.townName, "Vaasa" },
        { "referenceNumberEdit", &expected.referenceNumber, "1232" },
        { "emailAddressEdit", &expected.emailAddress, "anna@astrom.fi" },
        { "paymentTermsEdit", &expected.paymentTerms, "30 päivää netto" },
    };
    for (const auto& field : fields) {
        *field.value = QString::fromUtf8(field.text);
        typeText(edit(dialog.get(), field.field), *field.value);
    }
    QComboBox* language = child<QComboBox>(dialog.get(), "languageCombo");
    language->setFocus();
    // Empty, fi, sv: two steps down.
    QTest::keyClick(language, Qt::Key_Down);
    QTest::keyClick(language, Qt::Key_Down);
    QCOMPARE(language->currentText(), QStringLiteral("sv - ruotsi"));
    typeText(edit(dialog.get(), "custom1Edit"), QStringLiteral("Kanta-asiakas"));
    typeText(edit(dialog.get(), "ediEdit"), QStringLiteral("003715728600100"));
    // Empty fields leave no keys behind.
    expected.setProperty(QStringLiteral("c1"), QStringLiteral("Kanta-asiakas"));
    expected.setProperty(QStringLiteral("e3"), QStringLiteral("003715728600100"));
    expected.setProperty(QStringLiteral("l"), QStringLiteral("sv"));
    clickButton(dialog.get(), QDialogButtonBox::Ok);

    QCOMPARE(dialog->warnings, QStringList());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    bool found = false;
    QCOMPARE(fieldsOf(m_registry->customerByNumber(6, found)), RecordFields::of(expected));
}

void TestEditorDialogs::customerChecks_data()
{
    addFieldColumns();
    const QString vat = QStringLiteral("Y-tunnus tai ALV-numero on virheellinen.");
    // The rules of the numbers themselves are the domain's; here the form
    // must take a good one and refuse a bad one.
    addFieldRow("VAT number", "vatNumberEdit", "FI15728600", QString());
    addFieldRow("id check digit", "vatNumberEdit", "1572860-1", vat);
    addFieldRow("number in use", "numberEdit", "5", "Asiakasnumero 5 on jo käytössä.");
    addFieldRow("no name", "nameEdit", "", "Asiakkaan nimi puuttuu.");
}

void TestEditorDialogs::customerChecks()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, warning);

    const QStringList before = tableRows(database(), QStringLiteral("customer"));
    auto dialog = shown<CustomerDialog>(m_registry.get());
    // The first customer in number order is number 2.
    QLineEdit* changed = edit(dialog.get(), qPrintable(field));
    replaceText(changed, text);
    clickButton(dialog.get(), QDialogButtonBox::Ok);
    if (warning.isEmpty()) {
        QCOMPARE(dialog->warnings, QStringList());
        QCOMPARE(dialog->result(), int(QDialog::Accepted));
        // What the form does not show stays.
        Customer expected;
        expected.number = 2;
        expected.name = QStringLiteral("Puutarha Lehtonen");
        expected.townName = QStringLiteral("Lahti");
        expected.vatNumber = text;
        expected.setProperty(QStringLiteral("x9"), QStringLiteral("kept"));
        bool found = false;
        QCOMPARE(fieldsOf(m_registry->customerByNumber(2, found)), RecordFields::of(expected));
        return;
    }
    QCOMPARE(dialog->warnings, QStringList { warning });
    QVERIFY(dialog->isVisible());
    QCOMPARE(dialog->focusWidget(), changed);
    QCOMPARE(tableRows(database(), QStringLiteral("customer")), before);

    // Going to another customer is refused the same way.
    QTableView* view = child<QTableView>(dialog.get(), "customerView");
    view->setCurrentIndex(view->model()->index(1, 1));
    QCOMPARE(dialog->warnings.size(), 2);
    QCOMPARE(view->currentIndex().row(), 0);
}

void TestEditorDialogs::removedCustomerIsKeptAndMarked()
{
    auto dialog = shown<CustomerDialog>(m_registry.get());
    QTableView* view = child<QTableView>(dialog.get(), "customerView");
    const int removedId = dialog->currentCustomerId();
    click(dialog.get(), "removeButton");
    QCOMPARE(view->model()->rowCount(), 1);
    QTest::mouseClick(child<QCheckBox>(dialog.get(), "showDeletedCheck"), Qt::LeftButton);
    QCOMPARE(view->model()->rowCount(), 2);
    clickButton(dialog.get(), QDialogButtonBox::Ok);
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    const QString deleted = QStringLiteral("SELECT group_concat(id) FROM customer WHERE deleted");
    QCOMPARE(m_db->value(deleted).toString(), QString::number(removedId));

    // A new dialog hides it, unless it is the one asked for; it can be
    // restored.
    auto again = shown<CustomerDialog>(m_registry.get());
    view = child<QTableView>(again.get(), "customerView");
    QCOMPARE(view->model()->rowCount(), 1);
    again->setCurrentCustomerId(removedId);
    QCOMPARE(view->model()->rowCount(), 2);
    QCOMPARE(again->currentCustomerId(), removedId);
    QCOMPARE(child<QPushButton>(again.get(), "removeButton")->text(), QStringLiteral("&Palauta"));
    click(again.get(), "removeButton");
    clickButton(again.get(), QDialogButtonBox::Ok);
    QCOMPARE(m_db->value(deleted).toString(), QString());
}

void TestEditorDialogs::searchFiltersCustomers()
{
    auto dialog = shown<CustomerDialog>(m_registry.get());
    QAbstractItemModel* list = child<QTableView>(dialog.get(), "customerView")->model();
    QLineEdit* search = edit(dialog.get(), "searchEdit");
    replaceText(search, QStringLiteral("kivi"));
    QCOMPARE(list->rowCount(), 1);
    QCOMPARE(edit(dialog.get(), "nameEdit")->text(), QStringLiteral("Kivijalka Oy"));
    // Every shown column counts, the town too.
    replaceText(search, QStringLiteral("lahti"));
    QCOMPARE(list->rowCount(), 2);
}

void TestEditorDialogs::parseDecimal_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<qlonglong>("value"); // -1: refused
    auto row = [](const char* text, int decimals, qlonglong value) {
        QTest::newRow(text) << QString::fromUtf8(text) << decimals << value;
    };
    row("42.5", 4, 425000);
    row("1\u00a0234,5", 4, 12345000);
    row("0,0001", 4, 1);
    row("-15", 4, -150000);
    row("214747,99", 4, 2147479900);
    row("214748", 4, -1);
    row("12,3,4", 4, -1);
    row("11,505", 2, 1150);
}

void TestEditorDialogs::parseDecimal()
{
    QFETCH(QString, text);
    QFETCH(int, decimals);
    QFETCH(qlonglong, value);
    qint64 parsed = -1;
    const bool ok = FormHelper::parseDecimal(text, decimals, decimals == 4 ? 2 : 0, parsed);
    QCOMPARE(ok ? parsed : -1, value);
}

void TestEditorDialogs::addProduct()
{
    auto dialog = shown<ProductDialog>(m_registry.get());
    click(dialog.get(), "addButton");
    QCOMPARE(dialog->focusWidget(), edit(dialog.get(), "numberEdit"));
    // The new product starts with the unit and VAT of the coffee.
    QCOMPARE(edit(dialog.get(), "unitCodeEdit")->text(), QStringLiteral("kg"));
    typeText(edit(dialog.get(), "numberEdit"), QStringLiteral("200"));
    typeText(edit(dialog.get(), "nameEdit"), QStringLiteral("Ikkunoiden pesu"));
    replaceText(edit(dialog.get(), "unitCodeEdit"), QStringLiteral("h"));
    replaceText(edit(dialog.get(), "amountEdit"), QStringLiteral("1 234,5"));
    QComboBox* mode = child<QComboBox>(dialog.get(), "vatModeCombo");
    mode->setFocus();
    QTest::keyClick(mode, Qt::Key_End);
    QCOMPARE(mode->currentText(), QStringLiteral("Veroton"));
    replaceText(edit(dialog.get(), "vatRateEdit"), QStringLiteral("25,5"));
    QComboBox* category = child<QComboBox>(dialog.get(), "categoryCombo");
    category->lineEdit()->selectAll();
    typeText(category->lineEdit(), QStringLiteral("Palvelut"));
    clickButton(dialog.get(), QDialogButtonBox::Ok);

    QCOMPARE(dialog->warnings, QStringList());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    Product expected;
    expected.number = QStringLiteral("200");
    expected.name = QStringLiteral("Ikkunoiden pesu");
    expected.unitCode = QStringLiteral("h");
    expected.amount = 12345000;
    expected.vatExcluded = true;
    expected.vatRate = 2550;
    expected.category = QStringLiteral("Palvelut");
    bool found = false;
    QCOMPARE(
        fieldsOf(m_registry->productByNumber(expected.number, found)), RecordFields::of(expected));
}

void TestEditorDialogs::productChecks_data()
{
    addFieldColumns();
    const QString price = QStringLiteral("Hinta on virheellinen.");
    const QString rate = QStringLiteral("ALV-prosentti on virheellinen.");
    addFieldRow("no price", "amountEdit", "", price);
    addFieldRow("rate over 100", "vatRateEdit", "100,01", rate);
    addFieldRow("no number", "numberEdit", "", "Tuotenumero puuttuu.");
    addFieldRow("number in use", "numberEdit", "999", "Tuotenumero 999 on jo käytössä.");
}

void TestEditorDialogs::productChecks()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, warning);

    const QStringList before = tableRows(database(), QStringLiteral("product"));
    auto dialog = shown<ProductDialog>(m_registry.get());
    // The coffee is shown first (its category sorts before "Muut tuotteet").
    QCOMPARE(edit(dialog.get(), "nameEdit")->text(), QStringLiteral("Kahvi"));
    replaceText(edit(dialog.get(), qPrintable(field)), text);
    clickButton(dialog.get(), QDialogButtonBox::Ok);
    QCOMPARE(dialog->warnings, QStringList { warning });
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
    QCOMPARE(dialog->focusWidget(), edit(dialog.get(), qPrintable(field)));
    QCOMPARE(tableRows(database(), QStringLiteral("product")), before);
}

void TestEditorDialogs::editProductAndRegroup()
{
    auto dialog = shown<ProductDialog>(m_registry.get());
    ProductTreeModel* tree = dialog->treeModel();
    // Give the coffee a category of its own, then go to the interest product.
    QComboBox* category = child<QComboBox>(dialog.get(), "categoryCombo");
    category->lineEdit()->selectAll();
    typeText(category->lineEdit(), QStringLiteral("Juomat"));
    replaceText(edit(dialog.get(), "amountEdit"), QStringLiteral("13,90"));
    dialog->selectRow(dialog->model()->rowOfNumber(QStringLiteral("999")));
    QCOMPARE(edit(dialog.get(), "nameEdit")->text(), QStringLiteral("Viivästyskorko"));
    QCOMPARE(tree->index(0, 0).data().toString(), QStringLiteral("Juomat"));
    replaceText(edit(dialog.get(), "nameEdit"), QStringLiteral("Viivästyskorko 8 %"));
    QTest::keyClick(edit(dialog.get(), "nameEdit"), Qt::Key_Return);

    QCOMPARE(dialog->warnings, QStringList());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    bool found = false;
    const Product* coffee = m_registry->productByNumber(QStringLiteral("10"), found);
    QCOMPARE(coffee->category + QString::number(coffee->amount), QStringLiteral("Juomat139000"));
    QCOMPARE(m_registry->productByNumber(QStringLiteral("999"), found)->name,
        QStringLiteral("Viivästyskorko 8 %"));
}

void TestEditorDialogs::addAccount()
{
    auto dialog = shown<BankAccountDialog>(m_registry.get());
    click(dialog.get(), "addButton");
    QCOMPARE(dialog->focusWidget(), edit(dialog.get(), "nameEdit"));
    QTest::keyClicks(edit(dialog.get(), "nameEdit"), QStringLiteral("Danske Bank"));
    QTest::keyClicks(edit(dialog.get(), "shortNameEdit"), QStringLiteral("Danske"));
    QTest::keyClicks(edit(dialog.get(), "ibanEdit"), QStringLiteral("fi57 8000 1700 0000 10"));
    QTest::keyClicks(edit(dialog.get(), "bicEdit"), QStringLiteral("dabafihh"));
    QCheckBox* visible = child<QCheckBox>(dialog.get(), "visibleCheck");
    QVERIFY(visible->isChecked());
    QTest::mouseClick(visible, Qt::LeftButton);
    clickButton(dialog.get(), QDialogButtonBox::Ok);

    QCOMPARE(dialog->warnings, QStringList());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    BankAccount expected;
    expected.name = QStringLiteral("Danske Bank");
    expected.shortName = QStringLiteral("Danske");
    expected.iban = QStringLiteral("FI5780001700000010");
    expected.bic = QStringLiteral("DABAFIHH");
    expected.rowNumber = 3;
    expected.visible = false;
    QCOMPARE(fieldsOf(m_registry->bankAccountAt(2)), RecordFields::of(expected));
}

void TestEditorDialogs::refusedIbans_data()
{
    QTest::addColumn<QString>("iban");
    QTest::addRow("check digits") << "FI22 1234 5600 0007 85";
    QTest::addRow("empty") << "";
}

void TestEditorDialogs::refusedIbans()
{
    QFETCH(QString, iban);
    auto dialog = shown<BankAccountDialog>(m_registry.get());
    QLineEdit* field = edit(dialog.get(), "ibanEdit");
    QCOMPARE(field->text(), QStringLiteral("FI21 1234 5600 0007 85"));
    replaceText(field, iban);
    clickButton(dialog.get(), QDialogButtonBox::Ok);
    QCOMPARE(dialog->warnings,
        QStringList { "IBAN-tilinumero on virheellinen. Tarkista numero tiliotteesta." });
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
    QCOMPARE(dialog->focusWidget(), field);
    // A new account cannot be started before the shown one is fixed.
    click(dialog.get(), "addButton");
    QCOMPARE(dialog->warnings.size(), 2);
    QCOMPARE(dialog->model()->rowCount(), 2);

    // The stored form goes back in the field and saves as it was.
    replaceText(field, QStringLiteral("fi21 1234 5600 0007 85"));
    clickButton(dialog.get(), QDialogButtonBox::Ok);
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    QCOMPARE(m_registry->bankAccountAt(0)->iban, QStringLiteral("FI2112345600000785"));
}

void TestEditorDialogs::moveAndRemoveAccounts()
{
    auto dialog = shown<BankAccountDialog>(m_registry.get());
    // OP to the top, where it stays, and Nordea removed.
    dialog->selectRow(1);
    click(dialog.get(), "upButton");
    QCOMPARE(edit(dialog.get(), "shortNameEdit")->text(), QStringLiteral("OP"));
    dialog->selectRow(1);
    click(dialog.get(), "removeButton");
    QCOMPARE(child<QTableView>(dialog.get(), "accountView")->model()->rowCount(), 1);
    clickButton(dialog.get(), QDialogButtonBox::Ok);

    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    QCOMPARE(tableRows(database(), QStringLiteral("bank_account")),
        QStringList({ "1|Nordea Pankki|Nordea|FI2112345600000785|BANKFIHH|2|1|1",
            "2|OP Pankki|OP|FI4950009420028730|BANKFIHH|1|1|0" }));
}

QTEST_MAIN(TestEditorDialogs)
#include "tst_editordialogs.moc"
