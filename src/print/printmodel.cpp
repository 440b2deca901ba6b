#include "printmodel.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "domain/decimal.h"

PrintModel::PrintModel(QObject* parent) : QObject(parent) { }

bool PrintModel::run()
{
    return true;
}

QString PrintModel::lastError() const
{
    return m_lastError;
}

QVariant PrintModel::value(const QString& path)
{
    QStringList parts = path.split(QLatin1Char('/'));
    return value(parts);
}

QImage PrintModel::image(const QString& path)
{
    QStringList parts = path.split(QLatin1Char('/'));
    return image(parts);
}

QImage PrintModel::image(QStringList& path)
{
    Q_UNUSED(path)
    return QImage();
}

QString PrintModel::csvFormatToDelimiter(int format)
{
    return format == 1 ? QStringLiteral(";") : QStringLiteral(",");
}

QVariant PrintModel::money(long long cents)
{
    return Decimal(cents, 2).toVariant();
}

const Customer* PrintModel::customerById(const Registry* registry, int id)
{
    if (!registry)
        return nullptr;
    bool found = false;
    const Customer* customer = registry->customerById(id, found);
    return found ? customer : nullptr;
}

QVariant PrintModel::addressValue(const Customer& customer, const QString& key)
{
    if (key == QLatin1String("number"))
        return customer.number;
    if (key == QLatin1String("name"))
        return customer.name;
    if (key == QLatin1String("streetName"))
        return customer.streetName;
    if (key == QLatin1String("postCode"))
        return customer.postCode;
    if (key == QLatin1String("townName"))
        return customer.townName;
    if (key == QLatin1String("country"))
        return customer.country;
    return QVariant();
}
