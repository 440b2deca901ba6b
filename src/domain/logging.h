#ifndef LOGGING_H
#define LOGGING_H

#include <QLoggingCategory>

// The program's logging categories. Debug output of the "veklari.*"
// categories follows the configuration (logging/debugEnabled), except that
// "veklari.ws" always lets debug messages through.
const QLoggingCategory& logDatabase();
const QLoggingCategory& logUi();
const QLoggingCategory& logScript();
const QLoggingCategory& logWs();

#endif // LOGGING_H
