// A minimal stand-in of the exporter: just enough to write PDF and Finvoice
// files and report schema findings for the command-line program until the
// full exporter takes this file's place.
#include "invoiceexporter.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "export/finvoicevalidator.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "print/scriptpdfwriter.h"
#include "print/xmlscriptengine.h"
#include "print/xmlscriptmodel.h"
#include "util/scriptloader.h"
#include "util/templatestringhelper.h"

#include <QDir>
#include <QRegularExpression>
#include <QSettings>

namespace {

const QString group = QStringLiteral("exportInvoicesWindow");

} // namespace

InvoiceExporter::InvoiceExporter(Registry* registry) : m_registry(registry) { }

InvoiceExporter::~InvoiceExporter() = default;

InvoiceExporter::Options InvoiceExporter::storedOptions() const
{
    Options options;
    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(group);
    options.pdfEnabled = settings->value(QStringLiteral("pdfEnabled"), true).toBool();
    options.pdfDirectory
        = settings->value(QStringLiteral("pdfDirectory"), QDir::homePath()).toString();
    options.pdfTemplate
        = settings->value(QStringLiteral("pdfTemplate"), QStringLiteral("lasku-$i-$n.pdf"))
              .toString();
    options.pdfSeparateFiles = settings->value(QStringLiteral("pdfSeparateFiles"), true).toBool();
    options.finvoiceEnabled = settings->value(QStringLiteral("finvoiceEnabled"), false).toBool();
    options.finvoiceDirectory
        = settings->value(QStringLiteral("finvoiceDirectory"), QDir::homePath()).toString();
    options.finvoiceTemplate
        = settings->value(QStringLiteral("finvoiceTemplate"), QStringLiteral("lasku-$i-$n.xml"))
              .toString();
    options.finvoiceSeparateFiles
        = settings->value(QStringLiteral("finvoiceSeparateFiles"), true).toBool();
    settings->endGroup();
    const Settings* company = m_registry->settings();
    options.xmlSchemaVersion
        = company->property(SettingsKeys::xmlSchema).toString().remove(QStringLiteral("Finvoice"));
    if (options.xmlSchemaVersion.isEmpty())
        options.xmlSchemaVersion = QStringLiteral("3.0");
    options.soapEnvEnabled = company->property(SettingsKeys::soapEnv, true).toBool();
    return options;
}

void InvoiceExporter::storeOptions(const Options& options) const
{
    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(group);
    settings->setValue(QStringLiteral("pdfEnabled"), options.pdfEnabled);
    settings->setValue(QStringLiteral("pdfDirectory"), options.pdfDirectory);
    settings->setValue(QStringLiteral("pdfTemplate"), options.pdfTemplate);
    settings->setValue(QStringLiteral("pdfSeparateFiles"), options.pdfSeparateFiles);
    settings->setValue(QStringLiteral("finvoiceEnabled"), options.finvoiceEnabled);
    settings->setValue(QStringLiteral("finvoiceDirectory"), options.finvoiceDirectory);
    settings->setValue(QStringLiteral("finvoiceTemplate"), options.finvoiceTemplate);
    settings->setValue(QStringLiteral("finvoiceSeparateFiles"), options.finvoiceSeparateFiles);
    settings->endGroup();
}

bool InvoiceExporter::exportInvoices(const InvoiceCriteria& criteria, const Options& options)
{
    m_writtenFiles.clear();
    m_findings.clear();
    m_warnings.clear();
    m_lastError.clear();
    m_failedEngine = nullptr;

    InvoicePrintModel invoices(m_registry);
    criteria.copy(&invoices.criteria());
    if (!invoices.run()) {
        m_lastError = invoices.lastError();
        return false;
    }
    const TemplateStringHelper names(m_registry->settings(), m_registry->bankAccounts());
    auto fileName = [&](const QString& directory, const QString& pattern, int index) {
        const Invoice* invoice = invoices.invoice(index);
        bool found = false;
        const Customer* customer = m_registry->customerById(invoice->customerId, found);
        const QString name
            = names.substituteShortVariables(pattern, invoice, found ? customer : nullptr, 0);
        const QString dir = directory.isEmpty() ? QDir::homePath() : directory;
        const QFileInfo target(QDir(dir).filePath(name));
        return target.exists() ? TemplateStringHelper::addSuffixToFilename(target).filePath()
                               : target.filePath();
    };

    ScriptLoader loader(m_registry);
    PrintScriptEngine pdfEngine;
    pdfEngine.setScriptLoader(&loader);
    XmlScriptEngine xmlEngine;
    xmlEngine.setScriptLoader(&loader);
    xmlEngine.setSoapEnvEnabled(options.soapEnvEnabled);
    ScriptHelper scripts(m_registry);
    if ((options.pdfEnabled && !scripts.loadInvoiceScript(&pdfEngine))
        || (options.finvoiceEnabled && !scripts.loadFinvoiceScript(&xmlEngine))) {
        m_lastError = pdfEngine.lastError() + xmlEngine.lastError();
        return false;
    }

    QString finvoiceFile;
    QStringList finvoiceFiles;
    for (int i = 0; i < invoices.invoiceCount(); ++i) {
        InvoicePrintModel one(m_registry);
        one.copyInvoice(&invoices, i);
        if (options.pdfEnabled && (i == 0 || options.pdfSeparateFiles)) {
            const QString name = fileName(options.pdfDirectory, options.pdfTemplate, i);
            pdfEngine.setModel(options.pdfSeparateFiles ? &one : &invoices);
            ScriptPdfWriter writer;
            writer.setTitle(invoices.title());
            if (!writer.write(&pdfEngine, name)) {
                m_lastError = writer.lastError();
                return false;
            }
            m_writtenFiles.append(name);
        }
        if (options.finvoiceEnabled) {
            const bool newFile = i == 0 || options.finvoiceSeparateFiles;
            if (newFile)
                finvoiceFile = fileName(options.finvoiceDirectory, options.finvoiceTemplate, i);
            XmlScriptModel model(m_registry);
            model.copyInvoice(&invoices, i);
            model.setXmlSchemaVersion(options.xmlSchemaVersion);
            xmlEngine.setModel(&model);
            const bool written = xmlEngine.write(finvoiceFile, !newFile);
            xmlEngine.setModel(nullptr);
            if (!written) {
                m_lastError = xmlEngine.lastError();
                return false;
            }
            if (newFile) {
                m_writtenFiles.append(finvoiceFile);
                finvoiceFiles.append(finvoiceFile);
            }
        }
    }

    static const QRegularExpression findingPattern(QStringLiteral("^lasku (\\S*), rivi (\\d+): "));
    for (const QString& file : std::as_const(finvoiceFiles)) {
        FinvoiceValidator validator;
        if (validator.validateFile(file))
            continue;
        if (!validator.lastError().isEmpty()) {
            m_lastError = validator.lastError();
            return false;
        }
        for (const QString& text : validator.findings()) {
            const QRegularExpressionMatch match = findingPattern.match(text);
            Finding finding;
            finding.fileName = file;
            finding.invoiceNumber = match.captured(1).toInt();
            finding.line = match.captured(2).toInt();
            finding.message = match.hasMatch() ? text.mid(match.capturedLength()) : text;
            m_findings.append(finding);
            m_warnings.append(text);
        }
    }
    return true;
}
