#include "ravelofilereader.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QStringDecoder>

#include <optional>

namespace {

const QByteArray byteOrderMark("\xEF\xBB\xBF");
const QString dateColumn = QStringLiteral("date");
const QString startColumn = QStringLiteral("start");
const QString endColumn = QStringLiteral("end");
const QString durationColumn = QStringLiteral("duration");
const QString customerColumn = QStringLiteral("customer");
const QString workTypeColumn = QStringLiteral("worktype");
const QString descriptionColumn = QStringLiteral("description");
constexpr int minutesPerHour = 60;
constexpr int minutesPerDay = 24 * minutesPerHour;

// "9:05" or "09:05"; hours and minutes.
std::optional<QTime> parseTime(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,2}):(\\d{2})$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const int hours = match.captured(1).toInt();
    const int minutes = match.captured(2).toInt();
    if (hours >= 24 || minutes >= minutesPerHour)
        return std::nullopt;
    return QTime(hours, minutes);
}

// "1:30": a positive length of at most a day, in minutes.
std::optional<int> parseDuration(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,2}):(\\d{2})$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const int minutes = match.captured(1).toInt() * minutesPerHour + match.captured(2).toInt();
    if (match.captured(2).toInt() >= minutesPerHour || minutes <= 0 || minutes > minutesPerDay)
        return std::nullopt;
    return minutes;
}

std::optional<QDate> parseDate(const QString& text)
{
    static const QRegularExpression pattern(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}$"));
    if (!pattern.match(text).hasMatch())
        return std::nullopt;
    const QDate date = QDate::fromString(text, Qt::ISODate);
    if (!date.isValid())
        return std::nullopt;
    return date;
}

} // namespace

const QString RaveloFileReader::fileSuffix = QStringLiteral("rvt");

void RaveloFileReader::clear()
{
    m_entries.clear();
    m_errors.clear();
}

void RaveloFileReader::addError(const QString& fileName, int line, const QString& text)
{
    m_errors.append(QStringLiteral("%1:%2: %3").arg(fileName).arg(line).arg(text));
}

bool RaveloFileReader::readFile(const QString& path)
{
    const QString fileName = QFileInfo(path).fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        m_errors.append(QStringLiteral("%1: tiedoston avaaminen epäonnistui: %2")
                            .arg(fileName, file.errorString()));
        return false;
    }
    return read(file.readAll(), fileName);
}

bool RaveloFileReader::readDirectory(const QString& path)
{
    const QDir dir(path);
    if (path.isEmpty() || !dir.exists()) {
        m_errors.append(QStringLiteral("Hakemistoa \"%1\" ei löytynyt.").arg(path));
        return false;
    }
    bool ok = true;
    const QStringList names
        = dir.entryList({ QStringLiteral("*.") + fileSuffix }, QDir::Files, QDir::Name);
    for (const QString& name : names)
        ok = readFile(dir.filePath(name)) && ok;
    return ok;
}

