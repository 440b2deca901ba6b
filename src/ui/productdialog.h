#ifndef PRODUCTDIALOG_H
#define PRODUCTDIALOG_H

#include <QDialog>

class ProductTableModel;
class ProductTreeModel;
class QComboBox;
class QDialogButtonBox;
class QLineEdit;
class QModelIndex;
class QPushButton;
class QTreeView;
class Registry;

// The product register: products grouped by category in a tree and the
// fields of the chosen product. Edits go to copies of the registry's
// products; OK writes them to the database in one transaction and refreshes
// the registry, Cancel throws them away.
class ProductDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ProductDialog(Registry* registry, QWidget* parent = nullptr);
    ~ProductDialog() override;

    ProductTableModel* model() const { return m_model; }
    ProductTreeModel* treeModel() const { return m_treeModel; }
    // The table row of the shown product, -1 when a category or nothing is
    // chosen.
    int currentProductRow() const;
    void setCurrentProductRow(int row);

public slots:
    void accept() override;
    void addProduct();
    void removeProduct();

protected:
    // Every refusal and failure goes through here, so tests can catch it.
    virtual void showWarning(const QString& text);

private:
    void createWidgets();
    void currentChanged(const QModelIndex& current, const QModelIndex& previous);
    void formEdited();
    // Checks the fields and writes them into the model row; on a bad value
    // warns, focuses the field and returns false.
    bool commitForm();
    void loadForm();
    void updateCategories();

    Registry* m_registry;
    ProductTableModel* m_model;
    ProductTreeModel* m_treeModel;
    QTreeView* m_view;
    QPushButton* m_addButton;
    QPushButton* m_removeButton;
    QWidget* m_form;
    QLineEdit* m_numberEdit;
    QLineEdit* m_nameEdit;
    QLineEdit* m_unitCodeEdit;
    QLineEdit* m_amountEdit;
    QComboBox* m_vatModeCombo;
    QLineEdit* m_vatRateEdit;
    QComboBox* m_categoryCombo;
    QDialogButtonBox* m_buttons;
    int m_formRow = -1;
    bool m_formDirty = false;
    bool m_loading = false;
    bool m_reverting = false;
};

#endif // PRODUCTDIALOG_H
