#include "settingsdialog.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/decimalformat.h"
#include "domain/printscript.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "ui/formhelper.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

// The logo is printed 20 mm high unless told otherwise.
constexpr int defaultLogoHeight = 20;
constexpr qint64 maxInterest = 100 * Constants::percentageScale;

QPlainTextEdit* addText(QFormLayout* layout, const QString& caption, const QString& name)
{
    QPlainTextEdit* edit = FormHelper::addField<QPlainTextEdit>(layout, caption, name);
    edit->setTabChangesFocus(true);
    edit->setMinimumHeight(70);
    return edit;
}

// Selects the item whose data is value; a value the list does not offer is
// added under its own text so that accepting the dialog keeps it.
void selectData(QComboBox* combo, const QVariant& value, const QString& unknownText)
{
    int index = combo->findData(value);
    if (index < 0) {
        combo->addItem(unknownText, value);
        index = combo->count() - 1;
    }
    combo->setCurrentIndex(index);
}

QWidget* page(QFormLayout*& layout)
{
    QWidget* widget = new QWidget();
    layout = new QFormLayout(widget);
    layout->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    return widget;
}

} // namespace

SettingsDialog::SettingsDialog(Registry* registry, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_settings(new Settings())
{
    setWindowTitle(tr("Asetukset"));
    registry->settings()->copy(m_settings);
    m_logo = m_settings->sellerLogo;

    m_tabs = new QTabWidget();
    m_tabs->setObjectName(QStringLiteral("pages"));
    m_tabs->addTab(createSellerPage(), tr("Yritys"));
    m_tabs->addTab(createInvoicingPage(), tr("Laskutus"));
    m_tabs->addTab(createInvoiceFormPage(), tr("Laskupohja"));
    m_tabs->addTab(createTextsPage(), tr("Tekstit"));
    m_tabs->addTab(createFinvoicePage(), tr("Verkkolasku"));
    m_tabs->addTab(createEmailPage(), tr("Sähköposti"));

    m_buttons = FormHelper::createButtonBox(this);

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs, 1);
    layout->addWidget(m_buttons);
    loadValues();
    resize(720, 560);
}

SettingsDialog::~SettingsDialog()
{
    delete m_settings;
}

int SettingsDialog::currentPage() const
{
    return m_tabs->currentIndex();
}

void SettingsDialog::setCurrentPage(int page)
{
    if (page >= 0 && page < m_tabs->count())
        m_tabs->setCurrentIndex(page);
}

