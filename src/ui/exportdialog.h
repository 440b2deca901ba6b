#ifndef EXPORTDIALOG_H
#define EXPORTDIALOG_H

#include "domain/customer.h"
#include "domain/invoicecriteria.h"
#include "export/invoiceexporter.h"

#include <QDialog>
#include <QMessageBox>
#include <memory>

class ECMAScriptEngine;
class Invoice;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;
class Registry;

// Writes the invoices of the window's search, or all invoices, as PDF
// files and Finvoice e-invoices: one page for each output with its
// directory, file-name template (with an example from the window's
// invoice), one file per invoice or one for all, and whether to open the
// directory afterwards. The choices are kept in the configuration; the
// Finvoice version and envelope come from the company settings.
class ExportDialog : public QDialog
{
    Q_OBJECT
public:
    enum Page
    {
        PdfPage,
        FinvoicePage
    };

    explicit ExportDialog(Registry* registry, QWidget* parent = nullptr);
    ~ExportDialog() override;

    // The invoice of the file-name examples (not owned); null for none.
    void setSampleInvoice(Invoice* invoice);
    Invoice* sampleInvoice() const { return m_sampleInvoice; }
    // The window's search, offered beside all invoices.
    void setCriteria(const InvoiceCriteria& criteria);
    // What the export writes: the search, or every invoice.
    InvoiceCriteria criteria() const;
    // True when the directory exists or was made after asking.
    bool checkDirectory(const QString& path);
    // The last run's results.
    const InvoiceExporter* exporter() const { return m_exporter.get(); }

public slots:
    void exportInvoices();
    void pdfTemplateEdited(const QString& text);
    void xmlTemplateEdited(const QString& text);
    void showPdfDirectoryDialog();
    void showXmlDirectoryDialog();
    void showFinvoiceDialog();
    void showScriptError(ECMAScriptEngine* engine);

protected:
    // Message boxes, dialogs, the directory chooser and the file manager,
    // replaceable in tests.
    virtual void showMessage(QMessageBox::Icon icon, const QString& text);
    virtual bool askQuestion(const QString& text);
    // The script error dialog, for a script's error or a run's findings.
    virtual void showErrorDialog(const QString& title, const QString& text);
    virtual QString chooseDirectory(const QString& start);
    virtual bool openDirectory(const QString& path);
    virtual int execDialog(QDialog* dialog);

private:
    // The widgets of one output's page.
    struct Output
    {
        QCheckBox* enabledCheck = nullptr;
        QWidget* fields = nullptr;
        QLineEdit* directoryEdit = nullptr;
        QLineEdit* templateEdit = nullptr;
        QLabel* exampleLabel = nullptr;
        QCheckBox* separateCheck = nullptr;
        QCheckBox* openCheck = nullptr;
    };

    QWidget* createPage(Output* output, const QString& prefix, const QString& enableText);
    void loadOptions();
    InvoiceExporter::Options readOptions() const;
    void showExample(const Output& output, const QString& nameTemplate);
    void updateEnabled();
    void chooseDirectoryFor(const Output& output);
    // A warning on the page, with the cursor in the field to fix.
    void refuse(Page page, QWidget* field, const QString& text);

    Registry* m_registry;
    std::unique_ptr<InvoiceExporter> m_exporter;
    Invoice* m_sampleInvoice = nullptr;
    Customer m_noCustomer;
    InvoiceCriteria m_criteria;

    QTabWidget* m_pages;
    Output m_pdf;
    Output m_finvoice;
    QLabel* m_finvoiceSettingsLabel;
    QRadioButton* m_searchRadio;
    QRadioButton* m_allRadio;
    QPushButton* m_exportButton;
};

#endif // EXPORTDIALOG_H
