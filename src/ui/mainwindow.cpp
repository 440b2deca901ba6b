#include "mainwindow.h"

#include "core/invoiceitemclipboard.h"
#include "core/invoiceitemtablemodel.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/bankaccount.h"
#include "domain/constants.h"
#include "domain/customer.h"
#include "domain/dateformat.h"
#include "domain/invoiceitem.h"
#include "domain/logging.h"
#include "domain/payment.h"
#include "domain/paymentcriteria.h"
#include "domain/settings.h"
#include "ui/aboutdialog.h"
#include "ui/bankaccountdialog.h"
#include "ui/customerdialog.h"
#include "ui/databaselistdialog.h"
#include "ui/formhelper.h"
#include "ui/invoiceitemdelegate.h"
#include "ui/invoicelistprintpreviewdialog.h"
#include "ui/invoiceprintpreviewdialog.h"
#include "ui/invoicerangedialog.h"
#include "ui/paymentdelegate.h"
#include "ui/paymentprintpreviewdialog.h"
#include "ui/productdialog.h"
#include "ui/referencenumberdialog.h"
#include "ui/scripteditordialog.h"
#include "ui/searchdialog.h"
#include "ui/settingsdialog.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QComboBox>
#include <QCompleter>
#include <QDesktopServices>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QStatusBar>
#include <QTableView>
#include <QTableWidget>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>
#include <QUrlQuery>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QString applicationTitle = QStringLiteral("Veklari");
const QString helpAddress = QStringLiteral("https://veklari.fi/ohje");
const QString vatIncludedKey = QStringLiteral("settings/vatIncluded");
const QString defaultBankAccountKey = QStringLiteral("settings/defaultBankAccount");
const QString attributePrefix = QStringLiteral("attributes/");

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

// The row table's columns that can be hidden.
const struct
{
    const char* name;
    const char* text;
    int column;
} rowColumns[] = {
    { "showDiscountAction", "Näytä &alennus-%", InvoiceItemTableModel::DiscountColumn },
    { "showDiscountedPriceAction", "Näytä a&lennettu à-hinta",
        InvoiceItemTableModel::DiscountedPriceColumn },
    { "showVatAction", "Näytä ALV-%", InvoiceItemTableModel::VatColumn },
};

// Half away from zero, in whole hundredths of a percent.
int percentageFromTenThousandths(qint64 value)
{
    return static_cast<int>(value >= 0 ? (value + 50) / 100 : (value - 50) / 100);
}

} // namespace

MainWindow::MainWindow(Registry* registry, QWidget* parent)
    : QMainWindow(parent)
    , m_registry(registry)
    , m_model(new MainModel(registry, this))
    , m_moneyFormat(Constants::totalAmountFractionDigits, Constants::totalAmountMinFractionDigits)
    , m_percentageFormat(
          Constants::percentageFractionDigits, Constants::percentageMinFractionDigits)
{
    createActions();
    createForm();
    createInvoiceList();
    createMenus();

    m_positionLabel = new QLabel(this);
    m_positionLabel->setObjectName(QStringLiteral("positionLabel"));
    statusBar()->addPermanentWidget(m_positionLabel);

    connect(m_registry, &Registry::customersFetched, this, &MainWindow::updateCustomers);
    connect(m_registry, &Registry::bankAccountsFetched, m_paymentTableView->viewport(),
        qOverload<>(&QWidget::update));
    // A message box in the middle of committing an editor would take the
    // focus from it; show it once the edit is over.
    connect(m_model->invoiceItemTableModel(), &InvoiceItemTableModel::tooLargeAmountEntered, this,
        &MainWindow::tooLargeAmountEntered, Qt::QueuedConnection);
    connect(m_model->paymentTableModel(), &PaymentTableModel::tooLargeAmountEntered, this,
        &MainWindow::tooLargeAmountEntered, Qt::QueuedConnection);

    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    for (QAbstractItemModel* model : { static_cast<QAbstractItemModel*>(items),
             static_cast<QAbstractItemModel*>(m_model->paymentTableModel()) }) {
        connect(model, &QAbstractItemModel::dataChanged, this, &MainWindow::updateAmounts);
        connect(model, &QAbstractItemModel::rowsInserted, this, &MainWindow::updateAmounts);
        connect(model, &QAbstractItemModel::rowsRemoved, this, &MainWindow::updateAmounts);
        connect(model, &QAbstractItemModel::modelReset, this, &MainWindow::updateAmounts);
    }
    connect(m_invoiceItemTableView->selectionModel(), &QItemSelectionModel::currentChanged, this,
        &MainWindow::updateActions);

    resize(1280, 860);
    loadForm();
    updateWindowTitle();
}

MainWindow::~MainWindow()
{
    // The models still announce their clearing while the window's children
    // go; by then the window must not listen any more.
    for (QObject* source : { static_cast<QObject*>(m_model->invoiceItemTableModel()),
             static_cast<QObject*>(m_model->paymentTableModel()),
             static_cast<QObject*>(m_invoiceItemTableView->selectionModel()),
             static_cast<QObject*>(m_customerCombo) })
        disconnect(source, nullptr, this, nullptr);
}

QAction* MainWindow::createAction(
    const QString& name, const QString& text, const QKeySequence& shortcut)
{
    QAction* created = new QAction(text, this);
    created->setObjectName(name);
    created->setShortcut(shortcut);
    m_actions.insert(name, created);
    return created;
}

QAction* MainWindow::action(const char* name) const
{
    return m_actions.value(QLatin1String(name));
}

