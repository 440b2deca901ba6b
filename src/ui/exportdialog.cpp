#include "exportdialog.h"

#include "core/registry.h"
#include "domain/invoice.h"
#include "ui/finvoicedialog.h"
#include "ui/formhelper.h"
#include "ui/scripterrordialog.h"
#include "util/ecmascriptengine.h"
#include "util/templatestringhelper.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

namespace {
// Each invoice as its own type.
constexpr int ownPrintType = 0;
// Room for a directory path and the example beside the captions.
constexpr int dialogMinimumWidth = 560;
} // namespace

ExportDialog::ExportDialog(Registry* registry, QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_exporter(std::make_unique<InvoiceExporter>(registry))
    , m_pages(FormHelper::create<QTabWidget>(QStringLiteral("pages")))
    , m_finvoiceSettingsLabel(FormHelper::create<QLabel>(QStringLiteral("finvoiceSettingsLabel")))
    , m_searchRadio(FormHelper::create<QRadioButton>(QStringLiteral("searchRadio")))
    , m_allRadio(FormHelper::create<QRadioButton>(QStringLiteral("allRadio")))
    , m_exportButton(FormHelper::create<QPushButton>(QStringLiteral("exportButton")))
{
    setWindowTitle(tr("Vie laskut"));

    m_pages->addTab(
        createPage(&m_pdf, QStringLiteral("pdf"), tr("&Tallenna laskut PDF-tiedostoiksi")),
        tr("PDF"));
    QWidget* finvoicePage = createPage(
        &m_finvoice, QStringLiteral("finvoice"), tr("&Tallenna laskut Finvoice-verkkolaskuiksi"));
    // The script and the company's settings concern every Finvoice file, exported now or not.
    auto* finvoiceLayout = static_cast<QVBoxLayout*>(finvoicePage->layout());
    m_finvoiceSettingsLabel->setWordWrap(true);
    finvoiceLayout->addWidget(m_finvoiceSettingsLabel);
    QPushButton* scriptButton = FormHelper::createButton(
        tr("&Muokkaa Finvoice-verkkolaskun sisältöä..."), QStringLiteral("finvoiceScriptButton"));
    connect(scriptButton, &QPushButton::clicked, this, &ExportDialog::showFinvoiceDialog);
    auto* scriptRow = new QHBoxLayout;
    scriptRow->addWidget(scriptButton);
    scriptRow->addStretch(1);
    finvoiceLayout->addLayout(scriptRow);
    finvoiceLayout->addStretch(1);
    m_pages->addTab(finvoicePage, tr("Finvoice"));

    connect(m_pdf.templateEdit, &QLineEdit::textChanged, this, &ExportDialog::pdfTemplateEdited);
    connect(
        m_finvoice.templateEdit, &QLineEdit::textChanged, this, &ExportDialog::xmlTemplateEdited);

    auto* invoices = new QGroupBox(tr("Vietävät laskut"), this);
    m_searchRadio->setText(tr("&Nykyisen haun laskut"));
    m_allRadio->setText(tr("&Kaikki laskut"));
    auto* invoicesLayout = new QVBoxLayout(invoices);
    invoicesLayout->addWidget(m_searchRadio);
    invoicesLayout->addWidget(m_allRadio);
    m_searchRadio->setChecked(true);

    auto* buttons = new QDialogButtonBox(this);
    m_exportButton->setText(tr("&Vie"));
    m_exportButton->setDefault(true);
    buttons->addButton(m_exportButton, QDialogButtonBox::AcceptRole);
    buttons->addButton(QDialogButtonBox::Cancel)->setText(tr("Peruuta"));
    connect(m_exportButton, &QPushButton::clicked, this, &ExportDialog::exportInvoices);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_pages);
    layout->addWidget(invoices);
    layout->addWidget(buttons);
    setMinimumWidth(dialogMinimumWidth);

    loadOptions();
    updateEnabled();
}

ExportDialog::~ExportDialog() = default;