QWidget* SettingsDialog::createSellerPage()
{
    QFormLayout* layout = nullptr;
    QWidget* widget = page(layout);
    m_sellerNameEdit
        = FormHelper::addField<QLineEdit>(layout, tr("&Nimi"), QStringLiteral("sellerNameEdit"));
    m_sellerNameEdit->setMaxLength(100);
    m_sellerStreetNameEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Lähiosoite"), QStringLiteral("sellerStreetNameEdit"));
    m_sellerPostCodeEdit = FormHelper::addField<QLineEdit>(
        layout, tr("Pos&tinumero"), QStringLiteral("sellerPostCodeEdit"));
    m_sellerPostCodeEdit->setMaxLength(10);
    m_sellerTownNameEdit = FormHelper::addField<QLineEdit>(
        layout, tr("Postitoimip&aikka"), QStringLiteral("sellerTownNameEdit"));
    m_sellerCountryEdit
        = FormHelper::addField<QLineEdit>(layout, tr("&Maa"), QStringLiteral("sellerCountryEdit"));
    m_sellerBusinessIdEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Y-tunnus"), QStringLiteral("sellerBusinessIdEdit"));
    m_sellerBusinessIdEdit->setPlaceholderText(tr("1234567-1"));
    m_sellerPhoneNumberEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Puhelin"), QStringLiteral("sellerPhoneNumberEdit"));
    m_sellerEmailAddressEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Sähköposti"), QStringLiteral("sellerEmailAddressEdit"));
    m_sellerWebAddressEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Verkkosivut"), QStringLiteral("sellerWebAddressEdit"));
    m_sellerWebAddressEdit->setPlaceholderText(tr("https://www.esimerkki.fi"));

    m_logoPreview = new QLabel();
    m_logoPreview->setObjectName(QStringLiteral("logoPreview"));
    m_logoPreview->setMinimumSize(240, 80);
    m_logoPreview->setMaximumHeight(140);
    m_logoPreview->setAlignment(Qt::AlignCenter);
    m_logoPreview->setFrameShape(QFrame::StyledPanel);
    QPushButton* chooseButton
        = FormHelper::createButton(tr("Valitse &kuva..."), QStringLiteral("chooseLogoButton"));
    QPushButton* removeButton
        = FormHelper::createButton(tr("P&oista kuva"), QStringLiteral("removeLogoButton"));
    connect(chooseButton, &QPushButton::clicked, this, &SettingsDialog::chooseLogo);
    connect(removeButton, &QPushButton::clicked, this, &SettingsDialog::removeLogo);
    QVBoxLayout* logoButtons = new QVBoxLayout();
    logoButtons->addWidget(chooseButton);
    logoButtons->addWidget(removeButton);
    logoButtons->addStretch();
    QHBoxLayout* logoLayout = new QHBoxLayout();
    logoLayout->addWidget(m_logoPreview, 1, Qt::AlignTop);
    logoLayout->addLayout(logoButtons);
    // The buttons carry the mnemonics of the logo row.
    layout->addRow(new QLabel(tr("Logo")), logoLayout);
    return widget;
}

QWidget* SettingsDialog::createInvoicingPage()
{
    QFormLayout* layout = nullptr;
    QWidget* widget = page(layout);
    m_paymentTermsEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Maksuehdot"), QStringLiteral("paymentTermsEdit"));
    m_paymentTermsEdit->setPlaceholderText(tr("14 päivää netto"));
    m_periodForComplaintsEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Huomautusaika"), QStringLiteral("periodForComplaintsEdit"));
    m_periodForComplaintsEdit->setPlaceholderText(tr("8 päivää"));
    m_interestOnArrearsEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Viivästyskorko (%)"), QStringLiteral("interestOnArrearsEdit"));
    m_interestProductCombo = FormHelper::addField<QComboBox>(
        layout, tr("Viivästyskoron &tuote"), QStringLiteral("interestProductCombo"));
    m_referenceNumberTemplateEdit = FormHelper::addField<QLineEdit>(
        layout, tr("Viite&numeron malli"), QStringLiteral("referenceNumberTemplateEdit"));
    m_referenceNumberTemplateEdit->setPlaceholderText(QStringLiteral("{I}00"));
    QLabel* hint = new QLabel(tr("{I} = laskun nro, {C} = asiakasnro"));
    hint->setEnabled(false);
    layout->addRow(QString(), hint);
    m_defaultBankAccountCombo = FormHelper::addField<QComboBox>(
        layout, tr("&Oletuspankkitili"), QStringLiteral("defaultBankAccountCombo"));
    m_vatIncludedCheck = FormHelper::addCheckBox(
        layout, tr("Hinnat syötetään vero&llisina"), QStringLiteral("vatIncludedCheck"));
    return widget;
}

