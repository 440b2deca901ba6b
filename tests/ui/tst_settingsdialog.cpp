#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "ui/settingsdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
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

// Records the warnings instead of showing message boxes, and answers the
// file question with a prepared name.
class Dialog : public SettingsDialog
{
public:
    using SettingsDialog::SettingsDialog;
    QStringList warnings;
    QString logoFileName;

protected:
    void showWarning(const QString& text) override { warnings.append(text); }
    QString chooseLogoFileName() override { return logoFileName; }
};

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

// Replaces the text of a line or text edit by typing.
void replaceText(QWidget* dialog, const QString& name, const QString& text)
{
    QWidget* widget = dialog->findChild<QWidget*>(name);
    QVERIFY2(widget, qPrintable(name));
    if (QLineEdit* edit = qobject_cast<QLineEdit*>(widget))
        edit->selectAll();
    else if (QPlainTextEdit* edit = qobject_cast<QPlainTextEdit*>(widget))
        edit->selectAll();
    QTest::keyClick(widget, Qt::Key_Delete);
    typeText(widget, text);
}

void clickButton(QDialog* dialog, QDialogButtonBox::StandardButton which)
{
    QDialogButtonBox* box = dialog->findChild<QDialogButtonBox*>();
    QTest::mouseClick(box->button(which), Qt::LeftButton);
}

void choose(QWidget* dialog, const char* name, const QString& text)
{
    QComboBox* combo = dialog->findChild<QComboBox*>(QString::fromLatin1(name));
    QVERIFY2(combo, name);
    const int index = combo->findText(text);
    QVERIFY2(index >= 0, qPrintable(text));
    combo->setCurrentIndex(index);
}

void toggle(QWidget* dialog, const char* name)
{
    QCheckBox* check = dialog->findChild<QCheckBox*>(QString::fromLatin1(name));
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
    void interestOnArrears_data();
    void interestOnArrears();
    void badValuesAreRefused_data();
    void badValuesAreRefused();
    void referenceNumberSuffixIsReplaced();
    void logo();
    void cancelChangesNothing();
    void opensAtPage();
    void labelsHaveMnemonics();

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
    PrintScript script;
    script.type = QStringLiteral("invoice");
    script.name = QStringLiteral("Oma laskupohja");
    script.sourceCode = QStringLiteral("function print() {}");
    QVERIFY(query->savePrintScript(&script));
    m_scriptId = script.id;
    PrintScript report;
    report.type = QStringLiteral("invoice-list");
    report.name = QStringLiteral("Laskulista");
    QVERIFY(query->savePrintScript(&report));

    m_registry = std::make_unique<Registry>();
    m_registry->setDatabase(m_db->database());
    QVERIFY(m_registry->fetchSettings(query.get()));
    QVERIFY(m_registry->fetchProducts(query.get()));
    QVERIFY(m_registry->fetchBankAccounts(query.get()));
    QVERIFY(m_registry->fetchPrintScripts(query.get()));
}

void TestSettingsDialog::cleanup()
{
    m_registry.reset();
    m_db.reset();
}

