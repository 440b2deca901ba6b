#ifndef RAVELOTABLEMODEL_H
#define RAVELOTABLEMODEL_H

#include "core/raveloinvoicebuilder.h"
#include "domain/decimalformat.h"

#include <QAbstractTableModel>
#include <QList>

class Registry;

// The preview of the invoices to be made from time entries: every row of
// every planned invoice, the customer named on the invoice's first row, and
// a total line after each invoice. Read-only.
class RaveloTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        CustomerColumn,
        ProductColumn,
        TextColumn,
        QuantityColumn,
        UnitColumn,
        PriceColumn,
        TotalColumn,
        ColumnCount
    };

    explicit RaveloTableModel(Registry* registry, QObject* parent = nullptr);

    void setInvoices(const QList<RaveloInvoiceBuilder::PlannedInvoice>& invoices);
    void clear();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    // One line of the preview: a row of an invoice, or its total (item -1).
    struct Line
    {
        int invoice = -1;
        int item = -1;
    };

    Registry* m_registry;
    QList<RaveloInvoiceBuilder::PlannedInvoice> m_invoices;
    QList<Line> m_lines;
    DecimalFormat m_quantityFormat;
    DecimalFormat m_amountFormat;
    DecimalFormat m_totalFormat;
};

#endif // RAVELOTABLEMODEL_H
