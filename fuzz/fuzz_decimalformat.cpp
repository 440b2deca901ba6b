// DecimalFormat::parse in the Finnish locale with the program's scales; a
// value that parses comes back from its own formatting.
#include "domain/constants.h"
#include "domain/decimalformat.h"
#include "fuzzinput.h"

#include <QLocale>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QString text = fuzzText(data, size);
    static const int fractionDigits[] = { Constants::amountFractionDigits,
        Constants::totalAmountFractionDigits, Constants::percentageFractionDigits, 0 };
    for (const int digits : fractionDigits) {
        DecimalFormat format(digits, 0);
        format.setLocale(QLocale(QLocale::Finnish, QLocale::Finland));
        format.setGrouping(false);
        bool ok = false;
        const qint64 value = format.parse(text, ok);
        if (!ok)
            continue;
        bool again = false;
        if (format.parse(format.format(value), again) != value || !again)
            abort();
    }
    return 0;
}
