#include "invoicetype.h"

QString InvoiceType::name(int type)
{
    static const char* const names[count]
        = { "Lasku", "Korkolasku", "Hyvityslasku", "Maksumuistutus", "Kuitti", "Lähete" };
    return isValid(type) ? QString::fromUtf8(names[type]) : QString();
}
