#include "core/invoiceitemtablemodel.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/decimalformat.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/settings.h"
#include "logcapture.h"
#include "tst_mainwindowfixture.h"
#include "ui/referencenumberdialog.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTableWidget>
#include <QtTest>

namespace {

// The 7-3-1 check digit, computed here without the program's helpers.
QString withCheckDigit(const QString& base)
{
    static const int weights[] = { 7, 3, 1 };
    int sum = 0;
    for (int i = 0; i < base.size(); ++i)
        sum += base.at(base.size() - 1 - i).digitValue() * weights[i % 3];
    return base + QString::number((10 - sum % 10) % 10);
}

QString money(qint64 cents)
{
    return DecimalFormat(2, 2).format(cents);
}

} // namespace

class TestMainWindowInvoices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void startsWithOneNewInvoice();
    void saveChecksInOrder();
    void totalIsNeverRefused();
    void numberInUseIsRefused();
    void removeInvoice_data();
    void removeInvoice();
    void removeOnlyInvoiceLeavesEmptyView();
    void copyInvoice();
    void editMode();
    void closeRefusedWhileInvalid();
    void quickSearches_data();
    void quickSearches();
    void navigationFollowsShownOrder();
    void clipboardBetweenInvoices();
    void vatModeIsStored();
    void paymentOutsideEditMode();
    void tooLargeAmountIsReported();
    void referenceNumberCommand();
    void helpPage();

private:
    TestWindow* window() const { return m_f->window(); }
    QTableView* rows() const { return m_f->window()->invoiceItemTableView(); }
    MainModel* model() const { return m_f->window()->model(); }
    QLineEdit* edit(const char* name) const { return m_f->widget<QLineEdit>(name); }
    QComboBox* customerCombo() const { return m_f->widget<QComboBox>("customerCombo"); }
    QString label(const char* name) const { return m_f->widget<QLabel>(name)->text(); }
    QStringList texts(std::initializer_list<const char*> names) const;
    // F8, the product number, then the quantity two cells to the right.
    void addRow(const QString& product, const QString& quantity);
    // F8 and a text, but no product.
    void addTextRow(const QString& text);
    void save() { press(Qt::Key_S, Qt::ControlModifier); }
    QList<int> shownNumbers() const;
    // Three invoices 1..3 of Virtanen, stored directly.
    void addThreeInvoices();
    QVariant stored(const QString& sql) const { return m_f->storedValue(sql); }

    std::unique_ptr<WindowFixture> m_f;
    int m_virtanen = -1;
    int m_makinen = -1;
    int m_account = -1;
};

void TestMainWindowInvoices::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestMainWindowInvoices::init()
{
    m_f = std::make_unique<WindowFixture>();
    QVERIFY(m_f->start());
    m_virtanen = m_f->addCustomer(QStringLiteral("Virtanen Oy"));
    m_makinen = m_f->addCustomer(
        QStringLiteral("Mäkinen Tmi"), QStringLiteral("7 päivää netto"), QStringLiteral("1232"));
    // 80,00 an hour without VAT; 125,50 a piece with VAT 25,5 %.
    m_f->addProduct(QStringLiteral("1"), QStringLiteral("Suunnittelu"), QStringLiteral("h"), 800000,
        2550, true);
    m_f->addProduct(QStringLiteral("2"), QStringLiteral("Kiintolevy"), QStringLiteral("kpl"),
        1255000, 2550, false);
    m_account
        = m_f->addBankAccount(QStringLiteral("Osuuspankki"), QStringLiteral("FI2112345600000785"));
    m_f->refresh();
    QVERIFY(window()->messages.isEmpty());
}

void TestMainWindowInvoices::cleanup()
{
    m_f.reset();
}

QStringList TestMainWindowInvoices::texts(std::initializer_list<const char*> names) const
{
    QStringList result;
    for (const char* name : names)
        result.append(m_f->text(name));
    return result;
}

void TestMainWindowInvoices::addRow(const QString& product, const QString& quantity)
{
    press(Qt::Key_F8);
    QVERIFY(editing(rows()));
    keys(product);
    commitEditor(rows());
    QCOMPARE(rows()->currentIndex().column(), int(InvoiceItemTableModel::ProductColumn));
    QTest::keyClick(rows(), Qt::Key_Right);
    QTest::keyClick(rows(), Qt::Key_Right);
    keys(quantity);
    commitEditor(rows());
}

