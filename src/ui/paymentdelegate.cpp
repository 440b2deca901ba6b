#include "paymentdelegate.h"

#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"

#include <QComboBox>
#include <QLineEdit>

PaymentDelegate::PaymentDelegate(Registry* registry, QObject* parent)
    : QStyledItemDelegate(parent), m_registry(registry)
{
}

QWidget* PaymentDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem&, const QModelIndex& index) const
{
    if (index.column() == PaymentTableModel::BankAccountColumn) {
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
        m_editor = combo;
        return combo;
    }
    auto* edit = new QLineEdit(parent);
    edit->setFrame(false);
    if (index.column() == PaymentTableModel::AmountColumn)
        edit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_editor = edit;
    return edit;
}

void PaymentDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* combo = qobject_cast<QComboBox*>(editor)) {
        const int row = combo->findData(index.data(Qt::EditRole).toInt());
        combo->setCurrentIndex(row < 0 ? 0 : row);
        return;
    }
    if (auto* edit = qobject_cast<QLineEdit*>(editor))
        edit->setText(index.data(Qt::EditRole).toString());
}

void PaymentDelegate::setModelData(
    QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (auto* combo = qobject_cast<QComboBox*>(editor)) {
        model->setData(index, combo->currentData().toInt(), Qt::EditRole);
        return;
    }
    if (auto* edit = qobject_cast<QLineEdit*>(editor))
        model->setData(index, edit->text(), Qt::EditRole);
}

void PaymentDelegate::destroyEditor(QWidget* editor, const QModelIndex& index) const
{
    if (editor == m_editor)
        m_editor = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
}

void PaymentDelegate::commitOpenEditor()
{
    if (!m_editor)
        return;
    QWidget* editor = m_editor;
    m_editor = nullptr;
    emit commitData(editor);
    emit closeEditor(editor, QAbstractItemDelegate::NoHint);
}
