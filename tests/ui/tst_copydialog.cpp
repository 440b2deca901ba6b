#include "core/invoicecopier.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "tst_mainwindowfixture.h"
#include "ui/copydialog.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QtTest>

namespace {

// The dialog with its questions answered and its messages recorded.
class TestCopyDialog : public CopyDialog
{
public:
    using CopyDialog::CopyDialog;
    bool answer = true;
    QStringList questions;
    QStringList messages;

protected:
    bool askQuestion(const QString& question) override
    {
        questions.append(question);
        return answer;
    }
    void showWarning(const QString& text) override { messages.append(text); }
    void showCritical(const QString& text) override { messages.append(text); }
};

} // namespace

class TestCopyDialogWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void init();
    void cleanup() { m_f.reset(); }

    void createAndUndo_data();
    void createAndUndo();
    void groups();
    void fromTheMenu();

private:
    Invoice source() const;
    void click(QDialog* dialog, const char* name);
    QString label(QDialog* dialog) const
    {
        return dialog->findChild<QLabel*>(QStringLiteral("countLabel"))->text();
    }

    std::unique_ptr<WindowFixture> m_f;
    QList<int> m_customers; // the source's customer first
};

void TestCopyDialogWindow::init()
{
    m_f = std::make_unique<WindowFixture>();
    QVERIFY(m_f->start());
    m_customers.clear();
    for (const char* name : { "Lähde Oy", "Aho", "Berg", "Castrén" })
        m_customers.append(m_f->addCustomer(QString::fromUtf8(name)));
    m_f->addInvoice(1, m_customers.at(0), QDate(2024, 3, 1), QDate(2024, 3, 15), 5000, 5000);
    m_f->refresh();
}

Invoice TestCopyDialogWindow::source() const
{
    return *m_f->window()->model()->invoiceTableModel()->invoiceAt(0);
}

void TestCopyDialogWindow::click(QDialog* dialog, const char* name)
{
    QPushButton* button = dialog->findChild<QPushButton*>(QLatin1String(name));
    QVERIFY2(button && button->isEnabled(), name);
    QTest::mouseClick(button, Qt::LeftButton);
}

void TestCopyDialogWindow::createAndUndo_data()
{
    QTest::addColumn<QList<int>>("selected"); // indexes of m_customers
    QTest::addColumn<QStringList>("questions");
    QTest::addColumn<int>("copies");
    QTest::addColumn<QString>("count");
    QTest::addRow("only the source's customer")
        << QList<int> { 0 } << QStringList() << 0 << "1 asiakas valittu";
    QTest::addRow("the source's customer and one other")
        << QList<int> { 0, 2 } << QStringList() << 1 << "2 asiakasta valittu";
    // The question counts one less than the copies that are made.
    QTest::addRow("three others") << QList<int> { 1, 2, 3 }
                                  << QStringList("Laskusta 1 luodaan 2 kopiota. Jatketaanko?") << 3
                                  << "3 asiakasta valittu";
}

void TestCopyDialogWindow::createAndUndo()
{
    QFETCH(QList<int>, selected);
    QFETCH(QStringList, questions);
    QFETCH(int, copies);
    QFETCH(QString, count);

    TestCopyDialog dialog(m_f->registry(), source());
    QList<int> ids;
    for (const int index : selected)
        ids.append(m_customers.at(index));
    dialog.selectCustomers(ids);
    QCOMPARE(label(&dialog), count);
    QCOMPARE(dialog.selectedCustomerIds().size(), selected.size());
    QVERIFY(!dialog.findChild<QPushButton*>(QStringLiteral("undoButton"))->isEnabled());

    click(&dialog, "createButton");
    QCOMPARE(dialog.questions, questions);
    QCOMPARE(dialog.messages, copies ? QStringList() : QStringList("Valitse asiakkaat."));
    QCOMPARE(m_f->storedInvoiceCount(), 1 + copies);
    if (!copies)
        return;
    QCOMPARE(
        m_f->storedValue(QStringLiteral("SELECT max(number) FROM invoice")).toInt(), 1 + copies);

    dialog.questions.clear();
    click(&dialog, "undoButton");
    QCOMPARE(dialog.questions,
        QStringList(
            QStringLiteral("Laskut poistetaan väliltä 2-%1. Jatketaanko?").arg(1 + copies)));
    QCOMPARE(m_f->storedInvoiceCount(), 1);
    QVERIFY(!dialog.findChild<QPushButton*>(QStringLiteral("undoButton"))->isEnabled());
}