QWidget* SettingsDialog::createInvoiceFormPage()
{
    QFormLayout* layout = nullptr;
    QWidget* widget = page(layout);
    m_printScriptCombo = FormHelper::addField<QComboBox>(
        layout, tr("&Laskupohja"), QStringLiteral("printScriptCombo"));
    m_languageCombo
        = FormHelper::addField<QComboBox>(layout, tr("&Kieli"), QStringLiteral("languageCombo"));
    m_invoiceItemOptionsCombo = FormHelper::addField<QComboBox>(
        layout, tr("Laskurivien &teksti"), QStringLiteral("invoiceItemOptionsCombo"));
    m_invoiceItemOptionsCombo->addItem(tr("Tuote"), 1);
    m_invoiceItemOptionsCombo->addItem(tr("Vain selite"), 2);
    m_invoiceItemOptionsCombo->addItem(tr("Tuote ja selite"), 3);
    m_roundingModeCombo = FormHelper::addField<QComboBox>(
        layout, tr("&ALV-erittely"), QStringLiteral("roundingModeCombo"));
    m_roundingModeCombo->addItem(tr("Verollisista summista"), 1);
    m_roundingModeCombo->addItem(tr("Verottomista rivisummista"), 2);
    m_logoHeightEdit = FormHelper::addField<QLineEdit>(
        layout, tr("Logon k&orkeus (mm)"), QStringLiteral("logoHeightEdit"));
    m_logoHeightEdit->setPlaceholderText(QString::number(defaultLogoHeight));
    m_barcodeVisibleCheck = FormHelper::addCheckBox(
        layout, tr("Tulosta &pankkiviivakoodi"), QStringLiteral("barcodeVisibleCheck"));
    m_qrCodeCheck = FormHelper::addCheckBox(
        layout, tr("Tulosta maksun &QR-koodi"), QStringLiteral("qrCodeCheck"));
    return widget;
}

QWidget* SettingsDialog::createTextsPage()
{
    QFormLayout* layout = nullptr;
    QWidget* widget = page(layout);
    m_noticeText1Edit = addText(layout, tr("&Huomautusteksti"), QStringLiteral("noticeText1Edit"));
    m_noticeText2Edit
        = addText(layout, tr("&Tilisiirron teksti"), QStringLiteral("noticeText2Edit"));
    m_reminderTextEdit
        = addText(layout, tr("&Maksumuistutuksen teksti"), QStringLiteral("reminderTextEdit"));
    const QString labels[3] = { tr("Alatunniste &1"), tr("Alatunniste &2"), tr("Alatunniste &3") };
    for (int i = 0; i < 3; ++i) {
        m_footerTextEdits[i] = FormHelper::addField<QLineEdit>(
            layout, labels[i], QStringLiteral("footerText%1Edit").arg(i + 1));
    }
    return widget;
}

QWidget* SettingsDialog::createFinvoicePage()
{
    QFormLayout* layout = nullptr;
    QWidget* widget = page(layout);
    m_ediEdit = FormHelper::addField<QLineEdit>(
        layout, tr("Oma &verkkolaskuosoite"), QStringLiteral("ediEdit"));
    m_senderIdEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Lähettäjän tunnus"), QStringLiteral("senderIdEdit"));
    m_intermediatorIdEdit = FormHelper::addField<QLineEdit>(
        layout, tr("Välittäjän t&unnus"), QStringLiteral("intermediatorIdEdit"));
    m_defaultReceiverIdEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Oletusvastaanottaja"), QStringLiteral("defaultReceiverIdEdit"));
    m_epiInstructionIdEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Maksuohjeen tunnus"), QStringLiteral("epiInstructionIdEdit"));
    m_xmlSchemaCombo = FormHelper::addField<QComboBox>(
        layout, tr("Finvoice-ve&rsio"), QStringLiteral("xmlSchemaCombo"));
    m_xmlSchemaCombo->addItem(tr("Finvoice 3.0"), QStringLiteral("3.0"));
    m_xmlSchemaCombo->addItem(tr("Finvoice 2.01"), QStringLiteral("2.01"));
    m_xmlSchemaCombo->addItem(tr("Finvoice 1.3"), QStringLiteral("1.3"));
    m_soapEnvCheck = FormHelper::addCheckBox(
        layout, tr("&SOAP-kehys jokaisen laskun eteen"), QStringLiteral("soapEnvCheck"));
    return widget;
}

