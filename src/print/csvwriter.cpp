#include "csvwriter.h"

CsvWriter::CsvWriter(const QString& delimiter)
    : m_delimiter(delimiter.isEmpty() ? QStringLiteral(";") : delimiter)
{
}

QString CsvWriter::neutralizeFormula(const QString& text)
{
    if (text.isEmpty())
        return text;
    switch (text.at(0).unicode()) {
    case '=':
    case '+':
    case '-':
    case '@':
    case '\t':
    case '\r':
        return QLatin1Char('\'') + text;
    default:
        return text;
    }
}

QString CsvWriter::quoteField(const QString& field, const QString& delimiter)
{
    if (!field.contains(delimiter) && !field.contains(QLatin1Char('"'))
        && !field.contains(QLatin1Char('\n')) && !field.contains(QLatin1Char('\r')))
        return field;
    QString quoted = field;
    quoted.replace(QLatin1String("\""), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

void CsvWriter::addField(const QString& field)
{
    if (m_rowStarted)
        m_text += m_delimiter;
    m_text += quoteField(field, m_delimiter);
    m_rowStarted = true;
}

void CsvWriter::addText(const QString& text)
{
    addField(neutralizeFormula(text));
}

void CsvWriter::addNumber(const QString& number)
{
    addField(number);
}

void CsvWriter::endRow()
{
    m_text += QLatin1String("\r\n");
    m_rowStarted = false;
}

void CsvWriter::addRow(const QStringList& texts)
{
    for (const QString& text : texts)
        addText(text);
    endRow();
}
