#include "mainwindowactions.h"

#include "core/invoiceitemtablemodel.h"
#include "core/mainmodel.h"
#include "domain/invoicetype.h"
#include "domain/paymentcriteria.h"
#include "ui/invoiceform.h"
#include "ui/invoicelistprintpreviewdialog.h"
#include "ui/mainwindow.h"
#include "ui/paymentprintpreviewdialog.h"
#include "ui/printpreviewdialog.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QTableView>
#include <QToolBar>

namespace {

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

// The quick searches of the main model by number, and the last, which
// lists every invoice.
const int lastQuickSearch = 5;

} // namespace

MainWindowActions::MainWindowActions(
    MainWindow* window, Registry* registry, MainModel* model, InvoiceForm* form)
    : m_window(window), m_registry(registry), m_model(model), m_form(form)
{
    createInvoiceActions();
    createSearchActions();
    createPrintActions();
    createOtherActions();
}

QAction* MainWindowActions::create(
    const QString& name, const QString& text, const QKeySequence& shortcut)
{
    QAction* created = new QAction(text, m_window);
    created->setObjectName(name);
    created->setShortcut(shortcut);
    m_actions.insert(name, created);
    return created;
}

template<typename Receiver, typename Handler>
QAction* MainWindowActions::create(const QString& name, const QString& text,
    const QKeySequence& shortcut, Receiver* receiver, Handler handler)
{
    QAction* created = create(name, text, shortcut);
    QObject::connect(created, &QAction::triggered, receiver, handler);
    return created;
}

QAction* MainWindowActions::action(const char* name) const
{
    return m_actions.value(QLatin1String(name));
}

QList<QAction*> MainWindowActions::actions(std::initializer_list<const char*> names) const
{
    QList<QAction*> result;
    for (const char* name : names)
        result.append(action(name));
    return result;
}

QList<QAction*> MainWindowActions::rowButtonActions() const
{
    return actions(
        { "addInvoiceItemAction", "removeInvoiceItemAction", "moveUpAction", "moveDownAction" });
}

QList<QAction*> MainWindowActions::rowMenuActions() const
{
    return rowButtonActions()
        + actions({ "copyInvoiceItemsAction", "cutInvoiceItemsAction", "pasteInvoiceItemsAction" });
}

void MainWindowActions::createInvoiceActions()
{
    MainWindow* w = m_window;
    create(QStringLiteral("newInvoiceAction"), tr("&Uusi"), QKeySequence(Qt::Key_F7), w,
        &MainWindow::newInvoice);
    create(QStringLiteral("saveInvoiceAction"), tr("&Tallenna"), QKeySequence(Qt::CTRL | Qt::Key_S),
        w, [w] { w->saveInvoice(); });
    create(QStringLiteral("editModeAction"), tr("&Muokkaa"), QKeySequence(Qt::Key_F6), w,
        [w](bool on) { w->toggleEditMode(on); })
        ->setCheckable(true);
    create(QStringLiteral("removeInvoiceAction"), tr("&Poista"),
        QKeySequence(Qt::CTRL | Qt::Key_Delete), w, &MainWindow::removeInvoice);
    create(QStringLiteral("copyInvoiceAction"), tr("Tee &laskusta kopio"),
        QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C), w, &MainWindow::copyInvoice);
    create(QStringLiteral("referenceNumberAction"), tr("&Viitenumero ja lisätiedot"),
        QKeySequence(Qt::CTRL | Qt::Key_L), w, &MainWindow::editReferenceNumber);
    create(QStringLiteral("quitAction"), tr("&Lopeta"), QKeySequence(Qt::CTRL | Qt::Key_Q), w,
        &QWidget::close);

    InvoiceForm* f = m_form;
    create(QStringLiteral("addInvoiceItemAction"), tr("Lisää &rivi"), QKeySequence(Qt::Key_F8), f,
        &InvoiceForm::addInvoiceItem);
    create(QStringLiteral("removeInvoiceItemAction"), tr("P&oista rivi"), QKeySequence(), f,
        &InvoiceForm::removeInvoiceItems);
    create(QStringLiteral("moveUpAction"), tr("Siirrä ylös"), QKeySequence(Qt::CTRL | Qt::Key_Up),
        f, &InvoiceForm::moveInvoiceItemUp);
    create(QStringLiteral("moveDownAction"), tr("Siirrä alas"),
        QKeySequence(Qt::CTRL | Qt::Key_Down), f, &InvoiceForm::moveInvoiceItemDown);
    create(QStringLiteral("copyInvoiceItemsAction"), tr("&Kopioi laskurivit"), QKeySequence(), f,
        &InvoiceForm::copyInvoiceItems);
    create(QStringLiteral("cutInvoiceItemsAction"), tr("&Leikkaa"),
        QKeySequence(Qt::CTRL | Qt::Key_X), f, &InvoiceForm::cutInvoiceItems);
    create(QStringLiteral("pasteInvoiceItemsAction"), tr("&Liitä laskurivit"),
        QKeySequence(Qt::CTRL | Qt::Key_V), f, &InvoiceForm::pasteInvoiceItems);

    m_vatGroup = new QActionGroup(m_window);
    for (const bool vatIncluded : { true, false }) {
        QAction* vatMode = create(
            vatIncluded ? QStringLiteral("vatIncludedAction") : QStringLiteral("vatExcludedAction"),
            vatIncluded ? tr("Ve&rollinen") : tr("Vero&ton"), QKeySequence(), w,
            [w, vatIncluded] { w->setVatIncluded(vatIncluded); });
        vatMode->setCheckable(true);
        vatMode->setChecked(vatIncluded);
        m_vatGroup->addAction(vatMode);
    }
    QTableView* rows = m_form->invoiceItemTableView();
    for (const auto& column : rowColumns) {
        const int section = column.column;
        QAction* shown = create(QLatin1String(column.name), tr(column.text), QKeySequence());
        shown->setCheckable(true);
        shown->setChecked(true);
        QObject::connect(shown, &QAction::toggled, rows,
            [rows, section](bool shown) { rows->setColumnHidden(section, !shown); });
    }
}

