#include "printscriptenginebase.h"

#include "domain/decimal.h"
#include "domain/logging.h"
#include "printmodel.h"

#include <QDateTime>
#include <QDebug>
#include <QLocale>

PrintScriptEngineBase::PrintScriptEngineBase(QObject* parent)
    : ECMAScriptEngine(parent), m_currencyFormat(2, 2), m_numberFormat(2, 0)
{
}

void PrintScriptEngineBase::initialize()
{
    ECMAScriptEngine::initialize();
    duk_context* ctx = context();
    if (!ctx)
        return;
    duk_push_global_object(ctx);
    const char* const constants[] = { "AMOUNT_SCALE", "QUANTITY_SCALE", "PERCENTAGE_SCALE" };
    const int values[] = { 4, 4, 2 };
    for (int i = 0; i < 3; ++i) {
        duk_push_string(ctx, constants[i]);
        duk_push_int(ctx, values[i]);
        duk_def_prop(ctx, -3,
            DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_CLEAR_WRITABLE | DUK_DEFPROP_SET_ENUMERABLE
                | DUK_DEFPROP_CLEAR_CONFIGURABLE);
    }
    registerFunc("get", this, "envGet()");
    registerFunc("formatCurrency", this, "envFormatCurrency()");
    registerFunc("formatNumber", this, "envFormatNumber()");
    registerFunc("formatDate", this, "envFormatDate()");
    registerFunc("currentDate", this, "envCurrentDate()");
    registerFunc("currentDateTime", this, "envCurrentDateTime()");
    registerFunc("getDateTime", this, "envGetDateTime()");
    registerFunc("getNumber", this, "envGetNumber()");
    registerFunc("getCurrency", this, "envGetCurrency()");
    registerFunc("setLocale", this, "envSetLocale()");
    duk_pop(ctx);
}

int PrintScriptEngineBase::envGet()
{
    if (checkArgCount(1) < 0)
        return 0;
    if (!m_model)
        return 0;
    const QString path = stringArg(0);
    const QVariant value = m_model->value(path);
    if (logScript().isDebugEnabled()) {
        QString text;
        if (value.canConvert<Decimal>())
            QDebug(&text).nospace() << value.value<Decimal>();
        else
            text = value.toString();
        qCDebug(logScript).noquote() << path << "=" << text;
    }
    pushVariant(value);
    return 1;
}

int PrintScriptEngineBase::envFormatCurrency()
{
    if (checkArgCount(1) < 0)
        return 0;
    bool ok = false;
    const int amount = intArg(0, ok);
    if (!ok)
        return 0;
    pushString(m_currencyFormat.format(amount));
    return 1;
}

int PrintScriptEngineBase::envFormatNumber()
{
    const int count = checkArgCount(3);
    if (count < 0)
        return 0;
    bool ok1 = false;
    bool ok2 = false;
    bool ok3 = false;
    const int value = intArg(0, ok1);
    const int fractionDigits = intArg(1, ok2);
    const int minFractionDigits = intArg(2, ok3);
    if (!ok1 || !ok2 || !ok3)
        return 0;
    m_numberFormat.setFractionDigits(fractionDigits);
    m_numberFormat.setMinFractionDigits(minFractionDigits);
    m_numberFormat.setGrouping(count > 3 ? boolArg(3) : m_grouping);
    pushString(m_numberFormat.format(value));
    return 1;
}

int PrintScriptEngineBase::envFormatDate()
{
    if (checkArgCount(2) < 0)
        return 0;
    // A script Date object is not an ISO string and gives nothing.
    const QDate date = dateArg(0);
    if (!date.isValid())
        return 0;
    pushString(date.toString(stringArg(1)));
    return 1;
}

int PrintScriptEngineBase::envCurrentDate()
{
    pushString(QDate::currentDate().toString(Qt::ISODate));
    return 1;
}

int PrintScriptEngineBase::envCurrentDateTime()
{
    if (checkArgCount(1) < 0)
        return 0;
    pushString(QDateTime::currentDateTime().toString(stringArg(0)));
    return 1;
}

int PrintScriptEngineBase::envGetDateTime()
{
    if (checkArgCount(2) < 0)
        return 0;
    if (!m_model)
        return 0;
    const QVariant value = m_model->value(stringArg(0));
    const QString format = stringArg(1);
    switch (value.typeId()) {
    case QMetaType::QDate:
        pushString(value.toDate().toString(format));
        break;
    case QMetaType::QTime:
        pushString(value.toTime().toString(format));
        break;
    case QMetaType::QDateTime:
        pushString(value.toDateTime().toString(format));
        break;
    default:
        pushString(QString(""));
        break;
    }
    return 1;
}

QString PrintScriptEngineBase::formatModelNumber(
    const QString& path, int minFractionDigits, bool grouping)
{
    const QVariant value = m_model ? m_model->value(path) : QVariant();
    m_numberFormat.setGrouping(grouping);
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        m_numberFormat.setFractionDigits(0);
        m_numberFormat.setMinFractionDigits(0);
        return m_numberFormat.format(value.toLongLong());
    default:
        break;
    }
    if (value.isValid() && value.canConvert<Decimal>()) {
        const Decimal decimal = value.value<Decimal>();
        qint64 scaled = decimal.toLongLong();
        int digits = qMax(decimal.scale(), 0);
        // Fewer digits than asked for are padded by scaling up, never rounded.
        while (digits < minFractionDigits && digits < 8) {
            scaled *= 10;
            ++digits;
        }
        m_numberFormat.setFractionDigits(digits);
        m_numberFormat.setMinFractionDigits(minFractionDigits);
        return m_numberFormat.format(scaled);
    }
    if (!value.isValid())
        return QString();
    return value.toString();
}

int PrintScriptEngineBase::envGetNumber()
{
    const int count = checkArgCount(1);
    if (count < 0)
        return 0;
    int minFractionDigits = 0;
    if (count > 1) {
        bool ok = false;
        minFractionDigits = intArg(1, ok);
        if (!ok)
            minFractionDigits = 0;
    }
    const bool grouping = count > 2 ? boolArg(2) : m_grouping;
    pushString(formatModelNumber(stringArg(0), minFractionDigits, grouping));
    return 1;
}

int PrintScriptEngineBase::envGetCurrency()
{
    const int count = checkArgCount(1);
    if (count < 0)
        return 0;
    const bool grouping = count > 1 ? boolArg(1) : m_grouping;
    pushString(formatModelNumber(stringArg(0), 2, grouping));
    return 1;
}

int PrintScriptEngineBase::envSetLocale()
{
    if (checkArgCount(1) < 0)
        return 0;
    const QLocale locale(stringArg(0));
    m_currencyFormat.setLocale(locale);
    m_numberFormat.setLocale(locale);
    return 0;
}
