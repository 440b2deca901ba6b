#include "productdialog.h"

#include "core/producttablemodel.h"
#include "core/producttreemodel.h"
#include "core/registry.h"
#include "domain/constants.h"
#include "domain/decimalformat.h"
#include "domain/logging.h"
#include "domain/product.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

// Reads a decimal number typed with a comma or a point (and perhaps spaces
// between thousands) as an integer with the given number of decimals.
// DecimalFormat works in 32 bits, so larger values are refused here.
bool parseDecimal(const QString& text, int fractionDigits, int minFractionDigits, qint64& value)
{
    QString compact = text.trimmed();
    compact.remove(QLatin1Char(' '));
    compact.remove(QChar(0x00a0));
    compact.remove(QChar(0x202f));
    compact.replace(QLatin1Char(','), QLatin1Char('.'));
    if (compact.isEmpty() || compact.count(QLatin1Char('.')) > 1)
        return false;
    const qsizetype point = compact.indexOf(QLatin1Char('.'));
    const QString integerPart = point < 0 ? compact : compact.left(point);
    qint64 limit = 2147483647;
    for (int i = 0; i < fractionDigits; ++i)
        limit /= 10;
    bool integerOk = integerPart.isEmpty() || integerPart == QLatin1String("-");
    if (!integerOk) {
        const qlonglong integer = integerPart.toLongLong(&integerOk);
        if (!integerOk || qAbs(integer) >= limit)
            return false;
    }
    const DecimalFormat format(fractionDigits, minFractionDigits);
    bool ok = false;
    value = format.parse(compact, ok);
    return ok;
}

QLineEdit* addField(QFormLayout* layout, const QString& label, const QString& name)
{
    QLineEdit* edit = new QLineEdit();
    edit->setObjectName(name);
    QLabel* caption = new QLabel(label);
    caption->setBuddy(edit);
    layout->addRow(caption, edit);
    return edit;
}

} // namespace