void MainWindow::createActions()
{
    createAction(QStringLiteral("newInvoiceAction"), tr("&Uusi"), QKeySequence(Qt::Key_F7),
        &MainWindow::newInvoice);
    createAction(QStringLiteral("saveInvoiceAction"), tr("&Tallenna"),
        QKeySequence(Qt::CTRL | Qt::Key_S), [this] { saveInvoice(); });
    createAction(QStringLiteral("editModeAction"), tr("&Muokkaa"), QKeySequence(Qt::Key_F6),
        [this](bool on) { toggleEditMode(on); })
        ->setCheckable(true);
    createAction(QStringLiteral("removeInvoiceAction"), tr("&Poista"),
        QKeySequence(Qt::CTRL | Qt::Key_Delete), &MainWindow::removeInvoice);
    createAction(QStringLiteral("copyInvoiceAction"), tr("Tee &laskusta kopio"),
        QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C), &MainWindow::copyInvoice);
    createAction(QStringLiteral("referenceNumberAction"), tr("&Viitenumero ja lisätiedot"),
        QKeySequence(Qt::CTRL | Qt::Key_L), &MainWindow::editReferenceNumber);
    createAction(QStringLiteral("quitAction"), tr("&Lopeta"), QKeySequence(Qt::CTRL | Qt::Key_Q),
        &QWidget::close);

    createAction(QStringLiteral("addInvoiceItemAction"), tr("Lisää &rivi"),
        QKeySequence(Qt::Key_F8), &MainWindow::addInvoiceItem);
    createAction(QStringLiteral("removeInvoiceItemAction"), tr("P&oista rivi"), QKeySequence(),
        &MainWindow::removeInvoiceItems);
    createAction(QStringLiteral("moveUpAction"), tr("Siirrä ylös"),
        QKeySequence(Qt::CTRL | Qt::Key_Up), &MainWindow::moveInvoiceItemUp);
    createAction(QStringLiteral("moveDownAction"), tr("Siirrä alas"),
        QKeySequence(Qt::CTRL | Qt::Key_Down), &MainWindow::moveInvoiceItemDown);
    createAction(QStringLiteral("copyInvoiceItemsAction"), tr("&Kopioi laskurivit"), QKeySequence(),
        &MainWindow::copyInvoiceItems);
    createAction(QStringLiteral("cutInvoiceItemsAction"), tr("&Leikkaa"),
        QKeySequence(Qt::CTRL | Qt::Key_X), &MainWindow::cutInvoiceItems);
    createAction(QStringLiteral("pasteInvoiceItemsAction"), tr("&Liitä laskurivit"),
        QKeySequence(Qt::CTRL | Qt::Key_V), &MainWindow::pasteInvoiceItems);

    m_vatGroup = new QActionGroup(this);
    for (const bool vatIncluded : { true, false }) {
        QAction* vatMode = createAction(
            vatIncluded ? QStringLiteral("vatIncludedAction") : QStringLiteral("vatExcludedAction"),
            vatIncluded ? tr("Ve&rollinen") : tr("Vero&ton"), QKeySequence(),
            [this, vatIncluded] { setVatIncluded(vatIncluded); });
        vatMode->setCheckable(true);
        vatMode->setChecked(vatIncluded);
        m_vatGroup->addAction(vatMode);
    }
    for (const auto& column : rowColumns) {
        const int section = column.column;
        QAction* shown = createAction(QLatin1String(column.name), tr(column.text), QKeySequence());
        shown->setCheckable(true);
        shown->setChecked(true);
        connect(shown, &QAction::toggled, this, [this, section](bool shown) {
            m_invoiceItemTableView->setColumnHidden(section, !shown);
        });
    }

    createAction(QStringLiteral("searchAction"), tr("&Haku"), QKeySequence(Qt::CTRL | Qt::Key_F),
        &MainWindow::search);
    m_quickSearchGroup = new QActionGroup(this);
    auto addQuickSearch = [this](QAction* action) {
        action->setCheckable(true);
        m_quickSearchGroup->addAction(action);
    };
    addQuickSearch(createAction(QStringLiteral("searchResultsAction"), tr("Haku&tulokset"),
        QKeySequence(), &MainWindow::showSearchResults));
    const struct
    {
        const char* text;
        int key;
    } quickSearches[] = {
        { "&Viimeisimmät", Qt::Key_1 },
        { "&Erääntyvät", Qt::Key_2 },
        { "&Avoimet", Qt::Key_3 },
        { "&Tämänpäiväiset", Qt::Key_4 },
        { "Va&littu asiakas", Qt::Key_5 },
        // Any other number lists every invoice.
        { "&Kaikki laskut", 0 },
    };
    for (int n = 0; n < int(std::size(quickSearches)); ++n) {
        const int key = quickSearches[n].key;
        addQuickSearch(createAction(QStringLiteral("quickSearch%1Action").arg(n),
            tr(quickSearches[n].text), key ? QKeySequence(Qt::CTRL | key) : QKeySequence(),
            [this, n] { quickSearch(n); }));
    }

    createAction(QStringLiteral("previousAction"), tr("&Edellinen"), QKeySequence(Qt::Key_PageUp),
        &MainWindow::goToPreviousInvoice);
    createAction(QStringLiteral("nextAction"), tr("&Seuraava"), QKeySequence(Qt::Key_PageDown),
        &MainWindow::goToNextInvoice);
    createAction(QStringLiteral("firstAction"), tr("E&nsimmäinen"),
        QKeySequence(Qt::CTRL | Qt::Key_PageUp), &MainWindow::goToFirstInvoice);
    createAction(QStringLiteral("lastAction"), tr("&Viimeinen"),
        QKeySequence(Qt::CTRL | Qt::Key_PageDown), &MainWindow::goToLastInvoice);
    createAction(QStringLiteral("refreshAction"), tr("&Päivitä tiedot"), QKeySequence(),
        &MainWindow::refresh);
    createAction(QStringLiteral("chooseDatabaseAction"), tr("Valitse &yritys"),
        QKeySequence(Qt::Key_F10), &MainWindow::chooseDatabase);

    createAction(QStringLiteral("settingsAction"), tr("&Yrityksen tiedot..."), QKeySequence(),
        &MainWindow::editSettings);
    createAction(QStringLiteral("customersAction"), tr("&Asiakkaat..."), QKeySequence(),
        &MainWindow::editCustomers);
    createAction(QStringLiteral("productsAction"), tr("&Tuotteet..."), QKeySequence(),
        &MainWindow::editProducts);
    createAction(QStringLiteral("bankAccountsAction"), tr("&Pankkitilit..."), QKeySequence(),
        &MainWindow::editBankAccounts);
    createAction(QStringLiteral("printScriptsAction"), tr("T&ulostuspohjat..."), QKeySequence(),
        &MainWindow::editPrintScripts);
    createAction(QStringLiteral("helpAction"), tr("&Sisältö"), QKeySequence(Qt::Key_F1),
        &MainWindow::showHelp);
    createAction(
        QStringLiteral("aboutAction"), tr("&Tietoja"), QKeySequence(), &MainWindow::showAbout);

    createAction(QStringLiteral("printAction"), tr("&Tulosta"), QKeySequence(Qt::Key_F9),
        [this] { printInvoices(false, PrintInvoice); });
    const struct
    {
        const char* name;
        const char* text;
        QKeySequence shortcut;
        int kind;
        bool several;
    } prints[] = {
        { "printSelectedAction", "&Valittu lasku", QKeySequence(Qt::ALT | Qt::Key_1), PrintInvoice,
            false },
        { "printSeveralAction", "&Useita laskuja", QKeySequence(Qt::ALT | Qt::Key_2), PrintInvoice,
            true },
        { "printReminderAction", "&Maksumuistutus", QKeySequence(Qt::ALT | Qt::Key_3),
            PrintReminder, false },
        { "printRemindersAction", "Useita m&aksumuistutuksia", QKeySequence(), PrintReminder,
            true },
        { "printReceiptAction", "&Kuitti", QKeySequence(Qt::ALT | Qt::Key_4), PrintReceipt, false },
        { "printReceiptsAction", "Useita ku&itteja", QKeySequence(), PrintReceipt, true },
    };
    for (const auto& print : prints) {
        const int kind = print.kind;
        if (print.several)
            createAction(QLatin1String(print.name), tr(print.text), print.shortcut,
                [this, kind] { printSeveralInvoices(kind); });
        else
            createAction(QLatin1String(print.name), tr(print.text), print.shortcut,
                [this, kind] { printInvoices(true, kind); });
    }
    createAction(QStringLiteral("invoiceListAction"), tr("Lasku&luettelo"),
        QKeySequence(Qt::ALT | Qt::Key_6), [this] {
            InvoiceListPrintPreviewDialog::showReport(m_registry, *m_model->lastCriteria(), this);
        });
    createAction(QStringLiteral("paymentJournalAction"), tr("&Suorituspäiväkirja"),
        QKeySequence(Qt::ALT | Qt::Key_7),
        [this] { PaymentPrintPreviewDialog::showReport(m_registry, PaymentCriteria(), this); });
    createAction(QStringLiteral("customerListAction"), tr("&Asiakasluettelo"), QKeySequence(),
        [this] { PrintPreviewDialog::showCustomerList(m_registry, this); });
    createAction(QStringLiteral("productListAction"), tr("T&uoteluettelo"), QKeySequence(),
        [this] { PrintPreviewDialog::showProductList(m_registry, this); });

    // Export, e-mail, payment import, interest, group invoicing and
    // time-entry import come with their dialogs; until then the commands are
    // shown but cannot be used (see updateActions()).
    const struct
    {
        const char* name;
        const char* text;
        QKeySequence shortcut;
    } later[] = {
        { "exportAction", "V&ie", QKeySequence(Qt::CTRL | Qt::Key_E) },
        { "sendAction", "L&ähetä", QKeySequence(Qt::CTRL | Qt::Key_M) },
        { "importPaymentsAction", "&Maksusuoritusten tuonti", QKeySequence(Qt::CTRL | Qt::Key_I) },
        { "interestAction", "&Viivästyskoron laskenta", QKeySequence(Qt::CTRL | Qt::Key_K) },
        { "groupInvoicingAction", "&Ryhmälaskutus", QKeySequence(Qt::CTRL | Qt::Key_R) },
        { "raveloAction", "&Ravelo-aineiston tuonti", QKeySequence() },
    };
    for (const auto& entry : later)
        createAction(QLatin1String(entry.name), tr(entry.text), entry.shortcut);
}

