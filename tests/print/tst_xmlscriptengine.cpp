#include "domain/customer.h"
#include "finvoicereader.h"
#include "invoicefixture.h"
#include "print/scripthelper.h"
#include "print/xmlscriptengine.h"

#include <QtTest>

// The Finvoice engine: the element functions, the envelope, the parts of the built-in
// script that depend on the version, the characters ISO-8859-15 lacks, and the failures that must
// leave no file behind.
class TestXmlScriptEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void elementFunctions_data();
    void elementFunctions();
    void versionParts_data();
    void versionParts();
    void envelope_data();
    void envelope();
    void replaceUnencodable_data();
    void replaceUnencodable();
    void failuresWriteNothing_data();
    void failuresWriteNothing();
    void storedScripts();
    void runawayScripts_data();
    void runawayScripts();

private:
    QString newFile() { return m_dir.filePath(QStringLiteral("%1.xml").arg(++m_files)); }
    bool writeAndRead(int id, const QString& version, bool soapEnv, FinvoiceReader* reader);
    static QByteArray contents(const QString& fileName);

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
    int m_files = 0;
    int m_plainInvoice = -1; // customer without an e-invoice address
    int m_eInvoice = -1; // customer with one
};

namespace {
const char* const senderId = "003723456780";
const char* const intermediatorId = "OKOYFIHH";
const char* const defaultReceiverId = "TULOSTUS";
const char* const customerReceiverId = "003712345671";
const char* const customerIntermediatorId = "NDEAFIHH";
} // namespace

void TestXmlScriptEngine::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    QVERIFY(m_fixture.setSetting("finvoice/senderId", senderId));
    QVERIFY(m_fixture.setSetting("finvoice/intermediatorId", intermediatorId));
    QVERIFY(m_fixture.setSetting("finvoice/defaultReceiverId", defaultReceiverId));

    Customer eInvoiced;
    eInvoiced.name = QStringLiteral("Verkkokauppa Ketola Oy");
    eInvoiced.setProperty(QStringLiteral("e1"), customerIntermediatorId);
    eInvoiced.setProperty(QStringLiteral("e2"), customerReceiverId);
    const int eInvoicedIndex = m_fixture.addCustomer(eInvoiced);
    m_plainInvoice = m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 2001);
    m_eInvoice = m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 2002, eInvoicedIndex);
    QVERIFY2(eInvoicedIndex > 0 && m_plainInvoice > 0 && m_eInvoice > 0,
        qPrintable(m_fixture.lastError()));
}

QByteArray TestXmlScriptEngine::contents(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool TestXmlScriptEngine::writeAndRead(
    int id, const QString& version, bool soapEnv, FinvoiceReader* reader)
{
    XmlScriptEngine engine;
    engine.setSoapEnvEnabled(soapEnv);
    const QString file = newFile();
    if (m_fixture.writeFinvoice(id, version, file, &engine) && reader->readFile(file))
        return true;
    qWarning() << m_fixture.lastError() << reader->error();
    return false;
}

void TestXmlScriptEngine::elementFunctions_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<bool>("written");
    // A fragment of the file, or of the error when nothing was written.
    QTest::addColumn<QString>("expected");

    auto row
        =
            [](const char* name, const char* body, bool written, const char* expected) {
                QTest::newRow(name)
                    << QStringLiteral("function write() { %1 }").arg(QString::fromUtf8(body))
                    << written << QString::fromUtf8(expected);
            };
    row("escaped text", "textElement('N', 'a & b < c');", true, "<N>a &amp; b &lt; c</N>");
    row("attribute and characters",
        "startElement('A'); attribute('k', '\"1\"'); characters('x>y'); endElement('A');", true,
        "<A k=\"&quot;1&quot;\">x&gt;y</A>");
    row("comment and instruction", "comment('c'); processingInstruction('p', 'd');", true,
        "<!--c-->\n<?p d?>");
    row("doctype", "doctype('<!DOCTYPE A>'); textElement('A', 'x');", true, "<!DOCTYPE A>");
    row("open elements closed", "startElement('A'); startElement('B'); textElement('C', '1');",
        true, "<C>1</C>\n    </B>\n</A>");
    row("amounts without grouping", "textElement('A', formatCurrency(-123456789));", true,
        "<A>-1234567,89</A>");
    row("mismatched tag", "startElement('A'); startElement('B'); endElement('A');", false,
        "Mismatched tag: B != A");
    row("too few arguments", "textElement('A');", false, "vähintään 2 parametria");
    row("script error", "startElement('A'); throw new Error('rikki');", false, "Error: rikki");
    QTest::newRow("no write function")
        << "function writ() {}" << false << "function write does not exist";
}

