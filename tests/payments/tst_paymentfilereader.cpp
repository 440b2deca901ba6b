#include "domain/logging.h"
#include "logcapture.h"
#include "payments/csv.h"
#include "payments/easreader.h"
#include "payments/irpreader.h"
#include "payments/paymentfilereader.h"
#include "payments/paymentlistener.h"

#include <QRandomGenerator>
#include <QtTest>

namespace {

QString dataFile(const QString& name)
{
    return qEnvironmentVariable("VEKLARI_TEST_DATA") + QStringLiteral("/payments/") + name;
}

// Writes what the reader reports as lines: "account IBAN BBAN" and
// "payment ENTRY PAYMENT CENTS REFERENCE".
class RecordingListener : public PaymentListener
{
public:
    void accountRead() override
    {
        events.append(QStringLiteral("account %1 %2").arg(reader->iban(), reader->bban()));
    }
    void paymentRead() override
    {
        events.append(QStringLiteral("payment %1 %2 %3 %4")
                          .arg(reader->entryDate().toString(Qt::ISODate),
                              reader->paymentDate().toString(Qt::ISODate))
                          .arg(reader->amount())
                          .arg(reader->referenceNumber()));
    }
    PaymentFileReader* reader = nullptr;
    QStringList events;
};

struct ReadResult
{
    bool ok = false;
    QString lastError;
    QString timestamp;
    QStringList events; // the listener's lines, then the logged ones
};

ReadResult readPaymentFile(const QString& path)
{
    RecordingListener listener;
    PaymentFileReader reader(&listener);
    listener.reader = &reader;
    LogCapture log("veklari.ui");
    QFile file(path);
    ReadResult result;
    if (!file.open(QIODevice::ReadOnly))
        return result;
    result.ok = reader.readFile(file);
    result.lastError = reader.lastError();
    result.timestamp = reader.timestamp();
    result.events = listener.events + log.lines();
    return result;
}

QStringList expectedLines(const QString& name)
{
    QFile file(dataFile(name));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return { QStringLiteral("missing ") + name };
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

} // namespace

// The bank files as the banks write them and broken: what reaches the
// listener, what is logged, and that nothing goes wrong on rubbish.
class TestPaymentFileReader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void irpRecordFields();
    void easRecordFields();
    void files_data();
    void files();
    void badInput_data();
    void badInput();
    void csvDelimiter_data();
    void csvDelimiter();
    void csvDate_data();
    void csvDate();
    void csvReference_data();
    void csvReference();

private:
    QTemporaryDir m_dir;
};

void TestPaymentFileReader::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

