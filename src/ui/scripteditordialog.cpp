#include "scripteditordialog.h"

#include "core/printscriptstore.h"
#include "core/registry.h"
#include "domain/logging.h"
#include "domain/printscript.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "printpreviewdialog.h"
#include "scripterrordialog.h"
#include "util/scriptloader.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPushButton>
#include <QSplitter>
#include <QTextBlock>
#include <QVBoxLayout>

namespace {
const char* const invoiceType = "invoice";
} // namespace

ScriptEditorDialog::ScriptEditorDialog(Registry* registry, QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_loader(new ScriptLoader(registry))
    , m_list(new QListWidget(this))
    , m_nameEdit(new QLineEdit(this))
    , m_typeCombo(new QComboBox(this))
    , m_defaultCheck(new QCheckBox(tr("Käytä oletuslaskupohjana"), this))
    , m_sourceEdit(new QPlainTextEdit(this))
    , m_positionLabel(new QLabel(this))
    , m_newButton(new QPushButton(tr("&Uusi"), this))
    , m_deleteButton(new QPushButton(tr("&Poista"), this))
    , m_testButton(new QPushButton(tr("&Koeaja"), this))
    , m_saveButton(new QPushButton(tr("&Tallenna"), this))
{
    setWindowTitle(tr("Tulostusskriptit"));
    m_list->setObjectName(QStringLiteral("scripts"));
    m_nameEdit->setObjectName(QStringLiteral("name"));
    m_typeCombo->setObjectName(QStringLiteral("type"));
    m_defaultCheck->setObjectName(QStringLiteral("defaultInvoice"));
    m_sourceEdit->setObjectName(QStringLiteral("source"));
    m_newButton->setObjectName(QStringLiteral("new"));
    m_deleteButton->setObjectName(QStringLiteral("delete"));
    m_testButton->setObjectName(QStringLiteral("testRun"));
    m_saveButton->setObjectName(QStringLiteral("save"));
    m_testButton->setShortcut(QKeySequence(Qt::Key_F5));
    m_testButton->setToolTip(tr("Koeaja (F5)"));
    m_saveButton->setShortcut(QKeySequence::Save);

    const QList<QPair<QString, const char*>> types = {
        { tr("Laskupohja"), invoiceType },
        { tr("Laskuluettelo"), "invoice-list" },
        { tr("Suoritusluettelo"), "payment-list" },
        { tr("Asiakasluettelo"), "customer-list" },
        { tr("Tuoteluettelo"), "product-list" },
        { tr("Finvoice"), "finvoice" },
    };
    for (const auto& type : types)
        m_typeCombo->addItem(type.first, QLatin1String(type.second));

    QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    m_sourceEdit->setFont(mono);
    m_sourceEdit->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_sourceEdit->setTabStopDistance(QFontMetricsF(mono).horizontalAdvance(QLatin1Char(' ')) * 4);

    auto* listPane = new QWidget(this);
    auto* listLayout = new QVBoxLayout(listPane);
    listLayout->setContentsMargins(0, 0, 0, 0);
    listLayout->addWidget(new QLabel(tr("Tallennetut skriptit"), listPane));
    listLayout->addWidget(m_list, 1);
    auto* listButtons = new QHBoxLayout;
    listButtons->addWidget(m_newButton);
    listButtons->addWidget(m_deleteButton);
    listLayout->addLayout(listButtons);

    auto* editPane = new QWidget(this);
    auto* form = new QFormLayout;
    form->addRow(tr("&Nimi:"), m_nameEdit);
    form->addRow(tr("T&yyppi:"), m_typeCombo);
    form->addRow(QString(), m_defaultCheck);
    auto* editLayout = new QVBoxLayout(editPane);
    editLayout->setContentsMargins(0, 0, 0, 0);
    editLayout->addLayout(form);
    editLayout->addWidget(m_sourceEdit, 1);
    editLayout->addWidget(m_positionLabel);

    auto* splitter = new QSplitter(this);
    splitter->addWidget(listPane);
    splitter->addWidget(editPane);
    splitter->setStretchFactor(1, 1);

    auto* closeButton = new QPushButton(tr("&Sulje"), this);
    closeButton->setObjectName(QStringLiteral("close"));
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_testButton);
    buttons->addStretch(1);
    buttons->addWidget(m_saveButton);
    buttons->addWidget(closeButton);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(splitter, 1);
    layout->addLayout(buttons);
    resize(980, 680);

    connect(m_list, &QListWidget::currentRowChanged, this, &ScriptEditorDialog::currentRowChanged);
    connect(m_newButton, &QPushButton::clicked, this, &ScriptEditorDialog::newScript);
    connect(m_deleteButton, &QPushButton::clicked, this, &ScriptEditorDialog::deleteScript);
    connect(m_testButton, &QPushButton::clicked, this, &ScriptEditorDialog::testRun);
    connect(m_saveButton, &QPushButton::clicked, this, &ScriptEditorDialog::saveScript);
    connect(closeButton, &QPushButton::clicked, this, &ScriptEditorDialog::reject);
    connect(m_typeCombo, &QComboBox::currentIndexChanged, this, &ScriptEditorDialog::typeChanged);
    connect(m_nameEdit, &QLineEdit::textEdited, this, &ScriptEditorDialog::setModified);
    connect(m_defaultCheck, &QCheckBox::toggled, this, &ScriptEditorDialog::setModified);
    connect(m_sourceEdit, &QPlainTextEdit::textChanged, this, &ScriptEditorDialog::setModified);
    connect(m_sourceEdit, &QPlainTextEdit::cursorPositionChanged, this,
        &ScriptEditorDialog::updatePosition);

    refreshList(-1);
    if (m_list->count() == 0) {
        m_loading = true;
        m_defaultCheck->setChecked(false);
        m_loading = false;
    }
    updatePosition();
    updateButtons();
}

