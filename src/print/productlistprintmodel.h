#ifndef PRODUCTLISTPRINTMODEL_H
#define PRODUCTLISTPRINTMODEL_H

#include "listprintmodel.h"

#include <QList>

class Product;

// The product list report ("Tuoteluettelo"): copies of the registry's
// products. Unit prices are Decimals with two to four fraction digits, both
// with and without VAT whichever way the product stores its price.
class ProductListPrintModel : public ListPrintModel
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
    bool exportToCSV(const QString& fileName, const QString& format) override;
    // Sorts by the column, ties by product number.
    void sort(int column) override;

    int productCount() const { return m_products.size(); }
    const Product* productAt(int index) const { return m_products.at(index); }

    // Unit prices in 1/10000.
    static long long amountVatIncluded(const Product* product);
    static long long amountVatExcluded(const Product* product);

protected:
    int rowCount() const override { return m_products.size(); }
    QVariant rowValue(int row, const QStringList& path) const override;

private:
    void clear();

    QList<Product*> m_products;
};

#endif // PRODUCTLISTPRINTMODEL_H
