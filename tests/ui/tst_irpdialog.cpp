#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/invoice.h"
#include "payments/irptablemodel.h"
#include "tst_mainwindowfixture.h"
#include "ui/irpdialog.h"

#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QtTest>

namespace {

QString dataFile(const QString& name)
{
    return qEnvironmentVariable("VEKLARI_TEST_DATA") + QStringLiteral("/payments/") + name;
}

// The dialog with its file choice, messages and questions answered by the test.
class TestIRPDialog : public IRPDialog
{
public:
    using IRPDialog::IRPDialog;

    QString file;
    bool answer = false;
    QStringList messages;
    QStringList questions;

protected:
    QString chooseFile(const QString&) override { return file; }
    void showMessage(QMessageBox::Icon, const QString& text) override { messages.append(text); }
    bool askQuestion(const QString& text) override
    {
        questions.append(text);
        return answer;
    }
};

} // namespace

// The payment import as the user drives it: from the window's command, the
// file button, the save button and the duplicate question.
class TestIRPDialogWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void saveAndAskTwice();
    void unreadableFile();
    void commandRefreshesWindow();

private:
    // Invoices 1 to 4 with the references of the sample files.
    void addInvoices();
    int balance(int number) const
    {
        return m_f
            ->storedValue(
                QStringLiteral("SELECT balance FROM invoice WHERE number = %1").arg(number))
            .toInt();
    }

    std::unique_ptr<WindowFixture> m_f;
};

void TestIRPDialogWindow::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestIRPDialogWindow::init()
{
    m_f = std::make_unique<WindowFixture>();
    QVERIFY(m_f->start());
    addInvoices();
    m_f->refresh();
}

void TestIRPDialogWindow::cleanup()
{
    m_f.reset();
}

void TestIRPDialogWindow::addInvoices()
{
    const int customer = m_f->addCustomer(QStringLiteral("Virtanen Oy"));
    const char* references[] = { "10016", "10029", "10032", "10045" };
    for (int number = 1; number <= 4; ++number) {
        m_f->addInvoice(number, customer, QDate(2025, 2, 1), QDate(2025, 2, 15), 20000, 20000);
        m_f->storedValue(QStringLiteral("UPDATE invoice SET reference_number = '%1' WHERE "
                                        "number = %2")
                             .arg(QLatin1String(references[number - 1]))
                             .arg(number));
    }
}

void TestIRPDialogWindow::saveAndAskTwice()
{
    TestIRPDialog dialog(m_f->registry(), m_f->window()->model());
    auto* save = dialog.findChild<QPushButton*>(QStringLiteral("saveButton"));
    auto* print = dialog.findChild<QPushButton*>(QStringLiteral("printButton"));
    QVERIFY(!save->isEnabled());
    dialog.file = dataFile(QStringLiteral("camt054.xml"));
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("fileButton")), Qt::LeftButton);
    QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("summaryLabel"))->text(),
        QStringLiteral("Tiedosto sisältää 5 tilitapahtumaa, joista 4 on viitemaksuja"));
    QCOMPARE(dialog.model()->rowCount(), 4);
    QCOMPARE(m_f->registry()->appSettings()->value("incomingReferencePayments/filename").toString(),
        dialog.file);
    QVERIFY(save->isEnabled());
    QVERIFY(!print->isEnabled());

    QTest::mouseClick(save, Qt::LeftButton);
    QCOMPARE(dialog.messages, QStringList({ "Tietokantaan lisättiin 4 maksusuoritusta." }));
    QVERIFY(dialog.isAccepted());
    QVERIFY(print->isEnabled());
    QCOMPARE(balance(1), 10000);

    // The same file again: the question, and No stores nothing.
    dialog.readFile(dialog.file);
    QVERIFY(save->isEnabled());
    QTest::mouseClick(save, Qt::LeftButton);
    QCOMPARE(dialog.questions,
        QStringList({ "Sähköisen aineiston tiedot on jo tallennettu aiemmin. Haluatko varmasti "
                      "tallentaa tiedot uudelleen?" }));
    QCOMPARE(balance(1), 10000);
    QCOMPARE(m_f->storedValue(QStringLiteral("SELECT count(*) FROM payment")).toInt(), 4);
}

void TestIRPDialogWindow::unreadableFile()
{
    TestIRPDialog dialog(m_f->registry(), m_f->window()->model());
    dialog.readFile(dataFile(QStringLiteral("camt054-truncated.xml")));
    QCOMPARE(dialog.messages,
        QStringList({ "Tiedoston lukeminen epäonnistui. Premature end of document." }));
    QCOMPARE(dialog.model()->rowCount(), 0);
    QVERIFY(!dialog.findChild<QPushButton*>(QStringLiteral("saveButton"))->isEnabled());
}

void TestIRPDialogWindow::commandRefreshesWindow()
{
    QAction* command = m_f->action("importPaymentsAction");
    QVERIFY(command->isEnabled());
    QCOMPARE(command->shortcut(), QKeySequence(QStringLiteral("Ctrl+I")));
    m_f->action("firstAction")->trigger();
    QCOMPARE(m_f->window()->model()->invoice()->number, 1);
    QCOMPARE(m_f->window()->model()->invoice()->balance, 20000);
    QStringList shown;
    m_f->window()->dialogHandler = [&](QDialog* opened) -> int {
        auto* dialog = qobject_cast<IRPDialog*>(opened);
        if (!dialog)
            return int(QDialog::Rejected);
        dialog->readFile(dataFile(QStringLiteral("reference-payments.txt")));
        // The result's message box is answered as it opens.
        QTimer::singleShot(0, [&] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                shown.append(box->text());
                box->accept();
            }
        });
        QTest::mouseClick(
            dialog->findChild<QPushButton*>(QStringLiteral("saveButton")), Qt::LeftButton);
        return int(QDialog::Rejected);
    };
    command->trigger();
    QCOMPARE(shown, QStringList({ "Tietokantaan lisättiin 4 maksusuoritusta." }));
    QCOMPARE(m_f->window()->model()->invoice()->number, 1);
    QCOMPARE(m_f->window()->model()->invoice()->balance, 6450);
}

QTEST_MAIN(TestIRPDialogWindow)
#include "tst_irpdialog.moc"