// The fields the golden files below do not show: dates, amounts, references
// and accounts are compared there.
void TestPaymentFileReader::irpRecordFields()
{
    QFile file(dataFile(QStringLiteral("reference-payments.txt")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    IRPReader reader(&file);
    QVERIFY(reader.readRecord());
    QCOMPARE(reader.bankGroupCode(), QStringLiteral("01"));
    QCOMPARE(reader.invoicerCode(), QStringLiteral("123456789"));
    QCOMPARE(reader.currencyCode(), QLatin1Char('1'));

    QVERIFY(reader.readRecord());
    QVERIFY(reader.readRecord());
    QVERIFY2(!reader.error(), qPrintable(reader.errorString()));
    QCOMPARE(reader.recordCode(), QLatin1Char('3'));
    QCOMPARE(reader.filingCode(), QStringLiteral("2503131234AB0002"));
    QCOMPARE(reader.payerName(), QStringLiteral("Mäkinen"));
    QCOMPARE(reader.nameSource(), QLatin1Char('A'));
    QCOMPARE(reader.correctionCode(), QLatin1Char('0'));
    QCOMPARE(reader.transferMethod(), QLatin1Char('A'));
    QCOMPARE(reader.feedbackCode(), QLatin1Char(' '));
}

void TestPaymentFileReader::easRecordFields()
{
    QFile file(dataFile(QStringLiteral("account-statement.txt")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    EASReader reader(&file);
    QVERIFY(reader.readRecord());
    QVERIFY2(!reader.error(), qPrintable(reader.errorString()));
    QCOMPARE(reader.recordLength(), 322);
    QCOMPARE(reader.statementNumber(), QStringLiteral("042"));
    QCOMPARE(reader.startingDate(), QDate(2025, 3, 1));
    QCOMPARE(reader.endingDate(), QDate(2025, 3, 31));

    QVERIFY(reader.readRecord());
    QVERIFY2(!reader.error(), qPrintable(reader.errorString()));
    QCOMPARE(reader.recordCode(), QStringLiteral("T10"));
    QCOMPARE(reader.transactionNumber(), 1);
    QCOMPARE(reader.filingCode(), QStringLiteral("250401000000000001"));
    QCOMPARE(reader.valueDate(), QDate(2025, 3, 5));
    QCOMPARE(reader.transactionCode(), QLatin1Char('1'));
    QCOMPARE(reader.entryDefinitionCode(), QStringLiteral("705"));
    QCOMPARE(reader.entryDefinitionText(), QStringLiteral("VIITESIIRTO"));
}

// Each sample file against its golden lines in NAME.expected.
void TestPaymentFileReader::files_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("timestamp");

    QTest::newRow("reference payments") << "reference-payments.txt"
                                        << "reference-payments.txt:2025-03-14T08:15";
    QTest::newRow("reference payments, broken lines")
        << "reference-payments-broken.txt"
        << "reference-payments-broken.txt:2025-03-14T08:15";
    QTest::newRow("account statement") << "account-statement.txt"
                                       << "account-statement.txt:2025-04-01T09:30";
    QTest::newRow("account statement, broken lines")
        << "account-statement-broken.txt"
        << "account-statement-broken.txt:2025-04-01T09:30";
    QTest::newRow("camt.054") << "camt054.xml"
                              << "camt054.xml:2025-03-15T06:30:00+02:00";
    QTest::newRow("camt.053") << "camt053.xml"
                              << "camt053.xml:2025-03-21T18:00:00+02:00";
    QTest::newRow("csv ; utf-8 bom") << "statement-semicolon.csv"
                                     << "";
    QTest::newRow("csv , latin-1") << "statement-comma.csv"
                                   << "";
    QTest::newRow("csv tab") << "statement-tab.csv"
                             << "";
}

void TestPaymentFileReader::files()
{
    QFETCH(QString, file);
    QFETCH(QString, timestamp);
    const ReadResult result = readPaymentFile(dataFile(file));
    QVERIFY2(result.ok, qPrintable(result.lastError));
    QCOMPARE(result.events, expectedLines(file + QStringLiteral(".expected")));
    if (!timestamp.isEmpty()) {
        QCOMPARE(result.timestamp, timestamp);
    } else {
        // A CSV file is known by its name and its time.
        const QString modified = QFileInfo(dataFile(file))
                                     .lastModified()
                                     .toString(QStringLiteral("yyyy-MM-dd'T'HH:mm"));
        QCOMPARE(result.timestamp, file + QLatin1Char(':') + modified);
    }
}

// Rubbish of every kind: a message or logged line errors, never a crash and
// never an invented payment.
void TestPaymentFileReader::badInput_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("lastError");
    QTest::addColumn<int>("payments");
    QTest::addColumn<QString>("logged"); // the first logged line, or empty

    QRandomGenerator random(1234);
    QByteArray noise(4096, Qt::Uninitialized);
    for (char& c : noise)
        c = char(random.bounded(256));
    // Noise without a line end would be one overlong line, with one: many lines.
    const auto fileStart = [](const QString& name, int lines) {
        QFile file(dataFile(name));
        file.open(QIODevice::ReadOnly);
        QByteArray start;
        for (int i = 0; i < lines; ++i)
            start += file.readLine();
        return start;
    };
    const QString unknown = QStringLiteral("Tuntematon tiedostomuoto");

    QTest::newRow("empty") << QByteArray() << false << unknown << 0 << QString();
    QTest::newRow("binary") << (QByteArray("\x7f\x45LF\x02") + noise) << false << unknown << 0
                            << QString();
    QTest::newRow("reference payments + noise")
        << (fileStart(QStringLiteral("reference-payments.txt"), 2) + noise) << true << QString()
        << 1 << QStringLiteral("warning: Virhe tiedostossa: Invalid ");
    QTest::newRow("account statement + noise")
        << (fileStart(QStringLiteral("account-statement.txt"), 2) + noise) << true << QString() << 1
        << QStringLiteral("warning: Virhe tiedostossa: Invalid ");
    QTest::newRow("camt + noise") << (fileStart(QStringLiteral("camt053.xml"), 12) + noise) << false
                                  << QString() << 0 << QString();
    QTest::newRow("csv + noise") << (fileStart(QStringLiteral("statement-tab.csv"), 2) + "\n"
        + noise) << true << QString()
                                 << 1 << QStringLiteral("warning: Virhe tiedostossa: Invalid ");
    QTest::newRow("csv amount beyond 32 bits of cents")
        << (fileStart(QStringLiteral("statement-tab.csv"), 1)
               + "19.03.2025\t18.03.2025\t30000000.00\t10016\n")
        << true << QString() << 0
        << QStringLiteral("warning: Virhe tiedostossa: Invalid amount: 30000000.00");
    QTest::newRow("line of 1 MB")
        << (fileStart(QStringLiteral("reference-payments.txt"), 1) + QByteArray(1 << 20, '3') + "\n"
               + fileStart(QStringLiteral("reference-payments.txt"), 2).mid(92))
        << true << QString() << 1
        << QStringLiteral("warning: Virhe tiedostossa: Invalid length of the record: 1048576");
    QTest::newRow("truncated xml")
        << fileStart(QStringLiteral("camt054-truncated.xml"), 100) << false
        << QStringLiteral("Premature end of document.") << 0 << QString();
    QTest::newRow("csv without header") << fileStart(QStringLiteral("statement-no-header.csv"), 9)
                                        << false << unknown << 0 << QString();
    QTest::newRow("statement with version 101")
        << fileStart(QStringLiteral("account-statement-version.txt"), 9) << false
        << QStringLiteral("Invalid version number: 101") << 0 << QString();
}

void TestPaymentFileReader::badInput()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, ok);
    QFETCH(QString, lastError);
    QFETCH(int, payments);
    QFETCH(QString, logged);

    const QString path = m_dir.filePath(QString::fromLatin1(QTest::currentDataTag()));
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    const ReadResult result = readPaymentFile(path);
    QCOMPARE(result.ok, ok);
    if (!lastError.isEmpty())
        QCOMPARE(result.lastError, lastError);
    if (!ok)
        QVERIFY(!result.lastError.isEmpty());
    const QStringList delivered
        = result.events.filter(QRegularExpression(QStringLiteral("^payment ")));
    QCOMPARE(delivered.size(), payments);
    for (const QString& payment : delivered)
        QVERIFY2(payment.split(QLatin1Char(' ')).value(3).toInt() > 0, qPrintable(payment));
    if (!logged.isEmpty()) {
        const QStringList warnings
            = result.events.filter(QRegularExpression(QStringLiteral("^warning: ")));
        QVERIFY2(!warnings.isEmpty() && warnings.first().startsWith(logged),
            qPrintable(warnings.join(QLatin1Char('\n'))));
    }
}

