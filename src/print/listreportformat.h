#ifndef LISTREPORTFORMAT_H
#define LISTREPORTFORMAT_H

#include <QCollator>
#include <QDate>
#include <QString>
#include <QStringList>

class CsvWriter;
class QSettings;

// Formatting shared by the list reports: Finnish dates and amounts for the
// criteria texts and CSV cells, the "extraFields" setting and the CSV file
// itself.
class ListReportFormat
{
public:
    // "d.M.yyyy"; an empty text for a null date.
    static QString date(const QDate& date);
    // Cents as "1234,50" with a plain minus sign and no grouping, which
    // spreadsheets in a Finnish locale read as a number.
    static QString cents(qint64 value);
    // A scaled number with at least minFractionDigits of its digits shown.
    static QString number(qint64 value, int scale, int minFractionDigits);
    // "from - to" with either end possibly missing.
    static QString range(const QDate& from, const QDate& to);

    // The words of "GROUP/extraFields": split at commas, blanks around them
    // ignored, lower-cased, empty words dropped.
    static QStringList extraFields(QSettings* settings, const QString& group);
    static QStringList parseExtraFields(const QString& text);

    // Writes the text as UTF-8 with a byte order mark, because spreadsheet
    // programs take a CSV file without one for the legacy code page. The
    // file is replaced whole or not at all.
    static bool save(const CsvWriter& csv, const QString& fileName, QString* error);

    // Case-insensitive Finnish comparison with digits compared as numbers.
    static QCollator collator();
};

#endif // LISTREPORTFORMAT_H