void MainWindow::createMenus()
{
    // nullptr stands for a separator.
    auto add = [this](QWidget* menu, std::initializer_list<const char*> names) {
        for (const char* name : names) {
            QAction* entry = name ? action(name) : new QAction(menu);
            entry->setSeparator(!name);
            menu->addAction(entry);
        }
    };
    add(menuBar()->addMenu(tr("&Tiedosto")),
        { "chooseDatabaseAction", "refreshAction", nullptr, "exportAction", "sendAction",
            "importPaymentsAction", "raveloAction", "interestAction", nullptr, "quitAction" });
    add(menuBar()->addMenu(tr("&Lasku")),
        { "newInvoiceAction", "editModeAction", "saveInvoiceAction", "removeInvoiceAction",
            "copyInvoiceAction", nullptr, "referenceNumberAction", "groupInvoicingAction" });
    QMenu* rows = menuBar()->addMenu(tr("&Rivit"));
    add(rows,
        { "addInvoiceItemAction", "removeInvoiceItemAction", "moveUpAction", "moveDownAction",
            nullptr, "copyInvoiceItemsAction", "cutInvoiceItemsAction", "pasteInvoiceItemsAction",
            nullptr });
    add(rows->addMenu(tr("&Hinnat ja sarakkeet")),
        { "vatIncludedAction", "vatExcludedAction", nullptr, "showDiscountAction",
            "showDiscountedPriceAction", "showVatAction" });

    QMenu* searchMenu = menuBar()->addMenu(tr("&Haku"));
    add(searchMenu, { "searchAction", "searchResultsAction" });
    m_quickSearchMenu = searchMenu->addMenu(tr("&Pikahaut"));
    m_quickSearchMenu->addActions(m_quickSearchGroup->actions().mid(1));
    searchMenu->addSeparator();
    searchMenu->addAction(m_invoiceDock->toggleViewAction());

    add(menuBar()->addMenu(tr("&Siirry")),
        { "previousAction", "nextAction", "firstAction", "lastAction" });
    add(menuBar()->addMenu(tr("T&ulosta")),
        { "printAction", nullptr, "printSelectedAction", "printSeveralAction",
            "printReminderAction", "printRemindersAction", "printReceiptAction",
            "printReceiptsAction", nullptr, "invoiceListAction", "paymentJournalAction",
            "customerListAction", "productListAction" });
    add(menuBar()->addMenu(tr("&Asetukset")),
        { "settingsAction", "customersAction", "productsAction", "bankAccountsAction",
            "printScriptsAction" });
    add(menuBar()->addMenu(tr("&Ohje")), { "helpAction", "aboutAction" });

    QToolBar* toolBar = addToolBar(tr("Työkalurivi"));
    toolBar->setObjectName(QStringLiteral("mainToolBar"));
    toolBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    add(toolBar,
        { "newInvoiceAction", "editModeAction", "saveInvoiceAction", "removeInvoiceAction",
            "copyInvoiceAction", nullptr, "firstAction", "previousAction", "nextAction",
            "lastAction", nullptr, "searchAction", "printAction" });
}

void MainWindow::createForm()
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
    connect(m_customerCombo, &QComboBox::currentIndexChanged, this, &MainWindow::customerChosen);
    connect(m_customerCombo->lineEdit(), &QLineEdit::editingFinished, this,
        &MainWindow::customerTextEdited);

    m_typeCombo = new QComboBox();
    m_typeCombo->setObjectName(QStringLiteral("typeCombo"));
    for (int type = 0; type <= 5; ++type)
        m_typeCombo->addItem(InvoiceTableModel::typeName(type));

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
    connect(m_paymentTermsEdit, &QLineEdit::editingFinished, this, &MainWindow::updateDueDate);

    QWidget* form = new QWidget();
    QGridLayout* grid = new QGridLayout(form);
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

    // Rows.
    m_invoiceItemTableView = newEditTable(QStringLiteral("invoiceItemTable"),
        m_model->invoiceItemTableModel(), new InvoiceItemDelegate(m_registry, this));
    m_invoiceItemTableView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_invoiceItemTableView->setTabKeyNavigation(true);
    m_invoiceItemTableView->verticalHeader()->setDefaultSectionSize(
        m_invoiceItemTableView->fontMetrics().height() + 10);
    QHeaderView* itemHeader = m_invoiceItemTableView->horizontalHeader();
    itemHeader->setSectionResizeMode(InvoiceItemTableModel::TextColumn, QHeaderView::Stretch);
    const int digit = m_invoiceItemTableView->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    m_invoiceItemTableView->setColumnWidth(InvoiceItemTableModel::ProductColumn, digit * 26);
    m_invoiceItemTableView->setColumnWidth(InvoiceItemTableModel::QuantityColumn, digit * 9);
    m_invoiceItemTableView->setColumnWidth(InvoiceItemTableModel::UnitColumn, digit * 8);
    m_invoiceItemTableView->setColumnWidth(InvoiceItemTableModel::PriceColumn, digit * 15);
    m_invoiceItemTableView->setColumnWidth(InvoiceItemTableModel::DiscountColumn, digit * 11);
    m_invoiceItemTableView->setColumnWidth(
        InvoiceItemTableModel::DiscountedPriceColumn, digit * 18);
    m_invoiceItemTableView->setColumnWidth(InvoiceItemTableModel::VatColumn, digit * 8);
    m_invoiceItemTableView->setColumnWidth(InvoiceItemTableModel::TotalColumn, digit * 14);
    for (const char* name :
        { "addInvoiceItemAction", "removeInvoiceItemAction", "moveUpAction", "moveDownAction",
            "copyInvoiceItemsAction", "cutInvoiceItemsAction", "pasteInvoiceItemsAction" })
        m_invoiceItemTableView->addAction(action(name));
    m_invoiceItemTableView->setContextMenuPolicy(Qt::ActionsContextMenu);

    QWidget* rowsBox = new QWidget();
    QVBoxLayout* rowsLayout = new QVBoxLayout(rowsBox);
    rowsLayout->setContentsMargins(0, 0, 0, 0);
    QHBoxLayout* rowButtons = new QHBoxLayout();
    QLabel* rowsTitle = new QLabel(tr("<b>Laskurivit</b>"));
    rowButtons->addWidget(rowsTitle);
    rowButtons->addStretch(1);
    for (const char* name :
        { "addInvoiceItemAction", "removeInvoiceItemAction", "moveUpAction", "moveDownAction" }) {
        QToolButton* button = new QToolButton();
        button->setDefaultAction(action(name));
        button->setFocusPolicy(Qt::NoFocus);
        rowButtons->addWidget(button);
    }
    rowsLayout->addLayout(rowButtons);
    rowsLayout->addWidget(m_invoiceItemTableView, 1);

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
    connect(addPaymentButton, &QPushButton::clicked, this, &MainWindow::addPayment);
    QPushButton* removePaymentButton
        = FormHelper::createButton(tr("Poista suoritus"), QStringLiteral("removePaymentButton"));
    connect(removePaymentButton, &QPushButton::clicked, this, &MainWindow::removePayment);
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
    connect(addAttributeButton, &QPushButton::clicked, this, &MainWindow::addAttribute);
    QPushButton* removeAttributeButton
        = FormHelper::createButton(tr("Poista määre"), QStringLiteral("removeAttributeButton"));
    connect(removeAttributeButton, &QPushButton::clicked, this, &MainWindow::removeAttribute);
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

    QSplitter* splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("invoiceSplitter"));
    splitter->addWidget(rowsBox);
    splitter->addWidget(bottom);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setChildrenCollapsible(false);

    QWidget* central = new QWidget();
    QVBoxLayout* centralLayout = new QVBoxLayout(central);
    centralLayout->addWidget(form);
    centralLayout->addWidget(splitter, 1);
    setCentralWidget(central);

    // Keyboard order: the form top to bottom, then the rows, the payments
    // and the additional information.
    QWidget* order[] = { m_customerCombo, m_numberEdit, m_typeCombo, m_dateEdit, m_dueDateEdit,
        m_paymentTermsEdit, m_interestEdit, m_deliveryEdit, m_deliveryDateEdit, m_buyerRefEdit,
        m_sellerRefEdit, m_invoiceItemTableView, m_paymentTableView, addPaymentButton,
        removePaymentButton, m_noticeText1Edit, m_noticeText2Edit, m_attributeTable,
        addAttributeButton, removeAttributeButton };
    for (size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void MainWindow::createInvoiceList()
{
    m_invoiceTableView = new QTableView();
    m_invoiceTableView->setObjectName(QStringLiteral("invoiceTable"));
    m_invoiceTableView->setModel(m_model->invoiceProxyModel());
    m_invoiceTableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_invoiceTableView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_invoiceTableView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_invoiceTableView->setSortingEnabled(true);
    m_invoiceTableView->sortByColumn(InvoiceTableModel::NumberColumn, Qt::AscendingOrder);
    m_invoiceTableView->verticalHeader()->hide();
    m_invoiceTableView->horizontalHeader()->setSectionResizeMode(
        InvoiceTableModel::CustomerColumn, QHeaderView::Stretch);
    const int digit = m_invoiceTableView->fontMetrics().horizontalAdvance(QLatin1Char('0'));
    m_invoiceTableView->setColumnWidth(InvoiceTableModel::NumberColumn, digit * 8);
    m_invoiceTableView->setColumnWidth(InvoiceTableModel::DateColumn, digit * 12);
    m_invoiceTableView->setColumnWidth(InvoiceTableModel::DueDateColumn, digit * 12);
    m_invoiceTableView->setColumnWidth(InvoiceTableModel::TotalAmountColumn, digit * 12);
    m_invoiceTableView->setColumnWidth(InvoiceTableModel::BalanceColumn, digit * 12);
    m_invoiceTableView->setColumnWidth(InvoiceTableModel::TypeColumn, digit * 14);
    // Never narrower than the header with its sort mark.
    QHeaderView* listHeader = m_invoiceTableView->horizontalHeader();
    for (int column = 0; column < InvoiceTableModel::ColumnCount; ++column)
        m_invoiceTableView->setColumnWidth(column,
            qMax(m_invoiceTableView->columnWidth(column),
                listHeader->sectionSizeHint(column) + digit * 2));
    // Enter and double click open the invoice.
    connect(m_invoiceTableView, &QAbstractItemView::activated, this, &MainWindow::invoiceActivated);

    m_invoiceDock = new QDockWidget(tr("Laskut"), this);
    m_invoiceDock->setObjectName(QStringLiteral("invoiceListDock"));
    m_invoiceDock->setWidget(m_invoiceTableView);
    m_invoiceDock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable
        | QDockWidget::DockWidgetFloatable);
    addDockWidget(Qt::BottomDockWidgetArea, m_invoiceDock);
}

