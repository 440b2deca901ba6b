#include "invoiceform.h"

#include "core/invoiceitemclipboard.h"
#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/dateformat.h"
#include "domain/invoice.h"
#include "domain/invoicetype.h"
#include "ui/formhelper.h"
#include "ui/invoiceitemdelegate.h"
#include "ui/paymentdelegate.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTableView>
#include <QTableWidget>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QString attributePrefix = QStringLiteral("attributes/");
const QString noticeText1Key = QStringLiteral("t1");
const QString noticeText2Key = QStringLiteral("t2");

// A read-only field takes the window's colour, as a disabled one does, so
// that a saved invoice does not look editable.
void showAsReadOnly(QWidget* widget, bool readOnly)
{
    const QPalette normal = QApplication::palette(widget);
    QPalette palette = widget->palette();
    palette.setColor(QPalette::Base, normal.color(readOnly ? QPalette::Window : QPalette::Base));
    widget->setPalette(palette);
}

QLabel* addField(QGridLayout* layout, int row, int column, const QString& text, QWidget* field,
    int columnSpan = 1)
{
    QLabel* label = new QLabel(text);
    label->setBuddy(field);
    layout->addWidget(label, row, column * 2);
    layout->addWidget(field, row, column * 2 + 1, 1, columnSpan);
    return label;
}

// A table whose cells are edited by typing into them.
QTableView* newEditTable(
    const QString& name, QAbstractItemModel* model, QAbstractItemDelegate* delegate)
{
    QTableView* view = FormHelper::create<QTableView>(name);
    view->setModel(model);
    view->setItemDelegate(delegate);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
        | QAbstractItemView::AnyKeyPressed);
    return view;
}

// Buttons side by side at the left, in a widget of their own.
QWidget* buttonRow(std::initializer_list<QPushButton*> buttons)
{
    QWidget* row = new QWidget();
    QHBoxLayout* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QPushButton* button : buttons)
        layout->addWidget(button);
    layout->addStretch(1);
    return row;
}

QLabel* newAmountLabel(const QString& name)
{
    QLabel* label = new QLabel();
    label->setObjectName(name);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

// Half away from zero, in whole hundredths of a percent.
int percentageFromTenThousandths(qint64 value)
{
    return static_cast<int>(value >= 0 ? (value + 50) / 100 : (value - 50) / 100);
}

} // namespace

InvoiceForm::InvoiceForm(Registry* registry, MainModel* model, QWidget* parent)
    : QWidget(parent)
    , m_registry(registry)
    , m_model(model)
    , m_moneyFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
    , m_percentageFormat(
          Constants::percentageFractionDigits, Constants::percentageMinFractionDigits)
{
    QWidget* head = createHead();
    QSplitter* splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("invoiceSplitter"));
    splitter->addWidget(createRows());
    splitter->addWidget(createBottom());
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setChildrenCollapsible(false);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(head);
    layout->addWidget(splitter, 1);

    // Keyboard order: the head top to bottom, then the rows, the payments
    // and the additional information.
    auto button = [this](const char* name) { return findChild<QPushButton*>(QLatin1String(name)); };
    FormHelper::setTabOrder({ m_customerCombo, m_numberEdit, m_typeCombo, m_dateEdit, m_dueDateEdit,
        m_paymentTermsEdit, m_interestEdit, m_deliveryEdit, m_deliveryDateEdit, m_buyerRefEdit,
        m_sellerRefEdit, m_invoiceItemTableView, m_paymentTableView, button("addPaymentButton"),
        button("removePaymentButton"), m_noticeText1Edit, m_noticeText2Edit, m_attributeTable,
        button("addAttributeButton"), button("removeAttributeButton") });

    connect(m_registry, &Registry::customersFetched, this, &InvoiceForm::updateCustomers);
    connect(m_registry, &Registry::bankAccountsFetched, m_paymentTableView->viewport(),
        qOverload<>(&QWidget::update));
    for (QAbstractItemModel* rows :
        { static_cast<QAbstractItemModel*>(m_model->invoiceItemTableModel()),
            static_cast<QAbstractItemModel*>(m_model->paymentTableModel()) }) {
        connect(rows, &QAbstractItemModel::dataChanged, this, &InvoiceForm::updateAmounts);
        connect(rows, &QAbstractItemModel::rowsInserted, this, &InvoiceForm::updateAmounts);
        connect(rows, &QAbstractItemModel::rowsRemoved, this, &InvoiceForm::updateAmounts);
        connect(rows, &QAbstractItemModel::modelReset, this, &InvoiceForm::updateAmounts);
    }
    connect(m_invoiceItemTableView->selectionModel(), &QItemSelectionModel::currentChanged, this,
        &InvoiceForm::commandsChanged);
}

