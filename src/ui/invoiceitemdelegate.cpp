#include "invoiceitemdelegate.h"

#include "core/invoiceitemtablemodel.h"
#include "core/registry.h"
#include "domain/product.h"

#include <QCompleter>
#include <QLineEdit>
#include <QStringListModel>

#include <algorithm>

namespace {

QString completionText(const Product* product)
{
    return QStringLiteral("%1 %2").arg(product->number, product->name);
}

} // namespace

InvoiceItemDelegate::InvoiceItemDelegate(Registry* registry, QObject* parent)
    : QStyledItemDelegate(parent), m_registry(registry)
{
}

QWidget* InvoiceItemDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    switch (index.column()) {
    case InvoiceItemTableModel::ProductColumn: {
        auto* edit = new QLineEdit(parent);
        edit->setFrame(false);
        QStringList products;
        for (int i = 0; i < m_registry->productCount(); ++i)
            products.append(completionText(m_registry->productAt(i)));
        std::sort(products.begin(), products.end(),
            [](const QString& a, const QString& b) { return a.localeAwareCompare(b) < 0; });
        // The list is built when editing starts, so it always follows the
        // product register.
        auto* completer = new QCompleter(new QStringListModel(products, edit), edit);
        completer->setCaseSensitivity(Qt::CaseInsensitive);
        completer->setFilterMode(Qt::MatchContains);
        completer->setCompletionMode(QCompleter::PopupCompletion);
        edit->setCompleter(completer);
        // Choosing a product from the list is as good as typing it and
        // pressing Return.
        auto* self = const_cast<InvoiceItemDelegate*>(this);
        connect(completer, qOverload<const QString&>(&QCompleter::activated), edit, [self, edit] {
            QMetaObject::invokeMethod(
                self, [self, edit] { self->commitAndCloseEditor(edit); }, Qt::QueuedConnection);
        });
        m_editor = edit;
        return edit;
    }
    case InvoiceItemTableModel::QuantityColumn:
    case InvoiceItemTableModel::PriceColumn:
    case InvoiceItemTableModel::DiscountColumn: {
        auto* edit = new QLineEdit(parent);
        edit->setFrame(false);
        edit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_editor = edit;
        return edit;
    }
    default: {
        QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
        m_editor = editor;
        return editor;
    }
    }
}

void InvoiceItemDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* edit = qobject_cast<QLineEdit*>(editor)) {
        edit->setText(index.data(Qt::EditRole).toString());
        return;
    }
    QStyledItemDelegate::setEditorData(editor, index);
}

void InvoiceItemDelegate::setModelData(
    QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    auto* edit = qobject_cast<QLineEdit*>(editor);
    if (!edit) {
        QStyledItemDelegate::setModelData(editor, model, index);
        return;
    }
    if (index.column() == InvoiceItemTableModel::ProductColumn) {
        const QString number = productNumberFromText(edit->text());
        // Unchanged: keep the row as it is (a product's price may have been
        // edited since it was chosen).
        if (number == index.data(Qt::EditRole).toString())
            return;
        model->setData(index, number, Qt::EditRole);
        return;
    }
    model->setData(index, edit->text(), Qt::EditRole);
}

QString InvoiceItemDelegate::productNumberFromText(const QString& text) const
{
    const QString trimmed = text.trimmed();
    bool found = false;
    m_registry->productByNumber(trimmed, found);
    if (found)
        return trimmed;
    for (int i = 0; i < m_registry->productCount(); ++i) {
        const Product* product = m_registry->productAt(i);
        if (completionText(product).trimmed() == trimmed)
            return product->number;
    }
    return trimmed;
}

void InvoiceItemDelegate::destroyEditor(QWidget* editor, const QModelIndex& index) const
{
    if (editor == m_editor)
        m_editor = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
}

void InvoiceItemDelegate::commitOpenEditor()
{
    if (m_editor)
        commitAndCloseEditor(m_editor);
}

void InvoiceItemDelegate::commitAndCloseEditor(QWidget* editor)
{
    if (!editor || editor != m_editor || !editor->isVisible())
        return;
    m_editor = nullptr;
    emit commitData(editor);
    emit closeEditor(editor, QAbstractItemDelegate::NoHint);
}
