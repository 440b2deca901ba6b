#include "productdialog.h"

#include "core/producttreemodel.h"
#include "domain/constants.h"
#include "domain/decimalformat.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeView>

namespace {

constexpr qint64 maxVatRate = 100 * Constants::percentageScale;

} // namespace

ProductDialog::ProductDialog(Registry* registry, QWidget* parent)
    : EditorDialog(registry, tr("Tuotetietojen tallentaminen epäonnistui. %1"), parent)
    , m_treeModel(new ProductTreeModel(m_model, this))
{
    setWindowTitle(tr("Tuotteet"));
    createWidgets();
    // A regrouping resets the tree: open the groups again.
    connect(m_treeModel, &QAbstractItemModel::modelReset, this, &ProductDialog::openCategories);
    openCategories();
    FormHelper::fitColumns(m_view->header());
    if (m_model->rowCount() > 0)
        selectRow(m_treeModel->sourceRow(m_treeModel->index(0, 0, m_treeModel->index(0, 0))));
    loadForm();
}

void ProductDialog::createWidgets()
{
    m_view = new QTreeView();
    setUpView(m_view, QStringLiteral("productView"));
    m_view->setModel(m_treeModel);
    m_view->setAllColumnsShowFocus(true);
    m_view->header()->setStretchLastSection(false);
    m_view->hideColumn(ProductTableModel::CategoryColumn);

    m_addButton = FormHelper::createButton(tr("&Uusi tuote"), QStringLiteral("addButton"));
    m_removeButton = FormHelper::createButton(tr("&Poista"), QStringLiteral("removeButton"));
    connect(m_addButton, &QPushButton::clicked, this, &ProductDialog::addProduct);
    connect(m_removeButton, &QPushButton::clicked, this, &ProductDialog::removeProduct);

    QGroupBox* box = new QGroupBox(tr("Tuotetiedot"));
    QFormLayout* form = new QFormLayout(box);
    m_numberEdit
        = FormHelper::addField<QLineEdit>(form, tr("Tuote&numero"), QStringLiteral("numberEdit"));
    m_numberEdit->setMaxLength(10);
    m_nameEdit = FormHelper::addField<QLineEdit>(form, tr("N&imi"), QStringLiteral("nameEdit"));
    m_nameEdit->setMaxLength(100);
    m_unitCodeEdit
        = FormHelper::addField<QLineEdit>(form, tr("&Yksikkö"), QStringLiteral("unitCodeEdit"));
    m_unitCodeEdit->setMaxLength(10);
    m_unitCodeEdit->setPlaceholderText(tr("kpl, h, kk..."));

    m_amountEdit = FormHelper::create<QLineEdit>(QStringLiteral("amountEdit"));
    m_amountEdit->setAlignment(Qt::AlignRight);
    m_vatModeCombo = FormHelper::create<QComboBox>(QStringLiteral("vatModeCombo"));
    m_vatModeCombo->addItem(tr("Verollinen"), false);
    m_vatModeCombo->addItem(tr("Veroton"), true);
    QWidget* price = new QWidget();
    QHBoxLayout* priceLayout = new QHBoxLayout(price);
    priceLayout->setContentsMargins(0, 0, 0, 0);
    priceLayout->addWidget(m_amountEdit, 1);
    priceLayout->addWidget(m_vatModeCombo);
    FormHelper::addRow(form, tr("&Hinta"), price, m_amountEdit);

    m_vatRateEdit
        = FormHelper::addField<QLineEdit>(form, tr("&ALV-%"), QStringLiteral("vatRateEdit"));
    m_vatRateEdit->setAlignment(Qt::AlignRight);
    m_categoryCombo = FormHelper::create<QComboBox>(QStringLiteral("categoryCombo"));
    m_categoryCombo->setEditable(true);
    m_categoryCombo->setInsertPolicy(QComboBox::NoInsert);
    FormHelper::addRow(form, tr("&Tuoteryhmä"), m_categoryCombo);
    watchFields({ m_numberEdit, m_nameEdit, m_unitCodeEdit, m_amountEdit, m_vatModeCombo,
        m_vatRateEdit, m_categoryCombo });

    QHBoxLayout* listButtons = new QHBoxLayout();
    listButtons->addWidget(m_addButton);
    listButtons->addWidget(m_removeButton);
    listButtons->addStretch();
    layOut(m_view, listButtons, { box });
    FormHelper::setTabOrder({ m_view, m_addButton, m_removeButton, m_numberEdit, m_nameEdit,
        m_unitCodeEdit, m_amountEdit, m_vatModeCombo, m_vatRateEdit, m_categoryCombo, m_buttons });
    resize(960, 560);
}

int ProductDialog::currentRow() const
{
    return m_treeModel->sourceRow(m_view->selectionModel()->currentIndex());
}

void ProductDialog::selectRow(int row)
{
    const QModelIndex index = m_treeModel->indexOfSourceRow(row);
    if (!index.isValid())
        return;
    m_view->setCurrentIndex(index);
    m_view->scrollTo(index);
}

void ProductDialog::addProduct()
{
    if (!commitForm())
        return;
    Product product;
    // A new product joins the category that is being looked at; the rest
    // starts from what a business mostly sells: the general VAT rate on a
    // price without VAT.
    product.category = m_treeModel->category(m_view->selectionModel()->currentIndex());
    product.vatRate = Constants::generalVatRate;
    product.vatExcluded = true;
    selectRow(m_model->addRecord(product));
    m_numberEdit->setFocus();
}

