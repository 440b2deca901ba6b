#include "listprintpreviewdialog.h"

#include "core/registry.h"
#include "print/listprintmodel.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QSettings>
#include <QToolBar>
#include <QToolButton>

ListPrintPreviewDialog::ListPrintPreviewDialog(
    Registry* registry, ListPrintModel* model, QWidget* parent)
    : PrintPreviewDialog(registry, parent)
    , m_listModel(model)
    , m_columnMenu(new QMenu(tr("Näytä/piilota sarake"), this))
    , m_sortCombo(new QComboBox(this))
{
    m_listModel->setParent(this);
    const QStringList headings = m_listModel->columnHeadings();
    int columns = m_listModel->allColumns();
    int sort = m_listModel->sortColumn();
    if (QSettings* settings = registry ? registry->appSettings() : nullptr) {
        settings->beginGroup(m_listModel->settingsGroup());
        bool ok = false;
        const int savedColumns = settings->value(QStringLiteral("columns")).toInt(&ok);
        if (ok)
            columns = savedColumns & m_listModel->allColumns();
        const int savedSort = settings->value(QStringLiteral("sort")).toInt(&ok);
        if (ok && savedSort >= 0 && savedSort < headings.size())
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
    connect(m_searchAction, &QAction::triggered, this, &ListPrintPreviewDialog::openSearchDialog);
    toolBar()->addAction(m_searchAction);

    for (int column = 0; column < headings.size(); ++column) {
        QAction* action = m_columnMenu->addAction(headings.at(column));
        action->setCheckable(true);
        action->setChecked(columns & (1 << column));
        connect(action, &QAction::toggled, this,
            [this, column](bool checked) { setColumnVisible(column, checked); });
        m_columnActions.append(action);
        m_sortCombo->addItem(headings.at(column));
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
        &ListPrintPreviewDialog::sortBy);
}

ListPrintPreviewDialog::~ListPrintPreviewDialog() = default;

void ListPrintPreviewDialog::setColumnVisible(int column, bool visible)
{
    int flags = m_listModel->columnFlags();
    flags = visible ? flags | (1 << column) : flags & ~(1 << column);
    m_listModel->setColumnFlags(flags);
    if (column >= 0 && column < m_columnActions.size()
        && m_columnActions.at(column)->isChecked() != visible)
        m_columnActions.at(column)->setChecked(visible);
    redrawPrintPreview();
}

void ListPrintPreviewDialog::sortBy(int column)
{
    m_listModel->sort(column);
    if (m_sortCombo->currentIndex() != column)
        m_sortCombo->setCurrentIndex(column);
    redrawPrintPreview();
}

void ListPrintPreviewDialog::saveSettings()
{
    QSettings* settings = registry() ? registry()->appSettings() : nullptr;
    if (!settings)
        return;
    settings->beginGroup(m_listModel->settingsGroup());
    settings->setValue(QStringLiteral("columns"), m_listModel->columnFlags());
    settings->setValue(QStringLiteral("sort"), m_listModel->sortColumn());
    settings->setValue(QStringLiteral("orientation"),
        orientation() == QPageLayout::Landscape ? QStringLiteral("landscape")
                                                : QStringLiteral("portrait"));
    settings->endGroup();
}
