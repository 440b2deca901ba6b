#include "clirunner.h"

#include "core/databasefactory.h"
#include "core/databaselist.h"
#include "core/invoicetablemodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/decimal.h"
#include "domain/decimalformat.h"
#include "domain/invoice.h"
#include "domain/invoicetype.h"
#include "export/invoiceexporter.h"
#include "payments/irptablemodel.h"
#include "payments/paymentimporter.h"
#include "print/csvwriter.h"
#include "print/customerlistprintmodel.h"
#include "print/invoicelistprintmodel.h"
#include "print/listreportformat.h"
#include "print/paymentprintmodel.h"
#include "print/printscriptengine.h"
#include "print/productlistprintmodel.h"
#include "print/scripthelper.h"
#include "print/scriptpdfwriter.h"
#include "storage/database.h"
#include "storage/query.h"
#include "util/ecmascriptengine.h"
#include "util/scriptloader.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QSettings>

#include <cstdio>

namespace {

// The CSV choice of the report preview that separates with semicolons: the
// amounts carry a decimal comma.
constexpr int semicolonCsvFormat = 1;
// The bit of PrintScriptEngine::supportedOrientations() for landscape pages.
constexpr int landscapeOrientation = 2;
const QString columnGap = QStringLiteral("  ");

// The invoice list's columns, in the order printed.
const InvoiceTableModel::Column listColumns[] = { InvoiceTableModel::NumberColumn,
    InvoiceTableModel::DateColumn, InvoiceTableModel::DueDateColumn,
    InvoiceTableModel::CustomerColumn, InvoiceTableModel::TypeColumn,
    InvoiceTableModel::TotalAmountColumn, InvoiceTableModel::BalanceColumn };

// A field of the import's output, quoted as in CSV when it holds the
// separator or a quote.
QString importField(const QString& text)
{
    if (!text.contains(QLatin1Char(';')) && !text.contains(QLatin1Char('"')))
        return text;
    QString quoted = text;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

bool isRightAligned(InvoiceTableModel::Column column)
{
    return column == InvoiceTableModel::NumberColumn
        || column == InvoiceTableModel::TotalAmountColumn
        || column == InvoiceTableModel::BalanceColumn;
}

} // namespace

CliRunner::CliRunner() : m_out(stdout), m_err(stderr), m_registry(new Registry()) { }

CliRunner::~CliRunner()
{
    closeDatabase();
}

int CliRunner::fail(const QString& message)
{
    m_err << CliCommandLine::programName() << ": " << message << Qt::endl;
    return Failure;
}

int CliRunner::exec(int argc, char* argv[])
{
    // Read before Qt takes its own options (-platform, -display ...) out of argv.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    // Nothing is logged to a file. The program's own warnings repeat the
    // failures that come back as messages, so only Qt's reach standard error,
    // and not its remarks on a missing desktop session while it starts: no
    // use on a server.
    const QString warningsOnly
        = QStringLiteral("*.debug=false\n*.info=false\nveklari.*.warning=false");
    QLoggingCategory::setFilterRules(warningsOnly + QStringLiteral("\ndefault.warning=false"));
    qSetMessagePattern(CliCommandLine::programName() + QStringLiteral(": %{message}"));

    // PDF output needs a QGuiApplication for its fonts, and a server has no
    // display: the offscreen platform, whatever DISPLAY and QT_QPA_PLATFORM say.
    char platformOption[] = "-platform";
    char offscreen[] = "offscreen";
    char* qtArgv[] = { argv[0], platformOption, offscreen, nullptr };
    int qtArgc = 3;
    QGuiApplication app(qtArgc, qtArgv);
    QLoggingCategory::setFilterRules(warningsOnly);
    QCoreApplication::setOrganizationName(QStringLiteral("Veklari"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("veklari.invalid"));
    QCoreApplication::setApplicationName(QStringLiteral("Veklari"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VEKLARI_VERSION));
    qRegisterMetaType<Decimal>("Decimal");

    return CliRunner().run(arguments);
}

int CliRunner::run(const QStringList& arguments)
{
    switch (m_commandLine.parse(arguments)) {
    case CliCommandLine::ShowHelp:
        m_out << CliCommandLine::help(m_commandLine.helpTopic()) << Qt::endl;
        return Success;
    case CliCommandLine::ShowVersion:
        m_out << CliCommandLine::version() << Qt::endl;
        return Success;
    case CliCommandLine::UsageError:
        fail(m_commandLine.lastError());
        m_err << CliCommandLine::usage() << '\n'
              << tr("Ohje: %1 --help").arg(CliCommandLine::programName()) << Qt::endl;
        return UsageFailure;
    case CliCommandLine::RunCommand:
        break;
    }

    if (!openConfiguration() || !openDatabase() || !fetchData())
        return Failure;
    const int status = runCommand();
    m_out.flush();
    return status;
}

bool CliRunner::openConfiguration()
{
    // QSettings would start a missing file afresh and the registry would
    // make its directory: look first.
    const QString fileName = Registry::configFileName(m_commandLine.configFile());
    const QFileInfo file(fileName);
    if (!file.isFile()) {
        fail(tr("Asetustiedostoa %1 ei ole.").arg(QDir::toNativeSeparators(fileName)));
        return false;
    }
    if (!file.isReadable()) {
        fail(tr("Asetustiedostoa %1 ei voi lukea.").arg(QDir::toNativeSeparators(fileName)));
        return false;
    }
    m_registry->loadSettings(m_commandLine.configFile());
    if (m_registry->appSettings()->status() != QSettings::NoError) {
        fail(tr("Asetustiedosto %1 on virheellinen.").arg(QDir::toNativeSeparators(fileName)));
        return false;
    }
    return true;
}

bool CliRunner::openDatabase()
{
    QSettings* settings = m_registry->appSettings();
    const DatabaseList databases(settings);
    const QString configName = QDir::toNativeSeparators(settings->fileName());
    if (databases.count() == 0) {
        fail(tr("Asetustiedostossa %1 ei ole tietokantoja.").arg(configName));
        return false;
    }
    int number = m_commandLine.databaseNumber();
    int index = 0;
    if (number >= 1) {
        index = databases.indexOfNumber(number);
        if (index < 0) {
            fail(tr("Asetustiedostossa %1 ei ole tietokantaa numero %2.")
                     .arg(configName)
                     .arg(number));
            return false;
        }
    } else {
        // As the window opens it: the database used last, else the first.
        number = databases.lastUsed();
        index = number >= 1 ? qMax(0, databases.indexOfNumber(number)) : 0;
        number = DatabaseList::number(databases.entry(index));
    }

    m_database.reset(DatabaseFactory::create(databases.entry(index)));
    m_database->setCreateIfNotExist(false);
    if (!DatabaseFactory::open(m_database.get(), settings, databases.group(index))) {
        fail(tr("Tietokantayhteyden avaaminen epäonnistui. %1").arg(m_database->lastError()));
        m_database.reset();
        return false;
    }
    m_registry->setDatabase(m_database.get());
    m_registry->setDatabaseNumber(number);
    m_registry->setConnected(true);
    return true;
}

void CliRunner::closeDatabase()
{
    if (!m_database)
        return;
    m_registry->setConnected(false);
    m_registry->setDatabase(nullptr);
    m_database->close();
    m_database.reset();
}

bool CliRunner::fetchData()
{
    std::unique_ptr<Query> query(m_database->query());
    if (m_registry->fetchSettings(query.get()) && m_registry->fetchCustomers(query.get())
        && m_registry->fetchProducts(query.get()) && m_registry->fetchBankAccounts(query.get())
        && m_registry->fetchPrintScripts(query.get()))
        return true;
    fail(tr("Tietojen hakeminen epäonnistui. %1").arg(query->lastError()));
    return false;
}

int CliRunner::runCommand()
{
    switch (m_commandLine.command()) {
    case CliCommandLine::ExportFinvoice:
    case CliCommandLine::ExportPdf:
        return exportInvoices();
    case CliCommandLine::ListInvoices:
        return listInvoices();
    case CliCommandLine::ImportPayments:
        return importPayments();
    case CliCommandLine::NoCommand:
        return UsageFailure;
    default:
        return writeReport();
    }
}

int CliRunner::exportInvoices()
{
    InvoiceExporter exporter(m_registry.get());
    InvoiceExporter::Options options = exporter.storedOptions();
    const bool pdf = m_commandLine.command() == CliCommandLine::ExportPdf;
    options.pdfEnabled = pdf;
    options.finvoiceEnabled = !pdf;
    options.pdfOpenDirectory = false;
    options.finvoiceOpenDirectory = false;

    QString& directory = pdf ? options.pdfDirectory : options.finvoiceDirectory;
    if (!m_commandLine.directory().isEmpty())
        directory = m_commandLine.directory();
    if (directory.isEmpty())
        directory = QDir::homePath();
    // Only the window offers to make a missing directory.
    directory = QDir(directory).absolutePath();
    if (!QFileInfo(directory).isDir())
        return fail(tr("Hakemistoa %1 ei ole.").arg(QDir::toNativeSeparators(directory)));
    if (!m_commandLine.fileTemplate().isEmpty())
        (pdf ? options.pdfTemplate : options.finvoiceTemplate) = m_commandLine.fileTemplate();
    if (m_commandLine.singleFile())
        (pdf ? options.pdfSeparateFiles : options.finvoiceSeparateFiles) = false;
    if (!m_commandLine.schemaVersion().isEmpty())
        options.xmlSchemaVersion = m_commandLine.schemaVersion();
    if (m_commandLine.noSoapEnvelope())
        options.soapEnvEnabled = false;

    InvoiceCriteria criteria;
    criteria.numberRanges = m_commandLine.invoiceNumbers();
    const bool exported = exporter.exportInvoices(criteria, options);
    // Files written before a failure stay, so they are listed in any case.
    const QStringList files = exporter.writtenFiles();
    for (const QString& file : files)
        m_out << QDir::toNativeSeparators(file) << '\n';
    m_out.flush();
    const QList<InvoiceExporter::Finding> findings = exporter.findings();
    for (const InvoiceExporter::Finding& finding : findings) {
        m_err << QDir::toNativeSeparators(finding.fileName) << ':' << finding.line << ": "
              << finding.message << '\n';
    }
    m_err.flush();

    if (!exported) {
        QString message = tr("Laskujen vienti epäonnistui. %1").arg(exporter.lastError());
        const ECMAScriptEngine* engine = exporter.failedEngine();
        if (engine && !engine->lastError().isEmpty()
            && !exporter.lastError().contains(engine->lastError()))
            message += QLatin1Char('\n') + engine->lastError();
        return fail(message);
    }
    if (files.isEmpty()) {
        return fail(criteria.numberRanges.isEmpty()
                ? tr("Tietokannassa ei ole laskuja.")
                : tr("Annetuilla numeroilla ei löytynyt laskuja."));
    }
    return findings.isEmpty() ? Success : Failure;
}

int CliRunner::listInvoices()
{
    InvoiceTableModel model(m_registry.get());
    std::unique_ptr<Query> query(m_database->query());
    if (!query->fetchInvoiceSummaries(InvoiceCriteria()))
        return fail(tr("Laskutustietojen hakeminen epäonnistui. %1").arg(query->lastError()));
    model.load(query.get(), false);

    QList<QStringList> rows;
    QStringList headings;
    for (const InvoiceTableModel::Column column : listColumns)
        headings.append(model.headerData(column, Qt::Horizontal).toString());
    for (int row = 0; row < model.rowCount(); ++row) {
        const Invoice* invoice = model.invoiceAt(row);
        // Amounts with a decimal comma and dates as d.M.yyyy whatever the
        // locale, so that scripts read the same text everywhere.
        rows.append({ QString::number(invoice->number), ListReportFormat::date(invoice->date),
            ListReportFormat::date(invoice->dueDate),
            model.data(model.index(row, InvoiceTableModel::CustomerColumn)).toString(),
            InvoiceType::name(invoice->type), ListReportFormat::cents(invoice->totalAmount),
            ListReportFormat::cents(invoice->balance) });
    }

    if (m_commandLine.csv()) {
        CsvWriter csv;
        csv.addRow(headings);
        for (const QStringList& row : std::as_const(rows)) {
            for (int i = 0; i < row.size(); ++i) {
                if (isRightAligned(listColumns[i]))
                    csv.addNumber(row.at(i));
                else
                    csv.addText(row.at(i));
            }
            csv.endRow();
        }
        m_out << csv.text();
        return Success;
    }

    QList<int> widths;
    for (const QString& heading : std::as_const(headings))
        widths.append(int(heading.size()));
    for (const QStringList& row : std::as_const(rows)) {
        for (int i = 0; i < row.size(); ++i)
            widths[i] = qMax(widths.at(i), int(row.at(i).size()));
    }
    rows.prepend(headings);
    for (const QStringList& row : std::as_const(rows)) {
        QStringList cells;
        for (int i = 0; i < row.size(); ++i) {
            cells.append(isRightAligned(listColumns[i]) ? row.at(i).rightJustified(widths.at(i))
                                                        : row.at(i).leftJustified(widths.at(i)));
        }
        QString line = cells.join(columnGap);
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        m_out << line << '\n';
    }
    return Success;
}

std::unique_ptr<ListPrintModel> CliRunner::newReport(PrintScriptEngine* engine)
{
    Registry* registry = m_registry.get();
    ScriptHelper scripts(registry);
    std::unique_ptr<ListPrintModel> model;
    bool loaded = false;
    switch (m_commandLine.command()) {
    case CliCommandLine::ReportInvoices:
        model.reset(new InvoiceListPrintModel(registry));
        loaded = scripts.loadInvoiceListScript(engine);
        break;
    case CliCommandLine::ReportPayments:
        model.reset(new PaymentPrintModel(registry));
        loaded = scripts.loadPaymentListScript(engine);
        break;
    case CliCommandLine::ReportCustomers:
        model.reset(new CustomerListPrintModel(registry));
        loaded = scripts.loadCustomerListScript(engine);
        break;
    default:
        model.reset(new ProductListPrintModel(registry));
        loaded = scripts.loadProductListScript(engine);
        break;
    }
    if (!loaded) {
        fail(tr("Raportin skriptin lataaminen epäonnistui. %1").arg(engine->lastError()));
        return nullptr;
    }
    return model;
}

int CliRunner::writeReport()
{
    PrintScriptEngine engine;
    ScriptLoader loader(m_registry.get());
    engine.setScriptLoader(&loader);
    const std::unique_ptr<ListPrintModel> model = newReport(&engine);
    if (!model)
        return Failure;
    // Every record, with the report's own columns and order rather than
    // what the preview last kept in the configuration.
    if (!model->run())
        return fail(tr("Tulosteen muodostaminen epäonnistui. %1").arg(model->lastError()));

    const bool pdf = !m_commandLine.pdfFile().isEmpty();
    const QString fileName
        = QFileInfo(pdf ? m_commandLine.pdfFile() : m_commandLine.csvFile()).absoluteFilePath();
    QString error;
    if (pdf) {
        engine.setModel(model.get());
        ScriptPdfWriter writer;
        writer.setTitle(model->title());
        // As in the preview, a script that cannot draw landscape prints upright.
        const bool landscape
            = m_commandLine.landscape() && (engine.supportedOrientations() & landscapeOrientation);
        writer.setOrientation(landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
        if (!writer.write(&engine, fileName))
            error = writer.lastError();
        engine.setModel(nullptr);
    } else if (!model->exportToCSV(
                   fileName, PrintModel::csvFormatToDelimiter(semicolonCsvFormat))) {
        error = model->lastError();
    }
    if (!error.isEmpty())
        return fail(tr("Tulosteen tallentaminen epäonnistui. %1").arg(error));
    m_out << QDir::toNativeSeparators(fileName) << '\n';
    return Success;
}

int CliRunner::importPayments()
{
    Registry* registry = m_registry.get();
    PaymentImporter importer(registry);
    IRPTableModel* model = importer.model();
    if (m_commandLine.importDate() != CliCommandLine::StoredDate)
        model->setSaveEntryDate(m_commandLine.importDate() == CliCommandLine::EntryDate);

    // The account asked for must be one of the business's.
    int accountId = -1;
    if (!m_commandLine.account().isEmpty()) {
        const QString iban = m_commandLine.account().simplified().remove(QLatin1Char(' '));
        for (const BankAccount* account : registry->bankAccounts()) {
            if (account->iban.simplified().remove(QLatin1Char(' ')) == iban)
                accountId = account->id;
        }
        if (accountId < 0) {
            return fail(
                tr("Pankkitiliä ei löytynyt tilinumerolla %1").arg(BankAccount::formatIban(iban)));
        }
    }

    if (!importer.readFile(m_commandLine.paymentFile()))
        return fail(tr("Tiedoston lukeminen epäonnistui. %1").arg(importer.lastError()));

    DecimalFormat amountFormat(
        Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits);
    amountFormat.setDecimalPoint(QStringLiteral("."));
    amountFormat.setNegativeSign(QStringLiteral("-"));
    amountFormat.setGrouping(false);
    const QString isoDate = QStringLiteral("yyyy-MM-dd");
    m_out << "entry_date;payment_date;amount;reference;invoice;customer;info\n";
    for (int row = 0; row < model->rowCount(); ++row) {
        const Invoice* invoice = model->invoiceAt(model->invoiceIndex(row));
        const QStringList fields = { model->entryDate(row).toString(isoDate),
            model->paymentDate(row).toString(isoDate), amountFormat.format(model->amount(row)),
            model->referenceNumber(row), invoice ? QString::number(invoice->number) : QString(),
            model->customerText(row), model->info(row) };
        QStringList quoted;
        for (const QString& field : fields)
            quoted.append(importField(field));
        m_out << quoted.join(QLatin1Char(';')) << '\n';
    }
    m_out.flush();
    if (!importer.accountText().isEmpty())
        m_err << importer.accountText() << '\n';
    m_err << importer.summaryText() << Qt::endl;

    if (m_commandLine.dryRun() || importer.referencePaymentCount() == 0)
        return Success;
    if (importer.isDuplicate() && !m_commandLine.force()) {
        return fail(PaymentImporter::duplicateQuestion());
    }
    if (accountId < 0 && importer.bankAccountIndex() >= 0)
        accountId = registry->bankAccountAt(importer.bankAccountIndex())->id;
    if (accountId < 0) {
        bool found = false;
        registry->bankAccountById(importer.storedBankAccountId(), found);
        accountId = found ? importer.storedBankAccountId() : -1;
    }
    const int count = importer.savePayments(accountId);
    if (count < 0)
        return fail(tr("Maksusuoritusten tallentaminen epäonnistui. %1").arg(importer.lastError()));
    m_err << PaymentImporter::resultText(count) << Qt::endl;
    return Success;
}