void TestXmlScriptEngine::elementFunctions()
{
    QFETCH(QString, script);
    QFETCH(bool, written);
    QFETCH(QString, expected);
    XmlScriptEngine engine;
    engine.setSoapEnvEnabled(false);
    QVERIFY2(engine.evaluate(script.toUtf8()), qPrintable(engine.lastError()));
    const QString file = newFile();
    QCOMPARE(m_fixture.writeFinvoice(m_plainInvoice, "3.0", file, &engine), written);
    if (written) {
        const QString text = QString::fromLatin1(contents(file));
        QVERIFY2(text.startsWith("<?xml version=\"1.0\" encoding=\"ISO-8859-15\"?>\n<"),
            qPrintable(text));
        QVERIFY2(text.contains(expected), qPrintable(text));
    } else {
        QVERIFY2(engine.lastError().contains(expected), qPrintable(engine.lastError()));
        QVERIFY(!QFile::exists(file));
    }
}

void TestXmlScriptEngine::versionParts_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("transmission");
    QTest::addColumn<bool>("version3");
    QTest::addRow("1.3") << "1.3" << false << false;
    QTest::addRow("2.01") << "2.01" << true << false;
    QTest::addRow("3.0") << "3.0" << true << true;
}

void TestXmlScriptEngine::versionParts()
{
    QFETCH(QString, version);
    QFETCH(bool, transmission);
    QFETCH(bool, version3);
    FinvoiceReader reader;
    QVERIFY(writeAndRead(m_eInvoice, version, false, &reader));
    QCOMPARE(reader.value(0, "Finvoice@Version"), version);
    const QString details = "Finvoice/MessageTransmissionDetails/";
    QStringList identifiers;
    for (const char* path : { "MessageSenderDetails/FromIdentifier",
             "MessageSenderDetails/FromIntermediator", "MessageReceiverDetails/ToIdentifier",
             "MessageReceiverDetails/ToIntermediator", "MessageDetails/MessageIdentifier" })
        identifiers.append(reader.value(0, details + path));
    QCOMPARE(identifiers,
        transmission ? QStringList(
            { senderId, intermediatorId, customerReceiverId, customerIntermediatorId, "lasku2002" })
                     : QStringList(5, QString()));
    const auto only3
        = [version3](const char* value) { return version3 ? QStringList(value) : QStringList(); };
    QCOMPARE(
        reader.values(0, details + "MessageSenderDetails/FromIdentifier@SchemeID"), only3("0037"));
    QCOMPARE(
        reader.values(0, details + "MessageReceiverDetails/ToIdentifier@SchemeID"), only3("0037"));
    QCOMPARE(
        reader.values(0, details + "MessageDetails/SpecificationIdentifier"), only3("EN16931"));
    QCOMPARE(reader.values(0, "Finvoice/SellerPartyDetails/SellerPostalAddressDetails/CountryCode"),
        only3("FI"));
}

void TestXmlScriptEngine::envelope_data()
{
    QTest::addColumn<bool>("soapEnv");
    QTest::addColumn<bool>("eInvoiced");
    QTest::addColumn<QStringList>("receivers"); // the receiver and its operator
    QTest::addRow("no envelope") << false << false << QStringList();
    QTest::addRow("default receiver") << true << false << QStringList({ defaultReceiverId, "" });
    QTest::addRow("receiver of the customer")
        << true << true << QStringList({ customerReceiverId, customerIntermediatorId });
}

