#include "cliprocess.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "domain/invoicetype.h"
#include "domain/payment.h"
#include "export/finvoicevalidator.h"
#include "invoicefixture.h"
#include "pdftools.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QtTest>

#include <memory>

// Every command of veklari-cli against a small business of five invoices in
// a real database of one back-end, reached through a configuration file as
// a user's: what each command writes to standard output and standard error,
// its exit status and the files it makes. No run may change the
// configuration file.
class TestCliCommands : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void listInvoices();
    void listInvoicesCsv();
    void exportPdf_data();
    void exportPdf();
    void exportKeepsExistingFiles();
    void exportFinvoice_data();
    void exportFinvoice();
    void schemaFindings();
    void nothingWritten_data();
    void nothingWritten();
    void reports_data();
    void reports();
    void databaseChoice_data();
    void databaseChoice();
    void perUserConfiguration();

private:
    CliProcess::Result cli(const QStringList& arguments);
    QString newDirectory();
    static QStringList filesIn(const QString& dir);
    static QByteArray readFile(const QString& fileName);
    // The invoice list's cells of a stored invoice, read back independently.
    QStringList listCells(const Invoice& invoice) const;

    InvoiceFixture m_fixture { VEKLARI_TEST_BACKEND };
    QTemporaryDir m_dir;
    QString m_iniFile;
    QByteArray m_iniText;
    QString m_storedDirectory;
    QString m_missingDatabase;
    QList<Invoice> m_invoices;
    int m_directories = 0;
};

