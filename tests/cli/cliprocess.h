#ifndef CLIPROCESS_H
#define CLIPROCESS_H

#include <QString>
#include <QStringList>

// Runs the built veklari-cli as a user would, with a home directory of the
// test's choice (HOME and XDG_CONFIG_HOME="HOME/config") and, in every run, a
// display that does not exist and the xcb platform asked for: the program
// must choose its own platform and never need a display.
class CliProcess
{
public:
    struct Result
    {
        bool finished = false;
        int exitCode = -1;
        QString out;
        QString err;
        // Standard error's lines without the empty last one.
        QStringList errLines() const;
        QStringList outLines() const;
        // What a failed check shows.
        QByteArray describe() const;
    };

    // home must exist; the working directory is home too.
    static Result run(const QStringList& arguments, const QString& home);
    // The per-user configuration file under home.
    static QString userConfigFile(const QString& home);
};

#endif // CLIPROCESS_H