QWidget* ExportDialog::createPage(Output* output, const QString& prefix, const QString& enableText)
{
    auto name = [&prefix](const char* suffix) { return prefix + QLatin1String(suffix); };
    auto* page = new QWidget;
    auto* pageLayout = new QVBoxLayout(page);
    output->enabledCheck = FormHelper::create<QCheckBox>(name("EnabledCheck"));
    output->enabledCheck->setText(enableText);
    connect(output->enabledCheck, &QCheckBox::toggled, this, &ExportDialog::updateEnabled);
    pageLayout->addWidget(output->enabledCheck);
    // What the check box switches on and off.
    output->fields = new QWidget;
    pageLayout->addWidget(output->fields);
    auto* layout = new QFormLayout(output->fields);
    layout->setContentsMargins(0, 0, 0, 0);

    output->directoryEdit = FormHelper::create<QLineEdit>(name("DirectoryEdit"));
    QPushButton* browse = FormHelper::createButton(tr("&Selaa..."), name("DirectoryButton"));
    connect(browse, &QPushButton::clicked, this, [this, output]() { chooseDirectoryFor(*output); });
    auto* directoryRow = new QHBoxLayout;
    directoryRow->addWidget(output->directoryEdit, 1);
    directoryRow->addWidget(browse);
    auto* directoryLabel = new QLabel(tr("&Hakemisto"));
    directoryLabel->setBuddy(output->directoryEdit);
    layout->addRow(directoryLabel, directoryRow);

    output->templateEdit
        = FormHelper::addField<QLineEdit>(layout, tr("Tie&dostonimi"), name("TemplateEdit"));
    output->exampleLabel = FormHelper::create<QLabel>(name("ExampleLabel"));
    output->exampleLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addRow(QString(), output->exampleLabel);
    auto* codes = new QLabel(tr("$i laskun numero, $j asiakasnumero, $n asiakkaan nimi, "
                                "$h asiakirjan nimi, $r viitenumero"));
    codes->setWordWrap(true);
    layout->addRow(QString(), codes);

    output->separateCheck = FormHelper::addCheckBox(
        layout, tr("&Jokainen lasku omaan tiedostoonsa"), name("SeparateCheck"));
    output->openCheck
        = FormHelper::addCheckBox(layout, tr("&Avaa hakemisto viennin jälkeen"), name("OpenCheck"));
    return page;
}

void ExportDialog::loadOptions()
{
    const InvoiceExporter::Options o = m_exporter->storedOptions();
    m_pdf.enabledCheck->setChecked(o.pdfEnabled);
    m_pdf.directoryEdit->setText(QDir::toNativeSeparators(o.pdfDirectory));
    m_pdf.templateEdit->setText(o.pdfTemplate);
    m_pdf.separateCheck->setChecked(o.pdfSeparateFiles);
    m_pdf.openCheck->setChecked(o.pdfOpenDirectory);
    m_finvoice.enabledCheck->setChecked(o.finvoiceEnabled);
    m_finvoice.directoryEdit->setText(QDir::toNativeSeparators(o.finvoiceDirectory));
    m_finvoice.templateEdit->setText(o.finvoiceTemplate);
    m_finvoice.separateCheck->setChecked(o.finvoiceSeparateFiles);
    m_finvoice.openCheck->setChecked(o.finvoiceOpenDirectory);
    m_finvoiceSettingsLabel->setText(
        tr("Finvoice %1, %2. Versio ja kehys valitaan kohdassa Asetukset > Yrityksen tiedot > "
           "Verkkolasku.")
            .arg(o.xmlSchemaVersion,
                o.soapEnvEnabled ? tr("SOAP-kehyksen kanssa") : tr("ilman SOAP-kehystä")));
    // Opened on the page of the output in use.
    m_pages->setCurrentIndex(!o.pdfEnabled && o.finvoiceEnabled ? FinvoicePage : PdfPage);
}

