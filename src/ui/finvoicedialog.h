#ifndef FINVOICEDIALOG_H
#define FINVOICEDIALOG_H

#include <QDialog>
#include <QMessageBox>

class QPlainTextEdit;
class QPushButton;
class Registry;

// Edits the script that writes every Finvoice e-invoice: the one stored
// under the name "finvoice", or the built-in one until the user saves a
// text of their own. The text is read-only until editing is switched on.
class FinvoiceDialog : public QDialog
{
    Q_OBJECT
public:
    explicit FinvoiceDialog(Registry* registry, QWidget* parent = nullptr);

    QString scriptText() const;
    bool isEditMode() const;
    // The id of the stored script; -1 while the built-in one is shown.
    int scriptId() const { return m_scriptId; }

public slots:
    // The stored script, else the built-in one; false after a failed fetch.
    bool loadScript();
    void loadBuiltInScript();
    // Stores the text as the script "finvoice"; false after telling why not.
    bool saveScript();
    // OK: a changed text is stored first, and the dialog stays open when that fails.
    void saveScriptAndAccept();
    // Puts the built-in text into the editor (stored only with OK).
    void restoreScript();
    void toggleEditMode(bool on);

protected:
    // Replaceable in tests.
    virtual void showMessage(QMessageBox::Icon icon, const QString& text);

private:
    Registry* m_registry;
    int m_scriptId = -1;
    QPlainTextEdit* m_editor;
    QPushButton* m_editButton;
    QPushButton* m_restoreButton;
};

#endif // FINVOICEDIALOG_H
