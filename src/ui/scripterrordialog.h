#ifndef SCRIPTERRORDIALOG_H
#define SCRIPTERRORDIALOG_H

#include <QDialog>

class QLabel;
class QPlainTextEdit;

// Shows a script error: the message, where it happened (script or module
// and line) and the whole stack trace.
class ScriptErrorDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ScriptErrorDialog(const QString& error, QWidget* parent = nullptr);

    // The name shown for the evaluated script itself (it runs as "eval").
    void setScriptName(const QString& name);

    QString message() const { return m_message; }
    // The script or module where the error happened; empty when unknown.
    QString file() const { return m_file; }
    // 1-based; 0 when the error has no line.
    int line() const { return m_line; }
    QString location() const;

    // Finds the innermost script frame of a stack trace; native frames are
    // skipped. Returns false when there is none.
    static bool parseLocation(const QString& error, QString* file, int* line);

private:
    void updateLocation();

    QString m_message;
    QString m_file;
    QString m_scriptName;
    int m_line = 0;
    QLabel* m_locationLabel;
};

#endif // SCRIPTERRORDIALOG_H
