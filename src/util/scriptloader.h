#ifndef SCRIPTLOADER_H
#define SCRIPTLOADER_H

#include <QByteArray>
#include <QString>

class StoredScriptSource;

// Fetches script sources as UTF-8: stored print scripts through the given
// source (the open database), or the built-in ":/scripts/NAME.js" resources.
class ScriptLoader
{
public:
    explicit ScriptLoader(const StoredScriptSource* source);

    // Null when there is no stored script with that id.
    QByteArray loadScriptById(int id) const;
    // The first stored script of that name (exact case).
    QByteArray loadScriptByName(const QString& name) const;
    QByteArray loadResource(const QString& name) const;

private:
    const StoredScriptSource* m_source;
};

#endif // SCRIPTLOADER_H