void TestSettingsDialog::writesTypedValues_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("widget");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("key"); // a property key, or a field after "field:"
    QTest::addColumn<QString>("stored"); // empty: the key is removed

    const int seller = SettingsDialog::SellerPage;
    const int invoicing = SettingsDialog::InvoicingPage;
    const int form = SettingsDialog::InvoiceFormPage;
    const int texts = SettingsDialog::TextsPage;
    const int finvoice = SettingsDialog::FinvoicePage;
    const int email = SettingsDialog::EmailPage;
    QTest::addRow("seller name") << seller << "sellerNameEdit"
                                 << "Siivous Virtanen Oy"
                                 << "field:sellerName"
                                 << "Siivous Virtanen Oy";
    QTest::addRow("street") << seller << "sellerStreetNameEdit"
                            << "Teollisuuskatu 5 B"
                            << "field:sellerStreetName"
                            << "Teollisuuskatu 5 B";
    QTest::addRow("post code") << seller << "sellerPostCodeEdit"
                               << "00510"
                               << "field:sellerPostCode"
                               << "00510";
    QTest::addRow("town") << seller << "sellerTownNameEdit"
                          << "Helsinki"
                          << "field:sellerTownName"
                          << "Helsinki";
    QTest::addRow("country") << seller << "sellerCountryEdit"
                             << "Suomi"
                             << "field:sellerCountry"
                             << "Suomi";
    QTest::addRow("business id") << seller << "sellerBusinessIdEdit"
                                 << "1572860-0"
                                 << "field:sellerBusinessId"
                                 << "1572860-0";
    QTest::addRow("phone") << seller << "sellerPhoneNumberEdit"
                           << "09 123 4567"
                           << "seller/phoneNumber"
                           << "09 123 4567";
    QTest::addRow("e-mail") << seller << "sellerEmailAddressEdit"
                            << "laskutus@virtanen.fi"
                            << "seller/emailAddress"
                            << "laskutus@virtanen.fi";
    QTest::addRow("web") << seller << "sellerWebAddressEdit"
                         << "https://www.virtanen.fi"
                         << "seller/webAddress"
                         << "https://www.virtanen.fi";
    QTest::addRow("payment terms") << invoicing << "paymentTermsEdit"
                                   << "21 päivää netto"
                                   << "settings/paymentTerms"
                                   << "21 päivää netto";
    QTest::addRow("payment terms cleared") << invoicing << "paymentTermsEdit"
                                           << ""
                                           << "settings/paymentTerms"
                                           << "";
    QTest::addRow("complaints") << invoicing << "periodForComplaintsEdit"
                                << "7 päivää"
                                << "settings/periodForComplaints"
                                << "7 päivää";
    QTest::addRow("reference template") << invoicing << "referenceNumberTemplateEdit"
                                        << "{C}{I}"
                                        << "settings/referenceNumberTemplate"
                                        << "{C}{I}";
    QTest::addRow("logo height") << form << "logoHeightEdit"
                                 << "25"
                                 << "invoiceForm/logoHeight"
                                 << "25";
    QTest::addRow("logo height cleared") << form << "logoHeightEdit"
                                         << ""
                                         << "invoiceForm/logoHeight"
                                         << "";
    QTest::addRow("notice 1") << texts << "noticeText1Edit"
                              << "Kiitos tilauksestanne!"
                              << "invoiceForm/noticeText1"
                              << "Kiitos tilauksestanne!";
    QTest::addRow("notice 2") << texts << "noticeText2Edit"
                              << "Viitteenne {{buyerRef}}"
                              << "invoiceForm/noticeText2"
                              << "Viitteenne {{buyerRef}}";
    QTest::addRow("reminder") << texts << "reminderTextEdit"
                              << "Maksakaa pian."
                              << "invoiceForm/reminderText"
                              << "Maksakaa pian.";
    QTest::addRow("reminder cleared") << texts << "reminderTextEdit"
                                      << ""
                                      << "invoiceForm/reminderText"
                                      << "";
    QTest::addRow("footer 1") << texts << "footerText1Edit"
                              << "Kotipaikka Helsinki"
                              << "invoiceForm/footer/text1"
                              << "Kotipaikka Helsinki";
    QTest::addRow("footer 2") << texts << "footerText2Edit"
                              << "ALV-rek."
                              << "invoiceForm/footer/text2"
                              << "ALV-rek.";
    QTest::addRow("footer 3") << texts << "footerText3Edit"
                              << "Ennakkoperintärekisterissä"
                              << "invoiceForm/footer/text3"
                              << "Ennakkoperintärekisterissä";
    QTest::addRow("edi") << finvoice << "ediEdit"
                         << "003715728600"
                         << "finvoice/edi"
                         << "003715728600";
    QTest::addRow("sender") << finvoice << "senderIdEdit"
                            << "003715728600"
                            << "finvoice/senderId"
                            << "003715728600";
    QTest::addRow("intermediator") << finvoice << "intermediatorIdEdit"
                                   << "NDEAFIHH"
                                   << "finvoice/intermediatorId"
                                   << "NDEAFIHH";
    QTest::addRow("default receiver") << finvoice << "defaultReceiverIdEdit"
                                      << "003700000000"
                                      << "finvoice/defaultReceiverId"
                                      << "003700000000";
    QTest::addRow("payment instruction") << finvoice << "epiInstructionIdEdit"
                                         << "EPI-123"
                                         << "finvoice/epiInstructionId"
                                         << "EPI-123";
    QTest::addRow("subject") << email << "emailSubjectEdit"
                             << "Lasku {{number}}"
                             << "email/subject"
                             << "Lasku {{number}}";
    QTest::addRow("body") << email << "emailBodyEdit"
                          << "Hei, liitteenä lasku."
                          << "email/body"
                          << "Hei, liitteenä lasku.";
    QTest::addRow("attachment") << email << "attachmentNameEdit"
                                << "lasku-$i.pdf"
                                << "email/attachmentName"
                                << "lasku-$i.pdf";
}

