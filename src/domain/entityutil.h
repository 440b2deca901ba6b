#ifndef ENTITYUTIL_H
#define ENTITYUTIL_H

#include <QMap>
#include <QString>
#include <QVariant>

// The property maps of customers, invoices and the company settings, and
// their text form: one "key=value" line per entry, values escaped to one line.
class EntityUtil
{
public:
    static QString escapeString(const QString& text);
    static QString unescapeString(const QString& text);
    static QString propertiesToString(const QMap<QString, QVariant>& properties);
    static void propertiesFromString(const QString& text, QMap<QString, QVariant>& properties);
    // An empty value removes the key, so that empty settings never pile up.
    static void setPropertyIfNotEmpty(
        QMap<QString, QVariant>& properties, const QString& key, const QString& value);
    static void removePropertiesWithPrefix(
        QMap<QString, QVariant>& properties, const QString& prefix);
};

#endif // ENTITYUTIL_H
