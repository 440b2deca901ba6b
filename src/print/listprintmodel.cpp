#include "listprintmodel.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "listreportformat.h"

namespace {

const char* const customerWords[][2] = { { "lähiosoite", "Lähiosoite" },
    { "postinumero", "Postinumero" }, { "postitoimipaikka", "Postitoimipaikka" }, { "maa", "Maa" },
    { "yhteyshenkilö", "Yhteyshenkilö" }, { "puhelinnumero", "Puhelinnumero" },
    { "sähköpostiosoite", "Sähköpostiosoite" } };

} // namespace

ListPrintModel::ListPrintModel(Registry* registry, const QString& rowsName,
    const QStringList& columnNames, const QString& settingsGroup, int sortColumn, QObject* parent)
    : PrintModel(parent)
    , m_registry(registry)
    , m_sortColumn(sortColumn)
    , m_rowsName(rowsName)
    , m_columnNames(columnNames)
    , m_settingsGroup(settingsGroup)
    , m_columnFlags(allColumns())
{
}

QVariant ListPrintModel::value(QStringList& path)
{
    if (path.isEmpty())
        return QVariant();
    const QString& root = path.at(0);
    if (path.size() == 1) {
        if (root != QLatin1String("name"))
            return totalValue(root);
        const Settings* settings = m_registry ? m_registry->settings() : nullptr;
        return settings ? settings->sellerName : QString();
    }
    bool ok = false;
    const int index = path.at(1).toInt(&ok);
    if (root == m_rowsName) {
        if (path.size() == 2 && path.at(1) == QLatin1String("length"))
            return rowCount();
        if (!ok || index < 0 || index >= rowCount() || path.size() < 3)
            return QVariant();
        return rowValue(index, path);
    }
    if (m_columnNames.isEmpty() || path.size() != 2)
        return QVariant();
    if (root == QLatin1String("criteria")) {
        if (path.at(1) == QLatin1String("length"))
            return int(m_criteriaTexts.size());
        return ok && index >= 0 && index < m_criteriaTexts.size()
            ? QVariant(m_criteriaTexts.at(index))
            : QVariant();
    }
    const int column = m_columnNames.indexOf(path.at(1));
    if (root == QLatin1String("columns") && column >= 0)
        return isColumnVisible(column);
    return QVariant();
}

QVariant ListPrintModel::totalValue(const QString& key) const
{
    Q_UNUSED(key)
    return QVariant();
}

void ListPrintModel::setExtraFields(const QStringList& fields)
{
    m_extraFields = fields;
    m_extraFieldsSet = true;
}

QStringList ListPrintModel::extraFields() const
{
    if (m_extraFieldsSet)
        return m_extraFields;
    return ListReportFormat::extraFields(
        m_registry ? m_registry->appSettings() : nullptr, m_settingsGroup);
}

Database* ListPrintModel::database()
{
    m_lastError.clear();
    Database* database = m_registry ? m_registry->database() : nullptr;
    if (!database)
        m_lastError = tr("Tietokantaa ei ole avattu");
    return database;
}

const Customer* ListPrintModel::customerOf(int customerId) const
{
    return customerById(m_registry, customerId);
}

int ListPrintModel::compareCustomers(int a, int b, bool byName, const QCollator& collator) const
{
    const Customer* p = customerOf(a);
    const Customer* q = customerOf(b);
    if (byName)
        return collator.compare(p ? p->name : QString(), q ? q->name : QString());
    return compare(p ? p->number : -1, q ? q->number : -1);
}

QVariant ListPrintModel::invoiceValue(const Invoice& invoice, const QString& key)
{
    if (key == QLatin1String("type"))
        return invoice.type;
    if (key == QLatin1String("number"))
        return invoice.number;
    if (key == QLatin1String("date"))
        return invoice.date;
    if (key == QLatin1String("dueDate"))
        return invoice.dueDate;
    if (key == QLatin1String("hasDeliveryDate"))
        return invoice.deliveryDate.isValid();
    if (key == QLatin1String("deliveryDate"))
        return invoice.deliveryDate;
    if (key == QLatin1String("balance"))
        return money(invoice.balance);
    return QVariant();
}

QString ListPrintModel::customerFieldHeading(const QString& word)
{
    for (const auto& pair : customerWords) {
        if (word == QString::fromUtf8(pair[0]))
            return tr(pair[1]);
    }
    return QString();
}

QString ListPrintModel::customerField(const Customer* customer, const QString& word)
{
    if (!customer)
        return QString();
    // In the order of customerWords, whose words are UTF-8.
    const QString fields[] = { customer->streetName, customer->postCode, customer->townName,
        customer->country, customer->contact, customer->phoneNumber, customer->emailAddress };
    for (int i = 0; i < int(std::size(customerWords)); ++i) {
        if (word == QString::fromUtf8(customerWords[i][0]))
            return fields[i];
    }
    return QString();
}

int ListPrintModel::compare(const QDate& a, const QDate& b)
{
    if (a.isValid() != b.isValid())
        return a.isValid() ? -1 : 1;
    return a < b ? -1 : (b < a ? 1 : 0);
}
