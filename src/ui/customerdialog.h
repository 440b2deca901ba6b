#ifndef CUSTOMERDIALOG_H
#define CUSTOMERDIALOG_H

#include "core/customertablemodel.h"
#include "ui/editordialog.h"

class QSortFilterProxyModel;
class QTableView;

// The customer register: a searchable list and the fields of the chosen
// customer. Removed customers are only marked deleted and are hidden unless
// "Näytä poistetut" is checked.
class CustomerDialog : public EditorDialog<CustomerTableModel>
{
    Q_OBJECT
public:
    explicit CustomerDialog(Registry* registry, QWidget* parent = nullptr);

    // The id of the shown customer (-1 for a new or no customer).
    int currentCustomerId() const;
    void setCurrentCustomerId(int id);
    int currentRow() const override;
    void selectRow(int row) override;

public slots:
    void addCustomer();
    // Marks the shown customer deleted, or restores a deleted one.
    void removeCustomer();

protected:
    void fillForm(const Customer& customer) override;
    bool checkForm() override;
    void readForm(Customer& customer) override;

private:
    void createWidgets();
    void filterChanged();
    void updateButtons();

    QSortFilterProxyModel* m_deletedFilter;
    QSortFilterProxyModel* m_searchFilter;
    QLineEdit* m_searchEdit;
    QCheckBox* m_showDeletedCheck;
    QTableView* m_view;
    QPushButton* m_addButton;
    QPushButton* m_removeButton;
    QLineEdit* m_numberEdit;
    QLineEdit* m_nameEdit;
    QLineEdit* m_streetNameEdit;
    QLineEdit* m_postCodeEdit;
    QLineEdit* m_townNameEdit;
    QLineEdit* m_countryEdit;
    QLineEdit* m_contactEdit;
    QLineEdit* m_vatNumberEdit;
    QLineEdit* m_referenceNumberEdit;
    QLineEdit* m_emailAddressEdit;
    QLineEdit* m_phoneNumberEdit;
    QLineEdit* m_paymentTermsEdit;
    QComboBox* m_languageCombo;
    QLineEdit* m_custom1Edit;
    QLineEdit* m_custom2Edit;
    QLineEdit* m_intermediatorEdit;
    QLineEdit* m_receiverEdit;
    QLineEdit* m_ediEdit;
};

#endif // CUSTOMERDIALOG_H
