#ifndef PAYMENTPRINTPREVIEWDIALOG_H
#define PAYMENTPRINTPREVIEWDIALOG_H

#include "printpreviewdialog.h"

#include <QList>

class PaymentPrintModel;
class PaymentCriteria;
class QAction;
class QComboBox;
class QMenu;

// The preview of the payment journal: search criteria, visible columns and
// sort order. Columns, sort column and orientation are kept in the
// configuration file, group "paymentPrint".
class PaymentPrintPreviewDialog : public PrintPreviewDialog
{
    Q_OBJECT
public:
    explicit PaymentPrintPreviewDialog(Registry* registry, QWidget* parent = nullptr);
    ~PaymentPrintPreviewDialog() override;

    PaymentPrintModel* listModel() const { return m_listModel; }
    QAction* searchAction() const { return m_searchAction; }
    QMenu* columnMenu() const { return m_columnMenu; }
    QList<QAction*> columnActions() const { return m_columnActions; }
    QComboBox* sortComboBox() const { return m_sortCombo; }

    // Shows the report of these criteria on the reports printer; false
    // when the report could not be made.
    static bool showReport(Registry* registry, const PaymentCriteria& criteria, QWidget* parent);

public slots:
    // Opens the search; accepting it runs the report again.
    void openSearchDialog();
    void setColumnVisible(int column, bool visible);
    void sortBy(int column);

protected:
    void saveSettings() override;

private:
    PaymentPrintModel* m_listModel;
    QAction* m_searchAction;
    QMenu* m_columnMenu;
    QList<QAction*> m_columnActions;
    QComboBox* m_sortCombo;
};

#endif // PAYMENTPRINTPREVIEWDIALOG_H
