#ifndef ENTITYUTIL_H
#define ENTITYUTIL_H

#include <QMap>
#include <QString>
#include <QVariant>

// The text form of the property maps of customers, invoices and the company
// settings: one "key=value" line per entry, values escaped to one line.
class EntityUtil
{
public:
    static QString escapeString(const QString& text);
    static QString unescapeString(const QString& text);
    static QString propertiesToString(const QMap<QString, QVariant>& properties);
    static void propertiesFromString(const QString& text, QMap<QString, QVariant>& properties);
};

#endif // ENTITYUTIL_H
