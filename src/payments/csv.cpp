#include "csv.h"

#include <QTextStream>

namespace {

const QChar quote = QLatin1Char('"');

} // namespace

CSV::CSV(QTextStream* stream, QChar delimiter) : m_stream(stream), m_delimiter(delimiter) { }

bool CSV::readRow(QStringList* fields)
{
    fields->clear();
    if (m_stream->atEnd())
        return false;
    QString field;
    bool quoted = false;
    QString line = m_stream->readLine();
    for (;;) {
        for (qsizetype i = 0; i < line.size(); ++i) {
            const QChar c = line.at(i);
            if (quoted) {
                if (c == quote && i + 1 < line.size() && line.at(i + 1) == quote) {
                    field += quote;
                    ++i;
                } else if (c == quote) {
                    quoted = false;
                } else {
                    field += c;
                }
            } else if (c == quote) {
                quoted = true;
            } else if (c == m_delimiter) {
                fields->append(field);
                field.clear();
            } else {
                field += c;
            }
        }
        // A quoted field goes on over the line break.
        if (!quoted || m_stream->atEnd())
            break;
        field += QLatin1Char('\n');
        line = m_stream->readLine();
    }
    fields->append(field);
    return true;
}

QChar CSV::guessDelimiter(const QString& sample)
{
    bool quoted = false;
    for (const QChar c : sample) {
        if (c == quote)
            quoted = !quoted;
        else if (!quoted
            && (c == QLatin1Char(',') || c == QLatin1Char(';') || c == QLatin1Char('\t')))
            return c;
    }
    return QLatin1Char(',');
}
