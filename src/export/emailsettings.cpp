#include "emailsettings.h"

#include <QSettings>

namespace {

const QString group = QStringLiteral("email");
const QString databasesArray = QStringLiteral("databases");
const QString numberKey = QStringLiteral("number");
const QString appKey = QStringLiteral("app");
const QString appPathKey = QStringLiteral("appPath");
const QString appArgsKey = QStringLiteral("appArgs");

EmailSettings::Program readProgram(const QSettings* settings)
{
    return { settings->value(appKey).toString(), settings->value(appPathKey).toString(),
        settings->value(appArgsKey).toString() };
}

void writeProgram(QSettings* settings, const EmailSettings::Program& program)
{
    settings->setValue(appKey, program.app);
    settings->setValue(appPathKey, program.appPath);
    settings->setValue(appArgsKey, program.appArgs);
}

} // namespace

EmailSettings::EmailSettings(QSettings* settings) : m_settings(settings) { }

EmailSettings::Program EmailSettings::general() const
{
    if (!m_settings)
        return {};
    m_settings->beginGroup(group);
    const Program program = readProgram(m_settings);
    m_settings->endGroup();
    return program;
}

void EmailSettings::setGeneral(const Program& program)
{
    if (!m_settings)
        return;
    m_settings->beginGroup(group);
    writeProgram(m_settings, program);
    m_settings->endGroup();
}

QList<EmailSettings::DatabaseEntry> EmailSettings::databaseEntries() const
{
    QList<DatabaseEntry> entries;
    if (!m_settings)
        return entries;
    m_settings->beginGroup(group);
    const int count = m_settings->beginReadArray(databasesArray);
    for (int i = 0; i < count; ++i) {
        m_settings->setArrayIndex(i);
        entries.append({ m_settings->value(numberKey, 0).toInt(), readProgram(m_settings) });
    }
    m_settings->endArray();
    m_settings->endGroup();
    return entries;
}

void EmailSettings::setDatabaseEntries(const QList<DatabaseEntry>& entries)
{
    if (!m_settings)
        return;
    m_settings->beginGroup(group);
    // Rows of a longer old array would otherwise stay behind.
    m_settings->remove(databasesArray);
    m_settings->beginWriteArray(databasesArray, static_cast<int>(entries.size()));
    for (int i = 0; i < entries.size(); ++i) {
        m_settings->setArrayIndex(i);
        m_settings->setValue(numberKey, entries.at(i).number);
        writeProgram(m_settings, entries.at(i).program);
    }
    m_settings->endArray();
    m_settings->endGroup();
}

EmailSettings::Program EmailSettings::forDatabase(int number) const
{
    if (number >= 1) {
        const QList<DatabaseEntry> entries = databaseEntries();
        for (const DatabaseEntry& entry : entries) {
            if (entry.number == number)
                return entry.program;
        }
    }
    return general();
}