void TestMainWindowInvoices::addTextRow(const QString& text)
{
    press(Qt::Key_F8);
    press(Qt::Key_Escape);
    QTest::keyClick(rows(), Qt::Key_Right);
    keys(text);
    commitEditor(rows());
}

QList<int> TestMainWindowInvoices::shownNumbers() const
{
    QList<int> numbers;
    for (const QString& text : shownColumn(window(), InvoiceTableModel::NumberColumn))
        numbers.append(text.toInt());
    return numbers;
}

void TestMainWindowInvoices::addThreeInvoices()
{
    for (int number = 1; number <= 3; ++number)
        m_f->addInvoice(number, m_virtanen, QDate(2024, 3, number), QDate(2024, 3, number + 14),
            1000 * number, 1000 * number);
    m_f->refresh();
    QCOMPARE(shownNumbers(), (QList<int> { 1, 2, 3 }));
}

void TestMainWindowInvoices::startsWithOneNewInvoice()
{
    QVERIFY(window()->hasInvoice());
    QVERIFY(window()->isEditMode());
    QCOMPARE(model()->invoice()->id, -1);
    // The new database's terms, 14 days, and interest, 8 %.
    QCOMPARE(texts({ "numberEdit", "dateEdit", "paymentTermsEdit", "dueDateEdit", "interestEdit",
                 "referenceNumberEdit" }),
        QStringList({ "1", "15.3.2024", "14 päivää netto", "29.3.2024", "8",
            withCheckDigit(QStringLiteral("100")) }));
    QCOMPARE(customerCombo()->currentText(), QString());
    QCOMPARE(label("positionLabel"), QStringLiteral("Uusi lasku"));

    // Untouched, it is not worth a refusal: the program closes and
    // nothing is stored.
    QVERIFY(window()->close());
    QVERIFY(window()->messages.isEmpty());
    QCOMPARE(m_f->storedInvoiceCount(), 0);
}

void TestMainWindowInvoices::saveChecksInOrder()
{
    // A good row, a row with a text but no product, an empty row, a payment
    // without a date and a delivery date that does not exist.
    addRow(QStringLiteral("1"), QStringLiteral("2"));
    addTextRow(QStringLiteral("Matkakulut"));
    press(Qt::Key_F8);
    press(Qt::Key_Escape);
    m_f->widget<QPushButton>("addPaymentButton")->click();
    press(Qt::Key_Escape);
    replaceText(edit("deliveryDateEdit"), QStringLiteral("31.2.2024"));

    const QStringList expected = {
        QStringLiteral("Valitse laskun saaja ennen tallentamista."),
        QStringLiteral("Toimituspäivämäärä on virheellinen."),
        QStringLiteral("Valitse tuote riville 2 ennen laskun tallentamista."),
        QStringLiteral("Syötä maksusuorituksen päivämäärä ennen laskun tallentamista."),
    };
    save();
    QCOMPARE(window()->messages, expected.mid(0, 1));

    // A part of one name is enough.
    chooseCustomer(customerCombo(), QStringLiteral("virta"));
    QCOMPARE(model()->invoice()->customerId, m_virtanen);
    QCOMPARE(customerCombo()->currentText(), QStringLiteral("Virtanen Oy"));
    save();
    QCOMPARE(window()->messages, expected.mid(0, 2));

    replaceText(edit("deliveryDateEdit"), QStringLiteral("1.3.2024"));
    save();
    QCOMPARE(window()->messages, expected.mid(0, 3));
    // The empty row went; the product cell of the second row is open.
    QCOMPARE(model()->invoiceItemTableModel()->rowCount(), 2);
    QVERIFY(editing(rows()));
    QCOMPARE(rows()->currentIndex(), model()->invoiceItemTableModel()->index(1, 0));
    keys(QStringLiteral("2"));
    commitEditor(rows());
    QCOMPARE(model()->invoiceItemTableModel()->index(1, 1).data().toString(),
        QStringLiteral("Matkakulut"));

    save();
    QCOMPARE(window()->messages, expected);
    QTableView* payments = window()->paymentTableView();
    QVERIFY(editing(payments));
    QCOMPARE(payments->currentIndex(),
        model()->paymentTableModel()->index(0, PaymentTableModel::DateColumn));
    keys(QStringLiteral("14.3.2024"));
    commitEditor(payments);
    QCOMPARE(m_f->storedInvoiceCount(), 0);

    LogCapture log("veklari.ui");
    save();
    QCOMPARE(window()->messages, expected);
    QVERIFY2(log.contains(QStringLiteral("debug: Tallennetaan lasku id=-1")),
        qPrintable(log.lines().join('\n')));
    QCOMPARE(
        stored(QStringLiteral("SELECT delivery_date FROM invoice")).toDate(), QDate(2024, 3, 1));
    QCOMPARE(stored(QStringLiteral("SELECT count(*) FROM invoice_item")).toInt(), 2);
    QCOMPARE(stored(QStringLiteral("SELECT date FROM payment")).toDate(), QDate(2024, 3, 14));
}

