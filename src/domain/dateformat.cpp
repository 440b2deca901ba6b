#include "dateformat.h"

DateFormat::DateFormat(const QDate& today)
    : m_dayMonthYear(QStringLiteral("^(\\d{1,2})[\\.,](\\d{1,2})[\\.,](\\d{4})$"))
    , m_dayMonth(QStringLiteral("^(\\d{1,2})[\\.,](\\d{1,2})[\\.,]?$"))
    , m_dayMonthYearDigits(QStringLiteral("^(\\d{2})(\\d{2})(\\d{4})$"))
    , m_dayMonthDigits(QStringLiteral("^(\\d{2})(\\d{1,2})$"))
    , m_day(QStringLiteral("^(\\d{1,2})[\\.,]?$"))
    , m_today(today)
{
}

QDate DateFormat::today() const
{
    return m_today.isValid() ? m_today : QDate::currentDate();
}

QString DateFormat::format(const QDate& date) const
{
    return date.toString(QStringLiteral("d.M.yyyy"));
}

QDate DateFormat::parse(const QString& text) const
{
    const QDate now = today();
    QRegularExpressionMatch match = m_dayMonthYear.match(text);
    if (match.hasMatch())
        return QDate(
            match.captured(3).toInt(), match.captured(2).toInt(), match.captured(1).toInt());
    match = m_dayMonth.match(text);
    if (match.hasMatch())
        return QDate(now.year(), match.captured(2).toInt(), match.captured(1).toInt());
    match = m_dayMonthYearDigits.match(text);
    if (match.hasMatch())
        return QDate(
            match.captured(3).toInt(), match.captured(2).toInt(), match.captured(1).toInt());
    match = m_dayMonthDigits.match(text);
    if (match.hasMatch())
        return QDate(now.year(), match.captured(2).toInt(), match.captured(1).toInt());
    match = m_day.match(text);
    if (match.hasMatch())
        return QDate(now.year(), now.month(), match.captured(1).toInt());
    return QDate();
}
