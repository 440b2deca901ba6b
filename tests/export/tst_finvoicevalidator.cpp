#include "export/finvoicevalidator.h"
#include "print/xmlscriptengine.h"

#include <QtTest>

// The validator on a stored Finvoice 3.0 invoice with its envelope (tests/data/finvoice), broken
// in one place at a time, and on files of several invoices.
class TestFinvoiceValidator : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void findings_data();
    void findings();
    void files_data();
    void files();
    void failures();

private:
    QByteArray m_invoice; // envelope on lines 1-35, the document on lines 36-200
    QByteArray m_document;
};

namespace {
const int invoiceLines = 200;
const int envelopeLines = 35;
} // namespace

void TestFinvoiceValidator::initTestCase()
{
    QFile file(qEnvironmentVariable("VEKLARI_TEST_DATA") + "/finvoice/lasku-1001.xml");
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.fileName()));
    m_invoice = file.readAll();
    QCOMPARE(m_invoice.count('\n'), invoiceLines);
    m_document = m_invoice.mid(m_invoice.indexOf("<?xml", 1));
}

void TestFinvoiceValidator::findings_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    // The first finding: its line in the file and a part of its text; none when line is 0.
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("text");

    QTest::addRow("valid") << ""
                           << "" << 0 << "";
    QTest::addRow("amount with a point") << ">1398,04</InvoiceTotalVatIncludedAmount>"
                                         << ">1398.04</InvoiceTotalVatIncludedAmount>" << 111
                                         << "Element 'InvoiceTotalVatIncludedAmount'";
    QTest::addRow("required element missing")
        << "        <InvoiceTypeText>Lasku</InvoiceTypeText>\n"
        << "" << 104 << "Expected is ( InvoiceTypeText )";
    QTest::addRow("date format") << "<InvoiceDate Format=\"CCYYMMDD\">"
                                 << "<InvoiceDate Format=\"DDMMCCYY\">" << 107 << "'Format'";
    QTest::addRow("too long") << "<RowFreeText>Painettu kirja</RowFreeText>"
                              << "<RowFreeText>" + QString(513, 'x') + "</RowFreeText>" << 168
                              << "maxLength";
    QTest::addRow("not well-formed") << "1001</InvoiceNumber>"
                                     << "1001</InvoiceNumbr>" << 106 << "tag mismatch";
    QTest::addRow("envelope without receiver")
        << "<eb:Role>Receiver</eb:Role>"
        << "<eb:Role>Vastaanottaja</eb:Role>" << 4 << "SOAP-kehyksestä puuttuu eb:To (Receiver)";
    QTest::addRow("envelope with empty sender")
        << "<eb:PartyId>003723456780</eb:PartyId>"
        << "<eb:PartyId> </eb:PartyId>" << 6
        << "SOAP-kehyksen eb:From (Sender) eb:PartyId on tyhjä";
    QTest::addRow("envelope without message id") << "<eb:MessageId>1001</eb:MessageId>"
                                                 << "" << 22 << "puuttuu eb:MessageId";
    QTest::addRow("envelope of another version")
        << "eb:version=\"3.0\"/>"
        << "eb:version=\"2.01\"/>" << 31
        << "Finvoice-versio \"2.01\" ei vastaa laskun versiota \"3.0\"";
    // In the envelope too, so that only the missing schema is found.
    QTest::addRow("version without schema")
        << "\"3.0\""
        << "\"3.1\"" << 38 << "Finvoice-versiolle \"3.1\" ei ole skeemaa";
}

