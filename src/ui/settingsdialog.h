#ifndef SETTINGSDIALOG_H
#define SETTINGSDIALOG_H

#include <QByteArray>
#include <QDialog>

class QCheckBox;
class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTabWidget;
class Registry;
class Settings;

// The company settings, one page per area: seller, invoicing, invoice form,
// texts, e-invoicing and e-mail. The dialog edits a copy of the registry's
// settings and does no database work: after exec() returns Accepted, the
// caller copies settings() into the registry and saves it.
class SettingsDialog : public QDialog
{
    Q_OBJECT
public:
    enum Page
    {
        SellerPage,
        InvoicingPage,
        InvoiceFormPage,
        TextsPage,
        FinvoicePage,
        EmailPage,
        PageCount
    };

    explicit SettingsDialog(Registry* registry, QWidget* parent = nullptr);
    ~SettingsDialog() override;

    int currentPage() const;
    void setCurrentPage(int page);
    // The edited copy, owned by the dialog; filled in by accept().
    Settings* settings() const { return m_settings; }

    // Reads an image file as the seller's logo; a file that is not a
    // readable image is refused with a warning.
    bool setLogoFile(const QString& fileName);
    void removeLogo();

public slots:
    void accept() override;
    void chooseLogo();

protected:
    // Every refusal goes through here, so tests can catch it.
    virtual void showWarning(const QString& text);
    // Asks for the logo file; empty when the user gives up.
    virtual QString chooseLogoFileName();

private:
    QWidget* createSellerPage();
    QWidget* createInvoicingPage();
    QWidget* createInvoiceFormPage();
    QWidget* createTextsPage();
    QWidget* createFinvoicePage();
    QWidget* createEmailPage();
    void loadValues();
    // Checks the fields; on a bad value shows its page, warns, focuses the
    // field and returns false.
    bool checkValues();
    void storeValues();
    bool refuse(QWidget* field, int page, const QString& text);
    void updateLogoPreview();

    Registry* m_registry;
    Settings* m_settings;
    QByteArray m_logo;
    QTabWidget* m_tabs;
    QDialogButtonBox* m_buttons;

    QLineEdit* m_sellerNameEdit;
    QLineEdit* m_sellerStreetNameEdit;
    QLineEdit* m_sellerPostCodeEdit;
    QLineEdit* m_sellerTownNameEdit;
    QLineEdit* m_sellerCountryEdit;
    QLineEdit* m_sellerBusinessIdEdit;
    QLineEdit* m_sellerPhoneNumberEdit;
    QLineEdit* m_sellerEmailAddressEdit;
    QLineEdit* m_sellerWebAddressEdit;
    QLabel* m_logoPreview;

    QLineEdit* m_paymentTermsEdit;
    QLineEdit* m_periodForComplaintsEdit;
    QLineEdit* m_interestOnArrearsEdit;
    QComboBox* m_interestProductCombo;
    QLineEdit* m_referenceNumberTemplateEdit;
    QComboBox* m_defaultBankAccountCombo;
    QCheckBox* m_vatIncludedCheck;

    QComboBox* m_printScriptCombo;
    QComboBox* m_languageCombo;
    QComboBox* m_invoiceItemOptionsCombo;
    QComboBox* m_roundingModeCombo;
    QCheckBox* m_barcodeVisibleCheck;
    QCheckBox* m_qrCodeCheck;
    QLineEdit* m_logoHeightEdit;

    QPlainTextEdit* m_noticeText1Edit;
    QPlainTextEdit* m_noticeText2Edit;
    QPlainTextEdit* m_reminderTextEdit;
    QLineEdit* m_footerTextEdits[3];

    QLineEdit* m_ediEdit;
    QLineEdit* m_senderIdEdit;
    QLineEdit* m_intermediatorIdEdit;
    QLineEdit* m_defaultReceiverIdEdit;
    QLineEdit* m_epiInstructionIdEdit;
    QComboBox* m_xmlSchemaCombo;
    QCheckBox* m_soapEnvCheck;

    QLineEdit* m_emailSubjectEdit;
    QPlainTextEdit* m_emailBodyEdit;
    QLineEdit* m_attachmentNameEdit;
};

#endif // SETTINGSDIALOG_H
