#include "scriptloader.h"

#include "storedscriptsource.h"

#include <QFile>

ScriptLoader::ScriptLoader(const StoredScriptSource* source) : m_source(source) { }

QByteArray ScriptLoader::loadScriptById(int id) const
{
    return m_source ? m_source->storedScriptSource(id) : QByteArray();
}

QByteArray ScriptLoader::loadScriptByName(const QString& name) const
{
    if (!m_source)
        return QByteArray();
    const int id = m_source->storedScriptId(name);
    return id < 0 ? QByteArray() : loadScriptById(id);
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
