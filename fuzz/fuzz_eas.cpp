// The electronic account statement, record by record.
#include "fuzzinput.h"
#include "payments/easreader.h"

#include <QBuffer>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    EASReader reader(&buffer);
    // Each record is a non-empty line: more records than lines would mean
    // that the reader repeats or invents them.
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
