#include "paymentfilereader.h"

#include "domain/constants.h"
#include "domain/logging.h"
#include "payments/csv.h"
#include "payments/easreader.h"
#include "payments/fixedwidthline.h"
#include "payments/irpreader.h"
#include "payments/paymentlistener.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextStream>
#include <QXmlStreamReader>

#include <limits>

namespace {

constexpr qint64 sampleLength = 200;
const QByteArray utf8Bom = QByteArrayLiteral("\xEF\xBB\xBF");
// "päivä" (day), in every Finnish date header.
const QByteArray dayUtf8 = QByteArrayLiteral("p\xC3\xA4iv\xC3\xA4");
const QByteArray dayLatin1 = QByteArrayLiteral("p\xE4iv\xE4");
const QString timestampFormat = QStringLiteral("%1:%2");
const QString dateTimeFormat = QStringLiteral("%1:%2T%3");
const QString isoDate = QStringLiteral("yyyy-MM-dd");
constexpr int isoDateLength = 10;
const QString rfPrefix = QStringLiteral("RF");
// "RF" and the two check digits.
constexpr int rfPrefixLength = 4;
const QString debitIndicator = QStringLiteral("DBIT");
const QString accountLine = QStringLiteral("Tilinumero");

// The camt element names, compared without regard to case.
bool isElement(const QXmlStreamReader& xml, const char* name)
{
    return xml.name().compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

bool nameIs(const QString& element, const char* name)
{
    return element.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

// A national reference without its padding zeros; an RF reference as it is.
QString cleanReference(const QString& text)
{
    QString reference = text;
    reference.remove(QRegularExpression(QStringLiteral("\\s")));
    if (reference.startsWith(rfPrefix, Qt::CaseInsensitive))
        return reference;
    return FixedWidthLine::withoutLeadingZeros(reference);
}

} // namespace

PaymentFileReader::PaymentFileReader(PaymentListener* listener, QObject* parent)
    : QObject(parent)
    , m_listener(listener)
    , m_decimalFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
{
    m_decimalFormat.setDecimalPoint(QStringLiteral("."));
    m_decimalFormat.setNegativeSign(QStringLiteral("-"));
    m_decimalFormat.setGrouping(false);
}

void PaymentFileReader::resetPayment()
{
    m_entryDate = QDate();
    m_paymentDate = QDate();
    m_amount = 0;
    m_referenceNumber.clear();
}

void PaymentFileReader::logLineError(const QString& error)
{
    qCWarning(logUi).noquote() << "Virhe tiedostossa:" << error;
}

void PaymentFileReader::deliver(
    const QDate& entryDate, const QDate& paymentDate, int amount, const QString& reference)
{
    m_entryDate = entryDate;
    m_paymentDate = paymentDate;
    m_amount = amount;
    m_referenceNumber = reference;
    m_listener->paymentRead();
}

bool PaymentFileReader::readFile(QFile& file)
{
    const QFileInfo info(file);
    return read(file, info.fileName(), info.lastModified());
}

bool PaymentFileReader::read(QIODevice& file, const QString& fileName, const QDateTime& modified)
{
    resetPayment();
    m_lastError.clear();
    m_timestamp.clear();
    m_iban.clear();
    m_bban.clear();
    m_fileName = fileName;
    m_modified = modified;

    QByteArray sample = file.peek(sampleLength);
    if (sample.startsWith(utf8Bom))
        sample.remove(0, utf8Bom.size());
    const bool ok = [&] {
        if (sample.startsWith("T00"))
            return readEASFile(file);
        if (sample.contains(dayUtf8))
            return readCSVFile(file, QString::fromUtf8(sample), QStringConverter::Utf8);
        if (sample.contains(dayLatin1))
            return readCSVFile(file, QString::fromLatin1(sample), QStringConverter::Latin1);
        if (sample.startsWith('0'))
            return readIRPFile(file);
        if (sample.contains("xml") || sample.contains("Document"))
            return readXMLFile(file);
        m_lastError = tr("Tuntematon tiedostomuoto");
        return false;
    }();
    return ok;
}

bool PaymentFileReader::readIRPFile(QIODevice& file)
{
    IRPReader reader(&file);
    while (reader.readRecord()) {
        if (reader.error()) {
            logLineError(reader.errorString());
            continue;
        }
        const QChar code = reader.recordCode();
        if (code == IRPReader::batchRecord) {
            m_timestamp = dateTimeFormat.arg(m_fileName, reader.date().toString(isoDate),
                reader.time().toString(QStringLiteral("HH:mm")));
        } else if (code == IRPReader::paymentRecord && !reader.referenceNumber().isEmpty()
            && reader.entryDate().isValid() && reader.paymentDate().isValid()) {
            if (reader.accountNumber() != m_bban) {
                m_bban = reader.accountNumber();
                m_listener->accountRead();
            }
            deliver(reader.entryDate(), reader.paymentDate(), reader.amount(),
                reader.referenceNumber());
        }
    }
    return true;
}

bool PaymentFileReader::readEASFile(QIODevice& file)
{
    EASReader reader(&file);
    if (!reader.readRecord() || reader.error()
        || reader.recordCode() != EASReader::statementRecord) {
        m_lastError = reader.error() ? reader.errorString() : tr("Tuntematon tiedostomuoto");
        return false;
    }
    m_bban = reader.accountNumber();
    m_timestamp = dateTimeFormat.arg(m_fileName, reader.creationDate().toString(isoDate),
        reader.creationTime().toString(QStringLiteral("HH:mm")));
    m_listener->accountRead();
    while (reader.readRecord()) {
        if (reader.error()) {
            logLineError(reader.errorString());
            continue;
        }
        if (reader.recordCode() != EASReader::transactionRecord || !reader.entryDate().isValid()
            || !reader.paymentDate().isValid())
            continue;
        deliver(
            reader.entryDate(), reader.paymentDate(), reader.amount(), reader.referenceNumber());
    }
    return true;
}

bool PaymentFileReader::parseAmount(const QString& text, int* cents)
{
    QString number = text.trimmed();
    number.remove(QRegularExpression(QStringLiteral("[\\s+]")));
    // Finnish statements write a decimal comma.
    number.replace(QLatin1Char(','), QLatin1Char('.'));
    DecimalFormat::ParseStatus status = DecimalFormat::ParseStatus::Invalid;
    const qint64 value = m_decimalFormat.parse(number, status);
    // Cents travel as int: a larger sum is an error, not a wrapped amount.
    if (status != DecimalFormat::ParseStatus::Ok || value > std::numeric_limits<int>::max()
        || value < -std::numeric_limits<int>::max()) {
        logLineError(FixedWidthLine::buildErrorMessage(tr("amount"), text));
        return false;
    }
    *cents = int(value);
    return true;
}

bool PaymentFileReader::readXMLFile(QIODevice& file)
{
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        xml.readNext();
        if (!xml.isStartElement())
            continue;
        if (isElement(xml, "CreDtTm"))
            m_timestamp = timestampFormat.arg(m_fileName, xml.readElementText());
        else if (isElement(xml, "Acct"))
            readAcctElement(xml);
        else if (isElement(xml, "Ntry"))
            readNtryElement(xml);
    }
    if (xml.hasError()) {
        m_lastError = xml.errorString();
        return false;
    }
    return true;
}

void PaymentFileReader::readAcctElement(QXmlStreamReader& xml)
{
    int depth = 1;
    while (depth > 0 && !xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            if (isElement(xml, "IBAN")) {
                m_iban = xml.readElementText().simplified().remove(QLatin1Char(' '));
                m_listener->accountRead();
            } else {
                ++depth;
            }
        } else if (xml.isEndElement()) {
            --depth;
        }
    }
}

