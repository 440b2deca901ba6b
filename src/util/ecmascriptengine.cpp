#include "ecmascriptengine.h"

#include "domain/decimal.h"
#include "domain/logging.h"
#include "duktapemoduleloader.h"
#include "scriptloader.h"

#include <QDateTime>
#include <QLocale>
#include <QMetaObject>

// The engine must be the one built with our configuration: the system's
// library has no execution timeout check.
#ifndef VEKLARI_DUK_CONFIG_H
#error "duktape.h from util/duktape expected"
#endif

namespace {
const char* const ptrKey = DUK_HIDDEN_SYMBOL("ptr");
const char* const indexKey = DUK_HIDDEN_SYMBOL("index");
// eval, safe, no source kept, length by strlen, no file name
constexpr duk_uint_t evalFlags = DUK_COMPILE_EVAL | DUK_COMPILE_SAFE | DUK_COMPILE_NOSOURCE
    | DUK_COMPILE_STRLEN | DUK_COMPILE_NOFILENAME;
static_assert(evalFlags == 0xE88, "eval flags");
constexpr double millisecondsPerSecond = 1000.0;
constexpr size_t bytesPerMegabyte = 1024 * 1024;
// Duktape's messages for too deep a call stack, in script and in native code.
const char* const recursionMessages[] = { "callstack limit", "C stack depth limit" };
} // namespace

ECMAScriptEngine::ECMAScriptEngine(QObject* parent) : QObject(parent) { }

ECMAScriptEngine::~ECMAScriptEngine()
{
    clear();
}

void ECMAScriptEngine::initialize()
{
    m_members.clear();
    m_evaluated = false;
    m_pendingError.clear();
    if (m_context)
        duk_destroy_heap(m_context);
    m_context = duk_create_heap(script_heap_guard_alloc, script_heap_guard_realloc,
        script_heap_guard_free, &m_guard, nullptr);
    if (!m_context) {
        setError(tr("Skriptimoottorin käynnistäminen epäonnistui"));
        return;
    }
    duk_push_global_object(m_context);
    duk_push_pointer(m_context, this);
    duk_put_prop_string(m_context, -2, ptrKey);
    duk_pop(m_context);
    DuktapeModuleLoader::init(m_context);
    registerModSearch();
}

void ECMAScriptEngine::clear()
{
    if (m_context) {
        duk_destroy_heap(m_context);
        m_context = nullptr;
    }
    m_evaluated = false;
}

bool ECMAScriptEngine::evaluate(const QByteArray& source)
{
    if (!m_context)
        initialize();
    if (!m_context)
        return false;
    beginRun();
    // The source is read up to its terminating NUL, which QByteArray keeps.
    const bool ok = duk_eval_raw(m_context, source.constData(), 0, evalFlags) == 0;
    endRun();
    if (!ok)
        errorFromStack();
    duk_pop(m_context);
    if (ok)
        m_evaluated = true;
    return ok;
}

bool ECMAScriptEngine::callFunction(duk_idx_t argumentCount)
{
    beginRun();
    const bool ok = duk_pcall(m_context, argumentCount) == DUK_EXEC_SUCCESS;
    endRun();
    if (!ok)
        errorFromStack();
    return ok;
}

void ECMAScriptEngine::beginRun()
{
    if (m_runDepth++ == 0)
        script_heap_guard_arm(&m_guard, m_timeLimit);
}

void ECMAScriptEngine::endRun()
{
    if (--m_runDepth == 0)
        script_heap_guard_disarm(&m_guard);
}

bool ECMAScriptEngine::evaluateScript(const QString& name)
{
    if (!m_scriptLoader)
        return false;
    const QByteArray source = m_scriptLoader->loadScriptByName(name);
    if (source.isNull()) {
        setError(tr("skriptiä %1 ei löytynyt").arg(name));
        return false;
    }
    return evaluate(source);
}

duk_idx_t ECMAScriptEngine::pushDispatcher(
    duk_idx_t argumentCount, QObject* object, const char* signature, const char* name)
{
    const QMetaObject* metaObject = object->metaObject();
    const int methodIndex = metaObject->indexOfMethod(signature);
    if (methodIndex < 0)
        qCWarning(logScript) << "Unknown native function" << signature;
    m_members.append(ScriptApiMember(name, object, metaObject->method(methodIndex)));
    duk_push_c_function(m_context, dispatch, argumentCount);
    duk_push_int(m_context, m_members.size() - 1);
    duk_put_prop_string(m_context, -2, indexKey);
    return duk_get_top_index(m_context);
}

