#ifndef EASREADER_H
#define EASREADER_H

#include "payments/fixedwidthline.h"

#include <QDate>
#include <QObject>
#include <QString>
#include <QTextStream>
#include <QTime>

class QIODevice;

// Reads an electronic account statement: records of declared length that
// begin with a code such as "T00". The statement record "T00" and the
// transaction record "T10" are parsed; the others (T11, T40, T50, T70 ...)
// are accepted as they are. Fields of the last parsed record stay in the
// accessors.
class EASReader : public QObject
{
    Q_OBJECT
public:
    static inline const QString statementRecord = QStringLiteral("T00");
    static inline const QString transactionRecord = QStringLiteral("T10");
    static constexpr int statementRecordLength = 322;
    static constexpr int transactionRecordLength = 188;

    explicit EASReader(QObject* parent = nullptr);
    EASReader(QIODevice* device, QObject* parent = nullptr);

    void setDevice(QIODevice* device);
    QIODevice* device() const;

    // The next non-empty record; false at the end of input. A record with a
    // validation error still returns true with error() set.
    bool readRecord();
    bool error() const { return m_line.hasError(); }
    QString errorString() const { return m_line.errorString(); }

    QString recordCode() const { return m_recordCode; }
    int recordLength() const { return m_recordLength; }
    QString versionNumber() const { return m_versionNumber; }
    QString accountNumber() const { return m_accountNumber; }
    QString statementNumber() const { return m_statementNumber; }
    QDate startingDate() const { return m_startingDate; }
    QDate endingDate() const { return m_endingDate; }
    QDate creationDate() const { return m_creationDate; }
    QTime creationTime() const { return m_creationTime; }
    int transactionNumber() const { return m_transactionNumber; }
    QString filingCode() const { return m_filingCode; }
    QDate entryDate() const { return m_entryDate; }
    QDate valueDate() const { return m_valueDate; }
    QDate paymentDate() const { return m_paymentDate; }
    QChar transactionCode() const { return m_transactionCode; }
    QString entryDefinitionCode() const { return m_entryDefinitionCode; }
    QString entryDefinitionText() const { return m_entryDefinitionText; }
    // Cents, negative for debits.
    int amount() const { return m_amount; }
    QString referenceNumber() const { return m_referenceNumber; }

private:
    static constexpr int maxLineLength = 500;
    static constexpr int headerLength = 6;

    void readStatementRecord();
    void readTransactionRecord();
    QString readString(int width, const QString& label)
    {
        return m_line.readString(width, label).trimmed();
    }

    QTextStream m_stream;
    FixedWidthLine m_line;
    QString m_recordCode;
    int m_recordLength = 0;
    QString m_versionNumber;
    QString m_accountNumber;
    QString m_statementNumber;
    QDate m_startingDate;
    QDate m_endingDate;
    QDate m_creationDate;
    QTime m_creationTime;
    int m_transactionNumber = 0;
    QString m_filingCode;
    QDate m_entryDate;
    QDate m_valueDate;
    QDate m_paymentDate;
    QChar m_transactionCode;
    QString m_entryDefinitionCode;
    QString m_entryDefinitionText;
    int m_amount = 0;
    QString m_referenceNumber;
};

#endif // EASREADER_H
