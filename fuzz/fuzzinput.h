#ifndef FUZZINPUT_H
#define FUZZINPUT_H

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

#endif // FUZZINPUT_H
