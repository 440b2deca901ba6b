// DateFormat::parse, the lenient date forms users type; a date that parses
// comes back from its own formatting.
#include "domain/dateformat.h"
#include "fuzzinput.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const DateFormat format(QDate(2025, 3, 3));
    const QDate date = format.parse(fuzzText(data, size));
    if (date.isValid() && date.year() >= 1000 && format.parse(format.format(date)) != date)
        abort();
    return 0;
}
