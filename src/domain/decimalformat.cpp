#include "decimalformat.h"

namespace {

using ParseStatus = DecimalFormat::ParseStatus;

bool isTooLarge(qint64 value)
{
    return value > DecimalFormat::maxParsedValue || value < -DecimalFormat::maxParsedValue;
}

// Digits with perhaps a sign, as toLongLong() reads them: a number even when
// there are too many digits for 64 bits.
bool isInteger(QStringView text)
{
    text = text.trimmed();
    if (text.startsWith(u'+') || text.startsWith(u'-'))
        text = text.mid(1);
    if (text.isEmpty())
        return false;
    for (const QChar c : text) {
        if (c < u'0' || c > u'9')
            return false;
    }
    return true;
}

ParseStatus readInteger(QStringView text, qint64& value)
{
    bool ok = false;
    value = text.toLongLong(&ok);
    if (!ok)
        return isInteger(text) ? ParseStatus::TooLarge : ParseStatus::Invalid;
    return isTooLarge(value) ? ParseStatus::TooLarge : ParseStatus::Ok;
}

} // namespace

DecimalFormat::DecimalFormat()
{
    setLocale(QLocale::system());
}

DecimalFormat::DecimalFormat(int fractionDigits, int minFractionDigits) : DecimalFormat()
{
    setFractionDigits(fractionDigits);
    setMinFractionDigits(minFractionDigits);
}

void DecimalFormat::setFractionDigits(int digits)
{
    m_fractionDigits = digits;
    m_scale = 1;
    // 10^9 is the largest power of ten a 32-bit scale can hold.
    for (int i = 0; i < digits && i < 9; ++i)
        m_scale *= 10;
}

void DecimalFormat::setLocale(const QLocale& locale)
{
    m_locale = locale;
    m_decimalPoint = locale.decimalPoint();
    m_negativeSign = locale.negativeSign();
}

QString DecimalFormat::format(qint64 value) const
{
    const quint64 magnitude = value < 0 ? quint64(0) - quint64(value) : quint64(value);
    const quint64 integerPart = magnitude / quint64(m_scale);
    const quint64 fractionPart = magnitude % quint64(m_scale);

    QString fraction;
    if (m_fractionDigits > 0) {
        fraction = QString::number(fractionPart);
        if (fraction.size() < m_fractionDigits)
            fraction.prepend(QString(m_fractionDigits - fraction.size(), QLatin1Char('0')));
    }
    while (fraction.size() > m_minFractionDigits && fraction.endsWith(QLatin1Char('0')))
        fraction.chop(1);

    QString result;
    if (value < 0)
        result += m_negativeSign;
    if (m_grouping)
        result += m_locale.toString(integerPart);
    else
        result += QString::number(integerPart);
    if (!fraction.isEmpty()) {
        result += m_decimalPoint;
        result += fraction;
    }
    return result;
}

qint64 DecimalFormat::parse(const QString& text, bool& ok) const
{
    ParseStatus status = ParseStatus::Invalid;
    const qint64 result = parse(text, status);
    ok = status == ParseStatus::Ok;
    return result;
}

qint64 DecimalFormat::parse(const QString& text, ParseStatus& status) const
{
    status = ParseStatus::Invalid;
    qsizetype start = 0;
    bool negative = false;
    if (text.startsWith(QLatin1Char('-'))
        || (!m_negativeSign.isEmpty() && text.startsWith(m_negativeSign))) {
        negative = true;
        start = 1;
    }

    qsizetype point = -1;
    if (!m_decimalPoint.isEmpty())
        point = text.indexOf(m_decimalPoint.at(0), start);
    if (point < 0)
        point = text.indexOf(QLatin1Char('.'), start);

    // The integer part is within the 32-bit range here, so the scaled value
    // fits in 64 bits and can be checked before it is returned.
    qint64 integer = 0;
    if (point < 0 || point > start) {
        const QStringView digits = point < 0 ? QStringView(text).mid(start)
                                             : QStringView(text).mid(start, point - start);
        const ParseStatus integerStatus = readInteger(digits, integer);
        if (integerStatus != ParseStatus::Ok) {
            status = integerStatus;
            return 0;
        }
    }
    qint64 fraction = 0;
    if (point >= 0) {
        const int digits = qMax(0, m_fractionDigits);
        QString fractionText = text.mid(point + 1).left(digits);
        if (fractionText.size() < digits)
            fractionText.append(QString(digits - fractionText.size(), QLatin1Char('0')));
        // With no fraction digits there is nothing to read after the point.
        if (!fractionText.isEmpty()) {
            bool fractionOk = false;
            fraction = fractionText.toInt(&fractionOk);
            if (!fractionOk)
                return 0;
        }
    }
    qint64 result = integer * m_scale + (integer < 0 ? -fraction : fraction);
    if (negative)
        result = -result;
    if (isTooLarge(result)) {
        status = ParseStatus::TooLarge;
        return 0;
    }
    status = ParseStatus::Ok;
    return result;
}
