#ifndef IRPINVOICEDELEGATE_H
#define IRPINVOICEDELEGATE_H

#include <QStyledItemDelegate>

// The invoice column of the payment import: a combo box of the row's
// candidate invoices.
class IRPInvoiceDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
        const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(
        QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
};

#endif // IRPINVOICEDELEGATE_H
