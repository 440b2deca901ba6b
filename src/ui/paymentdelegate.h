#ifndef PAYMENTDELEGATE_H
#define PAYMENTDELEGATE_H

#include <QPointer>
#include <QStyledItemDelegate>

class Registry;

// Editors of the payment table: the date and the amount as text (the
// amount right-aligned) and the bank account chosen from the seller's
// accounts.
class PaymentDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit PaymentDelegate(Registry* registry, QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
        const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(
        QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;

    // Hands an open editor's value to the model and closes the editor.
    void commitOpenEditor();

private:
    Registry* m_registry;
    mutable QPointer<QWidget> m_editor;
};

#endif // PAYMENTDELEGATE_H
