#include "paymentimporter.h"

#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "payments/fixedwidthline.h"
#include "payments/irptablemodel.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QFile>
#include <QSettings>

#include <memory>

namespace {

const QString rfPrefix = QStringLiteral("RF");
// "RF" and the two check digits before the national part.
constexpr int rfPrefixLength = 4;

} // namespace

PaymentImporter::PaymentImporter(Registry* registry, QObject* parent)
    : QObject(parent)
    , m_registry(registry)
    , m_model(new IRPTableModel(registry, this))
    , m_reader(this)
{
    m_model->setSaveEntryDate(storedSaveEntryDate());
}

bool PaymentImporter::storedSaveEntryDate() const
{
    QSettings* settings = m_registry->appSettings();
    if (!settings)
        return true;
    return settings->value(settingsGroup + QLatin1Char('/') + dateKey, entryDateValue).toString()
        != paymentDateValue;
}

int PaymentImporter::storedBankAccountId() const
{
    bool ok = false;
    const int id = m_registry->settings()->property(SettingsKeys::irpBankAccount).toInt(&ok);
    return ok ? id : -1;
}

bool PaymentImporter::readFile(const QString& fileName)
{
    m_model->clear();
    m_transactionCount = 0;
    m_referencePaymentCount = 0;
    m_bankAccountIndex = -1;
    m_accountText.clear();
    m_lastError.clear();
    m_referenceIndex.clear();
    m_referenceIndexLoaded = false;
    m_referenceIndexFailed = false;

    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        m_lastError = file.errorString();
        return false;
    }
    const bool read = m_reader.readFile(file);
    // The invoices are fetched anew for the next file.
    m_referenceIndex.clear();
    m_referenceIndexLoaded = false;
    if (!read) {
        m_lastError = m_reader.lastError();
        m_model->clear();
        m_transactionCount = 0;
        m_referencePaymentCount = 0;
        return false;
    }
    return true;
}

QString PaymentImporter::summaryText() const
{
    if (m_transactionCount == 0)
        return tr("Tiedosto ei sisällä yhtään tilitapahtumaa");
    if (m_transactionCount == 1)
        return tr("Tiedosto sisältää yhden tilitapahtuman");
    if (m_referencePaymentCount > 1) {
        return tr("Tiedosto sisältää %1 tilitapahtumaa, joista %2 on viitemaksuja")
            .arg(m_transactionCount)
            .arg(m_referencePaymentCount);
    }
    if (m_referencePaymentCount == 1)
        return tr("Tiedosto sisältää %1 tilitapahtumaa, joista yksi on viitemaksu")
            .arg(m_transactionCount);
    return tr("Tiedosto sisältää %1 tilitapahtumaa").arg(m_transactionCount);
}

bool PaymentImporter::isDuplicate() const
{
    const QString timestamp = m_reader.timestamp();
    return !timestamp.isEmpty()
        && timestamp == m_registry->settings()->property(SettingsKeys::irpLastTimestamp).toString();
}

void PaymentImporter::accountRead()
{
    const QString iban = m_reader.iban();
    const QString bban = m_reader.bban();
    const QList<BankAccount*>& accounts = m_registry->bankAccounts();
    for (int i = 0; i < accounts.size(); ++i) {
        const QString accountIban = accounts.at(i)->iban.simplified().remove(QLatin1Char(' '));
        if ((!iban.isEmpty() && iban == accountIban)
            || (!bban.isEmpty() && bban == BankAccount::ibanToBban(accountIban))) {
            m_bankAccountIndex = i;
            m_accountText.clear();
            return;
        }
    }
    m_bankAccountIndex = -1;
    m_accountText
        = tr("Pankkitiliä ei löytynyt tilinumerolla %1")
              .arg(iban.isEmpty() ? BankAccount::formatBban(bban) : BankAccount::formatIban(iban));
}

QString PaymentImporter::matchKey(const QString& reference)
{
    QString key = reference.toUpper();
    key.remove(QLatin1Char(' '));
    if (key.startsWith(rfPrefix) && key.size() > rfPrefixLength)
        key = key.mid(rfPrefixLength);
    return FixedWidthLine::withoutLeadingZeros(key);
}

