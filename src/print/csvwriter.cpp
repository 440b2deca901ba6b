#include "csvwriter.h"

#include <QRegularExpression>

namespace {

// At least this many digits make "+..." a telephone number rather than a sum.
constexpr int minPhoneDigits = 7;

bool isFormulaStart(QChar c)
{
    return c == QLatin1Char('=') || c == QLatin1Char('+') || c == QLatin1Char('-')
        || c == QLatin1Char('@');
}

// A number as the program and people write it: a sign, digits in groups and
// a decimal part, perhaps a percent or euro sign.
bool isNumber(const QString& text)
{
    static const QRegularExpression number(
        QStringLiteral("^[+-]?\\d[\\d \\x{00A0}\\x{202F}]*([.,]\\d+)?[ \\x{00A0}]*[%\\x{20AC}]?$"));
    return number.match(text).hasMatch();
}

// "+358 40 123 4567", "+44 (0)20 7946-0000": digits and the separators of
// telephone numbers only, nothing a spreadsheet could call or refer to.
bool isPhoneNumber(const QString& text)
{
    static const QRegularExpression phone(QStringLiteral("^\\+\\d[\\d ()./\\-]*\\d$"));
    if (!phone.match(text).hasMatch())
        return false;
    int digits = 0;
    for (const QChar c : text)
        digits += c.isDigit() ? 1 : 0;
    return digits >= minPhoneDigits;
}

} // namespace

CsvWriter::CsvWriter(const QString& delimiter)
    : m_delimiter(delimiter.isEmpty() ? QStringLiteral(";") : delimiter)
{
}

QString CsvWriter::neutralizeFormula(const QString& text)
{
    // Spreadsheets skip leading tabs and carriage returns before a formula.
    int start = 0;
    while (start < text.size()
        && (text.at(start) == QLatin1Char('\t') || text.at(start) == QLatin1Char('\r')))
        ++start;
    const QString rest = text.mid(start);
    if (rest.size() < 2 || !isFormulaStart(rest.at(0)))
        return text;
    if ((rest.at(0) == QLatin1Char('+') || rest.at(0) == QLatin1Char('-'))
        && (isNumber(rest) || isPhoneNumber(rest)))
        return text;
    return QLatin1Char('\'') + text;
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
