#include "payment.h"

void Payment::copy(Payment* target) const
{
    target->id = id;
    target->invoiceId = invoiceId;
    target->date = date;
    target->bankAccountId = bankAccountId;
    target->amount = amount;
}