InvoiceForm::~InvoiceForm()
{
    // The models still announce their clearing while the form's children
    // go; by then the form must not listen any more.
    for (QObject* source : { static_cast<QObject*>(m_model->invoiceItemTableModel()),
             static_cast<QObject*>(m_model->paymentTableModel()),
             static_cast<QObject*>(m_invoiceItemTableView->selectionModel()),
             static_cast<QObject*>(m_customerCombo) })
        disconnect(source, nullptr, this, nullptr);
}

QWidget* InvoiceForm::createHead()
{
    m_customerCombo = new QComboBox();
    m_customerCombo->setObjectName(QStringLiteral("customerCombo"));
    m_customerCombo->setEditable(true);
    m_customerCombo->setInsertPolicy(QComboBox::NoInsert);
    m_customerCombo->setMinimumContentsLength(28);
    // Type-ahead over any part of the name.
    QCompleter* completer = new QCompleter(m_customerCombo->model(), m_customerCombo);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    completer->setCompletionMode(QCompleter::PopupCompletion);
    m_customerCombo->setCompleter(completer);
    connect(m_customerCombo, &QComboBox::currentIndexChanged, this, &InvoiceForm::customerChosen);
    connect(m_customerCombo->lineEdit(), &QLineEdit::editingFinished, this,
        &InvoiceForm::confirmCustomer);

    m_typeCombo = new QComboBox();
    m_typeCombo->setObjectName(QStringLiteral("typeCombo"));
    for (int type = 0; type < InvoiceType::count; ++type)
        m_typeCombo->addItem(InvoiceType::name(type));

    m_numberEdit = FormHelper::create<QLineEdit>(QStringLiteral("numberEdit"));
    m_numberEdit->setValidator(new QIntValidator(1, 2147483647, m_numberEdit));
    m_numberEdit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_dateEdit = FormHelper::create<QLineEdit>(QStringLiteral("dateEdit"));
    m_dueDateEdit = FormHelper::create<QLineEdit>(QStringLiteral("dueDateEdit"));
    m_paymentTermsEdit = FormHelper::create<QLineEdit>(QStringLiteral("paymentTermsEdit"));
    m_deliveryEdit = FormHelper::create<QLineEdit>(QStringLiteral("deliveryEdit"));
    m_deliveryDateEdit = FormHelper::create<QLineEdit>(QStringLiteral("deliveryDateEdit"));
    m_buyerRefEdit = FormHelper::create<QLineEdit>(QStringLiteral("buyerRefEdit"));
    m_sellerRefEdit = FormHelper::create<QLineEdit>(QStringLiteral("sellerRefEdit"));
    m_interestEdit = FormHelper::create<QLineEdit>(QStringLiteral("interestEdit"));
    m_interestEdit->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_referenceNumberEdit = FormHelper::create<QLineEdit>(QStringLiteral("referenceNumberEdit"));
    m_referenceNumberEdit->setReadOnly(true);
    m_referenceNumberEdit->setFocusPolicy(Qt::ClickFocus);

    for (QLineEdit* edit : { m_dateEdit, m_dueDateEdit, m_deliveryDateEdit }) {
        edit->setPlaceholderText(tr("p.k.vvvv"));
        connect(edit, &QLineEdit::editingFinished, this, [this, edit] { dateEdited(edit); });
    }
    connect(m_paymentTermsEdit, &QLineEdit::editingFinished, this, &InvoiceForm::updateDueDate);

    QWidget* head = new QWidget();
    QGridLayout* grid = new QGridLayout(head);
    grid->setContentsMargins(0, 0, 0, 0);
    addField(grid, 0, 0, tr("Asia&kas"), m_customerCombo, 3);
    addField(grid, 0, 2, tr("&Numero"), m_numberEdit);
    addField(grid, 1, 0, tr("T&yyppi"), m_typeCombo);
    addField(grid, 1, 1, tr("&Päivämäärä"), m_dateEdit);
    addField(grid, 1, 2, tr("&Eräpäivä"), m_dueDateEdit);
    addField(grid, 2, 0, tr("&Maksuehdot"), m_paymentTermsEdit);
    addField(grid, 2, 1, tr("Viivästyskorko, %"), m_interestEdit);
    addField(grid, 2, 2, tr("Viitenumero"), m_referenceNumberEdit);
    addField(grid, 3, 0, tr("Toim&itustapa"), m_deliveryEdit);
    addField(grid, 3, 1, tr("Toimituspäi&vä"), m_deliveryDateEdit);
    addField(grid, 4, 0, tr("Osta&jan viite"), m_buyerRefEdit);
    addField(grid, 4, 1, tr("Myyj&än viite"), m_sellerRefEdit);
    for (int column : { 1, 3, 5 })
        grid->setColumnStretch(column, 1);
    return head;
}

