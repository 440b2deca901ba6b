#include "core/producttreemodel.h"
#include "domain/decimalformat.h"
#include "recordfields.h"
#include "testdatabase.h"
#include "tst_mainwindowfixture.h"
#include "ui/bankaccountdialog.h"
#include "ui/customerdialog.h"
#include "ui/productdialog.h"

#include <QHeaderView>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableView>
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

template<typename Dialog>
std::unique_ptr<Recorded<Dialog>> shown(Registry* registry)
{
    auto dialog = std::make_unique<Recorded<Dialog>>(registry);
    dialog->show();
    if (!QTest::qWaitForWindowExposed(dialog.get()))
        qWarning("the dialog was not shown");
    return dialog;
}

const char* const tables[] = { "customer", "product", "bank_account" };

template<typename Dialog>
std::unique_ptr<QDialog> shownAs(Registry* registry, QStringList** warnings)
{
    auto dialog = shown<Dialog>(registry);
    *warnings = &dialog->warnings;
    return dialog;
}

// A dialog of the customers (0), products (1) or bank accounts (2), shown,
// with its recorded warnings.
std::unique_ptr<QDialog> shownKind(Registry* registry, int kind, QStringList** warnings)
{
    return kind == 0 ? shownAs<CustomerDialog>(registry, warnings)
        : kind == 1  ? shownAs<ProductDialog>(registry, warnings)
                     : shownAs<BankAccountDialog>(registry, warnings);
}

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
    void editCustomerKeepsHiddenFields();
    void refusedFields_data();
    void refusedFields();
    void removedCustomerIsKeptAndMarked();
    void addProduct();
    void listShowsWhatIsTyped_data();
    void listShowsWhatIsTyped();
    void columnsShowTheirHeaders_data();
    void columnsShowTheirHeaders();

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
    Customer customer;
    customer.townName = QStringLiteral("Lahti");
    customer.setProperty(QStringLiteral("x9"), QStringLiteral("kept"));
    for (const auto& [number, name] :
        { std::pair(5, "Kivijalka Oy"), { 2, "Puutarha Lehtonen" } }) {
        customer.number = number;
        customer.name = QLatin1String(name);
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
    BankAccount account;
    for (const char* iban : { "FI2112345600000785", "FI4950009420028730" }) {
        account.name = QLatin1String(iban).left(4);
        account.iban = QLatin1String(iban);
        accounts.addRecord(account);
    }
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
    const QStringList before = tableRows(database(), QLatin1String(tables[kind]));
    const QString name = firstName(kind);
    {
        QStringList* warnings = nullptr;
        std::unique_ptr<QDialog> dialog = shownKind(m_registry.get(), kind, &warnings);
        replaceText(edit(dialog.get(), "nameEdit"), QStringLiteral("Muutettu"));
        click(dialog.get(), "addButton");
        typeText(edit(dialog.get(), "nameEdit"), QStringLiteral("Uusi"));
        click(dialog.get(), "removeButton");
        click(dialog.get(), "removeButton");
        clickButton(dialog.get(), QDialogButtonBox::Cancel);
        QCOMPARE(dialog->result(), int(QDialog::Rejected));
    }
    QCOMPARE(tableRows(database(), QLatin1String(tables[kind])), before);
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
        { "postCodeEdit", &expected.postCode, "65100" },
        { "paymentTermsEdit", &expected.paymentTerms, "30 päivää netto" },
    };
    for (const auto& field : fields) {
        *field.value = QString::fromUtf8(field.text);
        typeText(edit(dialog.get(), field.field), *field.value);
    }
    typeText(edit(dialog.get(), "custom1Edit"), QStringLiteral("Kanta-asiakas"));
    typeText(edit(dialog.get(), "ediEdit"), QStringLiteral("003715728600100"));
    // Empty fields leave no keys behind.
    expected.setProperty(QStringLiteral("c1"), QStringLiteral("Kanta-asiakas"));
    expected.setProperty(QStringLiteral("e3"), QStringLiteral("003715728600100"));
    clickButton(dialog.get(), QDialogButtonBox::Ok);

    QCOMPARE(dialog->warnings, QStringList());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    bool found = false;
    QCOMPARE(fieldsOf(m_registry->customerByNumber(6, found)), RecordFields::of(expected));
}

