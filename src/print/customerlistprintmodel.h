#ifndef CUSTOMERLISTPRINTMODEL_H
#define CUSTOMERLISTPRINTMODEL_H

#include "listprintmodel.h"

#include <QList>

// The customer list report ("Asiakasluettelo"): copies of the registry's
// customers that are not marked deleted.
class CustomerListPrintModel : public ListPrintModel
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
    bool exportToCSV(const QString& fileName, const QString& format) override;
    // Sorts by the column, ties by customer number.
    void sort(int column) override;

    int customerCount() const { return m_customers.size(); }
    const Customer* customerAt(int index) const { return m_customers.at(index); }

protected:
    int rowCount() const override { return m_customers.size(); }
    QVariant rowValue(int row, const QStringList& path) const override;

private:
    void clear();

    QList<Customer*> m_customers;
};

#endif // CUSTOMERLISTPRINTMODEL_H
