#include "registry.h"

#include "core/filelogger.h"
#include "domain/bankaccount.h"
#include "domain/customer.h"
#include "domain/logging.h"
#include "domain/printscript.h"
#include "domain/product.h"
#include "domain/settings.h"
#include "storage/database.h"
#include "storage/query.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <memory>

namespace {

template<typename T>
T* findById(const QList<T*>& list, int id, bool& found)
{
    for (T* item : list) {
        if (item->id == id) {
            found = true;
            return item;
        }
    }
    found = false;
    return nullptr;
}

template<typename T>
int indexById(const QList<T*>& list, int id)
{
    for (int i = 0; i < list.size(); ++i) {
        if (list.at(i)->id == id)
            return i;
    }
    return -1;
}

template<typename T>
void appendCopies(const QList<T*>& source, QList<T*>& target)
{
    for (const T* item : source) {
        T* copy = new T();
        item->copy(copy);
        target.append(copy);
    }
}

// Replaces list with the records that the query's start statement returns,
// each filled from its row by read.
template<typename T>
bool fetchList(QList<T*>& list, Query* query, bool (Query::*start)(), void (Query::*read)(T*))
{
    qDeleteAll(list);
    list.clear();
    if (!(query->*start)())
        return false;
    while (query->next()) {
        T* record = new T();
        (query->*read)(record);
        list.append(record);
    }
    return true;
}

QSettings* newAppSettings(const QString& configFile)
{
    if (configFile.isEmpty()) {
        return new QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Veklari"),
            QStringLiteral("Veklari"));
    }
    return new QSettings(configFile, QSettings::IniFormat);
}

} // namespace

Registry::Registry(QObject* parent) : QObject(parent), m_settings(new Settings()) { }

Registry::~Registry()
{
    deleteCachedLists();
    delete m_settings;
    delete m_appSettings;
}

void Registry::loadSettings(const QString& configFile)
{
    delete m_appSettings;
    m_appSettings = newAppSettings(configFile);

    // The whole path is made: on a new account even the user's configuration
    // directory may be missing, and the first run must not lose its log.
    QDir().mkpath(QFileInfo(m_appSettings->fileName()).absolutePath());
}

QString Registry::configFileName(const QString& configFile)
{
    // A settings object writes nothing until a value is set.
    const std::unique_ptr<QSettings> settings(newAppSettings(configFile));
    return settings->fileName();
}

void Registry::setupLogging()
{
    installFileLogger();

    m_appSettings->beginGroup(QStringLiteral("logging"));
    QString fileName = m_appSettings->value(QStringLiteral("filename")).toString();
    if (fileName.isEmpty()) {
        fileName = QStringLiteral("Veklari.log");
        m_appSettings->setValue(QStringLiteral("filename"), fileName);
    }
    if (!m_appSettings->contains(QStringLiteral("enabled")))
        m_appSettings->setValue(QStringLiteral("enabled"), true);
    const bool enabled = m_appSettings->value(QStringLiteral("enabled"), true).toBool();
    if (!m_appSettings->contains(QStringLiteral("debugEnabled")))
        m_appSettings->setValue(QStringLiteral("debugEnabled"), false);
    const bool debugEnabled = m_appSettings->value(QStringLiteral("debugEnabled"), false).toBool();
    m_appSettings->endGroup();

    if (fileName != QLatin1String("-") && QFileInfo(fileName).isRelative())
        fileName = QFileInfo(m_appSettings->fileName()).absoluteDir().filePath(fileName);

    FileLogger* logger = FileLogger::getInstance();
    logger->setOutputFileName(fileName);
    logger->setEnabled(enabled);
    logger->setDebugEnabled(debugEnabled);

    qCDebug(logUi).noquote() << QStringLiteral("%1 %2").arg(
        QCoreApplication::applicationName(), QCoreApplication::applicationVersion());
}

QSettings* Registry::appSettings() const
{
    return m_appSettings;
}

Database* Registry::database() const
{
    return m_database;
}

void Registry::setDatabase(Database* database)
{
    m_database = database;
}

int Registry::databaseNumber() const
{
    return m_databaseNumber;
}

void Registry::setDatabaseNumber(int number)
{
    m_databaseNumber = number;
}

bool Registry::isConnected() const
{
    return m_connected;
}

void Registry::setConnected(bool connected)
{
    m_connected = connected;
    if (!connected) {
        // Product views hold pointers into the list: let them reset.
        emit beginUpdateProducts();
        deleteCachedLists();
        emit endUpdateProducts();
    }
}

Settings* Registry::settings() const
{
    return m_settings;
}

bool Registry::fetchSettings(Query* query)
{
    if (!query->fetchSettings())
        return false;
    // A database without a settings row works with the defaults.
    if (query->next())
        query->settings(m_settings);
    else
        m_settings->clear();
    return true;
}

bool Registry::fetchCustomers(Query* query)
{
    if (!fetchList(m_customers, query, &Query::fetchCustomers, &Query::customer))
        return false;
    emit customersFetched();
    return true;
}

int Registry::customerCount() const
{
    return m_customers.size();
}

Customer* Registry::customerAt(int index) const
{
    return m_customers.value(index, nullptr);
}

