#ifndef MAINWINDOWACTIONS_H
#define MAINWINDOWACTIONS_H

#include <QCoreApplication>
#include <QKeySequence>
#include <QList>
#include <QMap>
#include <QString>

class InvoiceForm;
class MainModel;
class MainWindow;
class QAction;
class QActionGroup;
class QTableView;
class Registry;

// The commands of the main window: every action with its text, shortcut
// and handler, the menus and the tool bar that show them, and which of them
// can be used in the window's state. The actions are children of the window.
class MainWindowActions
{
    Q_DECLARE_TR_FUNCTIONS(MainWindowActions)
public:
    // What the commands depend on.
    struct State
    {
        bool connected = false;
        // An invoice is shown, and it is in edit mode.
        bool shown = false;
        bool editable = false;
        // The rows of the invoice list, and the shown invoice's row there.
        int invoiceCount = 0;
        int invoiceRow = -1;
        // The rows of the invoice, and the current one.
        int itemCount = 0;
        int currentItemRow = -1;
    };

    MainWindowActions(MainWindow* window, Registry* registry, MainModel* model, InvoiceForm* form);

    QAction* action(const char* name) const;
    // The menus and the tool bar of the window; the invoice list's panel
    // is shown and hidden with listToggle.
    void createMenus(QAction* listToggle);
    // Beside the rows' title, and in the rows' context menu.
    QList<QAction*> rowButtonActions() const;
    QList<QAction*> rowMenuActions() const;

    void update(const State& state);
    // The active search: -1 for the results of the search dialog.
    void showQuickSearch(int n);
    void showVatMode(bool vatIncluded);
    // Checks the commands of the row table's columns as the table shows them.
    void showColumns(const QTableView* rows);

private:
    QAction* create(const QString& name, const QString& text, const QKeySequence& shortcut);
    // handler: a slot of receiver or a function object.
    template<typename Receiver, typename Handler>
    QAction* create(const QString& name, const QString& text, const QKeySequence& shortcut,
        Receiver* receiver, Handler handler);
    QList<QAction*> actions(std::initializer_list<const char*> names) const;
    void createInvoiceActions();
    void createSearchActions();
    void createPrintActions();
    void createOtherActions();

    MainWindow* m_window;
    Registry* m_registry;
    MainModel* m_model;
    InvoiceForm* m_form;
    QMap<QString, QAction*> m_actions;
    QActionGroup* m_quickSearchGroup = nullptr;
    QActionGroup* m_vatGroup = nullptr;
};

#endif // MAINWINDOWACTIONS_H