QWidget* SettingsDialog::createEmailPage()
{
    QFormLayout* layout = nullptr;
    QWidget* widget = page(layout);
    m_emailSubjectEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Otsikko"), QStringLiteral("emailSubjectEdit"));
    m_emailBodyEdit = addText(layout, tr("&Viesti"), QStringLiteral("emailBodyEdit"));
    m_emailBodyEdit->setMinimumHeight(160);
    m_attachmentNameEdit = FormHelper::addField<QLineEdit>(
        layout, tr("&Liitteen nimi"), QStringLiteral("attachmentNameEdit"));
    m_attachmentNameEdit->setPlaceholderText(QStringLiteral("$h-$i.pdf"));
    return widget;
}

void SettingsDialog::loadValues()
{
    const Settings* settings = m_settings;
    auto text
        = [settings](const QString& key) { return settings->property(key, QString()).toString(); };

    m_sellerNameEdit->setText(settings->sellerName);
    m_sellerStreetNameEdit->setText(settings->sellerStreetName);
    m_sellerPostCodeEdit->setText(settings->sellerPostCode);
    m_sellerTownNameEdit->setText(settings->sellerTownName);
    m_sellerCountryEdit->setText(settings->sellerCountry);
    m_sellerBusinessIdEdit->setText(settings->sellerBusinessId);
    m_sellerPhoneNumberEdit->setText(text(SettingsKeys::phoneNumber));
    m_sellerEmailAddressEdit->setText(text(SettingsKeys::emailAddress));
    m_sellerWebAddressEdit->setText(text(SettingsKeys::webAddress));
    updateLogoPreview();

    m_paymentTermsEdit->setText(text(SettingsKeys::paymentTerms));
    m_periodForComplaintsEdit->setText(text(SettingsKeys::periodForComplaints));
    bool ok = false;
    const int interest = settings->property(SettingsKeys::interestOnArrears).toInt(&ok);
    const DecimalFormat percentFormat(
        Constants::percentageFractionDigits, Constants::percentageMinFractionDigits);
    m_interestOnArrearsEdit->setText(ok ? percentFormat.format(interest) : QString());

    m_interestProductCombo->addItem(QString(), QString());
    for (int i = 0; i < m_registry->productCount(); ++i) {
        const Product* product = m_registry->productAt(i);
        m_interestProductCombo->addItem(
            QStringLiteral("%1 %2").arg(product->number, product->name), product->number);
    }
    selectData(m_interestProductCombo, text(SettingsKeys::interestProduct),
        text(SettingsKeys::interestProduct));

    // Shows what new invoices really get, also from the older suffix key.
    m_referenceNumberTemplateEdit->setText(settings->referenceNumberTemplate());

    m_defaultBankAccountCombo->addItem(tr("(ei oletustiliä)"), -1);
    for (int i = 0; i < m_registry->bankAccountCount(); ++i) {
        const BankAccount* account = m_registry->bankAccountAt(i);
        if (account->deleted)
            continue;
        const QString name = account->shortName.isEmpty() ? account->name : account->shortName;
        m_defaultBankAccountCombo->addItem(
            QStringLiteral("%1 %2").arg(name, BankAccount::formatIban(account->iban)), account->id);
    }
    const int accountId = settings->property(SettingsKeys::defaultBankAccount).toInt(&ok);
    selectData(
        m_defaultBankAccountCombo, ok ? accountId : -1, tr("Poistettu tili (%1)").arg(accountId));
    m_vatIncludedCheck->setChecked(settings->property(SettingsKeys::vatIncluded, true).toBool());

    const QStringList builtInNames = m_registry->builtInPrintScriptNames();
    const QList<int> builtInIds = m_registry->builtInPrintScriptIds();
    for (int i = 0; i < builtInNames.size() && i < builtInIds.size(); ++i)
        m_printScriptCombo->addItem(builtInNames.at(i), builtInIds.at(i));
    for (int i = 0; i < m_registry->printScriptCount(); ++i) {
        const PrintScript* script = m_registry->printScriptAt(i);
        if (script->type == QLatin1String("invoice"))
            m_printScriptCombo->addItem(script->name, script->id);
    }
    int scriptId = settings->property(SettingsKeys::invoiceScript).toInt(&ok);
    if (!ok)
        scriptId = -1;
    selectData(m_printScriptCombo, scriptId, tr("Poistettu laskupohja (%1)").arg(scriptId));

    const QStringList languages = m_registry->availableLanguages();
    for (const QString& language : languages)
        m_languageCombo->addItem(language, Registry::parseLanguageCode(language));
    const QString language = text(SettingsKeys::language);
    selectData(m_languageCombo, language.isEmpty() ? QStringLiteral("fi") : language, language);

    const int itemOptions = settings->property(SettingsKeys::invoiceItemOptions).toInt(&ok);
    selectData(m_invoiceItemOptionsCombo, ok ? itemOptions : 3, QString::number(itemOptions));
    const int roundingMode = settings->property(SettingsKeys::roundingMode).toInt(&ok);
    // Every mode but 2 works from the VAT-included sums.
    m_roundingModeCombo->setCurrentIndex(ok && roundingMode == 2 ? 1 : 0);
    const int logoHeight = settings->property(SettingsKeys::logoHeight).toInt(&ok);
    m_logoHeightEdit->setText(ok ? QString::number(logoHeight) : QString());
    m_barcodeVisibleCheck->setChecked(
        settings->property(SettingsKeys::barcodeVisible, false).toBool());
    m_qrCodeCheck->setChecked(settings->property(SettingsKeys::qrCode, true).toBool());

    m_noticeText1Edit->setPlainText(text(SettingsKeys::noticeText1));
    m_noticeText2Edit->setPlainText(text(SettingsKeys::noticeText2));
    m_reminderTextEdit->setPlainText(text(SettingsKeys::reminderText));
    for (int i = 0; i < 3; ++i)
        m_footerTextEdits[i]->setText(text(SettingsKeys::footerText.arg(i + 1)));

    m_ediEdit->setText(text(SettingsKeys::edi));
    m_senderIdEdit->setText(text(SettingsKeys::senderId));
    m_intermediatorIdEdit->setText(text(SettingsKeys::intermediatorId));
    m_defaultReceiverIdEdit->setText(text(SettingsKeys::defaultReceiverId));
    m_epiInstructionIdEdit->setText(text(SettingsKeys::epiInstructionId));
    const QString schema = text(SettingsKeys::xmlSchema);
    selectData(m_xmlSchemaCombo, schema.isEmpty() ? QStringLiteral("3.0") : schema,
        QStringLiteral("Finvoice %1").arg(schema));
    m_soapEnvCheck->setChecked(settings->property(SettingsKeys::soapEnv, true).toBool());

    m_emailSubjectEdit->setText(text(SettingsKeys::emailSubject));
    m_emailBodyEdit->setPlainText(text(SettingsKeys::emailBody));
    m_attachmentNameEdit->setText(text(SettingsKeys::attachmentName));
}

