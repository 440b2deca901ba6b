// The time-entry files ("*.rvt") of the time-tracking program.
#include "core/ravelofilereader.h"
#include "fuzzinput.h"

#include <QSet>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    RaveloFileReader reader;
    const bool ok = reader.read(
        QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)), QStringLiteral("f.rvt"));
    // Invoicing trusts a clean read: no error, and entries that are whole.
    if (ok != reader.errors().isEmpty())
        __builtin_trap();
    QSet<QString> ids;
    for (const RaveloEntry& entry : reader.entries()) {
        if (!entry.date.isValid() || entry.minutes <= 0 || entry.minutes > 24 * 60
            || entry.customer.isEmpty() || entry.workType.isEmpty() || ids.contains(entry.id))
            __builtin_trap();
        ids.insert(entry.id);
    }
    for (const QString& error : reader.errors())
        if (!error.startsWith(QLatin1String("f.rvt:")))
            __builtin_trap();
    return 0;
}
