#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include <QMainWindow>

class MainModel;
class QAction;
class QLabel;
class QTableView;
class Registry;

// The main window: the invoice list of the open database.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    explicit MainWindow(Registry* registry, QWidget* parent = nullptr);
    ~MainWindow() override;

    MainModel* model() const { return m_model; }
    QTableView* invoiceTableView() const { return m_invoiceTableView; }

    // Opens database `number` once the event loop runs.
    void openDatabaseLater(int number);
    // number: the configured database's number; 0 or less opens the one used
    // last. Returns whether the database was opened and its data fetched.
    bool openDatabase(int number);

    void showErrorMessage(const QString& message);

protected:
    // The message boxes, kept apart so that they can be answered without a
    // modal dialog.
    virtual bool askQuestion(const QString& question);
    virtual void showCriticalMessage(const QString& message);

private slots:
    void openDatabaseSlot();

private:
    // Writes the first database entry, a new SQLite file beside the
    // configuration file, and returns its number.
    int addDefaultDatabase();
    void updateWindowTitle();
    void updateStatus();

    Registry* m_registry;
    MainModel* m_model;
    QTableView* m_invoiceTableView;
    QLabel* m_statusLabel;
    QAction* m_quitAction;
    int m_numberToOpen = -1;
    QString m_databaseTitle;
};

#endif // MAINWINDOW_H
