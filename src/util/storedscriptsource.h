#ifndef STOREDSCRIPTSOURCE_H
#define STOREDSCRIPTSOURCE_H

#include <QByteArray>
#include <QString>

// Where the script loader finds the scripts stored in the open database.
// The core's registry answers; the script host itself knows no database.
class StoredScriptSource
{
public:
    virtual ~StoredScriptSource() = default;

    // The source of a stored script as UTF-8; null when there is none.
    virtual QByteArray storedScriptSource(int id) const = 0;
    // The id of the first stored script of that name (exact case); -1 when
    // there is none.
    virtual int storedScriptId(const QString& name) const = 0;
};

#endif // STOREDSCRIPTSOURCE_H