namespace {

const int configuredNumber = 3;
// The same database once more under a number other than the last used.
const int otherNumber = 5;
const int missingNumber = 7;
const QStringList customerNames { "Rautakauppa Virtanen Oy", "Nordic Timber AB" };

// Cents as the program's lists write them: "1234,50", "-7,05".
QString euros(long long cents)
{
    const QString sign = cents < 0 ? QStringLiteral("-") : QString();
    cents = std::llabs(cents);
    return sign + QString::number(cents / 100) + QLatin1Char(',')
        + QString::number(cents % 100).rightJustified(2, QLatin1Char('0'));
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

void TestCliCommands::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    // What an e-invoice needs of the sender beside the seller's details.
    QVERIFY(m_fixture.setSetting("finvoice/senderId", "003723456780"));
    QVERIFY(m_fixture.setSetting("finvoice/intermediatorId", "OKOYFIHH"));
    QVERIFY(m_fixture.setSetting("finvoice/defaultReceiverId", "TULOSTUS"));
    // 1004 lies between the numbers the range tests ask for.
    const QList<QList<int>> invoices { { 1001, InvoiceType::Invoice, 0, 0 },
        { 1002, InvoiceType::Invoice, 1, 10000 }, { 1003, InvoiceType::CreditNote, 0, 0 },
        { 1004, InvoiceType::Invoice, 1, 0 }, { 1005, InvoiceType::Reminder, 0, 0 } };
    int paidInvoiceId = -1;
    for (const QList<int>& invoice : invoices) {
        const QList<InvoiceItem> items
            = invoice.at(0) == 1004 ? InvoiceFixture::manyItems(3) : InvoiceFixture::sampleItems();
        const int id = m_fixture.addInvoice(
            invoice.at(1), items, invoice.at(0), invoice.at(2), invoice.at(3));
        QVERIFY2(id >= 0, qPrintable(m_fixture.lastError()));
        if (invoice.at(3) > 0)
            paidInvoiceId = id;
    }
    Database* database = m_fixture.testDatabase()->database();
    std::unique_ptr<Query> query(database->query());
    Payment payment;
    payment.invoiceId = paidInvoiceId;
    payment.date = QDate(2025, 3, 10);
    payment.amount = 10000;
    QVERIFY2(query->savePayment(&payment), qPrintable(query->lastError()));
    QVERIFY2(query->fetchInvoiceSummaries(InvoiceCriteria()), qPrintable(query->lastError()));
    while (query->next()) {
        Invoice invoice;
        query->invoiceSummary(&invoice);
        m_invoices.append(invoice);
    }
    QCOMPARE(m_invoices.size(), invoices.size());

    // The business's database as number 3, used last, after a database of
    // number 7 that does not exist, and again as number 5.
    QVariantMap entry = m_fixture.testDatabase()->entry();
    entry.insert(QStringLiteral("number"), configuredNumber);
    QVariantMap other = entry;
    other.insert(QStringLiteral("number"), otherNumber);
    QVariantMap missing = entry;
    missing.insert(QStringLiteral("number"), missingNumber);
    m_missingDatabase
        = QStringLiteral("veklari_puuttuu_%1").arg(QCoreApplication::applicationPid());
    if (VEKLARI_TEST_BACKEND == TestDatabase::SQLite) {
        m_missingDatabase = m_dir.filePath(QStringLiteral("puuttuu.sqlite"));
        missing.insert(QStringLiteral("filename"), m_missingDatabase);
    } else {
        missing.insert(QStringLiteral("databaseName"), m_missingDatabase);
    }
    m_storedDirectory = newDirectory();
    m_iniFile = m_dir.filePath(QStringLiteral("veklari.ini"));
    {
        QSettings ini(m_iniFile, QSettings::IniFormat);
        TestDatabase::writeEntries(&ini, { missing, entry, other });
        ini.setValue(QStringLiteral("databases/lastUsed"), configuredNumber);
        ini.beginGroup(QStringLiteral("exportInvoicesWindow"));
        ini.setValue(QStringLiteral("pdfDirectory"), m_storedDirectory);
        ini.setValue(QStringLiteral("pdfTemplate"), QStringLiteral("oletus-$i.pdf"));
        ini.setValue(QStringLiteral("finvoiceDirectory"), m_storedDirectory);
        ini.setValue(QStringLiteral("finvoiceTemplate"), QStringLiteral("oletus-$i.xml"));
        ini.endGroup();
    }
    m_iniText = readFile(m_iniFile);
    QVERIFY(!m_iniText.isEmpty());
}

// Whatever a command did, the configuration stays as it was: no lastUsed,
// no logging keys, no database entry.
void TestCliCommands::cleanup()
{
    QCOMPARE(readFile(m_iniFile), m_iniText);
}

CliProcess::Result TestCliCommands::cli(const QStringList& arguments)
{
    return CliProcess::run(QStringList { "-c", m_iniFile } + arguments, newDirectory());
}

QString TestCliCommands::newDirectory()
{
    const QString dir = m_dir.filePath(QStringLiteral("dir-%1").arg(++m_directories));
    QDir().mkpath(dir);
    return dir;
}

QStringList TestCliCommands::filesIn(const QString& dir)
{
    return QDir(dir).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

QByteArray TestCliCommands::readFile(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList TestCliCommands::listCells(const Invoice& invoice) const
{
    const int customer = invoice.number == 1002 || invoice.number == 1004 ? 1 : 0;
    return { QString::number(invoice.number), invoice.date.toString(QStringLiteral("d.M.yyyy")),
        invoice.dueDate.toString(QStringLiteral("d.M.yyyy")), customerNames.at(customer),
        InvoiceType::name(invoice.type), euros(invoice.totalAmount), euros(invoice.balance) };
}

void TestCliCommands::listInvoices()
{
    const CliProcess::Result result = cli({ "list", "invoices" });
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.err, QString());
    const QStringList lines = result.outLines();
    QCOMPARE(lines.size(), m_invoices.size() + 1);
    static const QRegularExpression gap(QStringLiteral("\\s{2,}"));
    QCOMPARE(lines.first().trimmed().split(gap),
        QStringList(
            { "Numero", "Päivämäärä", "Eräpäivä", "Asiakas", "Tyyppi", "Summa", "Avoinna" }));
    for (int i = 0; i < m_invoices.size(); ++i)
        QCOMPARE(lines.at(i + 1).trimmed().split(gap), listCells(m_invoices.at(i)));
    // The open balances are right-aligned under their heading, so every
    // line ends in the same column; the numbers end under theirs.
    const QString numberHeading = QStringLiteral("Numero");
    const int numberEnd = int(lines.first().indexOf(numberHeading) + numberHeading.size());
    for (int i = 0; i < m_invoices.size(); ++i) {
        const QString& line = lines.at(i + 1);
        const QString number = QString::number(m_invoices.at(i).number);
        QCOMPARE(line.size(), lines.first().size());
        QCOMPARE(int(line.indexOf(number) + number.size()), numberEnd);
    }
    // The first amount has a decimal part: the list shows it with a comma.
    QVERIFY(lines.at(1).contains(euros(m_invoices.first().totalAmount)));
    QVERIFY(m_invoices.first().totalAmount % 100 != 0);
}

void TestCliCommands::listInvoicesCsv()
{
    const CliProcess::Result result = cli({ "list", "invoices", "--csv" });
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.err, QString());
    QStringList expected { "Numero;Päivämäärä;Eräpäivä;Asiakas;Tyyppi;Summa;Avoinna" };
    for (const Invoice& invoice : std::as_const(m_invoices))
        expected.append(listCells(invoice).join(QLatin1Char(';')));
    QCOMPARE(result.out, expected.join(QStringLiteral("\r\n")) + QStringLiteral("\r\n"));
}

void TestCliCommands::exportPdf_data()
{
    QTest::addColumn<QStringList>("arguments");
    // In the --dir directory, or in the stored one without --dir.
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<int>("minPages");
    const QStringList plain { "export", "pdf", "--dir", "DIR", "--template", "$i.pdf" };
    QTest::addRow("numbers and ranges") << plain + QStringList { "1005,1001-1002" }
                                        << QStringList { "1001.pdf", "1002.pdf", "1005.pdf" } << 1;
    QTest::addRow("numbers in two arguments, options after them")
        << QStringList { "export", "pdf", "1003", "1004", "--dir=DIR", "--template=$i.pdf" }
        << QStringList { "1003.pdf", "1004.pdf" } << 1;
    QTest::addRow("every invoice")
        << plain << QStringList { "1001.pdf", "1002.pdf", "1003.pdf", "1004.pdf", "1005.pdf" } << 1;
    QTest::addRow("one file, named after the first")
        << plain + QStringList { "--single", "1002-1004" } << QStringList { "1002.pdf" } << 3;
    QTest::addRow("stored directory and template")
        << QStringList { "export", "pdf", "1003" } << QStringList { "oletus-1003.pdf" } << 1;
}

void TestCliCommands::exportPdf()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, files);
    QFETCH(int, minPages);
    const bool storedDirectory = !arguments.join(' ').contains("DIR");
    const QString dir = storedDirectory ? m_storedDirectory : newDirectory();
    arguments.replaceInStrings(QStringLiteral("DIR"), dir);
    QVERIFY(filesIn(dir).isEmpty());

    const CliProcess::Result result = cli(arguments);
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.err, QString());
    QStringList paths;
    for (const QString& file : std::as_const(files))
        paths.append(QDir(dir).filePath(file));
    QCOMPARE(sorted(result.outLines()), paths);
    QCOMPARE(filesIn(dir), files);
    for (const QString& path : std::as_const(paths)) {
        QVERIFY2(readFile(path).startsWith("%PDF-"), qPrintable(path));
        QVERIFY2(PdfTools::pageCount(path) >= minPages, qPrintable(path));
    }
    if (storedDirectory) {
        for (const QString& path : std::as_const(paths))
            QFile::remove(path);
    }
}