void TestXmlScriptEngine::envelope()
{
    QFETCH(bool, soapEnv);
    QFETCH(bool, eInvoiced);
    QFETCH(QStringList, receivers);
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    FinvoiceReader reader;
    QVERIFY(writeAndRead(eInvoiced ? m_eInvoice : m_plainInvoice, "2.01", soapEnv, &reader));
    const QByteArray declaration("<?xml version=\"1.0\" encoding=\"ISO-8859-15\"?>\n");
    QVERIFY(reader.bytes().startsWith(declaration));
    QCOMPARE(reader.bytes().mid(declaration.size(), 19),
        QByteArray(soapEnv ? "<SOAP-ENV:Envelope " : "<?xml-stylesheet ty"));
    QCOMPARE(reader.partCount(), soapEnv ? 2 : 1);
    QCOMPARE(reader.root(reader.partCount() - 1), QString("Finvoice"));
    if (!soapEnv)
        return;

    const QString header = "SOAP-ENV:Envelope/SOAP-ENV:Header/eb:MessageHeader/";
    QCOMPARE(
        reader.values(0, header + "eb:From/eb:Role") + reader.values(0, header + "eb:To/eb:Role"),
        QStringList({ "Sender", "Intermediator", "Receiver", "Intermediator" }));
    QCOMPARE(reader.values(0, header + "eb:From/eb:PartyId")
            + reader.values(0, header + "eb:To/eb:PartyId"),
        QStringList({ senderId, intermediatorId }) + receivers);
    QCOMPARE(reader.value(0, header + "eb:CPAId"), QString("yoursandmycpa"));
    QCOMPARE(reader.value(0, header + "eb:MessageData/eb:MessageId"),
        QString(eInvoiced ? "2002" : "2001"));
    const QDateTime stamp = QDateTime::fromString(
        reader.value(0, header + "eb:MessageData/eb:Timestamp"), "yyyy-MM-dd'T'hh:mm:ss");
    QVERIFY(stamp >= before && stamp <= QDateTime::currentDateTime());
    const QString reference = "SOAP-ENV:Envelope/SOAP-ENV:Body/eb:Manifest/eb:Reference";
    QCOMPARE(reader.value(0, reference + "@xlink:href"), QString("Finvoice"));
    QCOMPARE(reader.value(0, reference + "/eb:Schema@eb:version"), QString("2.01"));
}

void TestXmlScriptEngine::replaceUnencodable_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::addRow("ISO-8859-15 as it is") << "Åäö € Š ž Œ Ÿ ß"
                                          << "Åäö € Š ž Œ Ÿ ß";
    QTest::addRow("marks replaced by ISO-8859-15") << "½ ¤"
                                                   << "1/2 ?";
    QTest::addRow("accents dropped") << "Dvořák, Łódź"
                                     << "Dvorák, ?ódz";
    QTest::addRow("accent typed apart") << "Cafe\u0301"
                                        << "Café";
    QTest::addRow("Cyrillic") << "Иван"
                              << "????";
    QTest::addRow("emoji") << "ok 😀!"
                           << "ok ?!";
    QTest::addRow("quotes and dashes") << "“Hei” – ‘x’ − 1"
                                       << "\"Hei\" - 'x' - 1";
    QTest::addRow("compatibility forms") << "ﬁlmi…"
                                         << "filmi...";
}

void TestXmlScriptEngine::replaceUnencodable()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QList<QPair<QString, QString>> replaced;
    const QString result = XmlScriptEngine::replaceUnencodable(text, &replaced);
    QCOMPARE(result, expected);
    // Every replacement is reported once, and the result encodes without loss.
    QStringEncoder encoder("ISO-8859-15");
    QStringDecoder decoder("ISO-8859-15");
    const QByteArray bytes = encoder.encode(result);
    QVERIFY(!encoder.hasError() && !bytes.contains('\x1A'));
    QCOMPARE(decoder.decode(bytes), result);
    QCOMPARE(replaced.isEmpty(), text.normalized(QString::NormalizationForm_C) == expected);
}

void TestXmlScriptEngine::failuresWriteNothing_data()
{
    QTest::addColumn<int>("visibleAccounts");
    QTest::addColumn<bool>("toDirectory");
    QTest::addColumn<bool>("append");
    QTest::addColumn<QString>("error");
    QTest::addRow("seller without bank account")
        << 0 << false << false << "lasku 2001: myyjällä ei ole näkyvää pankkitiliä";
    QTest::addRow("without bank account, appending")
        << 0 << false << true << "lasku 2001: myyjällä ei ole näkyvää pankkitiliä";
    QTest::addRow("file cannot be opened") << 2 << true << false << "directory";
}

void TestXmlScriptEngine::failuresWriteNothing()
{
    QFETCH(int, visibleAccounts);
    QFETCH(bool, toDirectory);
    QFETCH(bool, append);
    QFETCH(QString, error);
    QVERIFY(m_fixture.showBankAccounts(visibleAccounts));
    const QString file = toDirectory ? m_dir.path() : newFile();
    const QByteArray earlier("<?xml version=\"1.0\"?>\n<Finvoice/>\n");
    if (append) {
        QFile existing(file);
        QVERIFY(existing.open(QIODevice::WriteOnly) && existing.write(earlier) == earlier.size());
    }
    XmlScriptEngine engine;
    const bool written = m_fixture.writeFinvoice(m_plainInvoice, "3.0", file, &engine, append);
    QVERIFY(m_fixture.showBankAccounts(2));
    QVERIFY(!written);
    QVERIFY2(
        engine.lastError().contains(error, Qt::CaseInsensitive), qPrintable(engine.lastError()));
    if (append)
        QCOMPARE(contents(file), earlier);
    else if (!toDirectory)
        QVERIFY(!QFile::exists(file));
}

