#ifndef ECMASCRIPTENGINE_H
#define ECMASCRIPTENGINE_H

#include "duktape/scriptheapguard.h"
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
// Every run of script code (evaluate() and callFunction()) has a time limit
// and the heap a memory limit: a script in an endless loop, in unbounded
// recursion or allocating without end is stopped with an error that says so,
// and the engine stays usable for the next script.
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

    static constexpr int defaultTimeLimit = 30 * 1000;
    static constexpr size_t defaultMemoryLimit = size_t(256) * 1024 * 1024;
    // How long one run may last before it is stopped (0: no limit).
    int timeLimit() const { return m_timeLimit; }
    void setTimeLimit(int milliseconds) { m_timeLimit = milliseconds; }
    // How much memory the heap may hold (0: no limit).
    size_t memoryLimit() const { return m_guard.memoryLimit; }
    void setMemoryLimit(size_t bytes) { m_guard.memoryLimit = bytes; }

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
    // Calls the function below its argumentCount arguments on the value stack
    // within the time limit (duk_pcall: the result or the error replaces
    // them). A failure is stored as the last error.
    bool callFunction(duk_idx_t argumentCount);

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
    // stack trace when it is an error object), after a sentence that names
    // the limit when the script was stopped by one.
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

    void beginRun();
    void endRun();
    QString stoppedReason() const;

    duk_context* m_context = nullptr;
    ScriptHeapGuard m_guard { 0, 0, defaultMemoryLimit, 0, 0 };
    int m_timeLimit = defaultTimeLimit;
    // Nested runs (require() inside a script) share the outermost run's clock.
    int m_runDepth = 0;
    ScriptLoader* m_scriptLoader = nullptr;
    QString m_lastError;
    QList<ScriptApiMember> m_members;
    bool m_evaluated = false;
    QByteArray m_pendingError;
};

#endif // ECMASCRIPTENGINE_H
