#include "invoiceitemdelegate.h"

#include "core/invoiceitemtablemodel.h"
#include "core/registry.h"
#include "domain/product.h"

#include <QAbstractItemView>
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
    : ItemEditorDelegate(registry, parent)
{
}

QWidget* InvoiceItemDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    switch (index.column()) {
    case InvoiceItemTableModel::ProductColumn: {
        QLineEdit* edit = createLineEdit(parent, false);
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
                edit,
                [self, edit] {
                    if (edit->isVisible())
                        self->commitAndCloseEditor(edit);
                },
                Qt::QueuedConnection);
        });
        // Return in the open list with nothing highlighted: when only one
        // product is left, that is the one meant (productNumberFromText()
        // finds it), instead of only closing the list. Committed at once,
        // while the editor still has the keyboard to hand back to the view.
        connect(edit, &QLineEdit::returnPressed, edit, [self, edit, completer] {
            const QAbstractItemView* popup = completer->popup();
            if (popup->isVisible() && !popup->currentIndex().isValid()
                && completer->completionCount() == 1)
                self->commitAndCloseEditor(edit);
        });
        return edit;
    }
    case InvoiceItemTableModel::QuantityColumn:
    case InvoiceItemTableModel::PriceColumn:
    case InvoiceItemTableModel::DiscountColumn:
        return createLineEdit(parent, true);
    default:
        return open(QStyledItemDelegate::createEditor(parent, option, index));
    }
}

void InvoiceItemDelegate::setModelData(
    QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    auto* edit = qobject_cast<QLineEdit*>(editor);
    if (!edit || index.column() != InvoiceItemTableModel::ProductColumn) {
        ItemEditorDelegate::setModelData(editor, model, index);
        return;
    }
    const QString number = productNumberFromText(edit->text());
    // Unchanged: keep the row as it is (a product's price may have been
    // edited since it was chosen).
    if (number != index.data(Qt::EditRole).toString())
        model->setData(index, number, Qt::EditRole);
}

QString InvoiceItemDelegate::productNumberFromText(const QString& text) const
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return trimmed;
    bool found = false;
    m_registry->productByNumber(trimmed, found);
    if (found)
        return trimmed;
    // The text matches the completions the way the list filters them.
    const Product* onlyMatch = nullptr;
    int matches = 0;
    for (int i = 0; i < m_registry->productCount(); ++i) {
        const Product* product = m_registry->productAt(i);
        const QString completion = completionText(product).trimmed();
        if (completion == trimmed)
            return product->number;
        if (completion.contains(trimmed, Qt::CaseInsensitive)) {
            onlyMatch = product;
            ++matches;
        }
    }
    return matches == 1 ? onlyMatch->number : trimmed;
}
