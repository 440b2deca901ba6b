#include "listreportformat.h"

#include "csvwriter.h"
#include "domain/decimalformat.h"

#include <QLocale>
#include <QSaveFile>
#include <QSettings>

QString ListReportFormat::date(const QDate& date)
{
    return date.isValid() ? date.toString(QStringLiteral("d.M.yyyy")) : QString();
}

QString ListReportFormat::cents(qint64 value)
{
    return number(value, 2, 2);
}

QString ListReportFormat::number(qint64 value, int scale, int minFractionDigits)
{
    DecimalFormat format(scale, minFractionDigits);
    format.setLocale(QLocale(QLocale::Finnish, QLocale::Finland));
    // The locale's minus is U+2212, which no spreadsheet reads as a sign.
    format.setNegativeSign(QStringLiteral("-"));
    format.setGrouping(false);
    return format.format(value);
}

QString ListReportFormat::range(const QDate& from, const QDate& to)
{
    return QStringLiteral("%1 - %2").arg(date(from), date(to)).trimmed();
}

QStringList ListReportFormat::extraFields(QSettings* settings, const QString& group)
{
    if (!settings)
        return QStringList();
    return parseExtraFields(settings->value(group + QStringLiteral("/extraFields")).toString());
}

QStringList ListReportFormat::parseExtraFields(const QString& text)
{
    QStringList words;
    const QStringList parts = text.split(QLatin1Char(','));
    for (const QString& part : parts) {
        const QString word = part.trimmed().toLower();
        if (!word.isEmpty())
            words.append(word);
    }
    return words;
}

bool ListReportFormat::save(const CsvWriter& csv, const QString& fileName, QString* error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    file.write("\xEF\xBB\xBF");
    file.write(csv.text().toUtf8());
    if (!file.commit()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}

QCollator ListReportFormat::collator()
{
    QCollator collator(QLocale(QLocale::Finnish, QLocale::Finland));
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    return collator;
}
