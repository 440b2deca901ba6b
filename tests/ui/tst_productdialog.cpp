#include "core/producttablemodel.h"
#include "core/producttreemodel.h"
#include "core/registry.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "ui/productdialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTreeView>
#include <QtTest>
#include <memory>

namespace {

// Records the warnings instead of showing message boxes.
class Dialog : public ProductDialog
{
public:
    using ProductDialog::ProductDialog;
    QStringList warnings;

protected:
    void showWarning(const QString& text) override { warnings.append(text); }
};

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

class TestProductDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void addProduct_data();
    void addProduct();
    void badNumbersAreRefused_data();
    void badNumbersAreRefused();
    void editProductAndRegroup();
    void removeProduct();
    void cancelLeavesEverythingAlone();

private:
    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
};

void TestProductDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestProductDialog::init()
{
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite);
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    m_registry = std::make_unique<Registry>();
    m_registry->setDatabase(m_db->database());
    Product coffee;
    coffee.number = QStringLiteral("10");
    coffee.name = QStringLiteral("Kahvi");
    coffee.unitCode = QStringLiteral("kg");
    coffee.amount = 129000;
    coffee.vatRate = 1400;
    coffee.category = QStringLiteral("Elintarvikkeet");
    std::unique_ptr<Query> query(m_db->database()->query());
    QVERIFY(query->saveProduct(&coffee));
    QVERIFY(m_registry->fetchProducts(query.get()));
    // The new database's interest product and the coffee.
    QCOMPARE(m_registry->productCount(), 2);
}

void TestProductDialog::cleanup()
{
    m_registry.reset();
    m_db.reset();
}

void TestProductDialog::addProduct_data()
{
    QTest::addColumn<QString>("price");
    QTest::addColumn<bool>("vatExcluded");
    QTest::addColumn<QString>("rate");
    QTest::addColumn<qlonglong>("amount");
    QTest::addColumn<int>("vatRate");
    QTest::addRow("comma") << "42,50" << true << "25,5" << 425000LL << 2550;
    QTest::addRow("point") << "42.5" << false << "25.5" << 425000LL << 2550;
    QTest::addRow("thousands") << "1 234,5" << true << "24" << 12345000LL << 2400;
    QTest::addRow("smallest") << "0,0001" << false << "0" << 1LL << 0;
    QTest::addRow("no integer part") << ",99" << false << "10" << 9900LL << 1000;
    QTest::addRow("negative") << "-15" << true << "14" << -150000LL << 1400;
    QTest::addRow("largest") << "214747,99" << true << "100" << 2147479900LL << 10000;
}

void TestProductDialog::addProduct()
{
    QFETCH(QString, price);
    QFETCH(bool, vatExcluded);
    QFETCH(QString, rate);
    QFETCH(qlonglong, amount);
    QFETCH(int, vatRate);

    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QTest::mouseClick(field<QPushButton>(&dialog, "addButton"), Qt::LeftButton);
    QCOMPARE(dialog.focusWidget(), field<QLineEdit>(&dialog, "numberEdit"));
    typeText(field<QLineEdit>(&dialog, "numberEdit"), QStringLiteral("200"));
    typeText(field<QLineEdit>(&dialog, "nameEdit"), QStringLiteral("Ikkunoiden pesu"));
    replaceText(&dialog, "unitCodeEdit", QStringLiteral("h"));
    replaceText(&dialog, "amountEdit", price);
    QComboBox* mode = field<QComboBox>(&dialog, "vatModeCombo");
    mode->setFocus();
    QTest::keyClick(mode, vatExcluded ? Qt::Key_End : Qt::Key_Home);
    QCOMPARE(mode->currentText(), vatExcluded ? QStringLiteral("Veroton") : "Verollinen");
    replaceText(&dialog, "vatRateEdit", rate);
    QComboBox* category = field<QComboBox>(&dialog, "categoryCombo");
    category->lineEdit()->selectAll();
    typeText(category->lineEdit(), QStringLiteral("Palvelut"));
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings, QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const QMap<QString, Product> stored = storedProducts(m_db->database());
    QCOMPARE(stored.size(), 3);
    const Product product = stored.value(QStringLiteral("200"));
    QCOMPARE(product.name, QStringLiteral("Ikkunoiden pesu"));
    QCOMPARE(product.unitCode, QStringLiteral("h"));
    QCOMPARE(product.amount, amount);
    QCOMPARE(product.vatExcluded, vatExcluded);
    QCOMPARE(product.vatRate, vatRate);
    QCOMPARE(product.category, QStringLiteral("Palvelut"));
    QCOMPARE(m_registry->productCount(), 3);
}

void TestProductDialog::badNumbersAreRefused_data()
{
    QTest::addColumn<QString>("fieldName");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    const QString price = QStringLiteral("Hinta on virheellinen.");
    const QString rate = QStringLiteral("ALV-prosentti on virheellinen.");
    QTest::addRow("price with two commas") << "amountEdit"
                                           << "12,3,4" << price;
    QTest::addRow("price as words") << "amountEdit"
                                    << "kymppi" << price;
    QTest::addRow("price too large") << "amountEdit"
                                     << "214749" << price;
    QTest::addRow("price empty") << "amountEdit"
                                 << "" << price;
    QTest::addRow("price with currency") << "amountEdit"
                                         << "12 €" << price;
    QTest::addRow("rate over 100") << "vatRateEdit"
                                   << "100,01" << rate;
    QTest::addRow("rate negative") << "vatRateEdit"
                                   << "-1" << rate;
    QTest::addRow("rate with percent sign") << "vatRateEdit"
                                            << "24 %" << rate;
    QTest::addRow("no number") << "numberEdit"
                               << ""
                               << "Tuotenumero puuttuu.";
    QTest::addRow("number in use") << "numberEdit"
                                   << "999"
                                   << "Tuotenumero 999 on jo käytössä.";
}

