#ifndef DECIMAL_H
#define DECIMAL_H

#include <QMetaType>
#include <QVariant>

class QDebug;

// A scaled integer: value / 10^scale. Carries exact amounts through QVariant
// into item views and scripts; arithmetic is done on the plain integers.
class Decimal
{
public:
    Decimal() = default;
    Decimal(qint64 value, int scale) : m_value(value), m_scale(scale) { }

    qint64 toLongLong() const { return m_value; }
    int scale() const { return m_scale; }
    QVariant toVariant() const { return QVariant::fromValue(*this); }

    // Registers the type with Qt's meta-type system, with conversions to
    // QString ("123.45") and double, so that item views and scripts can read
    // a Decimal held in a QVariant. Safe to call more than once.
    static void registerMetaType();

    bool operator==(const Decimal& other) const
    {
        return m_value == other.m_value && m_scale == other.m_scale;
    }
    bool operator!=(const Decimal& other) const { return !(*this == other); }

private:
    qint64 m_value = 0;
    int m_scale = 0;
};

Q_DECLARE_METATYPE(Decimal)

QDebug operator<<(QDebug debug, const Decimal& decimal);

#endif // DECIMAL_H
