#ifndef TST_MAINWINDOWFIXTURE_H
#define TST_MAINWINDOWFIXTURE_H

#include "ui/mainwindow.h"

#include <QAction>
#include <QDate>
#include <QDialog>
#include <QDialogButtonBox>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>

class Database;
class QAbstractItemView;
class QComboBox;
class QLineEdit;
class Registry;

// A dialog whose warnings are recorded instead of shown.
template<typename Dialog>
class Recorded : public Dialog
{
public:
    using Dialog::Dialog;
    QStringList warnings;

protected:
    void showWarning(const QString& text) override { warnings.append(text); }
};

// The main window with its message boxes, dialogs and web pages answered
// and recorded by the test instead of shown.
class TestWindow : public MainWindow
{
public:
    using MainWindow::MainWindow;

    bool answer = true;
    QStringList questions;
    QStringList messages;
    // Runs a dialog the window opens; without one the dialog is cancelled.
    std::function<int(QDialog*)> dialogHandler;

protected:
    bool askQuestion(const QString& question) override
    {
        questions.append(question);
        return answer;
    }
    void showCriticalMessage(const QString& message) override { messages.append(message); }
    void showWarningMessage(const QString& message) override { messages.append(message); }
    void showInformationMessage(const QString& message) override { messages.append(message); }
    int execDialog(QDialog* dialog) override
    {
        return dialogHandler ? dialogHandler(dialog) : int(QDialog::Rejected);
    }
    bool openUrl(const QUrl&) override { return false; }
};

// A window on a new SQLite database of its own configuration file. The
// window goes before the registry, as at the program's exit.
class WindowFixture
{
public:
    WindowFixture();
    ~WindowFixture();
    QString configFile() const { return m_dir.filePath(QStringLiteral("Veklari.ini")); }

    // A new registry and window on the configuration, shown and active,
    // with the last used database opened (a new one the first time).
    bool start(const QDate& today = QDate(2024, 3, 15));
    // The program closed (without asking) and started again.
    bool restart(const QDate& today = QDate(2024, 3, 15));
    void stop();

    TestWindow* window() const { return m_window.get(); }
    Registry* registry() const { return m_registry.get(); }
    Database* database() const;
    QAction* action(const char* name) const { return widget<QAction>(name); }
    template<typename T>
    T* widget(const char* name) const
    {
        return m_window->findChild<T*>(QString::fromLatin1(name));
    }
    QString text(const char* lineEditName) const;

    // Stored directly; refresh() makes the window see them.
    int addCustomer(const QString& name, const QString& paymentTerms = QString(),
        const QString& referenceNumber = QString());
    int addProduct(const QString& number, const QString& name, const QString& unit,
        long long amount, int vatRate, bool vatExcluded);
    // Saves an invoice with a customer and dates; returns its id.
    int addInvoice(int number, int customerId, const QDate& date, const QDate& dueDate,
        int totalAmount, int balance);
    void refresh() { m_window->refresh(); }

    int storedInvoiceCount() const;
    // The first column of the first row of a SELECT on the window's database.
    QVariant storedValue(const QString& sql) const;

private:
    QTemporaryDir m_dir;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<TestWindow> m_window;
};

// Columns of a field (by object name), the text typed into it and the
// warning that the user gets.
void addFieldColumns();

// The 7-3-1 check digit appended, computed without the program's helpers.
QString withCheckDigit(const QString& base);

// Every row of a table, ordered by id, as "column|column" lines.
QStringList tableRows(Database* database, const QString& table);

// Where a keyboard would send a key: an open list of completions, else
// the widget, else the focus widget.
QWidget* keyTarget(QWidget* widget = nullptr);
// Presses a key where the keyboard is.
void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
// Also letters outside ASCII, which QTest::keyClicks cannot type. Without
// a widget the keys go where the keyboard is.
void typeText(QWidget* widget, const QString& text);
void keys(const QString& text);
// Selects what the field holds and types the text over it.
void replaceText(QLineEdit* edit, const QString& text);
void clickButton(QDialog* dialog, QDialogButtonBox::StandardButton which);
// Chooses a customer by typing its name into the combo box and leaving it.
void chooseCustomer(QComboBox* combo, const QString& name);
// A cell editor of the view has the keyboard.
bool editing(QAbstractItemView* view);
// Return, and wait for the view to take the value. With several
// completions open, the first Return only closes them.
void commitEditor(QAbstractItemView* view);
// The texts of a column of the invoice list as the window shows it.
QStringList shownColumn(MainWindow* window, int column);

#endif // TST_MAINWINDOWFIXTURE_H
