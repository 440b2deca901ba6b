#ifndef ECMASCRIPTENGINE_H
#define ECMASCRIPTENGINE_H

#include "scriptapimember.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

#include <duktape.h>

class ScriptLoader;

// One Duktape heap and the bridge between it and Qt. Subclasses register
// their native functions in initialize(); each one is a slot "int envName()"
// that reads its arguments with the readers below, pushes at most one result
// and returns 1 when it pushed one, else 0.
//
// Native code never unwinds through C++ frames: runtimeError() records the
// error and the dispatcher throws it into the script as soon as the slot has
// returned, so a slot returns at once after raising an error (checkArgCount()
// returns -1 for that purpose).
class ECMAScriptEngine : public QObject
{
    Q_OBJECT
public:
    explicit ECMAScriptEngine(QObject* parent = nullptr);
    ~ECMAScriptEngine() override;

    // Destroys the heap and everything registered in it.
    void clear();
    // Evaluates a script, creating the heap first when there is none. The
    // script defines its global functions; nothing else is run.
    bool evaluate(const QByteArray& source);
    // Evaluates the stored script of that name (false without a loader).
    bool evaluateScript(const QString& name);

    bool isEvaluated() const { return m_evaluated; }
    QString lastError() const { return m_lastError; }
    ScriptLoader* scriptLoader() const { return m_scriptLoader; }
    void setScriptLoader(ScriptLoader* loader) { m_scriptLoader = loader; }
    duk_context* context() const { return m_context; }

public slots:
    // Creates a fresh heap with require() and Duktape.modSearch. Subclasses
    // call the base first and then register their own functions.
    virtual void initialize();

protected:
    // The object the function is stored on lies on top of the value stack
    // (the caller pushes the global object first).
    void registerFunc(const char* name, QObject* object, const char* signature);
    void registerProperty(
        const char* name, QObject* object, const char* getter, const char* setter);

    // Argument readers for native slots; i counts from 0.
    int argCount() const;
    QString stringArg(int i) const;
    int intArg(int i, bool& ok) const;
    double doubleArg(int i, bool& ok) const;
    bool boolArg(int i) const;
    QDate dateArg(int i) const;
    // The number of arguments, or -1 after raising "at least n parameters".
    int checkArgCount(int n);

    void pushString(const QString& text);
    void pushVariant(const QVariant& value);

    // Raises a TypeError with the message in the running script.
    void runtimeError(const QString& message);
    void setError(const QString& error);
    void clearError() { m_lastError.clear(); }
    // Takes the error text from the value on top of the stack (the error's
    // stack trace when it is an error object).
    void errorFromStack();
    void registerModSearch();

private:
    static duk_ret_t dispatch(duk_context* context);
    static duk_ret_t modSearch(duk_context* context);
    static ECMAScriptEngine* engineFromFunction(duk_context* context);
    int invokeMember(int index);
    bool pushModuleSource(const char* id);
    duk_ret_t throwPendingError();
    duk_idx_t pushDispatcher(
        duk_idx_t argumentCount, QObject* object, const char* signature, const char* name);

    duk_context* m_context = nullptr;
    ScriptLoader* m_scriptLoader = nullptr;
    QString m_lastError;
    QList<ScriptApiMember> m_members;
    bool m_evaluated = false;
    QByteArray m_pendingError;
};

#endif // ECMASCRIPTENGINE_H
