#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "tst_mainwindowfixture.h"
#include "ui/settingsdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace {

// Answers the file question with a prepared name.
class Dialog : public Recorded<SettingsDialog>
{
public:
    using Recorded::Recorded;
    QString logoFileName;

protected:
    QString chooseLogoFileName() override { return logoFileName; }
};

// Types over a line or text edit.
void typeOver(QWidget* dialog, const QString& name, const QString& text)
{
    QWidget* widget = dialog->findChild<QWidget*>(name);
    QVERIFY2(widget, qPrintable(name));
    widget->setFocus();
    QTest::keyClick(widget, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(widget, Qt::Key_Delete);
    typeText(widget, text);
}

void choose(QWidget* dialog, const char* name, const QString& text)
{
    QComboBox* combo = dialog->findChild<QComboBox*>(QLatin1String(name));
    QVERIFY2(combo && combo->findText(text) >= 0, qPrintable(text));
    combo->setCurrentIndex(combo->findText(text));
}

void toggle(QWidget* dialog, const char* name)
{
    QCheckBox* check = dialog->findChild<QCheckBox*>(QLatin1String(name));
    QVERIFY2(check, name);
    check->setFocus();
    QTest::keyClick(check, Qt::Key_Space);
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
    void writesChoices();
    void unchangedValuesRoundTrip();
    void emptyDatabaseDefaults();
    void badValuesAreRefused_data();
    void badValuesAreRefused();
    void referenceNumberSuffixIsReplaced();
    void logo();
    void cancelChangesNothing();

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
    account.shortName = QStringLiteral("OP");
    account.iban = QStringLiteral("FI4950009420028730");
    QVERIFY(query->saveBankAccount(&account));
    m_accountId = account.id;
    for (const char* type : { "invoice", "invoice-list" }) {
        PrintScript script;
        script.type = QLatin1String(type);
        script.name = script.type == QLatin1String("invoice") ? QStringLiteral("Oma laskupohja")
                                                              : QStringLiteral("Laskulista");
        QVERIFY(query->savePrintScript(&script));
        if (script.type == QLatin1String("invoice"))
            m_scriptId = script.id;
    }
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
    row("post code", "sellerPostCodeEdit", "00510", "sellerPostCode", "00510");
    row("terms", "paymentTermsEdit", "21 pv netto", "settings/paymentTerms", "21 pv netto");
    row("reminder cleared", "reminderTextEdit", "", "invoiceForm/reminderText", "");
    row("notice 2", "noticeText2Edit", "Viite {{buyerRef}}", "invoiceForm/noticeText2",
        "Viite {{buyerRef}}");
    row("interest", "interestOnArrearsEdit", "8,5", "settings/interestOnArrears", "850");
    row("interest 100", "interestOnArrearsEdit", "100", "settings/interestOnArrears", "10000");
    row("interest cleared", "interestOnArrearsEdit", "", "settings/interestOnArrears", "");
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
    const QString value = key == QLatin1String("sellerName") ? settings->sellerName
        : key == QLatin1String("sellerPostCode")             ? settings->sellerPostCode
                                                 : settings->property(key, none).toString();
    QCOMPARE(value, stored.isEmpty() ? none : stored);
    // The dialog itself neither saves nor touches the registry's record.
    QCOMPARE(describe(*m_registry->settings()), before);
}

void TestSettingsDialog::writesChoices()
{
    Dialog dialog(m_registry.get());
    choose(&dialog, "interestProductCombo", QStringLiteral("999 Viivästyskorko"));
    choose(&dialog, "defaultBankAccountCombo", QStringLiteral("OP FI49 5000 9420 0287 30"));
    choose(&dialog, "printScriptCombo", QStringLiteral("Oma laskupohja"));
    choose(&dialog, "invoiceItemOptionsCombo", QStringLiteral("Vain selite"));
    choose(&dialog, "roundingModeCombo", QStringLiteral("Verottomista rivisummista"));
    choose(&dialog, "xmlSchemaCombo", QStringLiteral("Finvoice 2.01"));
    toggle(&dialog, "soapEnvCheck");
    // The report script is no invoice layout.
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("printScriptCombo"))
                 ->findText(QStringLiteral("Laskulista")),
        -1);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QStringList stored;
    for (const char* key : { "settings/productForInterestOnArrears", "settings/defaultBankAccount",
             "printScripts/invoice", "invoiceForm/invoiceItemOptions", "invoiceForm/roundingMode",
             "finvoice/xmlSchema", "finvoice/soapEnv" })
        stored.append(dialog.settings()->property(QLatin1String(key)).toString());
    QCOMPARE(stored,
        QStringList({ "999", QString::number(m_accountId), QString::number(m_scriptId), "2", "2",
            "2.01", "false" }));
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

void TestSettingsDialog::emptyDatabaseDefaults()
{
    m_registry->settings()->properties.clear();
    Dialog dialog(m_registry.get());
    QStringList shown;
    for (const char* name : { "printScriptCombo", "languageCombo", "xmlSchemaCombo" })
        shown.append(dialog.findChild<QComboBox*>(QLatin1String(name))->currentText());
    for (const char* name : { "vatIncludedCheck", "barcodeVisibleCheck" })
        shown.append(dialog.findChild<QCheckBox*>(QLatin1String(name))->isChecked() ? "on" : "off");
    shown.append(
        dialog.findChild<QLineEdit*>(QStringLiteral("referenceNumberTemplateEdit"))->text());
    QCOMPARE(shown,
        QStringList({ "Oletuslaskupohja", "fi - suomi", "Finvoice 3.0", "on", "off", "{I}00" }));

    clickButton(&dialog, QDialogButtonBox::Ok);
    const Settings* settings = dialog.settings();
    QCOMPARE(settings->property(QStringLiteral("printScripts/invoice")).toInt(), -1);
    for (const char* key : { "settings/defaultBankAccount", "settings/interestOnArrears" })
        QVERIFY2(!settings->properties.contains(QLatin1String(key)), key);
}

