#include "core/registry.h"
#include "domain/invoicecriteria.h"
#include "domain/settings.h"
#include "export/finvoicevalidator.h"
#include "export/invoiceexporter.h"
#include "invoicefixture.h"
#include "pdftools.h"
#include "print/scripthelper.h"
#include "storage/database.h"
#include "storage/query.h"
#include "util/ecmascriptengine.h"

#include <QtTest>

// Invoices written to disk as PDF and Finvoice files, each as one file per invoice or one for
// all, read back from the directory: the names, the pages, the schema and what a failure leaves.
class TestInvoiceExporter : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void storedOptions_data();
    void storedOptions();
    void manyInvoices_data();
    void manyInvoices();
    void takenNames_data();
    void takenNames();
    void findingsAreListed();
    void failures_data();
    void failures();

private:
    QString newDirectory();
    bool removeSetting(const QString& key);
    InvoiceExporter::Options options(
        const QString& format, bool separate, const QString& directory) const;

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
    int m_directories = 0;
};

namespace {

// The numbers of the invoices of each test; odd and even ones go to different customers in
// the range of many.
const int manyFirst = 5001;
const int manyCount = 200;
const int takenFirst = 6001;
const int failingFirst = 7001;
const int findingsFirst = 8001;

// The customers' names as "$n" writes them.
const QString virtanen = QStringLiteral("rautakauppa-virtanen-oy");
const QString nordic = QStringLiteral("nordic-timber-ab");

InvoiceCriteria numbers(int first, int last)
{
    InvoiceCriteria criteria;
    criteria.numberFrom = first;
    criteria.numberTo = last;
    return criteria;
}

// Every file of the directory, hidden ones too (a temporary file left behind would be one).
QStringList filesIn(const QString& directory)
{
    return QDir(directory).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

QStringList fileNames(const QStringList& paths)
{
    QStringList names;
    for (const QString& path : paths)
        names.append(QFileInfo(path).fileName());
    return names;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

// The options as "key=value" lines, for comparing all of them at once.
QStringList describe(const InvoiceExporter::Options& o)
{
    auto flag = [](bool on) { return on ? QStringLiteral("true") : QStringLiteral("false"); };
    return { "pdfEnabled=" + flag(o.pdfEnabled), "pdfDirectory=" + o.pdfDirectory,
        "pdfTemplate=" + o.pdfTemplate, "pdfOpenDirectory=" + flag(o.pdfOpenDirectory),
        "pdfSeparateFiles=" + flag(o.pdfSeparateFiles),
        "finvoiceEnabled=" + flag(o.finvoiceEnabled), "finvoiceDirectory=" + o.finvoiceDirectory,
        "finvoiceTemplate=" + o.finvoiceTemplate,
        "finvoiceOpenDirectory=" + flag(o.finvoiceOpenDirectory),
        "finvoiceSeparateFiles=" + flag(o.finvoiceSeparateFiles),
        "xmlSchemaVersion=" + o.xmlSchemaVersion, "soapEnvEnabled=" + flag(o.soapEnvEnabled) };
}

bool writeFile(const QString& fileName, const QByteArray& content)
{
    QFile file(fileName);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray readFile(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void TestInvoiceExporter::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    // The print scripts' value tracing would drown the output.
    QLoggingCategory::setFilterRules(QStringLiteral("veklari.*.debug=false"));
    QCoreApplication::setApplicationName(QStringLiteral("Veklari"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VEKLARI_VERSION));
    QVERIFY(m_dir.isValid());
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    // What the envelope needs to name the sender and the receiver.
    QVERIFY(m_fixture.setSetting("finvoice/senderId", "003723456780"));
    QVERIFY(m_fixture.setSetting("finvoice/intermediatorId", "OKOYFIHH"));
    QVERIFY(m_fixture.setSetting("finvoice/defaultReceiverId", "TULOSTUS"));

    Database* database = m_fixture.testDatabase()->database();
    QVERIFY(database->transaction());
    const QList<InvoiceItem> items = InvoiceFixture::sampleItems();
    for (int i = 0; i < manyCount; ++i)
        QVERIFY2(m_fixture.addInvoice(0, items, manyFirst + i, i % 2) > 0,
            qPrintable(m_fixture.lastError()));
    for (const int first : { takenFirst, failingFirst, findingsFirst }) {
        for (const int number : { first, first + 1 })
            QVERIFY2(
                m_fixture.addInvoice(0, items, number, 0) > 0, qPrintable(m_fixture.lastError()));
    }
    QVERIFY(database->commit());
    QVERIFY(m_fixture.refresh());
}

QString TestInvoiceExporter::newDirectory()
{
    const QString path = m_dir.filePath(QStringLiteral("out%1").arg(++m_directories));
    return QDir().mkpath(path) ? path : QString();
}

bool TestInvoiceExporter::removeSetting(const QString& key)
{
    m_fixture.registry()->settings()->removeProperty(key);
    std::unique_ptr<Query> query(m_fixture.testDatabase()->database()->query());
    return query->updateSettings(m_fixture.registry()->settings());
}

InvoiceExporter::Options TestInvoiceExporter::options(
    const QString& format, bool separate, const QString& directory) const
{
    InvoiceExporter::Options o = InvoiceExporter(m_fixture.registry()).storedOptions();
    o.pdfEnabled = format != QLatin1String("xml");
    o.finvoiceEnabled = format != QLatin1String("pdf");
    o.pdfDirectory = o.finvoiceDirectory = directory;
    o.pdfSeparateFiles = o.finvoiceSeparateFiles = separate;
    // Both, PDFs a file each and one Finvoice file for all.
    if (format == QLatin1String("mixed"))
        o.finvoiceSeparateFiles = false;
    o.pdfTemplate = QStringLiteral("lasku-$i-$n.pdf");
    o.finvoiceTemplate = QStringLiteral("lasku-$i-$n.xml");
    return o;
}

void TestInvoiceExporter::storedOptions_data()
{
    QTest::addColumn<QVariantMap>("company");
    QTest::addColumn<QStringList>("expected");
    const QString home = QDir::homePath();
    QStringList expected { "pdfEnabled=true", "pdfDirectory=" + home, "pdfTemplate=lasku-$i-$n.pdf",
        "pdfOpenDirectory=true", "pdfSeparateFiles=true", "finvoiceEnabled=false",
        "finvoiceDirectory=" + home, "finvoiceTemplate=lasku-$i-$n.xml",
        "finvoiceOpenDirectory=true", "finvoiceSeparateFiles=true", "xmlSchemaVersion=3.0",
        "soapEnvEnabled=true" };
    QTest::newRow("defaults") << QVariantMap() << expected;
    expected.replace(10, "xmlSchemaVersion=1.3");
    expected.replace(11, "soapEnvEnabled=false");
    QTest::newRow("company settings")
        << QVariantMap { { "finvoice/xmlSchema", "1.3" }, { "finvoice/soapEnv", "false" } }
        << expected;
}

void TestInvoiceExporter::storedOptions()
{
    QFETCH(QVariantMap, company);
    QFETCH(QStringList, expected);
    m_fixture.registry()->loadSettings(
        m_dir.filePath(QStringLiteral("%1.ini").arg(QTest::currentDataTag())));
    for (auto it = company.constBegin(); it != company.constEnd(); ++it)
        QVERIFY(m_fixture.setSetting(it.key(), it.value()));
    const QStringList found = describe(InvoiceExporter(m_fixture.registry()).storedOptions());
    for (auto it = company.constBegin(); it != company.constEnd(); ++it)
        QVERIFY(removeSetting(it.key()));
    QCOMPARE(found, expected);
}

void TestInvoiceExporter::manyInvoices_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<bool>("separate");
    QTest::newRow("PDF, a file each") << "pdf" << true;
    QTest::newRow("PDF, one for all") << "pdf" << false;
    QTest::newRow("Finvoice, a file each") << "xml" << true;
    QTest::newRow("Finvoice, one for all") << "xml" << false;
}

void TestInvoiceExporter::manyInvoices()
{
    QFETCH(QString, format);
    QFETCH(bool, separate);
    const QString dir = newDirectory();
    InvoiceExporter exporter(m_fixture.registry());
    QVERIFY2(exporter.exportInvoices(
                 numbers(manyFirst, manyFirst + manyCount - 1), options(format, separate, dir)),
        qPrintable(exporter.lastError()));
    QCOMPARE(exporter.invoiceCount(), manyCount);

    // Named by the default template; one for all after the first invoice.
    QStringList expected;
    for (int i = 0; i < (separate ? manyCount : 1); ++i)
        expected.append(QStringLiteral("lasku-%1-%2.%3")
                            .arg(manyFirst + i)
                            .arg(i % 2 ? nordic : virtanen, format));
    QCOMPARE(fileNames(exporter.writtenFiles()), expected);
    QCOMPARE(filesIn(dir), sorted(expected));

    const QString first = QDir(dir).filePath(expected.first());
    const QString last = QDir(dir).filePath(expected.last());
    if (format == QLatin1String("pdf")) {
        const QString info = PdfTools::info(first);
        QVERIFY2(info.contains(QRegularExpression("Title:\\s+Lasku\\n")), qPrintable(info));
        QVERIFY2(info.contains(QRegularExpression(
                     QStringLiteral("Creator:\\s+Veklari %1\\n").arg(VEKLARI_VERSION))),
            qPrintable(info));
        QVERIFY2(info.contains("(A4)"), qPrintable(info));
        // Every invoice fits on a page of its own.
        QCOMPARE(PdfTools::pageCount(first), separate ? 1 : manyCount);
        QCOMPARE(PdfTools::pageCount(last), separate ? 1 : manyCount);
        const int lastPage = separate ? 1 : manyCount;
        QVERIFY(PdfTools::text(first, 1).contains(QString::number(manyFirst)));
        QVERIFY(
            PdfTools::text(last, lastPage).contains(QString::number(manyFirst + manyCount - 1)));
        return;
    }
    QVERIFY2(exporter.findings().isEmpty(), qPrintable(exporter.warnings().join('\n')));
    QVERIFY2(exporter.warnings().isEmpty(), qPrintable(exporter.warnings().join('\n')));
    // Checked here again, file by file, with the invoice numbers each holds.
    FinvoiceValidator validator;
    int documents = 0;
    for (const QString& file : exporter.writtenFiles()) {
        QVERIFY2(validator.validateFile(file), qPrintable(validator.findings().join('\n')));
        documents += validator.documentCount();
    }
    QCOMPARE(documents, manyCount);
    const QByteArray combined = readFile(first);
    QVERIFY(combined.contains(QByteArray("<InvoiceNumber>") + QByteArray::number(manyFirst)));
    QCOMPARE(combined.contains(
                 QByteArray("<InvoiceNumber>") + QByteArray::number(manyFirst + manyCount - 1)),
        !separate);
}

void TestInvoiceExporter::takenNames_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("nameTemplate");
    QTest::addColumn<int>("count");
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QStringList>("expected");
    const QString first = QStringLiteral("lasku-%1-%2").arg(takenFirst).arg(virtanen);
    for (const QString format : { "pdf", "xml" }) {
        auto row = [&format](const char* name) -> QTestData& {
            return QTest::addRow("%s, %s", name, qPrintable(format));
        };
        row("taken name") << format << "lasku-$i-$n." + format << 1
                          << QStringList { first + "." + format }
                          << QStringList { first + "-1." + format };
        row("taken -1") << format << "lasku." + format << 1
                        << QStringList { "lasku." + format, "lasku-1." + format }
                        << QStringList { "lasku-2." + format };
        row("same customer twice")
            << format << "$n." + format << 2 << QStringList()
            << QStringList { virtanen + "." + format, virtanen + "-1." + format };
        // An unknown code is dropped, and the rest is still the name.
        row("unknown code") << format << "$q." + format << 1 << QStringList()
                            << QStringList { "." + format };
    }
}

void TestInvoiceExporter::takenNames()
{
    QFETCH(QString, format);
    QFETCH(QString, nameTemplate);
    QFETCH(int, count);
    QFETCH(QStringList, existing);
    QFETCH(QStringList, expected);
    const QString dir = newDirectory();
    const QByteArray old("vanha tiedosto");
    for (const QString& name : existing)
        QVERIFY(writeFile(QDir(dir).filePath(name), old));

    InvoiceExporter::Options o = options(format, true, dir);
    o.pdfTemplate = o.finvoiceTemplate = nameTemplate;
    InvoiceExporter exporter(m_fixture.registry());
    QVERIFY2(exporter.exportInvoices(numbers(takenFirst, takenFirst + count - 1), o),
        qPrintable(exporter.lastError()));
    QCOMPARE(fileNames(exporter.writtenFiles()), expected);
    QCOMPARE(filesIn(dir), sorted(existing + expected));
    // Nothing is overwritten.
    for (const QString& name : existing)
        QCOMPARE(readFile(QDir(dir).filePath(name)), old);
    // Written as any other file of the user: not with a temporary file's owner-only permissions.
    const QString reference = m_dir.filePath(QStringLiteral("reference"));
    QVERIFY(writeFile(reference, old));
    for (const QString& name : expected) {
        const QString file = QDir(dir).filePath(name);
        QVERIFY(readFile(file).size() > old.size());
        QCOMPARE(QFileInfo(file).permissions(), QFileInfo(reference).permissions());
    }
}

void TestInvoiceExporter::findingsAreListed()
{
    // The built-in script with an element that no version of the schema knows.
    QByteArray source = ScriptHelper::builtInSource(QStringLiteral("finvoice"));
    const QByteArray seller("startElement('SellerPartyDetails');");
    QCOMPARE(source.count(seller), 1);
    source.replace(seller, seller + " textElement('Tuntematon', 'x');");
    const int id = m_fixture.addPrintScript(
        QStringLiteral("finvoice"), QStringLiteral("finvoice"), QString::fromUtf8(source));
    QVERIFY2(id > 0 && m_fixture.refresh(), qPrintable(m_fixture.lastError()));

    const QString dir = newDirectory();
    InvoiceExporter exporter(m_fixture.registry());
    const bool exported = exporter.exportInvoices(
        numbers(findingsFirst, findingsFirst + 1), options("xml", true, dir));
    QVERIFY(m_fixture.removePrintScript(id));
    // The findings do not stop the run: the files stay, with what is wrong in them listed.
    QVERIFY2(exported, qPrintable(exporter.lastError()));
    const QStringList files = exporter.writtenFiles();
    QCOMPARE(files.size(), 2);
    QVERIFY(!exporter.findings().isEmpty());
    QSet<int> numbersFound;
    for (const InvoiceExporter::Finding& finding : exporter.findings()) {
        const int index = files.indexOf(finding.fileName);
        QVERIFY2(index >= 0, qPrintable(finding.fileName));
        QCOMPARE(finding.invoiceNumber, findingsFirst + index);
        numbersFound.insert(finding.invoiceNumber);
        const QList<QByteArray> lines = readFile(finding.fileName).split('\n');
        QVERIFY(finding.line > 0 && finding.line <= lines.size());
        QVERIFY2(lines.at(finding.line - 1).contains("Tuntematon"),
            qPrintable(QStringLiteral("%1: %2").arg(finding.line).arg(finding.message)));
        QVERIFY(finding.message.contains("Tuntematon"));
    }
    QCOMPARE(numbersFound.size(), 2);
    QCOMPARE(exporter.warnings().size(), exporter.findings().size());
    for (const QString& warning : exporter.warnings())
        QVERIFY2(warning.startsWith(QStringLiteral("lasku-%1-").arg(findingsFirst))
                || warning.startsWith(QStringLiteral("lasku-%1-").arg(findingsFirst + 1)),
            qPrintable(warning));
}

void TestInvoiceExporter::failures_data()
{
    QTest::addColumn<QString>("format"); // "pdf", "xml", "both" or "mixed"
    QTest::addColumn<bool>("separate");
    QTest::addColumn<QString>("scriptType"); // a stored script of this type, or none
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("missingDirectory");
    QTest::addColumn<int>("bankAccounts"); // shown on invoices
    QTest::addColumn<QString>("nameTemplate"); // empty: the default
    QTest::addColumn<QString>("error"); // its start; %1 the directory
    QTest::addColumn<QString>("detail"); // also in the error
    QTest::addColumn<bool>("scriptFailed");
    QTest::addColumn<QStringList>("left"); // the files in the directory afterwards

    const QString first = QStringLiteral("lasku-%1-%2").arg(failingFirst).arg(virtanen);
    const QString second = QStringLiteral("lasku-%1-%2").arg(failingFirst + 1).arg(virtanen);
    const QString none;
    const QString notFound = QStringLiteral("Hakemistoa %1 ei löytynyt.");
    QTest::newRow("missing PDF directory") << "pdf" << true << none << none << true << 2 << none
                                           << notFound << none << false << QStringList();
    QTest::newRow("missing Finvoice directory")
        << "xml" << true << none << none << true << 2 << none << notFound << none << false
        << QStringList();
    QTest::newRow("empty PDF template")
        << "pdf" << true << none << none << false << 2 << " "
        << "Syötä PDF-tiedostonimen muoto." << none << false << QStringList();
    QTest::newRow("empty Finvoice template")
        << "xml" << true << none << none << false << 2 << " "
        << "Syötä Finvoice-verkkolaskun tiedostonimen muoto." << none << false << QStringList();
    // Refused before anything, the PDF files included.
    QTest::newRow("seller without a bank account")
        << "both" << true << none << none << false << 0 << none
        << "Finvoice-laskussa on oltava myyjän pankkitili" << none << false << QStringList();

    const QString pdfScript
        = QStringLiteral("function print() {\n"
                         "    drawText(20, 20, 80, 'Lasku ' + get('invoices/0/number'));\n"
                         "    if (get('invoices/length') > 1 || get('invoices/0/number') == %1)\n"
                         "        throw new Error('laskupohja rikki');\n"
                         "}\n")
              .arg(failingFirst + 1);
    // The first file stays; the second is neither there nor half there.
    QTest::newRow("PDF script fails on the second")
        << "pdf" << true << "invoice" << pdfScript << false << 2 << none
        << "PDF-tiedoston %1/" + second + ".pdf kirjoittaminen epäonnistui."
        << "laskupohja rikki" << true << QStringList { first + ".pdf" };
    // The Finvoice file of all was open: it goes too.
    QTest::newRow("PDF script fails beside one Finvoice file")
        << "mixed" << true << "invoice" << pdfScript << false << 2 << none
        << "PDF-tiedoston %1/" + second + ".pdf kirjoittaminen epäonnistui."
        << "laskupohja rikki" << true << QStringList { first + ".pdf" };
    QTest::newRow("PDF script fails, one for all")
        << "pdf" << false << "invoice" << pdfScript << false << 2 << none
        << "PDF-tiedoston %1/" + first + ".pdf kirjoittaminen epäonnistui."
        << "laskupohja rikki" << true << QStringList();

    const QString finvoiceScript = QStringLiteral("function write() {\n"
                                                  "    startElement('Finvoice');\n"
                                                  "    if (get('invoice/number') == %1)\n"
                                                  "        throw new Error('Finvoice rikki');\n"
                                                  "    endElement('Finvoice');\n"
                                                  "}\n")
                                       .arg(failingFirst + 1);
    QTest::newRow("Finvoice script fails on the second")
        << "xml" << true << "finvoice" << finvoiceScript << false << 2 << none
        << "Finvoice-tiedoston %1/" + second + ".xml kirjoittaminen epäonnistui."
        << "Finvoice rikki" << true << QStringList { first + ".xml" };
    // The first invoice was in the file already: the whole file goes.
    QTest::newRow("Finvoice script fails, one for all")
        << "xml" << false << "finvoice" << finvoiceScript << false << 2 << none
        << "Finvoice-tiedoston %1/" + first + ".xml kirjoittaminen epäonnistui."
        << "Finvoice rikki" << true << QStringList();
    QTest::newRow("Finvoice script does not compile")
        << "xml" << true << "finvoice"
        << "function write() {" << false << 2 << none << "Finvoice-skriptin lataaminen epäonnistui."
        << "SyntaxError" << true << QStringList();
    QTest::newRow("Finvoice script without write()") << "xml" << true << "finvoice"
                                                     << "function other() {}" << false << 2 << none
                                                     << "Finvoice-skriptin lataaminen epäonnistui."
                                                     << "write" << true << QStringList();
}

void TestInvoiceExporter::failures()
{
    QFETCH(QString, format);
    QFETCH(bool, separate);
    QFETCH(QString, scriptType);
    QFETCH(QString, script);
    QFETCH(bool, missingDirectory);
    QFETCH(int, bankAccounts);
    QFETCH(QString, nameTemplate);
    QFETCH(QString, error);
    QFETCH(QString, detail);
    QFETCH(bool, scriptFailed);
    QFETCH(QStringList, left);

    const QString parent = newDirectory();
    QString dir = parent;
    if (missingDirectory) {
        // Not even root can make a directory inside a regular file.
        const QString blocker = QDir(parent).filePath(QStringLiteral("tavallinen-tiedosto"));
        QVERIFY(writeFile(blocker, "x"));
        dir = blocker + QStringLiteral("/laskut");
    }
    InvoiceExporter::Options o = options(format, separate, dir);
    if (!nameTemplate.isEmpty())
        o.pdfTemplate = o.finvoiceTemplate = nameTemplate.trimmed();

    int scriptId = -1;
    if (!scriptType.isEmpty()) {
        scriptId = m_fixture.addPrintScript("rikki", scriptType, script);
        QVERIFY2(scriptId > 0, qPrintable(m_fixture.lastError()));
        if (scriptType == QLatin1String("invoice"))
            QVERIFY(m_fixture.setSetting("printScripts/invoice", QString::number(scriptId)));
        QVERIFY(m_fixture.refresh());
    }
    QVERIFY(m_fixture.showBankAccounts(bankAccounts));

    InvoiceExporter exporter(m_fixture.registry());
    const bool exported = exporter.exportInvoices(numbers(failingFirst, failingFirst + 1), o);
    QVERIFY(m_fixture.showBankAccounts(2));
    if (scriptId > 0) {
        QVERIFY(removeSetting("printScripts/invoice"));
        QVERIFY(m_fixture.removePrintScript(scriptId));
    }

    QVERIFY(!exported);
    QVERIFY2(exporter.lastError().startsWith(error.arg(dir)), qPrintable(exporter.lastError()));
    QVERIFY2(exporter.lastError().contains(detail), qPrintable(exporter.lastError()));
    QCOMPARE(exporter.failedEngine() != nullptr, scriptFailed);
    if (scriptFailed)
        QVERIFY2(exporter.failedEngine()->lastError().contains(detail),
            qPrintable(exporter.failedEngine()->lastError()));
    QCOMPARE(fileNames(exporter.writtenFiles()), left);
    QCOMPARE(filesIn(parent), missingDirectory ? QStringList { "tavallinen-tiedosto" } : left);
}

QTEST_MAIN(TestInvoiceExporter)
#include "tst_invoiceexporter.moc"