void TestEditorDialogs::editCustomerKeepsHiddenFields()
{
    auto dialog = shown<CustomerDialog>(m_registry.get());
    // The first customer in number order is number 2.
    replaceText(edit(dialog.get(), "vatNumberEdit"), QStringLiteral("FI15728600"));
    clickButton(dialog.get(), QDialogButtonBox::Ok);
    QCOMPARE(dialog->warnings, QStringList());
    QCOMPARE(dialog->result(), int(QDialog::Accepted));
    Customer expected;
    expected.number = 2;
    expected.name = QStringLiteral("Puutarha Lehtonen");
    expected.townName = QStringLiteral("Lahti");
    expected.vatNumber = QStringLiteral("FI15728600");
    expected.setProperty(QStringLiteral("x9"), QStringLiteral("kept"));
    bool found = false;
    QCOMPARE(fieldsOf(m_registry->customerByNumber(2, found)), RecordFields::of(expected));
}

void TestEditorDialogs::refusedFields_data()
{
    QTest::addColumn<int>("kind");
    addFieldColumns();
    auto row = [](const char* name, int kind, const char* field, const char* text,
                   const QString& warning) {
        QTest::newRow(name) << kind << QString::fromLatin1(field) << QString::fromUtf8(text)
                            << warning;
    };
    const QString iban
        = QStringLiteral("IBAN-tilinumero on virheellinen. Tarkista numero tiliotteesta.");
    row("id check digit", 0, "vatNumberEdit", "1572860-1",
        "Y-tunnus tai ALV-numero on virheellinen.");
    row("customer number in use", 0, "numberEdit", "5", "Asiakasnumero 5 on jo käytössä.");
    row("no name", 0, "nameEdit", "", "Asiakkaan nimi puuttuu.");
    row("no price", 1, "amountEdit", "", QStringLiteral("Hinta on virheellinen."));
    // The price is read in 32 bits: 250 000,0000 does not fit.
    row("price too large", 1, "amountEdit", "250000",
        QStringLiteral("Hinta on liian suuri. Suurin sallittu hinta on %1.")
            .arg(DecimalFormat(4, 2).format(DecimalFormat::maxParsedValue)));
    row("rate over 100", 1, "vatRateEdit", "100,01",
        QStringLiteral("ALV-prosentti on liian suuri. Suurin sallittu ALV-prosentti on 100."));
    row("negative rate", 1, "vatRateEdit", "-1", QStringLiteral("ALV-prosentti on virheellinen."));
    row("no product number", 1, "numberEdit", "", "Tuotenumero puuttuu.");
    row("product number in use", 1, "numberEdit", "999", "Tuotenumero 999 on jo käytössä.");
    row("IBAN check digits", 2, "ibanEdit", "FI22 1234 5600 0007 85", iban);
    row("no IBAN", 2, "ibanEdit", "", iban);
}

void TestEditorDialogs::refusedFields()
{
    QFETCH(int, kind);
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, warning);

    const QStringList before = tableRows(database(), QLatin1String(tables[kind]));
    QStringList* warnings = nullptr;
    std::unique_ptr<QDialog> dialog = shownKind(m_registry.get(), kind, &warnings);
    QLineEdit* changed = edit(dialog.get(), qPrintable(field));
    replaceText(changed, text);
    clickButton(dialog.get(), QDialogButtonBox::Ok);
    QCOMPARE(*warnings, QStringList { warning });
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
    QCOMPARE(dialog->focusWidget(), changed);
    QCOMPARE(tableRows(database(), QLatin1String(tables[kind])), before);
    // A new record cannot be started before the shown one is fixed.
    const QString name = edit(dialog.get(), "nameEdit")->text();
    click(dialog.get(), "addButton");
    QCOMPARE(warnings->size(), 2);
    QCOMPARE(edit(dialog.get(), "nameEdit")->text(), name);
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

    // A new dialog hides it, unless it is the one asked for.
    auto again = shown<CustomerDialog>(m_registry.get());
    view = child<QTableView>(again.get(), "customerView");
    QCOMPARE(view->model()->rowCount(), 1);
    again->setCurrentCustomerId(removedId);
    QCOMPARE(view->model()->rowCount(), 2);
    QCOMPARE(again->currentCustomerId(), removedId);
    QCOMPARE(child<QPushButton>(again.get(), "removeButton")->text(), QStringLiteral("&Palauta"));
}

