#include "paymentdelegate.h"

#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"

#include <QComboBox>
#include <QLineEdit>

PaymentDelegate::PaymentDelegate(Registry* registry, QObject* parent)
    : ItemEditorDelegate(registry, parent)
{
}

QWidget* PaymentDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem&, const QModelIndex& index) const
{
    if (index.column() != PaymentTableModel::BankAccountColumn)
        return createLineEdit(parent, index.column() == PaymentTableModel::AmountColumn);
    auto* combo = new QComboBox(parent);
    combo->addItem(tr("(ei tiliä)"), -1);
    const int current = index.data(Qt::EditRole).toInt();
    for (int i = 0; i < m_registry->bankAccountCount(); ++i) {
        const BankAccount* account = m_registry->bankAccountAt(i);
        // A removed account is offered only to the payment that has it.
        if (account->deleted && account->id != current)
            continue;
        combo->addItem(account->name, account->id);
    }
    return open(combo);
}

void PaymentDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* combo = qobject_cast<QComboBox*>(editor)) {
        const int row = combo->findData(index.data(Qt::EditRole).toInt());
        combo->setCurrentIndex(row < 0 ? 0 : row);
        return;
    }
    ItemEditorDelegate::setEditorData(editor, index);
}

void PaymentDelegate::setModelData(
    QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (auto* combo = qobject_cast<QComboBox*>(editor))
        model->setData(index, combo->currentData().toInt(), Qt::EditRole);
    else
        ItemEditorDelegate::setModelData(editor, model, index);
}
