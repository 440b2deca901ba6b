#include "decimal.h"

#include <QDebug>
#include <QMetaType>

namespace {

QString decimalToString(const Decimal& decimal)
{
    const qint64 value = decimal.toLongLong();
    const int scale = decimal.scale();
    // Work on the unsigned magnitude so that the smallest qint64 prints too.
    const quint64 magnitude = value < 0 ? quint64(0) - quint64(value) : quint64(value);
    QString digits = QString::number(magnitude);
    QString text;
    if (scale > 0) {
        if (digits.size() <= scale)
            digits = QString(scale - digits.size() + 1, QLatin1Char('0')) + digits;
        text = digits.left(digits.size() - scale) + QLatin1Char('.') + digits.right(scale);
    } else {
        text = digits;
    }
    if (value < 0)
        text.prepend(QLatin1Char('-'));
    return text;
}

double decimalToDouble(const Decimal& decimal)
{
    // One division by an exact power of ten keeps the result the nearest
    // double to the decimal value.
    double power = 1.0;
    for (int i = 0; i < decimal.scale() && i < 22; ++i)
        power *= 10.0;
    return double(decimal.toLongLong()) / power;
}

} // namespace

void Decimal::registerMetaType()
{
    static const bool registered = [] {
        qRegisterMetaType<Decimal>("Decimal");
        QMetaType::registerConverter<Decimal, QString>(&decimalToString);
        QMetaType::registerConverter<Decimal, double>(&decimalToDouble);
        return true;
    }();
    Q_UNUSED(registered);
}

QDebug operator<<(QDebug debug, const Decimal& decimal)
{
    QDebugStateSaver saver(debug);
    debug.noquote().nospace() << decimalToString(decimal);
    return debug;
}
