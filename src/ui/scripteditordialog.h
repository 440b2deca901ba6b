#ifndef SCRIPTEDITORDIALOG_H
#define SCRIPTEDITORDIALOG_H

#include "domain/invoicecriteria.h"

#include <QDialog>
#include <QMessageBox>
#include <QPointer>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPrintPreviewWidget;
class QPushButton;
class Registry;
class ScriptLoader;

// Lists the print scripts stored in the database and edits their name, type
// and source. A test run evaluates the edited source and prints invoices
// with it into a preview window; saving stores the script (and the choice
// of the default invoice layout) in one transaction.
class ScriptEditorDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ScriptEditorDialog(Registry* registry, QWidget* parent = nullptr);
    ~ScriptEditorDialog() override;

    // The invoices a test run prints; without criteria the latest invoice.
    void setInvoiceCriteria(const InvoiceCriteria& criteria);
    // The id of the script being edited, -1 for a new one.
    int currentId() const { return m_currentId; }
    bool isModified() const { return m_modified; }
    QPrintPreviewWidget* previewWidget() const;

public slots:
    // Starts a new script from the built-in layout of the chosen type.
    void newScript();
    bool saveScript();
    bool deleteScript();
    // Evaluates the source; invoice layouts are then printed into a preview.
    bool testRun();
    void selectScript(int id);
    void reject() override;

protected:
    // Message boxes and the error dialog, replaceable in tests.
    virtual void showMessage(QMessageBox::Icon icon, const QString& text);
    virtual bool askQuestion(const QString& text);
    virtual void showScriptError(const QString& error);

private slots:
    void currentRowChanged(int row);
    void typeChanged();
    void updatePosition();
    void setModified();

private:
    QString currentType() const;
    void refreshList(int selectId);
    void loadScript(int id);
    bool confirmDiscard();
    int defaultInvoiceScriptId() const;
    void goToLine(int line);
    void updateButtons();

    Registry* m_registry;
    std::unique_ptr<ScriptLoader> m_loader;
    InvoiceCriteria m_criteria;
    bool m_criteriaSet = false;
    int m_currentId = -1;
    bool m_modified = false;
    bool m_loading = false;

    QListWidget* m_list;
    QLineEdit* m_nameEdit;
    QComboBox* m_typeCombo;
    QCheckBox* m_defaultCheck;
    QPlainTextEdit* m_sourceEdit;
    QLabel* m_positionLabel;
    QPushButton* m_newButton;
    QPushButton* m_deleteButton;
    QPushButton* m_testButton;
    QPushButton* m_saveButton;
    QPointer<QDialog> m_preview;
};

#endif // SCRIPTEDITORDIALOG_H
