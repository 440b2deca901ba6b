#include "scripthelper.h"

#include "core/registry.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "util/ecmascriptengine.h"
#include "util/scriptloader.h"
#include "xmlscriptengine.h"

ScriptHelper::ScriptHelper(Registry* registry) : m_registry(registry) { }

namespace {
const char* const listCommon = "list-common";
}

int ScriptHelper::invoiceScriptId() const
{
    if (!m_registry || !m_registry->settings())
        return -1;
    bool ok = false;
    const int id
        = m_registry->settings()->property(SettingsKeys::invoiceScript).toString().toInt(&ok);
    return ok ? id : -1;
}

bool ScriptHelper::loadInvoiceScript(ECMAScriptEngine* engine)
{
    return loadInvoiceScript(engine, invoiceScriptId());
}

bool ScriptHelper::loadInvoiceScript(ECMAScriptEngine* engine, int id)
{
    const ScriptLoader loader(m_registry);
    if (id > 0) {
        const QByteArray source = loader.loadScriptById(id);
        if (!source.isNull())
            return engine->evaluate(source);
        id = -1;
    }
    const QStringList files = m_registry ? m_registry->builtInPrintScriptFilenames()
                                         : QStringList { QStringLiteral("invoice") };
    int index = -id - 1;
    if (index < 0 || index >= files.size())
        index = 0;
    const QString file = files.isEmpty() ? QStringLiteral("invoice") : files.at(index);
    return engine->evaluate(loader.loadResource(file));
}

bool ScriptHelper::loadFinvoiceScript(ECMAScriptEngine* engine)
{
    QByteArray source;
    if (m_registry) {
        for (int i = 0; i < m_registry->printScriptCount(); ++i) {
            const PrintScript* script = m_registry->printScriptAt(i);
            if (script->type == QLatin1String("finvoice")) {
                source = ScriptLoader(m_registry).loadScriptById(script->id);
                break;
            }
        }
    }
    if (source.isNull())
        source = ScriptLoader(m_registry).loadResource(QStringLiteral("finvoice"));
    if (!engine->evaluate(source))
        return false;
    // A script that only defines other functions would write an empty file.
    auto* xmlEngine = qobject_cast<XmlScriptEngine*>(engine);
    return !xmlEngine || xmlEngine->checkWriteFunction();
}

bool ScriptHelper::loadResource(ECMAScriptEngine* engine, const char* name)
{
    return engine->evaluate(ScriptLoader(m_registry).loadResource(QLatin1String(name)));
}

bool ScriptHelper::loadListScript(ECMAScriptEngine* engine, const char* name)
{
    // Evaluating into the same heap adds the list's globals to the shared ones.
    return loadResource(engine, listCommon) && loadResource(engine, name);
}

bool ScriptHelper::loadInvoiceListScript(ECMAScriptEngine* engine)
{
    return loadListScript(engine, "invoice-list");
}

bool ScriptHelper::loadPaymentListScript(ECMAScriptEngine* engine)
{
    return loadListScript(engine, "payment-list");
}

bool ScriptHelper::loadCustomerListScript(ECMAScriptEngine* engine)
{
    return loadListScript(engine, "customer-list");
}

bool ScriptHelper::loadProductListScript(ECMAScriptEngine* engine)
{
    return loadListScript(engine, "product-list");
}

QByteArray ScriptHelper::builtInSource(const QString& type)
{
    const ScriptLoader loader(nullptr);
    const QByteArray source = loader.loadResource(type);
    if (source.isNull() || !type.endsWith(QLatin1String("-list")))
        return source;
    return loader.loadResource(QLatin1String(listCommon)) + '\n' + source;
}
