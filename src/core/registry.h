#ifndef REGISTRY_H
#define REGISTRY_H

#include "util/storedscriptsource.h"

#include <QList>
#include <QObject>
#include <QStringList>

class BankAccount;
class Customer;
class Database;
class PrintScript;
class Product;
class QSettings;
class Query;
class Settings;

// The one process-wide object: the configuration file, the open database,
// the company settings record and cached lists of customers, products, bank
// accounts and print scripts. Passed by pointer to every model and dialog.
// It is also where the script loader finds the stored scripts.
class Registry : public QObject, public StoredScriptSource
{
    Q_OBJECT
public:
    explicit Registry(QObject* parent = nullptr);
    ~Registry() override;

    // Opens the INI configuration: configFile, or the per-user file when empty.
    void loadSettings(const QString& configFile);
    // The file that loadSettings(configFile) reads, found without creating
    // anything.
    static QString configFileName(const QString& configFile);
    void setupLogging();
    QSettings* appSettings() const;

    Database* database() const;
    void setDatabase(Database* database);
    int databaseNumber() const;
    void setDatabaseNumber(int number);
    bool isConnected() const;
    // Disconnecting deletes every cached list.
    void setConnected(bool connected);

    Settings* settings() const;
    bool fetchSettings(Query* query);

    bool fetchCustomers(Query* query);
    int customerCount() const;
    Customer* customerAt(int index) const;
    Customer* customerById(int id, bool& found) const;
    Customer* customerByNumber(int number, bool& found) const;
    void copyCustomersTo(QList<Customer*>& target) const;
    void copyCustomersFrom(const QList<Customer*>& source);

    bool fetchProducts(Query* query);
    int productCount() const;
    Product* productAt(int index) const;
    Product* productById(int id, bool& found) const;
    Product* productByNumber(const QString& number, bool& found) const;
    int productIndexById(int id) const;
    void copyProducts(QList<Product*>& target) const;

    bool fetchBankAccounts(Query* query);
    int bankAccountCount() const;
    BankAccount* bankAccountAt(int index) const;
    BankAccount* bankAccountById(int id, bool& found) const;
    int bankAccountIndexById(int id) const;
    void copyBankAccountsTo(QList<BankAccount*>& target) const;
    void copyBankAccountsFrom(const QList<BankAccount*>& source);
    const QList<BankAccount*>& bankAccounts() const { return m_bankAccounts; }

    bool fetchPrintScripts(Query* query);
    int printScriptCount() const;
    PrintScript* printScriptAt(int index) const;
    int printScriptIndexById(int id) const;
    int printScriptIndexByName(const QString& name) const;
    int printScriptIndexByType(const QString& type) const;
    void copyPrintScripts(QList<PrintScript*>& target) const;
    QByteArray storedScriptSource(int id) const override;
    int storedScriptId(const QString& name) const override;

    QStringList availableLanguages() const;
    static QString parseLanguageCode(const QString& text);
    QStringList builtInPrintScriptNames() const;
    QStringList builtInPrintScriptFilenames() const;
    QList<int> builtInPrintScriptIds() const;

signals:
    void beginUpdateProducts();
    void endUpdateProducts();
    void customersFetched();
    void bankAccountsFetched();

private:
    void deleteCachedLists();

    QSettings* m_appSettings = nullptr;
    Database* m_database = nullptr;
    int m_databaseNumber = -1;
    bool m_connected = false;
    Settings* m_settings = nullptr;
    QList<Customer*> m_customers;
    QList<Product*> m_products;
    QList<BankAccount*> m_bankAccounts;
    QList<PrintScript*> m_printScripts;
};

#endif // REGISTRY_H