void ProductDialog::removeProduct()
{
    const int row = currentRow();
    if (row < 0 || !commitForm())
        return;
    m_model->removeRecord(row);
    if (m_model->rowCount() > 0)
        selectRow(qMin(row, m_model->rowCount() - 1));
    loadForm();
}

DecimalFormat::ParseStatus ProductDialog::typedAmount(qint64& amount) const
{
    return FormHelper::parseDecimal(m_amountEdit->text(), Constants::amountFractionDigits,
        Constants::amountMinFractionDigits, amount);
}

DecimalFormat::ParseStatus ProductDialog::typedVatRate(qint64& vatRate) const
{
    const DecimalFormat::ParseStatus status = FormHelper::parseDecimal(m_vatRateEdit->text(),
        Constants::percentageFractionDigits, Constants::percentageMinFractionDigits, vatRate);
    if (status == DecimalFormat::ParseStatus::Ok && vatRate > maxVatRate)
        return DecimalFormat::ParseStatus::TooLarge;
    if (status == DecimalFormat::ParseStatus::Ok && vatRate < 0)
        return DecimalFormat::ParseStatus::Invalid;
    return status;
}

bool ProductDialog::checkForm()
{
    const QString number = m_numberEdit->text().trimmed();
    if (number.isEmpty())
        return refuse(m_numberEdit, tr("Tuotenumero puuttuu."));
    if (m_model->rowOfNumber(number, m_formRow) >= 0)
        return refuse(m_numberEdit, tr("Tuotenumero %1 on jo käytössä.").arg(number));
    using Status = DecimalFormat::ParseStatus;
    qint64 amount = 0;
    const Status amountStatus = typedAmount(amount);
    if (amountStatus == Status::TooLarge) {
        const DecimalFormat amountFormat(
            Constants::amountFractionDigits, Constants::amountMinFractionDigits);
        return refuse(m_amountEdit,
            tr("Hinta on liian suuri. Suurin sallittu hinta on %1.")
                .arg(amountFormat.format(DecimalFormat::maxParsedValue)),
            true);
    }
    if (amountStatus != Status::Ok)
        return refuse(m_amountEdit, tr("Hinta on virheellinen."), true);
    qint64 vatRate = 0;
    const Status vatStatus = typedVatRate(vatRate);
    if (vatStatus == Status::TooLarge) {
        const DecimalFormat rateFormat(
            Constants::percentageFractionDigits, Constants::percentageMinFractionDigits);
        return refuse(m_vatRateEdit,
            tr("ALV-prosentti on liian suuri. Suurin sallittu ALV-prosentti on %1.")
                .arg(rateFormat.format(maxVatRate)),
            true);
    }
    if (vatStatus != Status::Ok)
        return refuse(m_vatRateEdit, tr("ALV-prosentti on virheellinen."), true);
    return true;
}

void ProductDialog::readForm(Product& product)
{
    product.number = m_numberEdit->text().trimmed();
    product.name = m_nameEdit->text().trimmed();
    product.unitCode = m_unitCodeEdit->text().trimmed();
    qint64 amount = 0;
    if (typedAmount(amount) == DecimalFormat::ParseStatus::Ok)
        product.amount = amount;
    product.vatExcluded = m_vatModeCombo->currentData().toBool();
    qint64 vatRate = 0;
    if (typedVatRate(vatRate) == DecimalFormat::ParseStatus::Ok)
        product.vatRate = int(vatRate);
    product.category = m_categoryCombo->currentText().trimmed();
}

void ProductDialog::formCommitted()
{
    updateCategories();
}

void ProductDialog::fillForm(const Product& product)
{
    updateCategories();
    const DecimalFormat amountFormat(
        Constants::amountFractionDigits, Constants::amountMinFractionDigits);
    const DecimalFormat rateFormat(
        Constants::percentageFractionDigits, Constants::percentageMinFractionDigits);
    m_numberEdit->setText(product.number);
    m_nameEdit->setText(product.name);
    m_unitCodeEdit->setText(product.unitCode);
    m_amountEdit->setText(amountFormat.format(product.amount));
    m_vatModeCombo->setCurrentIndex(m_vatModeCombo->findData(product.vatExcluded));
    m_vatRateEdit->setText(rateFormat.format(product.vatRate));
    m_categoryCombo->setCurrentText(product.category);
    m_form->setEnabled(m_formRow >= 0);
    m_removeButton->setEnabled(m_formRow >= 0);
}

void ProductDialog::openCategories()
{
    // A category's name takes the whole row, not the width of the numbers.
    for (int row = 0; row < m_treeModel->rowCount(); ++row)
        m_view->setFirstColumnSpanned(row, QModelIndex(), true);
    m_view->expandAll();
}

void ProductDialog::updateCategories()
{
    const bool loading = m_loading;
    m_loading = true;
    const QString text = m_categoryCombo->currentText();
    m_categoryCombo->clear();
    m_categoryCombo->addItem(QString());
    m_categoryCombo->addItems(m_model->categories());
    m_categoryCombo->setCurrentText(text);
    m_loading = loading;
}
