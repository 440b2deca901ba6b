// Runs kept fuzz inputs through a target's entry point with the normal
// compiler: every file of the directories (or the files) given. A parser
// that crashes or trips a check fails the test that runs this.
#include "fuzzinput.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdio>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QStringList files;
    for (const QString& argument : app.arguments().mid(1)) {
        const QFileInfo info(argument);
        // A target without findings has no directory of them.
        if (!info.exists())
            continue;
        if (!info.isDir()) {
            files.append(argument);
            continue;
        }
        const QFileInfoList entries = QDir(argument).entryInfoList(QDir::Files, QDir::Name);
        for (const QFileInfo& entry : entries)
            files.append(entry.filePath());
    }
    for (const QString& name : files) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(name));
            return 1;
        }
        const QByteArray input = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.constData()), input.size());
    }
    std::printf("%lld inputs replayed\n", static_cast<long long>(files.size()));
    return 0;
}
