#ifndef DECIMALFORMAT_H
#define DECIMALFORMAT_H

#include <QLocale>
#include <QString>

#include <limits>

// Formats a scaled integer (value / 10^fractionDigits) in the user's locale
// and parses it back. Parsing works in 32 bits: a text whose scaled value
// does not fit is refused as too large, never wrapped into another number.
class DecimalFormat
{
public:
    enum class ParseStatus
    {
        Ok,
        Invalid,
        // A number, but its scaled value is beyond maxParsedValue either way.
        TooLarge
    };
    // The largest scaled magnitude that parse() accepts.
    static constexpr qint64 maxParsedValue = std::numeric_limits<qint32>::max();

    DecimalFormat();
    DecimalFormat(int fractionDigits, int minFractionDigits);

    int fractionDigits() const { return m_fractionDigits; }
    void setFractionDigits(int digits);
    int minFractionDigits() const { return m_minFractionDigits; }
    void setMinFractionDigits(int digits) { m_minFractionDigits = digits; }
    QString decimalPoint() const { return m_decimalPoint; }
    void setDecimalPoint(const QString& decimalPoint) { m_decimalPoint = decimalPoint; }
    QString negativeSign() const { return m_negativeSign; }
    void setNegativeSign(const QString& negativeSign) { m_negativeSign = negativeSign; }
    bool grouping() const { return m_grouping; }
    void setGrouping(bool grouping) { m_grouping = grouping; }
    QLocale locale() const { return m_locale; }
    // Also takes the decimal point and the negative sign of the new locale.
    void setLocale(const QLocale& locale);

    QString format(qint64 value) const;
    // A text that is no number or does not fit gives 0 with ok false.
    qint64 parse(const QString& text, bool& ok) const;
    // The same, telling a number that does not fit from one that is no number.
    qint64 parse(const QString& text, ParseStatus& status) const;

private:
    QLocale m_locale;
    QString m_decimalPoint;
    QString m_negativeSign;
    qint32 m_scale = 1;
    int m_fractionDigits = 0;
    int m_minFractionDigits = 0;
    bool m_grouping = true;
};

#endif // DECIMALFORMAT_H
