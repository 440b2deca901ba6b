#ifndef CUSTOMERLISTPRINTMODEL_H
#define CUSTOMERLISTPRINTMODEL_H

#include "printmodel.h"

#include <QList>

class Customer;
class Registry;

// The customer list report ("Asiakasluettelo"): copies of the registry's
// customers that are not marked deleted.
class CustomerListPrintModel : public PrintModel
{
    Q_OBJECT
public:
    // Sort columns.
    enum Column
    {
        NumberColumn,
        NameColumn,
        ContactColumn,
        StreetNameColumn,
        PostCodeColumn,
        TownNameColumn,
        CountryColumn,
        ColumnCount
    };

    explicit CustomerListPrintModel(Registry* registry, QObject* parent = nullptr);
    ~CustomerListPrintModel() override;

    bool run() override;
    QString title() const override;
    using PrintModel::value;
    QVariant value(QStringList& path) override;
    bool exportToCSV(const QString& fileName, const QString& format) override;

    int sortColumn() const { return m_sortColumn; }
    // Sorts by the column, ties by customer number.
    void sort(int column);
    int customerCount() const { return m_customers.size(); }
    const Customer* customerAt(int index) const { return m_customers.at(index); }

private:
    void clear();

    Registry* m_registry;
    QList<Customer*> m_customers;
    int m_sortColumn = NumberColumn;
};

#endif // CUSTOMERLISTPRINTMODEL_H
