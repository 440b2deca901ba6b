#include "fixedwidthline.h"

#include <QTextStream>

namespace {

constexpr int centuryStart = 2000;
const QString noDate = QStringLiteral("000000");

} // namespace

bool FixedWidthLine::read(QTextStream* stream, int maxLength)
{
    m_position = 0;
    m_error = false;
    m_errorString.clear();
    m_tooLongLength = 0;
    while (!stream->atEnd()) {
        // One character more than allowed tells a long line from a full one.
        m_text = stream->readLine(maxLength + 1);
        if (m_text.size() > maxLength) {
            // The rest of a long line is read in pieces and dropped, so that
            // a file without line ends never sits in memory whole.
            qsizetype length = m_text.size();
            QString piece;
            do {
                piece = stream->readLine(maxLength + 1);
                length += piece.size();
            } while (piece.size() > maxLength);
            m_text.clear();
            m_tooLongLength = length;
            return true;
        }
        if (!m_text.isEmpty())
            return true;
    }
    m_text.clear();
    return false;
}

QString FixedWidthLine::buildErrorMessage(const QString& label, const QString& value)
{
    return tr("Invalid %1: %2").arg(label, value);
}

bool FixedWidthLine::fail(const QString& label, const QString& value)
{
    m_error = true;
    m_errorString = buildErrorMessage(label, value);
    return false;
}

QChar FixedWidthLine::readChar(const QString& label)
{
    if (m_position >= m_text.size()) {
        fail(label, QString());
        return QChar();
    }
    return m_text.at(m_position++);
}

QString FixedWidthLine::readString(int width, const QString& label)
{
    const QString field = m_text.mid(m_position, width);
    m_position += width;
    if (field.size() < width)
        fail(label, field);
    return field;
}

int FixedWidthLine::readNumber(int width, const QString& label, bool& ok)
{
    const QString field = readString(width, label);
    const int value = field.toInt(&ok, 10);
    if (!ok)
        fail(label, field);
    return ok ? value : 0;
}

QDate FixedWidthLine::readDate(const QString& label, bool& ok)
{
    const QString field = readString(6, label);
    ok = true;
    if (field == noDate)
        return QDate();
    bool yearOk = false;
    bool monthOk = false;
    bool dayOk = false;
    const int year = field.mid(0, 2).toInt(&yearOk, 10);
    const int month = field.mid(2, 2).toInt(&monthOk, 10);
    const int day = field.mid(4, 2).toInt(&dayOk, 10);
    const QDate date(centuryStart + year, month, day);
    if (field.size() != 6 || !yearOk || !monthOk || !dayOk || !date.isValid()) {
        ok = fail(label, field);
        return QDate();
    }
    return date;
}

QTime FixedWidthLine::readTime(const QString& label, bool& ok)
{
    const QString field = readString(4, label);
    bool hourOk = false;
    bool minuteOk = false;
    const QTime time(field.mid(0, 2).toInt(&hourOk, 10), field.mid(2, 2).toInt(&minuteOk, 10));
    ok = field.size() == 4 && hourOk && minuteOk && time.isValid();
    if (!ok) {
        fail(label, field);
        return QTime();
    }
    return time;
}

QString FixedWidthLine::withoutLeadingZeros(const QString& text)
{
    qsizetype zeros = 0;
    while (zeros < text.size() && text.at(zeros) == QLatin1Char('0'))
        ++zeros;
    return text.mid(zeros);
}
