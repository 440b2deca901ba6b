#ifndef PAYMENTDELEGATE_H
#define PAYMENTDELEGATE_H

#include "ui/itemeditordelegate.h"

// Editors of the payment table: the date and the amount as text and the
// bank account chosen from the seller's accounts.
class PaymentDelegate : public ItemEditorDelegate
{
    Q_OBJECT
public:
    explicit PaymentDelegate(Registry* registry, QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
        const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(
        QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
};

#endif // PAYMENTDELEGATE_H