QDate PaymentFileReader::readDtElement(QXmlStreamReader& xml)
{
    QDate date;
    int depth = 1;
    while (depth > 0 && !xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            // "Dt" holds a date, "DtTm" a date and a time.
            if (isElement(xml, "Dt") || isElement(xml, "DtTm"))
                date = QDate::fromString(xml.readElementText().left(isoDateLength), isoDate);
            else
                ++depth;
        } else if (xml.isEndElement()) {
            --depth;
        }
    }
    return date;
}

void PaymentFileReader::readNtryElement(QXmlStreamReader& xml)
{
    resetPayment();
    // Banks batch reference payments: one entry, several transactions, each
    // with its own amount and reference.
    QString entryAmount;
    QString entryReference;
    QDate bookingDate;
    QDate entryAcceptanceDate;
    bool entryDebit = false;
    QList<Transaction> transactions;
    QStringList path; // the open elements below the entry
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement()) {
            if (path.isEmpty())
                break;
            path.removeLast();
            continue;
        }
        if (!xml.isStartElement())
            continue;
        const QString parent = path.isEmpty() ? QString() : path.last();
        const bool inTransaction = path.contains(QStringLiteral("txdtls"));
        if (isElement(xml, "BookgDt")) {
            bookingDate = readDtElement(xml);
            continue;
        }
        if (isElement(xml, "TxDtls") && !inTransaction)
            transactions.append(Transaction());
        if (isElement(xml, "Amt")) {
            const QString text = xml.readElementText();
            if (path.isEmpty())
                entryAmount = text;
            else if (inTransaction && (nameIs(parent, "TxAmt") || nameIs(parent, "TxDtls"))
                && !transactions.isEmpty())
                transactions.last().amount = text;
            continue;
        }
        if (isElement(xml, "CdtDbtInd")) {
            const bool debit = xml.readElementText().trimmed() == debitIndicator;
            if (path.isEmpty())
                entryDebit = debit;
            else if (nameIs(parent, "TxDtls") && !transactions.isEmpty())
                transactions.last().debit = debit;
            continue;
        }
        if (isElement(xml, "Ref") && nameIs(parent, "CdtrRefInf")) {
            const QString reference = cleanReference(xml.readElementText());
            if (inTransaction && !transactions.isEmpty())
                transactions.last().reference = reference;
            else
                entryReference = reference;
            continue;
        }
        if (isElement(xml, "AccptncDtTm")) {
            const QDate date
                = QDate::fromString(xml.readElementText().left(isoDateLength), isoDate);
            if (inTransaction && !transactions.isEmpty())
                transactions.last().acceptanceDate = date;
            else
                entryAcceptanceDate = date;
            continue;
        }
        path.append(xml.name().toString().toLower());
    }
    if (xml.hasError())
        return;

    if (transactions.isEmpty())
        transactions.append(Transaction());
    const bool single = transactions.size() == 1;
    for (Transaction& transaction : transactions) {
        if (transaction.amount.isEmpty() && single)
            transaction.amount = entryAmount;
        if (transaction.reference.isEmpty() && single)
            transaction.reference = entryReference;
        int cents = 0;
        if (transaction.amount.isEmpty() || !parseAmount(transaction.amount, &cents))
            continue;
        if (cents == 0)
            continue;
        QDate paymentDate = transaction.acceptanceDate;
        if (!paymentDate.isValid())
            paymentDate = entryAcceptanceDate.isValid() ? entryAcceptanceDate : bookingDate;
        if (!paymentDate.isValid())
            continue;
        // A debit is money paid out: it must never be recorded as received.
        if (entryDebit || transaction.debit)
            cents = -cents;
        deliver(bookingDate, paymentDate, cents, transaction.reference);
    }
}

