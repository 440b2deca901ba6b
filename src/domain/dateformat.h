#ifndef DATEFORMAT_H
#define DATEFORMAT_H

#include <QDate>
#include <QRegularExpression>
#include <QString>

// Dates the Finnish way: "d.M.yyyy" out; in, the short forms users type
// ("15", "1503", "15.3", "15032024", "15.3.2024"), with the missing fields
// taken from today. A comma is accepted wherever a point is.
class DateFormat
{
public:
    // A null today means the current date at the time of each parse.
    explicit DateFormat(const QDate& today = QDate());

    void setToday(const QDate& today) { m_today = today; }
    QDate today() const;

    QString format(const QDate& date) const;
    QDate parse(const QString& text) const;

private:
    QRegularExpression m_dayMonthYear;
    QRegularExpression m_dayMonth;
    QRegularExpression m_dayMonthYearDigits;
    QRegularExpression m_dayMonthDigits;
    QRegularExpression m_day;
    QDate m_today;
};

#endif // DATEFORMAT_H
