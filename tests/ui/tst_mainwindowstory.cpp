#include "core/invoiceitemtablemodel.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/decimalformat.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "tst_mainwindowfixture.h"
#include "ui/bankaccountdialog.h"
#include "ui/customerdialog.h"
#include "ui/productdialog.h"
#include "ui/settingsdialog.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QtTest>

// One bookkeeper's first day, by keyboard only: a new database, the company
// settings, a customer, two products and a bank account through the menus,
// an invoice of two rows, and the program started again.
class TestMainWindowStory : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void firstDayByKeyboard();

private:
    // Keys to whatever has the keyboard.
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void type(const QString& text);
    // The keys for the dialog that the next command opens; run once it is
    // shown, inside its event loop.
    void whenDialogOpens(std::function<void(QDialog*)> steps);
    // Opens a menu with Alt+menuKey and chooses an entry with its letter.
    void menu(int menuKey, int entryKey);
    void waitUntilEditorCloses(QTableView* view);
    // Alt+letter on a button. Where two widgets of a dialog share the
    // letter, Alt+letter only moves the focus between them; once the
    // button has it, Space presses it.
    void pressButton(QDialog* dialog, const QString& text, int letter);

    WindowFixture m_f;
    bool m_dialogSeen = false;
};

void TestMainWindowStory::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_f.isValid());
}

void TestMainWindowStory::key(int key, Qt::KeyboardModifiers modifiers)
{
    QWidget* target = keyTarget();
    QVERIFY2(target, "nothing has the keyboard");
    QTest::keyClick(target, Qt::Key(key), modifiers);
}

void TestMainWindowStory::type(const QString& text)
{
    for (const QChar c : text) {
        QWidget* target = keyTarget();
        QVERIFY2(target, "nothing has the keyboard");
        if (c.unicode() < 128)
            QTest::keyClick(target, char(c.unicode()));
        else
            QTest::sendKeyEvent(QTest::Click, target, Qt::Key_unknown, QString(c), Qt::NoModifier);
    }
}

void TestMainWindowStory::whenDialogOpens(std::function<void(QDialog*)> steps)
{
    m_dialogSeen = false;
    auto* timer = new QTimer(this);
    timer->setInterval(20);
    connect(timer, &QTimer::timeout, this, [this, timer, steps] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        timer->stop();
        timer->deleteLater();
        m_dialogSeen = true;
        dialog->activateWindow();
        QApplication::setActiveWindow(dialog);
        if (!QTest::qWaitForWindowActive(dialog))
            qWarning("the dialog did not get the keyboard");
        steps(dialog);
        // Whatever the steps did, never leave a dialog hanging.
        if (dialog->isVisible()) {
            qWarning("%s left open", dialog->metaObject()->className());
            dialog->reject();
        }
    });
    timer->start();
}

void TestMainWindowStory::menu(int menuKey, int entryKey)
{
    key(menuKey, Qt::AltModifier);
    QTRY_VERIFY(QApplication::activePopupWidget());
    key(entryKey);
}

void TestMainWindowStory::waitUntilEditorCloses(QTableView* view)
{
    // The keyboard goes back to the table once the cell is written.
    QTRY_COMPARE(keyTarget(), static_cast<QWidget*>(view));
}

void TestMainWindowStory::pressButton(QDialog* dialog, const QString& text, int letter)
{
    QPushButton* button = nullptr;
    const QList<QPushButton*> buttons = dialog->findChildren<QPushButton*>();
    for (QPushButton* candidate : buttons) {
        if (candidate->text() == text)
            button = candidate;
    }
    QVERIFY2(button, qPrintable(text));
    bool pressed = false;
    connect(button, &QPushButton::clicked, this, [&pressed] { pressed = true; });
    // A button pressed by its letter goes down and clicks a moment later.
    for (int attempt = 0; attempt < 3 && !pressed; ++attempt) {
        if (QApplication::focusWidget() == button)
            key(Qt::Key_Space);
        else
            key(letter, Qt::AltModifier);
        QTest::qWait(150);
    }
    disconnect(button, &QPushButton::clicked, this, nullptr);
    QVERIFY2(pressed, qPrintable(text));
}

