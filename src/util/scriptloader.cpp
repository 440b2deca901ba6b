#include "scriptloader.h"

#include "core/registry.h"
#include "domain/printscript.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QFile>
#include <memory>

ScriptLoader::ScriptLoader(Registry* registry) : m_registry(registry) { }

QByteArray ScriptLoader::loadScriptById(int id) const
{
    if (!m_registry || !m_registry->database())
        return QByteArray();
    std::unique_ptr<Query> query(m_registry->database()->query());
    if (!query)
        return QByteArray();
    PrintScript script;
    if (!query->fetchPrintScript(id, &script))
        return QByteArray();
    QByteArray source = script.sourceCode.toUtf8();
    if (source.isNull())
        source = QByteArray("");
    return source;
}

QByteArray ScriptLoader::loadScriptByName(const QString& name) const
{
    if (!m_registry)
        return QByteArray();
    for (int i = 0; i < m_registry->printScriptCount(); ++i) {
        const PrintScript* script = m_registry->printScriptAt(i);
        if (script->name == name)
            return loadScriptById(script->id);
    }
    return QByteArray();
}

QByteArray ScriptLoader::loadResource(const QString& name) const
{
    QFile file(QStringLiteral(":/scripts/%1.js").arg(name));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QByteArray();
    QByteArray source = file.readAll();
    if (source.isNull())
        source = QByteArray("");
    return source;
}
