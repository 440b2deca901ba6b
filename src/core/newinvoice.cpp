#include "newinvoice.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "util/templatestringhelper.h"

namespace {
const QString noticeText1Key = QStringLiteral("t1");
const QString noticeText2Key = QStringLiteral("t2");
const QString defaultReferenceTemplate = QStringLiteral("{I}00");
} // namespace

void NewInvoice::prepare(
    const Registry* registry, Invoice* invoice, int number, const QDate& date, int customerId)
{
    invoice->clear();
    invoice->customerId = customerId;
    invoice->number = number;
    invoice->date = date;
    invoice->dueDate = date;
    const Settings* settings = registry->settings();
    if (settings) {
        invoice->paymentTerms
            = settings->property(SettingsKeys::paymentTerms, QString()).toString();
        invoice->interestOnArrears = settings->property(SettingsKeys::interestOnArrears, 0).toInt();
    }
    calculateDueDate(invoice);
    updateReferenceNumber(registry, invoice);
}

void NewInvoice::calculateDueDate(Invoice* invoice)
{
    // The due date column is NOT NULL: terms without a number of days keep it.
    const QDate dueDate = invoice->calculateDueDate();
    if (dueDate.isValid())
        invoice->dueDate = dueDate;
}

QString NewInvoice::buildReferenceNumber0(const Registry* registry, const Invoice& invoice)
{
    const Settings* settings = registry->settings();
    const QString pattern
        = settings ? settings->referenceNumberTemplate() : defaultReferenceTemplate;
    bool found = false;
    const Customer* customer = registry->customerById(invoice.customerId, found);
    TemplateStringHelper helper(registry->settings(), registry->bankAccounts());
    return Invoice::appendCheckDigitToReferenceNumber(
        helper.substituteVariables(pattern, &invoice, found ? customer : nullptr));
}

QString NewInvoice::buildReferenceNumber1(const Registry* registry, const Invoice& invoice)
{
    bool found = false;
    const Customer* customer = registry->customerById(invoice.customerId, found);
    return found && customer ? customer->referenceNumber : QString();
}

void NewInvoice::updateReferenceNumber(const Registry* registry, Invoice* invoice)
{
    QString reference = buildReferenceNumber1(registry, *invoice);
    if (reference.isEmpty())
        reference = buildReferenceNumber0(registry, *invoice);
    invoice->referenceNumber = reference;

    bool found = false;
    const Customer* customer = registry->customerById(invoice->customerId, found);
    const Settings* settings = registry->settings();
    if (!found || !customer || !settings)
        return;
    TemplateStringHelper helper(registry->settings(), registry->bankAccounts());
    invoice->setPropertyIfNotEmpty(noticeText1Key,
        helper.substituteVariables(
            settings->property(SettingsKeys::noticeText1, QString()).toString(), invoice,
            customer));
    invoice->setPropertyIfNotEmpty(noticeText2Key,
        helper.substituteVariables(
            settings->property(SettingsKeys::noticeText2, QString()).toString(), invoice,
            customer));
}