bool SettingsDialog::refuse(QWidget* field, int page, const QString& text)
{
    setCurrentPage(page);
    showWarning(text);
    field->setFocus();
    if (QLineEdit* edit = qobject_cast<QLineEdit*>(field))
        edit->selectAll();
    return false;
}

bool SettingsDialog::checkValues()
{
    const QString businessId = m_sellerBusinessIdEdit->text().trimmed();
    if (!businessId.isEmpty() && !Customer::isValidBusinessId(businessId)) {
        return refuse(m_sellerBusinessIdEdit, SellerPage,
            tr("Y-tunnus on virheellinen. Kirjoita se muodossa 1234567-1."));
    }
    if (!m_interestOnArrearsEdit->text().trimmed().isEmpty()) {
        using Status = DecimalFormat::ParseStatus;
        qint64 interest = 0;
        const Status status = FormHelper::parseDecimal(m_interestOnArrearsEdit->text(),
            Constants::percentageFractionDigits, Constants::percentageMinFractionDigits, interest);
        if (status == Status::TooLarge || (status == Status::Ok && interest > maxInterest)) {
            const DecimalFormat percentFormat(
                Constants::percentageFractionDigits, Constants::percentageMinFractionDigits);
            return refuse(m_interestOnArrearsEdit, InvoicingPage,
                tr("Viivästyskorko on liian suuri. Suurin sallittu viivästyskorko on %1 %.")
                    .arg(percentFormat.format(maxInterest)));
        }
        if (status != Status::Ok || interest < 0) {
            return refuse(m_interestOnArrearsEdit, InvoicingPage,
                tr("Viivästyskorko on virheellinen: kirjoita prosentti, esimerkiksi 8 tai 8,5."));
        }
    }
    if (!m_logoHeightEdit->text().trimmed().isEmpty()) {
        bool ok = false;
        const int height = m_logoHeightEdit->text().trimmed().toInt(&ok);
        if (!ok || height < 1 || height > 100) {
            return refuse(m_logoHeightEdit, InvoiceFormPage,
                tr("Logon korkeus on virheellinen: kirjoita millimetrit väliltä 1-100."));
        }
    }
    return true;
}

