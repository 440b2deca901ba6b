#ifndef STANDINPROGRAM_H
#define STANDINPROGRAM_H

#include <QString>
#include <QStringList>

// A program that only records the arguments it was started with, standing in
// for a mail program or any other program the code under test starts.
class StandInProgram
{
public:
    // Writes the executable script at program; each start replaces the
    // record file with its arguments.
    static bool write(const QString& program, const QString& record);
    // The arguments of the last start, waiting for the program to write them
    // (it runs detached); "(no record)" when it never ran.
    static QStringList recorded(const QString& record);
};

#endif // STANDINPROGRAM_H
