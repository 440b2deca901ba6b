#include "finvoicedialog.h"

#include "core/printscriptstore.h"
#include "core/registry.h"
#include "domain/printscript.h"
#include "print/scripthelper.h"
#include "ui/formhelper.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
// The name and the type the script is stored and found by.
const QString finvoiceScript = QStringLiteral("finvoice");
const QSize initialSize(820, 640);
} // namespace

FinvoiceDialog::FinvoiceDialog(Registry* registry, QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_editor(FormHelper::create<QPlainTextEdit>(QStringLiteral("editor")))
    , m_editButton(FormHelper::createButton(tr("&Muokkaa"), QStringLiteral("editButton")))
    , m_restoreButton(FormHelper::createButton(tr("&Palauta"), QStringLiteral("restoreButton")))
{
    setWindowTitle(tr("Muokkaa Finvoice-verkkolaskun sisältöä"));
    m_editor->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_editor->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_editButton->setCheckable(true);
    m_restoreButton->setToolTip(tr("Ohjelman oma Finvoice-skripti editoriin"));
    connect(m_editButton, &QPushButton::toggled, this, &FinvoiceDialog::toggleEditMode);
    connect(m_restoreButton, &QPushButton::clicked, this, &FinvoiceDialog::restoreScript);

    QDialogButtonBox* buttons = FormHelper::createButtonBox(this);
    // OK stores before the dialog closes.
    disconnect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::accepted, this, &FinvoiceDialog::saveScriptAndAccept);

    auto* tools = new QHBoxLayout;
    tools->addWidget(m_editButton);
    tools->addWidget(m_restoreButton);
    tools->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(tools);
    layout->addWidget(m_editor, 1);
    layout->addWidget(buttons);
    resize(initialSize);

    toggleEditMode(false);
    loadScript();
}

QString FinvoiceDialog::scriptText() const
{
    return m_editor->toPlainText();
}

bool FinvoiceDialog::isEditMode() const
{
    return m_editButton->isChecked();
}

void FinvoiceDialog::toggleEditMode(bool on)
{
    if (m_editButton->isChecked() != on)
        m_editButton->setChecked(on);
    m_editor->setReadOnly(!on);
    m_restoreButton->setEnabled(on);
    if (on)
        m_editor->setFocus();
}

bool FinvoiceDialog::loadScript()
{
    PrintScript script;
    bool found = false;
    PrintScriptStore store(m_registry);
    if (!store.fetch(finvoiceScript, &script, &found)) {
        showMessage(
            QMessageBox::Critical, tr("Tietojen hakeminen epäonnistui. %1").arg(store.lastError()));
        loadBuiltInScript();
        return false;
    }
    if (!found) {
        loadBuiltInScript();
        return true;
    }
    m_scriptId = script.id;
    m_editor->setPlainText(script.sourceCode);
    m_editor->document()->setModified(false);
    return true;
}

void FinvoiceDialog::loadBuiltInScript()
{
    m_scriptId = -1;
    m_editor->setPlainText(QString::fromUtf8(ScriptHelper::builtInSource(finvoiceScript)));
    m_editor->document()->setModified(false);
}

void FinvoiceDialog::restoreScript()
{
    // As an edit of its own, so that OK stores it and undo takes it back.
    QTextCursor cursor(m_editor->document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(QString::fromUtf8(ScriptHelper::builtInSource(finvoiceScript)));
}

bool FinvoiceDialog::saveScript()
{
    PrintScript script;
    script.id = m_scriptId;
    script.name = finvoiceScript;
    script.type = finvoiceScript;
    script.sourceCode = m_editor->toPlainText();
    PrintScriptStore store(m_registry);
    if (!store.save(&script, false)) {
        showMessage(QMessageBox::Critical,
            tr("Tietojen tallentaminen epäonnistui. %1").arg(store.lastError()));
        return false;
    }
    m_scriptId = script.id;
    m_editor->document()->setModified(false);
    return true;
}

void FinvoiceDialog::saveScriptAndAccept()
{
    // An untouched built-in text stays built-in, so that it follows the program's updates.
    if (m_editor->document()->isModified() && !saveScript())
        return;
    accept();
}

void FinvoiceDialog::showMessage(QMessageBox::Icon icon, const QString& text)
{
    QMessageBox box(icon, windowTitle(), text, QMessageBox::Ok, this);
    box.exec();
}