bool RaveloFileReader::read(const QByteArray& data, const QString& fileName)
{
    const int errorsBefore = m_errors.size();
    QByteArray text = data;
    if (text.startsWith(byteOrderMark))
        text.remove(0, byteOrderMark.size());
    QList<QByteArray> lines = text.split('\n');
    // The line feed that ends the last line starts no line of its own.
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();

    QHash<QString, int> columns;
    bool headerSeen = false;
    QHash<QByteArray, int> repeats;
    for (int index = 0; index < lines.size(); ++index) {
        const int lineNumber = index + 1;
        QByteArray raw = lines.at(index);
        if (raw.endsWith('\r'))
            raw.chop(1);
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
        const QString line = decoder.decode(raw);
        if (decoder.hasError()) {
            addError(fileName, lineNumber, QStringLiteral("rivi ei ole UTF-8-tekstiä"));
            if (!headerSeen)
                return false;
            continue;
        }
        // A blank line holds no entry.
        if (line.trimmed().isEmpty())
            continue;
        const QStringList fields = line.split(QLatin1Char('\t'));

        if (!headerSeen) {
            headerSeen = true;
            bool headerOk = true;
            for (int i = 0; i < fields.size(); ++i) {
                const QString name = fields.at(i).trimmed().toLower();
                static const QStringList known = { dateColumn, startColumn, endColumn,
                    durationColumn, customerColumn, workTypeColumn, descriptionColumn };
                if (!known.contains(name)) {
                    addError(fileName, lineNumber,
                        QStringLiteral("tuntematon sarake \"%1\"").arg(fields.at(i).trimmed()));
                    headerOk = false;
                } else if (columns.contains(name)) {
                    addError(fileName, lineNumber,
                        QStringLiteral("sarake \"%1\" on otsikossa kahdesti").arg(name));
                    headerOk = false;
                } else {
                    columns.insert(name, i);
                }
            }
            QStringList required
                = { dateColumn, customerColumn, workTypeColumn, descriptionColumn };
            // Start and end come together; without them the duration is needed.
            if (columns.contains(startColumn) || columns.contains(endColumn)
                || !columns.contains(durationColumn))
                required << startColumn << endColumn;
            for (const QString& name : qAsConst(required)) {
                if (!columns.contains(name)) {
                    addError(fileName, lineNumber,
                        QStringLiteral("sarake \"%1\" puuttuu otsikosta").arg(name));
                    headerOk = false;
                }
            }
            // Lines of an unknown layout cannot be read at all.
            if (!headerOk)
                return false;
            continue;
        }

        if (fields.size() != columns.size()) {
            addError(fileName, lineNumber,
                QStringLiteral("rivillä on %1 kenttää, otsikossa %2")
                    .arg(fields.size())
                    .arg(columns.size()));
            continue;
        }
        auto field = [&](const QString& name) {
            return columns.contains(name) ? fields.at(columns.value(name)).trimmed() : QString();
        };

        RaveloEntry entry;
        entry.fileName = fileName;
        entry.lineNumber = lineNumber;
        QStringList problems;
        const std::optional<QDate> date = parseDate(field(dateColumn));
        if (date)
            entry.date = *date;
        else
            problems << QStringLiteral("virheellinen päivämäärä \"%1\"").arg(field(dateColumn));

        const QString startText = field(startColumn);
        const QString endText = field(endColumn);
        const QString durationText = field(durationColumn);
        std::optional<int> minutes;
        if (!startText.isEmpty() || !endText.isEmpty()) {
            const std::optional<QTime> start = parseTime(startText);
            const std::optional<QTime> end = parseTime(endText);
            if (!start)
                problems << QStringLiteral("virheellinen alkuaika \"%1\"").arg(startText);
            if (!end)
                problems << QStringLiteral("virheellinen loppuaika \"%1\"").arg(endText);
            if (start && end) {
                if (*end <= *start) {
                    problems << QStringLiteral("loppuaika ei ole alkuajan jälkeen");
                } else {
                    entry.start = *start;
                    entry.end = *end;
                    minutes = start->secsTo(*end) / minutesPerHour;
                }
            }
        }
        if (!durationText.isEmpty()) {
            const std::optional<int> duration = parseDuration(durationText);
            if (!duration)
                problems << QStringLiteral("virheellinen kesto \"%1\"").arg(durationText);
            else if (minutes && *minutes != *duration)
                problems << QStringLiteral("kesto ei vastaa alku- ja loppuaikaa");
            else
                minutes = duration;
        }
        if (startText.isEmpty() && endText.isEmpty() && durationText.isEmpty())
            problems << QStringLiteral("aika puuttuu");
        if (minutes)
            entry.minutes = *minutes;

        entry.customer = field(customerColumn);
        entry.workType = field(workTypeColumn);
        entry.description = field(descriptionColumn);
        if (entry.customer.isEmpty())
            problems << QStringLiteral("asiakas puuttuu");
        if (entry.workType.isEmpty())
            problems << QStringLiteral("työlaji puuttuu");

        if (!problems.isEmpty()) {
            addError(fileName, lineNumber, problems.join(QLatin1String(", ")));
            continue;
        }
        // The same line twice is two entries; the second gets its own id.
        const QByteArray hash = QCryptographicHash::hash(raw, QCryptographicHash::Sha1).toHex();
        const int seen = ++repeats[hash];
        entry.id = seen == 1
            ? QStringLiteral("%1/%2").arg(fileName, QLatin1String(hash))
            : QStringLiteral("%1/%2-%3").arg(fileName, QLatin1String(hash)).arg(seen);
        m_entries.append(entry);
    }
    if (!headerSeen)
        addError(fileName, 1, QStringLiteral("otsikkorivi puuttuu"));
    return m_errors.size() == errorsBefore;
}
