#ifndef SCRIPTHELPER_H
#define SCRIPTHELPER_H

#include <QByteArray>
#include <QString>

class ECMAScriptEngine;
class Registry;

// Chooses the script of each job and evaluates it in the given engine.
// Every operation returns the result of the evaluation.
class ScriptHelper
{
public:
    explicit ScriptHelper(Registry* registry);

    // The id of the layout chosen by the company setting "printScripts/invoice"
    // (-1, the first built-in layout, when it is not set).
    int invoiceScriptId() const;
    bool loadInvoiceScript(ECMAScriptEngine* engine);
    // id > 0: the stored script, or the first built-in layout when it does not
    // exist; id <= 0: built-in layout number -id-1 (index 0 when out of range).
    bool loadInvoiceScript(ECMAScriptEngine* engine, int id);
    // The first stored script of type "finvoice", else the built-in one; an
    // XML engine also fails when the script defines no write().
    bool loadFinvoiceScript(ECMAScriptEngine* engine);
    // The built-in list reports, each evaluated after the part they share.
    bool loadInvoiceListScript(ECMAScriptEngine* engine);
    bool loadPaymentListScript(ECMAScriptEngine* engine);
    bool loadCustomerListScript(ECMAScriptEngine* engine);
    bool loadProductListScript(ECMAScriptEngine* engine);

    // The built-in script of a type as a whole: a list report's source comes
    // with the shared part in front, so that a copy runs by itself.
    static QByteArray builtInSource(const QString& type);

private:
    bool loadResource(ECMAScriptEngine* engine, const char* name);
    bool loadListScript(ECMAScriptEngine* engine, const char* name);

    Registry* m_registry;
};

#endif // SCRIPTHELPER_H
