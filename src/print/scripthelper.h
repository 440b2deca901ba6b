#ifndef SCRIPTHELPER_H
#define SCRIPTHELPER_H

class ECMAScriptEngine;
class Registry;

// Chooses the script of each job and evaluates it in the given engine.
// Every operation returns the result of the evaluation.
class ScriptHelper
{
public:
    explicit ScriptHelper(Registry* registry);

    // The layout chosen by the company setting "printScripts/invoice".
    bool loadInvoiceScript(ECMAScriptEngine* engine);
    // id > 0: the stored script, or the first built-in layout when it does not
    // exist; id <= 0: built-in layout number -id-1 (index 0 when out of range).
    bool loadInvoiceScript(ECMAScriptEngine* engine, int id);
    // The first stored script of type "finvoice", else the built-in one.
    bool loadFinvoiceScript(ECMAScriptEngine* engine);
    bool loadInvoiceListScript(ECMAScriptEngine* engine);
    bool loadPaymentListScript(ECMAScriptEngine* engine);
    bool loadCustomerListScript(ECMAScriptEngine* engine);
    bool loadProductListScript(ECMAScriptEngine* engine);

private:
    bool loadResource(ECMAScriptEngine* engine, const char* name);

    Registry* m_registry;
};

#endif // SCRIPTHELPER_H