void TestFinvoiceValidator::findings()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(int, line);
    QFETCH(QString, text);
    QByteArray data = m_invoice;
    if (!from.isEmpty()) {
        QVERIFY(data.contains(from.toLatin1()));
        data.replace(from.toLatin1(), to.toLatin1());
    }
    FinvoiceValidator validator;
    const bool valid = validator.validate(data);
    const QStringList findings = validator.findings();
    QVERIFY(validator.lastError().isEmpty());
    QCOMPARE(valid, line == 0);
    QCOMPARE(findings.isEmpty(), line == 0);
    if (line == 0)
        return;
    const QString prefix = QStringLiteral("lasku 1001, rivi %1: ").arg(line);
    QVERIFY2(findings.first().startsWith(prefix) && findings.first().contains(text),
        qPrintable(findings.join('\n')));
    for (const QString& finding : findings)
        QVERIFY2(finding.startsWith("lasku 1001, rivi "), qPrintable(finding));
}

void TestFinvoiceValidator::files_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<int>("documents");
    QTest::addColumn<QStringList>("findings"); // the start of each, in order

    // The second invoice is one line shorter than the first.
    QByteArray second = m_invoice;
    second.replace("1001</", "1002</");
    second.replace("        <InvoiceTypeText>Lasku</InvoiceTypeText>\n", "");
    QByteArray third = m_document;
    third.replace("1001</", "1003</");
    third.replace(
        ">1398,04</InvoiceTotalVatIncludedAmount>", ">1398.04</InvoiceTotalVatIncludedAmount>");

    QTest::addRow("document without envelope") << m_document << 1 << QStringList();
    QTest::addRow("three invoices, two broken")
        << m_invoice + second + third << 3
        << QStringList({ QStringLiteral("lasku 1002, rivi %1: Element 'OriginCode'")
                             .arg(invoiceLines + 104),
               QStringLiteral("lasku 1003, rivi %1: Element 'InvoiceTotalVatIncludedAmount'")
                   .arg(invoiceLines + (invoiceLines - 1) + 111 - envelopeLines) });
    QTest::addRow("envelope alone")
        << m_invoice.left(m_invoice.indexOf("<?xml", 1)) << 0
        << QStringList("lasku 1001, rivi 2: SOAP-kehyksen jälkeen ei ole Finvoice-laskua");
    QTest::addRow("empty file") << QByteArray(
        "\n") << 0 << QStringList("lasku ?, rivi 1: tiedostossa ei ole Finvoice-laskua");
    QTest::addRow("something else")
        << QByteArray("<?xml version=\"1.0\"?>\n<Lasku/>\n") << 0
        << QStringList("lasku ?, rivi 2: tiedostossa on tuntematon elementti Lasku");
}

void TestFinvoiceValidator::files()
{
    QFETCH(QByteArray, data);
    QFETCH(int, documents);
    QFETCH(QStringList, findings);
    FinvoiceValidator validator;
    QCOMPARE(validator.validate(data), findings.isEmpty());
    QCOMPARE(validator.documentCount(), documents);
    const QStringList found = validator.findings();
    // A broken amount may bring more than one message of the same line.
    QStringList firsts;
    for (const QString& finding : found) {
        const QString start = finding.left(finding.indexOf(": ") + 2);
        if (firsts.isEmpty() || !firsts.last().startsWith(start))
            firsts.append(finding);
    }
    QCOMPARE(firsts.size(), findings.size());
    for (int i = 0; i < findings.size(); ++i)
        QVERIFY2(firsts.at(i).startsWith(findings.at(i)), qPrintable(found.join('\n')));

    // The caller shows them as the engine's errors.
    XmlScriptEngine engine;
    validator.addFindingsTo(&engine);
    QCOMPARE(engine.warnings(), found);
    QCOMPARE(engine.hasErrors(), !found.isEmpty());
}

void TestFinvoiceValidator::failures()
{
    FinvoiceValidator validator;
    QVERIFY(!validator.validateFile(QStringLiteral("/nonexistent/lasku.xml")));
    QVERIFY(!validator.lastError().isEmpty());
    QVERIFY(validator.findings().isEmpty());

    // Every version the program writes has its schema.
    for (const char* version : { "1.3", "2.01", "3.0" })
        QVERIFY2(QFile::exists(FinvoiceValidator::schemaPath(version)), version);
}

QTEST_MAIN(TestFinvoiceValidator)
#include "tst_finvoicevalidator.moc"