void TestSettingsDialog::writesTypedValues()
{
    QFETCH(int, page);
    QFETCH(QString, widget);
    QFETCH(QString, text);
    QFETCH(QString, key);
    QFETCH(QString, stored);

    const QString before = describe(*m_registry->settings());
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.setCurrentPage(page);
    replaceText(&dialog, widget, text);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings, QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const Settings* settings = dialog.settings();
    if (key.startsWith(QLatin1String("field:"))) {
        const QString name = key.mid(6);
        const QMap<QString, QString> fields = { { "sellerName", settings->sellerName },
            { "sellerStreetName", settings->sellerStreetName },
            { "sellerPostCode", settings->sellerPostCode },
            { "sellerTownName", settings->sellerTownName },
            { "sellerCountry", settings->sellerCountry },
            { "sellerBusinessId", settings->sellerBusinessId } };
        QCOMPARE(fields.value(name), stored);
    } else if (stored.isEmpty()) {
        QVERIFY(!settings->properties.contains(key));
    } else {
        QCOMPARE(settings->property(key).toString(), stored);
    }
    // The dialog itself neither saves nor touches the registry's record.
    QCOMPARE(describe(*m_registry->settings()), before);
}

void TestSettingsDialog::writesChoices()
{
    Dialog dialog(m_registry.get());
    choose(&dialog, "interestProductCombo", QStringLiteral("999 Viivästyskorko"));
    choose(&dialog, "defaultBankAccountCombo", QStringLiteral("OP FI49 5000 9420 0287 30"));
    toggle(&dialog, "vatIncludedCheck");
    choose(&dialog, "printScriptCombo", QStringLiteral("Oma laskupohja"));
    choose(&dialog, "languageCombo", QStringLiteral("en - englanti"));
    choose(&dialog, "invoiceItemOptionsCombo", QStringLiteral("Vain selite"));
    choose(&dialog, "roundingModeCombo", QStringLiteral("Verottomista rivisummista"));
    toggle(&dialog, "barcodeVisibleCheck");
    choose(&dialog, "xmlSchemaCombo", QStringLiteral("Finvoice 2.01"));
    toggle(&dialog, "soapEnvCheck");
    // The report script is no invoice layout.
    QVERIFY(dialog.findChild<QComboBox*>(QStringLiteral("printScriptCombo"))
                ->findText(QStringLiteral("Laskulista"))
        < 0);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const Settings* settings = dialog.settings();
    auto text = [settings](const char* key) {
        return settings->property(QString::fromLatin1(key)).toString();
    };
    QCOMPARE(text("settings/productForInterestOnArrears"), QStringLiteral("999"));
    QCOMPARE(text("settings/defaultBankAccount"), QString::number(m_accountId));
    QCOMPARE(text("settings/vatIncluded"), QStringLiteral("false"));
    QCOMPARE(text("printScripts/invoice"), QString::number(m_scriptId));
    QCOMPARE(text("invoiceForm/language"), QStringLiteral("en"));
    QCOMPARE(text("invoiceForm/invoiceItemOptions"), QStringLiteral("2"));
    QCOMPARE(text("invoiceForm/roundingMode"), QStringLiteral("2"));
    QCOMPARE(text("invoiceForm/barcodeVisible"), QStringLiteral("true"));
    QCOMPARE(text("finvoice/xmlSchema"), QStringLiteral("2.01"));
    QCOMPARE(text("finvoice/soapEnv"), QStringLiteral("false"));
}

