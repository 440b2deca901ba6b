#include "bankaccountdialog.h"

#include "core/bankaccounttablemodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/logging.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

namespace {

QLineEdit* addField(QFormLayout* layout, const QString& label, const QString& name)
{
    QLineEdit* edit = new QLineEdit();
    edit->setObjectName(name);
    QLabel* caption = new QLabel(label);
    caption->setBuddy(edit);
    layout->addRow(caption, edit);
    return edit;
}

QString compactIban(const QString& text)
{
    QString iban = text.toUpper();
    iban.remove(QLatin1Char(' '));
    return iban;
}

} // namespace

BankAccountDialog::BankAccountDialog(Registry* registry, QWidget* parent)
    : QDialog(parent), m_registry(registry), m_model(new BankAccountTableModel(registry, this))
{
    setWindowTitle(tr("Pankkitilit"));
    m_model->load();
    m_filter = new QSortFilterProxyModel(this);
    m_filter->setSourceModel(m_model);
    m_filter->setFilterRole(BankAccountTableModel::DeletedRole);
    m_filter->setFilterFixedString(QStringLiteral("false"));
    createWidgets();
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &BankAccountDialog::currentChanged);
    if (m_filter->rowCount() > 0)
        m_view->setCurrentIndex(m_filter->index(0, 0));
    loadForm();
}

BankAccountDialog::~BankAccountDialog() = default;

void BankAccountDialog::createWidgets()
{
    m_view = new QTableView();
    m_view->setObjectName(QStringLiteral("accountView"));
    m_view->setModel(m_filter);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setStretchLastSection(true);
    m_view->setColumnWidth(BankAccountTableModel::NameColumn, 140);
    m_view->setColumnWidth(BankAccountTableModel::ShortNameColumn, 70);
    m_view->setColumnWidth(BankAccountTableModel::IbanColumn, 190);

    m_addButton = new QPushButton(tr("&Uusi tili"));
    m_addButton->setObjectName(QStringLiteral("addButton"));
    m_removeButton = new QPushButton(tr("&Poista"));
    m_removeButton->setObjectName(QStringLiteral("removeButton"));
    m_upButton = new QPushButton(tr("Siirrä &ylös"));
    m_upButton->setObjectName(QStringLiteral("upButton"));
    m_downButton = new QPushButton(tr("Siirrä &alas"));
    m_downButton->setObjectName(QStringLiteral("downButton"));
    for (QPushButton* button : { m_addButton, m_removeButton, m_upButton, m_downButton })
        button->setAutoDefault(false);
    connect(m_addButton, &QPushButton::clicked, this, &BankAccountDialog::addAccount);
    connect(m_removeButton, &QPushButton::clicked, this, &BankAccountDialog::removeAccount);
    connect(m_upButton, &QPushButton::clicked, this, &BankAccountDialog::moveUp);
    connect(m_downButton, &QPushButton::clicked, this, &BankAccountDialog::moveDown);

    QGroupBox* box = new QGroupBox(tr("Tilin tiedot"));
    QFormLayout* formLayout = new QFormLayout(box);
    m_nameEdit = addField(formLayout, tr("Pan&kki"), QStringLiteral("nameEdit"));
    m_nameEdit->setMaxLength(50);
    m_shortNameEdit = addField(formLayout, tr("&Lyhenne"), QStringLiteral("shortNameEdit"));
    m_shortNameEdit->setMaxLength(50);
    m_ibanEdit = addField(formLayout, tr("&IBAN"), QStringLiteral("ibanEdit"));
    m_ibanEdit->setPlaceholderText(tr("FI00 1234 5600 0007 85"));
    m_bicEdit = addField(formLayout, tr("&BIC"), QStringLiteral("bicEdit"));
    m_bicEdit->setMaxLength(11);
    m_visibleCheck = new QCheckBox(tr("&Tulostetaan laskuille"));
    m_visibleCheck->setObjectName(QStringLiteral("visibleCheck"));
    formLayout->addRow(QString(), m_visibleCheck);
    for (QLineEdit* edit : { m_nameEdit, m_shortNameEdit, m_ibanEdit, m_bicEdit })
        connect(edit, &QLineEdit::textEdited, this, &BankAccountDialog::formEdited);
    connect(m_visibleCheck, &QCheckBox::toggled, this, &BankAccountDialog::formEdited);

    m_form = new QWidget();
    QVBoxLayout* formColumn = new QVBoxLayout(m_form);
    formColumn->setContentsMargins(0, 0, 0, 0);
    formColumn->addWidget(box);
    formColumn->addStretch();

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(tr("Peruuta"));
    connect(m_buttons, &QDialogButtonBox::accepted, this, &BankAccountDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &BankAccountDialog::reject);

    QHBoxLayout* listButtons = new QHBoxLayout();
    listButtons->addWidget(m_addButton);
    listButtons->addWidget(m_removeButton);
    listButtons->addStretch();
    listButtons->addWidget(m_upButton);
    listButtons->addWidget(m_downButton);
    QVBoxLayout* listLayout = new QVBoxLayout();
    listLayout->addWidget(m_view, 1);
    listLayout->addLayout(listButtons);
    QHBoxLayout* body = new QHBoxLayout();
    body->addLayout(listLayout, 3);
    body->addWidget(m_form, 2);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addLayout(body, 1);
    layout->addWidget(m_buttons);

    setTabOrder(m_view, m_addButton);
    setTabOrder(m_addButton, m_removeButton);
    setTabOrder(m_removeButton, m_upButton);
    setTabOrder(m_upButton, m_downButton);
    setTabOrder(m_downButton, m_nameEdit);
    setTabOrder(m_nameEdit, m_shortNameEdit);
    setTabOrder(m_shortNameEdit, m_ibanEdit);
    setTabOrder(m_ibanEdit, m_bicEdit);
    setTabOrder(m_bicEdit, m_visibleCheck);
    setTabOrder(m_visibleCheck, m_buttons);
    resize(900, 420);
}

