#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "tst_mainwindowfixture.h"
#include "ui/customerdialog.h"
#include "ui/settingsdialog.h"

#include <QLineEdit>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QtTest>
#include <memory>

namespace {

using Dialog = Recorded<SettingsDialog>;

void typeOver(QWidget* dialog, const QString& name, const QString& text)
{
    QWidget* widget = dialog->findChild<QWidget*>(name);
    QVERIFY2(widget, qPrintable(name));
    widget->setFocus();
    QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(widget, Qt::Key_Delete);
    typeText(widget, text);
}

// The record's fields and properties as one text, for equality checks.
QString describe(const Settings& settings)
{
    return QStringList(
        { settings.sellerName, settings.sellerStreetName, settings.sellerPostCode,
            settings.sellerTownName, settings.sellerCountry, settings.sellerBusinessId,
            QString::fromLatin1(settings.sellerLogo.toHex()), settings.propertiesToString() })
        .join(u'|');
}

} // namespace

class TestSettingsDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void writesTypedValues_data();
    void writesTypedValues();
    void unchangedValuesRoundTrip();
    void badValuesAreRefused_data();
    void badValuesAreRefused();
    void businessIdExamplesPassTheCheck_data();
    void businessIdExamplesPassTheCheck();

private:
    std::unique_ptr<TestDatabase> m_db;
    std::unique_ptr<Registry> m_registry;
    int m_accountId = -1;
    int m_scriptId = -1;
};

void TestSettingsDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestSettingsDialog::init()
{
    m_db = std::make_unique<TestDatabase>(TestDatabase::SQLite, QStringLiteral("Virtanen Oy"));
    QVERIFY2(m_db->open(), qPrintable(m_db->lastError()));
    std::unique_ptr<Query> query(m_db->database()->query());
    BankAccount account;
    account.name = QStringLiteral("Osuuspankki");
    account.iban = QStringLiteral("FI4950009420028730");
    QVERIFY(query->saveBankAccount(&account));
    m_accountId = account.id;
    PrintScript script;
    script.type = QStringLiteral("invoice");
    script.name = QStringLiteral("Oma laskupohja");
    QVERIFY(query->savePrintScript(&script));
    m_scriptId = script.id;
    m_registry = std::make_unique<Registry>();
    m_registry->setDatabase(m_db->database());
    QVERIFY(m_registry->fetchSettings(query.get()) && m_registry->fetchProducts(query.get())
        && m_registry->fetchBankAccounts(query.get())
        && m_registry->fetchPrintScripts(query.get()));
}

void TestSettingsDialog::cleanup()
{
    m_registry.reset();
    m_db.reset();
}

void TestSettingsDialog::writesTypedValues_data()
{
    QTest::addColumn<QString>("widget");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("key"); // a property, or a field of the record
    QTest::addColumn<QString>("stored"); // empty: the key is removed
    auto row = [](const char* name, const char* widget, const char* text, const char* key,
                   const char* stored) {
        QTest::newRow(name) << QString::fromLatin1(widget) << QString::fromUtf8(text)
                            << QString::fromLatin1(key) << QString::fromUtf8(stored);
    };
    row("seller name", "sellerNameEdit", "Siivous Oy", "sellerName", "Siivous Oy");
    row("terms", "paymentTermsEdit", "21 pv netto", "settings/paymentTerms", "21 pv netto");
    row("interest", "interestOnArrearsEdit", "8,5", "settings/interestOnArrears", "850");
    row("interest 100", "interestOnArrearsEdit", "100", "settings/interestOnArrears", "10000");
}

void TestSettingsDialog::writesTypedValues()
{
    QFETCH(QString, widget);
    QFETCH(QString, text);
    QFETCH(QString, key);
    QFETCH(QString, stored);

    const QString before = describe(*m_registry->settings());
    Dialog dialog(m_registry.get());
    // Leading and trailing spaces are never stored.
    typeOver(&dialog, widget, text.isEmpty() ? text : QStringLiteral(" %1 ").arg(text));
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings, QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const Settings* settings = dialog.settings();
    const QString none = QStringLiteral("(none)");
    const QString value = key == QLatin1String("sellerName")
        ? settings->sellerName
        : settings->property(key, none).toString();
    QCOMPARE(value, stored.isEmpty() ? none : stored);
    // The dialog itself neither saves nor touches the registry's record.
    QCOMPARE(describe(*m_registry->settings()), before);
}