// --- Opening a database ------------------------------------------------------

void MainWindow::openDatabaseLater(int number)
{
    m_numberToOpen = number;
    QTimer::singleShot(0, this, &MainWindow::openDatabaseSlot);
}

void MainWindow::openDatabaseSlot()
{
    openDatabase(m_numberToOpen);
}

bool MainWindow::openDatabase(int number)
{
    QSettings* appSettings = m_registry->appSettings();
    appSettings->beginGroup(QStringLiteral("databases"));
    if (number <= 0)
        number = appSettings->value(QStringLiteral("lastUsed"), -1).toInt();

    int index = 0;
    const int count = appSettings->beginReadArray(QStringLiteral("settings"));
    if (number >= 1) {
        for (int i = 0; i < count; ++i) {
            appSettings->setArrayIndex(i);
            if (appSettings->value(QStringLiteral("number"), 0).toInt() == number) {
                index = i;
                break;
            }
        }
    }
    appSettings->endArray();
    appSettings->endGroup();

    if (count == 0) {
        number = addDefaultDatabase();
        index = 0;
    }

    appSettings->beginGroup(QStringLiteral("databases"));
    appSettings->beginReadArray(QStringLiteral("settings"));
    appSettings->setArrayIndex(index);
    const QString databaseName = appSettings->value(QStringLiteral("databaseName")).toString();
    m_databaseTitle = appSettings->value(QStringLiteral("name")).toString();
    if (m_databaseTitle.isEmpty()) {
        const QString fileName = appSettings->value(QStringLiteral("filename")).toString();
        m_databaseTitle
            = fileName.isEmpty() ? databaseName : QFileInfo(fileName).completeBaseName();
    }
    appSettings->endArray();
    appSettings->endGroup();

    m_hasInvoice = false;
    m_registry->setDatabaseNumber(number);
    int status = m_model->openDatabase(index, false);
    if (status == -2) {
        const QString question
            = tr("Tietokantaa \"%1\" ei löytynyt. Haluatko luoda tietokannan?").arg(databaseName);
        if (!askQuestion(question)) {
            m_model->closeDatabase();
            loadForm();
            updateWindowTitle();
            return false;
        }
        status = m_model->openDatabase(index, true);
    }

    bool ok = false;
    if (status != 0) {
        showModelError(tr("Tietokantayhteyden avaaminen epäonnistui. %1"));
        m_model->closeDatabase();
    } else if (!m_model->fetchData()) {
        showFetchError();
        m_model->closeDatabase();
    } else {
        m_invoiceTableView->scrollToBottom();
        applyVatMode();
        updateQuickSearchChecks();
        const int last = m_model->invoiceCount() - 1;
        if (last < 0)
            doCreateInvoice();
        else
            loadInvoice(last);
        appSettings->beginGroup(QStringLiteral("databases"));
        appSettings->setValue(QStringLiteral("lastUsed"), number);
        appSettings->endGroup();
        ok = true;
    }

    if (!ok)
        loadForm();
    updateWindowTitle();
    updateActions();
    return ok;
}

int MainWindow::addDefaultDatabase()
{
    QSettings* appSettings = m_registry->appSettings();
    const QString fileName = QFileInfo(appSettings->fileName())
                                 .absoluteDir()
                                 .absoluteFilePath(tr("laskutus") + QStringLiteral(".sqlite"));
    appSettings->beginGroup(QStringLiteral("databases"));
    appSettings->beginWriteArray(QStringLiteral("settings"), 1);
    appSettings->setArrayIndex(0);
    appSettings->setValue(QStringLiteral("number"), 1);
    appSettings->setValue(QStringLiteral("name"), QString());
    appSettings->setValue(QStringLiteral("filename"), fileName);
    appSettings->endArray();
    appSettings->endGroup();
    return 1;
}

// --- The current invoice -----------------------------------------------------

bool MainWindow::isEditMode() const
{
    return m_hasInvoice && m_model->isEditable();
}

int MainWindow::lastInvoiceId() const
{
    return m_model->lastInvoiceId();
}

QDate MainWindow::today() const
{
    return m_model->today();
}

bool MainWindow::isPristineInvoice() const
{
    // A new invoice that the user has not given a customer, a row or a
    // payment is not worth a refusal: leaving it simply drops it.
    const Invoice* invoice = m_model->invoice();
    return invoice->id < 0 && invoice->customerId < 0
        && m_model->invoiceItemTableModel()->rowCount() == 0
        && m_model->paymentTableModel()->rowCount() == 0;
}

bool MainWindow::saveInvoice()
{
    if (!m_registry->isConnected() || !m_hasInvoice)
        return true;
    static_cast<InvoiceItemDelegate*>(m_invoiceItemTableView->itemDelegate())->commitOpenEditor();
    static_cast<PaymentDelegate*>(m_paymentTableView->itemDelegate())->commitOpenEditor();
    if (isPristineInvoice() && m_customerCombo->currentText().trimmed().isEmpty())
        return true;

    Invoice* invoice = m_model->invoice();
    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    PaymentTableModel* payments = m_model->paymentTableModel();
    const bool editMode = m_model->isEditable();
    if (editMode) {
        // A name typed but not yet confirmed counts as chosen.
        customerTextEdited();
        if (!checkNumber())
            return false;
    } else if (!payments->isChanged()) {
        return true;
    }

    if (invoice->customerId < 0) {
        showWarningMessage(tr("Valitse laskun saaja ennen tallentamista."));
        m_customerCombo->setFocus();
        return false;
    }
    // The total is kept in 32 bits, so this limit is never reached.
    const int total = static_cast<int>(items->totalAmountVatIncluded());
    if (static_cast<qint64>(total) > Constants::maxTotalAmount) {
        showWarningMessage(tr("Laskun loppusumma ei saa ylittää 999 999,99."));
        return false;
    }
    const QString deliveryDateText = m_deliveryDateEdit->text().trimmed();
    const DateFormat dateFormat(today());
    const QDate deliveryDate
        = deliveryDateText.isEmpty() ? QDate() : dateFormat.parse(deliveryDateText);
    if (!deliveryDateText.isEmpty() && !deliveryDate.isValid()) {
        showWarningMessage(tr("Toimituspäivämäärä on virheellinen."));
        m_deliveryDateEdit->setFocus();
        return false;
    }
    items->removeEmptyRows();
    const int emptyRow = items->emptyProduct();
    if (emptyRow >= 0) {
        showWarningMessage(
            tr("Valitse tuote riville %1 ennen laskun tallentamista.").arg(emptyRow + 1));
        editCell(
            m_invoiceItemTableView, items->index(emptyRow, InvoiceItemTableModel::ProductColumn));
        return false;
    }
    const int emptyDate = payments->emptyDate();
    if (emptyDate >= 0) {
        showWarningMessage(tr("Syötä maksusuorituksen päivämäärä ennen laskun tallentamista."));
        editCell(m_paymentTableView, payments->index(emptyDate, PaymentTableModel::DateColumn));
        return false;
    }

    qCDebug(logUi).noquote() << QStringLiteral("Tallennetaan lasku id=%1").arg(invoice->id);
    if (editMode)
        applyForm();
    if (!m_model->saveInvoice()) {
        showModelError(tr("Laskun tallentaminen epäonnistui. %1"));
        return false;
    }
    m_model->invoiceTableModel()->setType(m_model->invoiceIndex(), invoice->type);
    loadForm();
    return true;
}