QWidget* InvoiceForm::createRows()
{
    m_invoiceItemTableView = newEditTable(QStringLiteral("invoiceItemTable"),
        m_model->invoiceItemTableModel(), new InvoiceItemDelegate(m_registry, this));
    m_invoiceItemTableView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_invoiceItemTableView->setTabKeyNavigation(true);
    m_invoiceItemTableView->verticalHeader()->setDefaultSectionSize(
        m_invoiceItemTableView->fontMetrics().height() + 10);
    m_invoiceItemTableView->horizontalHeader()->setSectionResizeMode(
        InvoiceItemTableModel::TextColumn, QHeaderView::Stretch);
    const int digit = m_invoiceItemTableView->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    const struct
    {
        int column;
        int digits;
    } widths[] = {
        { InvoiceItemTableModel::ProductColumn, 26 },
        { InvoiceItemTableModel::QuantityColumn, 9 },
        { InvoiceItemTableModel::UnitColumn, 8 },
        { InvoiceItemTableModel::PriceColumn, 15 },
        { InvoiceItemTableModel::DiscountColumn, 11 },
        { InvoiceItemTableModel::DiscountedPriceColumn, 18 },
        { InvoiceItemTableModel::VatColumn, 8 },
        { InvoiceItemTableModel::TotalColumn, 14 },
    };
    for (const auto& width : widths)
        m_invoiceItemTableView->setColumnWidth(width.column, digit * width.digits);
    m_invoiceItemTableView->setContextMenuPolicy(Qt::ActionsContextMenu);

    m_rowButtons = new QWidget();
    QHBoxLayout* buttons = new QHBoxLayout(m_rowButtons);
    buttons->setContentsMargins(0, 0, 0, 0);
    QWidget* rows = new QWidget();
    QVBoxLayout* layout = new QVBoxLayout(rows);
    layout->setContentsMargins(0, 0, 0, 0);
    QHBoxLayout* title = new QHBoxLayout();
    title->addWidget(new QLabel(tr("<b>Laskurivit</b>")));
    title->addStretch(1);
    title->addWidget(m_rowButtons);
    layout->addLayout(title);
    layout->addWidget(m_invoiceItemTableView, 1);
    return rows;
}

void InvoiceForm::setRowActions(const QList<QAction*>& buttons, const QList<QAction*>& menu)
{
    for (QAction* action : buttons) {
        QToolButton* button = new QToolButton();
        button->setDefaultAction(action);
        button->setFocusPolicy(Qt::NoFocus);
        m_rowButtons->layout()->addWidget(button);
    }
    m_invoiceItemTableView->addActions(menu);
}

