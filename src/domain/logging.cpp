#include "logging.h"

const QLoggingCategory& logDatabase()
{
    static const QLoggingCategory category("veklari.database", QtDebugMsg);
    return category;
}

const QLoggingCategory& logUi()
{
    static const QLoggingCategory category("veklari.ui", QtDebugMsg);
    return category;
}

const QLoggingCategory& logScript()
{
    static const QLoggingCategory category("veklari.script", QtDebugMsg);
    return category;
}

const QLoggingCategory& logWs()
{
    static const QLoggingCategory category("veklari.ws", QtDebugMsg);
    return category;
}