ScriptEditorDialog::~ScriptEditorDialog()
{
    delete m_preview;
}

void ScriptEditorDialog::setInvoiceCriteria(const InvoiceCriteria& criteria)
{
    criteria.copy(&m_criteria);
    m_criteriaSet = true;
}

QPrintPreviewWidget* ScriptEditorDialog::previewWidget() const
{
    return m_preview ? m_preview->findChild<QPrintPreviewWidget*>() : nullptr;
}

QString ScriptEditorDialog::currentType() const
{
    return m_typeCombo->currentData().toString();
}

int ScriptEditorDialog::defaultInvoiceScriptId() const
{
    return PrintScriptStore(m_registry).defaultInvoiceScriptId();
}

void ScriptEditorDialog::refreshList(int selectId)
{
    m_loading = true;
    m_list->clear();
    int selectRow = -1;
    for (int i = 0; i < m_registry->printScriptCount(); ++i) {
        const PrintScript* script = m_registry->printScriptAt(i);
        const int typeIndex = m_typeCombo->findData(script->type);
        const QString typeName = typeIndex >= 0 ? m_typeCombo->itemText(typeIndex) : script->type;
        auto* item = new QListWidgetItem(QStringLiteral("%1 (%2)").arg(script->name, typeName));
        item->setData(Qt::UserRole, script->id);
        m_list->addItem(item);
        if (script->id == selectId)
            selectRow = i;
    }
    m_loading = false;
    if (selectRow < 0 && selectId < 0 && m_list->count() > 0 && m_currentId < 0 && !m_modified)
        selectRow = 0;
    if (selectRow >= 0) {
        m_list->setCurrentRow(selectRow);
        if (m_currentId != selectId && selectId >= 0)
            loadScript(selectId);
    }
}

void ScriptEditorDialog::currentRowChanged(int row)
{
    if (m_loading || row < 0)
        return;
    const int id = m_list->item(row)->data(Qt::UserRole).toInt();
    if (id == m_currentId)
        return;
    if (!confirmDiscard()) {
        // Go back to the script being edited.
        m_loading = true;
        int previous = -1;
        for (int i = 0; i < m_list->count(); ++i) {
            if (m_list->item(i)->data(Qt::UserRole).toInt() == m_currentId)
                previous = i;
        }
        m_list->setCurrentRow(previous);
        m_loading = false;
        return;
    }
    loadScript(id);
}

void ScriptEditorDialog::selectScript(int id)
{
    for (int i = 0; i < m_list->count(); ++i) {
        if (m_list->item(i)->data(Qt::UserRole).toInt() == id) {
            m_list->setCurrentRow(i);
            return;
        }
    }
}

