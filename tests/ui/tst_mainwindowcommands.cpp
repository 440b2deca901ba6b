#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/invoice.h"
#include "domain/invoicecriteria.h"
#include "tst_mainwindowfixture.h"
#include "ui/bankaccountdialog.h"
#include "ui/copydialog.h"
#include "ui/customerdialog.h"
#include "ui/databaselistdialog.h"
#include "ui/emailsettingsdialog.h"
#include "ui/exportdialog.h"
#include "ui/finvoicedialog.h"
#include "ui/irpdialog.h"
#include "ui/productdialog.h"
#include "ui/ravelodialog.h"
#include "ui/referencenumberdialog.h"
#include "ui/searchdialog.h"
#include "ui/settingsdialog.h"

#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTabWidget>
#include <QtTest>

namespace {

QList<QAction*> actionsWithText(QWidget* window, const QString& text)
{
    QList<QAction*> result;
    for (QAction* action : window->findChildren<QAction*>()) {
        if (action->text() == text && !action->menu())
            result.append(action);
    }
    return result;
}

// The texts that share the letter Alt picks, by letter.
QStringList clashes(const QStringList& texts)
{
    QMap<QChar, QStringList> byLetter;
    for (const QString& text : texts) {
        const qsizetype at = text.indexOf(QLatin1Char('&'));
        if (at >= 0 && at + 1 < text.size())
            byLetter[text.at(at + 1).toUpper()].append(text);
    }
    QStringList result;
    for (auto it = byLetter.cbegin(); it != byLetter.cend(); ++it) {
        if (it.value().size() > 1)
            result.append(QString(it.key()) + QStringLiteral(": ") + it.value().join(u','));
    }
    return result;
}

// The texts whose letters reach a widget shown with root: the captions of
// fields, buttons and boxes.
QStringList mnemonicTexts(QWidget* root)
{
    QStringList texts;
    for (const QLabel* label : root->findChildren<QLabel*>()) {
        if (label->buddy() && label->isVisibleTo(root))
            texts.append(label->text());
    }
    for (const QAbstractButton* button : root->findChildren<QAbstractButton*>()) {
        if (button->isVisibleTo(root))
            texts.append(button->text());
    }
    for (const QGroupBox* box : root->findChildren<QGroupBox*>()) {
        if (box->isVisibleTo(root))
            texts.append(box->title());
    }
    return texts;
}

// Claims Ctrl+E for the watched field, as line edits do on X11.
class ClaimCtrlE : public QObject
{
public:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() != QEvent::ShortcutOverride
            || static_cast<QKeyEvent*>(event)->keyCombination()
                != QKeyCombination(Qt::ControlModifier, Qt::Key_E))
            return false;
        event->accept();
        return true;
    }
};

} // namespace

class TestMainWindowCommands : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void commandTable_data();
    void commandTable();
    void mnemonicsAreUnique_data();
    void mnemonicsAreUnique();
    void exportWinsInTextFields();

private:
    std::unique_ptr<WindowFixture> m_f;
};

void TestMainWindowCommands::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestMainWindowCommands::init()
{
    m_f = std::make_unique<WindowFixture>();
}

void TestMainWindowCommands::cleanup()
{
    m_f.reset();
}