void TestMainWindowInvoices::totalIsNeverRefused()
{
    // Each row stays below the row limit, the two together far above the
    // 999 999,99 that the message names.
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    addRow(QStringLiteral("1"), QStringLiteral("8000"));
    addRow(QStringLiteral("1"), QStringLiteral("8000"));
    save();
    QVERIFY2(window()->messages.isEmpty(), qPrintable(window()->messages.join('\n')));
    // 2 x 8000 h x 80,00 x 1,255
    QCOMPARE(stored(QStringLiteral("SELECT total_amount FROM invoice")).toLongLong(),
        Q_INT64_C(160640000));
}

void TestMainWindowInvoices::numberInUseIsRefused()
{
    for (const char* quantity : { "1", "2" }) {
        press(Qt::Key_F7);
        chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
        addRow(QStringLiteral("2"), QLatin1String(quantity));
        save();
    }
    QVERIFY(window()->messages.isEmpty());
    const int id = model()->invoice()->id;
    auto column = [this, id](const char* name) {
        return stored(
            QStringLiteral("SELECT %1 FROM invoice WHERE id = %2").arg(QLatin1String(name)).arg(id))
            .toString();
    };
    QCOMPARE(column("number"), QStringLiteral("2"));
    // A new invoice stays editable after its first save.
    QVERIFY(window()->isEditMode());

    replaceText(edit("numberEdit"), QStringLiteral("1"));
    save();
    QCOMPARE(window()->messages, QStringList { QStringLiteral("Laskun numero 1 on jo käytössä.") });
    QCOMPARE(m_f->text("numberEdit"), QStringLiteral("2"));
    QCOMPARE(column("number"), QStringLiteral("2"));

    replaceText(edit("numberEdit"), QStringLiteral("7"));
    save();
    QCOMPARE(window()->messages.size(), 1);
    QCOMPARE(column("number"), QStringLiteral("7"));
    // The reference follows the number: the template {I}00 and its check
    // digit.
    QCOMPARE(column("reference_number"), withCheckDigit(QStringLiteral("700")));
    QCOMPARE(shownNumbers(), (QList<int> { 1, 7 }));
}

void TestMainWindowInvoices::removeInvoice_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<int>("shownNumber");
    QTest::addColumn<QString>("position");
    QTest::newRow("first") << 0 << true << 2 << "Lasku 1 / 2";
    QTest::newRow("middle") << 1 << true << 1 << "Lasku 1 / 2";
    QTest::newRow("last") << 2 << true << 2 << "Lasku 2 / 2";
    QTest::newRow("answered no") << 1 << false << 2 << "Lasku 2 / 3";
}

