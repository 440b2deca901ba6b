// The incoming reference payments file, record by record.
#include "fuzzinput.h"
#include "payments/irpreader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    return fuzzRecords<IRPReader>(data, size);
}
