#ifndef PRODUCTLISTPRINTMODEL_H
#define PRODUCTLISTPRINTMODEL_H

#include "printmodel.h"

#include <QList>

class Product;
class Registry;

// The product list report ("Tuoteluettelo"): copies of the registry's
// products. Unit prices are Decimals with two to four fraction digits, both
// with and without VAT whichever way the product stores its price.
class ProductListPrintModel : public PrintModel
{
    Q_OBJECT
public:
    // Sort columns.
    enum Column
    {
        NumberColumn,
        NameColumn,
        UnitCodeColumn,
        AmountVatExcludedColumn,
        AmountColumn,
        VatRateColumn,
        CategoryColumn,
        ColumnCount
    };

    explicit ProductListPrintModel(Registry* registry, QObject* parent = nullptr);
    ~ProductListPrintModel() override;

    bool run() override;
    QString title() const override;
    using PrintModel::value;
    QVariant value(QStringList& path) override;
    bool exportToCSV(const QString& fileName, const QString& format) override;

    int sortColumn() const { return m_sortColumn; }
    // Sorts by the column, ties by product number.
    void sort(int column);
    int productCount() const { return m_products.size(); }
    const Product* productAt(int index) const { return m_products.at(index); }

    // Unit prices in 1/10000.
    static long long amountVatIncluded(const Product* product);
    static long long amountVatExcluded(const Product* product);

private:
    void clear();

    Registry* m_registry;
    QList<Product*> m_products;
    int m_sortColumn = NumberColumn;
};

#endif // PRODUCTLISTPRINTMODEL_H