void TestSettingsDialog::badValuesAreRefused_data()
{
    addFieldColumns();
    QTest::addColumn<int>("page");
    const QString interest = QStringLiteral(
        "Viivästyskorko on virheellinen: kirjoita prosentti, esimerkiksi 8 tai 8,5.");
    const QString businessId
        = QStringLiteral("Y-tunnus on virheellinen. Kirjoita se muodossa 1234567-8.");
    const QString logoHeight
        = QStringLiteral("Logon korkeus on virheellinen: kirjoita millimetrit väliltä 1-100.");
    const int invoicing = SettingsDialog::InvoicingPage;
    const int form = SettingsDialog::InvoiceFormPage;
    const int seller = SettingsDialog::SellerPage;
    const struct
    {
        const char* name;
        const char* field;
        const char* text;
        const QString& warning;
        int page;
    } rows[] = {
        { "interest over 100", "interestOnArrearsEdit", "100,5", interest, invoicing },
        { "interest with sign", "interestOnArrearsEdit", "8 %", interest, invoicing },
        { "id check digit", "sellerBusinessIdEdit", "1572860-1", businessId, seller },
        { "VAT number", "sellerBusinessIdEdit", "FI15728600", businessId, seller },
        { "logo height zero", "logoHeightEdit", "0", logoHeight, form },
    };
    for (const auto& entry : rows) {
        QTest::newRow(entry.name) << QString::fromLatin1(entry.field)
                                  << QString::fromUtf8(entry.text) << entry.warning << entry.page;
    }
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
    // The page of the field comes up with the keyboard in it.
    QCOMPARE(dialog.currentPage(), page);
    QCOMPARE(dialog.focusWidget(), dialog.findChild<QWidget*>(field));
    QCOMPARE(describe(*dialog.settings()), before);
}

void TestSettingsDialog::referenceNumberSuffixIsReplaced()
{
    Settings* settings = m_registry->settings();
    settings->setProperty(QStringLiteral("settings/referenceNumberSuffix"), QStringLiteral("5"));
    for (const bool cleared : { false, true }) {
        Dialog dialog(m_registry.get());
        const QString key = QStringLiteral("settings/referenceNumberTemplate");
        // Clearing the field leaves the older key to decide.
        if (cleared)
            typeOver(&dialog, QStringLiteral("referenceNumberTemplateEdit"), QString());
        clickButton(&dialog, QDialogButtonBox::Ok);
        QCOMPARE(dialog.settings()->properties.contains(key), !cleared);
        QCOMPARE(dialog.settings()->properties.contains(
                     QStringLiteral("settings/referenceNumberSuffix")),
            cleared);
        QCOMPARE(dialog.settings()->referenceNumberTemplate(), QStringLiteral("{I}05"));
    }
}

void TestSettingsDialog::logo()
{
    QTemporaryDir dir;
    QImage image(120, 40, QImage::Format_RGB32);
    image.fill(QColor(0, 90, 160));
    const QString png = dir.filePath(QStringLiteral("logo.png"));
    QVERIFY(image.save(png));

    Dialog dialog(m_registry.get());
    QPushButton* choose = dialog.findChild<QPushButton*>(QStringLiteral("chooseLogoButton"));
    dialog.logoFileName = png;
    QTest::mouseClick(choose, Qt::LeftButton);
    QVERIFY(!dialog.findChild<QLabel*>(QStringLiteral("logoPreview"))->pixmap().isNull());
    // A file that is no image is refused and the logo stays.
    dialog.logoFileName = dir.filePath(QStringLiteral("missing.png"));
    QTest::mouseClick(choose, Qt::LeftButton);
    QCOMPARE(dialog.warnings.size(), 1);
    QVERIFY2(dialog.warnings.last().contains(QStringLiteral("missing.png")),
        qPrintable(dialog.warnings.last()));
    clickButton(&dialog, QDialogButtonBox::Ok);
    QFile stored(png);
    QVERIFY(stored.open(QIODevice::ReadOnly));
    QCOMPARE(dialog.settings()->sellerLogo, stored.readAll());

    m_registry->settings()->sellerLogo = dialog.settings()->sellerLogo;
    Dialog again(m_registry.get());
    QTest::mouseClick(
        again.findChild<QPushButton*>(QStringLiteral("removeLogoButton")), Qt::LeftButton);
    clickButton(&again, QDialogButtonBox::Ok);
    QVERIFY(again.settings()->sellerLogo.isEmpty());
}

void TestSettingsDialog::cancelChangesNothing()
{
    const QString before = describe(*m_registry->settings());
    Dialog dialog(m_registry.get());
    typeOver(&dialog, QStringLiteral("sellerNameEdit"), QStringLiteral("Muutettu"));
    typeOver(&dialog, QStringLiteral("paymentTermsEdit"), QString());
    toggle(&dialog, "soapEnvCheck");
    clickButton(&dialog, QDialogButtonBox::Cancel);
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(describe(*dialog.settings()), before);
    QCOMPARE(describe(*m_registry->settings()), before);
}

QTEST_MAIN(TestSettingsDialog)
#include "tst_settingsdialog.moc"