void TestMainWindowCommands::commandTable_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shortcut");
    QTest::addColumn<bool>("enabled");

    const struct
    {
        const char* text;
        const char* shortcut;
        bool enabled;
    } commands[] = {
        { "&Uusi", "F7", true },
        { "&Tulosta", "F9", true },
        { "&Muokkaa", "F6", true },
        { "Lisää &rivi", "F8", true },
        { "P&oista rivi", "", false },
        { "&Poista", "Ctrl+Del", true },
        { "&Lopeta", "Ctrl+Q", true },
        { "&Haku", "Ctrl+F", true },
        { "Haku&tulokset", "", true },
        { "&Viimeisimmät", "Ctrl+1", true },
        { "&Erääntyvät", "Ctrl+2", true },
        { "&Avoimet", "Ctrl+3", true },
        { "&Tämänpäiväiset", "Ctrl+4", true },
        { "Va&littu asiakas", "Ctrl+5", true },
        { "&Edellinen", "PgUp", false },
        { "&Seuraava", "PgDown", false },
        { "E&nsimmäinen", "Ctrl+PgUp", false },
        { "&Viimeinen", "Ctrl+PgDown", false },
        { "&Päivitä tiedot", "", true },
        { "&Sisältö", "F1", true },
        { "V&ie", "Ctrl+E", true },
        { "&Valittu lasku", "Alt+1", true },
        { "&Useita laskuja", "Alt+2", true },
        { "&Maksumuistutus", "Alt+3", true },
        { "Useita m&aksumuistutuksia", "", true },
        { "&Kuitti", "Alt+4", true },
        { "Useita ku&itteja", "", true },
        { "Lasku&luettelo", "Alt+6", true },
        { "&Suorituspäiväkirja", "Alt+7", true },
        { "&Maksusuoritusten tuonti", "Ctrl+I", true },
        { "&Viivästyskoron laskenta", "Ctrl+K", true },
        { "Siirrä ylös", "Ctrl+Up", false },
        { "Siirrä alas", "Ctrl+Down", false },
        { "Ve&rollinen", "", true },
        { "Vero&ton", "", true },
        { "Näytä &alennus-%", "", true },
        { "Näytä a&lennettu à-hinta", "", true },
        { "Näytä ALV-%", "", true },
        { "Valitse &yritys", "F10", true },
        { "&Viitenumero ja lisätiedot", "Ctrl+L", true },
        { "&Ryhmälaskutus", "Ctrl+R", true },
        { "&Kopioi laskurivit", "", false },
        { "&Leikkaa", "Ctrl+X", false },
        { "&Liitä laskurivit", "Ctrl+V", true },
        { "Tee &laskusta kopio", "Ctrl+Shift+C", true },
        { "L&ähetä", "Ctrl+M", true },
        { "&Ravelo-aineiston tuonti", "", true },
        { "&Yrityksen tiedot...", "", true },
        { "&Asiakkaat...", "", true },
        { "&Tuotteet...", "", true },
        { "&Pankkitilit...", "", true },
        { "T&ulostuspohjat...", "", true },
        { "&Sähköpostiasetukset...", "", true },
        { "&Tietoja", "", true },
    };
    for (const auto& command : commands)
        QTest::addRow("%s", command.text)
            << QString::fromUtf8(command.text) << QString::fromLatin1(command.shortcut)
            << command.enabled;
}

void TestMainWindowCommands::commandTable()
{
    QFETCH(QString, text);
    QFETCH(QString, shortcut);
    QFETCH(bool, enabled);

    QVERIFY(m_f->start());
    const QList<QAction*> found = actionsWithText(m_f->window(), text);
    QCOMPARE(found.size(), 1);
    QAction* action = found.at(0);
    QCOMPARE(action->shortcut(), QKeySequence::fromString(shortcut, QKeySequence::PortableText));
    QCOMPARE(action->isEnabled(), enabled);
}

void TestMainWindowCommands::mnemonicsAreUnique_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<int>("page");
    for (const char* name :
        { "main window", "customers", "products", "accounts", "search", "reference number",
            "time entries", "e-mail settings", "group invoicing", "payment import" })
        QTest::newRow(name) << QString::fromLatin1(name) << 0;
    for (int page = 0; page < SettingsDialog::PageCount; ++page)
        QTest::addRow("settings %d", page) << QStringLiteral("settings") << page;
    QTest::newRow("each menu") << QStringLiteral("menus") << 0;
    QTest::newRow("export: PDF") << QStringLiteral("export") << int(ExportDialog::PdfPage);
    QTest::newRow("export: Finvoice")
        << QStringLiteral("export") << int(ExportDialog::FinvoicePage);
    QTest::newRow("Finvoice script") << QStringLiteral("finvoice script") << 0;
    QTest::newRow("databases: file") << QStringLiteral("databases") << 0;
    QTest::newRow("databases: server") << QStringLiteral("databases") << 1;
}