void TestMainWindowInvoices::removeInvoice()
{
    QFETCH(int, row);
    QFETCH(bool, answer);
    QFETCH(int, shownNumber);
    QFETCH(QString, position);

    addThreeInvoices();
    press(Qt::Key_PageUp, Qt::ControlModifier);
    for (int i = 0; i < row; ++i)
        press(Qt::Key_PageDown);
    window()->answer = answer;
    press(Qt::Key_Delete, Qt::ControlModifier);
    QCOMPARE(window()->questions,
        QStringList { QStringLiteral("Haluatko varmasti poistaa laskun %1?").arg(row + 1) });
    QVERIFY(window()->messages.isEmpty());
    QCOMPARE(m_f->storedInvoiceCount(), answer ? 2 : 3);
    QCOMPARE(m_f->text("numberEdit"), QString::number(shownNumber));
    QCOMPARE(label("positionLabel"), position);
    QCOMPARE(shownNumbers().contains(row + 1), !answer);
    const int last = shownNumbers().last();

    // A new invoice that was never saved goes without touching the
    // database; the view moves to the last invoice.
    press(Qt::Key_F7);
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    window()->answer = true;
    m_f->action("removeInvoiceAction")->trigger();
    QCOMPARE(m_f->storedInvoiceCount(), answer ? 2 : 3);
    QCOMPARE(model()->invoice()->number, last);
}

void TestMainWindowInvoices::removeOnlyInvoiceLeavesEmptyView()
{
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    addRow(QStringLiteral("2"), QStringLiteral("1"));
    m_f->widget<QPushButton>("addPaymentButton")->click();
    keys(QStringLiteral("1.3.2024"));
    commitEditor(window()->paymentTableView());
    save();
    QCOMPARE(m_f->storedInvoiceCount(), 1);

    m_f->action("removeInvoiceAction")->trigger();
    QCOMPARE(window()->questions.size(), 1);
    for (const char* table : { "invoice", "invoice_item", "payment" })
        QCOMPARE(
            stored(QStringLiteral("SELECT count(*) FROM %1").arg(QLatin1String(table))).toInt(), 0);
    QVERIFY(!window()->hasInvoice());
    QCOMPARE(texts({ "numberEdit", "dateEdit" }), QStringList({ "", "" }));
    QCOMPARE(customerCombo()->currentText(), QString());
    QCOMPARE(model()->invoiceItemTableModel()->rowCount(), 0);
    QCOMPARE(window()->invoiceTableView()->model()->rowCount(), 0);
    QCOMPARE(label("totalLabel"), money(0));
    QVERIFY(!m_f->action("removeInvoiceAction")->isEnabled());
    QVERIFY(!m_f->action("editModeAction")->isEnabled());
    // Nothing is shown, so nothing stops the program from closing; F7
    // starts over.
    QVERIFY(window()->saveInvoice());
    press(Qt::Key_F7);
    QVERIFY(window()->hasInvoice());
    QCOMPARE(m_f->text("numberEdit"), QStringLiteral("1"));
}