void SettingsDialog::storeValues()
{
    Settings* settings = m_settings;
    auto store = [settings](const QString& key, const QString& value) {
        settings->setPropertyIfNotEmpty(key, value.trimmed());
    };

    settings->sellerName = m_sellerNameEdit->text().trimmed();
    settings->sellerStreetName = m_sellerStreetNameEdit->text().trimmed();
    settings->sellerPostCode = m_sellerPostCodeEdit->text().trimmed();
    settings->sellerTownName = m_sellerTownNameEdit->text().trimmed();
    settings->sellerCountry = m_sellerCountryEdit->text().trimmed();
    settings->sellerBusinessId = m_sellerBusinessIdEdit->text().trimmed();
    settings->sellerLogo = m_logo;
    store(SettingsKeys::phoneNumber, m_sellerPhoneNumberEdit->text());
    store(SettingsKeys::emailAddress, m_sellerEmailAddressEdit->text());
    store(SettingsKeys::webAddress, m_sellerWebAddressEdit->text());

    store(SettingsKeys::paymentTerms, m_paymentTermsEdit->text());
    store(SettingsKeys::periodForComplaints, m_periodForComplaintsEdit->text());
    qint64 interest = 0;
    if (FormHelper::parseDecimal(m_interestOnArrearsEdit->text(),
            Constants::percentageFractionDigits, Constants::percentageMinFractionDigits, interest)
        == DecimalFormat::ParseStatus::Ok) {
        settings->setProperty(SettingsKeys::interestOnArrears, int(interest));
    } else {
        settings->removeProperty(SettingsKeys::interestOnArrears);
    }
    store(SettingsKeys::interestProduct, m_interestProductCombo->currentData().toString());
    const QString referenceTemplate = m_referenceNumberTemplateEdit->text().trimmed();
    store(SettingsKeys::referenceNumberTemplate, referenceTemplate);
    // The template replaces the older suffix for good.
    if (!referenceTemplate.isEmpty())
        settings->removeProperty(SettingsKeys::referenceNumberSuffix);
    const int accountId = m_defaultBankAccountCombo->currentData().toInt();
    if (accountId >= 0)
        settings->setProperty(SettingsKeys::defaultBankAccount, accountId);
    else
        settings->removeProperty(SettingsKeys::defaultBankAccount);
    settings->setProperty(SettingsKeys::vatIncluded, m_vatIncludedCheck->isChecked());

    settings->setProperty(SettingsKeys::invoiceScript, m_printScriptCombo->currentData().toInt());
    settings->setProperty(SettingsKeys::language, m_languageCombo->currentData().toString());
    settings->setProperty(
        SettingsKeys::invoiceItemOptions, m_invoiceItemOptionsCombo->currentData().toInt());
    settings->setProperty(SettingsKeys::roundingMode, m_roundingModeCombo->currentData().toInt());
    const QString logoHeight = m_logoHeightEdit->text().trimmed();
    if (logoHeight.isEmpty())
        settings->removeProperty(SettingsKeys::logoHeight);
    else
        settings->setProperty(SettingsKeys::logoHeight, logoHeight.toInt());
    settings->setProperty(SettingsKeys::barcodeVisible, m_barcodeVisibleCheck->isChecked());
    settings->setProperty(SettingsKeys::qrCode, m_qrCodeCheck->isChecked());

    // Texts keep their inner line breaks; only the ends are trimmed.
    store(SettingsKeys::noticeText1, m_noticeText1Edit->toPlainText());
    store(SettingsKeys::noticeText2, m_noticeText2Edit->toPlainText());
    store(SettingsKeys::reminderText, m_reminderTextEdit->toPlainText());
    for (int i = 0; i < 3; ++i)
        store(SettingsKeys::footerText.arg(i + 1), m_footerTextEdits[i]->text());

    store(SettingsKeys::edi, m_ediEdit->text());
    store(SettingsKeys::senderId, m_senderIdEdit->text());
    store(SettingsKeys::intermediatorId, m_intermediatorIdEdit->text());
    store(SettingsKeys::defaultReceiverId, m_defaultReceiverIdEdit->text());
    store(SettingsKeys::epiInstructionId, m_epiInstructionIdEdit->text());
    settings->setProperty(SettingsKeys::xmlSchema, m_xmlSchemaCombo->currentData().toString());
    settings->setProperty(SettingsKeys::soapEnv, m_soapEnvCheck->isChecked());

    store(SettingsKeys::emailSubject, m_emailSubjectEdit->text());
    store(SettingsKeys::emailBody, m_emailBodyEdit->toPlainText());
    store(SettingsKeys::attachmentName, m_attachmentNameEdit->text());
}

