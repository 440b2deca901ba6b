#ifndef PRODUCTDIALOG_H
#define PRODUCTDIALOG_H

#include "core/producttablemodel.h"
#include "ui/editordialog.h"

class ProductTreeModel;
class QTreeView;

// The product register: products grouped by category in a tree and the
// fields of the chosen product. Removed products are deleted by OK.
class ProductDialog : public EditorDialog<ProductTableModel>
{
    Q_OBJECT
public:
    explicit ProductDialog(Registry* registry, QWidget* parent = nullptr);

    ProductTreeModel* treeModel() const { return m_treeModel; }
    // The table row of the shown product, -1 when a category or nothing is
    // chosen.
    int currentRow() const override;
    void selectRow(int row) override;

public slots:
    void addProduct();
    void removeProduct();

protected:
    void fillForm(const Product& product) override;
    bool checkForm() override;
    void readForm(Product& product) override;
    void formCommitted() override;

private:
    void createWidgets();
    void openCategories();
    // The typed price and VAT rate; a rate beyond 100 % is TooLarge.
    DecimalFormat::ParseStatus typedAmount(qint64& amount) const;
    DecimalFormat::ParseStatus typedVatRate(qint64& vatRate) const;
    void updateCategories();

    ProductTreeModel* m_treeModel;
    QTreeView* m_view;
    QPushButton* m_addButton;
    QPushButton* m_removeButton;
    QLineEdit* m_numberEdit;
    QLineEdit* m_nameEdit;
    QLineEdit* m_unitCodeEdit;
    QLineEdit* m_amountEdit;
    QComboBox* m_vatModeCombo;
    QLineEdit* m_vatRateEdit;
    QComboBox* m_categoryCombo;
};

#endif // PRODUCTDIALOG_H