InvoiceExporter::Options ExportDialog::readOptions() const
{
    InvoiceExporter::Options o = m_exporter->storedOptions();
    o.pdfEnabled = m_pdf.enabledCheck->isChecked();
    o.pdfDirectory = QDir::fromNativeSeparators(m_pdf.directoryEdit->text().trimmed());
    o.pdfTemplate = m_pdf.templateEdit->text().trimmed();
    o.pdfSeparateFiles = m_pdf.separateCheck->isChecked();
    o.pdfOpenDirectory = m_pdf.openCheck->isChecked();
    o.finvoiceEnabled = m_finvoice.enabledCheck->isChecked();
    o.finvoiceDirectory = QDir::fromNativeSeparators(m_finvoice.directoryEdit->text().trimmed());
    o.finvoiceTemplate = m_finvoice.templateEdit->text().trimmed();
    o.finvoiceSeparateFiles = m_finvoice.separateCheck->isChecked();
    o.finvoiceOpenDirectory = m_finvoice.openCheck->isChecked();
    return o;
}

void ExportDialog::updateEnabled()
{
    for (const Output* output : { &m_pdf, &m_finvoice })
        output->fields->setEnabled(output->enabledCheck->isChecked());
}

void ExportDialog::setSampleInvoice(Invoice* invoice)
{
    m_sampleInvoice = invoice;
    pdfTemplateEdited(m_pdf.templateEdit->text());
    xmlTemplateEdited(m_finvoice.templateEdit->text());
}

void ExportDialog::setCriteria(const InvoiceCriteria& criteria)
{
    criteria.copy(&m_criteria);
}

InvoiceCriteria ExportDialog::criteria() const
{
    return m_searchRadio->isChecked() ? m_criteria : InvoiceCriteria();
}

void ExportDialog::showExample(const Output& output, const QString& nameTemplate)
{
    const Customer* customer = nullptr;
    if (m_sampleInvoice) {
        bool found = false;
        customer = m_registry->customerById(m_sampleInvoice->customerId, found);
        // Named as the export names it: without the customer's values.
        if (!found)
            customer = &m_noCustomer;
    }
    const TemplateStringHelper helper(m_registry->settings(), m_registry->bankAccounts());
    output.exampleLabel->setText(tr("Esimerkki: %1")
                                     .arg(helper.substituteShortVariables(
                                         nameTemplate, m_sampleInvoice, customer, ownPrintType)));
}

void ExportDialog::pdfTemplateEdited(const QString& text)
{
    showExample(m_pdf, text);
}

void ExportDialog::xmlTemplateEdited(const QString& text)
{
    showExample(m_finvoice, text);
}

void ExportDialog::chooseDirectoryFor(const Output& output)
{
    const QString start = InvoiceExporter::directory(output.directoryEdit->text());
    const QString chosen = chooseDirectory(start);
    if (!chosen.isEmpty())
        output.directoryEdit->setText(QDir::toNativeSeparators(chosen));
}

void ExportDialog::showPdfDirectoryDialog()
{
    chooseDirectoryFor(m_pdf);
}

void ExportDialog::showXmlDirectoryDialog()
{
    chooseDirectoryFor(m_finvoice);
}

void ExportDialog::showFinvoiceDialog()
{
    FinvoiceDialog dialog(m_registry, this);
    execDialog(&dialog);
}

bool ExportDialog::checkDirectory(const QString& path)
{
    if (QFileInfo(path).isDir())
        return true;
    if (!askQuestion(tr("Hakemistoa %1 ei löytynyt. Luodaanko hakemisto?")
                         .arg(QDir::toNativeSeparators(path))))
        return false;
    if (!QDir().mkpath(path)) {
        showMessage(QMessageBox::Critical, tr("Hakemiston luonti epäonnistui."));
        return false;
    }
    return true;
}

void ExportDialog::refuse(Page page, QWidget* field, const QString& text)
{
    m_pages->setCurrentIndex(page);
    showMessage(QMessageBox::Warning, text);
    field->setFocus();
}

