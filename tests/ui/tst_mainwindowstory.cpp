#include "core/invoiceitemtablemodel.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/decimalformat.h"
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
#include <QPointer>
#include <QTableView>
#include <QTimer>
#include <QtTest>

namespace {

// Alt+letter on a button, which clicks a moment later and moves the
// keyboard to the new record's first field.
void pressButton(int letter)
{
    QWidget* before = QApplication::focusWidget();
    press(letter, Qt::AltModifier);
    QTRY_VERIFY(QApplication::focusWidget() != before);
}

void fill(std::initializer_list<std::pair<int, const char*>> fields)
{
    for (const auto& [letter, text] : fields) {
        press(letter, Qt::AltModifier);
        press(Qt::Key_A, Qt::ControlModifier);
        keys(QString::fromUtf8(text));
    }
}

} // namespace

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
    // Opens a dialog with Alt+menuKey and the entry's letter, and runs the
    // keys of steps in it once it is shown.
    void throughMenu(int menuKey, int entryKey, std::function<void(QDialog*)> steps);

    WindowFixture m_f;
};

void TestMainWindowStory::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestMainWindowStory::throughMenu(
    int menuKey, int entryKey, std::function<void(QDialog*)> steps)
{
    bool seen = false;
    auto* timer = new QTimer(this);
    timer->setInterval(20);
    connect(timer, &QTimer::timeout, this, [timer, steps, &seen] {
        auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible())
            return;
        timer->stop();
        timer->deleteLater();
        seen = true;
        dialog->activateWindow();
        QApplication::setActiveWindow(dialog);
        if (!QTest::qWaitForWindowActive(dialog))
            qWarning("the dialog did not get the keyboard");
        steps(dialog);
        if (dialog->isVisible())
            dialog->reject();
    });
    timer->start();
    const QPointer<QTimer> waiting(timer);
    press(menuKey, Qt::AltModifier);
    QTRY_VERIFY(QApplication::activePopupWidget());
    press(entryKey);
    delete waiting.data();
    QVERIFY(seen);
    QVERIFY2(m_f.window()->messages.isEmpty(), qPrintable(m_f.window()->messages.join('\n')));
}

void TestMainWindowStory::firstDayByKeyboard()
{
    QVERIFY(m_f.start(QDate(2024, 4, 2)));
    TestWindow* window = m_f.window();
    window->dialogHandler = [](QDialog* dialog) { return dialog->exec(); };

    throughMenu(Qt::Key_A, Qt::Key_Y, [](QDialog* dialog) {
        QVERIFY(qobject_cast<SettingsDialog*>(dialog));
        fill({ { Qt::Key_N, "Laskuttaja Oy" }, { Qt::Key_L, "Pääkatu 5" }, { Qt::Key_T, "00100" },
            { Qt::Key_A, "Helsinki" }, { Qt::Key_Y, "1234567-1" } });
        // The invoicing page: 21 days instead of 14.
        press(Qt::Key_Tab, Qt::ControlModifier);
        fill({ { Qt::Key_M, "21 päivää netto" } });
        press(Qt::Key_Return);
    });

    throughMenu(Qt::Key_A, Qt::Key_A, [](QDialog* dialog) {
        QVERIFY(qobject_cast<CustomerDialog*>(dialog));
        pressButton(Qt::Key_U);
        keys(QStringLiteral("Virtanen Oy"));
        fill({ { Qt::Key_L, "Kauppakatu 1" }, { Qt::Key_T, "33100" }, { Qt::Key_A, "Tampere" } });
        press(Qt::Key_Return);
    });

    // Two products at the general VAT rate that new products start with: an
    // hour of work without VAT and a disk with VAT.
    throughMenu(Qt::Key_A, Qt::Key_T, [](QDialog* dialog) {
        QVERIFY(qobject_cast<ProductDialog*>(dialog));
        pressButton(Qt::Key_U);
        keys(QStringLiteral("10"));
        fill({ { Qt::Key_I, "Suunnittelu" }, { Qt::Key_Y, "h" }, { Qt::Key_H, "80" } });
        pressButton(Qt::Key_U);
        keys(QStringLiteral("20"));
        fill({ { Qt::Key_I, "Kiintolevy" }, { Qt::Key_Y, "kpl" }, { Qt::Key_H, "125.50" } });
        press(Qt::Key_Tab);
        press(Qt::Key_Up);
        press(Qt::Key_Return);
    });
    throughMenu(Qt::Key_A, Qt::Key_P, [](QDialog* dialog) {
        QVERIFY(qobject_cast<BankAccountDialog*>(dialog));
        pressButton(Qt::Key_U);
        keys(QStringLiteral("Osuuspankki"));
        fill({ { Qt::Key_I, "FI21 1234 5600 0007 85" }, { Qt::Key_B, "OKOYFIHH" } });
        press(Qt::Key_Return);
    });

    // The invoice: F7 takes the new settings.
    press(Qt::Key_F7);
    QCOMPARE(m_f.text("dueDateEdit"), QStringLiteral("23.4.2024"));
    press(Qt::Key_K, Qt::AltModifier);
    keys(QStringLiteral("virta"));
    press(Qt::Key_Tab);
    QTableView* rows = window->invoiceItemTableView();
    for (const auto& [product, quantity] : { std::pair("10", "7.5"), { "20", "2" } }) {
        press(Qt::Key_F8);
        keys(QLatin1String(product));
        // One Return takes the only product that the list offers.
        press(Qt::Key_Return);
        // The keyboard goes back to the table once the cell is written.
        QTRY_COMPARE(keyTarget(), static_cast<QWidget*>(rows));
        press(Qt::Key_Right);
        press(Qt::Key_Right);
        keys(QLatin1String(quantity));
        press(Qt::Key_Return);
        QTRY_COMPARE(keyTarget(), static_cast<QWidget*>(rows));
    }
    press(Qt::Key_S, Qt::ControlModifier);
    QVERIFY2(window->messages.isEmpty(), qPrintable(window->messages.join('\n')));
    QCOMPARE(m_f.storedInvoiceCount(), 1);

    // 7,5 h x 80,00 + 25,5 % = 753,00 and 2 x 125,50 = 251,00 with VAT.
    const DecimalFormat money(2, 2);
    const QStringList amounts = { money.format(75300 + 25100), money.format(60000 + 20000) };
    auto shownAmounts = [this] {
        return QStringList({ m_f.widget<QLabel>("totalLabel")->text(),
            m_f.widget<QLabel>("vatExcludedLabel")->text() });
    };
    QCOMPARE(shownAmounts(), amounts);

    // Closing saves nothing new and asks nothing; the next start finds
    // everything as it was.
    QVERIFY(window->close());
    QVERIFY(m_f.restart(QDate(2024, 4, 3)));
    QCOMPARE(m_f.widget<QComboBox>("customerCombo")->currentText(), QStringLiteral("Virtanen Oy"));
    QCOMPARE(m_f.text("dueDateEdit"), QStringLiteral("23.4.2024"));
    QCOMPARE(m_f.window()->model()->invoiceItemTableModel()->rowCount(), 2);
    QCOMPARE(shownAmounts(), amounts);
    QCOMPARE(m_f.registry()->settings()->sellerBusinessId, QStringLiteral("1234567-1"));
}

QTEST_MAIN(TestMainWindowStory)
#include "tst_mainwindowstory.moc"
