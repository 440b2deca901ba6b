#include "standinprogram.h"

#include <QFile>
#include <QTest>

bool StandInProgram::write(const QString& program, const QString& record)
{
    QFile::remove(record);
    QFile file(program);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    // Written aside and moved, so that the test never reads half a record.
    file.write(QStringLiteral("#!/bin/sh\nprintf '%s\\0' \"$@\" > '%1.part' && mv '%1.part' '%1'\n")
                   .arg(record)
                   .toUtf8());
    file.close();
    return file.setPermissions(file.permissions() | QFile::ExeOwner);
}

QStringList StandInProgram::recorded(const QString& record)
{
    QFile file(record);
    if (!QTest::qWaitFor([&file] { return file.exists(); }, 20000)
        || !file.open(QIODevice::ReadOnly))
        return { QStringLiteral("(no record)") };
    QStringList arguments = QString::fromUtf8(file.readAll()).split(QChar(0));
    arguments.removeLast();
    return arguments;
}
