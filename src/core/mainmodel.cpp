#include "mainmodel.h"

#include "core/invoicetablemodel.h"
#include "core/registry.h"
#include "domain/logging.h"
#include "storage/database.h"
#include "storage/postgresqldatabase.h"
#include "storage/query.h"
#include "storage/sqlitedatabase.h"

#include <QSettings>

MainModel::MainModel(Registry* registry, QObject* parent)
    : QObject(parent)
    , m_registry(registry)
    , m_invoiceTableModel(new InvoiceTableModel(registry, this))
    , m_lastCriteria(&m_criteria)
{
}

MainModel::~MainModel()
{
    closeDatabase();
}

int MainModel::openDatabase(int index, bool create)
{
    if (m_registry->isConnected())
        closeDatabase();

    QSettings* appSettings = m_registry->appSettings();
    appSettings->beginGroup(QStringLiteral("databases"));
    appSettings->beginReadArray(QStringLiteral("settings"));
    appSettings->setArrayIndex(index);

    const QString type
        = appSettings->value(QStringLiteral("type"), QStringLiteral("sqlite")).toString();
    Database* database = nullptr;
    if (type.compare(QLatin1String("postgresql"), Qt::CaseInsensitive) == 0) {
        database = new PostgreSQLDatabase();
        database->setCreateIfNotExist(create);
    } else {
        // A local file is simply created when it is missing.
        database = new SQLiteDatabase();
        database->setCreateIfNotExist(true);
    }
    m_registry->setDatabase(database);
    m_registry->setConnected(true);

    int status = 0;
    m_lastError.clear();
    if (!database->open(appSettings)) {
        m_lastError = database->lastError();
        status = database->driverAvailable() ? -1 : -3;
    }
    if (!database->exists())
        status = -2;

    appSettings->endArray();
    appSettings->endGroup();
    return status;
}

bool MainModel::closeDatabase()
{
    if (!m_registry->isConnected())
        return true;

    setEditable(false);
    m_invoiceTableModel->clear();
    m_invoiceIndex = -1;
    m_lastInvoiceId = -1;
    m_invoice.clear();
    m_registry->setConnected(false);

    Database* database = m_registry->database();
    m_registry->setDatabase(nullptr);
    if (database) {
        database->close();
        delete database;
    }
    return true;
}

bool MainModel::fetchData()
{
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }

    Query* query = database->query();
    bool ok = true;
    // Every step logs its line, but runs only while the earlier ones succeed.
    auto step = [&](const char* text, auto&& run) {
        qCDebug(logUi) << text;
        if (ok && !run()) {
            m_lastError = query->lastError();
            ok = false;
        }
    };

    step("Haetaan perustiedot", [&] { return m_registry->fetchSettings(query); });
    step("Haetaan asiakastiedot", [&] { return m_registry->fetchCustomers(query); });
    step("Haetaan tuotetiedot", [&] { return m_registry->fetchProducts(query); });
    step("Haetaan pankkitilien tiedot", [&] { return m_registry->fetchBankAccounts(query); });
    step("Haetaan tulostusskriptien tiedot", [&] { return m_registry->fetchPrintScripts(query); });
    step("Haetaan laskujen tiedot", [&] {
        if (!query->fetchInvoiceSummaries(*m_lastCriteria))
            return false;
        m_invoiceTableModel->load(query, m_lastCriteria->descending);
        return true;
    });

    delete query;
    return ok;
}

int MainModel::invoiceCount() const
{
    return m_invoiceTableModel->rowCount();
}

void MainModel::setEditable(bool editable)
{
    m_editable = editable;
}
