#ifndef BANKACCOUNTDIALOG_H
#define BANKACCOUNTDIALOG_H

#include "core/bankaccounttablemodel.h"
#include "ui/editordialog.h"

class QSortFilterProxyModel;
class QTableView;

// The seller's bank accounts in the order they are printed, and the fields
// of the chosen account. Removed accounts are only marked deleted and
// disappear from the list.
class BankAccountDialog : public EditorDialog<BankAccountTableModel>
{
    Q_OBJECT
public:
    explicit BankAccountDialog(Registry* registry, QWidget* parent = nullptr);

    // The table row of the shown account, -1 when none.
    int currentRow() const override;
    void selectRow(int row) override;

public slots:
    void addAccount();
    void removeAccount();
    void moveUp();
    void moveDown();

protected:
    void fillForm(const BankAccount& account) override;
    bool checkForm() override;
    void readForm(BankAccount& account) override;

private:
    void createWidgets();
    void move(bool up);

    QSortFilterProxyModel* m_filter;
    QTableView* m_view;
    QPushButton* m_addButton;
    QPushButton* m_removeButton;
    QPushButton* m_upButton;
    QPushButton* m_downButton;
    QLineEdit* m_nameEdit;
    QLineEdit* m_shortNameEdit;
    QLineEdit* m_ibanEdit;
    QLineEdit* m_bicEdit;
    QCheckBox* m_visibleCheck;
};

#endif // BANKACCOUNTDIALOG_H
