#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "export/emailsettings.h"
#include "standinprogram.h"
#include "storage/database.h"
#include "storage/query.h"
#include "tst_mainwindowfixture.h"
#include "ui/emailsettingsdialog.h"
#include "ui/invoiceprintpreviewdialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QSettings>
#include <QStandardPaths>
#include <QTimer>
#include <QtTest>

// Sending the shown invoice from the main window and from its preview: a stand-in mail
// program records what it was started with. And the e-mail settings dialog.
class TestMainWindowSend : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void sendCommand_data();
    void sendCommand();
    void previewSends();
    void settingsDialog();

private:
    // A stand-in that writes its arguments, each ended by a NUL.
    QString standIn();
    // What the stand-in was started with; empty when it was not.
    QStringList recorded();
    bool showInvoice(int number);

    WindowFixture m_fixture;
    QTemporaryDir m_dir;
    TestWindow* m_window = nullptr;
};

void TestMainWindowSend::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    qputenv("TMPDIR", QFile::encodeName(m_dir.path()));
    QVERIFY(m_fixture.start());
    m_window = m_fixture.window();
    const int customer = m_fixture.addCustomer(QStringLiteral("Rautakauppa Virtanen Oy"));
    QVERIFY(customer > 0);
    QVERIFY(
        m_fixture.addInvoice(1, customer, QDate(2024, 3, 1), QDate(2024, 3, 15), 12550, 12550) > 0);
    m_fixture.refresh();
    bool found = false;
    Customer withAddress;
    m_fixture.registry()->customerById(customer, found)->copy(&withAddress);
    QVERIFY(found);
    withAddress.emailAddress = QStringLiteral("myynti@virtanen.fi");
    std::unique_ptr<Query> query(m_fixture.database()->query());
    QVERIFY2(query->saveCustomer(&withAddress), qPrintable(query->lastError()));
    m_fixture.refresh();
    QVERIFY2(m_window->messages.isEmpty(), qPrintable(m_window->messages.join('\n')));
}

void TestMainWindowSend::cleanupTestCase()
{
    m_fixture.stop();
}

QString TestMainWindowSend::standIn()
{
    const QString program = m_dir.filePath(QStringLiteral("mailer"));
    return StandInProgram::write(program, m_dir.filePath(QStringLiteral("mailer.args")))
        ? program
        : QString();
}

QStringList TestMainWindowSend::recorded()
{
    return StandInProgram::recorded(m_dir.filePath(QStringLiteral("mailer.args")));
}

bool TestMainWindowSend::showInvoice(int number)
{
    return m_window->goToInvoice(0) && m_window->model()->invoice()->number == number;
}

void TestMainWindowSend::sendCommand_data()
{
    QTest::addColumn<bool>("configured");
    QTest::addColumn<QString>("message");

    QTest::newRow("configured") << true << "";
    QTest::newRow("not configured") << false
                                    << "Lähetä sähköpostitse: Määritä sähköpostiasetukset "
                                       "valitsemalla pääikkunassa Asetukset | Sähköpostiasetukset.";
}

void TestMainWindowSend::sendCommand()
{
    QFETCH(bool, configured);
    QFETCH(QString, message);
    const QString program = standIn();
    EmailSettings(m_fixture.registry()->appSettings())
        .setGeneral({ configured ? QStringLiteral("Oma ohjelma") : QString(), program,
            QStringLiteral("--to \"{{ customer/emailAddress }}\" \"{{ attachmentPath }}\"") });
    QVERIFY(showInvoice(1));
    m_window->messages.clear();

    QAction* send = m_fixture.action("sendAction");
    QVERIFY(send->isEnabled());
    send->trigger();
    QCOMPARE(m_window->messages.join('\n'), message);
    if (!message.isEmpty())
        return;
    const QStringList arguments = recorded();
    QCOMPARE(arguments.size(), 3);
    QCOMPARE(arguments.mid(0, 2), QStringList({ "--to", "myynti@virtanen.fi" }));
    QCOMPARE(QFileInfo(arguments.at(2)).fileName(), QStringLiteral("lasku-1.pdf"));
}

// The preview's button sends the invoice it shows.
void TestMainWindowSend::previewSends()
{
    const QString program = standIn();
    EmailSettings(m_fixture.registry()->appSettings())
        .setGeneral({ QStringLiteral("Oma ohjelma"), program, QStringLiteral("{{ number }}") });
    QVERIFY(showInvoice(1));
    bool enabled = false;
    QTimer timer;
    timer.setInterval(20);
    connect(&timer, &QTimer::timeout, this, [&]() {
        auto* preview = qobject_cast<InvoicePrintPreviewDialog*>(QApplication::activeModalWidget());
        if (!preview)
            return;
        timer.stop();
        enabled = preview->sendAction()->isEnabled();
        preview->sendAction()->trigger();
        preview->reject();
    });
    timer.start();
    m_fixture.action("printAction")->trigger();
    QVERIFY(enabled);
    QCOMPARE(recorded(), QStringList({ "1" }));
}

// The general program and one of the open database's own, written on OK and shown again.
void TestMainWindowSend::settingsDialog()
{
    QSettings* settings = m_fixture.registry()->appSettings();
    settings->remove(QStringLiteral("email"));
    const int number = m_fixture.registry()->databaseNumber();
    QVERIFY(number >= 1);
    m_window->dialogHandler = [&](QDialog* dialog) {
        auto* email = qobject_cast<EmailSettingsDialog*>(dialog);
        if (!email)
            return int(QDialog::Rejected);
        auto* app = email->findChild<QComboBox*>(QStringLiteral("appCombo"));
        auto* path = email->findChild<QLineEdit*>(QStringLiteral("pathEdit"));
        auto* args = email->findChild<QLineEdit*>(QStringLiteral("argsEdit"));
        auto* own = email->findChild<QCheckBox*>(QStringLiteral("ownCheck"));
        QTest::keyClicks(app->lineEdit(), QStringLiteral("KMail"));
        email->chooseProgram(app->currentText());
        // The usual place is proposed when it is chosen.
        if (path->text() != QStringLiteral("/usr/bin/kmail"))
            return int(QDialog::Rejected);
        email->showScope(
            email->findChild<QComboBox*>(QStringLiteral("scopeCombo"))->findData(number));
        own->setChecked(true);
        app->setCurrentText(QStringLiteral("Postimies"));
        path->setText(QStringLiteral("/opt/postimies"));
        args->setText(QStringLiteral("-t {{ customer/emailAddress }}"));
        email->accept();
        return int(QDialog::Accepted);
    };
    m_fixture.action("emailSettingsAction")->trigger();
    const EmailSettings stored(settings);
    QCOMPARE(stored.general().app, QStringLiteral("KMail"));
    QCOMPARE(stored.general().appPath, QStringLiteral("/usr/bin/kmail"));
    QCOMPARE(stored.databaseEntries().size(), 1);
    QCOMPARE(stored.databaseEntries().at(0).number, number);
    const EmailSettings::Program own
        = { "Postimies", "/opt/postimies", "-t {{ customer/emailAddress }}" };
    QVERIFY(stored.forDatabase(number) == own);

    m_window->dialogHandler = nullptr;
}

QTEST_MAIN(TestMainWindowSend)
#include "tst_mainwindowsend.moc"
