#ifndef VAT_H
#define VAT_H

#include <QList>
#include <QMap>

class InvoiceItem;

// Rounding, adding and removing VAT, and the VAT breakdown of one invoice by
// rate. Amounts are cents in the breakdown; the static helpers keep the
// scale of their input. Rates are in 1/100 % (24 % is 2400).
class Vat
{
public:
    Vat() = default;

    // Divides by 10^digits, rounding half away from zero.
    static long long round(long long value, int digits);
    // round(a * b * c, digits) with the product formed in 128 bits, so that
    // quantity * price * (10000 - discount) cannot overflow on the way.
    static long long roundProduct(long long a, long long b, long long c, int digits);
    static long long addVat(long long amount, int vatRate);
    static long long substractVat(long long amount, int vatRate);
    static long long roundWithSamePrecision(long long value, long long reference);

    // Clears the sums; the rounding mode stays.
    void clear();
    // 2 derives the breakdown from the rows' VAT-excluded totals, any other
    // value from the VAT-included sums per rate.
    void setRoundingMode(int mode) { m_roundingMode = mode; }
    int roundingMode() const { return m_roundingMode; }

    int size() const;
    QList<int> vatRates() const;

    void addInvoiceItem(const InvoiceItem* item);
    // A free amount on one side; the other side is derived from it at the
    // same rate so that the breakdown stays consistent.
    void addVatExcludedAmount(long long amount, int vatRate);
    void addVatIncludedAmount(long long amount, int vatRate);
    void add(const Vat* other);

    long long totalAmountVatIncluded() const { return m_totalVatIncluded; }
    long long totalAmountVatIncluded(int vatRate) const;
    long long totalAmountVatExcluded() const;
    long long totalAmountVatExcluded(int vatRate) const;
    long long totalVatAmount() const;
    long long totalVatAmount(int vatRate) const;

private:
    void addSums(int vatRate, long long included, long long excluded);

    QMap<int, long long> m_vatIncluded;
    QMap<int, long long> m_vatExcluded;
    long long m_totalVatIncluded = 0;
    long long m_totalVatExcluded = 0;
    int m_roundingMode = 0;
};

#endif // VAT_H
