#include "customerlistprintmodel.h"

#include "core/registry.h"
#include "csvwriter.h"
#include "domain/customer.h"
#include "listreportformat.h"

#include <algorithm>

CustomerListPrintModel::CustomerListPrintModel(Registry* registry, QObject* parent)
    : ListPrintModel(registry, QStringLiteral("customers"), {}, QString(), NumberColumn, parent)
{
}

CustomerListPrintModel::~CustomerListPrintModel()
{
    clear();
}

QString CustomerListPrintModel::title() const
{
    return tr("Asiakasluettelo");
}

void CustomerListPrintModel::clear()
{
    qDeleteAll(m_customers);
    m_customers.clear();
}

bool CustomerListPrintModel::run()
{
    clear();
    m_lastError.clear();
    if (!m_registry) {
        m_lastError = tr("Tietokantaa ei ole avattu");
        return false;
    }
    for (int i = 0; i < m_registry->customerCount(); ++i) {
        const Customer* customer = m_registry->customerAt(i);
        if (customer->deleted)
            continue;
        auto* copy = new Customer;
        customer->copy(copy);
        m_customers.append(copy);
    }
    sort(m_sortColumn);
    return true;
}

void CustomerListPrintModel::sort(int column)
{
    if (column < 0 || column >= ColumnCount)
        column = NumberColumn;
    m_sortColumn = column;
    const QCollator collator = ListReportFormat::collator();
    auto text = [column](const Customer* customer) -> QString {
        switch (column) {
        case NameColumn:
            return customer->name;
        case ContactColumn:
            return customer->contact;
        case StreetNameColumn:
            return customer->streetName;
        case PostCodeColumn:
            return customer->postCode;
        case TownNameColumn:
            return customer->townName;
        case CountryColumn:
            return customer->country;
        default:
            return QString();
        }
    };
    std::stable_sort(
        m_customers.begin(), m_customers.end(), [&](const Customer* a, const Customer* b) {
            if (column != NumberColumn) {
                const int result = collator.compare(text(a), text(b));
                if (result != 0)
                    return result < 0;
            }
            return a->number < b->number;
        });
}

QVariant CustomerListPrintModel::rowValue(int row, const QStringList& path) const
{
    if (path.size() != 3)
        return QVariant();
    const Customer* customer = m_customers.at(row);
    const QString& key = path.at(2);
    const QVariant address = addressValue(*customer, key);
    if (address.isValid())
        return address;
    if (key == QLatin1String("contact"))
        return customer->contact;
    if (key == QLatin1String("vatNumber"))
        return customer->vatNumber;
    if (key == QLatin1String("emailAddress"))
        return customer->emailAddress;
    if (key == QLatin1String("phoneNumber"))
        return customer->phoneNumber;
    return QVariant();
}

bool CustomerListPrintModel::exportToCSV(const QString& fileName, const QString& format)
{
    CsvWriter csv(format);
    csv.addRow({ tr("Nro"), tr("Nimi"), tr("Maa"), tr("Yhteyshenkilö"), tr("Puhelinnumero"),
        tr("VAT-numero"), tr("Verkkolaskuvälittäjän tunnus"), tr("Verkkolaskuosoite"), tr("Oma 1"),
        tr("Oma 2") });
    for (const Customer* customer : std::as_const(m_customers)) {
        csv.addNumber(QString::number(customer->number));
        csv.addText(customer->name);
        csv.addText(customer->country);
        csv.addText(customer->contact);
        csv.addText(customer->phoneNumber);
        // The one field holds a business id or a VAT number.
        csv.addText(Customer::isValidBusinessId(customer->vatNumber)
                ? Customer::convertBusinessIdToVatNumber(customer->vatNumber)
                : customer->vatNumber);
        csv.addText(customer->property(QStringLiteral("e1")).toString());
        csv.addText(customer->property(QStringLiteral("e2")).toString());
        csv.addText(customer->property(QStringLiteral("c1")).toString());
        csv.addText(customer->property(QStringLiteral("c2")).toString());
        csv.endRow();
    }
    return ListReportFormat::save(csv, fileName, &m_lastError);
}
