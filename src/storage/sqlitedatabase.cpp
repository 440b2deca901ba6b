#include "sqlitedatabase.h"
#include "domain/logging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlError>

SQLiteDatabase::SQLiteDatabase(QObject* parent) : Database(QStringLiteral("sqlite"), parent) { }

bool SQLiteDatabase::driverAvailable() const
{
    return QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE"));
}

bool SQLiteDatabase::exists() const
{
    return m_existed;
}

bool SQLiteDatabase::openEntry(QSettings* entry)
{
    m_lastError.clear();
    m_fileName = entry->value(QStringLiteral("filename")).toString();
    if (m_fileName.isEmpty()) {
        m_lastError = tr("Tietokantatiedoston nimeä ei ole annettu");
        return false;
    }

    qCDebug(logDatabase).noquote()
        << QStringLiteral("Avataan tietokanta sqlite://%1").arg(m_fileName);
    QString problem;
    m_fileStatus = checkFile(m_fileName, &problem);
    // A file that is there but cannot be used still exists: it is not to be
    // created anew.
    m_existed = m_fileStatus == FileFound
        || (m_fileStatus == FileUnusable && QFileInfo::exists(m_fileName));
    if (m_fileStatus == FileUnusable)
        return fail(problem);
    if (!m_existed && !isCreateIfNotExist()) {
        // Not opened at all: the driver would leave an empty file behind.
        m_lastError = tr("Tietokantatiedostoa %1 ei ole olemassa").arg(m_fileName);
        return false;
    }

    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
        db.setDatabaseName(m_fileName);
        if (!db.open()) {
            m_fileStatus = FileUnusable;
            return fail(tr("Tietokantatiedostoa %1 ei voi avata: %2")
                            .arg(m_fileName, db.lastError().text()));
        }
    }

    if (!m_existed) {
        m_existed = createTables(
            QStringLiteral(":/sql/sqlite.sql"), entry->value(QStringLiteral("name")).toString());
        if (!m_existed)
            return false;
    }
    return upgrade(m_fileName);
}

SQLiteDatabase::FileStatus SQLiteDatabase::checkFile(const QString& fileName, QString* problem)
{
    const QFileInfo file(fileName);
    const QString path = QDir::toNativeSeparators(file.absoluteFilePath());
    QFileInfo dir(file.absolutePath());
    auto unusable = [&](const QString& cause) {
        if (problem)
            *problem = tr("Tietokantatiedostoa %1 ei voi avata: %2").arg(path, cause);
        return FileUnusable;
    };
    auto noWrite = [&] {
        // Besides the file SQLite writes its journal into the directory.
        return unusable(tr("hakemistoon %1 ei voi kirjoittaa")
                            .arg(QDir::toNativeSeparators(dir.absoluteFilePath())));
    };

    if (file.exists()) {
        if (file.isDir())
            return unusable(tr("se on hakemisto"));
        if (!file.isReadable() || !file.isWritable())
            return unusable(tr("tiedostoon ei ole luku- ja kirjoitusoikeutta"));
        if (!dir.isWritable())
            return noWrite();
        // An empty file is what a failed open leaves: no database yet.
        return file.size() > 0 ? FileFound : FileMissing;
    }

    // Missing for certain only in a directory that can be searched; else the
    // nearest existing part of the path tells why it cannot be used.
    while (!dir.exists() && !dir.isRoot())
        dir = QFileInfo(dir.absolutePath());
    const QString dirPath = QDir::toNativeSeparators(dir.absoluteFilePath());
    if (!dir.isDir())
        return unusable(tr("%1 ei ole hakemisto").arg(dirPath));
    if (!dir.isExecutable())
        return unusable(tr("hakemistoa %1 ei voi lukea").arg(dirPath));
    if (dir.absoluteFilePath() != file.absolutePath()) {
        return unusable(
            tr("hakemistoa %1 ei ole").arg(QDir::toNativeSeparators(file.absolutePath())));
    }
    if (!dir.isWritable())
        return noWrite();
    return FileMissing;
}

