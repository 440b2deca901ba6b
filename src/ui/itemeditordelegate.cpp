#include "itemeditordelegate.h"

#include <QLineEdit>

ItemEditorDelegate::ItemEditorDelegate(Registry* registry, QObject* parent)
    : QStyledItemDelegate(parent), m_registry(registry)
{
}

void ItemEditorDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* edit = qobject_cast<QLineEdit*>(editor))
        edit->setText(index.data(Qt::EditRole).toString());
    else
        QStyledItemDelegate::setEditorData(editor, index);
}

void ItemEditorDelegate::setModelData(
    QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (auto* edit = qobject_cast<QLineEdit*>(editor))
        model->setData(index, edit->text(), Qt::EditRole);
    else
        QStyledItemDelegate::setModelData(editor, model, index);
}

void ItemEditorDelegate::destroyEditor(QWidget* editor, const QModelIndex& index) const
{
    if (editor == m_editor)
        m_editor = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
}

void ItemEditorDelegate::commitOpenEditor()
{
    commitAndCloseEditor(m_editor);
}

QLineEdit* ItemEditorDelegate::createLineEdit(QWidget* parent, bool alignRight) const
{
    auto* edit = new QLineEdit(parent);
    edit->setFrame(false);
    if (alignRight)
        edit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    open(edit);
    return edit;
}

QWidget* ItemEditorDelegate::open(QWidget* editor) const
{
    m_editor = editor;
    return editor;
}

void ItemEditorDelegate::commitAndCloseEditor(QWidget* editor)
{
    if (!editor || editor != m_editor)
        return;
    m_editor = nullptr;
    emit commitData(editor);
    emit closeEditor(editor, QAbstractItemDelegate::NoHint);
}