void ECMAScriptEngine::registerFunc(const char* name, QObject* object, const char* signature)
{
    pushDispatcher(DUK_VARARGS, object, signature, name);
    duk_put_prop_string(m_context, -2, name);
}

void ECMAScriptEngine::registerProperty(
    const char* name, QObject* object, const char* getter, const char* setter)
{
    if (!getter && !setter)
        return;
    const duk_idx_t target = duk_get_top_index(m_context);
    duk_push_string(m_context, name);
    duk_uint_t flags = 0;
    if (getter) {
        pushDispatcher(0, object, getter, name);
        flags |= DUK_DEFPROP_HAVE_GETTER;
    }
    if (setter) {
        pushDispatcher(1, object, setter, name);
        flags |= DUK_DEFPROP_HAVE_SETTER;
    }
    duk_def_prop(m_context, target, flags);
}

ECMAScriptEngine* ECMAScriptEngine::engineFromFunction(duk_context* context)
{
    duk_push_current_function(context);
    duk_get_prop_string(context, -1, ptrKey);
    auto* engine = static_cast<ECMAScriptEngine*>(duk_get_pointer(context, -1));
    duk_pop_2(context);
    return engine;
}

duk_ret_t ECMAScriptEngine::dispatch(duk_context* context)
{
    duk_push_global_object(context);
    duk_get_prop_string(context, -1, ptrKey);
    auto* engine = static_cast<ECMAScriptEngine*>(duk_get_pointer(context, -1));
    duk_pop_2(context);
    if (!engine)
        return DUK_RET_ERROR;
    duk_push_current_function(context);
    duk_get_prop_string(context, -1, indexKey);
    const int index = duk_get_int(context, -1);
    duk_pop_2(context);

    const int result = engine->invokeMember(index);
    if (!engine->m_pendingError.isNull())
        return engine->throwPendingError();
    return result;
}

int ECMAScriptEngine::invokeMember(int index)
{
    if (index < 0 || index >= m_members.size())
        return 0;
    const ScriptApiMember member = m_members.at(index);
    int result = 0;
    member.method.invoke(member.object, Qt::DirectConnection, Q_RETURN_ARG(int, result));
    return result > 0 ? 1 : 0;
}

duk_ret_t ECMAScriptEngine::throwPendingError()
{
    // The message lives in a member, so no C++ object is left behind when
    // Duktape unwinds past this frame.
    duk_push_error_object(m_context, DUK_ERR_TYPE_ERROR, "%s", m_pendingError.constData());
    m_pendingError = QByteArray();
    return duk_throw(m_context);
}

int ECMAScriptEngine::argCount() const
{
    return m_context ? duk_get_top(m_context) : 0;
}

QString ECMAScriptEngine::stringArg(int i) const
{
    if (duk_is_number(m_context, i))
        return QString::number(duk_get_number(m_context, i), 'g', 6);
    if (duk_is_string(m_context, i))
        return QString::fromUtf8(duk_get_string(m_context, i));
    return QString();
}

int ECMAScriptEngine::intArg(int i, bool& ok) const
{
    ok = duk_is_number(m_context, i);
    if (!ok)
        return 0;
    // ToInt32 on a copy: the argument itself stays as the script passed it.
    duk_dup(m_context, i);
    const int value = duk_to_int32(m_context, -1);
    duk_pop(m_context);
    return value;
}

double ECMAScriptEngine::doubleArg(int i, bool& ok) const
{
    ok = duk_is_number(m_context, i);
    return ok ? duk_get_number(m_context, i) : 0.0;
}

bool ECMAScriptEngine::boolArg(int i) const
{
    return duk_get_boolean(m_context, i);
}

QDate ECMAScriptEngine::dateArg(int i) const
{
    const QString text = stringArg(i);
    if (text.isNull())
        return QDate();
    return QDate::fromString(text, Qt::ISODate);
}

int ECMAScriptEngine::checkArgCount(int n)
{
    const int count = argCount();
    if (count >= n)
        return count;
    if (n == 1)
        runtimeError(tr("vähintään 1 parametri"));
    else
        runtimeError(tr("vähintään %1 parametria").arg(n));
    return -1;
}

void ECMAScriptEngine::pushString(const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    duk_push_lstring(m_context, utf8.constData(), duk_size_t(utf8.size()));
}