QDate PaymentFileReader::parseCSVDate(const QString& text)
{
    static const QRegularExpression dayMonthYear(
        QStringLiteral("^(\\d{1,2})\\.(\\d{1,2})\\.(\\d{4})"));
    static const QRegularExpression yearMonthDay(
        QStringLiteral("^(\\d{4})[-\\.](\\d{2})[-\\.](\\d{2})"));
    const QString trimmed = text.trimmed();
    QRegularExpressionMatch match = dayMonthYear.match(trimmed);
    if (match.hasMatch())
        return QDate(
            match.captured(3).toInt(), match.captured(2).toInt(), match.captured(1).toInt());
    match = yearMonthDay.match(trimmed);
    if (match.hasMatch())
        return QDate(
            match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    return QDate();
}

QString PaymentFileReader::parseCSVReferenceNumber(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("(RF)?([\\d\\s]+)"));
    const QRegularExpressionMatch match = pattern.match(text.toUpper());
    if (!match.hasMatch())
        return QString();
    QString reference = match.captured(0);
    reference.remove(QRegularExpression(QStringLiteral("\\s")));
    if (reference.startsWith(rfPrefix) && reference.size() > rfPrefixLength)
        return reference;
    reference.remove(rfPrefix);
    return FixedWidthLine::withoutLeadingZeros(reference);
}