QWidget* InvoiceForm::createBottom()
{
    const int digit = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    // Payments.
    m_paymentTableView = newEditTable(QStringLiteral("paymentTable"), m_model->paymentTableModel(),
        new PaymentDelegate(m_registry, this));
    m_paymentTableView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_paymentTableView->verticalHeader()->hide();
    m_paymentTableView->horizontalHeader()->setSectionResizeMode(
        PaymentTableModel::BankAccountColumn, QHeaderView::Stretch);
    m_paymentTableView->setColumnWidth(PaymentTableModel::DateColumn, digit * 12);
    m_paymentTableView->setColumnWidth(PaymentTableModel::AmountColumn, digit * 12);
    QPushButton* addPaymentButton
        = FormHelper::createButton(tr("Lisää suoritus"), QStringLiteral("addPaymentButton"));
    connect(addPaymentButton, &QPushButton::clicked, this, &InvoiceForm::addPayment);
    QPushButton* removePaymentButton
        = FormHelper::createButton(tr("Poista suoritus"), QStringLiteral("removePaymentButton"));
    connect(removePaymentButton, &QPushButton::clicked, this, &InvoiceForm::removePayment);
    m_paymentButtons = buttonRow({ addPaymentButton, removePaymentButton });
    QGroupBox* paymentBox = new QGroupBox(tr("Maksusuoritukset"));
    QVBoxLayout* paymentLayout = new QVBoxLayout(paymentBox);
    paymentLayout->addWidget(m_paymentTableView, 1);
    paymentLayout->addWidget(m_paymentButtons);

    // Notice texts and free attributes.
    m_noticeText1Edit = FormHelper::create<QLineEdit>(QStringLiteral("noticeText1Edit"));
    m_noticeText2Edit = FormHelper::create<QLineEdit>(QStringLiteral("noticeText2Edit"));
    m_attributeTable = new QTableWidget(0, 2);
    m_attributeTable->setObjectName(QStringLiteral("attributeTable"));
    m_attributeTable->setHorizontalHeaderLabels({ tr("Määre"), tr("Arvo") });
    m_attributeTable->verticalHeader()->hide();
    m_attributeTable->horizontalHeader()->setStretchLastSection(true);
    m_attributeTable->setColumnWidth(0, digit * 16);
    m_attributeTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    QPushButton* addAttributeButton
        = FormHelper::createButton(tr("Lisää määre"), QStringLiteral("addAttributeButton"));
    connect(addAttributeButton, &QPushButton::clicked, this, &InvoiceForm::addAttribute);
    QPushButton* removeAttributeButton
        = FormHelper::createButton(tr("Poista määre"), QStringLiteral("removeAttributeButton"));
    connect(removeAttributeButton, &QPushButton::clicked, this, &InvoiceForm::removeAttribute);
    m_attributeButtons = buttonRow({ addAttributeButton, removeAttributeButton });
    QGroupBox* extraBox = new QGroupBox(tr("Lisätiedot"));
    QFormLayout* extraLayout = new QFormLayout(extraBox);
    extraLayout->addRow(tr("Lisäteksti 1"), m_noticeText1Edit);
    extraLayout->addRow(tr("Lisäteksti 2"), m_noticeText2Edit);
    extraLayout->addRow(m_attributeTable);
    extraLayout->addRow(m_attributeButtons);

    // Amounts.
    m_vatExcludedLabel = newAmountLabel(QStringLiteral("vatExcludedLabel"));
    m_vatLabel = newAmountLabel(QStringLiteral("vatLabel"));
    m_totalLabel = newAmountLabel(QStringLiteral("totalLabel"));
    m_paidLabel = newAmountLabel(QStringLiteral("paidLabel"));
    m_balanceLabel = newAmountLabel(QStringLiteral("balanceLabel"));
    QFont bold = m_totalLabel->font();
    bold.setBold(true);
    m_totalLabel->setFont(bold);
    m_balanceLabel->setFont(bold);
    QGroupBox* amountBox = new QGroupBox(tr("Summat"));
    QFormLayout* amountLayout = new QFormLayout(amountBox);
    amountLayout->addRow(tr("Veroton"), m_vatExcludedLabel);
    amountLayout->addRow(tr("ALV"), m_vatLabel);
    amountLayout->addRow(tr("Yhteensä"), m_totalLabel);
    amountLayout->addRow(tr("Maksettu"), m_paidLabel);
    amountLayout->addRow(tr("Avoinna"), m_balanceLabel);
    amountBox->setMinimumWidth(digit * 30);

    QWidget* bottom = new QWidget();
    QHBoxLayout* bottomLayout = new QHBoxLayout(bottom);
    bottomLayout->setContentsMargins(0, 0, 0, 0);
    bottomLayout->addWidget(paymentBox, 3);
    bottomLayout->addWidget(extraBox, 3);
    bottomLayout->addWidget(amountBox, 2);
    return bottom;
}

// --- The invoice in the fields -----------------------------------------------

bool InvoiceForm::isEditMode() const
{
    return m_shown && m_model->isEditable();
}

