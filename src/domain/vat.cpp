#include "vat.h"
#include "invoiceitem.h"

#include <algorithm>

namespace {

// Products such as amount * factor (up to 10^9) or quantity * price *
// (10000 - discount) leave 64 bits long before the amounts become absurd
// (10^13 in 1/10000 units times a nine-digit factor is already 10^22), so
// they are formed and rounded in 128 bits. The rounded results fit in 64.
using Wide = __int128;

Wide roundWide(Wide value, int digits)
{
    if (digits <= 0)
        return value;
    Wide p = 1;
    for (int i = 1; i < digits; ++i) {
        p *= 10;
        // Past 10^38 every 128-bit value rounds to zero.
        if (i >= 38)
            return 0;
    }
    const Wide q = value / p;
    Wide result = q / 10;
    if (value >= 0 && q % 10 > 4)
        ++result;
    else if (value < 0 && -(q % 10) > 4)
        --result;
    return result;
}

long long vatFactor(int vatRate)
{
    // The factor is truncated to nine digits on purpose: it decides the
    // last cent of borderline amounts exactly as stored invoices have it.
    return static_cast<long long>(1.0 / (1.0 + vatRate / 100.0 / 100.0) * 1000000000.0);
}

// The 32-bit sum of the per-rate VAT-excluded amounts wraps like the int it
// has always been kept in.
qint32 wrapAdd(qint32 a, long long b)
{
    return qint32(quint32(a) + quint32(quint64(b)));
}

} // namespace

long long Vat::round(long long value, int digits)
{
    return static_cast<long long>(roundWide(value, digits));
}

long long Vat::roundProduct(long long a, long long b, long long c, int digits)
{
    return static_cast<long long>(roundWide(Wide(a) * b * c, digits));
}

long long Vat::addVat(long long amount, int vatRate)
{
    return static_cast<long long>(roundWide(Wide(amount) * (10000 + vatRate), 4));
}

long long Vat::substractVat(long long amount, int vatRate)
{
    return static_cast<long long>(roundWide(Wide(amount) * vatFactor(vatRate), 9));
}

long long Vat::roundWithSamePrecision(long long value, long long reference)
{
    if (reference == 0)
        return value;
    // Unit prices have four decimals and totals two, so at most two
    // trailing zeros of the entered price are honoured.
    unsigned long long magnitude
        = reference < 0 ? 0ULL - static_cast<unsigned long long>(reference) : reference;
    int zeros = 0;
    long long power = 1;
    while (zeros < 2 && magnitude % 10 == 0) {
        magnitude /= 10;
        power *= 10;
        ++zeros;
    }
    return round(value, zeros) * power;
}

void Vat::clear()
{
    m_vatIncluded.clear();
    m_vatExcluded.clear();
    m_totalVatIncluded = 0;
    m_totalVatExcluded = 0;
}

int Vat::size() const
{
    return vatRates().size();
}

QList<int> Vat::vatRates() const
{
    QList<int> rates = m_vatIncluded.keys();
    for (auto it = m_vatExcluded.constBegin(); it != m_vatExcluded.constEnd(); ++it) {
        if (!m_vatIncluded.contains(it.key()))
            rates.append(it.key());
    }
    std::sort(rates.begin(), rates.end());
    return rates;
}

void Vat::addSums(int vatRate, long long included, long long excluded)
{
    m_vatIncluded[vatRate] += included;
    m_vatExcluded[vatRate] += excluded;
    m_totalVatIncluded += included;
    m_totalVatExcluded += excluded;
}

void Vat::addInvoiceItem(const InvoiceItem* item)
{
    addSums(item->vatRate, item->totalAmountVatIncluded(), item->totalAmountVatExcluded());
}

void Vat::addVatExcludedAmount(long long amount, int vatRate)
{
    addSums(vatRate, addVat(amount, vatRate), amount);
}

void Vat::addVatIncludedAmount(long long amount, int vatRate)
{
    addSums(vatRate, amount, substractVat(amount, vatRate));
}

void Vat::add(const Vat* other)
{
    for (auto it = other->m_vatIncluded.constBegin(); it != other->m_vatIncluded.constEnd(); ++it)
        m_vatIncluded[it.key()] += it.value();
    for (auto it = other->m_vatExcluded.constBegin(); it != other->m_vatExcluded.constEnd(); ++it)
        m_vatExcluded[it.key()] += it.value();
    m_totalVatIncluded += other->m_totalVatIncluded;
    m_totalVatExcluded += other->m_totalVatExcluded;
}

long long Vat::totalAmountVatIncluded(int vatRate) const
{
    return m_vatIncluded.value(vatRate, 0);
}

long long Vat::totalAmountVatExcluded() const
{
    if (m_roundingMode == 2)
        return m_totalVatExcluded;
    qint32 sum = 0;
    const QList<int> rates = vatRates();
    for (int rate : rates)
        sum = wrapAdd(sum, totalAmountVatExcluded(rate));
    return sum;
}

long long Vat::totalAmountVatExcluded(int vatRate) const
{
    if (m_roundingMode == 2)
        return m_vatExcluded.value(vatRate, 0);
    return substractVat(m_vatIncluded.value(vatRate, 0), vatRate);
}

long long Vat::totalVatAmount() const
{
    return m_totalVatIncluded - totalAmountVatExcluded();
}

long long Vat::totalVatAmount(int vatRate) const
{
    return totalAmountVatIncluded(vatRate) - totalAmountVatExcluded(vatRate);
}