void TestXmlScriptEngine::storedScripts()
{
    // The first stored script of the type wins over the built-in one and over later ones.
    const int first = m_fixture.addPrintScript("a", "finvoice",
        "function write() { textElement('Oma', get('invoice/number') + ' ' + "
        "get('xmlSchemaVersion/major') + '/' + get('xmlSchemaVersion/minor')); }");
    const int second = m_fixture.addPrintScript(
        "b", "finvoice", "function write() { textElement('Toinen', ''); }");
    QVERIFY2(first > 0 && second > 0 && m_fixture.refresh(), qPrintable(m_fixture.lastError()));
    XmlScriptEngine engine;
    engine.setSoapEnvEnabled(false);
    const QString file = newFile();
    QVERIFY2(m_fixture.writeFinvoice(m_plainInvoice, "3.0", file, &engine),
        qPrintable(m_fixture.lastError()));
    QVERIFY(contents(file).endsWith("?>\n<Oma>2001 3/0</Oma>\n"));

    // A stored script without write() is refused when it is loaded.
    const int broken = m_fixture.addPrintScript("0", "finvoice", "function writ() {}");
    QVERIFY(broken > 0 && m_fixture.refresh());
    XmlScriptEngine other;
    const bool loaded = ScriptHelper(m_fixture.registry()).loadFinvoiceScript(&other);
    QVERIFY(m_fixture.removePrintScript(broken) && m_fixture.removePrintScript(first)
        && m_fixture.removePrintScript(second));
    QVERIFY(!loaded);
    QCOMPARE(other.lastError(), QString("function write does not exist"));

    XmlScriptEngine builtIn;
    QVERIFY2(ScriptHelper(m_fixture.registry()).loadFinvoiceScript(&builtIn),
        qPrintable(builtIn.lastError()));
}

// A stored Finvoice script that never ends or fills the memory is stopped
// with an error that says why and writes nothing; the built-in script then
// writes the invoice with the same engine.
void TestXmlScriptEngine::runawayScripts_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("error");
    QTest::newRow("endless loop") << QByteArray(
        "function write() { startElement('Finvoice'); for (;;) { } }")
                                  << QStringLiteral(
                                         "Skripti keskeytettiin, koska sen suoritus kesti yli");
    QTest::newRow("endless elements")
        << QByteArray("function write() { for (;;) textElement('Rivi', get('invoice/number')); }")
        << QStringLiteral("Skripti keskeytettiin, koska sen suoritus kesti yli");
    QTest::newRow("unbounded recursion")
        << QByteArray("function osa(n) { return osa(n + 1) + 1; }\nfunction write() { osa(0); }")
        << QStringLiteral("Skripti keskeytettiin, koska sen funktiokutsuja oli sisäkkäin");
    QTest::newRow("unbounded allocation")
        << QByteArray(
               "function write() { var s = String(get('invoice/number')); for (;;) s += s; }")
        << QStringLiteral("Skripti keskeytettiin, koska se varasi muistia yli");
}

void TestXmlScriptEngine::runawayScripts()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, error);
    constexpr int timeLimit = 100;
    constexpr size_t memoryLimit = size_t(16) * 1024 * 1024;
    const int id = m_fixture.addPrintScript(
        QStringLiteral("karannut"), QStringLiteral("finvoice"), QString::fromUtf8(script));
    QVERIFY2(id > 0 && m_fixture.refresh(), qPrintable(m_fixture.lastError()));
    XmlScriptEngine engine;
    engine.setSoapEnvEnabled(false);
    engine.setTimeLimit(timeLimit);
    engine.setMemoryLimit(memoryLimit);
    const QString file = newFile();
    const bool written = m_fixture.writeFinvoice(m_plainInvoice, "3.0", file, &engine);
    QVERIFY(m_fixture.removePrintScript(id) && m_fixture.refresh());
    QVERIFY(!written);
    QVERIFY2(engine.lastError().startsWith(error), qPrintable(engine.lastError()));
    QVERIFY(!QFile::exists(file));

    engine.clear();
    engine.setTimeLimit(ECMAScriptEngine::defaultTimeLimit);
    FinvoiceReader reader;
    QVERIFY2(m_fixture.writeFinvoice(m_plainInvoice, "3.0", file, &engine),
        qPrintable(m_fixture.lastError()));
    QVERIFY2(reader.readFile(file), qPrintable(reader.error()));
}

QTEST_MAIN(TestXmlScriptEngine)
#include "tst_xmlscriptengine.moc"