void TestProductDialog::badNumbersAreRefused()
{
    QFETCH(QString, fieldName);
    QFETCH(QString, text);
    QFETCH(QString, message);

    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    // The coffee is shown first (its category sorts before "Muut tuotteet").
    QCOMPARE(field<QLineEdit>(&dialog, "nameEdit")->text(), QStringLiteral("Kahvi"));
    QCOMPARE(field<QLineEdit>(&dialog, "amountEdit")->text().remove(u'.').remove(u','),
        QStringLiteral("1290"));
    replaceText(&dialog, qPrintable(fieldName), text);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings, QStringList({ message }));
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(dialog.focusWidget(), field<QLineEdit>(&dialog, qPrintable(fieldName)));
    const Product coffee = storedProducts(m_db->database()).value(QStringLiteral("10"));
    QCOMPARE(coffee.amount, 129000LL);
    QCOMPARE(coffee.vatRate, 1400);
}

void TestProductDialog::editProductAndRegroup()
{
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    ProductTreeModel* tree = dialog.treeModel();
    QCOMPARE(tree->rowCount(), 2);
    QCOMPARE(tree->index(0, 0).data().toString(), QStringLiteral("Elintarvikkeet"));
    QCOMPARE(tree->index(1, 0).data().toString(), QStringLiteral("Muut tuotteet"));

    // Give the coffee a category of its own, then go to the interest product.
    QComboBox* category = field<QComboBox>(&dialog, "categoryCombo");
    category->lineEdit()->selectAll();
    typeText(category->lineEdit(), QStringLiteral("Juomat"));
    replaceText(&dialog, "amountEdit", QStringLiteral("13,90"));
    const int interestRow = dialog.model()->rowOfNumber(QStringLiteral("999"));
    dialog.selectRow(interestRow);
    QCOMPARE(dialog.currentRow(), interestRow);
    QCOMPARE(field<QLineEdit>(&dialog, "nameEdit")->text(), QStringLiteral("Viivästyskorko"));
    QCOMPARE(tree->index(0, 0).data().toString(), QStringLiteral("Juomat"));
    replaceText(&dialog, "nameEdit", QStringLiteral("Viivästyskorko 8 %"));
    QTest::keyClick(field<QLineEdit>(&dialog, "nameEdit"), Qt::Key_Return);

    QCOMPARE(dialog.warnings, QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const QMap<QString, Product> stored = storedProducts(m_db->database());
    QCOMPARE(stored.value(QStringLiteral("10")).category, QStringLiteral("Juomat"));
    QCOMPARE(stored.value(QStringLiteral("10")).amount, 139000LL);
    QCOMPARE(stored.value(QStringLiteral("999")).name, QStringLiteral("Viivästyskorko 8 %"));
}

void TestProductDialog::removeProduct()
{
    Dialog dialog(m_registry.get());
    const int coffeeId = m_registry->productAt(0)->number == QLatin1String("10")
        ? m_registry->productAt(0)->id
        : m_registry->productAt(1)->id;
    dialog.selectRow(dialog.model()->rowOfId(coffeeId));
    QTest::mouseClick(field<QPushButton>(&dialog, "removeButton"), Qt::LeftButton);
    QCOMPARE(dialog.model()->rowCount(), 1);
    QCOMPARE(field<QLineEdit>(&dialog, "nameEdit")->text(), QStringLiteral("Viivästyskorko"));
    clickButton(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(storedProducts(m_db->database()).keys(), QStringList({ "999" }));
    QCOMPARE(m_db->value(QStringLiteral("SELECT COUNT(*) FROM product WHERE id = %1").arg(coffeeId))
                 .toInt(),
        0);
    QCOMPARE(m_registry->productCount(), 1);
}

void TestProductDialog::cancelLeavesEverythingAlone()
{
    Product* first = m_registry->productAt(0);
    const QString name = first->name;
    {
        Dialog dialog(m_registry.get());
        replaceText(&dialog, "nameEdit", QStringLiteral("Muutettu"));
        QTest::mouseClick(field<QPushButton>(&dialog, "addButton"), Qt::LeftButton);
        typeText(field<QLineEdit>(&dialog, "numberEdit"), QStringLiteral("300"));
        QTest::mouseClick(field<QPushButton>(&dialog, "removeButton"), Qt::LeftButton);
        QTest::mouseClick(field<QPushButton>(&dialog, "removeButton"), Qt::LeftButton);
        clickButton(&dialog, QDialogButtonBox::Cancel);
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
    }
    QCOMPARE(storedProducts(m_db->database()).keys(), QStringList({ "10", "999" }));
    QCOMPARE(m_registry->productCount(), 2);
    QCOMPARE(m_registry->productAt(0), first);
    QCOMPARE(first->name, name);
}

QTEST_MAIN(TestProductDialog)
#include "tst_productdialog.moc"