int BankAccountDialog::currentAccountRow() const
{
    const QModelIndex index = m_view->selectionModel()->currentIndex();
    return index.isValid() ? m_filter->mapToSource(index).row() : -1;
}

void BankAccountDialog::setCurrentAccountRow(int row)
{
    const QModelIndex index = m_filter->mapFromSource(m_model->index(row, 0));
    if (index.isValid())
        m_view->setCurrentIndex(index);
}

void BankAccountDialog::accept()
{
    if (!commitForm())
        return;
    if (m_model->isModified() && !m_model->save(m_registry->database())) {
        qCWarning(logUi).noquote() << m_model->lastError();
        showWarning(tr("Pankkitilien tallentaminen epäonnistui. %1").arg(m_model->lastError()));
        return;
    }
    QDialog::accept();
}

void BankAccountDialog::addAccount()
{
    if (!commitForm())
        return;
    const int row = m_model->addRecord(BankAccount());
    setCurrentAccountRow(row);
    m_nameEdit->setFocus();
}

void BankAccountDialog::removeAccount()
{
    const int row = currentAccountRow();
    if (row < 0 || !commitForm())
        return;
    m_model->removeRecord(row);
    loadForm();
}

void BankAccountDialog::moveUp()
{
    move(true);
}

void BankAccountDialog::moveDown()
{
    move(false);
}

void BankAccountDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

void BankAccountDialog::currentChanged(const QModelIndex&, const QModelIndex&)
{
    if (m_reverting)
        return;
    const int previousRow = m_formRow;
    if (!commitForm()) {
        m_reverting = true;
        setCurrentAccountRow(previousRow);
        m_reverting = false;
        return;
    }
    loadForm();
}

void BankAccountDialog::formEdited()
{
    if (!m_loading)
        m_formDirty = true;
}

bool BankAccountDialog::commitForm()
{
    const BankAccount* current = m_model->recordAt(m_formRow);
    if (!m_formDirty || !current)
        return true;

    const QString iban = compactIban(m_ibanEdit->text());
    if (!BankAccount::isValidIban(iban)) {
        showWarning(tr("IBAN-tilinumero on virheellinen. Tarkista numero tiliotteesta."));
        m_ibanEdit->setFocus();
        m_ibanEdit->selectAll();
        return false;
    }
    BankAccount account;
    current->copy(&account);
    account.name = m_nameEdit->text().trimmed();
    account.shortName = m_shortNameEdit->text().trimmed();
    account.iban = iban;
    account.bic = m_bicEdit->text().trimmed().toUpper();
    account.visible = m_visibleCheck->isChecked();
    m_formDirty = false;
    m_model->setRecord(m_formRow, account);
    return true;
}

void BankAccountDialog::loadForm()
{
    m_loading = true;
    m_formRow = currentAccountRow();
    m_formDirty = false;
    const BankAccount* account = m_model->recordAt(m_formRow);
    BankAccount empty;
    if (!account)
        account = &empty;
    m_nameEdit->setText(account->name);
    m_shortNameEdit->setText(account->shortName);
    m_ibanEdit->setText(BankAccount::formatIban(account->iban));
    m_bicEdit->setText(account->bic);
    m_visibleCheck->setChecked(account->visible);
    const bool valid = m_formRow >= 0 && !account->deleted;
    m_form->setEnabled(valid);
    m_removeButton->setEnabled(valid);
    m_upButton->setEnabled(valid);
    m_downButton->setEnabled(valid);
    m_loading = false;
}

void BankAccountDialog::move(bool up)
{
    const int row = currentAccountRow();
    if (row < 0 || !commitForm())
        return;
    const int newRow = m_model->moveAccount(row, up);
    if (newRow < 0)
        return;
    m_reverting = true;
    setCurrentAccountRow(newRow);
    m_reverting = false;
    loadForm();
}
