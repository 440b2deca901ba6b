#include "printscript.h"

void PrintScript::copy(PrintScript* target) const
{
    *target = *this;
}
