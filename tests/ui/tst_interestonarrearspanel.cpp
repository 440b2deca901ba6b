#include "core/interestonarrearstablemodel.h"
#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/invoiceitem.h"
#include "domain/invoicetype.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "tst_mainwindowfixture.h"
#include "ui/interestonarrearspanel.h"
#include "ui/settingsdialog.h"

#include <QDockWidget>
#include <QPushButton>
#include <QTableView>
#include <QtTest>

class TestInterestOnArrearsPanel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init();
    void cleanup() { m_f.reset(); }

    void collectAndCreateInterestInvoice();
    void missingProductOpensItsSettings();

private:
    TestWindow* window() const { return m_f->window(); }
    InterestOnArrearsTableModel* table() const { return window()->model()->interestTableModel(); }
    void click(const char* button);
    void show(int number);

    std::unique_ptr<WindowFixture> m_f;
    int m_first = -1;
    int m_second = -1;
};

void TestInterestOnArrearsPanel::init()
{
    m_f = std::make_unique<WindowFixture>();
    // Today 15.3.2024; invoices 1 and 2 were due 30 days ago, 3 is due later.
    QVERIFY(m_f->start());
    m_first = m_f->addCustomer(QStringLiteral("Aalto Oy"), QStringLiteral("21 päivää netto"));
    m_second = m_f->addCustomer(QStringLiteral("Berg Ky"));
    const QDate due(2024, 2, 14);
    m_f->addInvoice(1, m_first, due.addDays(-14), due, 36500, 36500);
    m_f->addInvoice(2, m_second, due.addDays(-14), due, 73000, 73000);
    m_f->addInvoice(3, m_first, due.addDays(-14), due, 100000, 100000);
    m_f->refresh();
    m_f->action("interestAction")->trigger();
    QVERIFY(window()->findChild<QDockWidget*>(QStringLiteral("interestDock"))->isVisible());
}

void TestInterestOnArrearsPanel::click(const char* button)
{
    QPushButton* pushed = m_f->widget<QPushButton>(button);
    QVERIFY2(pushed && pushed->isEnabled(), button);
    QTest::mouseClick(pushed, Qt::LeftButton);
}

void TestInterestOnArrearsPanel::show(int number)
{
    for (int row = 0; row < window()->model()->invoiceCount(); ++row) {
        window()->goToInvoice(row);
        if (window()->model()->invoice()->number == number)
            return;
    }
    QFAIL("no such invoice");
}

void TestInterestOnArrearsPanel::collectAndCreateInterestInvoice()
{
    // The stored invoices carry no rate of their own; each gets 10 %.
    show(1);
    QVERIFY(!m_f->widget<QPushButton>("createInterestInvoiceButton")->isEnabled());
    window()->model()->invoice()->interestOnArrears = 1000;
    click("calculateInterestButton");
    QCOMPARE(table()->rowCount(), 1);

    // Another customer's invoice is added only when the user agrees.
    show(2);
    window()->answer = false;
    click("calculateInterestButton");
    QCOMPARE(window()->questions,
        QStringList("Viivästyskoron laskennassa on jo asiakkaan Aalto Oy korko. Haluatko lisätä "
                    "asiakkaan Berg Ky koron?"));
    QCOMPARE(table()->rowCount(), 1);
    window()->answer = true;
    click("calculateInterestButton");
    QCOMPARE(table()->rowCount(), 2);
    // An interest invoice goes to one customer.
    click("createInterestInvoiceButton");
    QCOMPARE(window()->messages.size(), 1);
    QCOMPARE(window()->model()->invoice()->number, 2);

    // Removing the other customer's row makes it possible.
    QTableView* view = window()->interestPanel()->tableView();
    view->selectRow(1);
    click("removeInterestButton");
    QCOMPARE(table()->rowCount(), 1);
    show(3);
    window()->model()->invoice()->interestOnArrears = 1000;
    click("calculateInterestButton");
    click("createInterestInvoiceButton");

    const Invoice* invoice = window()->model()->invoice();
    QCOMPARE(invoice->type, int(InvoiceType::InterestInvoice));
    QCOMPARE(invoice->number, 4);
    QCOMPARE(invoice->customerId, m_first);
    QCOMPARE(invoice->dueDate, QDate(2024, 3, 15).addDays(21));
    InvoiceItemTableModel* rows = window()->model()->invoiceItemTableModel();
    QStringList texts;
    for (int row = 0; row < rows->rowCount(); ++row)
        texts.append(rows->invoiceItemAt(row)->text);
    QCOMPARE(texts, QStringList({ "Laskun 1 viivästyskorko", "Laskun 3 viivästyskorko" }));
    QVERIFY(window()->saveInvoice());
    QCOMPARE(m_f->storedValue(QStringLiteral("SELECT type FROM invoice WHERE number = 4")).toInt(),
        int(InvoiceType::InterestInvoice));

    // Added to the invoice shown, its own row is plain "Viivästyskorko".
    click("clearInterestButton");
    QCOMPARE(table()->rowCount(), 0);
    show(3);
    click("calculateInterestButton");
    click("addInterestRowsButton");
    QVERIFY(window()->model()->isEditable());
    QCOMPARE(rows->invoiceItemAt(rows->rowCount() - 1)->text, QStringLiteral("Viivästyskorko"));
}

void TestInterestOnArrearsPanel::missingProductOpensItsSettings()
{
    m_f->registry()->settings()->setProperty(SettingsKeys::interestProduct, QString());
    show(1);
    window()->model()->invoice()->interestOnArrears = 1000;
    click("calculateInterestButton");
    int page = -1;
    window()->dialogHandler = [&page](QDialog* dialog) {
        page = static_cast<SettingsDialog*>(dialog)->currentPage();
        return int(QDialog::Rejected);
    };
    const int rowCount = window()->model()->invoiceItemTableModel()->rowCount();
    click("addInterestRowsButton");
    QCOMPARE(window()->messages,
        QStringList(window()->windowTitle() + ": Viivästyskorkorivin tuotetta ei ole määritelty."));
    QCOMPARE(page, int(SettingsDialog::InvoicingPage));
    QCOMPARE(window()->model()->invoiceItemTableModel()->rowCount(), rowCount);
}

QTEST_MAIN(TestInterestOnArrearsPanel)
#include "tst_interestonarrearspanel.moc"
