#include "scriptpdfwriter.h"

#include "printscriptengine.h"

#include <QCoreApplication>
#include <QPdfWriter>
#include <QSaveFile>

ScriptPdfWriter::ScriptPdfWriter()
    : m_creator(QStringLiteral("%1 %2").arg(
        QCoreApplication::applicationName(), QCoreApplication::applicationVersion()))
{
}

bool ScriptPdfWriter::write(PrintScriptEngine* engine, const QString& fileName)
{
    m_lastError.clear();
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        m_lastError = file.errorString();
        return false;
    }
    bool printed = false;
    {
        // The writer finishes the document when it goes out of scope.
        QPdfWriter writer(&file);
        writer.setTitle(m_title);
        writer.setCreator(m_creator);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageOrientation(m_orientation);
        if (m_resolution > 0)
            writer.setResolution(m_resolution);
        printed = engine->print(&writer);
    }
    if (!printed) {
        m_lastError = engine->lastError();
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        m_lastError = file.errorString();
        return false;
    }
    return true;
}