void TestSettingsDialog::unchangedValuesRoundTrip()
{
    // Every key set away from its default, stored as text as after a load.
    Settings* settings = m_registry->settings();
    settings->sellerName = QStringLiteral("Virtanen Oy");
    settings->sellerBusinessId = QStringLiteral("1572860-0");
    const QMap<QString, QString> values = { { "seller/phoneNumber", "09 123" },
        { "seller/emailAddress", "a@b.fi" }, { "seller/webAddress", "www.b.fi" },
        { "settings/paymentTerms", "7 pv netto" }, { "settings/periodForComplaints", "7 pv" },
        { "settings/interestOnArrears", "1150" }, { "settings/productForInterestOnArrears", "999" },
        { "settings/referenceNumberTemplate", "{C}{I}1" },
        { "settings/defaultBankAccount", QString::number(m_accountId) },
        { "settings/vatIncluded", "false" },
        { "printScripts/invoice", QString::number(m_scriptId) }, { "invoiceForm/language", "sv" },
        { "invoiceForm/invoiceItemOptions", "1" }, { "invoiceForm/roundingMode", "2" },
        { "invoiceForm/barcodeVisible", "true" }, { "invoiceForm/logoHeight", "30" },
        { "invoiceForm/noticeText1", "Rivi 1\nRivi 2" }, { "invoiceForm/noticeText2", "N2" },
        { "invoiceForm/reminderText", "R" }, { "invoiceForm/footer/text1", "F1" },
        { "invoiceForm/footer/text2", "F2" }, { "invoiceForm/footer/text3", "F3" },
        { "finvoice/edi", "E" }, { "finvoice/senderId", "S" }, { "finvoice/intermediatorId", "I" },
        { "finvoice/defaultReceiverId", "D" }, { "finvoice/epiInstructionId", "P" },
        { "finvoice/soapEnv", "false" }, { "finvoice/xmlSchema", "1.3" }, { "email/subject", "Su" },
        { "email/body", "Bo\ndy" }, { "email/attachmentName", "$i.pdf" },
        { "other/unknownKey", "kept" } };
    settings->properties.clear();
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        settings->setProperty(it.key(), it.value());

    Dialog dialog(m_registry.get());
    clickButton(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(describe(*dialog.settings()), describe(*settings));
}

void TestSettingsDialog::emptyDatabaseDefaults()
{
    m_registry->settings()->properties.clear();
    Dialog dialog(m_registry.get());
    QVERIFY(dialog.findChild<QCheckBox*>(QStringLiteral("vatIncludedCheck"))->isChecked());
    QVERIFY(dialog.findChild<QCheckBox*>(QStringLiteral("soapEnvCheck"))->isChecked());
    QVERIFY(!dialog.findChild<QCheckBox*>(QStringLiteral("barcodeVisibleCheck"))->isChecked());
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("printScriptCombo"))->currentText(),
        QStringLiteral("Oletuslaskupohja"));
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("languageCombo"))->currentText(),
        QStringLiteral("fi - suomi"));
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("invoiceItemOptionsCombo"))->currentText(),
        QStringLiteral("Tuote ja selite"));
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("xmlSchemaCombo"))->currentText(),
        QStringLiteral("Finvoice 3.0"));
    QCOMPARE(dialog.findChild<QLineEdit*>(QStringLiteral("referenceNumberTemplateEdit"))->text(),
        QStringLiteral("{I}00"));
    QCOMPARE(dialog.findChild<QLineEdit*>(QStringLiteral("attachmentNameEdit"))->placeholderText(),
        QStringLiteral("$h-$i.pdf"));

    clickButton(&dialog, QDialogButtonBox::Ok);
    const Settings* settings = dialog.settings();
    QCOMPARE(settings->property(QStringLiteral("printScripts/invoice")).toInt(), -1);
    QVERIFY(!settings->properties.contains(QStringLiteral("settings/defaultBankAccount")));
    QVERIFY(!settings->properties.contains(QStringLiteral("settings/interestOnArrears")));
    QVERIFY(!settings->properties.contains(QStringLiteral("email/attachmentName")));
}

void TestSettingsDialog::interestOnArrears_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored"); // empty: the key is removed
    QTest::addRow("whole") << "8"
                           << "800";
    QTest::addRow("comma") << "8,5"
                           << "850";
    QTest::addRow("point") << "7.25"
                           << "725";
    QTest::addRow("zero") << "0"
                          << "0";
    QTest::addRow("hundred") << "100"
                             << "10000";
    QTest::addRow("third decimal dropped") << "11,505"
                                           << "1150";
    QTest::addRow("empty") << ""
                           << "";
}

