#include "invoicesavecheck.h"

#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "domain/constants.h"
#include "domain/dateformat.h"
#include "domain/invoice.h"

namespace {

InvoiceSaveCheck::Result refusal(
    InvoiceSaveCheck::Field field, const QString& message, int row = -1)
{
    InvoiceSaveCheck::Result result;
    result.outcome = InvoiceSaveCheck::Refused;
    result.field = field;
    result.message = message;
    result.row = row;
    return result;
}

} // namespace

InvoiceSaveCheck::InvoiceSaveCheck(MainModel* model) : m_model(model) { }

bool InvoiceSaveCheck::isPristine() const
{
    // A new invoice that the user has not given a customer, a row or a
    // payment is not worth a refusal: leaving it simply drops it.
    const Invoice* invoice = m_model->invoice();
    return invoice->id < 0 && invoice->customerId < 0
        && m_model->invoiceItemTableModel()->rowCount() == 0
        && m_model->paymentTableModel()->rowCount() == 0;
}

bool InvoiceSaveCheck::checkNumber(const QString& text, Result* result) const
{
    bool ok = false;
    const int number = text.trimmed().toInt(&ok);
    // What is not a number leaves the invoice its own.
    if (!ok || number <= 0 || number == m_model->invoice()->number)
        return true;
    switch (m_model->isValidNumber(number)) {
    case -1:
        result->outcome = Failed;
        result->message
            = tr("Laskutustietojen hakeminen epäonnistui. %1").arg(m_model->lastError());
        return false;
    case 0:
        *result = refusal(NumberField, tr("Laskun numero %1 on jo käytössä.").arg(number));
        return false;
    default:
        m_model->setInvoiceNumber(number);
        return true;
    }
}

InvoiceSaveCheck::Result InvoiceSaveCheck::check(const Texts& texts) const
{
    Result result;
    if (isPristine() && texts.customer.trimmed().isEmpty()) {
        result.outcome = NothingToSave;
        return result;
    }
    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    PaymentTableModel* payments = m_model->paymentTableModel();
    const bool editMode = m_model->isEditable();
    if (editMode) {
        if (!checkNumber(texts.number, &result))
            return result;
    } else if (!payments->isChanged()) {
        // Outside edit mode only payments can have changed.
        result.outcome = NothingToSave;
        return result;
    }

    if (m_model->invoice()->customerId < 0)
        return refusal(CustomerField, tr("Valitse laskun saaja ennen tallentamista."));
    // The total is kept in 32 bits, so this limit is never reached.
    const int total = static_cast<int>(items->totalAmountVatIncluded());
    if (static_cast<qint64>(total) > Constants::maxTotalAmount)
        return refusal(NoField, tr("Laskun loppusumma ei saa ylittää 999 999,99."));

    const DateFormat dateFormat(m_model->today());
    const QString deliveryDate = texts.deliveryDate.trimmed();
    if (!deliveryDate.isEmpty()) {
        result.deliveryDate = dateFormat.parse(deliveryDate);
        if (!result.deliveryDate.isValid())
            return refusal(DeliveryDateField, tr("Toimituspäivämäärä on virheellinen."));
    }
    // Outside edit mode the form only shows the invoice's own dates.
    if (editMode) {
        result.date = dateFormat.parse(texts.date.trimmed());
        if (!result.date.isValid())
            return refusal(DateField, tr("Laskun päivämäärä on virheellinen."));
        result.dueDate = dateFormat.parse(texts.dueDate.trimmed());
        if (!result.dueDate.isValid())
            return refusal(DueDateField, tr("Eräpäivä on virheellinen."));
    }

    items->removeEmptyRows();
    const int emptyRow = items->emptyProduct();
    if (emptyRow >= 0) {
        return refusal(InvoiceItemField,
            tr("Valitse tuote riville %1 ennen laskun tallentamista.").arg(emptyRow + 1), emptyRow);
    }
    const int emptyDate = payments->emptyDate();
    if (emptyDate >= 0) {
        return refusal(PaymentField,
            tr("Syötä maksusuorituksen päivämäärä ennen laskun tallentamista."), emptyDate);
    }
    return result;
}
