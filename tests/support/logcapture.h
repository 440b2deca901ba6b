#ifndef LOGCAPTURE_H
#define LOGCAPTURE_H

#include <QStringList>

// Collects the messages of one logging category while it lives, as "debug: text"
// or "warning: text" lines; one capture at a time.
class LogCapture
{
public:
    explicit LogCapture(const char* category);
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QStringList lines() const { return m_lines; }
    bool contains(const QString& line) const { return m_lines.contains(line); }
    bool containsPrefix(const QString& prefix) const;
    void clear() { m_lines.clear(); }

private:
    static void handler(QtMsgType type, const QMessageLogContext& context, const QString& text);

    QByteArray m_category;
    QStringList m_lines;
    QtMessageHandler m_previous;
};

#endif // LOGCAPTURE_H