void TestMainWindowInvoices::copyInvoice()
{
    chooseCustomer(customerCombo(), QStringLiteral("Mäkinen Tmi"));
    // The customer's own terms and reference number.
    QCOMPARE(texts({ "paymentTermsEdit", "dueDateEdit", "referenceNumberEdit" }),
        QStringList({ "7 päivää netto", "22.3.2024", "1232" }));
    const struct
    {
        const char* field;
        const char* text;
    } fields[]
        = { { "deliveryEdit", "Posti" }, { "buyerRefEdit", "Tilaus 15" }, { "sellerRefEdit", "MK" },
              { "interestEdit", "9.5" }, { "noticeText1Edit", "Kiitos tilauksesta" },
              { "noticeText2Edit", "Toimitus viikolla 12" } };
    for (const auto& field : fields)
        replaceText(edit(field.field), QString::fromUtf8(field.text));
    m_f->widget<QPushButton>("addAttributeButton")->click();
    keys(QStringLiteral("projekti"));
    press(Qt::Key_Tab);
    keys(QStringLiteral("Piha"));
    commitEditor(m_f->widget<QTableWidget>("attributeTable"));
    addRow(QStringLiteral("1"), QStringLiteral("3"));
    addRow(QStringLiteral("2"), QStringLiteral("2"));
    save();
    QVERIFY2(window()->messages.isEmpty(), qPrintable(window()->messages.join('\n')));
    const QString total = label("totalLabel");
    const int sourceId = model()->invoice()->id;

    press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(window()->messages.isEmpty());
    const Invoice* copy = model()->invoice();
    QCOMPARE(copy->id, -1);
    QCOMPARE(copy->number, 2);
    QCOMPARE(copy->customerId, m_makinen);
    QCOMPARE(copy->dueDate, QDate(2024, 3, 22));
    QCOMPARE(copy->interestOnArrears, 950);
    QCOMPARE(copy->referenceNumber, QStringLiteral("1232"));
    QCOMPARE(
        copy->property(QStringLiteral("attributes/projekti")).toString(), QStringLiteral("Piha"));
    QCOMPARE(customerCombo()->currentText(), QStringLiteral("Mäkinen Tmi"));
    for (const auto& field : fields) {
        if (qstrcmp(field.field, "interestEdit") != 0)
            QCOMPARE(m_f->text(field.field), QString::fromUtf8(field.text));
    }
    QCOMPARE(m_f->text("interestEdit"), DecimalFormat(2, 0).format(950));
    QCOMPARE(m_f->widget<QTableWidget>("attributeTable")->rowCount(), 1);
    InvoiceItemTableModel* items = model()->invoiceItemTableModel();
    QCOMPARE(items->rowCount(), 2);
    QCOMPARE(items->index(0, InvoiceItemTableModel::QuantityColumn).data().toString(),
        QStringLiteral("3"));
    QCOMPARE(label("totalLabel"), total);

    save();
    const QString sql = QStringLiteral("SELECT total_amount FROM invoice WHERE id = %1");
    QCOMPARE(stored(sql.arg(model()->invoice()->id)).toLongLong(),
        stored(sql.arg(sourceId)).toLongLong());
    QVERIFY(stored(
        QStringLiteral("SELECT properties FROM invoice WHERE id = %1").arg(model()->invoice()->id))
                .toString()
                .contains(QStringLiteral("attributes/projekti=Piha")));
}

void TestMainWindowInvoices::editMode()
{
    addThreeInvoices();
    press(Qt::Key_PageUp, Qt::ControlModifier);
    const int id = model()->invoice()->id;
    QAction* editAction = m_f->action("editModeAction");
    auto editable = [this] {
        return !edit("deliveryEdit")->isReadOnly() && !edit("numberEdit")->isReadOnly()
            && customerCombo()->isEnabled() && m_f->action("addInvoiceItemAction")->isEnabled();
    };
    QVERIFY(!window()->isEditMode() && !editAction->isChecked() && !editable());
    QCOMPARE(window()->lastInvoiceId(), -1);

    press(Qt::Key_F6);
    QVERIFY(window()->isEditMode() && editAction->isChecked() && editable());
    QCOMPARE(window()->lastInvoiceId(), id);
    replaceText(edit("deliveryEdit"), QStringLiteral("Nouto"));

    press(Qt::Key_F6);
    QVERIFY(window()->messages.isEmpty());
    QVERIFY(!window()->isEditMode() && !editable());
    QCOMPARE(window()->lastInvoiceId(), -1);
    QCOMPARE(
        stored(QStringLiteral("SELECT delivery FROM invoice WHERE id = %1").arg(id)).toString(),
        QStringLiteral("Nouto"));

    // Switching off with an invalid invoice keeps edit mode on.
    press(Qt::Key_F6);
    addTextRow(QStringLiteral("Ilman tuotetta"));
    QVERIFY(!window()->toggleEditMode(false));
    QCOMPARE(window()->messages,
        QStringList { QStringLiteral("Valitse tuote riville 1 ennen laskun tallentamista.") });
    QVERIFY(window()->isEditMode() && editAction->isChecked());
    QCOMPARE(window()->lastInvoiceId(), id);
}