void ScriptEditorDialog::loadScript(int id)
{
    const int index = m_registry->printScriptIndexById(id);
    if (index < 0)
        return;
    const PrintScript* script = m_registry->printScriptAt(index);
    m_loading = true;
    m_currentId = id;
    m_nameEdit->setText(script->name);
    const int typeIndex = m_typeCombo->findData(script->type);
    m_typeCombo->setCurrentIndex(typeIndex >= 0 ? typeIndex : 0);
    m_defaultCheck->setChecked(id == defaultInvoiceScriptId());
    m_sourceEdit->setPlainText(QString::fromUtf8(m_loader->loadScriptById(id)));
    m_loading = false;
    m_modified = false;
    updateButtons();
}

void ScriptEditorDialog::newScript()
{
    if (!confirmDiscard())
        return;
    m_loading = true;
    m_currentId = -1;
    m_list->clearSelection();
    m_list->setCurrentRow(-1);
    const QString type = currentType();
    const int typeIndex = m_typeCombo->currentIndex();
    m_nameEdit->setText(tr("Oma %1").arg(m_typeCombo->itemText(typeIndex).toLower()));
    m_defaultCheck->setChecked(false);
    // The built-in script of the type is the starting point.
    m_sourceEdit->setPlainText(QString::fromUtf8(ScriptHelper::builtInSource(type)));
    m_loading = false;
    m_modified = true;
    m_nameEdit->setFocus();
    m_nameEdit->selectAll();
    updateButtons();
}

void ScriptEditorDialog::typeChanged()
{
    setModified();
    updateButtons();
}

void ScriptEditorDialog::setModified()
{
    if (m_loading)
        return;
    m_modified = true;
    updateButtons();
}

void ScriptEditorDialog::updateButtons()
{
    const bool connected = m_registry->database() != nullptr;
    m_newButton->setEnabled(connected);
    m_saveButton->setEnabled(connected && (m_modified || m_currentId < 0));
    m_deleteButton->setEnabled(connected && m_currentId >= 0);
    m_defaultCheck->setEnabled(currentType() == QLatin1String(invoiceType));
    m_nameEdit->setEnabled(connected);
    m_typeCombo->setEnabled(connected);
}

void ScriptEditorDialog::updatePosition()
{
    const QTextCursor cursor = m_sourceEdit->textCursor();
    m_positionLabel->setText(
        tr("Rivi %1, sarake %2").arg(cursor.blockNumber() + 1).arg(cursor.positionInBlock() + 1));
}

void ScriptEditorDialog::goToLine(int line)
{
    const QTextBlock block = m_sourceEdit->document()->findBlockByNumber(line - 1);
    if (!block.isValid())
        return;
    QTextCursor cursor(block);
    cursor.select(QTextCursor::LineUnderCursor);
    m_sourceEdit->setTextCursor(cursor);
    m_sourceEdit->setFocus();
}

bool ScriptEditorDialog::confirmDiscard()
{
    if (!m_modified)
        return true;
    if (!askQuestion(tr("Skriptin muutoksia ei ole tallennettu. Hylätäänkö muutokset?")))
        return false;
    m_modified = false;
    return true;
}

bool ScriptEditorDialog::saveScript()
{
    if (!m_registry->database())
        return false;
    const QString name = m_nameEdit->text().trimmed();
    if (name.isEmpty()) {
        showMessage(QMessageBox::Warning, tr("Anna skriptille nimi."));
        m_nameEdit->setFocus();
        return false;
    }
    for (int i = 0; i < m_registry->printScriptCount(); ++i) {
        const PrintScript* other = m_registry->printScriptAt(i);
        // Modules are found by name, so names must stay unique.
        if (other->name == name && other->id != m_currentId) {
            showMessage(QMessageBox::Warning, tr("Skripti nimeltä %1 on jo olemassa.").arg(name));
            m_nameEdit->setFocus();
            return false;
        }
    }

    PrintScript script;
    script.id = m_currentId;
    script.name = name;
    script.type = currentType();
    script.sourceCode = m_sourceEdit->toPlainText();
    PrintScriptStore store(m_registry);
    if (!store.save(&script, m_defaultCheck->isChecked())) {
        showMessage(QMessageBox::Critical,
            tr("Skriptin tallentaminen epäonnistui. %1").arg(store.lastError()));
        return false;
    }
    qCDebug(logUi).noquote() << QStringLiteral("Tallennettiin skripti %1").arg(script.name);
    m_currentId = script.id;
    m_modified = false;
    refreshList(script.id);
    updateButtons();
    return true;
}

