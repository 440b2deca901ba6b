#include "copydialog.h"

#include "core/invoicecopier.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/dateformat.h"
#include "domain/invoice.h"

#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int idRole = Qt::UserRole;

QPushButton* button(const QString& name, const QString& text)
{
    QPushButton* created = new QPushButton(text);
    created->setObjectName(name);
    created->setAutoDefault(false);
    return created;
}

QListWidget* list(const QString& name)
{
    QListWidget* created = new QListWidget();
    created->setObjectName(name);
    created->setSortingEnabled(true);
    return created;
}

} // namespace

CopyDialog::CopyDialog(Registry* registry, const Invoice& source, QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_source(std::make_unique<Invoice>())
    , m_customerList(list(QStringLiteral("customerList")))
    , m_selectedList(list(QStringLiteral("selectedList")))
    , m_groupList(new QListWidget())
    , m_countLabel(new QLabel())
    , m_undoLabel(new QLabel())
    , m_selectButton(button(QStringLiteral("selectButton"), tr("&Valitse >")))
    , m_deselectButton(button(QStringLiteral("deselectButton"), tr("< &Poista valinta")))
    , m_updateGroupButton(button(QStringLiteral("updateGroupButton"), tr("Päivitä r&yhmä")))
    , m_removeGroupButton(button(QStringLiteral("removeGroupButton"), tr("Poista ry&hmä")))
    , m_createButton(button(QStringLiteral("createButton"), tr("&Luo laskut")))
    , m_undoButton(button(QStringLiteral("undoButton"), tr("&Kumoa edellinen")))
{
    source.copy(m_source.get());
    m_copier = std::make_unique<InvoiceCopier>(registry, *m_source);
    setWindowTitle(tr("Ryhmälaskutus"));
    m_groupList->setObjectName(QStringLiteral("groupList"));
    m_groupList->setEditTriggers(
        QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_countLabel->setObjectName(QStringLiteral("countLabel"));
    m_undoLabel->setObjectName(QStringLiteral("undoLabel"));

    for (int index = 0; index < registry->customerCount(); ++index) {
        const Customer* customer = registry->customerAt(index);
        if (customer->deleted)
            continue;
        QListWidgetItem* item = new QListWidgetItem(
            QStringLiteral("%1 (%2)").arg(customer->name).arg(customer->number), m_customerList);
        item->setData(idRole, customer->id);
    }

    QLabel* sourceLabel = new QLabel(tr("Kopioitava lasku: %1").arg(m_source->number));
    QVBoxLayout* moveButtons = new QVBoxLayout();
    moveButtons->addStretch();
    moveButtons->addWidget(m_selectButton);
    moveButtons->addWidget(m_deselectButton);
    moveButtons->addStretch();

    QLabel* customersLabel = new QLabel(tr("&Asiakkaat"));
    customersLabel->setBuddy(m_customerList);
    QLabel* selectedLabel = new QLabel(tr("Valit&ut asiakkaat"));
    selectedLabel->setBuddy(m_selectedList);
    QGridLayout* lists = new QGridLayout();
    lists->addWidget(customersLabel, 0, 0);
    lists->addWidget(selectedLabel, 0, 2);
    lists->addWidget(m_customerList, 1, 0);
    lists->addLayout(moveButtons, 1, 1);
    lists->addWidget(m_selectedList, 1, 2);
    lists->addWidget(m_countLabel, 2, 2);

    QPushButton* addGroupButton = button(QStringLiteral("addGroupButton"), tr("Lisää &ryhmä"));
    QGroupBox* groupBox = new QGroupBox(tr("Asiakasryhmät"));
    QHBoxLayout* groupButtons = new QHBoxLayout();
    groupButtons->addWidget(addGroupButton);
    groupButtons->addWidget(m_updateGroupButton);
    groupButtons->addWidget(m_removeGroupButton);
    groupButtons->addStretch();
    QVBoxLayout* groupLayout = new QVBoxLayout(groupBox);
    groupLayout->addWidget(m_groupList);
    groupLayout->addLayout(groupButtons);

    QDialogButtonBox* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    buttons->addButton(m_createButton, QDialogButtonBox::ActionRole);
    buttons->addButton(m_undoButton, QDialogButtonBox::ActionRole);

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(sourceLabel);
    layout->addLayout(lists, 3);
    layout->addWidget(groupBox, 1);
    layout->addWidget(m_undoLabel);
    layout->addWidget(buttons);

    connect(m_selectButton, &QPushButton::clicked, this, &CopyDialog::selectCurrent);
    connect(m_deselectButton, &QPushButton::clicked, this, &CopyDialog::deselectCurrent);
    connect(m_customerList, &QListWidget::itemActivated, this,
        [this](QListWidgetItem* item) { move(item, m_selectedList); });
    connect(m_selectedList, &QListWidget::itemActivated, this,
        [this](QListWidgetItem* item) { move(item, m_customerList); });
    connect(addGroupButton, &QPushButton::clicked, this, &CopyDialog::addGroup);
    connect(m_updateGroupButton, &QPushButton::clicked, this, &CopyDialog::updateGroup);
    connect(m_removeGroupButton, &QPushButton::clicked, this, &CopyDialog::removeGroup);
    connect(m_groupList, &QListWidget::itemActivated, this, &CopyDialog::activateGroup);
    connect(m_groupList, &QListWidget::itemChanged, this, &CopyDialog::groupRenamed);
    connect(m_groupList, &QListWidget::currentRowChanged, this, &CopyDialog::updateState);
    connect(m_createButton, &QPushButton::clicked, this, &CopyDialog::createInvoices);
    connect(m_undoButton, &QPushButton::clicked, this, &CopyDialog::undoCopy);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    loadGroups();
    updateState();
    resize(720, 640);
}

CopyDialog::~CopyDialog() = default;

void CopyDialog::setToday(const QDate& today)
{
    m_copier->setToday(today);
}

QList<int> CopyDialog::selectedCustomerIds() const
{
    QList<int> ids;
    for (int row = 0; row < m_selectedList->count(); ++row)
        ids.append(m_selectedList->item(row)->data(idRole).toInt());
    return ids;
}

QListWidgetItem* CopyDialog::customerItem(int id) const
{
    for (const QListWidget* from : { m_customerList, m_selectedList }) {
        for (int row = 0; row < from->count(); ++row) {
            if (from->item(row)->data(idRole).toInt() == id)
                return from->item(row);
        }
    }
    return nullptr;
}

void CopyDialog::move(QListWidgetItem* item, QListWidget* to)
{
    if (!item || item->listWidget() == to)
        return;
    QListWidget* from = item->listWidget();
    to->addItem(from->takeItem(from->row(item)));
    updateState();
}

void CopyDialog::selectCustomers(const QList<int>& ids)
{
    while (m_selectedList->count() > 0)
        m_customerList->addItem(m_selectedList->takeItem(0));
    for (const int id : ids)
        move(customerItem(id), m_selectedList);
    updateState();
}

void CopyDialog::selectCurrent()
{
    const QList<QListWidgetItem*> items = m_customerList->selectedItems();
    for (QListWidgetItem* item : items)
        move(item, m_selectedList);
    if (items.isEmpty())
        move(m_customerList->currentItem(), m_selectedList);
}

void CopyDialog::deselectCurrent()
{
    const QList<QListWidgetItem*> items = m_selectedList->selectedItems();
    for (QListWidgetItem* item : items)
        move(item, m_customerList);
    if (items.isEmpty())
        move(m_selectedList->currentItem(), m_customerList);
}

void CopyDialog::loadGroups()
{
    m_groups = CustomerGroupList::load(m_registry->settings(), m_registry);
    const QSignalBlocker blocker(m_groupList);
    m_groupList->clear();
    for (const CustomerGroupList::Group& group : qAsConst(m_groups)) {
        QListWidgetItem* item = new QListWidgetItem(group.name, m_groupList);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    }
}

void CopyDialog::storeGroups()
{
    CustomerGroupList::save(m_registry->settings(), m_groups);
}

void CopyDialog::addGroup()
{
    m_groups.append({ tr("Uusi asiakasryhmä"), selectedCustomerIds() });
    storeGroups();
    loadGroups();
    m_groupList->setCurrentRow(m_groupList->count() - 1);
    m_groupList->editItem(m_groupList->currentItem());
}

void CopyDialog::updateGroup()
{
    const int row = m_groupList->currentRow();
    if (row < 0 || row >= m_groups.size())
        return;
    m_groups[row].customerIds = selectedCustomerIds();
    storeGroups();
}

void CopyDialog::removeGroup()
{
    const int row = m_groupList->currentRow();
    if (row < 0 || row >= m_groups.size())
        return;
    m_groups.removeAt(row);
    storeGroups();
    loadGroups();
    updateState();
}

void CopyDialog::activateGroup(QListWidgetItem* item)
{
    const int row = m_groupList->row(item);
    if (row >= 0 && row < m_groups.size())
        selectCustomers(m_groups.at(row).customerIds);
}

void CopyDialog::groupRenamed(QListWidgetItem* item)
{
    const int row = m_groupList->row(item);
    const QString name = item->text().trimmed();
    // A group without a name would end the stored list.
    if (row < 0 || row >= m_groups.size() || name.isEmpty()) {
        loadGroups();
        return;
    }
    m_groups[row].name = name;
    storeGroups();
}

void CopyDialog::createInvoices()
{
    const int n = m_selectedList->count();
    if (n < 2) {
        showWarning(tr("Valitse asiakkaat."));
        return;
    }
    // The source's own customer is counted out, selected or not.
    if (n > 2
        && !askQuestion(
            tr("Laskusta %1 luodaan %2 kopiota. Jatketaanko?").arg(m_source->number).arg(n - 1)))
        return;
    if (!m_copier->createInvoices(selectedCustomerIds()))
        showCritical(tr("Laskujen luonti epäonnistui. %1").arg(m_copier->lastError()));
    updateState();
}

void CopyDialog::undoCopy()
{
    const InvoiceCopier::UndoRecord record = m_copier->undoRecord();
    if (!record.isValid())
        return;
    if (!askQuestion(tr("Laskut poistetaan väliltä %1-%2. Jatketaanko?")
                         .arg(record.firstNumber)
                         .arg(record.lastNumber)))
        return;
    if (!m_copier->undoCopy())
        showCritical(tr("Laskujen poistaminen epäonnistui. %1").arg(m_copier->lastError()));
    updateState();
}

void CopyDialog::updateState()
{
    const int count = m_selectedList->count();
    m_countLabel->setText(
        count == 1 ? tr("1 asiakas valittu") : tr("%1 asiakasta valittu").arg(count));
    const bool groupChosen = m_groupList->currentRow() >= 0;
    m_updateGroupButton->setEnabled(groupChosen);
    m_removeGroupButton->setEnabled(groupChosen);
    const InvoiceCopier::UndoRecord record = m_copier->undoRecord();
    m_undoButton->setEnabled(record.isValid());
    m_undoLabel->setText(record.isValid() ? tr("Edellinen ryhmälaskutus %1: laskut %2-%3")
                                                .arg(DateFormat().format(record.date))
                                                .arg(record.firstNumber)
                                                .arg(record.lastNumber)
                                          : tr("Ei kumottavaa ryhmälaskutusta"));
}

bool CopyDialog::askQuestion(const QString& question)
{
    return QMessageBox::question(this, windowTitle(), question, QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes;
}

void CopyDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

void CopyDialog::showCritical(const QString& text)
{
    QMessageBox::critical(this, windowTitle(), text);
}
