#include "scriptapimember.h"

ScriptApiMember::ScriptApiMember(const QByteArray& name, QObject* object, const QMetaMethod& method)
    : name(name), object(object), method(method)
{
}