bool SQLiteDatabase::upgrade(const QString& fileName)
{
    int version = 0;
    {
        QSqlQuery query(QSqlDatabase::database(m_connectionName, false));
        if (!queryExec(query, QStringLiteral("SELECT version FROM settings"))) {
            m_lastError = tr("Tietokantatiedostoa %1 ei voi lukea: %2").arg(fileName, m_lastError);
            return false;
        }
        if (!query.isActive() || !query.next())
            return fail(tr("Tietokannan versiota ei löytynyt"));
        version = query.value(0).toInt();
    }
    if (version >= currentVersion || version < 1)
        return true;

    // One copy for every step, as the file was before the upgrade: the steps
    // run in one transaction, and nothing reaches the file before its end.
    QString firstBackup;
    for (int from = version; from < currentVersion; ++from) {
        const QString name = backup(fileName);
        if (from == version)
            firstBackup = name;
    }
    if (upgradeFrom(version))
        return true;
    m_lastError += QLatin1Char('\n')
        + (firstBackup.isEmpty() ? tr("Varmuuskopiota ei saatu tehtyä.")
                                 : tr("Varmuuskopio ennen päivitystä: %1").arg(firstBackup));
    return false;
}

QDateTime SQLiteDatabase::currentDateTime() const
{
    return QDateTime::currentDateTime();
}

QString SQLiteDatabase::backup(const QString& fileName)
{
    const QFileInfo info(fileName);
    const QString name = appendSuffixToFilename(
        QStringLiteral("%1/backup-%2.sqlite")
            .arg(info.absolutePath(),
                currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"))));
    if (QFile::copy(fileName, name))
        return name;
    qCWarning(logDatabase).noquote()
        << "Tietokantavirhe:" << tr("Varmuuskopion %1 luonti epäonnistui").arg(name);
    return QString();
}

QString SQLiteDatabase::appendSuffixToFilename(const QString& fileName)
{
    if (!QFile::exists(fileName))
        return fileName;
    const QFileInfo info(fileName);
    const QString suffix = info.completeSuffix();
    QString base = fileName;
    if (!suffix.isEmpty())
        base.chop(suffix.size() + 1);
    const QString dotSuffix = suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix;
    for (int counter = 1;; ++counter) {
        const QString candidate = QStringLiteral("%1-%2%3").arg(base).arg(counter).arg(dotSuffix);
        if (!QFile::exists(candidate))
            return candidate;
    }
}

bool SQLiteDatabase::upgrade3To4(QSqlQuery& query)
{
    return runUpgradeStatements(4, query,
        { QStringLiteral("ALTER TABLE invoice_item ADD vat_excluded integer NOT NULL DEFAULT 0"),
            QStringLiteral("ALTER TABLE product ADD vat_excluded integer NOT NULL DEFAULT 0"),
            QStringLiteral("UPDATE settings SET version=4") });
}

bool SQLiteDatabase::upgrade8To9(QSqlQuery& query)
{
    // SQLite integers are 64-bit already: only the new column and the scale.
    return runUpgradeStatements(9, query,
        { QStringLiteral("ALTER TABLE invoice ADD tags integer NOT NULL DEFAULT 0"),
            QStringLiteral(
                "UPDATE invoice_item SET quantity = 100 * quantity, amount = 100 * amount"),
            QStringLiteral("UPDATE product SET amount = 100 * amount"),
            QStringLiteral("UPDATE settings SET version=9") });
}

bool SQLiteDatabase::upgrade9To10(QSqlQuery& query)
{
    return runUpgradeStatements(10, query,
        { QStringLiteral("ALTER TABLE bank_account ADD visible boolean NOT NULL DEFAULT 1"),
            QStringLiteral("UPDATE settings SET version=10") });
}