void ExportDialog::exportInvoices()
{
    const InvoiceExporter::Options o = readOptions();
    if (!o.pdfEnabled && !o.finvoiceEnabled) {
        refuse(PdfPage, m_pdf.enabledCheck,
            tr("Valitse, tallennetaanko laskut PDF- vai Finvoice-tiedostoiksi."));
        return;
    }
    if (o.pdfEnabled && o.pdfTemplate.isEmpty()) {
        refuse(PdfPage, m_pdf.templateEdit, tr("Syötä PDF-tiedostonimen muoto."));
        return;
    }
    if (o.finvoiceEnabled && o.finvoiceTemplate.isEmpty()) {
        refuse(FinvoicePage, m_finvoice.templateEdit,
            tr("Syötä Finvoice-verkkolaskun tiedostonimen muoto."));
        return;
    }
    m_exporter->storeOptions(o);
    const QString pdfDirectory = InvoiceExporter::directory(o.pdfDirectory);
    const QString finvoiceDirectory = InvoiceExporter::directory(o.finvoiceDirectory);
    if ((o.pdfEnabled && !checkDirectory(pdfDirectory))
        || (o.finvoiceEnabled && !checkDirectory(finvoiceDirectory)))
        return;

    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const bool exported = m_exporter->exportInvoices(criteria(), o);
    QGuiApplication::restoreOverrideCursor();
    if (!exported) {
        if (m_exporter->failedEngine())
            showScriptError(m_exporter->failedEngine());
        else
            showMessage(QMessageBox::Critical, m_exporter->lastError());
        return;
    }
    if (m_exporter->invoiceCount() == 0) {
        showMessage(QMessageBox::Information, tr("Vietäviä laskuja ei löytynyt."));
        return;
    }

    // Both outputs may share a directory: it opens once.
    QStringList directories;
    if (o.pdfEnabled && o.pdfOpenDirectory)
        directories.append(pdfDirectory);
    if (o.finvoiceEnabled && o.finvoiceOpenDirectory && !directories.contains(finvoiceDirectory))
        directories.append(finvoiceDirectory);
    bool opened = false;
    for (const QString& directory : std::as_const(directories))
        opened = openDirectory(directory) || opened;
    const QStringList warnings = m_exporter->warnings();
    if (!warnings.isEmpty())
        showErrorDialog(tr("Finvoice-tiedostojen tarkistus"),
            tr("Finvoice-tiedostoissa on huomautettavaa (%1 kpl):").arg(warnings.size())
                + QLatin1Char('\n') + warnings.join(QLatin1Char('\n')));
    else if (!opened)
        showMessage(QMessageBox::Information,
            tr("Laskuja vietiin %1 kpl, tiedostoja kirjoitettiin %2 kpl.")
                .arg(m_exporter->invoiceCount())
                .arg(m_exporter->writtenFiles().size()));
    accept();
}

void ExportDialog::showScriptError(ECMAScriptEngine* engine)
{
    QString text = engine ? engine->lastError() : QString();
    // What was being written goes first: the engine knows only its script.
    if (engine == m_exporter->failedEngine() && !m_exporter->lastError().isEmpty())
        text = m_exporter->lastError() + QLatin1Char('\n') + text;
    showErrorDialog(tr("Skriptivirhe"), text);
}

void ExportDialog::showMessage(QMessageBox::Icon icon, const QString& text)
{
    QMessageBox box(icon, windowTitle(), text, QMessageBox::Ok, this);
    box.exec();
}

bool ExportDialog::askQuestion(const QString& text)
{
    return QMessageBox::question(this, windowTitle(), text, QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes;
}

void ExportDialog::showErrorDialog(const QString& title, const QString& text)
{
    ScriptErrorDialog dialog(text, this);
    dialog.setWindowTitle(title);
    execDialog(&dialog);
}

QString ExportDialog::chooseDirectory(const QString& start)
{
    return QFileDialog::getExistingDirectory(this, tr("Valitse hakemisto"), start);
}

bool ExportDialog::openDirectory(const QString& path)
{
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

int ExportDialog::execDialog(QDialog* dialog)
{
    return dialog->exec();
}