void TestCopyDialogWindow::groups()
{
    TestCopyDialog dialog(m_f->registry(), source());
    QListWidget* groupList = dialog.findChild<QListWidget*>(QStringLiteral("groupList"));
    dialog.selectCustomers({ m_customers.at(1), m_customers.at(3) });
    click(&dialog, "addGroupButton");
    QCOMPARE(groupList->count(), 1);
    groupList->item(0)->setText(QStringLiteral("Kuukausiasiakkaat"));
    const Settings* settings = m_f->registry()->settings();
    QCOMPARE(settings->property(QStringLiteral("groups/0/name")).toString(),
        QStringLiteral("Kuukausiasiakkaat"));
    QCOMPARE(settings->property(QStringLiteral("groups/0/customers")).toString(),
        QStringLiteral("%1,%2").arg(m_customers.at(1)).arg(m_customers.at(3)));

    // Another group, then the first one's customers come back by activating it.
    dialog.selectCustomers({ m_customers.at(2) });
    click(&dialog, "addGroupButton");
    QCOMPARE(settings->property(QStringLiteral("groups/1/name")).toString(),
        QStringLiteral("Uusi asiakasryhmä"));
    emit groupList->itemActivated(groupList->item(0));
    QCOMPARE(dialog.selectedCustomerIds(), QList<int>({ m_customers.at(1), m_customers.at(3) }));

    // Replaced and removed.
    groupList->setCurrentRow(1);
    click(&dialog, "updateGroupButton");
    QCOMPARE(settings->property(QStringLiteral("groups/1/customers")).toString(),
        QStringLiteral("%1,%2").arg(m_customers.at(1)).arg(m_customers.at(3)));
    groupList->setCurrentRow(0);
    click(&dialog, "removeGroupButton");
    QCOMPARE(settings->property(QStringLiteral("groups/0/name")).toString(),
        QStringLiteral("Uusi asiakasryhmä"));
    QVERIFY(!settings->property(QStringLiteral("groups/1/name")).isValid());
}

void TestCopyDialogWindow::fromTheMenu()
{
    // Without an invoice shown there is nothing to copy.
    m_f->action("groupInvoicingAction")->trigger();
    QCOMPARE(m_f->window()->messages, QStringList("Valitse kopioitava lasku."));

    QVERIFY(m_f->window()->goToInvoice(0));
    const QList<int> customers = m_customers;
    m_f->window()->dialogHandler = [customers](QDialog* dialog) {
        CopyDialog* copy = qobject_cast<CopyDialog*>(dialog);
        if (!copy)
            return int(QDialog::Rejected);
        copy->selectCustomers({ customers.at(0), customers.at(3) });
        copy->createInvoices();
        return int(QDialog::Rejected);
    };
    m_f->action("groupInvoicingAction")->trigger();
    QCOMPARE(m_f->window()->messages.size(), 1);
    QCOMPARE(m_f->storedInvoiceCount(), 2);
    // The list shows the copy, and the undo record is stored.
    QCOMPARE(m_f->window()->model()->invoiceCount(), 2);
    const QString properties
        = m_f->storedValue(QStringLiteral("SELECT properties FROM settings")).toString();
    QVERIFY2(properties.contains(SettingsKeys::copyLastNumber), qPrintable(properties));

    // Undone while the copy is shown, the copy goes from the window too.
    QVERIFY(m_f->window()->goToInvoice(1));
    QCOMPARE(m_f->window()->model()->invoice()->number, 2);
    Registry* registry = m_f->registry();
    m_f->window()->dialogHandler = [registry](QDialog*) {
        InvoiceCopier(registry, Invoice()).undoCopy();
        return int(QDialog::Rejected);
    };
    m_f->action("groupInvoicingAction")->trigger();
    QCOMPARE(m_f->storedInvoiceCount(), 1);
    QCOMPARE(m_f->window()->model()->invoiceCount(), 1);
    QVERIFY(!m_f->window()->hasInvoice());
}

QTEST_MAIN(TestCopyDialogWindow)
#include "tst_copydialog.moc"
