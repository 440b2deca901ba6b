#ifndef SCRIPTLOADER_H
#define SCRIPTLOADER_H

#include <QByteArray>
#include <QString>

class Registry;

// Fetches script sources as UTF-8: stored print scripts from the open
// database, or the built-in ":/scripts/NAME.js" resources.
class ScriptLoader
{
public:
    explicit ScriptLoader(Registry* registry);

    // Null when there is no stored script with that id.
    QByteArray loadScriptById(int id) const;
    // The first stored script of that name in the registry's list (exact case).
    QByteArray loadScriptByName(const QString& name) const;
    QByteArray loadResource(const QString& name) const;

private:
    Registry* m_registry;
};

#endif // SCRIPTLOADER_H
