#include "interestonarrearspanel.h"

#include "core/interestonarrearstablemodel.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

InterestOnArrearsPanel::InterestOnArrearsPanel(InterestOnArrearsTableModel* model, QWidget* parent)
    : QWidget(parent), m_model(model), m_tableView(new QTableView(this))
{
    m_tableView->setObjectName(QStringLiteral("interestTable"));
    m_tableView->setModel(model);
    m_tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tableView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tableView->verticalHeader()->hide();
    m_tableView->horizontalHeader()->setStretchLastSection(true);

    m_calculateButton = addButton(QStringLiteral("calculateInterestButton"), tr("Laske"),
        &InterestOnArrearsPanel::calculateRequested);
    m_rowButtons = { addButton(QStringLiteral("removeInterestButton"), tr("Poista"),
                         &InterestOnArrearsPanel::removeRequested),
        addButton(QStringLiteral("clearInterestButton"), tr("Tyhjennä"),
            &InterestOnArrearsPanel::clearRequested),
        addButton(QStringLiteral("createInterestInvoiceButton"), tr("Luo korkolasku"),
            &InterestOnArrearsPanel::createInvoiceRequested),
        addButton(QStringLiteral("addInterestRowsButton"), tr("Lisää laskurivit"),
            &InterestOnArrearsPanel::addRowsRequested) };
    m_addRowsButton = m_rowButtons.last();

    // Collecting in the first row, what is done with the rows in the second:
    // the panel stays narrow beside the invoice.
    QGridLayout* buttons = new QGridLayout();
    buttons->addWidget(m_calculateButton, 0, 0);
    buttons->addWidget(m_rowButtons.at(0), 0, 1);
    buttons->addWidget(m_rowButtons.at(1), 0, 2);
    buttons->addWidget(m_rowButtons.at(2), 1, 0, 1, 2);
    buttons->addWidget(m_rowButtons.at(3), 1, 2);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(m_tableView);
    layout->addLayout(buttons);
    updateButtons(false);
}

QPushButton* InterestOnArrearsPanel::addButton(
    const QString& name, const QString& text, void (InterestOnArrearsPanel::*signal)())
{
    QPushButton* button = new QPushButton(text, this);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, signal);
    return button;
}

int InterestOnArrearsPanel::currentRow() const
{
    const QModelIndexList selected = m_tableView->selectionModel()->selectedRows();
    return selected.isEmpty() ? -1 : selected.first().row();
}

void InterestOnArrearsPanel::updateButtons(bool invoiceShown)
{
    m_calculateButton->setEnabled(invoiceShown);
    const bool hasRows = m_model->rowCount() > 0;
    for (QPushButton* button : qAsConst(m_rowButtons))
        button->setEnabled(hasRows);
    // The rows go to the invoice shown.
    m_addRowsButton->setEnabled(hasRows && invoiceShown);
}
