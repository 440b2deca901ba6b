#include "decimal.h"

#include <QDebug>

QDebug operator<<(QDebug debug, const Decimal& decimal)
{
    QDebugStateSaver saver(debug);
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
    debug.noquote().nospace() << text;
    return debug;
}
