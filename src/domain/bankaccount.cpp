#include "bankaccount.h"

void BankAccount::copy(BankAccount* target) const
{
    target->id = id;
    target->name = name;
    target->shortName = shortName;
    target->iban = iban;
    target->bic = bic;
    target->rowNumber = rowNumber;
    target->visible = visible;
    target->deleted = deleted;
}
