#include "scripthelper.h"

#include "core/registry.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "util/ecmascriptengine.h"
#include "util/scriptloader.h"

ScriptHelper::ScriptHelper(Registry* registry) : m_registry(registry) { }

bool ScriptHelper::loadInvoiceScript(ECMAScriptEngine* engine)
{
    int id = -1;
    if (m_registry && m_registry->settings()) {
        bool ok = false;
        const int value = m_registry->settings()
                              ->property(QStringLiteral("printScripts/invoice"))
                              .toString()
                              .toInt(&ok);
        if (ok)
            id = value;
    }
    return loadInvoiceScript(engine, id);
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
    if (m_registry) {
        for (int i = 0; i < m_registry->printScriptCount(); ++i) {
            const PrintScript* script = m_registry->printScriptAt(i);
            if (script->type == QLatin1String("finvoice")) {
                const QByteArray source = ScriptLoader(m_registry).loadScriptById(script->id);
                if (!source.isNull())
                    return engine->evaluate(source);
                break;
            }
        }
    }
    return loadResource(engine, "finvoice");
}

bool ScriptHelper::loadResource(ECMAScriptEngine* engine, const char* name)
{
    return engine->evaluate(ScriptLoader(m_registry).loadResource(QLatin1String(name)));
}

bool ScriptHelper::loadInvoiceListScript(ECMAScriptEngine* engine)
{
    return loadResource(engine, "invoice-list");
}

bool ScriptHelper::loadPaymentListScript(ECMAScriptEngine* engine)
{
    return loadResource(engine, "payment-list");
}

bool ScriptHelper::loadCustomerListScript(ECMAScriptEngine* engine)
{
    return loadResource(engine, "customer-list");
}

bool ScriptHelper::loadProductListScript(ECMAScriptEngine* engine)
{
    return loadResource(engine, "product-list");
}