Customer* Registry::customerById(int id, bool& found) const
{
    return findById(m_customers, id, found);
}

Customer* Registry::customerByNumber(int number, bool& found) const
{
    for (Customer* customer : m_customers) {
        if (customer->number == number) {
            found = true;
            return customer;
        }
    }
    found = false;
    return nullptr;
}

void Registry::copyCustomersTo(QList<Customer*>& target) const
{
    appendCopies(m_customers, target);
}

void Registry::copyCustomersFrom(const QList<Customer*>& source)
{
    qDeleteAll(m_customers);
    m_customers.clear();
    appendCopies(source, m_customers);
    emit customersFetched();
}

bool Registry::fetchProducts(Query* query)
{
    emit beginUpdateProducts();
    const bool ok = fetchList(m_products, query, &Query::fetchProducts, &Query::product);
    emit endUpdateProducts();
    return ok;
}

int Registry::productCount() const
{
    return m_products.size();
}

Product* Registry::productAt(int index) const
{
    return m_products.value(index, nullptr);
}

Product* Registry::productById(int id, bool& found) const
{
    return findById(m_products, id, found);
}

Product* Registry::productByNumber(const QString& number, bool& found) const
{
    for (Product* product : m_products) {
        if (product->number == number) {
            found = true;
            return product;
        }
    }
    found = false;
    return nullptr;
}

int Registry::productIndexById(int id) const
{
    return indexById(m_products, id);
}

void Registry::copyProducts(QList<Product*>& target) const
{
    appendCopies(m_products, target);
}

bool Registry::fetchBankAccounts(Query* query)
{
    if (!fetchList(m_bankAccounts, query, &Query::fetchBankAccounts, &Query::bankAccount))
        return false;
    emit bankAccountsFetched();
    return true;
}

int Registry::bankAccountCount() const
{
    return m_bankAccounts.size();
}

BankAccount* Registry::bankAccountAt(int index) const
{
    return m_bankAccounts.value(index, nullptr);
}

BankAccount* Registry::bankAccountById(int id, bool& found) const
{
    return findById(m_bankAccounts, id, found);
}

int Registry::bankAccountIndexById(int id) const
{
    return indexById(m_bankAccounts, id);
}

void Registry::copyBankAccountsTo(QList<BankAccount*>& target) const
{
    appendCopies(m_bankAccounts, target);
}

void Registry::copyBankAccountsFrom(const QList<BankAccount*>& source)
{
    qDeleteAll(m_bankAccounts);
    m_bankAccounts.clear();
    appendCopies(source, m_bankAccounts);
    emit bankAccountsFetched();
}

bool Registry::fetchPrintScripts(Query* query)
{
    // Only id, type and name: the source code is read when a script runs.
    return fetchList(
        m_printScripts, query, &Query::fetchPrintScriptSummaries, &Query::printScriptSummary);
}

int Registry::printScriptCount() const
{
    return m_printScripts.size();
}

PrintScript* Registry::printScriptAt(int index) const
{
    return m_printScripts.value(index, nullptr);
}

int Registry::printScriptIndexById(int id) const
{
    return indexById(m_printScripts, id);
}

int Registry::printScriptIndexByName(const QString& name) const
{
    for (int i = 0; i < m_printScripts.size(); ++i) {
        if (m_printScripts.at(i)->name == name)
            return i;
    }
    return -1;
}

int Registry::printScriptIndexByType(const QString& type) const
{
    for (int i = 0; i < m_printScripts.size(); ++i) {
        if (m_printScripts.at(i)->type == type)
            return i;
    }
    return -1;
}

QByteArray Registry::storedScriptSource(int id) const
{
    if (!m_database)
        return QByteArray();
    std::unique_ptr<Query> query(m_database->query());
    PrintScript script;
    if (!query || !query->fetchPrintScript(id, &script))
        return QByteArray();
    QByteArray source = script.sourceCode.toUtf8();
    // An empty stored script is still a script: empty, not null.
    if (source.isNull())
        source = QByteArray("");
    return source;
}

int Registry::storedScriptId(const QString& name) const
{
    const int index = printScriptIndexByName(name);
    return index < 0 ? -1 : m_printScripts.at(index)->id;
}

void Registry::copyPrintScripts(QList<PrintScript*>& target) const
{
    appendCopies(m_printScripts, target);
}

QStringList Registry::availableLanguages() const
{
    return { tr("fi - suomi"), tr("sv - ruotsi"), tr("en - englanti") };
}

QString Registry::parseLanguageCode(const QString& text)
{
    const int dash = text.indexOf(QLatin1Char('-'));
    if (dash < 0)
        return text;
    return text.left(dash).trimmed();
}

QStringList Registry::builtInPrintScriptNames() const
{
    return { tr("Oletuslaskupohja") };
}

QStringList Registry::builtInPrintScriptFilenames() const
{
    return { tr("invoice") };
}

QList<int> Registry::builtInPrintScriptIds() const
{
    return { -1 };
}

void Registry::deleteCachedLists()
{
    qDeleteAll(m_customers);
    m_customers.clear();
    qDeleteAll(m_products);
    m_products.clear();
    qDeleteAll(m_bankAccounts);
    m_bankAccounts.clear();
    qDeleteAll(m_printScripts);
    m_printScripts.clear();
}