void TestMainWindowCommands::mnemonicsAreUnique()
{
    QFETCH(QString, window);
    QFETCH(int, page);

    QVERIFY(m_f->start());
    Registry* registry = m_f->registry();
    InvoiceCriteria criteria;
    std::unique_ptr<QWidget> dialog;
    QStringList texts;
    QStringList allowed;
    if (window == QLatin1String("menus")) {
        // Within one menu (and its submenus) every entry has its own letter.
        QStringList found;
        QList<const QMenu*> menus;
        for (const QAction* action : m_f->window()->menuBar()->actions())
            menus.append(action->menu());
        while (!menus.isEmpty()) {
            const QMenu* menu = menus.takeFirst();
            QStringList entries;
            for (const QAction* action : menu->actions()) {
                if (!action->isSeparator())
                    entries.append(action->text());
                if (action->menu())
                    menus.append(action->menu());
            }
            // Cut and paste keep their established names, which share a letter.
            const QString cutAndPaste = QStringLiteral("L: &Leikkaa,&Liitä laskurivit");
            for (const QString& clash : clashes(entries)) {
                if (clash != cutAndPaste)
                    found.append(menu->title() + QLatin1String(": ") + clash);
            }
        }
        QVERIFY2(found.isEmpty(), qPrintable(found.join(QLatin1String("; "))));
        return;
    }
    if (window == QLatin1String("main window")) {
        // The menus and the fields of the invoice share the Alt key.
        for (const QAction* menu : m_f->window()->menuBar()->actions())
            texts.append(menu->text());
        texts += mnemonicTexts(m_f->window()->centralWidget());
    } else if (window == QLatin1String("customers")) {
        dialog = std::make_unique<CustomerDialog>(registry);
    } else if (window == QLatin1String("products")) {
        dialog = std::make_unique<ProductDialog>(registry);
    } else if (window == QLatin1String("accounts")) {
        dialog = std::make_unique<BankAccountDialog>(registry);
    } else if (window == QLatin1String("search")) {
        dialog = std::make_unique<SearchDialog>(registry, &criteria);
    } else if (window == QLatin1String("reference number")) {
        dialog = std::make_unique<ReferenceNumberDialog>(registry, m_f->window()->model());
    } else if (window == QLatin1String("payment import")) {
        dialog = std::make_unique<IRPDialog>(registry, m_f->window()->model());
        // Every field shown, as when the file names no account.
        static_cast<IRPDialog*>(dialog.get())->setBankAccountComboBoxVisible(true);
        // The file field and the print button keep their established names,
        // which share a letter.
        allowed = QStringList({ QStringLiteral("T: &Tiedosto:,&Tulosta") });
    } else if (window == QLatin1String("settings")) {
        auto settings = std::make_unique<SettingsDialog>(registry);
        settings->setCurrentPage(page);
        dialog = std::move(settings);
    } else if (window == QLatin1String("export")) {
        auto exportDialog = std::make_unique<ExportDialog>(registry);
        exportDialog->findChild<QTabWidget*>(QStringLiteral("pages"))->setCurrentIndex(page);
        dialog = std::move(exportDialog);
    } else if (window == QLatin1String("time entries")) {
        dialog = std::make_unique<RaveloDialog>(registry);
    } else if (window == QLatin1String("e-mail settings")) {
        dialog = std::make_unique<EmailSettingsDialog>(registry);
    } else if (window == QLatin1String("group invoicing")) {
        dialog = std::make_unique<CopyDialog>(registry, Invoice());
    } else if (window == QLatin1String("finvoice script")) {
        dialog = std::make_unique<FinvoiceDialog>(registry);
    } else {
        dialog = std::make_unique<DatabaseListDialog>(registry);
        dialog->findChild<QComboBox*>(QStringLiteral("typeCombo"))->setCurrentIndex(page);
    }
    if (dialog)
        texts = mnemonicTexts(dialog.get());
    QVERIFY(texts.size() > 2);
    QCOMPARE(clashes(texts), allowed);
}

// On X11 a line edit claims Ctrl+E (end of line) before the shortcuts are
// looked at; other platforms, offscreen too, leave it alone. The filter
// claims it as X11 does, so the test means the same everywhere.
void TestMainWindowCommands::exportWinsInTextFields()
{
    QVERIFY(m_f->start());
    QVERIFY(QTest::qWaitForWindowActive(m_f->window()));
    m_f->action("newInvoiceAction")->trigger();
    QLineEdit* edit = m_f->widget<QLineEdit>("deliveryEdit");
    edit->setText(QStringLiteral("Nouto"));
    edit->setCursorPosition(2);
    edit->setFocus();
    QVERIFY(edit->hasFocus());
    ClaimCtrlE claim;
    edit->installEventFilter(&claim);
    QSignalSpy triggered(m_f->action("exportAction"), &QAction::triggered);
    QTest::keyClick(edit, Qt::Key_E, Qt::ControlModifier);
    QCOMPARE(triggered.count(), 1);
    QCOMPARE(edit->cursorPosition(), 2);
}

QTEST_MAIN(TestMainWindowCommands)
#include "tst_mainwindowcommands.moc"