ProductDialog::ProductDialog(Registry* registry, QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_model(new ProductTableModel(registry, this))
    , m_treeModel(new ProductTreeModel(m_model, this))
{
    setWindowTitle(tr("Tuotteet"));
    m_model->load();
    createWidgets();
    connect(m_view->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
        &ProductDialog::currentChanged);
    // A regrouping resets the tree: open the groups again.
    connect(m_treeModel, &QAbstractItemModel::modelReset, m_view, &QTreeView::expandAll);
    m_view->expandAll();
    if (m_model->rowCount() > 0)
        setCurrentProductRow(
            m_treeModel->sourceRow(m_treeModel->index(0, 0, m_treeModel->index(0, 0))));
    loadForm();
}

ProductDialog::~ProductDialog() = default;

void ProductDialog::createWidgets()
{
    m_view = new QTreeView();
    m_view->setObjectName(QStringLiteral("productView"));
    m_view->setModel(m_treeModel);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_view->setAllColumnsShowFocus(true);
    m_view->header()->setStretchLastSection(false);
    m_view->setColumnWidth(ProductTableModel::NumberColumn, 120);
    m_view->setColumnWidth(ProductTableModel::NameColumn, 200);
    m_view->setColumnWidth(ProductTableModel::UnitCodeColumn, 60);
    m_view->setColumnWidth(ProductTableModel::AmountColumn, 80);
    m_view->setColumnWidth(ProductTableModel::VatModeColumn, 90);
    m_view->setColumnWidth(ProductTableModel::VatRateColumn, 60);
    m_view->hideColumn(ProductTableModel::CategoryColumn);

    m_addButton = new QPushButton(tr("&Uusi tuote"));
    m_addButton->setObjectName(QStringLiteral("addButton"));
    m_removeButton = new QPushButton(tr("&Poista"));
    m_removeButton->setObjectName(QStringLiteral("removeButton"));
    for (QPushButton* button : { m_addButton, m_removeButton })
        button->setAutoDefault(false);
    connect(m_addButton, &QPushButton::clicked, this, &ProductDialog::addProduct);
    connect(m_removeButton, &QPushButton::clicked, this, &ProductDialog::removeProduct);

    QGroupBox* box = new QGroupBox(tr("Tuotetiedot"));
    QFormLayout* formLayout = new QFormLayout(box);
    m_numberEdit = addField(formLayout, tr("Tuote&numero"), QStringLiteral("numberEdit"));
    m_numberEdit->setMaxLength(10);
    m_nameEdit = addField(formLayout, tr("N&imi"), QStringLiteral("nameEdit"));
    m_nameEdit->setMaxLength(100);
    m_unitCodeEdit = addField(formLayout, tr("&Yksikkö"), QStringLiteral("unitCodeEdit"));
    m_unitCodeEdit->setMaxLength(10);
    m_unitCodeEdit->setPlaceholderText(tr("kpl, h, kk..."));

    m_amountEdit = new QLineEdit();
    m_amountEdit->setObjectName(QStringLiteral("amountEdit"));
    m_amountEdit->setAlignment(Qt::AlignRight);
    m_vatModeCombo = new QComboBox();
    m_vatModeCombo->setObjectName(QStringLiteral("vatModeCombo"));
    m_vatModeCombo->addItem(tr("Verollinen"), false);
    m_vatModeCombo->addItem(tr("Veroton"), true);
    QHBoxLayout* amountLayout = new QHBoxLayout();
    amountLayout->addWidget(m_amountEdit, 1);
    amountLayout->addWidget(m_vatModeCombo);
    QLabel* amountLabel = new QLabel(tr("&Hinta"));
    amountLabel->setBuddy(m_amountEdit);
    formLayout->addRow(amountLabel, amountLayout);

    m_vatRateEdit = addField(formLayout, tr("&ALV-%"), QStringLiteral("vatRateEdit"));
    m_vatRateEdit->setAlignment(Qt::AlignRight);
    m_categoryCombo = new QComboBox();
    m_categoryCombo->setObjectName(QStringLiteral("categoryCombo"));
    m_categoryCombo->setEditable(true);
    m_categoryCombo->setInsertPolicy(QComboBox::NoInsert);
    QLabel* categoryLabel = new QLabel(tr("&Tuoteryhmä"));
    categoryLabel->setBuddy(m_categoryCombo);
    formLayout->addRow(categoryLabel, m_categoryCombo);

    for (QLineEdit* edit :
        { m_numberEdit, m_nameEdit, m_unitCodeEdit, m_amountEdit, m_vatRateEdit })
        connect(edit, &QLineEdit::textEdited, this, &ProductDialog::formEdited);
    connect(m_vatModeCombo, &QComboBox::currentIndexChanged, this, &ProductDialog::formEdited);
    connect(m_categoryCombo, &QComboBox::currentTextChanged, this, &ProductDialog::formEdited);

    m_form = new QWidget();
    QVBoxLayout* formColumn = new QVBoxLayout(m_form);
    formColumn->setContentsMargins(0, 0, 0, 0);
    formColumn->addWidget(box);
    formColumn->addStretch();

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    m_buttons->button(QDialogButtonBox::Ok)->setText(tr("OK"));
    m_buttons->button(QDialogButtonBox::Cancel)->setText(tr("Peruuta"));
    connect(m_buttons, &QDialogButtonBox::accepted, this, &ProductDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &ProductDialog::reject);

    QHBoxLayout* listButtons = new QHBoxLayout();
    listButtons->addWidget(m_addButton);
    listButtons->addWidget(m_removeButton);
    listButtons->addStretch();
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
    setTabOrder(m_removeButton, m_numberEdit);
    setTabOrder(m_numberEdit, m_nameEdit);
    setTabOrder(m_nameEdit, m_unitCodeEdit);
    setTabOrder(m_unitCodeEdit, m_amountEdit);
    setTabOrder(m_amountEdit, m_vatModeCombo);
    setTabOrder(m_vatModeCombo, m_vatRateEdit);
    setTabOrder(m_vatRateEdit, m_categoryCombo);
    setTabOrder(m_categoryCombo, m_buttons);
    resize(960, 560);
}

int ProductDialog::currentProductRow() const
{
    return m_treeModel->sourceRow(m_view->selectionModel()->currentIndex());
}

void ProductDialog::setCurrentProductRow(int row)
{
    const QModelIndex index = m_treeModel->indexOfSourceRow(row);
    if (!index.isValid())
        return;
    m_view->setCurrentIndex(index);
    m_view->scrollTo(index);
}

void ProductDialog::accept()
{
    if (!commitForm())
        return;
    if (m_model->isModified() && !m_model->save(m_registry->database())) {
        qCWarning(logUi).noquote() << m_model->lastError();
        showWarning(tr("Tuotetietojen tallentaminen epäonnistui. %1").arg(m_model->lastError()));
        return;
    }
    QDialog::accept();
}

void ProductDialog::addProduct()
{
    if (!commitForm())
        return;
    Product product;
    // A new product joins the category that is being looked at.
    product.category = m_treeModel->category(m_view->selectionModel()->currentIndex());
    const Product* current = m_model->recordAt(currentProductRow());
    if (current) {
        product.unitCode = current->unitCode;
        product.vatRate = current->vatRate;
        product.vatExcluded = current->vatExcluded;
    }
    const int row = m_model->addRecord(product);
    setCurrentProductRow(row);
    m_numberEdit->setFocus();
}

void ProductDialog::removeProduct()
{
    const int row = currentProductRow();
    if (row < 0 || !commitForm())
        return;
    m_model->removeRecord(row);
    if (m_model->rowCount() > 0)
        setCurrentProductRow(qMin(row, m_model->rowCount() - 1));
    loadForm();
}

void ProductDialog::showWarning(const QString& text)
{
    QMessageBox::warning(this, windowTitle(), text);
}

void ProductDialog::currentChanged(const QModelIndex&, const QModelIndex&)
{
    if (m_reverting)
        return;
    const int previousRow = m_formRow;
    const int nextRow = currentProductRow();
    if (!commitForm()) {
        m_reverting = true;
        setCurrentProductRow(previousRow);
        m_reverting = false;
        return;
    }
    // Committing may have regrouped the tree under the selection.
    if (currentProductRow() != nextRow && nextRow >= 0) {
        m_reverting = true;
        setCurrentProductRow(nextRow);
        m_reverting = false;
    }
    loadForm();
}

void ProductDialog::formEdited()
{
    if (!m_loading)
        m_formDirty = true;
}

bool ProductDialog::commitForm()
{
    const Product* current = m_model->recordAt(m_formRow);
    if (!m_formDirty || !current)
        return true;

    const QString number = m_numberEdit->text().trimmed();
    if (number.isEmpty()) {
        showWarning(tr("Tuotenumero puuttuu."));
        m_numberEdit->setFocus();
        return false;
    }
    if (m_model->rowOfNumber(number, m_formRow) >= 0) {
        showWarning(tr("Tuotenumero %1 on jo käytössä.").arg(number));
        m_numberEdit->setFocus();
        return false;
    }
    qint64 amount = 0;
    if (!parseDecimal(m_amountEdit->text(), Constants::amountFractionDigits,
            Constants::amountMinFractionDigits, amount)) {
        showWarning(tr("Hinta on virheellinen."));
        m_amountEdit->setFocus();
        m_amountEdit->selectAll();
        return false;
    }
    qint64 vatRate = 0;
    if (!parseDecimal(m_vatRateEdit->text(), Constants::percentageFractionDigits,
            Constants::percentageMinFractionDigits, vatRate)
        || vatRate < 0 || vatRate > 100 * Constants::percentageScale) {
        showWarning(tr("ALV-prosentti on virheellinen."));
        m_vatRateEdit->setFocus();
        m_vatRateEdit->selectAll();
        return false;
    }

    Product product;
    current->copy(&product);
    product.number = number;
    product.name = m_nameEdit->text().trimmed();
    product.unitCode = m_unitCodeEdit->text().trimmed();
    product.amount = amount;
    product.vatExcluded = m_vatModeCombo->currentData().toBool();
    product.vatRate = int(vatRate);
    product.category = m_categoryCombo->currentText().trimmed();
    m_formDirty = false;
    // A new category or number regroups the tree and drops the selection.
    const int selected = currentProductRow();
    m_model->setRecord(m_formRow, product);
    if (selected >= 0 && currentProductRow() != selected) {
        const bool reverting = m_reverting;
        m_reverting = true;
        setCurrentProductRow(selected);
        m_reverting = reverting;
    }
    updateCategories();
    return true;
}

void ProductDialog::loadForm()
{
    m_loading = true;
    m_formRow = currentProductRow();
    m_formDirty = false;
    const Product* product = m_model->recordAt(m_formRow);
    Product empty;
    if (!product)
        product = &empty;
    updateCategories();
    const DecimalFormat amountFormat(
        Constants::amountFractionDigits, Constants::amountMinFractionDigits);
    const DecimalFormat rateFormat(
        Constants::percentageFractionDigits, Constants::percentageMinFractionDigits);
    m_numberEdit->setText(product->number);
    m_nameEdit->setText(product->name);
    m_unitCodeEdit->setText(product->unitCode);
    m_amountEdit->setText(amountFormat.format(product->amount));
    m_vatModeCombo->setCurrentIndex(m_vatModeCombo->findData(product->vatExcluded));
    m_vatRateEdit->setText(rateFormat.format(product->vatRate));
    m_categoryCombo->setCurrentText(product->category);
    m_form->setEnabled(m_formRow >= 0);
    m_removeButton->setEnabled(m_formRow >= 0);
    m_loading = false;
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
