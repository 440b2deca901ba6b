#include "bankaccountdialog.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>

BankAccountDialog::BankAccountDialog(Registry* registry, QWidget* parent)
    : EditorDialog(registry, tr("Pankkitilien tallentaminen epäonnistui. %1"), parent)
{
    setWindowTitle(tr("Pankkitilit"));
    m_filter = new QSortFilterProxyModel(this);
    m_filter->setSourceModel(m_model);
    m_filter->setFilterRole(BankAccountTableModel::DeletedRole);
    m_filter->setFilterFixedString(QStringLiteral("false"));
    createWidgets();
    if (m_filter->rowCount() > 0)
        m_view->setCurrentIndex(m_filter->index(0, 0));
    loadForm();
}

void BankAccountDialog::createWidgets()
{
    m_view = new QTableView();
    setUpView(m_view, QStringLiteral("accountView"));
    m_view->setModel(m_filter);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setStretchLastSection(true);
    FormHelper::fitColumns(m_view->horizontalHeader());

    m_addButton = FormHelper::createButton(tr("&Uusi tili"), QStringLiteral("addButton"));
    m_removeButton = FormHelper::createButton(tr("&Poista"), QStringLiteral("removeButton"));
    m_upButton = FormHelper::createButton(tr("Siirrä &ylös"), QStringLiteral("upButton"));
    m_downButton = FormHelper::createButton(tr("Siirrä &alas"), QStringLiteral("downButton"));
    connect(m_addButton, &QPushButton::clicked, this, &BankAccountDialog::addAccount);
    connect(m_removeButton, &QPushButton::clicked, this, &BankAccountDialog::removeAccount);
    connect(m_upButton, &QPushButton::clicked, this, &BankAccountDialog::moveUp);
    connect(m_downButton, &QPushButton::clicked, this, &BankAccountDialog::moveDown);

    QGroupBox* box = new QGroupBox(tr("Tilin tiedot"));
    QFormLayout* form = new QFormLayout(box);
    m_nameEdit = FormHelper::addField<QLineEdit>(form, tr("Pan&kki"), QStringLiteral("nameEdit"));
    m_nameEdit->setMaxLength(50);
    m_shortNameEdit
        = FormHelper::addField<QLineEdit>(form, tr("&Lyhenne"), QStringLiteral("shortNameEdit"));
    m_shortNameEdit->setMaxLength(50);
    m_ibanEdit = FormHelper::addField<QLineEdit>(form, tr("&IBAN"), QStringLiteral("ibanEdit"));
    m_ibanEdit->setPlaceholderText(tr("FI00 1234 5600 0007 85"));
    m_bicEdit = FormHelper::addField<QLineEdit>(form, tr("&BIC"), QStringLiteral("bicEdit"));
    m_bicEdit->setMaxLength(11);
    m_visibleCheck = FormHelper::addCheckBox(
        form, tr("&Tulostetaan laskuille"), QStringLiteral("visibleCheck"));
    watchFields({ m_nameEdit, m_shortNameEdit, m_ibanEdit, m_bicEdit, m_visibleCheck });

    QHBoxLayout* listButtons = new QHBoxLayout();
    listButtons->addWidget(m_addButton);
    listButtons->addWidget(m_removeButton);
    listButtons->addStretch();
    listButtons->addWidget(m_upButton);
    listButtons->addWidget(m_downButton);
    layOut(m_view, listButtons, { box });
    FormHelper::setTabOrder({ m_view, m_addButton, m_removeButton, m_upButton, m_downButton,
        m_nameEdit, m_shortNameEdit, m_ibanEdit, m_bicEdit, m_visibleCheck, m_buttons });
    resize(900, 420);
}

int BankAccountDialog::currentRow() const
{
    const QModelIndex index = m_view->selectionModel()->currentIndex();
    return index.isValid() ? m_filter->mapToSource(index).row() : -1;
}

void BankAccountDialog::selectRow(int row)
{
    const QModelIndex index = m_filter->mapFromSource(m_model->index(row, 0));
    if (index.isValid())
        m_view->setCurrentIndex(index);
}

void BankAccountDialog::addAccount()
{
    if (!commitForm())
        return;
    selectRow(m_model->addRecord(BankAccount()));
    m_nameEdit->setFocus();
}

void BankAccountDialog::removeAccount()
{
    const int row = currentRow();
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

namespace {

QString compactIban(const QString& text)
{
    QString iban = text.toUpper();
    iban.remove(QLatin1Char(' '));
    return iban;
}

} // namespace

bool BankAccountDialog::checkForm()
{
    if (!BankAccount::isValidIban(compactIban(m_ibanEdit->text()))) {
        return refuse(
            m_ibanEdit, tr("IBAN-tilinumero on virheellinen. Tarkista numero tiliotteesta."), true);
    }
    return true;
}

void BankAccountDialog::readForm(BankAccount& account)
{
    account.name = m_nameEdit->text().trimmed();
    account.shortName = m_shortNameEdit->text().trimmed();
    account.iban = compactIban(m_ibanEdit->text());
    account.bic = m_bicEdit->text().trimmed().toUpper();
    account.visible = m_visibleCheck->isChecked();
}

void BankAccountDialog::fillForm(const BankAccount& account)
{
    m_nameEdit->setText(account.name);
    m_shortNameEdit->setText(account.shortName);
    m_ibanEdit->setText(BankAccount::formatIban(account.iban));
    m_bicEdit->setText(account.bic);
    m_visibleCheck->setChecked(account.visible);
    const bool valid = m_formRow >= 0 && !account.deleted;
    for (QWidget* widget : { m_form, static_cast<QWidget*>(m_removeButton),
             static_cast<QWidget*>(m_upButton), static_cast<QWidget*>(m_downButton) })
        widget->setEnabled(valid);
}

void BankAccountDialog::move(bool up)
{
    const int row = currentRow();
    if (row < 0 || !commitForm())
        return;
    const int newRow = m_model->moveAccount(row, up);
    if (newRow < 0)
        return;
    selectQuietly(newRow);
    loadForm();
}