void TestCliCommands::exportKeepsExistingFiles()
{
    const QString dir = newDirectory();
    const QStringList arguments { "export", "pdf", "--dir", dir, "--template", "$i.pdf", "1001" };
    const CliProcess::Result first = cli(arguments);
    QVERIFY2(first.finished && first.exitCode == 0, first.describe());
    const QByteArray firstFile = readFile(QDir(dir).filePath("1001.pdf"));
    const CliProcess::Result second = cli(arguments);
    QVERIFY2(second.finished && second.exitCode == 0, second.describe());
    QCOMPARE(second.outLines(), QStringList(QDir(dir).filePath("1001-1.pdf")));
    QCOMPARE(filesIn(dir), QStringList({ "1001-1.pdf", "1001.pdf" }));
    QCOMPARE(readFile(QDir(dir).filePath("1001.pdf")), firstFile);
}

void TestCliCommands::exportFinvoice_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<int>("documents"); // in each file
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("envelope");
    const QStringList plain { "export", "finvoice", "--dir", "DIR", "--template", "$i.xml" };
    QTest::addRow("version 3.0") << plain + QStringList { "--schema", "3.0", "1001,1003" }
                                 << QStringList { "1001.xml", "1003.xml" } << 1 << "3.0" << true;
    QTest::addRow("version 2.01 without the envelope")
        << plain + QStringList { "--schema=2.01", "--no-soap", "1002" }
        << QStringList { "1002.xml" } << 1 << "2.01" << false;
    QTest::addRow("version 1.3, one file")
        << plain + QStringList { "--schema", "1.3", "--single", "1001-1002" }
        << QStringList { "1001.xml" } << 2 << "1.3" << true;
}

void TestCliCommands::exportFinvoice()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, files);
    QFETCH(int, documents);
    QFETCH(QString, version);
    QFETCH(bool, envelope);
    const QString dir = newDirectory();
    arguments.replaceInStrings(QStringLiteral("DIR"), dir);

    const CliProcess::Result result = cli(arguments);
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.err, QString());
    QCOMPARE(filesIn(dir), files);
    QStringList paths;
    for (const QString& file : std::as_const(files))
        paths.append(QDir(dir).filePath(file));
    QCOMPARE(sorted(result.outLines()), paths);
    for (const QString& path : std::as_const(paths)) {
        FinvoiceValidator validator;
        QVERIFY2(validator.validateFile(path),
            qPrintable(validator.lastError() + validator.findings().join('\n')));
        QCOMPARE(validator.documentCount(), documents);
        const QByteArray text = readFile(path);
        QCOMPARE(text.count(QByteArray("Version=\"") + version.toLatin1() + '"'), documents);
        QCOMPARE(text.contains("Envelope"), envelope);
    }
}

