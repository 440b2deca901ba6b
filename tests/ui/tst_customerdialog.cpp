#include "core/customertablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "ui/customerdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTableView>
#include <QtTest>
#include <memory>

namespace {

// Records the warnings instead of showing message boxes.
class Dialog : public CustomerDialog
{
public:
    using CustomerDialog::CustomerDialog;
    QStringList warnings;

protected:
    void showWarning(const QString& text) override { warnings.append(text); }
};

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

// QTest::keyClicks takes ASCII only; other letters go in as key events
// carrying their text, as a keyboard would send them.
void typeText(QWidget* widget, const QString& text)
{
    for (const QChar c : text) {
        if (c.unicode() < 128)
            QTest::keyClick(widget, char(c.unicode()));
        else
            QTest::sendKeyEvent(QTest::Click, widget, Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
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
    typeText(edit, text);
}

void clickButton(QDialog* dialog, QDialogButtonBox::StandardButton which)
{
    QDialogButtonBox* box = dialog->findChild<QDialogButtonBox*>();
    QTest::mouseClick(box->button(which), Qt::LeftButton);
}

} // namespace

class TestCustomerDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void addCustomer();
    void editCustomerAndPressEnter();
    void cancelLeavesEverythingAlone();
    void invalidVatNumberIsRefused_data();
    void invalidVatNumberIsRefused();
    void validVatNumbersAreAccepted_data();
    void validVatNumbersAreAccepted();
    void duplicateNumberIsRefused();
    void removedCustomerIsHiddenAndMarked();
    void searchFiltersTheList();
    void labelsHaveMnemonics();

private:
    void addStoredCustomer(int number, const QString& name);
    void refreshRegistry();

    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
};

void TestCustomerDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestCustomerDialog::init()
{
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    m_registry = std::make_unique<Registry>();
    m_registry->setDatabase(m_db->database());
    addStoredCustomer(5, QStringLiteral("Kivijalka Oy"));
    addStoredCustomer(2, QStringLiteral("Puutarha Lehtonen"));
    refreshRegistry();
}

void TestCustomerDialog::cleanup()
{
    m_registry.reset();
    m_db.reset();
}

void TestCustomerDialog::addStoredCustomer(int number, const QString& name)
{
    Customer customer;
    customer.number = number;
    customer.name = name;
    customer.townName = QStringLiteral("Lahti");
    customer.setProperty(QStringLiteral("x9"), QStringLiteral("kept"));
    std::unique_ptr<Query> query(m_db->database()->query());
    QVERIFY2(query->saveCustomer(&customer), qPrintable(query->lastError()));
}

void TestCustomerDialog::refreshRegistry()
{
    std::unique_ptr<Query> query(m_db->database()->query());
    QVERIFY(m_registry->fetchCustomers(query.get()));
}

void TestCustomerDialog::addCustomer()
{
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));

    QTest::mouseClick(field<QPushButton>(&dialog, "addButton"), Qt::LeftButton);
    // The next free number is suggested.
    QCOMPARE(field<QLineEdit>(&dialog, "numberEdit")->text(), QStringLiteral("6"));
    typeText(field<QLineEdit>(&dialog, "nameEdit"), QStringLiteral("Åström & Söner Ab"));
    typeText(field<QLineEdit>(&dialog, "streetNameEdit"), QStringLiteral("Kauppatori 1"));
    typeText(field<QLineEdit>(&dialog, "postCodeEdit"), QStringLiteral("65100"));
    typeText(field<QLineEdit>(&dialog, "townNameEdit"), QStringLiteral("Vaasa"));
    typeText(field<QLineEdit>(&dialog, "countryEdit"), QStringLiteral("Suomi"));
    typeText(field<QLineEdit>(&dialog, "contactEdit"), QStringLiteral("Anna Åström"));
    typeText(field<QLineEdit>(&dialog, "vatNumberEdit"), QStringLiteral("FI15728600"));
    typeText(field<QLineEdit>(&dialog, "referenceNumberEdit"), QStringLiteral("1232"));
    typeText(field<QLineEdit>(&dialog, "emailAddressEdit"), QStringLiteral("anna@astrom.fi"));
    typeText(field<QLineEdit>(&dialog, "phoneNumberEdit"), QStringLiteral("06 123 4567"));
    typeText(field<QLineEdit>(&dialog, "paymentTermsEdit"), QStringLiteral("30 päivää netto"));
    QComboBox* language = field<QComboBox>(&dialog, "languageCombo");
    language->setFocus();
    // Empty, fi, sv: two steps down.
    QTest::keyClick(language, Qt::Key_Down);
    QTest::keyClick(language, Qt::Key_Down);
    QCOMPARE(language->currentText(), QStringLiteral("sv - ruotsi"));
    typeText(field<QLineEdit>(&dialog, "custom1Edit"), QStringLiteral("Kanta-asiakas"));
    typeText(field<QLineEdit>(&dialog, "intermediatorEdit"), QStringLiteral("NDEAFIHH"));
    typeText(field<QLineEdit>(&dialog, "receiverEdit"), QStringLiteral("003715728600"));
    typeText(field<QLineEdit>(&dialog, "ediEdit"), QStringLiteral("003715728600100"));
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings, QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const QMap<int, Customer> stored = storedCustomers(m_db->database());
    QCOMPARE(stored.size(), 3);
    const Customer added = stored.value(6);
    QCOMPARE(added.name, QStringLiteral("Åström & Söner Ab"));
    QCOMPARE(added.streetName, QStringLiteral("Kauppatori 1"));
    QCOMPARE(added.postCode, QStringLiteral("65100"));
    QCOMPARE(added.townName, QStringLiteral("Vaasa"));
    QCOMPARE(added.country, QStringLiteral("Suomi"));
    QCOMPARE(added.contact, QStringLiteral("Anna Åström"));
    QCOMPARE(added.vatNumber, QStringLiteral("FI15728600"));
    QCOMPARE(added.referenceNumber, QStringLiteral("1232"));
    QCOMPARE(added.emailAddress, QStringLiteral("anna@astrom.fi"));
    QCOMPARE(added.phoneNumber, QStringLiteral("06 123 4567"));
    QCOMPARE(added.paymentTerms, QStringLiteral("30 päivää netto"));
    QCOMPARE(added.properties.value(QStringLiteral("l")).toString(), QStringLiteral("sv"));
    QCOMPARE(
        added.properties.value(QStringLiteral("c1")).toString(), QStringLiteral("Kanta-asiakas"));
    QCOMPARE(added.properties.value(QStringLiteral("e1")).toString(), QStringLiteral("NDEAFIHH"));
    QCOMPARE(
        added.properties.value(QStringLiteral("e2")).toString(), QStringLiteral("003715728600"));
    QCOMPARE(
        added.properties.value(QStringLiteral("e3")).toString(), QStringLiteral("003715728600100"));
    // Empty fields leave no keys behind.
    QVERIFY(!added.properties.contains(QStringLiteral("c2")));
    QCOMPARE(added.properties.size(), 5);

    QCOMPARE(m_registry->customerCount(), 3);
    bool found = false;
    QCOMPARE(m_registry->customerByNumber(6, found)->name, QStringLiteral("Åström & Söner Ab"));
}

