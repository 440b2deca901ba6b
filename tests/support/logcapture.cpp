#include "logcapture.h"

#include <algorithm>

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
    return std::any_of(m_lines.cbegin(), m_lines.cend(),
        [&](const QString& line) { return line.startsWith(prefix); });
}

void LogCapture::handler(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    // In the order of QtMsgType.
    static const char* const levels[] = { "debug", "warning", "critical", "fatal", "info" };
    LogCapture* capture = activeCapture;
    if (capture && context.category && capture->m_category == context.category)
        capture->m_lines.append(QLatin1String(levels[type]) + QStringLiteral(": ") + text);
    if (capture && capture->m_previous)
        capture->m_previous(type, context, text);
}