void TestSettingsDialog::unchangedValuesRoundTrip()
{
    // Every key set away from its default, stored as text as after a load.
    Settings* settings = m_registry->settings();
    settings->sellerName = QStringLiteral("Virtanen Oy");
    settings->sellerBusinessId = QStringLiteral("1572860-0");
    const QStringList values
        = QStringLiteral("seller/phoneNumber=09 123|seller/emailAddress=a@b.fi|"
                         "seller/webAddress=www.b.fi|settings/paymentTerms=7 pv netto|"
                         "settings/periodForComplaints=7 pv|settings/interestOnArrears=1150|"
                         "settings/productForInterestOnArrears=999|"
                         "settings/referenceNumberTemplate={C}{I}1|settings/defaultBankAccount=%1|"
                         "settings/vatIncluded=false|printScripts/invoice=%2|"
                         "invoiceForm/language=sv|invoiceForm/invoiceItemOptions=1|"
                         "invoiceForm/roundingMode=2|invoiceForm/barcodeVisible=true|"
                         "invoiceForm/qrCode=false|"
                         "invoiceForm/logoHeight=30|invoiceForm/noticeText1=Rivi 1\nRivi 2|"
                         "invoiceForm/noticeText2=N2|invoiceForm/reminderText=R|"
                         "invoiceForm/footer/text1=F1|invoiceForm/footer/text2=F2|"
                         "invoiceForm/footer/text3=F3|finvoice/edi=E|finvoice/senderId=S|"
                         "finvoice/intermediatorId=I|finvoice/defaultReceiverId=D|"
                         "finvoice/epiInstructionId=P|finvoice/soapEnv=false|"
                         "finvoice/xmlSchema=1.3|email/subject=Su|email/body=Bo\ndy|"
                         "email/attachmentName=$i.pdf|other/unknownKey=kept")
              .arg(m_accountId)
              .arg(m_scriptId)
              .split(u'|');
    settings->properties.clear();
    for (const QString& value : values)
        settings->setProperty(value.section(u'=', 0, 0), value.section(u'=', 1));

    Dialog dialog(m_registry.get());
    clickButton(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(describe(*dialog.settings()), describe(*settings));
}

void TestSettingsDialog::badValuesAreRefused_data()
{
    addFieldColumns();
    QTest::addColumn<int>("page");
    const QString interest = QStringLiteral(
        "Viivästyskorko on virheellinen: kirjoita prosentti, esimerkiksi 8 tai 8,5.");
    const QString businessId
        = QStringLiteral("Y-tunnus on virheellinen. Kirjoita se muodossa 1234567-1.");
    const QString logoHeight
        = QStringLiteral("Logon korkeus on virheellinen: kirjoita millimetrit väliltä 1-100.");
    auto row = [](const char* name, const char* field, const char* text, const QString& warning,
                   int page) {
        QTest::newRow(name) << QString::fromLatin1(field) << QString::fromUtf8(text) << warning
                            << page;
    };
    const QString interestTooLarge
        = QStringLiteral("Viivästyskorko on liian suuri. Suurin sallittu viivästyskorko on 100 %.");
    row("interest over 100", "interestOnArrearsEdit", "100,5", interestTooLarge,
        SettingsDialog::InvoicingPage);
    row("interest beyond 32 bits", "interestOnArrearsEdit", "21474837", interestTooLarge,
        SettingsDialog::InvoicingPage);
    row("negative interest", "interestOnArrearsEdit", "-1", interest,
        SettingsDialog::InvoicingPage);
    row("id check digit", "sellerBusinessIdEdit", "1572860-1", businessId,
        SettingsDialog::SellerPage);
    row("VAT number", "sellerBusinessIdEdit", "FI15728600", businessId, SettingsDialog::SellerPage);
    row("logo height zero", "logoHeightEdit", "0", logoHeight, SettingsDialog::InvoiceFormPage);
}

void TestSettingsDialog::badValuesAreRefused()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, warning);
    QFETCH(int, page);

    const QString before = describe(*m_registry->settings());
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    typeOver(&dialog, field, text);
    dialog.setCurrentPage(SettingsDialog::EmailPage);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings, QStringList { warning });
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(dialog.currentPage(), page);
    QCOMPARE(dialog.focusWidget(), dialog.findChild<QWidget*>(field));
    QCOMPARE(describe(*dialog.settings()), before);
}

void TestSettingsDialog::businessIdExamplesPassTheCheck_data()
{
    QTest::addColumn<int>("source");
    QTest::addRow("seller's business id field") << 0;
    QTest::addRow("warning of a wrong business id") << 1;
    QTest::addRow("customer's business id or VAT number field") << 2;
}

// An example that the program shows is one that it accepts.
void TestSettingsDialog::businessIdExamplesPassTheCheck()
{
    QFETCH(int, source);
    QString shown;
    if (source == 2) {
        CustomerDialog customers(m_registry.get());
        shown = customers.findChild<QLineEdit*>(QStringLiteral("vatNumberEdit"))->placeholderText();
    } else {
        Dialog dialog(m_registry.get());
        if (source == 0) {
            shown = dialog.findChild<QLineEdit*>(QStringLiteral("sellerBusinessIdEdit"))
                        ->placeholderText();
        } else {
            typeOver(&dialog, QStringLiteral("sellerBusinessIdEdit"), QStringLiteral("1572860-1"));
            clickButton(&dialog, QDialogButtonBox::Ok);
            shown = dialog.warnings.join(u' ');
        }
    }
    static const QRegularExpression example(QStringLiteral("\\d{7}-\\d|FI\\d{8}"));
    QStringList examples;
    for (const QRegularExpressionMatch& match : example.globalMatch(shown))
        examples.append(match.captured());
    QVERIFY2(!examples.isEmpty(), qPrintable(shown));
    for (const QString& id : examples)
        QVERIFY2(Customer::isValidVatNumberOrBusinessId(id), qPrintable(id));
}

QTEST_MAIN(TestSettingsDialog)
#include "tst_settingsdialog.moc"
