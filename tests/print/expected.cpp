#include "expected.h"

#include <QFile>
#include <cmath>

namespace Expected {

long long roundHalfAway(long double value)
{
    return value < 0 ? -(long long)std::floor(-value + 0.5L) : (long long)std::floor(value + 0.5L);
}

long long rowTotal(const InvoiceItem& item, bool vatIncluded)
{
    long double amount = (long double)item.quantity / 10000 * item.amount / 10000
        * (10000 - item.discount) / 10000;
    const long double factor = 1.0L + item.vatRate / 10000.0L;
    if (item.vatExcluded && vatIncluded)
        amount *= factor;
    if (!item.vatExcluded && !vatIncluded)
        amount /= factor;
    return roundHalfAway(amount * 100);
}

long long total(const QList<InvoiceItem>& items)
{
    long long sum = 0;
    for (const InvoiceItem& item : items)
        sum += rowTotal(item);
    return sum;
}

QString euros(long long cents)
{
    QString digits = QString::number(std::llabs(cents) / 100);
    for (int i = digits.size() - 3; i > 0; i -= 3)
        digits.insert(i, QLatin1Char(' '));
    return (cents < 0 ? QStringLiteral("-") : QString()) + digits + QLatin1Char(',')
        + QStringLiteral("%1").arg(std::llabs(cents) % 100, 2, 10, QLatin1Char('0'));
}

QString plainEuros(long long cents)
{
    return euros(cents).remove(QLatin1Char(' '));
}

QString groupedReference(const QString& digits)
{
    QString result;
    for (int end = digits.size(); end > 0; end -= 5)
        result.prepend(QLatin1Char(' ') + digits.mid(qMax(0, end - 5), end - qMax(0, end - 5)));
    return result.trimmed();
}

QList<QStringList> readCsv(const QString& fileName, QChar delimiter, bool* bom)
{
    QFile file(fileName);
    QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const bool marked = bytes.startsWith("\xEF\xBB\xBF");
    if (bom)
        *bom = marked;
    const QString text = QString::fromUtf8(bytes.mid(marked ? 3 : 0));
    QList<QStringList> rows;
    QStringList row;
    QString field;
    bool quoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (quoted && c == QLatin1Char('"') && text.mid(i + 1, 1) == QLatin1String("\"")) {
            field += c;
            ++i;
        } else if (c == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (quoted || (c != delimiter && c != QLatin1Char('\r') && c != QLatin1Char('\n'))) {
            field += c;
        } else if (c != QLatin1Char('\r')) {
            row.append(field);
            field.clear();
            if (c == QLatin1Char('\n')) {
                rows.append(row);
                row.clear();
            }
        }
    }
    return rows;
}

} // namespace Expected