bool MainWindow::checkNumber()
{
    Invoice* invoice = m_model->invoice();
    bool ok = false;
    const int number = m_numberEdit->text().trimmed().toInt(&ok);
    if (!ok || number <= 0) {
        m_numberEdit->setText(QString::number(invoice->number));
        return true;
    }
    if (number == invoice->number)
        return true;
    switch (m_model->isValidNumber(number)) {
    case -1:
        showFetchError();
        return false;
    case 0:
        showWarningMessage(tr("Laskun numero %1 on jo käytössä.").arg(number));
        m_numberEdit->setText(QString::number(invoice->number));
        m_numberEdit->setFocus();
        m_numberEdit->selectAll();
        return false;
    default:
        break;
    }
    invoice->number = number;
    m_model->updateReferenceNumber();
    m_model->invoiceTableModel()->updateInvoice(m_model->invoiceIndex(), *invoice);
    updateReferenceField();
    return true;
}

void MainWindow::applyForm()
{
    Invoice* invoice = m_model->invoice();
    const DateFormat dateFormat(today());
    invoice->type = qMax(0, m_typeCombo->currentIndex());
    const QDate date = dateFormat.parse(m_dateEdit->text().trimmed());
    if (date.isValid())
        invoice->date = date;
    invoice->paymentTerms = m_paymentTermsEdit->text().trimmed();
    invoice->delivery = m_deliveryEdit->text().trimmed();
    invoice->buyerRef = m_buyerRefEdit->text().trimmed();
    invoice->sellerRef = m_sellerRefEdit->text().trimmed();
    const QString deliveryDate = m_deliveryDateEdit->text().trimmed();
    invoice->deliveryDate = deliveryDate.isEmpty() ? QDate() : dateFormat.parse(deliveryDate);

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
    const QDate dueDate = dateFormat.parse(m_dueDateEdit->text().trimmed());
    if (dueDate.isValid())
        invoice->dueDate = dueDate;

    invoice->setPropertyIfNotEmpty(QStringLiteral("t1"), m_noticeText1Edit->text());
    invoice->setPropertyIfNotEmpty(QStringLiteral("t2"), m_noticeText2Edit->text());
    invoice->removePropertiesWithPrefix(attributePrefix);
    for (int row = 0; row < m_attributeTable->rowCount(); ++row) {
        const QTableWidgetItem* name = m_attributeTable->item(row, 0);
        const QTableWidgetItem* value = m_attributeTable->item(row, 1);
        const QString key = name ? name->text().trimmed() : QString();
        if (!key.isEmpty())
            invoice->setProperty(attributePrefix + key, value ? value->text() : QString());
    }
}

void MainWindow::clearForm()
{
    const bool loading = m_loading;
    m_loading = true;
    m_customerCombo->setCurrentIndex(-1);
    m_customerCombo->setEditText(QString());
    m_typeCombo->setCurrentIndex(0);
    for (QLineEdit* edit : { m_numberEdit, m_dateEdit, m_dueDateEdit, m_paymentTermsEdit,
             m_deliveryEdit, m_deliveryDateEdit, m_buyerRefEdit, m_sellerRefEdit, m_interestEdit,
             m_referenceNumberEdit, m_noticeText1Edit, m_noticeText2Edit })
        edit->clear();
    m_attributeTable->setRowCount(0);
    m_loading = loading;
}

void MainWindow::loadForm()
{
    if (!m_registry->isConnected() || !m_hasInvoice) {
        m_hasInvoice = false;
        clearForm();
    } else {
        const bool loading = m_loading;
        m_loading = true;
        const Invoice* invoice = m_model->invoice();
        const DateFormat dateFormat(today());
        selectCustomer(invoice->customerId);
        m_typeCombo->setCurrentIndex(invoice->type >= 0 && invoice->type <= 5 ? invoice->type : 0);
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
        m_noticeText1Edit->setText(invoice->property(QStringLiteral("t1")).toString());
        m_noticeText2Edit->setText(invoice->property(QStringLiteral("t2")).toString());
        updateReferenceField();
        loadAttributes();
        m_loading = loading;
    }
    updateFieldsEditable();
    updateAmounts();
    updatePosition();
    updateActions();
}

void MainWindow::loadAttributes()
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

void MainWindow::updateReferenceField()
{
    const QString reference = m_model->invoice()->referenceNumber;
    m_referenceNumberEdit->setText(
        m_hasInvoice ? Invoice::formatReferenceNumber(reference) : QString());
}

void MainWindow::updateFieldsEditable()
{
    const bool editable = isEditMode();
    for (QLineEdit* edit : { m_numberEdit, m_dateEdit, m_dueDateEdit, m_paymentTermsEdit,
             m_deliveryEdit, m_deliveryDateEdit, m_buyerRefEdit, m_sellerRefEdit, m_interestEdit,
             m_noticeText1Edit, m_noticeText2Edit })
        edit->setReadOnly(!editable);
    m_customerCombo->setEnabled(editable);
    m_typeCombo->setEnabled(editable);
    m_attributeTable->setEditTriggers(editable
            ? QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
                | QAbstractItemView::AnyKeyPressed | QAbstractItemView::SelectedClicked
            : QAbstractItemView::NoEditTriggers);
    m_attributeButtons->setEnabled(editable);
    // Payments can be recorded for any shown invoice, also outside edit
    // mode: saving then writes only what changed.
    m_model->paymentTableModel()->setEditable(m_hasInvoice);
    m_paymentButtons->setEnabled(m_hasInvoice);
}

void MainWindow::updateAmounts()
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

void MainWindow::updateDueDate()
{
    if (m_loading || !isEditMode())
        return;
    const DateFormat dateFormat(today());
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

void MainWindow::dateEdited(QLineEdit* edit)
{
    if (m_loading || edit->isReadOnly())
        return;
    const DateFormat dateFormat(today());
    const QDate date = dateFormat.parse(edit->text().trimmed());
    // The short forms ("15", "15.3") are written out; anything unreadable
    // is left for the save checks to point out.
    if (date.isValid())
        edit->setText(dateFormat.format(date));
    if (edit == m_dateEdit)
        updateDueDate();
}

// --- Customers ---------------------------------------------------------------

void MainWindow::updateCustomers()
{
    const bool loading = m_loading;
    m_loading = true;
    struct Entry
    {
        QString name;
        int id;
    };
    QList<Entry> entries;
    const int currentId = m_hasInvoice ? m_model->invoice()->customerId : -1;
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
    m_invoiceTableView->viewport()->update();
}

void MainWindow::selectCustomer(int customerId)
{
    const bool loading = m_loading;
    m_loading = true;
    const int row = customerId < 0 ? -1 : m_customerCombo->findData(customerId);
    m_customerCombo->setCurrentIndex(row);
    if (row < 0)
        m_customerCombo->setEditText(QString());
    m_loading = loading;
}

void MainWindow::customerTextEdited()
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

void MainWindow::customerChosen()
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
    m_noticeText1Edit->setText(invoice->property(QStringLiteral("t1")).toString());
    m_noticeText2Edit->setText(invoice->property(QStringLiteral("t2")).toString());
    updateActions();
}