void TestSettingsDialog::interestOnArrears()
{
    QFETCH(QString, text);
    QFETCH(QString, stored);
    Dialog dialog(m_registry.get());
    // A new database starts with 8 %.
    QCOMPARE(dialog.findChild<QLineEdit*>(QStringLiteral("interestOnArrearsEdit"))
                 ->text()
                 .remove(u'.')
                 .remove(u','),
        QStringLiteral("8"));
    replaceText(&dialog, QStringLiteral("interestOnArrearsEdit"), text);
    clickButton(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(dialog.warnings, QStringList());
    const QVariant value
        = dialog.settings()->property(QStringLiteral("settings/interestOnArrears"));
    QCOMPARE(value.isValid() ? value.toString() : QString(), stored);
}

void TestSettingsDialog::badValuesAreRefused_data()
{
    QTest::addColumn<QString>("widget");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("page");
    QTest::addColumn<QString>("field"); // the message must name it
    QTest::addRow("interest as words")
        << "interestOnArrearsEdit"
        << "kahdeksan" << int(SettingsDialog::InvoicingPage) << "Viivästyskorko";
    QTest::addRow("interest over 100")
        << "interestOnArrearsEdit"
        << "100,5" << int(SettingsDialog::InvoicingPage) << "Viivästyskorko";
    QTest::addRow("interest negative")
        << "interestOnArrearsEdit"
        << "-1" << int(SettingsDialog::InvoicingPage) << "Viivästyskorko";
    QTest::addRow("interest with sign")
        << "interestOnArrearsEdit"
        << "8 %" << int(SettingsDialog::InvoicingPage) << "Viivästyskorko";
    QTest::addRow("business id check digit")
        << "sellerBusinessIdEdit"
        << "1572860-1" << int(SettingsDialog::SellerPage) << "Y-tunnus";
    QTest::addRow("business id as VAT number")
        << "sellerBusinessIdEdit"
        << "FI15728600" << int(SettingsDialog::SellerPage) << "Y-tunnus";
    QTest::addRow("logo height zero")
        << "logoHeightEdit"
        << "0" << int(SettingsDialog::InvoiceFormPage) << "Logon korkeus";
    QTest::addRow("logo height decimals")
        << "logoHeightEdit"
        << "20,5" << int(SettingsDialog::InvoiceFormPage) << "Logon korkeus";
}

void TestSettingsDialog::badValuesAreRefused()
{
    QFETCH(QString, widget);
    QFETCH(QString, text);
    QFETCH(int, page);
    QFETCH(QString, field);

    const QString before = describe(*m_registry->settings());
    Dialog dialog(m_registry.get());
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    dialog.setCurrentPage(SettingsDialog::EmailPage);
    replaceText(&dialog, widget, text);
    clickButton(&dialog, QDialogButtonBox::Ok);

    QCOMPARE(dialog.warnings.size(), 1);
    QVERIFY2(dialog.warnings.at(0).startsWith(field), qPrintable(dialog.warnings.at(0)));
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(dialog.currentPage(), page);
    QCOMPARE(dialog.focusWidget(), dialog.findChild<QWidget*>(widget));
    QCOMPARE(describe(*dialog.settings()), before);
}

void TestSettingsDialog::referenceNumberSuffixIsReplaced()
{
    Settings* settings = m_registry->settings();
    settings->setProperty(QStringLiteral("settings/referenceNumberSuffix"), QStringLiteral("5"));
    {
        Dialog dialog(m_registry.get());
        QCOMPARE(
            dialog.findChild<QLineEdit*>(QStringLiteral("referenceNumberTemplateEdit"))->text(),
            QStringLiteral("{I}05"));
        clickButton(&dialog, QDialogButtonBox::Ok);
        QCOMPARE(dialog.settings()
                     ->property(QStringLiteral("settings/referenceNumberTemplate"))
                     .toString(),
            QStringLiteral("{I}05"));
        QVERIFY(!dialog.settings()->properties.contains(
            QStringLiteral("settings/referenceNumberSuffix")));
        QCOMPARE(dialog.settings()->referenceNumberTemplate(), QStringLiteral("{I}05"));
    }
    {
        // Clearing the field leaves the older key to decide.
        Dialog dialog(m_registry.get());
        replaceText(&dialog, QStringLiteral("referenceNumberTemplateEdit"), QString());
        clickButton(&dialog, QDialogButtonBox::Ok);
        QVERIFY(!dialog.settings()->properties.contains(
            QStringLiteral("settings/referenceNumberTemplate")));
        QCOMPARE(dialog.settings()->referenceNumberTemplate(), QStringLiteral("{I}05"));
    }
}

void TestSettingsDialog::logo()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QImage image(120, 40, QImage::Format_RGB32);
    image.fill(QColor(0, 90, 160));
    const QString pngName = dir.filePath(QStringLiteral("logo.png"));
    QVERIFY(image.save(pngName));
    QFile png(pngName);
    QVERIFY(png.open(QIODevice::ReadOnly));
    const QByteArray pngBytes = png.readAll();
    const QString textName = dir.filePath(QStringLiteral("logo.txt"));
    QFile text(textName);
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write("ei kuva");
    text.close();

    Dialog dialog(m_registry.get());
    QPushButton* choose = dialog.findChild<QPushButton*>(QStringLiteral("chooseLogoButton"));
    QLabel* preview = dialog.findChild<QLabel*>(QStringLiteral("logoPreview"));
    QVERIFY(preview->pixmap().isNull());
    dialog.logoFileName = pngName;
    QTest::mouseClick(choose, Qt::LeftButton);
    QVERIFY(!preview->pixmap().isNull());
    // A file that is no image is refused and the logo stays.
    dialog.logoFileName = textName;
    QTest::mouseClick(choose, Qt::LeftButton);
    QCOMPARE(dialog.warnings.size(), 1);
    QVERIFY(dialog.warnings.at(0).contains(QStringLiteral("logo.txt")));
    dialog.logoFileName = dir.filePath(QStringLiteral("missing.png"));
    QTest::mouseClick(choose, Qt::LeftButton);
    QCOMPARE(dialog.warnings.size(), 2);
    clickButton(&dialog, QDialogButtonBox::Ok);
    QCOMPARE(dialog.settings()->sellerLogo, pngBytes);

    m_registry->settings()->sellerLogo = pngBytes;
    Dialog again(m_registry.get());
    QVERIFY(!again.findChild<QLabel*>(QStringLiteral("logoPreview"))->pixmap().isNull());
    QTest::mouseClick(
        again.findChild<QPushButton*>(QStringLiteral("removeLogoButton")), Qt::LeftButton);
    clickButton(&again, QDialogButtonBox::Ok);
    QVERIFY(again.settings()->sellerLogo.isEmpty());
}

