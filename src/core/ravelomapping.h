#ifndef RAVELOMAPPING_H
#define RAVELOMAPPING_H

#include <QMap>
#include <QString>
#include <QStringList>

class Settings;

// Which customer of the program each customer of the time entries is, and
// which product each work type is billed as. Kept in the company settings,
// so the choices travel with the database and are there on the next run.
class RaveloMapping
{
public:
    void load(const Settings& settings);
    // Replaces the stored mapping; other settings stay.
    void save(Settings* settings) const;

    // -1 when not mapped.
    int customerId(const QString& raveloCustomer) const;
    // A negative id removes the mapping.
    void setCustomerId(const QString& raveloCustomer, int id);
    int productId(const QString& workType) const;
    void setProductId(const QString& workType, int id);

    QStringList customers() const { return m_customers.keys(); }
    QStringList workTypes() const { return m_products.keys(); }

private:
    QMap<QString, int> m_customers;
    QMap<QString, int> m_products;
};

#endif // RAVELOMAPPING_H
