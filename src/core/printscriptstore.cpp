#include "printscriptstore.h"

#include "core/registry.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "storage/database.h"
#include "storage/query.h"

#include <memory>

namespace {

const QString invoiceType = QStringLiteral("invoice");
const int builtInInvoiceScriptId = -1;

} // namespace

PrintScriptStore::PrintScriptStore(Registry* registry) : m_registry(registry) { }

int PrintScriptStore::defaultInvoiceScriptId() const
{
    const Settings* settings = m_registry->settings();
    if (!settings)
        return builtInInvoiceScriptId;
    bool ok = false;
    const int id = settings->property(SettingsKeys::invoiceScript).toString().toInt(&ok);
    return ok ? id : builtInInvoiceScriptId;
}

bool PrintScriptStore::fetch(const QString& name, PrintScript* script, bool* found)
{
    *found = false;
    m_lastError.clear();
    Database* database = m_registry->database();
    if (!database) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    const int index = m_registry->printScriptIndexByName(name);
    if (index < 0)
        return true;
    std::unique_ptr<Query> query(database->query());
    if (!query->fetchPrintScript(m_registry->printScriptAt(index)->id, script)) {
        // Removed meanwhile when the query itself went well.
        m_lastError = query->lastError();
        return m_lastError.isEmpty();
    }
    *found = true;
    return true;
}

template<typename Work>
bool PrintScriptStore::inTransaction(Work work)
{
    Database* database = m_registry->database();
    Settings* settings = m_registry->settings();
    if (!database || !settings) {
        m_lastError = tr("Tietokantaa ei ole avattu.");
        return false;
    }
    const QVariant previousDefault = settings->property(SettingsKeys::invoiceScript);
    std::unique_ptr<Query> query(database->query());
    const auto store = [&] { return work(query.get(), settings); };
    if (database->runTransaction(store, query.get(), &m_lastError)) {
        std::unique_ptr<Query> listQuery(database->query());
        m_registry->fetchPrintScripts(listQuery.get());
        return true;
    }
    if (previousDefault.isValid())
        settings->setProperty(SettingsKeys::invoiceScript, previousDefault);
    else
        settings->removeProperty(SettingsKeys::invoiceScript);
    return false;
}

bool PrintScriptStore::save(PrintScript* script, bool makeDefault)
{
    const int previousId = script->id;
    const bool saved = inTransaction([&](Query* query, Settings* settings) {
        if (!query->savePrintScript(script))
            return false;
        const bool isDefault = makeDefault && script->type == invoiceType;
        const bool wasDefault = defaultInvoiceScriptId() == script->id;
        if (isDefault == wasDefault)
            return true;
        if (isDefault)
            settings->setProperty(SettingsKeys::invoiceScript, QString::number(script->id));
        else
            settings->removeProperty(SettingsKeys::invoiceScript);
        return query->updateSettings(settings);
    });
    // An id handed out inside a rolled-back transaction is void.
    if (!saved)
        script->id = previousId;
    return saved;
}

bool PrintScriptStore::remove(int id)
{
    return inTransaction([&](Query* query, Settings* settings) {
        if (!query->deletePrintScript(id))
            return false;
        if (defaultInvoiceScriptId() != id)
            return true;
        settings->removeProperty(SettingsKeys::invoiceScript);
        return query->updateSettings(settings);
    });
}
