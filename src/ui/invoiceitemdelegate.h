#ifndef INVOICEITEMDELEGATE_H
#define INVOICEITEMDELEGATE_H

#include "ui/itemeditordelegate.h"

// Editors of the invoice row table: the product column completes product
// numbers and names from the registry, the numeric columns edit
// right-aligned like they are shown.
class InvoiceItemDelegate : public ItemEditorDelegate
{
    Q_OBJECT
public:
    explicit InvoiceItemDelegate(Registry* registry, QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
        const QModelIndex& index) const override;
    void setModelData(
        QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;

    // The product number meant by a typed or completed text: a product
    // number or a completion "NUMBER NAME" gives NUMBER, and so does a part
    // of exactly one completion; any other text is taken as typed.
    QString productNumberFromText(const QString& text) const;
};

#endif // INVOICEITEMDELEGATE_H
