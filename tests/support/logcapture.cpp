#include "logcapture.h"

namespace {
LogCapture* activeCapture = nullptr;
}

LogCapture::LogCapture(const char* category) : m_category(category)
{
    activeCapture = this;
    m_previous = qInstallMessageHandler(&LogCapture::handler);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    activeCapture = nullptr;
}

bool LogCapture::containsPrefix(const QString& prefix) const
{
    for (const QString& line : m_lines) {
        if (line.startsWith(prefix))
            return true;
    }
    return false;
}

void LogCapture::handler(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    LogCapture* capture = activeCapture;
    if (!capture)
        return;
    if (context.category && capture->m_category == context.category) {
        const char* level = "other";
        switch (type) {
        case QtDebugMsg:
            level = "debug";
            break;
        case QtInfoMsg:
            level = "info";
            break;
        case QtWarningMsg:
            level = "warning";
            break;
        case QtCriticalMsg:
            level = "critical";
            break;
        case QtFatalMsg:
            level = "fatal";
            break;
        }
        capture->m_lines.append(QLatin1String(level) + QStringLiteral(": ") + text);
    }
    if (capture->m_previous)
        capture->m_previous(type, context, text);
}