void SettingsDialog::accept()
{
    if (!checkValues())
        return;
    storeValues();
    QDialog::accept();
}

void SettingsDialog::chooseLogo()
{
    const QString fileName = chooseLogoFileName();
    if (!fileName.isEmpty())
        setLogoFile(fileName);
}

bool SettingsDialog::setLogoFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        showWarning(tr("Tiedoston %1 lukeminen epäonnistui. %2")
                        .arg(QFileInfo(fileName).fileName(), file.errorString()));
        return false;
    }
    const QByteArray data = file.readAll();
    if (QImage::fromData(data).isNull()) {
        showWarning(tr("Tiedosto %1 ei ole kuva, jota ohjelma osaa lukea.")
                        .arg(QFileInfo(fileName).fileName()));
        return false;
    }
    m_logo = data;
    updateLogoPreview();
    return true;
}

void SettingsDialog::removeLogo()
{
    m_logo.clear();
    updateLogoPreview();
}

void SettingsDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

QString SettingsDialog::chooseLogoFileName()
{
    return QFileDialog::getOpenFileName(this, tr("Valitse logo"), QString(),
        tr("Kuvat (*.png *.jpg *.jpeg *.gif *.bmp *.svg);;Kaikki tiedostot (*)"));
}

void SettingsDialog::updateLogoPreview()
{
    const QImage image = QImage::fromData(m_logo);
    if (image.isNull()) {
        m_logoPreview->setPixmap(QPixmap());
        m_logoPreview->setText(tr("Ei logoa"));
        return;
    }
    const QSize size = m_logoPreview->minimumSize();
    m_logoPreview->setPixmap(QPixmap::fromImage(image.scaled(
        size.width() - 8, size.height() - 8, Qt::KeepAspectRatio, Qt::SmoothTransformation)));
}