void InvoiceForm::load(bool shown)
{
    m_shown = shown;
    const bool loading = m_loading;
    m_loading = true;
    if (!shown) {
        m_customerCombo->setCurrentIndex(-1);
        m_customerCombo->setEditText(QString());
        m_typeCombo->setCurrentIndex(0);
        for (QLineEdit* edit : { m_numberEdit, m_dateEdit, m_dueDateEdit, m_paymentTermsEdit,
                 m_deliveryEdit, m_deliveryDateEdit, m_buyerRefEdit, m_sellerRefEdit,
                 m_interestEdit, m_referenceNumberEdit, m_noticeText1Edit, m_noticeText2Edit })
            edit->clear();
        m_attributeTable->setRowCount(0);
        m_loading = loading;
        return;
    }
    const Invoice* invoice = m_model->invoice();
    const DateFormat dateFormat(m_model->today());
    selectCustomer(invoice->customerId);
    m_typeCombo->setCurrentIndex(
        InvoiceType::isValid(invoice->type) ? invoice->type : InvoiceType::Invoice);
    m_numberEdit->setText(QString::number(invoice->number));
    m_dateEdit->setText(dateFormat.format(invoice->date));
    m_dueDateEdit->setText(dateFormat.format(invoice->dueDate));
    m_paymentTermsEdit->setText(invoice->paymentTerms);
    m_deliveryEdit->setText(invoice->delivery);
    m_deliveryDateEdit->setText(
        invoice->deliveryDate.isValid() ? dateFormat.format(invoice->deliveryDate) : QString());
    m_buyerRefEdit->setText(invoice->buyerRef);
    m_sellerRefEdit->setText(invoice->sellerRef);
    m_interestEdit->setText(m_percentageFormat.format(invoice->interestOnArrears));
    loadNoticeTexts();
    updateReferenceField();
    loadAttributes();
    m_loading = loading;
}

void InvoiceForm::loadAttributes()
{
    const QMap<QString, QVariant> attributes
        = m_model->invoice()->propertiesWithPrefix(attributePrefix);
    m_attributeTable->setRowCount(0);
    for (auto it = attributes.cbegin(); it != attributes.cend(); ++it) {
        const int row = m_attributeTable->rowCount();
        m_attributeTable->insertRow(row);
        m_attributeTable->setItem(
            row, 0, new QTableWidgetItem(it.key().mid(attributePrefix.size())));
        m_attributeTable->setItem(row, 1, new QTableWidgetItem(it.value().toString()));
    }
}

void InvoiceForm::loadNoticeTexts()
{
    const bool loading = m_loading;
    m_loading = true;
    const Invoice* invoice = m_model->invoice();
    m_noticeText1Edit->setText(invoice->property(noticeText1Key).toString());
    m_noticeText2Edit->setText(invoice->property(noticeText2Key).toString());
    m_loading = loading;
}

void InvoiceForm::applyNoticeTexts()
{
    Invoice* invoice = m_model->invoice();
    invoice->setPropertyIfNotEmpty(noticeText1Key, m_noticeText1Edit->text());
    invoice->setPropertyIfNotEmpty(noticeText2Key, m_noticeText2Edit->text());
}

void InvoiceForm::updateReferenceField()
{
    const QString reference = m_model->invoice()->referenceNumber;
    m_referenceNumberEdit->setText(m_shown ? Invoice::formatReferenceNumber(reference) : QString());
}

void InvoiceForm::updateEditable()
{
    const bool editable = isEditMode();
    for (QLineEdit* edit : { m_numberEdit, m_dateEdit, m_dueDateEdit, m_paymentTermsEdit,
             m_deliveryEdit, m_deliveryDateEdit, m_buyerRefEdit, m_sellerRefEdit, m_interestEdit,
             m_noticeText1Edit, m_noticeText2Edit }) {
        edit->setReadOnly(!editable);
        showAsReadOnly(edit, !editable);
    }
    showAsReadOnly(m_referenceNumberEdit, true);
    showAsReadOnly(m_invoiceItemTableView, !editable);
    showAsReadOnly(m_attributeTable, !editable);
    m_customerCombo->setEnabled(editable);
    m_typeCombo->setEnabled(editable);
    m_attributeTable->setEditTriggers(editable
            ? QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
                | QAbstractItemView::AnyKeyPressed | QAbstractItemView::SelectedClicked
            : QAbstractItemView::NoEditTriggers);
    m_attributeButtons->setEnabled(editable);
    // Payments can be recorded for any shown invoice, also outside edit
    // mode: saving then writes only what changed.
    m_model->paymentTableModel()->setEditable(m_shown);
    m_paymentButtons->setEnabled(m_shown);
}