void TestSettingsDialog::cancelChangesNothing()
{
    const QString before = describe(*m_registry->settings());
    Dialog dialog(m_registry.get());
    replaceText(&dialog, QStringLiteral("sellerNameEdit"), QStringLiteral("Muutettu"));
    replaceText(&dialog, QStringLiteral("paymentTermsEdit"), QString());
    toggle(&dialog, "soapEnvCheck");
    clickButton(&dialog, QDialogButtonBox::Cancel);
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(describe(*dialog.settings()), before);
    QCOMPARE(describe(*m_registry->settings()), before);
}

void TestSettingsDialog::opensAtPage()
{
    Dialog dialog(m_registry.get());
    QCOMPARE(dialog.currentPage(), 0);
    dialog.setCurrentPage(SettingsDialog::FinvoicePage);
    QCOMPARE(dialog.currentPage(), int(SettingsDialog::FinvoicePage));
    dialog.setCurrentPage(SettingsDialog::PageCount);
    QCOMPARE(dialog.currentPage(), int(SettingsDialog::FinvoicePage));
    dialog.setCurrentPage(0);
    QCOMPARE(dialog.currentPage(), 0);
}

void TestSettingsDialog::labelsHaveMnemonics()
{
    Dialog dialog(m_registry.get());
    int buddies = 0;
    const QList<QLabel*> labels = dialog.findChildren<QLabel*>();
    for (const QLabel* label : labels) {
        if (!label->buddy())
            continue;
        ++buddies;
        QVERIFY2(label->text().contains(u'&'), qPrintable(label->text()));
        QVERIFY2(!label->text().endsWith(u':'), qPrintable(label->text()));
    }
    // Every editable field has its caption.
    QCOMPARE(buddies, 35);
}

QTEST_MAIN(TestSettingsDialog)
#include "tst_settingsdialog.moc"
