#include "invoiceexporter.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/logging.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "finvoicevalidator.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "print/xmlscriptengine.h"
#include "print/xmlscriptmodel.h"
#include "util/scriptloader.h"
#include "util/templatestringhelper.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPdfWriter>
#include <QSettings>

namespace {

const QString settingsGroup = QStringLiteral("exportInvoicesWindow");
const QString pdfEnabledKey = QStringLiteral("pdfEnabled");
const QString pdfDirectoryKey = QStringLiteral("pdfDirectory");
const QString pdfTemplateKey = QStringLiteral("pdfTemplate");
const QString pdfOpenDirectoryKey = QStringLiteral("pdfOpenDirectory");
const QString pdfSeparateFilesKey = QStringLiteral("pdfSeparateFiles");
const QString finvoiceEnabledKey = QStringLiteral("finvoiceEnabled");
const QString finvoiceDirectoryKey = QStringLiteral("finvoiceDirectory");
const QString finvoiceTemplateKey = QStringLiteral("finvoiceTemplate");
const QString finvoiceOpenDirectoryKey = QStringLiteral("finvoiceOpenDirectory");
const QString finvoiceSeparateFilesKey = QStringLiteral("finvoiceSeparateFiles");

const QString defaultPdfTemplate = QStringLiteral("lasku-$i-$n.pdf");
const QString defaultFinvoiceTemplate = QStringLiteral("lasku-$i-$n.xml");
const QString defaultXmlSchemaVersion = QStringLiteral("3.0");
// Hidden from the file manager until it is complete and renamed.
const QString partFileTemplate = QStringLiteral(".%1.part");
const QString numberedPartFileTemplate = QStringLiteral(".%1.%2.part");
// Every invoice as its own type.
constexpr int ownPrintType = 0;

QString firstLine(const QString& text)
{
    return text.section(QLatin1Char('\n'), 0, 0);
}

QString shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

// A new empty file beside fileName, to be written under until it is complete. Made as any
// other file (a temporary file would keep its owner-only permissions after the rename).
bool createPartFile(const QString& fileName, QFile* part)
{
    const QFileInfo info(fileName);
    for (int n = 0;; ++n) {
        part->setFileName(info.absoluteDir().filePath(n == 0
                ? partFileTemplate.arg(info.fileName())
                : numberedPartFileTemplate.arg(info.fileName()).arg(n)));
        if (part->open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return true;
        // Taken by another run: the next number. Anything else is an error.
        if (!part->exists())
            return false;
    }
}

// The template's name in the directory; a taken name gets the next free suffix.
QString freeFileName(const TemplateStringHelper& helper, const QString& directory,
    const QString& nameTemplate, const Invoice* invoice, const Customer* customer)
{
    const QString name
        = helper.substituteShortVariables(nameTemplate, invoice, customer, ownPrintType);
    QFileInfo info(QDir(directory).filePath(name));
    if (info.exists())
        info = TemplateStringHelper::addSuffixToFilename(info);
    return info.filePath();
}

} // namespace

InvoiceExporter::InvoiceExporter(Registry* registry)
    : m_registry(registry), m_validator(std::make_unique<FinvoiceValidator>())
{
}

InvoiceExporter::~InvoiceExporter() = default;

QString InvoiceExporter::directory(const QString& path)
{
    return path.trimmed().isEmpty() ? QDir::homePath() : path.trimmed();
}

InvoiceExporter::Options InvoiceExporter::storedOptions() const
{
    Options options;
    options.pdfDirectory = QDir::homePath();
    options.pdfTemplate = defaultPdfTemplate;
    options.finvoiceDirectory = QDir::homePath();
    options.finvoiceTemplate = defaultFinvoiceTemplate;
    if (QSettings* settings = m_registry ? m_registry->appSettings() : nullptr) {
        settings->beginGroup(settingsGroup);
        auto read = [settings](const QString& key, auto* value) {
            using Value = std::remove_pointer_t<decltype(value)>;
            *value = settings->value(key, *value).template value<Value>();
        };
        read(pdfEnabledKey, &options.pdfEnabled);
        read(pdfDirectoryKey, &options.pdfDirectory);
        read(pdfTemplateKey, &options.pdfTemplate);
        read(pdfOpenDirectoryKey, &options.pdfOpenDirectory);
        read(pdfSeparateFilesKey, &options.pdfSeparateFiles);
        read(finvoiceEnabledKey, &options.finvoiceEnabled);
        read(finvoiceDirectoryKey, &options.finvoiceDirectory);
        read(finvoiceTemplateKey, &options.finvoiceTemplate);
        read(finvoiceOpenDirectoryKey, &options.finvoiceOpenDirectory);
        read(finvoiceSeparateFilesKey, &options.finvoiceSeparateFiles);
        settings->endGroup();
    }
    const Settings* company = m_registry ? m_registry->settings() : nullptr;
    const QString version
        = company ? company->property(SettingsKeys::xmlSchema).toString() : QString();
    options.xmlSchemaVersion = version.isEmpty() ? defaultXmlSchemaVersion : version;
    // Unset or stored empty: the envelope is written.
    const QString soapEnv
        = company ? company->property(SettingsKeys::soapEnv).toString() : QString();
    options.soapEnvEnabled = soapEnv.isEmpty() || QVariant(soapEnv).toBool();
    return options;
}

void InvoiceExporter::storeOptions(const Options& options) const
{
    QSettings* settings = m_registry ? m_registry->appSettings() : nullptr;
    if (!settings)
        return;
    settings->beginGroup(settingsGroup);
    settings->setValue(pdfEnabledKey, options.pdfEnabled);
    settings->setValue(pdfDirectoryKey, options.pdfDirectory);
    settings->setValue(pdfTemplateKey, options.pdfTemplate);
    settings->setValue(pdfOpenDirectoryKey, options.pdfOpenDirectory);
    settings->setValue(pdfSeparateFilesKey, options.pdfSeparateFiles);
    settings->setValue(finvoiceEnabledKey, options.finvoiceEnabled);
    settings->setValue(finvoiceDirectoryKey, options.finvoiceDirectory);
    settings->setValue(finvoiceTemplateKey, options.finvoiceTemplate);
    settings->setValue(finvoiceOpenDirectoryKey, options.finvoiceOpenDirectory);
    settings->setValue(finvoiceSeparateFilesKey, options.finvoiceSeparateFiles);
    settings->endGroup();
}

bool InvoiceExporter::fail(const QString& error)
{
    m_lastError = error;
    return false;
}

bool InvoiceExporter::failScript(const QString& error, ECMAScriptEngine* engine)
{
    m_failedEngine = engine;
    return fail(error);
}

bool InvoiceExporter::checkOptions(const Options& options)
{
    if (options.pdfEnabled && options.pdfTemplate.trimmed().isEmpty())
        return fail(tr("Syötä PDF-tiedostonimen muoto."));
    if (options.finvoiceEnabled && options.finvoiceTemplate.trimmed().isEmpty())
        return fail(tr("Syötä Finvoice-verkkolaskun tiedostonimen muoto."));
    return true;
}

bool InvoiceExporter::checkDirectory(const QString& path)
{
    if (!QFileInfo(path).isDir())
        return fail(tr("Hakemistoa %1 ei löytynyt.").arg(shown(path)));
    // A file of our own tells the truth also where permissions do not (root, ACLs).
    QFile probe;
    if (!createPartFile(QDir(path).filePath(QStringLiteral("veklari")), &probe))
        return fail(
            tr("Hakemistoon %1 ei voi kirjoittaa. %2").arg(shown(path), probe.errorString()));
    probe.remove();
    return true;
}

bool InvoiceExporter::checkBankAccount()
{
    const QList<BankAccount*> accounts
        = m_registry ? m_registry->bankAccounts() : QList<BankAccount*>();
    for (const BankAccount* account : accounts) {
        if (account->visible && !account->deleted)
            return true;
    }
    return fail(tr("Finvoice-laskussa on oltava myyjän pankkitili, mutta yhtään tiliä ei "
                   "tulosteta laskuille. Valitse tili kohdassa Asetukset > Pankkitilit."));
}

bool InvoiceExporter::prepareEngines(const Options& options)
{
    if (!m_loader)
        m_loader = std::make_unique<ScriptLoader>(m_registry);
    ScriptHelper helper(m_registry);
    if (options.pdfEnabled) {
        m_pdfEngine = std::make_unique<PrintScriptEngine>();
        m_pdfEngine->setScriptLoader(m_loader.get());
        if (!helper.loadInvoiceScript(m_pdfEngine.get()))
            return failScript(tr("Laskupohjan lataaminen epäonnistui. %1")
                                  .arg(firstLine(m_pdfEngine->lastError())),
                m_pdfEngine.get());
    }
    if (options.finvoiceEnabled) {
        m_xmlEngine = std::make_unique<XmlScriptEngine>();
        m_xmlEngine->clear();
        m_xmlEngine->setScriptLoader(m_loader.get());
        m_xmlEngine->setSoapEnvEnabled(options.soapEnvEnabled);
        m_xmlEngine->setXmlSchemaPath(FinvoiceValidator::schemaPath(options.xmlSchemaVersion));
        if (!helper.loadFinvoiceScript(m_xmlEngine.get()))
            return failScript(tr("Finvoice-skriptin lataaminen epäonnistui. %1")
                                  .arg(firstLine(m_xmlEngine->lastError())),
                m_xmlEngine.get());
    }
    return true;
}

bool InvoiceExporter::exportInvoices(const InvoiceCriteria& criteria, const Options& options)
{
    m_invoiceCount = 0;
    m_writtenFiles.clear();
    m_findings.clear();
    m_warnings.clear();
    m_lastError.clear();
    m_failedEngine = nullptr;
    m_pdfEngine.reset();
    m_xmlEngine.reset();

    if (!checkOptions(options))
        return false;
    const QString pdfDirectory = directory(options.pdfDirectory);
    const QString finvoiceDirectory = directory(options.finvoiceDirectory);
    if (options.pdfEnabled && !checkDirectory(pdfDirectory))
        return false;
    if (options.finvoiceEnabled && (!checkDirectory(finvoiceDirectory) || !checkBankAccount()))
        return false;

    InvoicePrintModel all(m_registry);
    criteria.copy(&all.criteria());
    if (!all.run())
        return fail(tr("Laskutustietojen hakeminen epäonnistui. %1").arg(all.lastError()));
    m_invoiceCount = all.invoiceCount();
    if (m_invoiceCount == 0 || (!options.pdfEnabled && !options.finvoiceEnabled))
        return true;
    if (!prepareEngines(options))
        return false;
    qCDebug(logScript).noquote() << QStringLiteral("Viedään %1 laskua").arg(m_invoiceCount);

    const TemplateStringHelper names(m_registry->settings(), m_registry->bankAccounts());
    const Customer noCustomer;
    InvoicePrintModel single(m_registry);
    XmlScriptModel document(m_registry);
    document.setXmlSchemaVersion(options.xmlSchemaVersion);
    PartFile combined;
    bool ok = true;
    for (int i = 0; ok && i < m_invoiceCount; ++i) {
        const Invoice* invoice = all.invoice(i);
        bool found = false;
        const Customer* customer = m_registry->customerById(invoice->customerId, found);
        if (!found)
            customer = &noCustomer;

        if (options.pdfEnabled && (i == 0 || options.pdfSeparateFiles)) {
            InvoicePrintModel* model = &all;
            if (options.pdfSeparateFiles) {
                single.clear();
                single.copyInvoice(&all, i);
                model = &single;
            }
            ok = writePdf(
                model, freeFileName(names, pdfDirectory, options.pdfTemplate, invoice, customer));
        }
        if (!ok || !options.finvoiceEnabled)
            continue;
        document.clear();
        document.copyInvoice(&all, i);
        if (options.finvoiceSeparateFiles) {
            PartFile file;
            ok = startFinvoiceFile(freeFileName(names, finvoiceDirectory, options.finvoiceTemplate,
                                       invoice, customer),
                     &file)
                && appendFinvoice(&document, &file) && finishFinvoiceFile(&file);
            continue;
        }
        // One file for all, named after the first invoice: each document appended in turn.
        if (i == 0)
            ok = startFinvoiceFile(
                freeFileName(names, finvoiceDirectory, options.finvoiceTemplate, invoice, customer),
                &combined);
        ok = ok && appendFinvoice(&document, &combined);
        if (ok && i + 1 == m_invoiceCount)
            ok = finishFinvoiceFile(&combined);
    }
    // A PDF that failed leaves the unfinished file of all behind otherwise.
    discard(&combined);
    if (m_xmlEngine)
        m_warnings = m_xmlEngine->warnings();
    return ok;
}

bool InvoiceExporter::writePdf(InvoicePrintModel* model, const QString& fileName)
{
    // Printed beside the final name and renamed when complete.
    QFile part;
    if (!createPartFile(fileName, &part))
        return fail(tr("PDF-tiedoston %1 kirjoittaminen epäonnistui. %2")
                        .arg(shown(fileName), part.errorString()));
    m_pdfEngine->setModel(model);
    bool printed = false;
    {
        // The document is finished when the writer goes.
        QPdfWriter writer(&part);
        writer.setTitle(model->title());
        writer.setCreator(QStringLiteral("%1 %2").arg(
            QCoreApplication::applicationName(), QCoreApplication::applicationVersion()));
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        printed = m_pdfEngine->print(&writer);
    }
    m_pdfEngine->setModel(nullptr);
    part.close();
    if (!printed) {
        part.remove();
        return failScript(tr("PDF-tiedoston %1 kirjoittaminen epäonnistui. %2")
                              .arg(shown(fileName), firstLine(m_pdfEngine->lastError())),
            m_pdfEngine.get());
    }
    // Never over a file that appeared meanwhile (rename() refuses an existing name), and
    // without waiting for the disk after every file of a long run as a save file would.
    if (part.error() != QFileDevice::NoError || !part.rename(fileName)) {
        const QString error = part.errorString();
        part.remove();
        return fail(
            tr("PDF-tiedoston %1 kirjoittaminen epäonnistui. %2").arg(shown(fileName), error));
    }
    m_writtenFiles.append(fileName);
    return true;
}

bool InvoiceExporter::startFinvoiceFile(const QString& fileName, PartFile* file)
{
    QFile part;
    if (!createPartFile(fileName, &part))
        return fail(tr("Finvoice-tiedoston %1 kirjoittaminen epäonnistui. %2")
                        .arg(shown(fileName), part.errorString()));
    file->fileName = fileName;
    file->partName = part.fileName();
    return true;
}

bool InvoiceExporter::appendFinvoice(XmlScriptModel* model, PartFile* file)
{
    m_xmlEngine->setModel(model);
    const bool written = m_xmlEngine->write(file->partName, true);
    m_xmlEngine->setModel(nullptr);
    if (written)
        return true;
    discard(file);
    // The part file was opened already, so what failed was the script.
    return failScript(tr("Finvoice-tiedoston %1 kirjoittaminen epäonnistui. %2")
                          .arg(shown(file->fileName), firstLine(m_xmlEngine->lastError())),
        m_xmlEngine.get());
}

bool InvoiceExporter::finishFinvoiceFile(PartFile* file)
{
    QFile part(file->partName);
    // Never over a file that appeared meanwhile: rename() refuses an existing name.
    if (!part.rename(file->fileName)) {
        const QString error = part.errorString();
        discard(file);
        return fail(tr("Finvoice-tiedoston %1 kirjoittaminen epäonnistui. %2")
                        .arg(shown(file->fileName), error));
    }
    file->partName.clear();
    m_writtenFiles.append(file->fileName);
    validate(file->fileName);
    return true;
}

void InvoiceExporter::discard(PartFile* file)
{
    if (!file->partName.isEmpty())
        QFile::remove(file->partName);
    file->partName.clear();
}

void InvoiceExporter::validate(const QString& fileName)
{
    const QString name = QFileInfo(fileName).fileName();
    if (m_validator->validateFile(fileName))
        return;
    if (!m_validator->lastError().isEmpty()) {
        // The file or a schema could not be read: the file is not checked.
        const QString message
            = tr("tiedostoa ei voitu tarkistaa: %1").arg(m_validator->lastError());
        m_findings.append({ fileName, 0, 0, message });
        m_xmlEngine->addWarning(QStringLiteral("%1: %2").arg(name, message), true);
    }
    const QList<FinvoiceValidator::Finding> details = m_validator->findingDetails();
    const QStringList texts = m_validator->findings();
    for (int i = 0; i < details.size(); ++i) {
        const FinvoiceValidator::Finding& finding = details.at(i);
        m_findings.append(
            { fileName, finding.line, finding.invoiceNumber.toInt(), finding.message });
        m_xmlEngine->addWarning(QStringLiteral("%1: %2").arg(name, texts.value(i)), true);
    }
}
