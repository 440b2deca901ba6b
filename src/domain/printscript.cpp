#include "printscript.h"

void PrintScript::copy(PrintScript* target) const
{
    target->id = id;
    target->type = type;
    target->name = name;
    target->sourceCode = sourceCode;
}