void TestMainWindowInvoices::closeRefusedWhileInvalid()
{
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    addTextRow(QStringLiteral("Asennus"));
    QVERIFY(!window()->close());
    QVERIFY(window()->isVisible());
    QCOMPARE(window()->messages,
        QStringList { QStringLiteral("Valitse tuote riville 1 ennen laskun tallentamista.") });
    QSettings* settings = m_f->registry()->appSettings();
    QVERIFY(!settings->contains(QStringLiteral("mainWindow/geometry")));
    QCOMPARE(m_f->storedInvoiceCount(), 0);

    keys(QStringLiteral("1"));
    commitEditor(rows());
    m_f->action("showVatAction")->trigger();
    QVERIFY(window()->close());
    QCOMPARE(m_f->storedInvoiceCount(), 1);
    for (const char* key :
        { "mainWindow/geometry", "mainWindow/state", "mainWindow/invoiceTable/columns",
            "mainWindow/paymentTable/columns", "mainWindow/invoiceItemTable/columns",
            "mainWindow/invoiceTable/size", "mainWindow/invoiceTable/hidden" })
        QVERIFY2(settings->contains(QLatin1String(key)), key);

    // The next start shows the columns as they were left.
    QVERIFY(m_f->restart());
    QVERIFY(rows()->isColumnHidden(InvoiceItemTableModel::VatColumn));
    QVERIFY(!m_f->action("showVatAction")->isChecked());
    QVERIFY(m_f->action("showDiscountAction")->isChecked());
}

void TestMainWindowInvoices::quickSearches_data()
{
    QTest::addColumn<int>("n");
    QTest::addColumn<QList<int>>("numbers");
    QTest::addColumn<QString>("position");
    QTest::addColumn<QList<int>>("afterRestart");

    const QList<int> all = { 1, 2, 3, 4 };
    QTest::newRow("latest") << 0 << all << "Lasku 4 / 4" << all;
    QTest::newRow("due") << 1 << QList<int> { 3, 4 } << "Lasku 2 / 2" << QList<int> { 3, 4 };
    QTest::newRow("open") << 2 << QList<int> { 2, 3 } << "Lasku – / 2" << QList<int> { 2, 3 };
    QTest::newRow("today") << 3 << QList<int> { 3 } << "Lasku – / 1" << QList<int> { 3 };
    // At start-up no invoice is shown yet, so there is no customer to
    // look for.
    QTest::newRow("customer") << 4 << QList<int> { 2, 4 } << "Lasku 2 / 2" << all;
}

void TestMainWindowInvoices::quickSearches()
{
    QFETCH(int, n);
    QFETCH(QList<int>, numbers);
    QFETCH(QString, position);
    QFETCH(QList<int>, afterRestart);

    // Today is 15.3.2024.
    m_f->addInvoice(1, m_virtanen, QDate(2024, 1, 10), QDate(2024, 1, 24), 10000, 0);
    m_f->addInvoice(2, m_makinen, QDate(2024, 2, 20), QDate(2024, 3, 5), 5000, 5000);
    m_f->addInvoice(3, m_virtanen, QDate(2024, 3, 15), QDate(2024, 3, 29), 7000, 7000);
    m_f->addInvoice(4, m_makinen, QDate(2024, 3, 10), QDate(2024, 3, 24), 3000, 0);
    m_f->refresh();
    press(Qt::Key_PageDown, Qt::ControlModifier);
    QCOMPARE(model()->invoice()->number, 4);

    press(Qt::Key_1 + n, Qt::ControlModifier);
    QVERIFY(window()->messages.isEmpty());
    QCOMPARE(shownNumbers(), numbers);
    QCOMPARE(label("positionLabel"), position);
    const QByteArray action = "quickSearch" + QByteArray::number(n) + "Action";
    QVERIFY(m_f->action(action)->isChecked());
    QCOMPARE(model()->invoice()->number, 4);

    // The choice is the database's and comes back with the program.
    QVERIFY(m_f->restart());
    QCOMPARE(shownNumbers(), afterRestart);
    QVERIFY(m_f->action(action)->isChecked());
}