void ECMAScriptEngine::pushVariant(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        pushString(value.toString());
        return;
    case QMetaType::Bool:
        duk_push_boolean(m_context, value.toBool());
        return;
    case QMetaType::Int:
        duk_push_int(m_context, value.toInt());
        return;
    case QMetaType::LongLong:
        // Scripts have always received 32-bit values here; larger ones wrap.
        duk_push_int(m_context, static_cast<qint32>(value.toLongLong()));
        return;
    case QMetaType::Double:
        duk_push_number(m_context, value.toDouble());
        return;
    case QMetaType::QDate:
        pushString(value.toDate().toString(QStringLiteral("yyyy-MM-dd")));
        return;
    case QMetaType::QDateTime:
        pushString(value.toDateTime().toString(Qt::ISODate));
        return;
    default:
        break;
    }
    if (value.isValid()
        && (qstrcmp(value.metaType().name(), "Decimal") == 0 || value.canConvert<Decimal>())) {
        duk_push_int(m_context, static_cast<qint32>(value.value<Decimal>().toLongLong()));
        return;
    }
    duk_push_undefined(m_context);
}

void ECMAScriptEngine::runtimeError(const QString& message)
{
    m_pendingError = message.toUtf8();
}

void ECMAScriptEngine::setError(const QString& error)
{
    m_lastError = error;
    qCWarning(logScript).noquote() << error;
}

void ECMAScriptEngine::errorFromStack()
{
    QString text;
    if (duk_get_error_code(m_context, -1) != 0) {
        duk_get_prop_string(m_context, -1, "stack");
        text = QString::fromUtf8(duk_safe_to_string(m_context, -1));
        duk_pop(m_context);
    } else {
        // duk_safe_to_string replaces the value in place; keep the original.
        duk_dup_top(m_context);
        text = QString::fromUtf8(duk_safe_to_string(m_context, -1));
        duk_pop(m_context);
    }
    const QString reason = stoppedReason();
    setError(reason.isEmpty() ? text : reason + QLatin1Char('\n') + text);
}

QString ECMAScriptEngine::stoppedReason() const
{
    if (m_guard.timedOut) {
        return tr("Skripti keskeytettiin, koska sen suoritus kesti yli %1 s. "
                  "Skriptissä voi olla silmukka, joka ei pääty.")
            .arg(QLocale().toString(m_timeLimit / millisecondsPerSecond));
    }
    if (m_guard.memoryExceeded) {
        return tr("Skripti keskeytettiin, koska se varasi muistia yli %1 Mt.")
            .arg(QLocale().toString(double(m_guard.memoryLimit) / bytesPerMegabyte));
    }
    if (duk_get_error_code(m_context, -1) == DUK_ERR_RANGE_ERROR) {
        duk_get_prop_string(m_context, -1, "message");
        const char* message = duk_get_string(m_context, -1);
        bool recursion = false;
        for (const char* known : recursionMessages)
            recursion = recursion || (message && qstrcmp(message, known) == 0);
        duk_pop(m_context);
        if (recursion) {
            return tr("Skripti keskeytettiin, koska sen funktiokutsuja oli sisäkkäin liian "
                      "monta. Skriptissä voi olla rekursio, joka ei pääty.");
        }
    }
    return QString();
}

void ECMAScriptEngine::registerModSearch()
{
    duk_get_global_string(m_context, "Duktape");
    duk_push_c_function(m_context, modSearch, 4);
    duk_push_pointer(m_context, this);
    duk_put_prop_string(m_context, -2, ptrKey);
    duk_put_prop_string(m_context, -2, "modSearch");
    duk_pop(m_context);
}

duk_ret_t ECMAScriptEngine::modSearch(duk_context* context)
{
    ECMAScriptEngine* engine = engineFromFunction(context);
    if (!engine)
        return DUK_RET_ERROR;
    const char* id = duk_require_string(context, 0);
    if (!engine->pushModuleSource(id))
        return engine->throwPendingError();
    return 1;
}

bool ECMAScriptEngine::pushModuleSource(const char* id)
{
    const QString name = QString::fromUtf8(id);
    // Only stored scripts are modules: the built-in resources are not reachable.
    const QByteArray source
        = m_scriptLoader ? m_scriptLoader->loadScriptByName(name) : QByteArray();
    if (source.isNull()) {
        runtimeError(tr("skriptiä %1 ei löytynyt").arg(name));
        return false;
    }
    duk_push_lstring(m_context, source.constData(), duk_size_t(source.size()));
    return true;
}