bool ScriptEditorDialog::deleteScript()
{
    if (!m_registry->database() || m_currentId < 0)
        return false;
    if (!askQuestion(tr("Poistetaanko skripti %1?").arg(m_nameEdit->text())))
        return false;
    PrintScriptStore store(m_registry);
    if (!store.remove(m_currentId)) {
        showMessage(QMessageBox::Critical,
            tr("Skriptin poistaminen epäonnistui. %1").arg(store.lastError()));
        return false;
    }
    m_currentId = -1;
    m_modified = false;
    m_loading = true;
    m_nameEdit->clear();
    m_sourceEdit->clear();
    m_defaultCheck->setChecked(false);
    m_loading = false;
    refreshList(-1);
    updateButtons();
    return true;
}

bool ScriptEditorDialog::testRun()
{
    auto engine = std::make_unique<PrintScriptEngine>();
    engine->setScriptLoader(m_loader.get());
    if (!engine->evaluate(m_sourceEdit->toPlainText().toUtf8())) {
        showScriptError(engine->lastError());
        return false;
    }
    if (currentType() != QLatin1String(invoiceType)) {
        showMessage(QMessageBox::Information, tr("Skriptissä ei ole virheitä."));
        return true;
    }

    auto model = std::make_unique<InvoicePrintModel>(m_registry);
    if (m_criteriaSet) {
        m_criteria.copy(&model->criteria());
    } else {
        model->criteria().descending = true;
        model->criteria().limit = 1;
    }
    if (!model->run()) {
        showMessage(QMessageBox::Critical,
            tr("Tulosteen muodostaminen epäonnistui. %1").arg(model->lastError()));
        return false;
    }
    if (model->invoiceCount() == 0) {
        showMessage(QMessageBox::Information, tr("Koeajoon ei löytynyt laskuja."));
        return false;
    }
    engine->setModel(model.get());

    delete m_preview;
    m_preview = new QDialog(this);
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setWindowTitle(tr("Koeajo: %1").arg(m_nameEdit->text()));
    m_preview->setAttribute(Qt::WA_DeleteOnClose);
    PrintScriptEngine* previewEngine = engine.release();
    previewEngine->setParent(m_preview);
    model.release()->setParent(m_preview);
    auto* printer = new QPrinter(QPrinter::HighResolution);
    printer->setPageSize(QPageSize(QPageSize::A4));
    printer->setFullPage(true);
    auto* widget = new QPrintPreviewWidget(printer, m_preview);
    // The printer outlives the widget that paints on it.
    connect(widget, &QObject::destroyed, [printer]() { delete printer; });
    connect(widget, &QPrintPreviewWidget::paintRequested, previewEngine,
        [this, previewEngine](QPrinter* target) {
            if (!PrintPreviewDialog::printOn(previewEngine, target)) {
                const QString error = previewEngine->lastError();
                // Not from inside the paint callback.
                QMetaObject::invokeMethod(
                    this, [this, error]() { showScriptError(error); }, Qt::QueuedConnection);
            }
        });
    auto* layout = new QVBoxLayout(m_preview);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(widget);
    m_preview->resize(720, 900);
    m_preview->show();
    widget->fitInView();
    return true;
}

void ScriptEditorDialog::reject()
{
    if (!confirmDiscard())
        return;
    QDialog::reject();
}

void ScriptEditorDialog::showMessage(QMessageBox::Icon icon, const QString& text)
{
    QMessageBox box(icon, windowTitle(), text, QMessageBox::Ok, this);
    box.exec();
}

bool ScriptEditorDialog::askQuestion(const QString& text)
{
    return QMessageBox::question(this, windowTitle(), text) == QMessageBox::Yes;
}

void ScriptEditorDialog::showScriptError(const QString& error)
{
    ScriptErrorDialog dialog(error, this);
    dialog.setScriptName(m_nameEdit->text());
    dialog.exec();
    // Errors of the edited script itself (not of a module) point into the editor.
    if (dialog.line() > 0 && (dialog.file().isEmpty() || dialog.file() == QLatin1String("eval")))
        goToLine(dialog.line());
}