void TestPaymentFileReader::csvDelimiter_data()
{
    QTest::addColumn<QString>("header");
    QTest::addColumn<QChar>("delimiter");

    QTest::newRow("the first one seen") << "Päivä;Määrä,Viite\tx" << QChar(';');
    QTest::newRow("one in quotes is text") << "\"Määrä, euroa\"\tViite" << QChar('\t');
    QTest::newRow("none") << "Viite" << QChar(',');
}

void TestPaymentFileReader::csvDelimiter()
{
    QFETCH(QString, header);
    QTEST(CSV::guessDelimiter(header), "delimiter");
}

void TestPaymentFileReader::csvDate_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDate>("date");

    QTest::newRow("d.M.yyyy") << "5.3.2025" << QDate(2025, 3, 5);
    QTest::newRow("yyyy-MM-dd") << "2025-03-05" << QDate(2025, 3, 5);
    QTest::newRow("yyyy.MM.dd") << "2025.03.05" << QDate(2025, 3, 5);
    QTest::newRow("with time") << "2025-03-05 12:00" << QDate(2025, 3, 5);
    QTest::newRow("impossible") << "31.2.2025" << QDate();
    QTest::newRow("short year") << "5.3.25" << QDate();
    QTest::newRow("one-digit month iso") << "2025-3-5" << QDate();
}

void TestPaymentFileReader::csvDate()
{
    QFETCH(QString, text);
    QFETCH(QDate, date);
    QCOMPARE(PaymentFileReader::parseCSVDate(text), date);
}

void TestPaymentFileReader::csvReference_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("reference");

    QTest::newRow("padded and grouped") << "00000 00000 10016"
                                        << "10016";
    QTest::newRow("rf grouped") << "RF61 1003 2"
                                << "RF6110032";
    QTest::newRow("rf lower case") << "rf6110032"
                                   << "RF6110032";
    QTest::newRow("text around") << "Viite: 10016, kiitos"
                                 << "10016";
    QTest::newRow("none") << "Lasku"
                          << "";
}

void TestPaymentFileReader::csvReference()
{
    QFETCH(QString, text);
    QFETCH(QString, reference);
    QCOMPARE(PaymentFileReader::parseCSVReferenceNumber(text), reference);
}

QTEST_GUILESS_MAIN(TestPaymentFileReader)
#include "tst_paymentfilereader.moc"
