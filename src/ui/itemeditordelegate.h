#ifndef ITEMEDITORDELEGATE_H
#define ITEMEDITORDELEGATE_H

#include <QPointer>
#include <QStyledItemDelegate>

class QLineEdit;
class Registry;

// A delegate that keeps track of its open editor, so that a save can take
// what the user typed last. Text fields edit the model's EditRole value.
class ItemEditorDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(
        QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;

    // Hands the open editor's value to the model and closes the editor.
    void commitOpenEditor();

protected:
    ItemEditorDelegate(Registry* registry, QObject* parent);

    // Numbers are edited right-aligned like they are shown.
    QLineEdit* createLineEdit(QWidget* parent, bool alignRight) const;
    // Remembers the editor as the open one.
    QWidget* open(QWidget* editor) const;
    void commitAndCloseEditor(QWidget* editor);

    Registry* m_registry;

private:
    mutable QPointer<QWidget> m_editor;
};

#endif // ITEMEDITORDELEGATE_H
