#include "invoiceprintpreviewdialog.h"

#include "core/registry.h"
#include "domain/invoicetype.h"
#include "domain/printscript.h"
#include "export/emailhelper.h"
#include "print/invoiceprintjob.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"

#include <QAction>
#include <QActionGroup>
#include <QCoreApplication>
#include <QMenu>
#include <QMessageBox>
#include <QToolBar>
#include <QToolButton>

InvoicePrintPreviewDialog::InvoicePrintPreviewDialog(Registry* registry, QWidget* parent)
    : PrintPreviewDialog(registry, parent)
    , m_invoiceModel(new InvoicePrintModel(registry, this))
    , m_layoutMenu(new QMenu(tr("Lasku&pohja"), this))
    , m_layoutGroup(new QActionGroup(this))
{
    m_layoutGroup->setExclusive(true);
    auto* layoutButton = new QToolButton(this);
    layoutButton->setObjectName(QStringLiteral("layoutButton"));
    layoutButton->setText(tr("Lasku&pohja"));
    layoutButton->setMenu(m_layoutMenu);
    layoutButton->setPopupMode(QToolButton::InstantPopup);
    toolBar()->addWidget(layoutButton);

    // One invoice at a time: a preview of several holds other customers' invoices.
    m_sendAction = new QAction(tr("Lähetä"), this);
    m_sendAction->setObjectName(QStringLiteral("sendAction"));
    m_sendAction->setToolTip(tr("Lähetä sähköpostilla (Ctrl+E)"));
    m_sendAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_E));
    m_sendAction->setEnabled(false);
    connect(m_sendAction, &QAction::triggered, this, &InvoicePrintPreviewDialog::sendInvoice);
    toolBar()->addAction(m_sendAction);

    ScriptHelper helper(registry);
    m_printScriptId = helper.invoiceScriptId();
    fillLayoutMenu();
    helper.loadInvoiceScript(engine(), m_printScriptId);
}

InvoicePrintPreviewDialog::~InvoicePrintPreviewDialog() = default;

void InvoicePrintPreviewDialog::fillLayoutMenu()
{
    auto addLayout = [this](const QString& name, int id) {
        QAction* action = m_layoutMenu->addAction(name);
        action->setCheckable(true);
        action->setData(id);
        action->setChecked(id == m_printScriptId);
        m_layoutGroup->addAction(action);
        connect(action, &QAction::triggered, this, [this, id]() { setPrintScript(id); });
    };
    Registry* registry = this->registry();
    const QStringList names
        = registry ? registry->builtInPrintScriptNames() : QStringList { tr("Oletuslaskupohja") };
    const QList<int> ids = registry ? registry->builtInPrintScriptIds() : QList<int> { -1 };
    for (int i = 0; i < names.size() && i < ids.size(); ++i)
        addLayout(names.at(i), ids.at(i));
    if (registry) {
        for (int i = 0; i < registry->printScriptCount(); ++i) {
            const PrintScript* script = registry->printScriptAt(i);
            if (script->type == QLatin1String("invoice"))
                addLayout(script->name, script->id);
        }
    }
}

QList<QAction*> InvoicePrintPreviewDialog::layoutActions() const
{
    return m_layoutGroup->actions();
}

bool InvoicePrintPreviewDialog::setPrintScript(int id)
{
    m_printScriptId = id;
    const QList<QAction*> actions = m_layoutGroup->actions();
    for (QAction* action : actions)
        action->setChecked(action->data().toInt() == id);
    engine()->clear();
    if (!ScriptHelper(registry()).loadInvoiceScript(engine(), id)) {
        QMetaObject::invokeMethod(
            this, "showScriptError", Qt::QueuedConnection, Q_ARG(QString, engine()->lastError()));
        return false;
    }
    redrawPrintPreview();
    return true;
}

bool InvoicePrintPreviewDialog::sendInvoice()
{
    EmailHelper helper(registry(), engine());
    if (helper.startApplication(m_invoiceModel))
        return true;
    showMessage(EmailHelper::messageTitle(), helper.lastError());
    return false;
}

void InvoicePrintPreviewDialog::showMessage(const QString& title, const QString& message)
{
    QMessageBox::information(this, title, message);
}

bool InvoicePrintPreviewDialog::printInvoices(
    Registry* registry, const InvoiceCriteria& criteria, int kind, bool preview, QWidget* parent)
{
    // Titled like the window they come from ("laskutus - Veklari").
    const QString title
        = parent ? parent->window()->windowTitle() : QCoreApplication::applicationName();
    InvoicePrintJob job(registry);
    InvoicePrintPreviewDialog dialog(registry, parent);
    InvoicePrintModel* model = dialog.invoicePrintModel();
    criteria.copy(&model->criteria());
    model->setPrintType(kind == InvoiceType::Invoice ? 0 : kind);
    if (!model->run()) {
        QMessageBox::critical(
            parent, title, tr("Tulosteen muodostaminen epäonnistui. %1").arg(model->lastError()));
        return false;
    }
    if (model->invoiceCount() == 0)
        return false;
    const QString warning = InvoicePrintJob::dueDateWarning(model, kind, QDate::currentDate());
    if (!warning.isEmpty())
        QMessageBox::information(parent, title, warning);
    const bool showPreview = preview || job.showPreview();
    const QString question = InvoicePrintJob::noRowsQuestion(model, showPreview);
    if (!question.isEmpty() && QMessageBox::question(parent, title, question) != QMessageBox::Yes)
        return false;
    dialog.setPrinterName(job.printerName());
    dialog.setCopiesPrinterName(job.copiesPrinterName());
    dialog.setNumberOfCopies(job.numberOfCopies());
    if (!dialog.updatePrintPreview(model))
        return false;
    dialog.sendAction()->setEnabled(model->invoiceCount() == 1);
    if (!showPreview)
        return dialog.printReport();
    dialog.exec();
    return true;
}