// A stored Finvoice script that writes what the schema does not allow: the
// files are written and listed, each finding names its file and line, and
// the run fails.
void TestCliCommands::schemaFindings()
{
    const int scriptId
        = m_fixture.addPrintScript(QStringLiteral("rikki"), QStringLiteral("finvoice"),
            QStringLiteral("function write() {\n"
                           "    startElement('Finvoice');\n"
                           "    attribute('Version', '3.0');\n"
                           "    textElement('Tuntematon', 'x');\n"
                           "    endElement('Finvoice');\n"
                           "}\n"));
    QVERIFY2(scriptId > 0, qPrintable(m_fixture.lastError()));
    const auto removeScript = qScopeGuard([&] { m_fixture.removePrintScript(scriptId); });
    const QString dir = newDirectory();

    const CliProcess::Result result = cli(
        { "export", "finvoice", "--dir", dir, "--template", "$i.xml", "--no-soap", "1001,1005" });
    QVERIFY2(result.finished && result.exitCode == 1, result.describe());
    const QStringList paths { QDir(dir).filePath("1001.xml"), QDir(dir).filePath("1005.xml") };
    QCOMPARE(sorted(result.outLines()), paths);
    QCOMPARE(filesIn(dir), QStringList({ "1001.xml", "1005.xml" }));
    static const QRegularExpression finding(QStringLiteral("^(.+):(\\d+): (\\S.*)$"));
    QSet<QString> filesWithFindings;
    for (const QString& line : result.errLines()) {
        const QRegularExpressionMatch match = finding.match(line);
        QVERIFY2(match.hasMatch(), qPrintable(line));
        QVERIFY2(paths.contains(match.captured(1)), qPrintable(line));
        QVERIFY2(match.captured(2).toInt() >= 1, qPrintable(line));
        filesWithFindings.insert(match.captured(1));
    }
    QCOMPARE(filesWithFindings.size(), paths.size());
}

// Failures after the database is open: a message, exit status 1 and no
// file.
void TestCliCommands::nothingWritten_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::addRow("export to a missing directory") << QStringList { "export", "pdf", "--dir",
        "DIR/puuttuu", "1001" } << "veklari-cli: Hakemistoa DIR/puuttuu ei ole.";
    QTest::addRow("no invoice of those numbers") << QStringList { "export", "finvoice", "--dir",
        "DIR", "2001-2005,999" } << "veklari-cli: Annetuilla numeroilla ei löytynyt laskuja.";
    QTest::addRow("report to a missing directory") << QStringList { "report", "invoices", "--pdf",
        "DIR/puuttuu/laskut.pdf" } << "veklari-cli: Tulosteen tallentaminen epäonnistui. ";
    QTest::addRow("CSV report to a missing directory")
        << QStringList { "report", "customers", "--csv", "DIR/puuttuu/asiakkaat.csv" }
        << "veklari-cli: Tulosteen tallentaminen epäonnistui. ";
}

void TestCliCommands::nothingWritten()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const QString dir = newDirectory();
    arguments.replaceInStrings(QStringLiteral("DIR"), dir);
    message.replace(QStringLiteral("DIR"), dir);

    const CliProcess::Result result = cli(arguments);
    QVERIFY2(result.finished && result.exitCode == 1, result.describe());
    QCOMPARE(result.out, QString());
    QVERIFY2(result.errLines().value(0).startsWith(message), result.describe());
    QCOMPARE(filesIn(dir), QStringList());
}

void TestCliCommands::reports_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("landscape");
    QTest::addColumn<QString>("title");
    // Texts of the records that the report must show.
    QTest::addColumn<QStringList>("texts");
    const QStringList numbers { "1001", "1002", "1003", "1004", "1005" };
    // The printed columns may wrap a name; its first word stays whole.
    const QStringList customers { "Rautakauppa", "Nordic" };
    const QStringList products { "Viivästyskorko" };
    const QStringList payments { "1002", "100,00" };
    for (const char* format : { "pdf", "csv" }) {
        QTest::addRow("invoices, %s", format)
            << "invoices" << format << false << "Laskuluettelo" << numbers + customers;
        QTest::addRow("payments, %s", format)
            << "payments" << format << false << "Suorituspäiväkirja" << payments;
        QTest::addRow("customers, %s", format)
            << "customers" << format << false << "Asiakasluettelo" << customers;
        QTest::addRow("products, %s", format)
            << "products" << format << false << "Tuoteluettelo" << products;
    }
    QTest::addRow("invoices, landscape pdf") << "invoices"
                                             << "pdf" << true << "Laskuluettelo" << numbers;
    QTest::addRow("customers, landscape pdf") << "customers"
                                              << "pdf" << true << "Asiakasluettelo" << customers;
}

