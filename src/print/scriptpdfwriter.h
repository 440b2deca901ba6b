#ifndef SCRIPTPDFWRITER_H
#define SCRIPTPDFWRITER_H

#include <QPageLayout>
#include <QString>

class PrintScriptEngine;

// Prints a script into an A4 PDF file. The file is written beside its final
// name and moved into place only when the whole script ran, so a failing
// script never leaves a half-written or emptied PDF behind.
class ScriptPdfWriter
{
public:
    ScriptPdfWriter();

    void setTitle(const QString& title) { m_title = title; }
    QString title() const { return m_title; }
    // Defaults to the application's name and version.
    void setCreator(const QString& creator) { m_creator = creator; }
    QString creator() const { return m_creator; }
    void setOrientation(QPageLayout::Orientation orientation) { m_orientation = orientation; }
    QPageLayout::Orientation orientation() const { return m_orientation; }
    // Dots per inch of the PDF's coordinate system (the writer's default when 0).
    void setResolution(int dpi) { m_resolution = dpi; }

    bool write(PrintScriptEngine* engine, const QString& fileName);
    QString lastError() const { return m_lastError; }

private:
    QString m_title;
    QString m_creator;
    QPageLayout::Orientation m_orientation = QPageLayout::Portrait;
    int m_resolution = 0;
    QString m_lastError;
};

#endif // SCRIPTPDFWRITER_H
