#include "easreader.h"

namespace {

const QString supportedVersion = QStringLiteral("100");
// Receipt code, method of transfer, payer's name, name source, account and
// account change: not needed for matching.
constexpr int unreadTransactionFields = 53;

} // namespace

EASReader::EASReader(QObject* parent) : QObject(parent) { }

EASReader::EASReader(QIODevice* device, QObject* parent) : QObject(parent)
{
    setDevice(device);
}

void EASReader::setDevice(QIODevice* device)
{
    m_stream.setDevice(device);
}

QIODevice* EASReader::device() const
{
    return m_stream.device();
}

bool EASReader::readRecord()
{
    if (!m_line.read(&m_stream, maxLineLength))
        return false;
    const QString lengthLabel = tr("length of the record");
    const QString actualLength = QString::number(m_line.length());
    if (m_line.length() < headerLength) {
        m_line.fail(lengthLabel, actualLength);
        return true;
    }
    m_recordCode = readString(3, tr("record code"));
    bool ok = false;
    m_recordLength = m_line.readNumber(3, tr("record length"), ok);
    if (!ok)
        return true;
    if (m_recordLength != m_line.length()) {
        m_line.fail(lengthLabel, actualLength);
        return true;
    }
    if (m_recordCode == statementRecord) {
        if (m_recordLength != statementRecordLength)
            m_line.fail(lengthLabel, actualLength);
        else
            readStatementRecord();
    } else if (m_recordCode == transactionRecord) {
        if (m_recordLength != transactionRecordLength)
            m_line.fail(lengthLabel, actualLength);
        else
            readTransactionRecord();
    }
    return true;
}

void EASReader::readStatementRecord()
{
    m_versionNumber = readString(3, tr("version number"));
    if (m_versionNumber != supportedVersion) {
        m_line.fail(tr("version number"), m_versionNumber);
        return;
    }
    m_accountNumber = readString(14, tr("account number"));
    m_statementNumber = readString(3, tr("account statement number"));
    bool ok = false;
    m_startingDate = m_line.readDate(tr("starting date"), ok);
    if (!ok)
        return;
    m_endingDate = m_line.readDate(tr("ending date"), ok);
    if (!ok)
        return;
    m_creationDate = m_line.readDate(tr("creation date"), ok);
    if (!ok)
        return;
    m_creationTime = m_line.readTime(tr("creation time"), ok);
}

void EASReader::readTransactionRecord()
{
    bool ok = false;
    m_transactionNumber = m_line.readNumber(6, tr("transaction number"), ok);
    if (!ok)
        return;
    m_filingCode = readString(18, tr("filing code"));
    m_entryDate = m_line.readDate(tr("entry date"), ok);
    if (!ok)
        return;
    m_valueDate = m_line.readDate(tr("value date"), ok);
    if (!ok)
        return;
    m_paymentDate = m_line.readDate(tr("payment date"), ok);
    if (!ok)
        return;
    m_transactionCode = m_line.readChar(tr("transaction code"));
    m_entryDefinitionCode = readString(3, tr("entry definition code"));
    m_entryDefinitionText = readString(35, tr("entry definition text"));
    const bool debit = m_line.readChar(tr("sign")) == QLatin1Char('-');
    const int amount = m_line.readNumber(18, tr("amount of transaction"), ok);
    if (!ok)
        return;
    m_amount = debit ? -amount : amount;
    m_line.skip(unreadTransactionFields);
    m_referenceNumber = FixedWidthLine::withoutLeadingZeros(readString(20, tr("reference number")));
}
