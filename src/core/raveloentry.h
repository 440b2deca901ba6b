#ifndef RAVELOENTRY_H
#define RAVELOENTRY_H

#include <QDate>
#include <QString>
#include <QTime>

// One time entry of a "*.rvt" file of the time-tracking program. The id
// names the entry for good: the file's name and a hash of the line, so an
// entry that has been invoiced is known again on the next import.
class RaveloEntry
{
public:
    QString id;
    QString fileName;
    int lineNumber = 0;
    QDate date;
    // Null when the file gives only a duration.
    QTime start;
    QTime end;
    int minutes = 0;
    QString customer;
    QString workType;
    QString description;
};

#endif // RAVELOENTRY_H
