#ifndef PAYMENTIMPORTER_H
#define PAYMENTIMPORTER_H

#include "payments/paymentfilereader.h"
#include "payments/paymentlistener.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>

class IRPTableModel;
class Registry;

// Imports a bank file: reads it, matches each reference payment to the
// invoices that carry its reference, and saves the ticked rows with the
// invoices' new balances in one transaction. The import dialog and the
// command-line program share it; it shows nothing itself.
class PaymentImporter : public QObject, public PaymentListener
{
    Q_OBJECT
public:
    // Configuration group and keys of the remembered choices.
    static inline const QString settingsGroup = QStringLiteral("incomingReferencePayments");
    static inline const QString fileNameKey = QStringLiteral("filename");
    static inline const QString dateKey = QStringLiteral("date");
    static inline const QString entryDateValue = QStringLiteral("entryDate");
    static inline const QString paymentDateValue = QStringLiteral("paymentDate");

    explicit PaymentImporter(Registry* registry, QObject* parent = nullptr);

    IRPTableModel* model() const { return m_model; }

    // Starts over and reads the file; false with lastError() when it cannot
    // be read, and then no rows are left.
    bool readFile(const QString& fileName);
    QString lastError() const { return m_lastError; }

    int transactionCount() const { return m_transactionCount; }
    int referencePaymentCount() const { return m_referencePaymentCount; }
    // "Tiedosto sisältää ..." after a file has been read.
    QString summaryText() const;
    // The registry's index of the bank account the file names, -1 when none
    // matched; accountText() then tells which account the file named.
    int bankAccountIndex() const { return m_bankAccountIndex; }
    QString accountText() const { return m_accountText; }
    // The file's timestamp was stored when payments were last saved.
    bool isDuplicate() const;
    // The stored choice of which date becomes the payment's date.
    bool storedSaveEntryDate() const;
    // The bank account id chosen when payments were last saved, -1 for none.
    int storedBankAccountId() const;

    // Saves the ticked rows to bankAccountId (-1 for none) in one transaction
    // and remembers the file and the account; the number saved, -1 on failure
    // (lastError()), when nothing was stored.
    int savePayments(int bankAccountId);
    // Asked before a file is saved a second time.
    static QString duplicateQuestion();
    // "Tietokantaan lisättiin ..." for count payments.
    static QString resultText(int count);

    void accountRead() override;
    void paymentRead() override;

signals:
    // A reference payment came and no bank account was recognised.
    void bankAccountNeeded();

private:
    // The reference's key in the index: upper case, no spaces, an RF
    // reference by its national part, no padding zeros.
    static QString matchKey(const QString& reference);
    bool loadReferenceIndex();

    Registry* m_registry;
    IRPTableModel* m_model;
    PaymentFileReader m_reader;
    QString m_lastError;
    int m_transactionCount = 0;
    int m_referencePaymentCount = 0;
    int m_bankAccountIndex = -1;
    QString m_accountText;
    // Invoice ids by reference, in invoice number order; fetched once a file.
    QHash<QString, QList<int>> m_referenceIndex;
    bool m_referenceIndexLoaded = false;
    bool m_referenceIndexFailed = false;
};

#endif // PAYMENTIMPORTER_H
