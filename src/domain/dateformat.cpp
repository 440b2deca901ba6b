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
    // Each form gives the day; the month and the year it lacks are today's.
    struct Form
    {
        const QRegularExpression* pattern;
        bool hasMonth;
        bool hasYear;
    };
    const Form forms[] = { { &m_dayMonthYear, true, true }, { &m_dayMonth, true, false },
        { &m_dayMonthYearDigits, true, true }, { &m_dayMonthDigits, true, false },
        { &m_day, false, false } };
    const QDate now = today();
    for (const Form& form : forms) {
        const QRegularExpressionMatch match = form.pattern->match(text);
        if (match.hasMatch())
            return QDate(form.hasYear ? match.captured(3).toInt() : now.year(),
                form.hasMonth ? match.captured(2).toInt() : now.month(), match.captured(1).toInt());
    }
    return QDate();
}
