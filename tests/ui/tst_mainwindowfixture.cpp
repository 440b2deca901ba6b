#include "tst_mainwindowfixture.h"

#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/product.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTableView>
#include <QtTest>

WindowFixture::WindowFixture() = default;
WindowFixture::~WindowFixture() = default;

bool WindowFixture::start(const QDate& today)
{
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(configFile());
    m_window = std::make_unique<TestWindow>(m_registry.get());
    m_window->model()->setToday(today);
    m_window->show();
    m_window->activateWindow();
    QApplication::setActiveWindow(m_window.get());
    if (!QTest::qWaitForWindowActive(m_window.get()))
        return false;
    return m_window->openDatabase(-1);
}

bool WindowFixture::restart(const QDate& today)
{
    stop();
    return start(today);
}

void WindowFixture::stop()
{
    m_window.reset();
    m_registry.reset();
}

Database* WindowFixture::database() const
{
    return m_registry ? m_registry->database() : nullptr;
}

QString WindowFixture::text(const char* lineEditName) const
{
    return widget<QLineEdit>(lineEditName)->text();
}

namespace {

template<typename T>
int saved(Database* database, T& record, bool (Query::*save)(T*))
{
    std::unique_ptr<Query> query(database->query());
    if (!(query.get()->*save)(&record))
        qWarning("%s", qPrintable(query->lastError()));
    return record.id;
}

} // namespace

int WindowFixture::addCustomer(
    const QString& name, const QString& paymentTerms, const QString& referenceNumber)
{
    static int number = 100;
    Customer customer;
    customer.number = ++number;
    customer.name = name;
    customer.paymentTerms = paymentTerms;
    customer.referenceNumber = referenceNumber;
    return saved(database(), customer, &Query::saveCustomer);
}

int WindowFixture::addProduct(const QString& number, const QString& name, const QString& unit,
    long long amount, int vatRate, bool vatExcluded)
{
    Product product;
    product.number = number;
    product.name = name;
    product.unitCode = unit;
    product.amount = amount;
    product.vatRate = vatRate;
    product.vatExcluded = vatExcluded;
    return saved(database(), product, &Query::saveProduct);
}

int WindowFixture::addInvoice(int number, int customerId, const QDate& date, const QDate& dueDate,
    int totalAmount, int balance)
{
    Invoice invoice;
    invoice.number = number;
    invoice.customerId = customerId;
    invoice.date = date;
    invoice.dueDate = dueDate;
    invoice.totalAmount = totalAmount;
    invoice.balance = balance;
    invoice.referenceNumber = withCheckDigit(QString::number(number) + QStringLiteral("00"));
    return saved(database(), invoice, &Query::saveInvoice);
}

QVariant WindowFixture::storedValue(const QString& sql) const
{
    QSqlQuery query(QSqlDatabase::database(database()->connectionName()));
    if (!query.exec(sql) || !query.next())
        return QVariant();
    return query.value(0);
}

int WindowFixture::storedInvoiceCount() const
{
    return storedValue(QStringLiteral("SELECT count(*) FROM invoice")).toInt();
}

void addFieldColumns()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("warning");
}

QString withCheckDigit(const QString& base)
{
    static const int weights[] = { 7, 3, 1 };
    int sum = 0;
    for (int i = 0; i < base.size(); ++i)
        sum += base.at(base.size() - 1 - i).digitValue() * weights[i % 3];
    return base + QString::number((10 - sum % 10) % 10);
}

QStringList tableRows(Database* database, const QString& table)
{
    QStringList rows;
    QSqlQuery query(QSqlDatabase::database(database->connectionName()));
    if (!query.exec(QStringLiteral("SELECT * FROM %1 ORDER BY id").arg(table)))
        return { query.lastError().text() };
    while (query.next()) {
        QStringList columns;
        for (int i = 0; i < query.record().count(); ++i)
            columns.append(query.value(i).toString());
        rows.append(columns.join(u'|'));
    }
    return rows;
}

QWidget* keyTarget(QWidget* widget)
{
    if (QWidget* popup = QApplication::activePopupWidget()) {
        // A list just opened has the keyboard once the window system has
        // activated it; a key sent before that would be overtaken by the
        // activation.
        if (!QTest::qWaitForWindowActive(popup->windowHandle()))
            qWarning("the list did not get the keyboard");
        return popup;
    }
    // The offscreen platform can leave a closed popup as the active window
    // where a desktop would give the activation back to the window below.
    QWidget* active = QApplication::activeWindow();
    if (!active || !active->isVisible()) {
        QWidget* target = QApplication::activeModalWidget();
        const QList<QWidget*> windows = QApplication::topLevelWidgets();
        for (QWidget* window : windows) {
            if (!target && qobject_cast<MainWindow*>(window) && window->isVisible())
                target = window;
        }
        if (target) {
            target->activateWindow();
            QApplication::setActiveWindow(target);
        }
    }
    return widget ? widget : QApplication::focusWidget();
}

void press(int key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(keyTarget(), Qt::Key(key), modifiers);
}

void typeText(QWidget* widget, const QString& text)
{
    for (const QChar c : text) {
        QWidget* target = widget ? widget : keyTarget();
        if (c.unicode() < 128)
            QTest::keyClick(target, char(c.unicode()));
        else
            QTest::sendKeyEvent(QTest::Click, target, Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
}

void keys(const QString& text)
{
    typeText(nullptr, text);
}

void replaceText(QLineEdit* edit, const QString& text)
{
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Backspace);
    typeText(edit, text);
}

void clickButton(QDialog* dialog, QDialogButtonBox::StandardButton which)
{
    QTest::mouseClick(dialog->findChild<QDialogButtonBox*>()->button(which), Qt::LeftButton);
}

bool editing(QAbstractItemView* view)
{
    QWidget* focus = QApplication::focusWidget();
    return focus && focus != view && view->isAncestorOf(focus);
}

void commitEditor(QAbstractItemView* view)
{
    QVERIFY(editing(view));
    const bool completions = QApplication::activePopupWidget();
    press(Qt::Key_Return);
    // With several completions left the first Return only closed the list.
    if (completions && editing(view))
        press(Qt::Key_Return);
    QTRY_VERIFY(!editing(view));
}

void chooseCustomer(QComboBox* combo, const QString& name)
{
    combo->setFocus();
    combo->lineEdit()->selectAll();
    QTest::keyClick(combo->lineEdit(), Qt::Key_Backspace);
    typeText(combo->lineEdit(), name);
    // Leaving the field confirms the name.
    QTest::keyClick(keyTarget(combo->lineEdit()), Qt::Key_Tab);
}

QStringList shownColumn(MainWindow* window, int column)
{
    QStringList result;
    const QAbstractItemModel* model = window->invoiceTableView()->model();
    for (int row = 0; row < model->rowCount(); ++row)
        result.append(model->index(row, column).data().toString());
    return result;
}
