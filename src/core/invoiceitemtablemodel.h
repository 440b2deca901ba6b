#ifndef INVOICEITEMTABLEMODEL_H
#define INVOICEITEMTABLEMODEL_H

#include "core/rowchanges.h"
#include "domain/decimalformat.h"

#include <QAbstractTableModel>
#include <QList>

class InvoiceItem;
class Product;
class Query;
class Registry;

// The rows of the invoice being edited. Prices are shown and entered
// including or excluding VAT (vatIncluded); the row keeps the one stored
// amount and derives the other. Rows removed since the last save are
// remembered so that saving deletes them.
class InvoiceItemTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column
    {
        ProductColumn,
        TextColumn,
        QuantityColumn,
        UnitColumn,
        PriceColumn,
        DiscountColumn,
        DiscountedPriceColumn,
        VatColumn,
        TotalColumn,
        ColumnCount
    };

    explicit InvoiceItemTableModel(Registry* registry, QObject* parent = nullptr);
    ~InvoiceItemTableModel() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Edit role only, and only while editable. A number too large to be
    // read, or one that would make an amount exceed the limit, is refused
    // with tooLargeAmountEntered() and lastError() telling the limit.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
    bool insertRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;
    bool removeRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;

    bool toInvoiceItem(int row, InvoiceItem* item) const;
    // nullptr for a row out of range.
    const InvoiceItem* invoiceItemAt(int row) const;
    // Sums of the row totals, in cents.
    long long totalAmountVatIncluded() const;
    long long totalAmountVatExcluded() const;
    // From the VAT breakdown of all rows with the company's rounding mode.
    long long totalVatAmount() const;
    // The first row with neither product number nor name, -1 for none.
    int emptyProduct() const;

    // Why the last too large value was refused.
    QString lastError() const { return m_lastError; }
    bool isChanged() const { return m_changed; }
    bool isEditable() const { return m_editable; }
    bool isVatIncluded() const { return m_vatIncluded; }
    bool isVatFree() const { return m_vatFree; }

    // nullptr clears the product number and name.
    void setProduct(int row, const Product* product);
    void setText(int row, const QString& text);
    void setQuantity(int row, long long quantity);
    // Interest rows: quantity and the stored unit amount as they are, VAT 0.
    void setQuantityAndAmountAndVat0(int row, long long quantity, long long amount);
    // Appends a copy of a row as a new, unsaved row.
    void fromInvoiceItem(const InvoiceItem* item);
    bool insertRow(int row);
    bool removeRow(int row);
    // A remove followed by an insert, so that views see both.
    bool moveRow(int from, int to);
    // Drops the rows with no product number, no text and no price.
    void removeEmptyRows();
    // Rows of known products take the product's VAT rate again.
    void addVatToInvoiceItems();
    void removeVatFromInvoiceItems();
    void setVatIncluded(bool vatIncluded);
    void setVatFree(bool vatFree);
    void setEditable(bool editable);

    // Replaces the rows with those of the invoice; on failure the rows stay
    // and the error is in the query.
    bool loadInvoiceItems(Query* query, int invoiceId);
    // Deletes the removed rows and inserts or updates the others in display
    // order; does nothing when nothing changed. Call inside a transaction
    // and follow it with committed() or rolledBack().
    bool saveInvoiceItems(Query* query, int invoiceId);
    void committed();
    // The transaction was rolled back: rows inserted by the last save are
    // new again.
    void rolledBack();
    // Forgets every row without deleting anything.
    void clearInvoiceItems();
    // Removes every row; saving then deletes the saved ones.
    void deleteInvoiceItems();

    // Clipboard text: one line of tab-separated fields per row.
    void invoiceItemToString(int row, QString& out) const;
    // Appends a row for each line of seven fields or more; returns the
    // number of rows added.
    int invoiceItemsFromString(const QString& text);

signals:
    void tooLargeAmountEntered(int row);

private:
    bool isValidRow(int row) const { return row >= 0 && row < m_items.size(); }
    bool refuseTooLarge(int row, const QString& error);
    void emitRowChanged(int row, int firstColumn = 0, int lastColumn = TotalColumn);
    long long shownPrice(const InvoiceItem* item) const;
    void setShownPrice(InvoiceItem* item, long long price) const;
    void fillFromProduct(InvoiceItem* item, const Product* product) const;

    Registry* m_registry;
    QList<InvoiceItem*> m_items;
    RowChanges<InvoiceItem> m_rowChanges;
    bool m_editable = false;
    bool m_changed = false;
    bool m_vatIncluded = true;
    bool m_vatFree = false;
    QString m_lastError;

    DecimalFormat m_amountDisplayFormat;
    DecimalFormat m_amountEditFormat;
    DecimalFormat m_totalFormat;
    DecimalFormat m_quantityDisplayFormat;
    DecimalFormat m_quantityEditFormat;
    DecimalFormat m_percentageDisplayFormat;
    DecimalFormat m_percentageEditFormat;
};

#endif // INVOICEITEMTABLEMODEL_H
