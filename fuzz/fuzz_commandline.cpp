// The argument line of the e-mail program, split into arguments.
#include "export/emailhelper.h"
#include "fuzzinput.h"

#include <QStringList>

namespace {

QString quoted(QString argument)
{
    argument.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    argument.replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + argument + QLatin1Char('"');
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = fuzzText(data, size);
    const QStringList arguments = EmailHelper::splitCommandLine(text);
    // Without quotes and backslashes the arguments are the words.
    if (!text.contains(QLatin1Char('"')) && !text.contains(QLatin1Char('\\'))
        && arguments != text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts))
        __builtin_trap();
    // Every argument quoted again gives the same arguments back.
    QStringList requoted;
    for (const QString& argument : arguments)
        requoted.append(quoted(argument));
    if (EmailHelper::splitCommandLine(requoted.join(QLatin1Char(' '))) != arguments)
        __builtin_trap();
    return 0;
}