void TestEditorDialogs::addProduct()
{
    auto dialog = shown<ProductDialog>(m_registry.get());
    // The coffee (kg, 14 %, VAT included) is shown: the new product takes
    // its category only and starts from the general rate without VAT.
    click(dialog.get(), "addButton");
    QComboBox* mode = child<QComboBox>(dialog.get(), "vatModeCombo");
    QCOMPARE(QStringList({ edit(dialog.get(), "unitCodeEdit")->text(),
                 edit(dialog.get(), "vatRateEdit")->text(), mode->currentText() }),
        QStringList({ "", DecimalFormat(2, 0).format(2550), "Veroton" }));
    typeText(keyTarget(), QStringLiteral("200"));
    typeText(edit(dialog.get(), "nameEdit"), QStringLiteral("Ikkunoiden pesu"));
    typeText(edit(dialog.get(), "unitCodeEdit"), QStringLiteral("h"));
    replaceText(edit(dialog.get(), "amountEdit"), QStringLiteral("1 234,5"));
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
    expected.category = QStringLiteral("Elintarvikkeet");
    bool found = false;
    QCOMPARE(
        fieldsOf(m_registry->productByNumber(expected.number, found)), RecordFields::of(expected));
}

void TestEditorDialogs::listShowsWhatIsTyped_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("number"); // typed first, when not empty
    QTest::addColumn<int>("nameColumn");
    QTest::addRow("customers") << 0 << "" << int(CustomerTableModel::NameColumn);
    // A number sorts the product among the others as it is typed.
    QTest::addRow("products") << 1 << "1" << int(ProductTableModel::NameColumn);
    QTest::addRow("accounts") << 2 << "" << int(BankAccountTableModel::NameColumn);
}

void TestEditorDialogs::listShowsWhatIsTyped()
{
    QFETCH(int, kind);
    QFETCH(QString, number);
    QFETCH(int, nameColumn);
    QStringList* warnings = nullptr;
    std::unique_ptr<QDialog> dialog = shownKind(m_registry.get(), kind, &warnings);
    const QAbstractItemView* view = dialog->findChild<QAbstractItemView*>();
    click(dialog.get(), "addButton");
    if (!number.isEmpty())
        typeText(edit(dialog.get(), "numberEdit"), number);
    const QString name = QStringLiteral("Åkerlund");
    typeText(edit(dialog.get(), "nameEdit"), name);
    QCOMPARE(view->currentIndex().siblingAtColumn(nameColumn).data().toString(), name);
    QCOMPARE(*warnings, QStringList());
}

void TestEditorDialogs::columnsShowTheirHeaders_data()
{
    cancelLeavesEverythingAlone_data();
}

// At the default size every column is in sight and wide enough for its title.
void TestEditorDialogs::columnsShowTheirHeaders()
{
    QFETCH(int, kind);
    QStringList* warnings = nullptr;
    std::unique_ptr<QDialog> dialog = shownKind(m_registry.get(), kind, &warnings);
    const QHeaderView* header = nullptr;
    for (const QHeaderView* found : dialog->findChildren<QHeaderView*>()) {
        if (found->orientation() == Qt::Horizontal)
            header = found;
    }
    QVERIFY(header);
    for (int column = 0; column < header->count(); ++column) {
        if (header->isSectionHidden(column))
            continue;
        const QString title = header->model()->headerData(column, Qt::Horizontal).toString();
        QVERIFY2(header->sectionSize(column) >= header->sectionSizeHint(column), qPrintable(title));
        QVERIFY2(header->sectionViewportPosition(column) + header->sectionSize(column)
                <= header->viewport()->width(),
            qPrintable(title));
    }
}

QTEST_MAIN(TestEditorDialogs)
#include "tst_editordialogs.moc"
