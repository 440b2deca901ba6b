#include "invoicecopier.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoiceitem.h"
#include "domain/logging.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "storage/database.h"
#include "storage/query.h"
#include "util/templatestringhelper.h"

#include <memory>

namespace {

const QString noticeText1Key = QStringLiteral("t1");
const QString noticeText2Key = QStringLiteral("t2");

// The database gives properties back as text; anything but a number is -1.
int intSetting(const Settings* settings, const QString& key)
{
    bool ok = false;
    const int value = settings->property(key, QString()).toString().toInt(&ok);
    return ok ? value : -1;
}

} // namespace

InvoiceCopier::InvoiceCopier(Registry* registry, const Invoice& source) : m_registry(registry)
{
    source.copy(&m_source);
}

QDate InvoiceCopier::today() const
{
    return m_today.isValid() ? m_today : QDate::currentDate();
}

bool InvoiceCopier::createInvoices(const QList<int>& customerIds)
{
    m_createdCount = 0;
    Database* database = m_registry->database();
    Settings* settings = m_registry->settings();
    if (!database || !settings) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    std::unique_ptr<Query> query(database->query());
    QList<InvoiceItem> items;
    if (!query->fetchInvoiceItems(m_source.id)) {
        m_lastError = query->lastError();
        return false;
    }
    while (query->next()) {
        InvoiceItem item;
        query->invoiceItem(&item);
        items.append(item);
    }

    Invoice invoice;
    m_source.copy(&invoice);
    // A copy starts without payments.
    invoice.balance = invoice.totalAmount;
    TemplateStringHelper helper(settings, m_registry->bankAccounts());
    const QString referenceTemplate = settings->referenceNumberTemplate();
    const QString noticeText1 = settings->property(SettingsKeys::noticeText1, QString()).toString();
    const QString noticeText2 = settings->property(SettingsKeys::noticeText2, QString()).toString();
    int firstId = -1;
    int lastId = -1;
    int firstNumber = -1;
    int lastNumber = -1;
    int count = 0;
    const auto copyAll = [&] {
        for (const int customerId : customerIds) {
            bool found = false;
            const Customer* customer = m_registry->customerById(customerId, found);
            if (customerId == m_source.customerId || !found || !customer)
                continue;
            invoice.customerId = customerId;
            invoice.id = -1;
            // Asked for every copy: the copies get consecutive numbers.
            const int highest = query->maxInvoiceNumber();
            if (highest < 0)
                return false;
            invoice.number = highest + 1;
            invoice.referenceNumber = customer->referenceNumber;
            if (invoice.referenceNumber.isEmpty())
                invoice.referenceNumber = Invoice::appendCheckDigitToReferenceNumber(
                    helper.substituteVariables(referenceTemplate, &invoice, customer));
            // The customer's terms when they give a due date, else the source's.
            invoice.paymentTerms = m_source.paymentTerms;
            invoice.dueDate = m_source.dueDate;
            if (!customer->paymentTerms.isEmpty()) {
                invoice.paymentTerms = customer->paymentTerms;
                const QDate dueDate = invoice.calculateDueDate();
                if (dueDate.isValid())
                    invoice.dueDate = dueDate;
                else
                    invoice.paymentTerms = m_source.paymentTerms;
            }
            invoice.setPropertyIfNotEmpty(
                noticeText1Key, helper.substituteVariables(noticeText1, &invoice, customer));
            invoice.setPropertyIfNotEmpty(
                noticeText2Key, helper.substituteVariables(noticeText2, &invoice, customer));
            if (!query->saveInvoice(&invoice))
                return false;
            if (firstId < 0) {
                firstId = invoice.id;
                firstNumber = invoice.number;
            }
            lastId = invoice.id;
            lastNumber = invoice.number;
            for (InvoiceItem item : qAsConst(items)) {
                item.id = -1;
                item.invoiceId = invoice.id;
                if (!query->saveInvoiceItem(&item))
                    return false;
            }
            ++count;
        }
        return true;
    };
    if (!database->runTransaction(copyAll, query.get(), &m_lastError))
        return false;
    m_createdCount = count;
    if (firstId > 0 && lastId > 0 && firstId <= lastId) {
        settings->setProperty(SettingsKeys::copyFirstId, firstId);
        settings->setProperty(SettingsKeys::copyLastId, lastId);
        settings->setProperty(SettingsKeys::copyFirstNumber, firstNumber);
        settings->setProperty(SettingsKeys::copyLastNumber, lastNumber);
        settings->setProperty(SettingsKeys::copyDate, today().toString(Qt::ISODate));
    }
    return true;
}

InvoiceCopier::UndoRecord InvoiceCopier::undoRecord() const
{
    UndoRecord record;
    const Settings* settings = m_registry->settings();
    if (!settings)
        return record;
    record.firstId = intSetting(settings, SettingsKeys::copyFirstId);
    record.lastId = intSetting(settings, SettingsKeys::copyLastId);
    record.firstNumber = intSetting(settings, SettingsKeys::copyFirstNumber);
    record.lastNumber = intSetting(settings, SettingsKeys::copyLastNumber);
    record.date = QDate::fromString(
        settings->property(SettingsKeys::copyDate, QString()).toString(), Qt::ISODate);
    return record;
}

bool InvoiceCopier::undoCopy()
{
    const UndoRecord record = undoRecord();
    Database* database = m_registry->database();
    if (!record.isValid()) {
        m_lastError = tr("Kumottavia laskuja ei ole.");
        return false;
    }
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    qCDebug(logUi).noquote() << QStringLiteral("Poistetaan laskut väliltä id=%1...id=%2")
                                    .arg(record.firstId)
                                    .arg(record.lastId);
    std::unique_ptr<Query> query(database->query());
    const auto deleteCopies
        = [&] { return query->deleteInvoiceRange(record.firstId, record.lastId); };
    if (!database->runTransaction(deleteCopies, query.get(), &m_lastError))
        return false;
    // Empty ids disable undo until the next run.
    Settings* settings = m_registry->settings();
    settings->setProperty(SettingsKeys::copyFirstId, QString());
    settings->setProperty(SettingsKeys::copyLastId, QString());
    return true;
}