void TestMainWindowInvoices::navigationFollowsShownOrder()
{
    addThreeInvoices();
    press(Qt::Key_PageUp, Qt::ControlModifier);
    QCOMPARE(label("positionLabel"), QStringLiteral("Lasku 1 / 3"));
    QVERIFY(!m_f->action("previousAction")->isEnabled());
    press(Qt::Key_PageDown);
    press(Qt::Key_PageDown);
    QCOMPARE(model()->invoice()->number, 3);
    QVERIFY(!m_f->action("nextAction")->isEnabled());
    press(Qt::Key_PageDown);
    QCOMPARE(model()->invoice()->number, 3);
    press(Qt::Key_PageUp);
    QCOMPARE(label("positionLabel"), QStringLiteral("Lasku 2 / 3"));

    // Sorted newest first, the first shown is the newest.
    window()->invoiceTableView()->sortByColumn(
        InvoiceTableModel::NumberColumn, Qt::DescendingOrder);
    press(Qt::Key_PageUp, Qt::ControlModifier);
    QCOMPARE(model()->invoice()->number, 3);
    QCOMPARE(label("positionLabel"), QStringLiteral("Lasku 1 / 3"));
    press(Qt::Key_PageDown);
    QCOMPARE(model()->invoice()->number, 2);

    // Enter on a row of the list opens it.
    QTableView* list = window()->invoiceTableView();
    list->setFocus();
    list->setCurrentIndex(list->model()->index(2, 0));
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(model()->invoice()->number, 1);
    QCOMPARE(label("positionLabel"), QStringLiteral("Lasku 3 / 3"));
}