void InvoiceForm::updateAmounts()
{
    const InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    const qint64 total = items->totalAmountVatIncluded();
    const qint64 paid = m_model->paymentTableModel()->totalAmount();
    m_vatExcludedLabel->setText(m_moneyFormat.format(items->totalAmountVatExcluded()));
    m_vatLabel->setText(m_moneyFormat.format(items->totalVatAmount()));
    m_totalLabel->setText(m_moneyFormat.format(total));
    m_paidLabel->setText(m_moneyFormat.format(paid));
    m_balanceLabel->setText(m_moneyFormat.format(total - paid));
}

void InvoiceForm::updateDueDate()
{
    if (m_loading || !isEditMode())
        return;
    const DateFormat dateFormat(m_model->today());
    Invoice terms;
    terms.date = dateFormat.parse(m_dateEdit->text().trimmed());
    if (!terms.date.isValid())
        terms.date = m_model->invoice()->date;
    terms.paymentTerms = m_paymentTermsEdit->text().trimmed();
    // Terms without a number of days leave the due date to the user.
    const QDate dueDate = terms.calculateDueDate();
    if (dueDate.isValid())
        m_dueDateEdit->setText(dateFormat.format(dueDate));
}

void InvoiceForm::dateEdited(QLineEdit* edit)
{
    if (m_loading || edit->isReadOnly())
        return;
    const DateFormat dateFormat(m_model->today());
    const QDate date = dateFormat.parse(edit->text().trimmed());
    // The short forms ("15", "15.3") are written out; anything unreadable
    // is left for the save check to point out.
    if (date.isValid())
        edit->setText(dateFormat.format(date));
    if (edit == m_dateEdit)
        updateDueDate();
}

// --- Saving ------------------------------------------------------------------

InvoiceSaveCheck::Texts InvoiceForm::prepareSave()
{
    static_cast<InvoiceItemDelegate*>(m_invoiceItemTableView->itemDelegate())->commitOpenEditor();
    static_cast<PaymentDelegate*>(m_paymentTableView->itemDelegate())->commitOpenEditor();
    InvoiceSaveCheck::Texts texts;
    texts.customer = m_customerCombo->currentText();
    texts.number = m_numberEdit->text();
    texts.date = m_dateEdit->text();
    texts.dueDate = m_dueDateEdit->text();
    texts.deliveryDate = m_deliveryDateEdit->text();
    confirmCustomer();
    return texts;
}

void InvoiceForm::showCheck(const InvoiceSaveCheck::Result& check)
{
    if (check.outcome != InvoiceSaveCheck::Passed && check.outcome != InvoiceSaveCheck::Refused)
        return;
    m_numberEdit->setText(QString::number(m_model->invoice()->number));
    updateReferenceField();
    switch (check.field) {
    case InvoiceSaveCheck::NumberField:
        m_numberEdit->setFocus();
        m_numberEdit->selectAll();
        break;
    case InvoiceSaveCheck::CustomerField:
        m_customerCombo->setFocus();
        break;
    case InvoiceSaveCheck::DeliveryDateField:
        m_deliveryDateEdit->setFocus();
        break;
    case InvoiceSaveCheck::DateField:
        m_dateEdit->setFocus();
        break;
    case InvoiceSaveCheck::DueDateField:
        m_dueDateEdit->setFocus();
        break;
    case InvoiceSaveCheck::InvoiceItemField:
        editCell(m_invoiceItemTableView,
            m_model->invoiceItemTableModel()->index(
                check.row, InvoiceItemTableModel::ProductColumn));
        break;
    case InvoiceSaveCheck::PaymentField:
        editCell(m_paymentTableView,
            m_model->paymentTableModel()->index(check.row, PaymentTableModel::DateColumn));
        break;
    case InvoiceSaveCheck::NoField:
        break;
    }
}

