#ifndef LISTPRINTPREVIEWDIALOG_H
#define LISTPRINTPREVIEWDIALOG_H

#include "printpreviewdialog.h"

#include <QList>

class ListPrintModel;
class QAction;
class QComboBox;
class QMenu;

// The preview of a list report whose columns the user chooses: a search,
// a menu of the columns to show and the sort order. Columns, sort column
// and orientation are kept in the configuration group of the model
// (ListPrintModel::settingsGroup()).
class ListPrintPreviewDialog : public PrintPreviewDialog
{
    Q_OBJECT
public:
    ~ListPrintPreviewDialog() override;

    ListPrintModel* listModel() const { return m_listModel; }
    QAction* searchAction() const { return m_searchAction; }
    QMenu* columnMenu() const { return m_columnMenu; }
    QList<QAction*> columnActions() const { return m_columnActions; }
    QComboBox* sortComboBox() const { return m_sortCombo; }

public slots:
    // Opens the search; accepting it runs the report again.
    virtual void openSearchDialog() = 0;
    void setColumnVisible(int column, bool visible);
    void sortBy(int column);

protected:
    // The dialog takes the model over.
    ListPrintPreviewDialog(Registry* registry, ListPrintModel* model, QWidget* parent);
    void saveSettings() override;

private:
    ListPrintModel* m_listModel;
    QAction* m_searchAction;
    QMenu* m_columnMenu;
    QList<QAction*> m_columnActions;
    QComboBox* m_sortCombo;
};

#endif // LISTPRINTPREVIEWDIALOG_H
