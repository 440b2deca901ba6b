#include "cliprocess.h"

#include <QProcess>

namespace {

// Far longer than any run takes; only a hung program reaches it.
constexpr int finishLimitMs = 300000;

QStringList lines(const QString& text)
{
    QStringList result = text.split(QLatin1Char('\n'));
    if (!result.isEmpty() && result.last().isEmpty())
        result.removeLast();
    return result;
}

} // namespace

QStringList CliProcess::Result::errLines() const
{
    return lines(err);
}

QStringList CliProcess::Result::outLines() const
{
    return lines(out);
}

QByteArray CliProcess::Result::describe() const
{
    return QStringLiteral("exit %1\n--- stdout\n%2--- stderr\n%3")
        .arg(exitCode)
        .arg(out, err)
        .toUtf8();
}

CliProcess::Result CliProcess::run(const QStringList& arguments, const QString& home)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/config"));
    env.insert(QStringLiteral("DISPLAY"), QStringLiteral(":4242"));
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
    env.remove(QStringLiteral("WAYLAND_DISPLAY"));
    env.remove(QStringLiteral("QT_LOGGING_RULES"));
    QProcess process;
    process.setProcessEnvironment(env);
    process.setWorkingDirectory(home);
    process.start(QStringLiteral(VEKLARI_CLI_EXECUTABLE), arguments);
    Result result;
    result.finished
        = process.waitForFinished(finishLimitMs) && process.exitStatus() == QProcess::NormalExit;
    result.exitCode = process.exitCode();
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

QString CliProcess::userConfigFile(const QString& home)
{
    return home + QStringLiteral("/config/Veklari/Veklari.ini");
}