void InvoiceForm::apply(const InvoiceSaveCheck::Result& check)
{
    Invoice* invoice = m_model->invoice();
    invoice->type = qMax(0, m_typeCombo->currentIndex());
    invoice->date = check.date;
    invoice->dueDate = check.dueDate;
    invoice->deliveryDate = check.deliveryDate;
    invoice->paymentTerms = m_paymentTermsEdit->text().trimmed();
    invoice->delivery = m_deliveryEdit->text().trimmed();
    invoice->buyerRef = m_buyerRefEdit->text().trimmed();
    invoice->sellerRef = m_sellerRefEdit->text().trimmed();

    const QString interest = m_interestEdit->text().trimmed();
    if (interest.isEmpty()) {
        invoice->interestOnArrears = 0;
    } else {
        // Read with four decimals so that rounding to hundredths is ours.
        DecimalFormat format(4, 0);
        format.setGrouping(false);
        bool ok = false;
        const qint64 value = format.parse(interest, ok);
        if (ok)
            invoice->interestOnArrears = percentageFromTenThousandths(value);
    }

    applyNoticeTexts();
    invoice->removePropertiesWithPrefix(attributePrefix);
    for (int row = 0; row < m_attributeTable->rowCount(); ++row) {
        const QTableWidgetItem* name = m_attributeTable->item(row, 0);
        const QTableWidgetItem* value = m_attributeTable->item(row, 1);
        const QString key = name ? name->text().trimmed() : QString();
        if (!key.isEmpty())
            invoice->setProperty(attributePrefix + key, value ? value->text() : QString());
    }
}

// --- Customers ---------------------------------------------------------------

void InvoiceForm::updateCustomers()
{
    const bool loading = m_loading;
    m_loading = true;
    struct Entry
    {
        QString name;
        int id;
    };
    QList<Entry> entries;
    const int currentId = m_shown ? m_model->invoice()->customerId : -1;
    for (int i = 0; i < m_registry->customerCount(); ++i) {
        const Customer* customer = m_registry->customerAt(i);
        // A removed customer stays visible on the invoices that have it.
        if (!customer->deleted || customer->id == currentId)
            entries.append({ customer->name, customer->id });
    }
    std::sort(entries.begin(), entries.end(),
        [](const Entry& a, const Entry& b) { return a.name.localeAwareCompare(b.name) < 0; });
    m_customerCombo->clear();
    for (const Entry& entry : entries)
        m_customerCombo->addItem(entry.name, entry.id);
    selectCustomer(currentId);
    m_loading = loading;
}

void InvoiceForm::selectCustomer(int customerId)
{
    const bool loading = m_loading;
    m_loading = true;
    const int row = customerId < 0 ? -1 : m_customerCombo->findData(customerId);
    m_customerCombo->setCurrentIndex(row);
    if (row < 0)
        m_customerCombo->setEditText(QString());
    m_loading = loading;
}

void InvoiceForm::focusCustomer()
{
    m_customerCombo->setFocus();
}

void InvoiceForm::confirmCustomer()
{
    if (m_loading || !isEditMode())
        return;
    const QString text = m_customerCombo->currentText().trimmed();
    int row = -1;
    if (!text.isEmpty()) {
        row = m_customerCombo->findText(text, Qt::MatchFixedString);
        if (row < 0) {
            // A part of one name only is as good as the name.
            for (int i = 0; i < m_customerCombo->count(); ++i) {
                if (!m_customerCombo->itemText(i).contains(text, Qt::CaseInsensitive))
                    continue;
                if (row >= 0) {
                    row = -2;
                    break;
                }
                row = i;
            }
        }
        if (row < 0) {
            // Not a customer: show the chosen one again.
            const int current = m_customerCombo->currentIndex();
            m_customerCombo->setEditText(
                current >= 0 ? m_customerCombo->itemText(current) : QString());
            return;
        }
    }
    if (row != m_customerCombo->currentIndex())
        m_customerCombo->setCurrentIndex(row);
    else if (row >= 0)
        m_customerCombo->setEditText(m_customerCombo->itemText(row));
    if (row < 0)
        m_customerCombo->setEditText(QString());
}

