#ifndef RAVELOFILEREADER_H
#define RAVELOFILEREADER_H

#include "core/raveloentry.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// Reads the tab-separated time-entry files ("*.rvt") of the time-tracking
// program: UTF-8 with or without a byte-order mark, a header line naming the
// columns, then one entry a line. Reading is strict: every bad line is
// reported as "file:line: reason" and nothing is dropped without a word;
// the good lines of a file are kept beside the errors so that the user sees
// the whole picture, but callers must not invoice while errors() is not
// empty.
class RaveloFileReader
{
public:
    static const QString fileSuffix;

    // Reads the entries of data, the contents of a file named fileName (the
    // name without a directory is what ids and messages carry). False when
    // any line is bad.
    bool read(const QByteArray& data, const QString& fileName);
    bool readFile(const QString& path);
    // Every "*.rvt" file of the directory in the order of their names.
    bool readDirectory(const QString& path);
    void clear();

    const QList<RaveloEntry>& entries() const { return m_entries; }
    const QStringList& errors() const { return m_errors; }
    // The errors, one a line.
    QString lastError() const { return m_errors.join(QLatin1Char('\n')); }

private:
    void addError(const QString& fileName, int line, const QString& text);

    QList<RaveloEntry> m_entries;
    QStringList m_errors;
};

#endif // RAVELOFILEREADER_H
