#include "entityutil.h"

#include <QStringList>

QString EntityUtil::escapeString(const QString& text)
{
    QString result = text;
    result.remove(QLatin1Char('\r'));
    result.replace(QLatin1String("\\"), QLatin1String("\\\\"));
    result.replace(QLatin1String("\n"), QLatin1String("\\n"));
    return result;
}

QString EntityUtil::unescapeString(const QString& text)
{
    // Deliberately simple: a "\n" preceded by a backslash stays as it is, so
    // a value ending in an escaped backslash followed by an escaped line feed
    // does not come back exactly. Stored data depends on this reading.
    QString result = text;
    const QString escapedLineFeed = QStringLiteral("\\n");
    qsizetype pos = result.indexOf(escapedLineFeed);
    while (pos >= 0) {
        if (pos == 0 || result.at(pos - 1) != QLatin1Char('\\'))
            result.replace(pos, 2, QLatin1String("\n"));
        pos = result.indexOf(escapedLineFeed, pos + 1);
    }
    result.replace(QLatin1String("\\\\"), QLatin1String("\\"));
    return result;
}

QString EntityUtil::propertiesToString(const QMap<QString, QVariant>& properties)
{
    QString result;
    for (auto it = properties.constBegin(); it != properties.constEnd(); ++it) {
        result += it.key();
        result += QLatin1Char('=');
        result += escapeString(it.value().toString());
        result += QLatin1Char('\n');
    }
    return result;
}

void EntityUtil::propertiesFromString(const QString& text, QMap<QString, QVariant>& properties)
{
    properties.clear();
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        if (eq < 0)
            continue;
        properties.insert(line.left(eq), QVariant(unescapeString(line.mid(eq + 1))));
    }
}

void EntityUtil::setPropertyIfNotEmpty(
    QMap<QString, QVariant>& properties, const QString& key, const QString& value)
{
    if (value.isEmpty())
        properties.remove(key);
    else
        properties.insert(key, value);
}

void EntityUtil::removePropertiesWithPrefix(
    QMap<QString, QVariant>& properties, const QString& prefix)
{
    for (auto it = properties.begin(); it != properties.end();) {
        if (it.key().startsWith(prefix))
            it = properties.erase(it);
        else
            ++it;
    }
}