bool PaymentFileReader::readCSVFile(
    QIODevice& file, const QString& header, QStringConverter::Encoding encoding)
{
    QTextStream stream(&file);
    stream.setEncoding(encoding);
    CSV csv(&stream, CSV::guessDelimiter(header));
    m_timestamp = timestampFormat.arg(
        m_fileName, m_modified.toString(QStringLiteral("yyyy-MM-dd'T'HH:mm")));

    int entryColumn = -1;
    int paymentColumn = -1;
    int valueColumn = -1;
    int amountColumn = -1;
    int referenceColumn = -1;
    bool headerFound = false;
    QStringList fields;
    while (csv.readRow(&fields)) {
        if (fields.size() >= 2 && fields.first().trimmed() == accountLine) {
            m_iban = fields.at(1);
            m_iban.remove(QRegularExpression(QStringLiteral("\\s")));
            m_listener->accountRead();
            continue;
        }
        if (!headerFound) {
            for (int i = 0; i < fields.size(); ++i) {
                const QString name = fields.at(i).trimmed().toLower();
                if (name == QStringLiteral("kirjauspäivä"))
                    entryColumn = i;
                else if (name == QStringLiteral("maksupäivä"))
                    paymentColumn = i;
                else if (name == QStringLiteral("arvopäivä"))
                    valueColumn = i;
                else if (name == QStringLiteral("viite"))
                    referenceColumn = i;
                else if (amountColumn < 0 && name.contains(QStringLiteral("määrä")))
                    amountColumn = i;
            }
            headerFound = amountColumn >= 0 && (entryColumn >= 0 || paymentColumn >= 0);
            continue;
        }
        if (fields.size() == 1 && fields.first().trimmed().isEmpty())
            continue;
        resetPayment();
        const auto field = [&](int column) {
            return column >= 0 && column < fields.size() ? fields.at(column) : QString();
        };
        int cents = 0;
        if (!parseAmount(field(amountColumn), &cents))
            continue;
        QDate entryDate = parseCSVDate(field(entryColumn));
        QDate paymentDate = parseCSVDate(field(paymentColumn));
        // Statements without a payment date give the value date, else the
        // booking date, as the day the money was paid.
        if (!paymentDate.isValid())
            paymentDate = parseCSVDate(field(valueColumn));
        if (!paymentDate.isValid())
            paymentDate = entryDate;
        if (!entryDate.isValid())
            entryDate = paymentDate;
        if (!paymentDate.isValid()) {
            logLineError(FixedWidthLine::buildErrorMessage(tr("entry date"), field(entryColumn)));
            continue;
        }
        deliver(entryDate, paymentDate, cents, parseCSVReferenceNumber(field(referenceColumn)));
    }
    if (!headerFound) {
        m_lastError = tr("Tuntematon tiedostomuoto");
        return false;
    }
    return true;
}
