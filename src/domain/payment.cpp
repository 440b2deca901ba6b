#include "payment.h"

void Payment::copy(Payment* target) const
{
    *target = *this;
}