void InvoiceForm::customerChosen()
{
    if (m_loading || !isEditMode())
        return;
    Invoice* invoice = m_model->invoice();
    const int row = m_customerCombo->currentIndex();
    const int id = row < 0 ? -1 : m_customerCombo->itemData(row).toInt();
    if (id == invoice->customerId)
        return;
    invoice->customerId = id;
    bool found = false;
    const Customer* customer = m_registry->customerById(id, found);
    if (found && customer && !customer->paymentTerms.isEmpty()) {
        m_paymentTermsEdit->setText(customer->paymentTerms);
        updateDueDate();
    }
    // The customer may have a reference number and notice texts of its own.
    m_model->updateReferenceNumber();
    updateReferenceField();
    loadNoticeTexts();
    emit commandsChanged();
}

// --- Rows, payments and attributes -------------------------------------------

QList<int> InvoiceForm::selectedInvoiceItemRows() const
{
    QList<int> rows;
    const QModelIndexList selected = m_invoiceItemTableView->selectionModel()->selectedRows();
    for (const QModelIndex& index : selected)
        rows.append(index.row());
    if (rows.isEmpty() && m_invoiceItemTableView->currentIndex().isValid())
        rows.append(m_invoiceItemTableView->currentIndex().row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

int InvoiceForm::currentInvoiceItemRow() const
{
    const QModelIndex current = m_invoiceItemTableView->currentIndex();
    return current.isValid() ? current.row() : -1;
}

void InvoiceForm::addInvoiceItem()
{
    if (!isEditMode())
        return;
    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    const int row = items->rowCount();
    items->insertRow(row);
    editCell(m_invoiceItemTableView, items->index(row, InvoiceItemTableModel::ProductColumn));
}

void InvoiceForm::removeInvoiceItems()
{
    if (!isEditMode())
        return;
    const QList<int> rows = selectedInvoiceItemRows();
    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    for (auto it = rows.crbegin(); it != rows.crend(); ++it)
        items->removeRow(*it);
}

void InvoiceForm::moveInvoiceItemUp()
{
    moveInvoiceItem(-1);
}

void InvoiceForm::moveInvoiceItemDown()
{
    moveInvoiceItem(1);
}

void InvoiceForm::moveInvoiceItem(int step)
{
    const QModelIndex current = m_invoiceItemTableView->currentIndex();
    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    const int row = current.row() + step;
    if (!isEditMode() || !current.isValid() || row < 0 || row >= items->rowCount())
        return;
    if (items->moveRow(current.row(), row))
        m_invoiceItemTableView->setCurrentIndex(items->index(row, current.column()));
}

void InvoiceForm::copyInvoiceItems()
{
    if (!m_shown)
        return;
    InvoiceItemClipboard(m_model->invoiceItemTableModel())
        .copyRowsToClipboard(selectedInvoiceItemRows());
}

void InvoiceForm::cutInvoiceItems()
{
    if (!isEditMode())
        return;
    InvoiceItemClipboard(m_model->invoiceItemTableModel())
        .cutRowsToClipboard(selectedInvoiceItemRows());
}

void InvoiceForm::pasteInvoiceItems()
{
    if (!isEditMode())
        return;
    InvoiceItemClipboard(m_model->invoiceItemTableModel()).pasteRowsFromClipboard();
}

void InvoiceForm::addPayment()
{
    if (!m_shown)
        return;
    const int row = m_model->addPayment();
    editCell(m_paymentTableView,
        m_model->paymentTableModel()->index(row, PaymentTableModel::DateColumn));
    emit commandsChanged();
}

void InvoiceForm::removePayment()
{
    const QModelIndex current = m_paymentTableView->currentIndex();
    if (!m_shown || !current.isValid())
        return;
    m_model->paymentTableModel()->removeRow(current.row());
    emit commandsChanged();
}

void InvoiceForm::addAttribute()
{
    if (!isEditMode())
        return;
    const int row = m_attributeTable->rowCount();
    m_attributeTable->insertRow(row);
    m_attributeTable->setItem(row, 0, new QTableWidgetItem());
    m_attributeTable->setItem(row, 1, new QTableWidgetItem());
    m_attributeTable->setFocus();
    m_attributeTable->setCurrentCell(row, 0);
    m_attributeTable->editItem(m_attributeTable->item(row, 0));
}

void InvoiceForm::removeAttribute()
{
    if (!isEditMode() || m_attributeTable->currentRow() < 0)
        return;
    m_attributeTable->removeRow(m_attributeTable->currentRow());
}

void InvoiceForm::editCell(QTableView* view, const QModelIndex& cell)
{
    view->setFocus();
    view->setCurrentIndex(cell);
    view->edit(cell);
}
