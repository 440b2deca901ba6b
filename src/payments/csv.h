#ifndef CSV_H
#define CSV_H

#include <QChar>
#include <QStringList>

class QTextStream;

// Splits the lines of a CSV text into fields: fields are separated by the
// delimiter, a field in double quotes may hold the delimiter, line breaks
// and doubled quotes.
class CSV
{
public:
    CSV(QTextStream* stream, QChar delimiter);

    // The next row; false at the end of input.
    bool readRow(QStringList* fields);

    // The first comma, semicolon or tab outside double quotes; a comma when
    // there is none.
    static QChar guessDelimiter(const QString& sample);

private:
    QTextStream* m_stream;
    QChar m_delimiter;
};

#endif // CSV_H