void MainWindowActions::createSearchActions()
{
    MainWindow* w = m_window;
    create(QStringLiteral("searchAction"), tr("&Haku"), QKeySequence(Qt::CTRL | Qt::Key_F), w,
        &MainWindow::search);
    m_quickSearchGroup = new QActionGroup(m_window);
    auto addQuickSearch = [this](QAction* action) {
        action->setCheckable(true);
        m_quickSearchGroup->addAction(action);
    };
    addQuickSearch(create(QStringLiteral("searchResultsAction"), tr("Haku&tulokset"),
        QKeySequence(), w, &MainWindow::showSearchResults));
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
        addQuickSearch(create(QStringLiteral("quickSearch%1Action").arg(n),
            tr(quickSearches[n].text), key ? QKeySequence(Qt::CTRL | key) : QKeySequence(), w,
            [w, n] { w->quickSearch(n); }));
    }

    create(QStringLiteral("previousAction"), tr("&Edellinen"), QKeySequence(Qt::Key_PageUp), w,
        &MainWindow::goToPreviousInvoice);
    create(QStringLiteral("nextAction"), tr("&Seuraava"), QKeySequence(Qt::Key_PageDown), w,
        &MainWindow::goToNextInvoice);
    create(QStringLiteral("firstAction"), tr("E&nsimmäinen"),
        QKeySequence(Qt::CTRL | Qt::Key_PageUp), w, &MainWindow::goToFirstInvoice);
    create(QStringLiteral("lastAction"), tr("&Viimeinen"),
        QKeySequence(Qt::CTRL | Qt::Key_PageDown), w, &MainWindow::goToLastInvoice);
    create(QStringLiteral("refreshAction"), tr("&Päivitä tiedot"), QKeySequence(), w,
        &MainWindow::refresh);
    create(QStringLiteral("chooseDatabaseAction"), tr("Valitse &yritys"), QKeySequence(Qt::Key_F10),
        w, &MainWindow::chooseDatabase);
}

