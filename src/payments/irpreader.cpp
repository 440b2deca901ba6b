#include "irpreader.h"

IRPReader::IRPReader(QObject* parent) : QObject(parent) { }

IRPReader::IRPReader(QIODevice* device, QObject* parent) : QObject(parent)
{
    setDevice(device);
}

void IRPReader::setDevice(QIODevice* device)
{
    m_stream.setDevice(device);
}

QIODevice* IRPReader::device() const
{
    return m_stream.device();
}

bool IRPReader::readRecord()
{
    if (!m_line.read(&m_stream, maxLineLength))
        return false;
    if (m_line.length() != recordLength) {
        m_line.fail(tr("length of the record"), QString::number(m_line.length()));
        return true;
    }
    const QChar code = m_line.readChar(tr("record code"));
    if (code == batchRecord) {
        m_recordCode = code;
        readBatchRecord();
    } else if (code == paymentRecord || code == correctionRecord) {
        m_recordCode = code;
        readTransactionRecord();
    } else if (code == sumRecord) {
        m_recordCode = code;
    } else {
        m_line.fail(tr("record code"), code);
    }
    return true;
}

void IRPReader::readBatchRecord()
{
    bool ok = false;
    m_date = m_line.readDate(tr("date of the file creation"), ok);
    if (!ok)
        return;
    m_time = m_line.readTime(tr("time of the file creation"), ok);
    if (!ok)
        return;
    m_bankGroupCode = m_line.readString(2, tr("code of the sending bank group"));
    m_invoicerCode = m_line.readString(9, tr("reference payment code of the invoicer"));
    m_currencyCode = m_line.readChar(tr("currency code"));
}

void IRPReader::readTransactionRecord()
{
    bool ok = false;
    m_accountNumber = m_line.readString(14, tr("invoicer's account number"));
    m_date = m_line.readDate(tr("entry date"), ok);
    if (!ok)
        return;
    m_paymentDate = m_line.readDate(tr("payment date"), ok);
    if (!ok)
        return;
    m_filingCode = m_line.readString(16, tr("filing code"));
    m_referenceNumber
        = FixedWidthLine::withoutLeadingZeros(m_line.readString(20, tr("reference number")));
    m_payerName = m_line.readString(12, tr("payer's name")).trimmed();
    m_currencyCode = m_line.readChar(tr("currency code"));
    m_nameSource = m_line.readChar(tr("source of name"));
    m_amount = m_line.readNumber(10, tr("amount"), ok);
    if (!ok)
        return;
    m_correctionCode = m_line.readChar(tr("correction code"));
    m_transferMethod = m_line.readChar(tr("method of transfer"));
    m_feedbackCode = m_line.readChar(tr("feedback code"));
}
