// The electronic account statement, record by record.
#include "fuzzinput.h"
#include "payments/easreader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzRecords<EASReader>(data, size);
}
