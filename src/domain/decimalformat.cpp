#include "decimalformat.h"

namespace {

// Parsing deliberately works in 32-bit signed integers; the wrap-around is
// done on unsigned values so that an overlong text gives a defined result.
qint32 wrapAdd(qint32 a, qint32 b)
{
    return qint32(quint32(a) + quint32(b));
}

qint32 wrapMultiply(qint32 a, qint32 b)
{
    return qint32(quint32(a) * quint32(b));
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
    ok = false;
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

    qint32 result = 0;
    if (point < 0) {
        bool intOk = false;
        const qint32 integer = QStringView(text).mid(start).toInt(&intOk);
        if (!intOk)
            return 0;
        result = wrapMultiply(integer, m_scale);
    } else {
        qint32 integer = 0;
        if (point > start) {
            bool intOk = false;
            integer = QStringView(text).mid(start, point - start).toInt(&intOk);
            if (!intOk)
                return 0;
        }
        const int digits = qMax(0, m_fractionDigits);
        QString fractionText = text.mid(point + 1).left(digits);
        if (fractionText.size() < digits)
            fractionText.append(QString(digits - fractionText.size(), QLatin1Char('0')));
        qint32 fraction = 0;
        // With no fraction digits there is nothing to read after the point.
        if (!fractionText.isEmpty()) {
            bool fractionOk = false;
            fraction = fractionText.toInt(&fractionOk);
            if (!fractionOk)
                return 0;
        }
        result = wrapMultiply(integer, m_scale);
        result
            = integer < 0 ? wrapAdd(result, wrapMultiply(fraction, -1)) : wrapAdd(result, fraction);
    }
    if (negative)
        result = wrapMultiply(result, -1);
    ok = true;
    return qint64(result);
}