bool PaymentImporter::loadReferenceIndex()
{
    if (m_referenceIndexLoaded)
        return !m_referenceIndexFailed;
    m_referenceIndexLoaded = true;
    // One fetch of every reference rather than a search per payment: the
    // references have no index and a file may hold thousands of payments.
    std::unique_ptr<Query> query(m_registry->database()->query());
    if (!query->fetchInvoiceReferences()) {
        m_referenceIndexFailed = true;
        return false;
    }
    int id = -1;
    QString reference;
    while (query->next()) {
        query->invoiceReference(&id, &reference);
        if (!reference.isEmpty())
            m_referenceIndex[matchKey(reference)].append(id);
    }
    return true;
}

void PaymentImporter::paymentRead()
{
    ++m_transactionCount;
    const int amount = m_reader.amount();
    const QString reference = m_reader.referenceNumber().toUpper();
    // Money paid out and payments without a reference are not invoice payments.
    if (amount < 0 || reference.isEmpty())
        return;
    ++m_referencePaymentCount;
    if (m_bankAccountIndex < 0)
        emit bankAccountNeeded();

    const int row = m_model->rowCount();
    QString info;
    int invoiceIndex = -1;
    int customerId = -1;
    int found = 0;
    bool fetched = loadReferenceIndex();
    if (fetched) {
        std::unique_ptr<Query> query;
        const QList<int> ids = m_referenceIndex.value(matchKey(reference));
        for (const int id : ids) {
            if (!query)
                query.reset(m_registry->database()->query());
            if (!query->fetchInvoiceDetails(id)) {
                fetched = false;
                break;
            }
            if (query->next()) {
                query->invoiceDetails(m_model->addInvoice(row));
                ++found;
            }
        }
    }
    const QString printed = Invoice::formatReferenceNumber(reference);
    if (!fetched) {
        info = tr("Laskutustietojen hakeminen epäonnistui");
    } else if (found > 0) {
        invoiceIndex = m_model->lastInvoiceIndex();
        customerId = m_model->invoiceAt(invoiceIndex)->customerId;
        if (found > 1)
            info = tr("%1 laskulla on viitenumero %2").arg(found).arg(printed);
    } else {
        info = tr("Laskua ei löytynyt viitenumerolla %1").arg(printed);
    }
    if (found > 0 && !fetched) {
        invoiceIndex = m_model->lastInvoiceIndex();
        customerId = m_model->invoiceAt(invoiceIndex)->customerId;
    }
    m_model->addPayment(m_reader.entryDate(), m_reader.paymentDate(), amount, customerId,
        invoiceIndex, info, m_reader.referenceNumber());
}

int PaymentImporter::savePayments(int bankAccountId)
{
    Database* database = m_registry->database();
    std::unique_ptr<Query> query(database->query());
    Settings* settings = m_registry->settings();
    const QVariant oldTimestamp = settings->property(SettingsKeys::irpLastTimestamp);
    const QVariant oldAccount = settings->property(SettingsKeys::irpBankAccount);
    const auto restore = [&] {
        m_model->rolledBack();
        for (const auto& [key, value] : { qMakePair(SettingsKeys::irpLastTimestamp, oldTimestamp),
                 qMakePair(SettingsKeys::irpBankAccount, oldAccount) }) {
            if (value.isValid())
                settings->setProperty(key, value);
            else
                settings->removeProperty(key);
        }
    };

    int count = -1;
    bool started = false;
    const auto save = [&] {
        started = true;
        count = m_model->savePayments(query.get(), bankAccountId);
        if (count < 0) {
            m_lastError = m_model->lastError();
            return false;
        }
        if (count == 0)
            return true;
        settings->setProperty(SettingsKeys::irpLastTimestamp, m_reader.timestamp());
        settings->setProperty(SettingsKeys::irpBankAccount, bankAccountId);
        return query->updateSettings(settings);
    };
    if (!database->runTransaction(save, query.get(), &m_lastError)) {
        // Nothing to put back when the transaction did not even start.
        if (started)
            restore();
        return -1;
    }
    return count;
}

QString PaymentImporter::duplicateQuestion()
{
    return tr(
        "Sähköisen aineiston tiedot on jo tallennettu aiemmin. Haluatko varmasti tallentaa tiedot uudelleen?");
}

QString PaymentImporter::resultText(int count)
{
    if (count == 1)
        return tr("Tietokantaan lisättiin 1 maksusuoritus.");
    return tr("Tietokantaan lisättiin %1 maksusuoritusta.").arg(count);
}
