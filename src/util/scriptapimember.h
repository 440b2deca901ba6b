#ifndef SCRIPTAPIMEMBER_H
#define SCRIPTAPIMEMBER_H

#include <QByteArray>
#include <QMetaMethod>

class QObject;

// One native function that scripts can call: the name the script sees and
// the slot of the receiver that implements it. Its position in the engine's
// member list is the index stored on the function object.
class ScriptApiMember
{
public:
    ScriptApiMember() = default;
    ScriptApiMember(const QByteArray& name, QObject* object, const QMetaMethod& method);

    QByteArray name;
    QObject* object = nullptr;
    QMetaMethod method;
};

#endif // SCRIPTAPIMEMBER_H