// --- Commands ----------------------------------------------------------------

bool MainWindow::doCreateInvoice()
{
    if (m_model->createInvoice() < 0) {
        showModelError(tr("Uuden laskun luominen epäonnistui. %1"));
        loadForm();
        return false;
    }
    m_hasInvoice = true;
    loadForm();
    return true;
}

void MainWindow::newInvoice()
{
    if (!m_registry->isConnected() || !saveInvoice())
        return;
    if (doCreateInvoice())
        m_customerCombo->setFocus();
}

bool MainWindow::toggleEditMode(bool on)
{
    QAction* editMode = action("editModeAction");
    if (!m_hasInvoice) {
        editMode->setChecked(false);
        return false;
    }
    if (on == isEditMode()) {
        editMode->setChecked(on);
        return true;
    }
    if (on) {
        const int id = m_model->invoice()->id;
        if (id >= 0)
            m_model->setLastInvoiceId(id);
        m_model->setEditable(true);
    } else {
        if (!saveInvoice()) {
            editMode->setChecked(true);
            return false;
        }
        m_model->setLastInvoiceId(-1);
        m_model->setEditable(false);
    }
    updateFieldsEditable();
    updateActions();
    return true;
}

bool MainWindow::loadInvoice(int index)
{
    const bool ok = m_model->goToInvoice(index);
    if (!ok)
        showFetchError();
    // A failed load may have read part of the invoice; show what there is.
    m_hasInvoice = m_model->invoiceIndex() >= 0;
    loadForm();
    return ok;
}

bool MainWindow::goToInvoice(int index)
{
    if (!saveInvoice())
        return false;
    return loadInvoice(index);
}

int MainWindow::currentProxyRow() const
{
    const int index = m_model->invoiceIndex();
    if (!m_hasInvoice || index < 0)
        return -1;
    return m_model->invoiceProxyModel()
        ->mapFromSource(m_model->invoiceTableModel()->index(index, 0))
        .row();
}

void MainWindow::goToProxyRow(int row)
{
    QSortFilterProxyModel* proxy = m_model->invoiceProxyModel();
    if (row < 0 || row >= proxy->rowCount())
        return;
    goToInvoice(proxy->mapToSource(proxy->index(row, 0)).row());
}

void MainWindow::invoiceActivated(const QModelIndex& index)
{
    if (!index.isValid())
        return;
    if (index.row() == currentProxyRow())
        return;
    goToProxyRow(index.row());
}

void MainWindow::goToPreviousInvoice()
{
    const int row = currentProxyRow();
    goToProxyRow(row < 0 ? m_model->invoiceProxyModel()->rowCount() - 1 : row - 1);
}

void MainWindow::goToNextInvoice()
{
    const int row = currentProxyRow();
    if (row >= 0)
        goToProxyRow(row + 1);
}

void MainWindow::goToFirstInvoice()
{
    goToProxyRow(0);
}

void MainWindow::goToLastInvoice()
{
    goToProxyRow(m_model->invoiceProxyModel()->rowCount() - 1);
}

void MainWindow::removeInvoice()
{
    if (!m_registry->isConnected() || !m_hasInvoice)
        return;
    const Invoice* invoice = m_model->invoice();
    if (!askQuestion(tr("Haluatko varmasti poistaa laskun %1?").arg(invoice->number)))
        return;
    // The model forgets the index when the invoice goes.
    const int oldRow = currentProxyRow();
    if (!m_model->removeInvoice()) {
        showModelError(tr("Laskun poistaminen epäonnistui. %1"));
        return;
    }
    m_hasInvoice = false;
    const int count = m_model->invoiceProxyModel()->rowCount();
    if (count == 0) {
        loadForm();
        return;
    }
    const int row = oldRow >= 0 ? qMin(qMax(0, oldRow - 1), count - 1) : count - 1;
    QSortFilterProxyModel* proxy = m_model->invoiceProxyModel();
    loadInvoice(proxy->mapToSource(proxy->index(row, 0)).row());
}

void MainWindow::copyInvoice()
{
    if (!m_registry->isConnected() || !m_hasInvoice || !saveInvoice())
        return;
    Invoice source;
    m_model->invoice()->copy(&source);
    const InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    QList<InvoiceItem> rows;
    for (int row = 0; row < items->rowCount(); ++row) {
        InvoiceItem item;
        if (items->toInvoiceItem(row, &item))
            rows.append(item);
    }
    if (!doCreateInvoice())
        return;

    Invoice* target = m_model->invoice();
    target->customerId = source.customerId;
    // The customer's own reference number, as when the customer is chosen.
    m_model->updateReferenceNumber();
    target->paymentTerms = source.paymentTerms;
    if (!target->paymentTerms.isEmpty())
        m_model->calculateDueDate();
    target->delivery = source.delivery;
    target->buyerRef = source.buyerRef;
    target->sellerRef = source.sellerRef;
    target->interestOnArrears = source.interestOnArrears;
    for (const QString& key : { QStringLiteral("t1"), QStringLiteral("t2") }) {
        const QString text = source.property(key).toString();
        if (!text.isEmpty())
            target->setProperty(key, text);
    }
    target->setProperties(source.propertiesWithPrefix(attributePrefix));
    InvoiceItemTableModel* targetItems = m_model->invoiceItemTableModel();
    for (const InvoiceItem& item : rows)
        targetItems->fromInvoiceItem(&item);
    loadForm();
}

QList<int> MainWindow::selectedInvoiceItemRows() const
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

void MainWindow::addInvoiceItem()
{
    if (!isEditMode())
        return;
    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    const int row = items->rowCount();
    items->insertRow(row);
    editCell(m_invoiceItemTableView, items->index(row, InvoiceItemTableModel::ProductColumn));
}

void MainWindow::removeInvoiceItems()
{
    if (!isEditMode())
        return;
    const QList<int> rows = selectedInvoiceItemRows();
    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    for (auto it = rows.crbegin(); it != rows.crend(); ++it)
        items->removeRow(*it);
}

void MainWindow::moveInvoiceItemUp()
{
    moveInvoiceItem(-1);
}

void MainWindow::moveInvoiceItemDown()
{
    moveInvoiceItem(1);
}

void MainWindow::moveInvoiceItem(int step)
{
    const QModelIndex current = m_invoiceItemTableView->currentIndex();
    InvoiceItemTableModel* items = m_model->invoiceItemTableModel();
    const int row = current.row() + step;
    if (!isEditMode() || !current.isValid() || row < 0 || row >= items->rowCount())
        return;
    if (items->moveRow(current.row(), row))
        m_invoiceItemTableView->setCurrentIndex(items->index(row, current.column()));
}

void MainWindow::copyInvoiceItems()
{
    if (!m_hasInvoice)
        return;
    InvoiceItemClipboard(m_model->invoiceItemTableModel())
        .copyRowsToClipboard(selectedInvoiceItemRows());
}

void MainWindow::cutInvoiceItems()
{
    if (!isEditMode())
        return;
    InvoiceItemClipboard(m_model->invoiceItemTableModel())
        .cutRowsToClipboard(selectedInvoiceItemRows());
}

void MainWindow::pasteInvoiceItems()
{
    if (!isEditMode())
        return;
    InvoiceItemClipboard(m_model->invoiceItemTableModel()).pasteRowsFromClipboard();
}

void MainWindow::addPayment()
{
    if (!m_hasInvoice)
        return;
    Payment payment;
    const Settings* settings = m_registry->settings();
    bool ok = false;
    const int accountId = settings ? settings->property(defaultBankAccountKey).toInt(&ok) : -1;
    bool found = false;
    if (ok)
        m_registry->bankAccountById(accountId, found);
    payment.bankAccountId = found ? accountId : -1;
    // What is still open is the likeliest amount; the date the user types.
    const qint64 open = m_model->invoiceItemTableModel()->totalAmountVatIncluded()
        - m_model->paymentTableModel()->totalAmount();
    payment.amount = open > 0 ? static_cast<int>(open) : 0;
    PaymentTableModel* payments = m_model->paymentTableModel();
    const int row = payments->addPayment(payment);
    editCell(m_paymentTableView, payments->index(row, PaymentTableModel::DateColumn));
    updateActions();
}

