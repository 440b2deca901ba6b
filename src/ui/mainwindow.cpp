#include "mainwindow.h"

#include "core/databaselist.h"
#include "core/interestonarrearstablemodel.h"
#include "core/invoiceitemtablemodel.h"
#include "core/invoicesavecheck.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoicecriteria.h"
#include "domain/invoicetype.h"
#include "domain/logging.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "export/emailhelper.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "ui/aboutdialog.h"
#include "ui/bankaccountdialog.h"
#include "ui/copydialog.h"
#include "ui/customerdialog.h"
#include "ui/databaselistdialog.h"
#include "ui/emailsettingsdialog.h"
#include "ui/exportdialog.h"
#include "ui/interestonarrearspanel.h"
#include "ui/invoiceform.h"
#include "ui/invoiceprintpreviewdialog.h"
#include "ui/invoicerangedialog.h"
#include "ui/irpdialog.h"
#include "ui/mainwindowactions.h"
#include "ui/productdialog.h"
#include "ui/ravelodialog.h"
#include "ui/referencenumberdialog.h"
#include "ui/scripteditordialog.h"
#include "ui/searchdialog.h"
#include "ui/settingsdialog.h"
#include "ui/shortcutpriorityfilter.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDockWidget>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QMessageBox>
#include <QScrollBar>
#include <QSettings>
#include <QSortFilterProxyModel>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>

namespace {

const QString applicationTitle = QStringLiteral("Veklari");
const QString helpAddress = QStringLiteral("https://veklari.fi/ohje");
const QSize initialSize(1280, 860);

} // namespace

MainWindow::MainWindow(Registry* registry, QWidget* parent)
    : QMainWindow(parent)
    , m_registry(registry)
    , m_model(new MainModel(registry, this))
    , m_form(new InvoiceForm(registry, m_model, this))
{
    m_actions = std::make_unique<MainWindowActions>(this, registry, m_model, m_form);
    m_form->setRowActions(m_actions->rowButtonActions(), m_actions->rowMenuActions());
    setCentralWidget(m_form);
    createInvoiceList();
    createInterestPanel();
    m_actions->createMenus(m_invoiceDock->toggleViewAction());
    qApp->installEventFilter(
        new ShortcutPriorityFilter(this, { m_actions->action("exportAction")->shortcut() }));

    m_positionLabel = new QLabel(this);
    m_positionLabel->setObjectName(QStringLiteral("positionLabel"));
    statusBar()->addPermanentWidget(m_positionLabel);

    connect(m_form, &InvoiceForm::commandsChanged, this, &MainWindow::updateActions);
    // The list shows the customers' names.
    connect(m_registry, &Registry::customersFetched, m_invoiceTableView->viewport(),
        qOverload<>(&QWidget::update));
    // A message box in the middle of committing an editor would take the
    // focus from it; show it once the edit is over.
    connect(m_model->invoiceItemTableModel(), &InvoiceItemTableModel::tooLargeAmountEntered, this,
        &MainWindow::tooLargeAmountEntered, Qt::QueuedConnection);
    connect(m_model->paymentTableModel(), &PaymentTableModel::tooLargeAmountEntered, this,
        &MainWindow::tooLargeAmountEntered, Qt::QueuedConnection);

    resize(initialSize);
    loadForm();
    updateWindowTitle();
}

MainWindow::~MainWindow()
{
    // The model goes with the window's children and announces its clearing;
    // by then the window and the form must not listen any more.
    disconnect(m_model->invoiceItemTableModel(), nullptr, this, nullptr);
    delete m_form;
}

QTableView* MainWindow::invoiceItemTableView() const
{
    return m_form->invoiceItemTableView();
}

