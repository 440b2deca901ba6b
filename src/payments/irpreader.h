#ifndef IRPREADER_H
#define IRPREADER_H

#include "payments/fixedwidthline.h"

#include <QDate>
#include <QObject>
#include <QString>
#include <QTextStream>
#include <QTime>

class QIODevice;

// Reads an incoming reference payments file, one 90-character record a
// line: a batch record ("0"), transactions ("3", and "7" of the same
// layout) and the sum-up record ("9"). The fields of the last record read
// stay in the accessors; fields of other record types keep their values.
class IRPReader : public QObject
{
    Q_OBJECT
public:
    static constexpr int recordLength = 90;
    static constexpr QChar batchRecord = QLatin1Char('0');
    static constexpr QChar paymentRecord = QLatin1Char('3');
    static constexpr QChar correctionRecord = QLatin1Char('7');
    static constexpr QChar sumRecord = QLatin1Char('9');

    explicit IRPReader(QObject* parent = nullptr);
    IRPReader(QIODevice* device, QObject* parent = nullptr);

    void setDevice(QIODevice* device);
    QIODevice* device() const;

    // The next non-empty record; false at the end of input. A record with a
    // validation error still returns true with error() set.
    bool readRecord();
    bool error() const { return m_line.hasError(); }
    QString errorString() const { return m_line.errorString(); }

    QChar recordCode() const { return m_recordCode; }
    // The batch's creation date; a transaction's entry date later.
    QDate date() const { return m_date; }
    QDate entryDate() const { return m_date; }
    QTime time() const { return m_time; }
    QString bankGroupCode() const { return m_bankGroupCode; }
    QString invoicerCode() const { return m_invoicerCode; }
    QChar currencyCode() const { return m_currencyCode; }
    QString accountNumber() const { return m_accountNumber; }
    QDate paymentDate() const { return m_paymentDate; }
    QString filingCode() const { return m_filingCode; }
    QString referenceNumber() const { return m_referenceNumber; }
    QString payerName() const { return m_payerName; }
    QChar nameSource() const { return m_nameSource; }
    int amount() const { return m_amount; }
    QChar correctionCode() const { return m_correctionCode; }
    QChar transferMethod() const { return m_transferMethod; }
    QChar feedbackCode() const { return m_feedbackCode; }

private:
    static constexpr int maxLineLength = 100;

    void readBatchRecord();
    void readTransactionRecord();

    QTextStream m_stream;
    FixedWidthLine m_line;
    QChar m_recordCode;
    QDate m_date;
    QTime m_time;
    QString m_bankGroupCode;
    QString m_invoicerCode;
    QChar m_currencyCode;
    QString m_accountNumber;
    QDate m_paymentDate;
    QString m_filingCode;
    QString m_referenceNumber;
    QString m_payerName;
    QChar m_nameSource;
    int m_amount = 0;
    QChar m_correctionCode;
    QChar m_transferMethod;
    QChar m_feedbackCode;
};

#endif // IRPREADER_H