void TestCustomerDialog::editCustomerAndPressEnter()
{
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    bool found = false;
    dialog.setCurrentCustomerId(m_registry->customerByNumber(5, found)->id);
    QCOMPARE(field<QLineEdit>(&dialog, "nameEdit")->text(), QStringLiteral("Kivijalka Oy"));

    replaceText(&dialog, "nameEdit", QStringLiteral("Kivijalka ja Kumpp. Oy"));
    replaceText(&dialog, "townNameEdit", QStringLiteral("Hollola"));
    QTest::keyClick(field<QLineEdit>(&dialog, "townNameEdit"), Qt::Key_Return);

    QCOMPARE(dialog.warnings, QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const QMap<int, Customer> stored = storedCustomers(m_db->database());
    QCOMPARE(stored.value(5).name, QStringLiteral("Kivijalka ja Kumpp. Oy"));
    QCOMPARE(stored.value(5).townName, QStringLiteral("Hollola"));
    // A property the dialog does not show survives the edit.
    QCOMPARE(
        stored.value(5).properties.value(QStringLiteral("x9")).toString(), QStringLiteral("kept"));
    QCOMPARE(stored.value(2).name, QStringLiteral("Puutarha Lehtonen"));
    QCOMPARE(
        m_registry->customerByNumber(5, found)->name, QStringLiteral("Kivijalka ja Kumpp. Oy"));
}

void TestCustomerDialog::cancelLeavesEverythingAlone()
{
    Customer* before = m_registry->customerAt(0);
    const QString name = before->name;
    {
        Dialog dialog(m_registry.get());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dialog));
        replaceText(&dialog, "nameEdit", QStringLiteral("Muutettu"));
        QTest::mouseClick(field<QPushButton>(&dialog, "addButton"), Qt::LeftButton);
        typeText(field<QLineEdit>(&dialog, "nameEdit"), QStringLiteral("Uusi"));
        QTest::mouseClick(field<QPushButton>(&dialog, "removeButton"), Qt::LeftButton);
        clickButton(&dialog, QDialogButtonBox::Cancel);
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }
    QCOMPARE(storedCustomers(m_db->database()).size(), 2);
    QCOMPARE(storedCustomers(m_db->database()).value(before->number).name, name);
    QCOMPARE(m_registry->customerCount(), 2);
    QCOMPARE(m_registry->customerAt(0), before);
    QCOMPARE(before->name, name);
}

void TestCustomerDialog::invalidVatNumberIsRefused_data()
{
    QTest::addColumn<QString>("vatNumber");
    QTest::addRow("wrong check digit") << "1572860-1";
    QTest::addRow("VAT number, wrong check digit") << "FI15728601";
    QTest::addRow("too short") << "157286-0";
    QTest::addRow("other country") << "SE556677889901";
    QTest::addRow("text") << "ei ole";
}