void TestMainWindowStory::firstDayByKeyboard()
{
    // A new configuration: the program makes a database and a new invoice.
    QVERIFY(m_f.start(QDate(2024, 4, 2)));
    TestWindow* window = m_f.window();
    window->dialogHandler = [](QDialog* dialog) { return dialog->exec(); };
    QVERIFY(window->hasInvoice());
    QCOMPARE(m_f.storedInvoiceCount(), 0);

    // Company settings: Asetukset > Yrityksen tiedot.
    whenDialogOpens([this](QDialog* dialog) {
        QVERIFY(qobject_cast<SettingsDialog*>(dialog));
        key(Qt::Key_N, Qt::AltModifier);
        type(QStringLiteral("Laskuttaja Oy"));
        key(Qt::Key_L, Qt::AltModifier);
        type(QStringLiteral("Pääkatu 5"));
        key(Qt::Key_T, Qt::AltModifier);
        type(QStringLiteral("00100"));
        key(Qt::Key_A, Qt::AltModifier);
        type(QStringLiteral("Helsinki"));
        key(Qt::Key_Y, Qt::AltModifier);
        type(QStringLiteral("1234567-1"));
        // The invoicing page: 21 days instead of 14.
        key(Qt::Key_Tab, Qt::ControlModifier);
        key(Qt::Key_M, Qt::AltModifier);
        key(Qt::Key_A, Qt::ControlModifier);
        type(QStringLiteral("21 päivää netto"));
        key(Qt::Key_Return);
    });
    menu(Qt::Key_A, Qt::Key_Y);
    QVERIFY(m_dialogSeen);
    QVERIFY2(window->messages.isEmpty(), qPrintable(window->messages.join('\n')));
    QCOMPARE(m_f.registry()->settings()->sellerName, QStringLiteral("Laskuttaja Oy"));

    // A customer: Asetukset > Asiakkaat.
    whenDialogOpens([this](QDialog* dialog) {
        QVERIFY(qobject_cast<CustomerDialog*>(dialog));
        pressButton(dialog, QStringLiteral("&Uusi asiakas"), Qt::Key_U);
        type(QStringLiteral("Virtanen Oy"));
        key(Qt::Key_L, Qt::AltModifier);
        type(QStringLiteral("Kauppakatu 1"));
        key(Qt::Key_T, Qt::AltModifier);
        type(QStringLiteral("33100"));
        key(Qt::Key_A, Qt::AltModifier);
        type(QStringLiteral("Tampere"));
        key(Qt::Key_Return);
    });
    menu(Qt::Key_A, Qt::Key_A);
    QVERIFY(m_dialogSeen);
    QCOMPARE(m_f.registry()->customerCount(), 1);

    // Two products: an hour of work without VAT and a disk with VAT.
    whenDialogOpens([this](QDialog* dialog) {
        QVERIFY(qobject_cast<ProductDialog*>(dialog));
        pressButton(dialog, QStringLiteral("&Uusi tuote"), Qt::Key_U);
        type(QStringLiteral("10"));
        key(Qt::Key_I, Qt::AltModifier);
        type(QStringLiteral("Suunnittelu"));
        key(Qt::Key_Y, Qt::AltModifier);
        type(QStringLiteral("h"));
        key(Qt::Key_H, Qt::AltModifier);
        type(QStringLiteral("80"));
        key(Qt::Key_Tab);
        // The price type: without VAT.
        key(Qt::Key_Down);
        key(Qt::Key_A, Qt::AltModifier);
        key(Qt::Key_A, Qt::ControlModifier);
        type(QStringLiteral("25.5"));

        pressButton(dialog, QStringLiteral("&Uusi tuote"), Qt::Key_U);
        type(QStringLiteral("20"));
        key(Qt::Key_I, Qt::AltModifier);
        type(QStringLiteral("Kiintolevy"));
        key(Qt::Key_Y, Qt::AltModifier);
        key(Qt::Key_A, Qt::ControlModifier);
        type(QStringLiteral("kpl"));
        key(Qt::Key_H, Qt::AltModifier);
        type(QStringLiteral("125.50"));
        key(Qt::Key_Tab);
        key(Qt::Key_Up);
        key(Qt::Key_Return);
    });
    menu(Qt::Key_A, Qt::Key_T);
    QVERIFY(m_dialogSeen);
    bool found = false;
    const Product* work = m_f.registry()->productByNumber(QStringLiteral("10"), found);
    QVERIFY(found);
    QCOMPARE(work->amount, 800000);
    QVERIFY(work->vatExcluded);
    QCOMPARE(work->vatRate, 2550);
    const Product* disk = m_f.registry()->productByNumber(QStringLiteral("20"), found);
    QVERIFY(found);
    QCOMPARE(disk->amount, 1255000);
    QVERIFY(!disk->vatExcluded);
    QCOMPARE(disk->vatRate, 2550);

    // A bank account.
    whenDialogOpens([this](QDialog* dialog) {
        QVERIFY(qobject_cast<BankAccountDialog*>(dialog));
        pressButton(dialog, QStringLiteral("&Uusi tili"), Qt::Key_U);
        type(QStringLiteral("Osuuspankki"));
        key(Qt::Key_I, Qt::AltModifier);
        type(QStringLiteral("FI21 1234 5600 0007 85"));
        key(Qt::Key_B, Qt::AltModifier);
        type(QStringLiteral("OKOYFIHH"));
        key(Qt::Key_Return);
    });
    menu(Qt::Key_A, Qt::Key_P);
    QVERIFY(m_dialogSeen);
    QCOMPARE(m_f.registry()->bankAccountCount(), 1);
    QVERIFY2(window->messages.isEmpty(), qPrintable(window->messages.join('\n')));

    // The invoice: F7 takes the new settings.
    key(Qt::Key_F7);
    QLineEdit* dueDate = m_f.widget<QLineEdit>("dueDateEdit");
    QCOMPARE(dueDate->text(), QStringLiteral("23.4.2024"));
    key(Qt::Key_K, Qt::AltModifier);
    type(QStringLiteral("virta"));
    key(Qt::Key_Tab);
    QCOMPARE(m_f.widget<QComboBox>("customerCombo")->currentText(), QStringLiteral("Virtanen Oy"));

    QTableView* rows = window->invoiceItemTableView();
    const struct
    {
        const char* product;
        const char* quantity;
    } lines[] = { { "10", "7.5" }, { "20", "2" } };
    for (const auto& line : lines) {
        key(Qt::Key_F8);
        type(QLatin1String(line.product));
        // The first Return closes the list of matching products.
        const bool completions = QApplication::activePopupWidget();
        key(Qt::Key_Return);
        if (completions) {
            // Let the window have the keyboard back first.
            QTest::qWait(20);
            key(Qt::Key_Return);
        }
        waitUntilEditorCloses(rows);
        key(Qt::Key_Right);
        key(Qt::Key_Right);
        type(QLatin1String(line.quantity));
        key(Qt::Key_Return);
        waitUntilEditorCloses(rows);
    }
    key(Qt::Key_S, Qt::ControlModifier);
    QVERIFY2(window->messages.isEmpty(), qPrintable(window->messages.join('\n')));
    QCOMPARE(m_f.storedInvoiceCount(), 1);

    // 7,5 h x 80,00 + 25,5 % = 753,00 and 2 x 125,50 = 251,00 with VAT.
    const DecimalFormat money(2, 2);
    const QString total = money.format(75300 + 25100);
    const QString vatExcluded = money.format(60000 + 20000);
    QCOMPARE(m_f.widget<QLabel>("totalLabel")->text(), total);
    QCOMPARE(m_f.widget<QLabel>("vatExcludedLabel")->text(), vatExcluded);

    // Closing saves nothing new and asks nothing; the next start finds
    // everything as it was.
    QVERIFY(window->close());
    QVERIFY(m_f.restart(QDate(2024, 4, 3)));
    window = m_f.window();
    QVERIFY(window->hasInvoice());
    QCOMPARE(window->model()->invoice()->number, 1);
    QCOMPARE(m_f.widget<QComboBox>("customerCombo")->currentText(), QStringLiteral("Virtanen Oy"));
    QCOMPARE(m_f.widget<QLineEdit>("dueDateEdit")->text(), QStringLiteral("23.4.2024"));
    QCOMPARE(window->model()->invoiceItemTableModel()->rowCount(), 2);
    QCOMPARE(m_f.widget<QLabel>("totalLabel")->text(), total);
    QCOMPARE(m_f.widget<QLabel>("vatExcludedLabel")->text(), vatExcluded);
    QCOMPARE(shownColumn(window, InvoiceTableModel::TotalAmountColumn), QStringList { total });
    QCOMPARE(m_f.registry()->settings()->sellerName, QStringLiteral("Laskuttaja Oy"));
    QCOMPARE(m_f.registry()->settings()->sellerBusinessId, QStringLiteral("1234567-1"));
    QCOMPARE(QString(m_f.registry()->bankAccountAt(0)->iban).remove(QLatin1Char(' ')),
        QStringLiteral("FI2112345600000785"));
    QCOMPARE(window->windowTitle(), QStringLiteral("laskutus - Veklari"));
}

QTEST_MAIN(TestMainWindowStory)
#include "tst_mainwindowstory.moc"
