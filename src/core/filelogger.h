#ifndef FILELOGGER_H
#define FILELOGGER_H

#include <QFile>
#include <QObject>
#include <QTextStream>

// Writes every Qt message of the process as one line
// "2024-03-01T14:05:09 DEBUG [veklari.ui] text" to the log file beside the
// configuration file, or to standard error when the file name is "-".
class FileLogger : public QObject
{
    Q_OBJECT
public:
    static FileLogger* getInstance();

    bool isEnabled() const;
    void setEnabled(bool enabled);
    bool isDebugEnabled() const;
    void setDebugEnabled(bool enabled);
    QString outputFileName() const;
    void setOutputFileName(const QString& fileName);

    void messageHandler(QtMsgType type, const QMessageLogContext& context, const QString& message);
    // Builds the log line of one message (without the line end).
    static QString formatLine(
        QtMsgType type, const QMessageLogContext& context, const QString& message);

public slots:
    void addToLog(const QString& line);

private:
    FileLogger();

    bool m_enabled = true;
    bool m_debugEnabled = false;
    QFile m_file;
    QTextStream m_fileStream;
    QTextStream m_standardError;
    bool m_toStandardError = true;
};

void installFileLogger();
void fileLoggerMessageHandler(
    QtMsgType type, const QMessageLogContext& context, const QString& message);

#endif // FILELOGGER_H
