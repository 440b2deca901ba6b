#ifndef COMMANDLINE_H
#define COMMANDLINE_H

#include <QString>
#include <QStringList>

// The program's arguments: "veklari [-c CONFIG] [NUMBER]".
class CommandLine
{
public:
    CommandLine() = default;

    // arguments: everything after the program name. Returns false on a usage
    // error; number() and configFile() hold what was read until then.
    bool parse(const QStringList& arguments);

    bool isOk() const { return m_ok; }
    // The database number; -1 when none was given, 0 or less means the
    // database used last.
    int number() const { return m_number; }
    // Empty when -c was not given.
    QString configFile() const { return m_configFile; }

    static QString usage();

private:
    int m_number = -1;
    QString m_configFile;
    bool m_ok = true;
};

#endif // COMMANDLINE_H