void TestMainWindowInvoices::clipboardBetweenInvoices()
{
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    addRow(QStringLiteral("1"), QStringLiteral("2.5"));
    addRow(QStringLiteral("2"), QStringLiteral("3"));
    InvoiceItemTableModel* items = model()->invoiceItemTableModel();
    auto rowTexts = [items] {
        QStringList result;
        for (int row = 0; row < items->rowCount(); ++row) {
            for (int column = 0; column < items->columnCount(); ++column)
                result.append(items->index(row, column).data().toString());
        }
        return result;
    };
    const QStringList source = rowTexts();
    rows()->setFocus();
    rows()->selectAll();
    m_f->action("copyInvoiceItemsAction")->trigger();
    press(Qt::Key_F7);
    chooseCustomer(customerCombo(), QStringLiteral("Mäkinen Tmi"));
    rows()->setFocus();
    QTest::keyClick(rows(), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(rowTexts(), source);
    // Cut takes the selected row out.
    rows()->selectRow(0);
    QTest::keyClick(rows(), Qt::Key_X, Qt::ControlModifier);
    QCOMPARE(rowTexts(), source.mid(items->columnCount()));
    save();
    QCOMPARE(m_f->storedInvoiceCount(), 2);
}

void TestMainWindowInvoices::vatModeIsStored()
{
    InvoiceItemTableModel* items = model()->invoiceItemTableModel();
    auto priceHeader = [items] {
        return items->headerData(InvoiceItemTableModel::PriceColumn, Qt::Horizontal).toString();
    };
    QCOMPARE(priceHeader(), QStringLiteral("à-hinta, ALV"));
    m_f->action("vatExcludedAction")->trigger();
    QVERIFY(window()->messages.isEmpty());
    QCOMPARE(priceHeader(), QStringLiteral("à-hinta, ei ALV"));
    QVERIFY(stored(QStringLiteral("SELECT properties FROM settings"))
                .toString()
                .contains(QStringLiteral("settings/vatIncluded=false")));

    QVERIFY(m_f->restart());
    QVERIFY(m_f->action("vatExcludedAction")->isChecked());
    QVERIFY(!model()->invoiceItemTableModel()->isVatIncluded());

    // A settings table that is gone cannot take the choice.
    QVERIFY(m_f->exec(QStringLiteral("DROP TABLE settings")));
    m_f->action("vatIncludedAction")->trigger();
    QCOMPARE(window()->messages.size(), 1);
    QVERIFY2(window()->messages.at(0).startsWith(
                 QStringLiteral("Asetusten tallentaminen epäonnistui. ")),
        qPrintable(window()->messages.at(0)));
    QVERIFY(window()->messages.at(0).size() > 40);
}

void TestMainWindowInvoices::paymentOutsideEditMode()
{
    m_f->registry()->settings()->setProperty(
        QStringLiteral("settings/defaultBankAccount"), m_account);
    QVERIFY(model()->saveSettings());
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    addRow(QStringLiteral("2"), QStringLiteral("2"));
    press(Qt::Key_F6);
    QVERIFY(!window()->isEditMode());
    QCOMPARE(m_f->storedInvoiceCount(), 1);

    QPushButton* add = m_f->widget<QPushButton>("addPaymentButton");
    QVERIFY(add->isEnabled());
    QTest::mouseClick(add, Qt::LeftButton);
    // What is still open, on the default account; the date is typed.
    const Payment* payment = model()->paymentTableModel()->paymentAt(0);
    QCOMPARE(payment->bankAccountId, m_account);
    QCOMPARE(payment->amount, 25100);
    QVERIFY(!payment->date.isValid());
    keys(QStringLiteral("20.3.2024"));
    commitEditor(window()->paymentTableView());
    QCOMPARE(label("balanceLabel"), money(0));

    save();
    QVERIFY(window()->messages.isEmpty());
    QCOMPARE(stored(QStringLiteral("SELECT bank_account_id FROM payment")).toInt(), m_account);
    QCOMPARE(stored(QStringLiteral("SELECT amount FROM payment")).toInt(), 25100);
    QCOMPARE(stored(QStringLiteral("SELECT balance FROM invoice")).toInt(), 0);
    QCOMPARE(shownColumn(window(), InvoiceTableModel::BalanceColumn), QStringList { money(0) });
}

void TestMainWindowInvoices::tooLargeAmountIsReported()
{
    addRow(QStringLiteral("1"), QStringLiteral("200000"));
    QTRY_COMPARE(window()->messages,
        QStringList {
            QStringLiteral("Laskurivin määrä, à-hinta tai summa ei saa ylittää 999 999,99.") });
    InvoiceItem item;
    QVERIFY(model()->invoiceItemTableModel()->toInvoiceItem(0, &item));
    QCOMPARE(item.quantity, 0);
}

void TestMainWindowInvoices::referenceNumberCommand()
{
    bool opened = false;
    window()->dialogHandler = [&opened](QDialog*) {
        opened = true;
        return int(QDialog::Rejected);
    };
    press(Qt::Key_L, Qt::ControlModifier);
    QCOMPARE(window()->messages, QStringList { QStringLiteral("Valitse ensin laskun saaja.") });
    QVERIFY(!opened);

    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    window()->dialogHandler = [](QDialog* dialog) {
        if (!qobject_cast<ReferenceNumberDialog*>(dialog))
            return int(QDialog::Rejected);
        dialog->findChild<QLineEdit*>(QStringLiteral("baseEdit"))->setText(QStringLiteral("4242"));
        QTest::mouseClick(
            dialog->findChild<QPushButton*>(QStringLiteral("useRfButton")), Qt::LeftButton);
        dialog->findChild<QCheckBox*>(QStringLiteral("customerCheck"))->setChecked(true);
        dialog->accept();
        return dialog->result();
    };
    press(Qt::Key_L, Qt::ControlModifier);
    QCOMPARE(window()->messages.size(), 1);

    // 4242 with its check digit, then as RF: "RF00" after the digits,
    // letters as numbers (R = 27, F = 15), 98 - remainder modulo 97.
    const QString national = withCheckDigit(QStringLiteral("4242"));
    const qint64 remainder = (national + QStringLiteral("271500")).toLongLong() % 97;
    const QString rf
        = QStringLiteral("RF%1%2").arg(98 - remainder, 2, 10, QLatin1Char('0')).arg(national);
    QCOMPARE(model()->invoice()->referenceNumber, rf);
    QCOMPARE(m_f->text("referenceNumberEdit").remove(QLatin1Char(' ')), rf);
    QCOMPARE(
        stored(
            QStringLiteral("SELECT reference_number FROM customer WHERE id = %1").arg(m_virtanen))
            .toString(),
        rf);
}

void TestMainWindowInvoices::helpPage()
{
    press(Qt::Key_F1);
    QCOMPARE(window()->openedUrls,
        QList<QUrl> { QUrl(QStringLiteral("https://veklari.fi/ohje?v=1.28.1")) });
    QVERIFY(window()->messages.isEmpty());
    window()->urlOpens = false;
    press(Qt::Key_F1);
    QCOMPARE(window()->messages,
        QStringList { QStringLiteral(
            "Web-sivun avaaminen epäonnistui. Katso ohjeet osoitteesta https://veklari.fi/ohje") });
}

QTEST_MAIN(TestMainWindowInvoices)
#include "tst_mainwindowinvoices.moc"
