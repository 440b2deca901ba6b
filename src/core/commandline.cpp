#include "commandline.h"

bool CommandLine::parse(const QStringList& arguments)
{
    m_number = -1;
    m_configFile.clear();
    m_ok = true;

    bool fault = false;
    int i = 0;
    while (i < arguments.size()) {
        if (arguments.at(i) == QLatin1String("-c")) {
            if (i == arguments.size() - 1) {
                m_ok = false;
                return false;
            }
            // The value after -c is read as CONFIG and then also taken as an
            // ordinary argument, so "-c FILE" selects NUMBER 0 (the last used
            // database) and cannot be combined with a NUMBER of its own.
            ++i;
            m_configFile = arguments.at(i);
        }
        if (m_number < 0) {
            // Not a number or out of the int range: 0, the database used last.
            m_number = arguments.at(i).toInt(nullptr, 10);
        } else {
            fault = true;
        }
        ++i;
    }
    m_ok = !fault;
    return m_ok;
}

QString CommandLine::usage()
{
    return QStringLiteral("Usage: veklari [-c CONFIG] [NUMBER]");
}
