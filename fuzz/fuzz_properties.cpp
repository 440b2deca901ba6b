// The property text of customers, invoices and the company settings: read,
// written back and read again.
#include "domain/entityutil.h"
#include "fuzzinput.h"

#include <QMap>
#include <QVariant>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QMap<QString, QVariant> properties;
    EntityUtil::propertiesFromString(fuzzText(data, size), properties);
    QMap<QString, QVariant> again;
    EntityUtil::propertiesFromString(EntityUtil::propertiesToString(properties), again);
    EntityUtil::escapeString(EntityUtil::unescapeString(fuzzText(data, size)));
    return 0;
}
