#ifndef EDITORDIALOG_H
#define EDITORDIALOG_H

#include "core/registry.h"
#include "domain/logging.h"
#include "ui/formhelper.h"

#include <QAbstractItemView>
#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QMessageBox>

// A register: the list of records beside the fields of the chosen one.
// Edits go to the model's copies of the registry's records. The shown record
// must pass its checks before another one is shown or a command runs; OK
// writes every change in one transaction and refreshes the registry, Cancel
// throws the edits away. Model is a RecordTableModel.
template<typename Model>
class EditorDialog : public QDialog
{
public:
    using Record = typename Model::Record;

    Model* model() const { return m_model; }
    // The model row chosen in the list, -1 for none; choosing one.
    virtual int currentRow() const = 0;
    virtual void selectRow(int row) = 0;

    void accept() override
    {
        if (!commitForm())
            return;
        if (m_model->isModified() && !m_model->save(m_registry->database())) {
            qCWarning(logUi).noquote() << m_model->lastError();
            showWarning(m_saveFailedText.arg(m_model->lastError()));
            return;
        }
        QDialog::accept();
    }

protected:
    // saveFailedText: the warning of a failed save, "%1" the error.
    EditorDialog(Registry* registry, const QString& saveFailedText, QWidget* parent)
        : QDialog(parent)
        , m_registry(registry)
        , m_model(new Model(registry, this))
        , m_saveFailedText(saveFailedText)
    {
        m_model->load();
    }

    // Every refusal and failure goes through here, so tests can catch it.
    virtual void showWarning(const QString& text)
    {
        QMessageBox::warning(this, windowTitle(), text);
    }

    // Shows a record in the fields (an empty one when no row is chosen).
    virtual void fillForm(const Record& record) = 0;
    // Checks the fields; on a bad value warns, focuses the field and
    // returns false.
    virtual bool checkForm() = 0;
    // Writes the fields into record as they stand, unchecked; a field that
    // does not read as a value leaves the record's own.
    virtual void readForm(Record& record) = 0;
    virtual void formCommitted() { }

    // Warns of a bad value and puts the keyboard in its field; false.
    bool refuse(QLineEdit* field, const QString& text, bool selectAll = false)
    {
        showWarning(text);
        field->setFocus();
        if (selectAll)
            field->selectAll();
        return false;
    }

    // Writes the edited fields into the model row.
    bool commitForm()
    {
        const Record* current = m_model->recordAt(m_formRow);
        if (!m_formDirty || !current)
            return true;
        if (!checkForm())
            return false;
        // Starting from the row keeps what the form does not show.
        Record record;
        current->copy(&record);
        readForm(record);
        m_formDirty = false;
        const int selected = currentRow();
        m_model->setRecord(m_formRow, record);
        // A new number or group may have moved the row and the selection.
        if (selected >= 0 && currentRow() != selected)
            selectQuietly(selected);
        formCommitted();
        return true;
    }

    void loadForm()
    {
        m_loading = true;
        m_formRow = currentRow();
        m_formDirty = false;
        const Record* record = m_model->recordAt(m_formRow);
        fillForm(record ? *record : Record());
        m_loading = false;
    }

    // Another row was chosen: the shown one must pass first, or the list
    // goes back to it.
    void currentChanged()
    {
        if (m_reverting)
            return;
        const int previousRow = m_formRow;
        const int nextRow = currentRow();
        if (!commitForm()) {
            selectQuietly(previousRow);
            return;
        }
        if (nextRow >= 0 && currentRow() != nextRow)
            selectQuietly(nextRow);
        loadForm();
    }

    // Chooses a row without checking and loading the form.
    void selectQuietly(int row)
    {
        const bool reverting = m_reverting;
        m_reverting = true;
        selectRow(row);
        m_reverting = reverting;
    }

    // The list shows what is being typed; the checks wait until the record
    // is left or the dialog accepted.
    void showTyped()
    {
        const Record* current = m_model->recordAt(m_formRow);
        if (!current)
            return;
        Record record;
        current->copy(&record);
        readForm(record);
        const bool reverting = m_reverting;
        m_reverting = true;
        m_model->setRecord(m_formRow, record);
        // A new number or group may have moved the row or rebuilt the list.
        if (currentRow() != m_formRow)
            selectRow(m_formRow);
        m_reverting = reverting;
    }

    // Any edit in these fields makes the form one to check and write, and
    // shows in the list at once.
    void watchFields(std::initializer_list<QWidget*> fields)
    {
        auto edited = [this] {
            if (m_loading)
                return;
            m_formDirty = true;
            showTyped();
        };
        for (QWidget* field : fields) {
            if (auto* edit = qobject_cast<QLineEdit*>(field))
                connect(edit, &QLineEdit::textEdited, this, edited);
            else if (auto* check = qobject_cast<QCheckBox*>(field))
                connect(check, &QCheckBox::toggled, this, edited);
            else if (auto* combo = qobject_cast<QComboBox*>(field); combo && combo->isEditable())
                connect(combo, &QComboBox::currentTextChanged, this, edited);
            else if (combo)
                connect(combo, &QComboBox::currentIndexChanged, this, edited);
        }
    }

    void setUpView(QAbstractItemView* view, const QString& name)
    {
        view->setObjectName(name);
        view->setSelectionBehavior(QAbstractItemView::SelectRows);
        view->setSelectionMode(QAbstractItemView::SingleSelection);
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    }

    // The list (under `above`, with its buttons below it) beside the form
    // boxes, and OK and Cancel under both.
    void layOut(QAbstractItemView* view, QBoxLayout* listButtons,
        std::initializer_list<QWidget*> formBoxes, QLayout* above = nullptr)
    {
        connect(view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &EditorDialog::currentChanged);
        m_form = new QWidget();
        QVBoxLayout* formColumn = new QVBoxLayout(m_form);
        formColumn->setContentsMargins(0, 0, 0, 0);
        for (QWidget* box : formBoxes)
            formColumn->addWidget(box);
        formColumn->addStretch();
        m_buttons = FormHelper::createButtonBox(this);

        QVBoxLayout* listColumn = new QVBoxLayout();
        if (above)
            listColumn->addLayout(above);
        listColumn->addWidget(view, 1);
        listColumn->addLayout(listButtons);
        QHBoxLayout* body = new QHBoxLayout();
        body->addLayout(listColumn, 3);
        body->addWidget(m_form, 2);
        QVBoxLayout* layout = new QVBoxLayout(this);
        layout->addLayout(body, 1);
        layout->addWidget(m_buttons);
    }

    Registry* m_registry;
    Model* m_model;
    QWidget* m_form = nullptr;
    QDialogButtonBox* m_buttons = nullptr;
    int m_formRow = -1;
    bool m_formDirty = false;
    bool m_loading = false;
    bool m_reverting = false;

private:
    QString m_saveFailedText;
};

#endif // EDITORDIALOG_H