void MainWindowActions::createPrintActions()
{
    MainWindow* w = m_window;
    create(QStringLiteral("printAction"), tr("&Tulosta"), QKeySequence(Qt::Key_F9), w,
        [w] { w->printInvoices(false, InvoiceType::Invoice); });
    const struct
    {
        const char* name;
        const char* text;
        QKeySequence shortcut;
        int kind;
        bool several;
    } prints[] = {
        { "printSelectedAction", "&Valittu lasku", QKeySequence(Qt::ALT | Qt::Key_1),
            InvoiceType::Invoice, false },
        { "printSeveralAction", "&Useita laskuja", QKeySequence(Qt::ALT | Qt::Key_2),
            InvoiceType::Invoice, true },
        { "printReminderAction", "&Maksumuistutus", QKeySequence(Qt::ALT | Qt::Key_3),
            InvoiceType::Reminder, false },
        { "printRemindersAction", "Useita m&aksumuistutuksia", QKeySequence(),
            InvoiceType::Reminder, true },
        { "printReceiptAction", "&Kuitti", QKeySequence(Qt::ALT | Qt::Key_4), InvoiceType::Receipt,
            false },
        { "printReceiptsAction", "Useita ku&itteja", QKeySequence(), InvoiceType::Receipt, true },
    };
    for (const auto& print : prints) {
        const int kind = print.kind;
        if (print.several)
            create(QLatin1String(print.name), tr(print.text), print.shortcut, w,
                [w, kind] { w->printSeveralInvoices(kind); });
        else
            create(QLatin1String(print.name), tr(print.text), print.shortcut, w,
                [w, kind] { w->printInvoices(true, kind); });
    }
    Registry* registry = m_registry;
    MainModel* model = m_model;
    create(QStringLiteral("invoiceListAction"), tr("Lasku&luettelo"),
        QKeySequence(Qt::ALT | Qt::Key_6), w, [w, registry, model] {
            InvoiceListPrintPreviewDialog::showReport(registry, *model->lastCriteria(), w);
        });
    create(QStringLiteral("paymentJournalAction"), tr("&Suorituspäiväkirja"),
        QKeySequence(Qt::ALT | Qt::Key_7), w,
        [w, registry] { PaymentPrintPreviewDialog::showReport(registry, PaymentCriteria(), w); });
    create(QStringLiteral("customerListAction"), tr("Asiakaslu&ettelo"), QKeySequence(), w,
        [w, registry] { PrintPreviewDialog::showCustomerList(registry, w); });
    create(QStringLiteral("productListAction"), tr("Tu&oteluettelo"), QKeySequence(), w,
        [w, registry] { PrintPreviewDialog::showProductList(registry, w); });
}

void MainWindowActions::createOtherActions()
{
    MainWindow* w = m_window;
    create(QStringLiteral("settingsAction"), tr("&Yrityksen tiedot..."), QKeySequence(), w,
        &MainWindow::editSettings);
    create(QStringLiteral("customersAction"), tr("&Asiakkaat..."), QKeySequence(), w,
        &MainWindow::editCustomers);
    create(QStringLiteral("productsAction"), tr("&Tuotteet..."), QKeySequence(), w,
        &MainWindow::editProducts);
    create(QStringLiteral("bankAccountsAction"), tr("&Pankkitilit..."), QKeySequence(), w,
        &MainWindow::editBankAccounts);
    create(QStringLiteral("printScriptsAction"), tr("T&ulostuspohjat..."), QKeySequence(), w,
        &MainWindow::editPrintScripts);
    create(QStringLiteral("emailSettingsAction"), tr("&Sähköpostiasetukset..."), QKeySequence(), w,
        &MainWindow::editEmailSettings);
    create(QStringLiteral("exportAction"), tr("V&ie"), QKeySequence(Qt::CTRL | Qt::Key_E), w,
        &MainWindow::exportInvoices);
    create(QStringLiteral("sendAction"), tr("L&ähetä"), QKeySequence(Qt::CTRL | Qt::Key_M), w,
        &MainWindow::sendInvoice);
    create(QStringLiteral("groupInvoicingAction"), tr("&Ryhmälaskutus"),
        QKeySequence(Qt::CTRL | Qt::Key_R), w, &MainWindow::groupInvoicing);
    create(QStringLiteral("interestAction"), tr("&Viivästyskoron laskenta"),
        QKeySequence(Qt::CTRL | Qt::Key_K), w, &MainWindow::showInterestPanel);
    create(QStringLiteral("importPaymentsAction"), tr("&Maksusuoritusten tuonti"),
        QKeySequence(Qt::CTRL | Qt::Key_I), w, &MainWindow::importPayments);
    create(QStringLiteral("helpAction"), tr("&Sisältö"), QKeySequence(Qt::Key_F1), w,
        &MainWindow::showHelp);
    create(
        QStringLiteral("aboutAction"), tr("&Tietoja"), QKeySequence(), w, &MainWindow::showAbout);

    create(QStringLiteral("raveloAction"), tr("&Ravelo-aineiston tuonti"), QKeySequence(), w,
        &MainWindow::importTimeEntries);
}

