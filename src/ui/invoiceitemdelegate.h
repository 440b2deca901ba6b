#ifndef INVOICEITEMDELEGATE_H
#define INVOICEITEMDELEGATE_H

#include <QPointer>
#include <QStyledItemDelegate>

class Registry;

// Editors of the invoice row table: the product column completes product
// numbers and names from the registry, the numeric columns edit
// right-aligned like they are shown.
class InvoiceItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit InvoiceItemDelegate(Registry* registry, QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
        const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(
        QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;

    // Hands the text of an open editor to the model and closes the editor,
    // so that a save sees what the user typed last.
    void commitOpenEditor();

    // The product number meant by a typed or completed text: a completion
    // "NUMBER NAME" gives NUMBER; any other text is taken as typed.
    QString productNumberFromText(const QString& text) const;

private:
    void commitAndCloseEditor(QWidget* editor);

    Registry* m_registry;
    mutable QPointer<QWidget> m_editor;
};

#endif // INVOICEITEMDELEGATE_H