void TestCliCommands::reports()
{
    QFETCH(QString, kind);
    QFETCH(QString, format);
    QFETCH(bool, landscape);
    QFETCH(QString, title);
    QFETCH(QStringList, texts);
    const QString dir = newDirectory();
    const QString fileName = QStringLiteral("raportti.") + format;
    QStringList arguments { "report", kind, "--" + format, QDir(dir).filePath(fileName) };
    if (landscape)
        arguments.append("--landscape");

    const CliProcess::Result result = cli(arguments);
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.err, QString());
    const QString path = QDir(dir).filePath(fileName);
    QCOMPARE(result.outLines(), QStringList(path));
    QCOMPARE(filesIn(dir), QStringList(fileName));

    QString text;
    if (format == QLatin1String("csv")) {
        const QByteArray bytes = readFile(path);
        const QByteArray byteOrderMark("\xEF\xBB\xBF");
        QVERIFY(bytes.startsWith(byteOrderMark));
        text = QString::fromUtf8(bytes.mid(byteOrderMark.size()));
        // Heading line, then the records separated by semicolons.
        QVERIFY2(text.section(QStringLiteral("\r\n"), 0, 0).contains(QStringLiteral(";Nimi;")),
            qPrintable(text));
    } else {
        QVERIFY(readFile(path).startsWith("%PDF-"));
        const QList<PdfTools::Page> pages = PdfTools::pages(path);
        QVERIFY(!pages.isEmpty());
        const QSizeF size = pages.first().size;
        QCOMPARE(size.width() > size.height(), landscape);
        text = PdfTools::text(path);
        QVERIFY2(text.contains(title), qPrintable(text));
    }
    for (const QString& expected : std::as_const(texts))
        QVERIFY2(text.contains(expected), qPrintable(expected + "\n" + text));
}

void TestCliCommands::databaseChoice_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addRow("last used") << QStringList() << 0;
    QTest::addRow("by number") << QStringList { "-d", QString::number(configuredNumber) } << 0;
    // Opening it leaves the last used number as it was.
    QTest::addRow("not the last used") << QStringList { "-d", QString::number(otherNumber) } << 0;
    QTest::addRow("missing database") << QStringList { "-d", QString::number(missingNumber) } << 1;
}

// Neither choice creates the missing database.
void TestCliCommands::databaseChoice()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    const CliProcess::Result result = cli(arguments + QStringList { "list", "invoices" });
    QVERIFY2(result.finished && result.exitCode == exitCode, result.describe());
    if (exitCode == 0) {
        QCOMPARE(result.outLines().size(), m_invoices.size() + 1);
        QCOMPARE(result.err, QString());
    } else {
        QCOMPARE(result.out, QString());
        QVERIFY2(result.err.startsWith("veklari-cli: Tietokantayhteyden avaaminen epäonnistui. "),
            result.describe());
        QVERIFY2(result.err.contains(m_missingDatabase), result.describe());
    }
    if (VEKLARI_TEST_BACKEND == TestDatabase::SQLite) {
        QVERIFY(!QFileInfo::exists(m_missingDatabase));
    } else {
        QCOMPARE(m_fixture.testDatabase()
                     ->value(QStringLiteral("SELECT COUNT(*) FROM pg_database WHERE datname = '%1'")
                                 .arg(m_missingDatabase))
                     .toInt(),
            0);
    }
}

// Without -c the per-user file is read, as the window program reads it.
void TestCliCommands::perUserConfiguration()
{
    const QString home = newDirectory();
    const QString iniFile = CliProcess::userConfigFile(home);
    QVERIFY(QDir().mkpath(QFileInfo(iniFile).path()));
    QVERIFY(QFile::copy(m_iniFile, iniFile));
    const CliProcess::Result result = CliProcess::run({ "list", "invoices", "--csv" }, home);
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.outLines().size(), m_invoices.size() + 1);
    QCOMPARE(readFile(iniFile), m_iniText);
}

QTEST_GUILESS_MAIN(TestCliCommands)
#include "tst_clicommands.moc"
