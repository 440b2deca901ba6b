#ifndef FUZZINPUT_H
#define FUZZINPUT_H

#include <QBuffer>
#include <QByteArray>
#include <QString>
#include <cstddef>
#include <cstdint>

// Every fuzz target defines this entry point: libFuzzer calls it with its
// inputs, and the replay program with each kept input.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// The input as the text a user or a file would give the parser.
inline QString fuzzText(const uint8_t* data, size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
}

// Reads a fixed-width bank file record by record. Each record is a non-empty
// line, so more records than lines would mean that the reader repeats or
// invents them; a record with an error must say what the error is.
template<typename Reader>
int fuzzRecords(const uint8_t* data, size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    Reader reader(&buffer);
    const qsizetype lines = bytes.count('\n') + bytes.count('\r') + 1;
    qsizetype records = 0;
    while (reader.readRecord()) {
        if (++records > lines)
            __builtin_trap();
        if (reader.error() && reader.errorString().isEmpty())
            __builtin_trap();
    }
    return 0;
}

#endif // FUZZINPUT_H