void MainWindow::removePayment()
{
    const QModelIndex current = m_paymentTableView->currentIndex();
    if (!m_hasInvoice || !current.isValid())
        return;
    m_model->paymentTableModel()->removeRow(current.row());
    updateActions();
}

void MainWindow::addAttribute()
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

void MainWindow::removeAttribute()
{
    if (!isEditMode() || m_attributeTable->currentRow() < 0)
        return;
    m_attributeTable->removeRow(m_attributeTable->currentRow());
}

void MainWindow::search()
{
    if (!m_registry->isConnected())
        return;
    SearchDialog dialog(m_registry, m_model->criteria(), this);
    if (execDialog(&dialog) != QDialog::Accepted)
        return;
    showSearchResults();
}

void MainWindow::showSearchResults()
{
    if (m_registry->isConnected())
        showFound(m_model->search());
}

void MainWindow::quickSearch(int n)
{
    if (m_registry->isConnected())
        showFound(m_model->quickSearch(n));
}

void MainWindow::showFound(bool ok)
{
    if (!ok)
        showFetchError();
    updateQuickSearchChecks();
    updatePosition();
    updateActions();
}

void MainWindow::refresh()
{
    if (!m_registry->isConnected() || !saveInvoice())
        return;
    if (!m_model->fetchData()) {
        showFetchError();
    } else if (m_hasInvoice && m_model->invoiceIndex() >= 0) {
        // Somebody else may have changed it in a shared database.
        loadInvoice(m_model->invoiceIndex());
    }
    applyVatMode();
    loadForm();
}

void MainWindow::showHelp()
{
    QUrl url(helpAddress);
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("v"), QStringLiteral(VEKLARI_VERSION));
    url.setQuery(query);
    if (!openUrl(url))
        showCriticalMessage(
            tr("Web-sivun avaaminen epäonnistui. Katso ohjeet osoitteesta ") + helpAddress);
}

void MainWindow::chooseDatabase()
{
    DatabaseListDialog dialog(m_registry, this);
    if (execDialog(&dialog) != QDialog::Accepted || dialog.selectedNumber() < 1)
        return;
    if (!saveInvoice())
        return;
    openDatabase(dialog.selectedNumber());
}

void MainWindow::editReferenceNumber()
{
    if (!m_registry->isConnected() || !m_hasInvoice)
        return;
    if (isEditMode())
        customerTextEdited();
    Invoice* invoice = m_model->invoice();
    if (invoice->customerId < 0) {
        showWarningMessage(tr("Valitse ensin laskun saaja."));
        return;
    }
    if (isEditMode()) {
        // The dialog starts from what the form shows.
        invoice->setPropertyIfNotEmpty(QStringLiteral("t1"), m_noticeText1Edit->text());
        invoice->setPropertyIfNotEmpty(QStringLiteral("t2"), m_noticeText2Edit->text());
    }
    ReferenceNumberDialog dialog(m_registry, m_model, this);
    if (execDialog(&dialog) != QDialog::Accepted)
        return;
    if (dialog.saveAsCustomerReference() && !m_model->saveReferenceNumber())
        showModelError(tr("Viitenumeron tallentaminen epäonnistui. %1"));
    const bool loading = m_loading;
    m_loading = true;
    updateReferenceField();
    m_noticeText1Edit->setText(invoice->property(QStringLiteral("t1")).toString());
    m_noticeText2Edit->setText(invoice->property(QStringLiteral("t2")).toString());
    m_loading = loading;
}

void MainWindow::editSettings()
{
    if (!m_registry->isConnected())
        return;
    SettingsDialog dialog(m_registry, this);
    if (execDialog(&dialog) != QDialog::Accepted)
        return;
    dialog.settings()->copy(m_registry->settings());
    saveSettings();
    applyVatMode();
    updateAmounts();
}

void MainWindow::editCustomers()
{
    if (!m_registry->isConnected())
        return;
    CustomerDialog dialog(m_registry, this);
    if (m_hasInvoice && m_model->invoice()->customerId >= 0)
        dialog.setCurrentCustomerId(m_model->invoice()->customerId);
    execDialog(&dialog);
    updateCustomers();
}

void MainWindow::editProducts()
{
    if (!m_registry->isConnected())
        return;
    ProductDialog dialog(m_registry, this);
    execDialog(&dialog);
}

void MainWindow::editBankAccounts()
{
    if (!m_registry->isConnected())
        return;
    BankAccountDialog dialog(m_registry, this);
    execDialog(&dialog);
    m_paymentTableView->viewport()->update();
}

void MainWindow::editPrintScripts()
{
    if (!m_registry->isConnected())
        return;
    ScriptEditorDialog dialog(m_registry, this);
    if (m_hasInvoice && m_model->invoice()->id >= 0) {
        InvoiceCriteria criteria;
        criteria.id = m_model->invoice()->id;
        dialog.setInvoiceCriteria(criteria);
    }
    execDialog(&dialog);
}

void MainWindow::showAbout()
{
    AboutDialog dialog(this);
    execDialog(&dialog);
}

bool MainWindow::printInvoices(bool preview, int kind)
{
    // What is printed is what is stored.
    if (!m_hasInvoice || !saveInvoice() || m_model->invoice()->id < 0)
        return false;
    InvoiceCriteria criteria;
    criteria.id = m_model->invoice()->id;
    return InvoicePrintPreviewDialog::printInvoices(m_registry, criteria, kind, preview, this);
}

bool MainWindow::printSeveralInvoices(int kind)
{
    if (m_hasInvoice && !saveInvoice())
        return false;
    const int number = m_hasInvoice ? m_model->invoice()->number : 1;
    const QString title = kind == PrintReminder ? tr("Useita maksumuistutuksia")
        : kind == PrintReceipt                  ? tr("Useita kuitteja")
                                                : tr("Useita laskuja");
    InvoiceRangeDialog dialog(title, number, number, this);
    if (execDialog(&dialog) != QDialog::Accepted)
        return false;
    InvoiceCriteria criteria;
    criteria.numberFrom = dialog.firstNumber();
    criteria.numberTo = dialog.lastNumber();
    return InvoicePrintPreviewDialog::printInvoices(m_registry, criteria, kind, true, this);
}

void MainWindow::setVatIncluded(bool vatIncluded)
{
    showVatMode(vatIncluded);
    Settings* settings = m_registry->settings();
    if (!m_registry->isConnected() || !settings
        || settings->property(vatIncludedKey, true).toBool() == vatIncluded)
        return;
    settings->setProperty(vatIncludedKey, vatIncluded);
    saveSettings();
}

void MainWindow::applyVatMode()
{
    const Settings* settings = m_registry->settings();
    showVatMode(settings ? settings->property(vatIncludedKey, true).toBool() : true);
}

void MainWindow::showVatMode(bool vatIncluded)
{
    m_model->invoiceItemTableModel()->setVatIncluded(vatIncluded);
    action(vatIncluded ? "vatIncludedAction" : "vatExcludedAction")->setChecked(true);
}

void MainWindow::saveSettings()
{
    if (!m_model->saveSettings())
        showModelError(tr("Asetusten tallentaminen epäonnistui. %1"));
}

void MainWindow::tooLargeAmountEntered()
{
    // The model that refused the value tells the limit.
    PaymentTableModel* payments = m_model->paymentTableModel();
    showWarningMessage(sender() == payments ? payments->lastError()
                                            : m_model->invoiceItemTableModel()->lastError());
}

// --- Window state ------------------------------------------------------------

void MainWindow::updateWindowTitle()
{
    if (m_registry->isConnected() && !m_databaseTitle.isEmpty())
        setWindowTitle(QStringLiteral("%1 - %2").arg(m_databaseTitle, applicationTitle));
    else
        setWindowTitle(applicationTitle);
}