QTableView* MainWindow::paymentTableView() const
{
    return m_form->paymentTableView();
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

void MainWindow::createInterestPanel()
{
    m_interestPanel = new InterestOnArrearsPanel(m_model->interestTableModel());
    m_interestDock = new QDockWidget(tr("Viivästyskorko"), this);
    m_interestDock->setObjectName(QStringLiteral("interestDock"));
    m_interestDock->setWidget(m_interestPanel);
    addDockWidget(Qt::RightDockWidgetArea, m_interestDock);
    m_interestDock->hide();
    connect(m_interestPanel, &InterestOnArrearsPanel::calculateRequested, this,
        &MainWindow::calculateInterest);
    connect(m_interestPanel, &InterestOnArrearsPanel::removeRequested, this,
        &MainWindow::removeInterestRow);
    connect(
        m_interestPanel, &InterestOnArrearsPanel::clearRequested, this, &MainWindow::clearInterest);
    connect(m_interestPanel, &InterestOnArrearsPanel::createInvoiceRequested, this,
        &MainWindow::createInterestInvoice);
    connect(m_interestPanel, &InterestOnArrearsPanel::addRowsRequested, this,
        &MainWindow::addInterestRows);
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
    DatabaseList databases(m_registry->appSettings());
    if (number <= 0)
        number = databases.lastUsed();
    int index = 0;
    if (databases.count() == 0)
        number = databases.addDefault();
    else if (number >= 1)
        index = qMax(0, databases.indexOfNumber(number));
    const DatabaseList::Entry entry = databases.entry(index);
    m_databaseTitle = DatabaseList::displayName(entry);

    m_hasInvoice = false;
    m_registry->setDatabaseNumber(number);
    int status = m_model->openDatabase(index, false);
    if (status == -2) {
        const QString question = tr("Tietokantaa \"%1\" ei löytynyt. Haluatko luoda tietokannan?")
                                     .arg(m_model->missingDatabaseName());
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
        m_actions->showQuickSearch(m_model->currentQuickSearch());
        const int last = m_model->invoiceCount() - 1;
        if (last < 0)
            doCreateInvoice();
        else
            loadInvoice(last);
        databases.setLastUsed(number);
        ok = true;
    }

    if (!ok)
        loadForm();
    updateWindowTitle();
    updateActions();
    return ok;
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

bool MainWindow::saveInvoice()
{
    if (!m_registry->isConnected() || !m_hasInvoice)
        return true;
    const InvoiceSaveCheck::Texts texts = m_form->prepareSave();
    const InvoiceSaveCheck::Result check = InvoiceSaveCheck(m_model).check(texts);
    m_form->showCheck(check);
    switch (check.outcome) {
    case InvoiceSaveCheck::NothingToSave:
        return true;
    case InvoiceSaveCheck::Failed:
        showCriticalMessage(check.message);
        return false;
    case InvoiceSaveCheck::Refused:
        showWarningMessage(check.message);
        return false;
    case InvoiceSaveCheck::Passed:
        break;
    }

    Invoice* invoice = m_model->invoice();
    qCDebug(logUi).noquote() << QStringLiteral("Tallennetaan lasku id=%1").arg(invoice->id);
    if (m_model->isEditable())
        m_form->apply(check);
    if (!m_model->saveInvoice()) {
        showModelError(tr("Laskun tallentaminen epäonnistui. %1"));
        return false;
    }
    m_model->invoiceTableModel()->setType(m_model->invoiceIndex(), invoice->type);
    loadForm();
    return true;
}

bool MainWindow::doCreateInvoice()
{
    return showCreatedInvoice(m_model->createInvoice());
}

bool MainWindow::showCreatedInvoice(int highest)
{
    if (highest < 0) {
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
        m_form->focusCustomer();
}

bool MainWindow::toggleEditMode(bool on)
{
    QAction* editMode = m_actions->action("editModeAction");
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
    m_form->updateEditable();
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
    showCreatedInvoice(m_model->createInvoiceCopy());
}

// --- Commands ----------------------------------------------------------------

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
    m_actions->showQuickSearch(m_model->currentQuickSearch());
    updatePosition();
    updateActions();
    updateInterestButtons();
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
        m_form->confirmCustomer();
    if (m_model->invoice()->customerId < 0) {
        showWarningMessage(tr("Valitse ensin laskun saaja."));
        return;
    }
    // The dialog starts from what the form shows.
    if (isEditMode())
        m_form->applyNoticeTexts();
    ReferenceNumberDialog dialog(m_registry, m_model, this);
    if (execDialog(&dialog) != QDialog::Accepted)
        return;
    if (dialog.saveAsCustomerReference() && !m_model->saveReferenceNumber())
        showModelError(tr("Viitenumeron tallentaminen epäonnistui. %1"));
    m_form->updateReferenceField();
    m_form->loadNoticeTexts();
}

void MainWindow::editSettings()
{
    editSettingsPage(SettingsDialog::SellerPage);
}

void MainWindow::editSettingsPage(int page)
{
    if (!m_registry->isConnected())
        return;
    SettingsDialog dialog(m_registry, this);
    dialog.setCurrentPage(page);
    if (execDialog(&dialog) != QDialog::Accepted)
        return;
    dialog.settings()->copy(m_registry->settings());
    saveSettings();
    applyVatMode();
    m_form->updateAmounts();
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
    paymentTableView()->viewport()->update();
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

void MainWindow::exportInvoices()
{
    // The files are written from what is stored.
    if (!m_registry->isConnected() || (m_hasInvoice && !saveInvoice()))
        return;
    ExportDialog dialog(m_registry, this);
    dialog.setSampleInvoice(m_hasInvoice ? m_model->invoice() : nullptr);
    dialog.setCriteria(*m_model->lastCriteria());
    execDialog(&dialog);
}

void MainWindow::importTimeEntries()
{
    // The new invoices are numbered after what is stored.
    if (!m_registry->isConnected() || (m_hasInvoice && !saveInvoice()))
        return;
    RaveloDialog dialog(m_registry, this);
    dialog.setToday(m_model->today());
    if (execDialog(&dialog) != QDialog::Accepted)
        return;
    // The settings hold the mapping now, and the list the new invoices.
    if (!m_model->fetchData()) {
        showFetchError();
        return;
    }
    goToLastInvoice();
    updateActions();
}

// --- Interest on arrears -----------------------------------------------------

void MainWindow::showInterestPanel()
{
    // The first time, as wide as its table needs, leaving the form the rest.
    if (m_interestDock->isHidden() && !m_interestDockSized && !m_interestDock->isFloating()) {
        m_interestDockSized = true;
        const QTableView* table = m_interestPanel->tableView();
        const QMargins margins = m_interestPanel->layout()->contentsMargins();
        const int width = table->horizontalHeader()->length() + 2 * table->frameWidth()
            + table->verticalScrollBar()->sizeHint().width() + margins.left() + margins.right();
        m_interestDock->show();
        resizeDocks({ m_interestDock }, { width }, Qt::Horizontal);
    }
    m_interestDock->show();
    m_interestDock->raise();
    updateInterestButtons();
}

void MainWindow::updateInterestButtons()
{
    m_interestPanel->updateButtons(m_registry->isConnected() && m_hasInvoice);
}

void MainWindow::calculateInterest()
{
    if (!m_registry->isConnected() || !m_hasInvoice)
        return;
    const InterestOnArrearsTableModel* table = m_model->interestTableModel();
    const Invoice* invoice = m_model->invoice();
    if (table->rowCount() > 0 && table->customerId() != invoice->customerId) {
        bool tableFound = false;
        bool invoiceFound = false;
        const Customer* tableCustomer = m_registry->customerById(table->customerId(), tableFound);
        const Customer* invoiceCustomer
            = m_registry->customerById(invoice->customerId, invoiceFound);
        if (tableFound && invoiceFound
            && !askQuestion(tr(
                "Viivästyskoron laskennassa on jo asiakkaan %1 korko. Haluatko lisätä asiakkaan %2 koron?")
                                .arg(tableCustomer->name, invoiceCustomer->name)))
            return;
    }
    m_model->calculateInterestOnArrears();
    updateInterestButtons();
}

void MainWindow::removeInterestRow()
{
    const int row = m_interestPanel->currentRow();
    if (row >= 0)
        m_model->interestTableModel()->removeRows(row, 1);
    updateInterestButtons();
}

void MainWindow::clearInterest()
{
    m_model->interestTableModel()->clear();
    updateInterestButtons();
}

const Product* MainWindow::findProductForInterestOnArrears(bool& found)
{
    found = false;
    const Settings* settings = m_registry->settings();
    const QString number = settings
        ? settings->property(SettingsKeys::interestProduct, QString()).toString()
        : QString();
    const Product* product = m_registry->productByNumber(number, found);
    if (found && product)
        return product;
    found = false;
    showInformationMessage(windowTitle(), tr("Viivästyskorkorivin tuotetta ei ole määritelty."));
    // The product is chosen with the other invoicing settings.
    editSettingsPage(SettingsDialog::InvoicingPage);
    return nullptr;
}

void MainWindow::createInterestInvoice()
{
    const InterestOnArrearsTableModel* table = m_model->interestTableModel();
    if (!m_registry->isConnected() || table->rowCount() == 0)
        return;
    if (!table->hasOneCustomer()) {
        showWarningMessage(tr("Viivästyskoron laskennassa on usean asiakkaan laskuja. Korkolasku "
                              "luodaan yhden asiakkaan laskuista: poista muiden asiakkaiden "
                              "rivit."));
        return;
    }
    if (!saveInvoice())
        return;
    bool found = false;
    const Product* product = findProductForInterestOnArrears(found);
    if (!found)
        return;
    showCreatedInvoice(m_model->createInterestInvoice(product));
    updateInterestButtons();
}

void MainWindow::addInterestRows()
{
    if (!m_registry->isConnected() || !m_hasInvoice
        || m_model->interestTableModel()->rowCount() == 0)
        return;
    if (!toggleEditMode(true))
        return;
    bool found = false;
    const Product* product = findProductForInterestOnArrears(found);
    if (!found)
        return;
    m_model->addInterestRows(product);
    m_form->updateAmounts();
    updateActions();
}

void MainWindow::groupInvoicing()
{
    if (!m_registry->isConnected())
        return;
    // What is copied is what is stored.
    if (m_hasInvoice && !saveInvoice())
        return;
    // A new invoice with nothing in it is not saved, and not a choice.
    if (!m_hasInvoice || m_model->invoice()->id < 0) {
        showWarningMessage(tr("Valitse kopioitava lasku."));
        return;
    }
    CopyDialog dialog(m_registry, *m_model->invoice(), this);
    execDialog(&dialog);
    // The groups and the undo record are company settings.
    saveSettings();
    if (!m_model->refresh())
        showFetchError();
    // An undo may have removed the invoice shown, when it was a copy.
    if (m_model->invoiceIndex() >= 0)
        loadInvoice(m_model->invoiceIndex());
    else
        m_hasInvoice = false;
    loadForm();
}

void MainWindow::importPayments()
{
    // The balances change in the database, under the form's invoice too.
    if (!m_registry->isConnected() || (m_hasInvoice && !saveInvoice()))
        return;
    IRPDialog dialog(m_registry, m_model, this);
    execDialog(&dialog);
    if (dialog.isAccepted())
        refresh();
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

bool MainWindow::sendInvoice()
{
    // What is sent is what is stored.
    if (!m_hasInvoice || !saveInvoice() || m_model->invoice()->id < 0)
        return false;
    InvoicePrintModel model(m_registry);
    model.criteria().id = m_model->invoice()->id;
    if (!model.run()) {
        showCriticalMessage(tr("Tulosteen muodostaminen epäonnistui. %1").arg(model.lastError()));
        return false;
    }
    PrintScriptEngine engine;
    if (!ScriptHelper(m_registry).loadInvoiceScript(&engine)) {
        showCriticalMessage(tr("Laskupohjan lataaminen epäonnistui. %1")
                                .arg(engine.lastError().section(QLatin1Char('\n'), 0, 0)));
        return false;
    }
    EmailHelper helper(m_registry, &engine);
    if (helper.startApplication(&model))
        return true;
    showInformationMessage(EmailHelper::messageTitle(), helper.lastError());
    return false;
}

void MainWindow::editEmailSettings()
{
    EmailSettingsDialog dialog(m_registry, this);
    execDialog(&dialog);
}

bool MainWindow::printSeveralInvoices(int kind)
{
    if (m_hasInvoice && !saveInvoice())
        return false;
    const int number = m_hasInvoice ? m_model->invoice()->number : 1;
    const QString title = kind == InvoiceType::Reminder ? tr("Useita maksumuistutuksia")
        : kind == InvoiceType::Receipt                  ? tr("Useita kuitteja")
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
        || settings->property(SettingsKeys::vatIncluded, true).toBool() == vatIncluded)
        return;
    settings->setProperty(SettingsKeys::vatIncluded, vatIncluded);
    saveSettings();
}

void MainWindow::applyVatMode()
{
    const Settings* settings = m_registry->settings();
    showVatMode(settings ? settings->property(SettingsKeys::vatIncluded, true).toBool() : true);
}

void MainWindow::showVatMode(bool vatIncluded)
{
    m_model->invoiceItemTableModel()->setVatIncluded(vatIncluded);
    m_actions->showVatMode(vatIncluded);
}

void MainWindow::saveSettings()
{
    if (!m_model->saveSettings())
        showModelError(tr("Asetusten tallentaminen epäonnistui. %1"));
}

void MainWindow::tooLargeAmountEntered()
{
    // The model that refused the value tells which field and its limit; a
    // row's refusal starts with the program's long-standing row message.
    PaymentTableModel* payments = m_model->paymentTableModel();
    if (sender() == payments) {
        showWarningMessage(payments->lastError());
        return;
    }
    showWarningMessage(tr("Laskurivin määrä, à-hinta tai summa ei saa ylittää 999 999,99.")
        + QLatin1Char('\n') + m_model->invoiceItemTableModel()->lastError());
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

void MainWindow::updateActions()
{
    MainWindowActions::State state;
    state.connected = m_registry->isConnected();
    state.shown = m_hasInvoice;
    state.editable = m_model->isEditable();
    state.invoiceCount = m_model->invoiceProxyModel()->rowCount();
    state.invoiceRow = currentProxyRow();
    state.itemCount = m_model->invoiceItemTableModel()->rowCount();
    state.currentItemRow = m_form->currentInvoiceItemRow();
    m_actions->update(state);
}

void MainWindow::loadForm()
{
    if (!m_registry->isConnected())
        m_hasInvoice = false;
    m_form->load(m_hasInvoice);
    m_form->updateEditable();
    m_form->updateAmounts();
    updatePosition();
    updateActions();
    updateInterestButtons();
}

void MainWindow::updateCustomers()
{
    m_form->updateCustomers();
    m_invoiceTableView->viewport()->update();
}

QMap<QString, QTableView*> MainWindow::layoutTables() const
{
    return { { QStringLiteral("invoiceTable"), m_invoiceTableView },
        { QStringLiteral("paymentTable"), paymentTableView() },
        { QStringLiteral("invoiceItemTable"), invoiceItemTableView() },
        { QStringLiteral("interestOnArrearsTable"), m_interestPanel->tableView() } };
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
    m_actions->showColumns(invoiceItemTableView());
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

void MainWindow::showInformationMessage(const QString& title, const QString& message)
{
    QMessageBox::information(this, title, message);
}

int MainWindow::execDialog(QDialog* dialog)
{
    return dialog->exec();
}

bool MainWindow::openUrl(const QUrl& url)
{
    return QDesktopServices::openUrl(url);
}