void MainWindowActions::createMenus(QAction* listToggle)
{
    // nullptr stands for a separator.
    auto add = [this](QWidget* menu, std::initializer_list<const char*> names) {
        for (const char* name : names) {
            QAction* entry = name ? action(name) : new QAction(menu);
            entry->setSeparator(!name);
            menu->addAction(entry);
        }
    };
    QMenuBar* bar = m_window->menuBar();
    add(bar->addMenu(tr("&Tiedosto")),
        { "chooseDatabaseAction", "refreshAction", nullptr, "exportAction", "sendAction",
            "importPaymentsAction", "raveloAction", "interestAction", nullptr, "quitAction" });
    add(bar->addMenu(tr("&Lasku")),
        { "newInvoiceAction", "editModeAction", "saveInvoiceAction", "removeInvoiceAction",
            "copyInvoiceAction", nullptr, "referenceNumberAction", "groupInvoicingAction" });
    QMenu* rows = bar->addMenu(tr("&Rivit"));
    add(rows,
        { "addInvoiceItemAction", "removeInvoiceItemAction", "moveUpAction", "moveDownAction",
            nullptr, "copyInvoiceItemsAction", "cutInvoiceItemsAction", "pasteInvoiceItemsAction",
            nullptr });
    add(rows->addMenu(tr("&Hinnat ja sarakkeet")),
        { "vatIncludedAction", "vatExcludedAction", nullptr, "showDiscountAction",
            "showDiscountedPriceAction", "showVatAction" });

    QMenu* searchMenu = bar->addMenu(tr("&Haku"));
    add(searchMenu, { "searchAction", "searchResultsAction" });
    searchMenu->addMenu(tr("&Pikahaut"))->addActions(m_quickSearchGroup->actions().mid(1));
    searchMenu->addSeparator();
    searchMenu->addAction(listToggle);

    add(bar->addMenu(tr("&Siirry")),
        { "previousAction", "nextAction", "firstAction", "lastAction" });
    add(bar->addMenu(tr("T&ulosta")),
        { "printAction", nullptr, "printSelectedAction", "printSeveralAction",
            "printReminderAction", "printRemindersAction", "printReceiptAction",
            "printReceiptsAction", nullptr, "invoiceListAction", "paymentJournalAction",
            "customerListAction", "productListAction" });
    add(bar->addMenu(tr("&Asetukset")),
        { "settingsAction", "customersAction", "productsAction", "bankAccountsAction",
            "printScriptsAction", nullptr, "emailSettingsAction" });
    add(bar->addMenu(tr("&Ohje")), { "helpAction", "aboutAction" });

    QToolBar* toolBar = m_window->addToolBar(tr("Työkalurivi"));
    toolBar->setObjectName(QStringLiteral("mainToolBar"));
    toolBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    add(toolBar,
        { "newInvoiceAction", "editModeAction", "saveInvoiceAction", "removeInvoiceAction",
            "copyInvoiceAction", nullptr, "firstAction", "previousAction", "nextAction",
            "lastAction", nullptr, "searchAction", "printAction" });
}

void MainWindowActions::update(const State& state)
{
    const bool connected = state.connected;
    const bool shown = connected && state.shown;
    const bool editable = shown && state.editable;
    const int count = connected ? state.invoiceCount : 0;
    const int row = state.invoiceRow;
    const bool hasRows = shown && state.itemCount > 0;
    const int current = state.currentItemRow;

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
    enable("moveUpAction", editable && current > 0);
    enable("moveDownAction", editable && current >= 0 && current + 1 < state.itemCount);
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
    enable("exportAction", connected);
    enable("raveloAction", connected);
    enable("sendAction", shown);
    // The mail program is the machine's, not the database's.
    enable("emailSettingsAction", true);
    enable("interestAction", connected);
    enable("groupInvoicingAction", connected);
    enable("importPaymentsAction", connected);

    for (const char* name :
        { "printAction", "printSelectedAction", "printReminderAction", "printReceiptAction" })
        enable(name, shown);
    for (const char* name :
        { "printSeveralAction", "printRemindersAction", "printReceiptsAction", "invoiceListAction",
            "paymentJournalAction", "customerListAction", "productListAction" })
        enable(name, connected);
}

void MainWindowActions::showQuickSearch(int n)
{
    // The results of the search dialog come first, then the quick searches.
    m_quickSearchGroup->actions().at(n >= 0 ? 1 + qMin(n, lastQuickSearch) : 0)->setChecked(true);
}

void MainWindowActions::showVatMode(bool vatIncluded)
{
    action(vatIncluded ? "vatIncludedAction" : "vatExcludedAction")->setChecked(true);
}

void MainWindowActions::showColumns(const QTableView* rows)
{
    for (const auto& column : rowColumns) {
        QAction* columnAction = action(column.name);
        const QSignalBlocker blocker(columnAction);
        columnAction->setChecked(!rows->isColumnHidden(column.column));
    }
}
