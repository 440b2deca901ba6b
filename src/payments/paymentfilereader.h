#ifndef PAYMENTFILEREADER_H
#define PAYMENTFILEREADER_H

#include "domain/decimalformat.h"

#include <QDate>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringConverter>

class PaymentListener;
class QFile;
class QIODevice;
class QXmlStreamReader;

// Recognises a bank file by its first bytes and reads it: incoming reference
// payments, electronic account statements, ISO 20022 camt XML and CSV
// statements with Finnish headers. The listener hears of the file's account
// and of each payment and reads them from the accessors.
class PaymentFileReader : public QObject
{
    Q_OBJECT
public:
    PaymentFileReader(PaymentListener* listener, QObject* parent = nullptr);

    // False with lastError() when the format is unknown or the file broken;
    // single broken lines are only logged.
    bool readFile(QFile& file);
    // The same over any device: fileName and modified identify the file for
    // timestamp(), the statements without a creation time by modified.
    bool read(QIODevice& device, const QString& fileName, const QDateTime& modified);

    QString lastError() const { return m_lastError; }
    // Identifies the file for the question of saving it twice.
    QString timestamp() const { return m_timestamp; }
    QString iban() const { return m_iban; }
    QString bban() const { return m_bban; }
    QDate entryDate() const { return m_entryDate; }
    QDate paymentDate() const { return m_paymentDate; }
    // Cents; negative for money paid out.
    int amount() const { return m_amount; }
    QString referenceNumber() const { return m_referenceNumber; }

    static QDate parseCSVDate(const QString& text);
    static QString parseCSVReferenceNumber(const QString& text);

private:
    // One transaction of a camt entry.
    struct Transaction
    {
        QString amount;
        QString reference;
        QDate acceptanceDate;
        bool debit = false;
    };

    void resetPayment();
    bool readIRPFile(QIODevice& file);
    bool readEASFile(QIODevice& file);
    bool readXMLFile(QIODevice& file);
    bool readCSVFile(QIODevice& file, const QString& header, QStringConverter::Encoding encoding);
    void readNtryElement(QXmlStreamReader& xml);
    QDate readDtElement(QXmlStreamReader& xml);
    void readAcctElement(QXmlStreamReader& xml);
    // Amount text in cents; false (logged) when it is no amount or too large.
    bool parseAmount(const QString& text, int* cents);
    void logLineError(const QString& error);
    void deliver(
        const QDate& entryDate, const QDate& paymentDate, int amount, const QString& reference);

    PaymentListener* m_listener;
    DecimalFormat m_decimalFormat;
    QString m_fileName;
    QDateTime m_modified;
    QString m_lastError;
    QString m_timestamp;
    QString m_iban;
    QString m_bban;
    QDate m_entryDate;
    QDate m_paymentDate;
    int m_amount = 0;
    QString m_referenceNumber;
};

#endif // PAYMENTFILEREADER_H
