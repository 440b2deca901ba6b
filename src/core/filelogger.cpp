#include "filelogger.h"

#include <QDateTime>
#include <QLoggingCategory>
#include <QMetaObject>

#include <cstdio>

FileLogger::FileLogger() : m_standardError(stderr, QIODevice::WriteOnly) { }

FileLogger* FileLogger::getInstance()
{
    // Created on the GUI thread by setupLogging() before any other thread
    // can log, so no lock is needed. Never destroyed: messages may arrive
    // until the very end of the process.
    static FileLogger* instance = nullptr;
    if (!instance)
        instance = new FileLogger();
    return instance;
}

bool FileLogger::isEnabled() const
{
    return m_enabled;
}

void FileLogger::setEnabled(bool enabled)
{
    m_enabled = enabled;
}

bool FileLogger::isDebugEnabled() const
{
    return m_debugEnabled;
}

void FileLogger::setDebugEnabled(bool enabled)
{
    m_debugEnabled = enabled;
    // The web-service category keeps its debug output whatever the setting.
    QLoggingCategory::setFilterRules(
        QStringLiteral("veklari.*.debug=%1\nveklari.ws.debug=true")
            .arg(enabled ? QStringLiteral("true") : QStringLiteral("false")));
}

QString FileLogger::outputFileName() const
{
    return m_file.fileName();
}

void FileLogger::setOutputFileName(const QString& fileName)
{
    m_fileStream.setDevice(nullptr);
    m_file.close();
    m_file.setFileName(fileName);

    if (fileName == QLatin1String("-")) {
        m_toStandardError = true;
        return;
    }

    m_toStandardError = false;
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
        m_fileStream.setDevice(&m_file);
    } else {
        // With the file closed and standard error off, this line goes
        // nowhere; the program simply runs without a log.
        addToLog(m_file.errorString());
    }
}

QString FileLogger::formatLine(
    QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    QString level;
    switch (type) {
    case QtDebugMsg:
        level = QStringLiteral("DEBUG");
        break;
    case QtInfoMsg:
        level = QStringLiteral("INFO");
        break;
    case QtWarningMsg:
        level = QStringLiteral("WARNING");
        break;
    case QtCriticalMsg:
        level = QStringLiteral("CRITICAL");
        break;
    case QtFatalMsg:
        level = QStringLiteral("FATAL");
        break;
    }

    QString line = QDateTime::currentDateTime().toString(Qt::ISODate);
    line += QLatin1Char(' ');
    line += level;
    line += QLatin1Char(' ');
    if (context.category) {
        line += QLatin1Char('[');
        line += QString::fromUtf8(context.category);
        line += QLatin1String("] ");
    }
    line += message;
    return line;
}

void FileLogger::messageHandler(
    QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    // Messages from other threads are queued to the logger's thread, so the
    // file is only ever written from one thread.
    QMetaObject::invokeMethod(
        this, "addToLog", Qt::AutoConnection, Q_ARG(QString, formatLine(type, context, message)));
}

void FileLogger::addToLog(const QString& line)
{
    if (!m_enabled)
        return;
    if (m_file.isOpen())
        m_fileStream << line << Qt::endl;
    if (m_toStandardError)
        m_standardError << line << Qt::endl;
}

void installFileLogger()
{
    qInstallMessageHandler(fileLoggerMessageHandler);
}

void fileLoggerMessageHandler(
    QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    FileLogger::getInstance()->messageHandler(type, context, message);
}