void TestCustomerDialog::invalidVatNumberIsRefused()
{
    QFETCH(QString, vatNumber);
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QLineEdit* edit = field<QLineEdit>(&dialog, "vatNumberEdit");
    typeText(edit, vatNumber);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings, QStringList({ "Y-tunnus tai ALV-numero on virheellinen." }));
    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(dialog.focusWidget(), edit);
    for (const Customer& customer : storedCustomers(m_db->database()))
        QVERIFY(customer.vatNumber.isEmpty());

    // Moving to another customer is refused the same way.
    dialog.warnings.clear();
    QTableView* view = field<QTableView>(&dialog, "customerView");
    const int row = view->currentIndex().row();
    view->setCurrentIndex(view->model()->index(1 - row, 1));
    QCOMPARE(dialog.warnings.size(), 1);
    QCOMPARE(view->currentIndex().row(), row);
}

void TestCustomerDialog::validVatNumbersAreAccepted_data()
{
    QTest::addColumn<QString>("vatNumber");
    QTest::addRow("business id") << "1572860-0";
    QTest::addRow("VAT number") << "FI15728600";
    QTest::addRow("empty") << "";
}

void TestCustomerDialog::validVatNumbersAreAccepted()
{
    QFETCH(QString, vatNumber);
    Dialog dialog(m_registry.get());
    replaceText(&dialog, "vatNumberEdit", vatNumber);
    clickButton(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(dialog.warnings, QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    // The first customer in number order is number 2.
    QCOMPARE(storedCustomers(m_db->database()).value(2).vatNumber, vatNumber);
}

void TestCustomerDialog::duplicateNumberIsRefused()
{
    Dialog dialog(m_registry.get());
    replaceText(&dialog, "numberEdit", QStringLiteral("5"));
    clickButton(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(dialog.warnings, QStringList({ "Asiakasnumero 5 on jo käytössä." }));
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
}

void TestCustomerDialog::removedCustomerIsHiddenAndMarked()
{
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QTableView* view = field<QTableView>(&dialog, "customerView");
    QCOMPARE(view->model()->rowCount(), 2);
    const int removedId = dialog.currentCustomerId();
    QTest::mouseClick(field<QPushButton>(&dialog, "removeButton"), Qt::LeftButton);
    QCOMPARE(view->model()->rowCount(), 1);
    QVERIFY(dialog.currentCustomerId() != removedId);

    QCheckBox* showDeleted = field<QCheckBox>(&dialog, "showDeletedCheck");
    QTest::mouseClick(showDeleted, Qt::LeftButton);
    QCOMPARE(view->model()->rowCount(), 2);
    QTest::mouseClick(showDeleted, Qt::LeftButton);
    QCOMPARE(view->model()->rowCount(), 1);

    clickButton(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const QMap<int, Customer> stored = storedCustomers(m_db->database());
    QCOMPARE(stored.size(), 2);
    int deleted = 0;
    for (const Customer& customer : stored) {
        QCOMPARE(customer.deleted, customer.id == removedId);
        deleted += customer.deleted ? 1 : 0;
    }
    QCOMPARE(deleted, 1);

    // A new dialog hides it by default, and the registry still has it.
    QCOMPARE(m_registry->customerCount(), 2);
    Dialog again(m_registry.get());
    QCOMPARE(field<QTableView>(&again, "customerView")->model()->rowCount(), 1);
}

void TestCustomerDialog::searchFiltersTheList()
{
    Dialog dialog(m_registry.get());
    QTableView* view = field<QTableView>(&dialog, "customerView");
    typeText(field<QLineEdit>(&dialog, "searchEdit"), QStringLiteral("puuta"));
    QCOMPARE(view->model()->rowCount(), 1);
    QCOMPARE(field<QLineEdit>(&dialog, "nameEdit")->text(), QStringLiteral("Puutarha Lehtonen"));
    replaceText(&dialog, "searchEdit", QStringLiteral("lahti"));
    QCOMPARE(view->model()->rowCount(), 2);
    replaceText(&dialog, "searchEdit", QStringLiteral("xyz"));
    QCOMPARE(view->model()->rowCount(), 0);
    QVERIFY(!field<QLineEdit>(&dialog, "nameEdit")->isEnabled());
}

void TestCustomerDialog::labelsHaveMnemonics()
{
    Dialog dialog(m_registry.get());
    const QList<QLabel*> labels = dialog.findChildren<QLabel*>();
    int buddies = 0;
    for (const QLabel* label : labels) {
        if (!label->buddy())
            continue;
        ++buddies;
        QVERIFY2(label->text().contains(u'&'), qPrintable(label->text()));
        QVERIFY2(!label->text().endsWith(u':'), qPrintable(label->text()));
    }
    QCOMPARE(buddies, 19);
}

QTEST_MAIN(TestCustomerDialog)
#include "tst_customerdialog.moc"