void MainWindow::updatePosition()
{
    const int count = m_model->invoiceCount();
    const int row = currentProxyRow();
    if (!m_registry->isConnected())
        m_positionLabel->setText(tr("Ei avointa tietokantaa"));
    else if (!m_hasInvoice)
        m_positionLabel->setText(tr("Laskuja %1 kpl").arg(count));
    else if (m_model->invoice()->id < 0)
        m_positionLabel->setText(tr("Uusi lasku"));
    else if (row < 0)
        m_positionLabel->setText(tr("Lasku %1 / %2").arg(QStringLiteral("–")).arg(count));
    else
        m_positionLabel->setText(tr("Lasku %1 / %2").arg(row + 1).arg(count));

    QItemSelectionModel* selection = m_invoiceTableView->selectionModel();
    if (row < 0) {
        selection->clearSelection();
        return;
    }
    const QModelIndex index = m_model->invoiceProxyModel()->index(row, 0);
    selection->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_invoiceTableView->scrollTo(index);
}

void MainWindow::updateQuickSearchChecks()
{
    // The results of the search dialog come first, then quick searches 0 to 5.
    const int n = m_model->currentQuickSearch();
    m_quickSearchGroup->actions().at(n >= 0 ? 1 + qMin(n, 5) : 0)->setChecked(true);
}

void MainWindow::updateActions()
{
    const bool connected = m_registry->isConnected();
    const bool shown = connected && m_hasInvoice;
    const bool editable = shown && m_model->isEditable();
    const int count = connected ? m_model->invoiceProxyModel()->rowCount() : 0;
    const int row = currentProxyRow();
    const bool hasRows = shown && m_model->invoiceItemTableModel()->rowCount() > 0;
    const QModelIndex currentRow = m_invoiceItemTableView->currentIndex();
    const int itemCount = m_model->invoiceItemTableModel()->rowCount();

    auto enable = [this](const char* name, bool on) { action(name)->setEnabled(on); };
    enable("newInvoiceAction", connected);
    enable("saveInvoiceAction", shown);
    enable("editModeAction", shown);
    action("editModeAction")->setChecked(editable);
    enable("removeInvoiceAction", shown);
    enable("copyInvoiceAction", shown);
    enable("referenceNumberAction", shown);
    enable("addInvoiceItemAction", editable);
    enable("removeInvoiceItemAction", editable && hasRows);
    enable("moveUpAction", editable && currentRow.isValid() && currentRow.row() > 0);
    enable("moveDownAction", editable && currentRow.isValid() && currentRow.row() + 1 < itemCount);
    enable("copyInvoiceItemsAction", hasRows);
    enable("cutInvoiceItemsAction", editable && hasRows);
    enable("pasteInvoiceItemsAction", editable);
    enable("vatIncludedAction", connected);
    enable("vatExcludedAction", connected);
    enable("searchAction", connected);
    for (QAction* search : m_quickSearchGroup->actions())
        search->setEnabled(connected);
    enable("previousAction", count > 0 && row != 0);
    enable("nextAction", row >= 0 && row + 1 < count);
    enable("firstAction", count > 0 && row != 0);
    enable("lastAction", count > 0 && row != count - 1);
    enable("refreshAction", connected);
    for (const char* name : { "settingsAction", "customersAction", "productsAction",
             "bankAccountsAction", "printScriptsAction" })
        enable(name, connected);

    for (const char* name :
        { "printAction", "printSelectedAction", "printReminderAction", "printReceiptAction" })
        enable(name, shown);
    for (const char* name :
        { "printSeveralAction", "printRemindersAction", "printReceiptsAction", "invoiceListAction",
            "paymentJournalAction", "customerListAction", "productListAction" })
        enable(name, connected);

    // Not available yet: export, e-mail, payment import, interest on
    // arrears, group invoicing and the time-entry import.
    for (const char* name : { "exportAction", "sendAction", "importPaymentsAction",
             "interestAction", "groupInvoicingAction", "raveloAction" })
        enable(name, false);
}

void MainWindow::updateColumnActions()
{
    for (const auto& column : rowColumns) {
        QAction* columnAction = action(column.name);
        const QSignalBlocker blocker(columnAction);
        columnAction->setChecked(!m_invoiceItemTableView->isColumnHidden(column.column));
    }
}

QMap<QString, QTableView*> MainWindow::layoutTables() const
{
    return { { QStringLiteral("invoiceTable"), m_invoiceTableView },
        { QStringLiteral("paymentTable"), m_paymentTableView },
        { QStringLiteral("invoiceItemTable"), m_invoiceItemTableView } };
}

void MainWindow::saveLayout()
{
    QSettings* settings = m_registry->appSettings();
    if (!settings)
        return;
    settings->beginGroup(QStringLiteral("mainWindow"));
    settings->setValue(QStringLiteral("geometry"), saveGeometry());
    settings->setValue(QStringLiteral("state"), saveState());
    const QMap<QString, QTableView*> tables = layoutTables();
    for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
        settings->setValue(table.key() + QStringLiteral("/columns"),
            table.value()->horizontalHeader()->saveState());
    }
    settings->beginGroup(QStringLiteral("invoiceTable"));
    settings->setValue(QStringLiteral("size"), m_invoiceDock->size());
    settings->setValue(QStringLiteral("hidden"), m_invoiceDock->isHidden());
    settings->endGroup();
    settings->endGroup();
}

void MainWindow::restoreLayout()
{
    QSettings* settings = m_registry->appSettings();
    if (!settings)
        return;
    settings->beginGroup(QStringLiteral("mainWindow"));
    if (settings->contains(QStringLiteral("geometry")))
        restoreGeometry(settings->value(QStringLiteral("geometry")).toByteArray());
    if (settings->contains(QStringLiteral("state")))
        restoreState(settings->value(QStringLiteral("state")).toByteArray());
    const QMap<QString, QTableView*> tables = layoutTables();
    for (auto table = tables.cbegin(); table != tables.cend(); ++table) {
        const QByteArray state
            = settings->value(table.key() + QStringLiteral("/columns")).toByteArray();
        if (!state.isEmpty())
            table.value()->horizontalHeader()->restoreState(state);
    }
    settings->beginGroup(QStringLiteral("invoiceTable"));
    const QSize size = settings->value(QStringLiteral("size")).toSize();
    if (size.isValid() && !m_invoiceDock->isFloating()) {
        const Qt::DockWidgetArea area = dockWidgetArea(m_invoiceDock);
        if (area == Qt::LeftDockWidgetArea || area == Qt::RightDockWidgetArea)
            resizeDocks({ m_invoiceDock }, { size.width() }, Qt::Horizontal);
        else
            resizeDocks({ m_invoiceDock }, { size.height() }, Qt::Vertical);
    }
    if (settings->contains(QStringLiteral("hidden")))
        m_invoiceDock->setHidden(settings->value(QStringLiteral("hidden")).toBool());
    settings->endGroup();
    settings->endGroup();
    updateColumnActions();
}

void MainWindow::showEvent(QShowEvent* event)
{
    if (!m_layoutRestored) {
        m_layoutRestored = true;
        restoreLayout();
    }
    QMainWindow::showEvent(event);
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!saveInvoice()) {
        event->ignore();
        return;
    }
    saveLayout();
    event->accept();
}

void MainWindow::editCell(QTableView* view, const QModelIndex& cell)
{
    view->setFocus();
    view->setCurrentIndex(cell);
    view->edit(cell);
}

// --- Messages ----------------------------------------------------------------

void MainWindow::showModelError(const QString& text)
{
    showCriticalMessage(text.arg(m_model->lastError()));
}

void MainWindow::showFetchError()
{
    showModelError(tr("Laskutustietojen hakeminen epäonnistui. %1"));
}

void MainWindow::showErrorMessage(const QString& message)
{
    showCriticalMessage(message);
}

bool MainWindow::askQuestion(const QString& question)
{
    return QMessageBox::question(this, windowTitle(), question, QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes;
}

void MainWindow::showCriticalMessage(const QString& message)
{
    QMessageBox::critical(this, windowTitle(), message);
}

void MainWindow::showWarningMessage(const QString& message)
{
    QMessageBox::warning(this, windowTitle(), message);
}

int MainWindow::execDialog(QDialog* dialog)
{
    return dialog->exec();
}

bool MainWindow::openUrl(const QUrl& url)
{
    return QDesktopServices::openUrl(url);
}
