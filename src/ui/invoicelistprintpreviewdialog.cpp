#include "invoicelistprintpreviewdialog.h"

#include "core/registry.h"
#include "print/invoicelistprintmodel.h"
#include "print/invoiceprintjob.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "searchdialog.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QSettings>
#include <QToolBar>
#include <QToolButton>

namespace {
const QString group = QStringLiteral("invoiceListPrint");
}

InvoiceListPrintPreviewDialog::InvoiceListPrintPreviewDialog(Registry* registry, QWidget* parent)
    : PrintPreviewDialog(registry, parent)
    , m_listModel(new InvoiceListPrintModel(registry, this))
    , m_columnMenu(new QMenu(tr("Näytä/piilota sarake"), this))
    , m_sortCombo(new QComboBox(this))
{
    int columns = InvoiceListPrintModel::allColumns();
    int sort = InvoiceListPrintModel::NumberColumn;
    if (QSettings* settings = registry ? registry->appSettings() : nullptr) {
        settings->beginGroup(group);
        bool ok = false;
        const int savedColumns = settings->value(QStringLiteral("columns")).toInt(&ok);
        if (ok)
            columns = savedColumns & InvoiceListPrintModel::allColumns();
        const int savedSort = settings->value(QStringLiteral("sort")).toInt(&ok);
        if (ok && savedSort >= 0 && savedSort < InvoiceListPrintModel::ColumnCount)
            sort = savedSort;
        if (settings->value(QStringLiteral("orientation")).toString() == QLatin1String("landscape"))
            setOrientation(QPageLayout::Landscape);
        settings->endGroup();
    }
    m_listModel->setColumnFlags(columns);
    m_listModel->sort(sort);

    m_searchAction = new QAction(tr("&Haku"), this);
    m_searchAction->setToolTip(tr("Haku (Ctrl+F)"));
    m_searchAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_F));
    connect(m_searchAction, &QAction::triggered, this,
        &InvoiceListPrintPreviewDialog::openSearchDialog);
    toolBar()->addAction(m_searchAction);

    for (int column = 0; column < InvoiceListPrintModel::ColumnCount; ++column) {
        QAction* action = m_columnMenu->addAction(InvoiceListPrintModel::columnHeading(column));
        action->setCheckable(true);
        action->setChecked(columns & (1 << column));
        connect(action, &QAction::toggled, this,
            [this, column](bool checked) { setColumnVisible(column, checked); });
        m_columnActions.append(action);
        m_sortCombo->addItem(InvoiceListPrintModel::columnHeading(column));
    }
    auto* showButton = new QToolButton(this);
    showButton->setObjectName(QStringLiteral("showButton"));
    showButton->setText(tr("&Näytä"));
    showButton->setMenu(m_columnMenu);
    showButton->setPopupMode(QToolButton::InstantPopup);
    toolBar()->addWidget(showButton);
    toolBar()->addWidget(new QLabel(tr("Lajittele:") + QLatin1Char(' '), this));
    m_sortCombo->setCurrentIndex(sort);
    toolBar()->addWidget(m_sortCombo);
    connect(m_sortCombo, qOverload<int>(&QComboBox::currentIndexChanged), this,
        &InvoiceListPrintPreviewDialog::sortBy);

    ScriptHelper(registry).loadInvoiceListScript(engine());
}

InvoiceListPrintPreviewDialog::~InvoiceListPrintPreviewDialog() = default;

void InvoiceListPrintPreviewDialog::openSearchDialog()
{
    SearchDialog dialog(registry(), &m_listModel->criteria(), this);
    if (dialog.exec() == QDialog::Accepted)
        updatePrintPreview(m_listModel);
}

void InvoiceListPrintPreviewDialog::setColumnVisible(int column, bool visible)
{
    int flags = m_listModel->columnFlags();
    flags = visible ? flags | (1 << column) : flags & ~(1 << column);
    m_listModel->setColumnFlags(flags);
    if (column >= 0 && column < m_columnActions.size()
        && m_columnActions.at(column)->isChecked() != visible)
        m_columnActions.at(column)->setChecked(visible);
    redrawPrintPreview();
}

void InvoiceListPrintPreviewDialog::sortBy(int column)
{
    m_listModel->sort(column);
    if (m_sortCombo->currentIndex() != column)
        m_sortCombo->setCurrentIndex(column);
    redrawPrintPreview();
}

void InvoiceListPrintPreviewDialog::saveSettings()
{
    QSettings* settings = registry() ? registry()->appSettings() : nullptr;
    if (!settings)
        return;
    settings->beginGroup(group);
    settings->setValue(QStringLiteral("columns"), m_listModel->columnFlags());
    settings->setValue(QStringLiteral("sort"), m_listModel->sortColumn());
    settings->setValue(QStringLiteral("orientation"),
        orientation() == QPageLayout::Landscape ? QStringLiteral("landscape")
                                                : QStringLiteral("portrait"));
    settings->endGroup();
}

bool InvoiceListPrintPreviewDialog::showReport(
    Registry* registry, const InvoiceCriteria& criteria, QWidget* parent)
{
    InvoiceListPrintPreviewDialog dialog(registry, parent);
    criteria.copy(&dialog.listModel()->criteria());
    dialog.setPrinterName(InvoicePrintJob(registry).reportPrinterName());
    if (!dialog.updatePrintPreview(dialog.listModel()))
        return false;
    dialog.exec();
    return true;
}
