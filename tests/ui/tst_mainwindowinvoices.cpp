#include "core/invoiceitemtablemodel.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/decimalformat.h"
#include "domain/invoice.h"
#include "domain/payment.h"
#include "domain/settings.h"
#include "logcapture.h"
#include "tst_mainwindowfixture.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QTableWidget>
#include <QtTest>

class TestMainWindowInvoices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void untouchedNewInvoiceIsNotStored();
    void saveChecksInOrder();
    void totalIsNeverRefused();
    void numberInUseIsRefused();
    void removeInvoice_data();
    void removeInvoice();
    void removeOnlyInvoiceLeavesEmptyView();
    void copyInvoice();
    void editMode();
    void closeRefusedWhileInvalid();
    void customerQuickSearch();
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
    // F8, the product number, then the quantity two cells to the right.
    void addRow(const QString& product, const QString& quantity);
    // F8 and a text, but no product.
    void addTextRow(const QString& text);
    void save() { press(Qt::Key_S, Qt::ControlModifier); }
    QString shownNumbers() const
    {
        return shownColumn(window(), InvoiceTableModel::NumberColumn).join(u' ');
    }
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

void TestMainWindowInvoices::addRow(const QString& product, const QString& quantity)
{
    press(Qt::Key_F8);
    QVERIFY(editing(rows()));
    keys(product);
    commitEditor(rows());
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

void TestMainWindowInvoices::addThreeInvoices()
{
    for (int number = 1; number <= 3; ++number)
        m_f->addInvoice(number, m_virtanen, QDate(2024, 3, number), QDate(2024, 3, number + 14),
            1000 * number, 1000 * number);
    m_f->refresh();
    QCOMPARE(shownNumbers(), QStringLiteral("1 2 3"));
}

void TestMainWindowInvoices::untouchedNewInvoiceIsNotStored()
{
    QVERIFY(window()->hasInvoice() && window()->isEditMode());
    QCOMPARE(label("positionLabel"), QStringLiteral("Uusi lasku"));
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
    save();
    QCOMPARE(window()->messages, expected.mid(0, 2));

    replaceText(edit("deliveryDateEdit"), QStringLiteral("1.3.2024"));
    save();
    QCOMPARE(window()->messages, expected.mid(0, 3));
    // The empty row went; the product cell of the second row is open.
    QCOMPARE(model()->invoiceItemTableModel()->rowCount(), 2);
    QCOMPARE(rows()->currentIndex(), model()->invoiceItemTableModel()->index(1, 0));
    keys(QStringLiteral("2"));
    commitEditor(rows());

    save();
    QCOMPARE(window()->messages, expected);
    QCOMPARE(window()->paymentTableView()->currentIndex(),
        model()->paymentTableModel()->index(0, PaymentTableModel::DateColumn));
    keys(QStringLiteral("14.3.2024"));
    commitEditor(window()->paymentTableView());
    QCOMPARE(m_f->storedInvoiceCount(), 0);

    LogCapture log("veklari.ui");
    save();
    QCOMPARE(window()->messages, expected);
    QVERIFY2(log.contains(QStringLiteral("debug: Tallennetaan lasku id=-1")),
        qPrintable(log.lines().join('\n')));
    QCOMPARE(
        stored(QStringLiteral("SELECT delivery_date || ' ' || (SELECT count(*) FROM "
                              "invoice_item) || ' ' || (SELECT date FROM payment) FROM invoice"))
            .toString(),
        QStringLiteral("2024-03-01 2 2024-03-14"));
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
    const QString sql
        = QStringLiteral("SELECT number || ' ' || reference_number FROM invoice WHERE id = %1")
              .arg(model()->invoice()->id);
    QCOMPARE(stored(sql).toString(), QStringLiteral("2 ") + withCheckDigit("200"));

    replaceText(edit("numberEdit"), QStringLiteral("1"));
    save();
    QCOMPARE(window()->messages, QStringList { QStringLiteral("Laskun numero 1 on jo käytössä.") });
    QCOMPARE(m_f->text("numberEdit"), QStringLiteral("2"));
    QCOMPARE(stored(sql).toString(), QStringLiteral("2 ") + withCheckDigit("200"));

    // A new invoice stays editable after its first save; the reference
    // follows the number: the template {I}00 and its check digit.
    replaceText(edit("numberEdit"), QStringLiteral("7"));
    save();
    QCOMPARE(window()->messages.size(), 1);
    QCOMPARE(stored(sql).toString(), QStringLiteral("7 ") + withCheckDigit("700"));
    QCOMPARE(shownNumbers(), QStringLiteral("1 7"));
}

void TestMainWindowInvoices::removeInvoice_data()
{
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QString>("position");
    QTest::newRow("first") << true << "Lasku 1 / 2";
    QTest::newRow("answered no") << false << "Lasku 1 / 3";
}

void TestMainWindowInvoices::removeInvoice()
{
    QFETCH(bool, answer);
    QFETCH(QString, position);

    addThreeInvoices();
    press(Qt::Key_PageUp, Qt::ControlModifier);
    window()->answer = answer;
    press(Qt::Key_Delete, Qt::ControlModifier);
    QCOMPARE(
        window()->questions, QStringList { QStringLiteral("Haluatko varmasti poistaa laskun 1?") });
    QVERIFY(window()->messages.isEmpty());
    QCOMPARE(m_f->storedInvoiceCount(), answer ? 2 : 3);
    // The first goes to the new first invoice.
    QCOMPARE(m_f->text("numberEdit"), answer ? QStringLiteral("2") : QStringLiteral("1"));
    QCOMPARE(label("positionLabel"), position);

    // A new invoice that was never saved goes without touching the
    // database; the view moves to the last invoice.
    press(Qt::Key_F7);
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    window()->answer = true;
    m_f->action("removeInvoiceAction")->trigger();
    QCOMPARE(m_f->storedInvoiceCount(), answer ? 2 : 3);
    QCOMPARE(model()->invoice()->number, 3);
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
    QCOMPARE(stored(QStringLiteral("SELECT (SELECT count(*) FROM invoice) + (SELECT count(*) FROM "
                                   "invoice_item) + (SELECT count(*) FROM payment)"))
                 .toInt(),
        0);
    QVERIFY(!window()->hasInvoice());
    QCOMPARE(QStringList(
                 { m_f->text("numberEdit"), customerCombo()->currentText(), label("totalLabel") }),
        QStringList({ "", "", DecimalFormat(2, 2).format(0) }));
    QCOMPARE(model()->invoiceItemTableModel()->rowCount()
            + window()->invoiceTableView()->model()->rowCount(),
        0);
    QVERIFY(!m_f->action("removeInvoiceAction")->isEnabled());
    // Nothing is shown, so nothing stops the program from closing; F7
    // starts over.
    QVERIFY(window()->saveInvoice());
    press(Qt::Key_F7);
    QCOMPARE(m_f->text("numberEdit"), QStringLiteral("1"));
}

void TestMainWindowInvoices::copyInvoice()
{
    chooseCustomer(customerCombo(), QStringLiteral("Mäkinen Tmi"));
    // The customer's own terms and reference number.
    QCOMPARE(QStringList({ m_f->text("dueDateEdit"), m_f->text("referenceNumberEdit") }),
        QStringList({ "22.3.2024", "1232" }));
    const QStringList fields = { "deliveryEdit", "buyerRefEdit", "sellerRefEdit", "interestEdit",
        "noticeText1Edit", "noticeText2Edit" };
    QStringList values = { "Posti", "Tilaus 15", "MK", "9.5", "Kiitos", "Viikolla 12" };
    for (int i = 0; i < fields.size(); ++i)
        replaceText(edit(qPrintable(fields.at(i))), values.at(i));
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
    QCOMPARE(QList<int>({ copy->id, copy->number, copy->customerId, copy->interestOnArrears }),
        QList<int>({ -1, 2, m_makinen, 950 }));
    QCOMPARE(copy->dueDate, QDate(2024, 3, 22));
    QCOMPARE(copy->referenceNumber, QStringLiteral("1232"));
    QStringList shown;
    for (const QString& field : fields)
        shown.append(m_f->text(qPrintable(field)));
    // The interest is shown the way the program formats it.
    values[3] = DecimalFormat(2, 0).format(950);
    QCOMPARE(shown, values);
    QCOMPARE(model()->invoiceItemTableModel()->rowCount(), 2);
    QCOMPARE(label("totalLabel"), total);

    save();
    const QString sql
        = QStringLiteral("SELECT total_amount || properties FROM invoice WHERE id = ");
    QCOMPARE(stored(sql + QString::number(model()->invoice()->id)).toString(),
        stored(sql + QString::number(sourceId)).toString());
    QVERIFY(stored(sql + QString::number(sourceId))
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
    QVERIFY(!window()->isEditMode() && !editable());
    QCOMPARE(window()->lastInvoiceId(), -1);

    press(Qt::Key_F6);
    QVERIFY(window()->isEditMode() && editAction->isChecked() && editable());
    QCOMPARE(window()->lastInvoiceId(), id);
    replaceText(edit("deliveryEdit"), QStringLiteral("Nouto"));

    press(Qt::Key_F6);
    QVERIFY(!window()->isEditMode() && !editAction->isChecked() && !editable());
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
    for (const char* key : { "mainWindow/geometry", "mainWindow/invoiceItemTable/columns" })
        QVERIFY2(settings->contains(QLatin1String(key)), key);

    // The next start shows the columns as they were left.
    QVERIFY(m_f->restart());
    QVERIFY(rows()->isColumnHidden(InvoiceItemTableModel::VatColumn));
    QVERIFY(!m_f->action("showVatAction")->isChecked());
}

void TestMainWindowInvoices::customerQuickSearch()
{
    m_f->addInvoice(1, m_virtanen, QDate(2024, 1, 10), QDate(2024, 1, 24), 10000, 0);
    m_f->addInvoice(2, m_makinen, QDate(2024, 2, 20), QDate(2024, 3, 5), 5000, 5000);
    m_f->addInvoice(3, m_makinen, QDate(2024, 3, 10), QDate(2024, 3, 24), 3000, 0);
    m_f->refresh();
    press(Qt::Key_PageDown, Qt::ControlModifier);
    // The customer is the shown invoice's.
    press(Qt::Key_5, Qt::ControlModifier);
    QVERIFY(window()->messages.isEmpty());
    QCOMPARE(shownNumbers(), QStringLiteral("2 3"));
    QCOMPARE(label("positionLabel"), QStringLiteral("Lasku 2 / 2"));

    // The choice comes back with the program, but at start-up no invoice
    // is shown yet, so there is no customer to look for.
    QVERIFY(m_f->restart());
    QVERIFY(m_f->action("quickSearch4Action")->isChecked());
    QCOMPARE(shownNumbers(), QStringLiteral("1 2 3"));
}

void TestMainWindowInvoices::navigationFollowsShownOrder()
{
    addThreeInvoices();
    press(Qt::Key_PageUp, Qt::ControlModifier);
    QVERIFY(!m_f->action("previousAction")->isEnabled());
    for (int i = 0; i < 3; ++i)
        press(Qt::Key_PageDown);
    QCOMPARE(label("positionLabel"), QStringLiteral("Lasku 3 / 3"));
    QVERIFY(!m_f->action("nextAction")->isEnabled());

    // Sorted newest first, the first shown is the newest.
    window()->invoiceTableView()->sortByColumn(
        InvoiceTableModel::NumberColumn, Qt::DescendingOrder);
    press(Qt::Key_PageUp, Qt::ControlModifier);
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
        for (int row = 0; row < items->rowCount(); ++row)
            result.append(
                items->index(row, InvoiceItemTableModel::QuantityColumn).data().toString());
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
    QCOMPARE(rowTexts(), source.mid(1));
}

void TestMainWindowInvoices::vatModeIsStored()
{
    m_f->action("vatExcludedAction")->trigger();
    QVERIFY(window()->messages.isEmpty());
    QVERIFY(m_f->restart());
    QVERIFY(m_f->action("vatExcludedAction")->isChecked());
    QVERIFY(!model()->invoiceItemTableModel()->isVatIncluded());

    // A settings table that is gone cannot take the choice.
    QVERIFY(m_f->exec(QStringLiteral("DROP TABLE settings")));
    m_f->action("vatIncludedAction")->trigger();
    QCOMPARE(window()->messages.size(), 1);
    QVERIFY(window()->messages.at(0).startsWith(
        QStringLiteral("Asetusten tallentaminen epäonnistui. ")));
}

void TestMainWindowInvoices::paymentOutsideEditMode()
{
    m_f->registry()->settings()->setProperty(
        QStringLiteral("settings/defaultBankAccount"), m_account);
    QVERIFY(model()->saveSettings());
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    addRow(QStringLiteral("2"), QStringLiteral("2"));
    // Outside edit mode a new payment is still saved.
    press(Qt::Key_F6);
    QVERIFY(!window()->isEditMode());
    m_f->widget<QPushButton>("addPaymentButton")->click();
    // What is still open, on the default account; the date is typed.
    const Payment* payment = model()->paymentTableModel()->paymentAt(0);
    QCOMPARE(
        QList<int>({ payment->bankAccountId, payment->amount }), QList<int>({ m_account, 25100 }));
    keys(QStringLiteral("20.3.2024"));
    commitEditor(window()->paymentTableView());
    save();
    QVERIFY(window()->messages.isEmpty());
    QCOMPARE(stored(QStringLiteral("SELECT balance FROM invoice")).toInt(), 0);
    QCOMPARE(shownColumn(window(), InvoiceTableModel::BalanceColumn),
        QStringList { DecimalFormat(2, 2).format(0) });
}

void TestMainWindowInvoices::tooLargeAmountIsReported()
{
    addRow(QStringLiteral("1"), QStringLiteral("200000"));
    QTRY_COMPARE(window()->messages,
        QStringList {
            QStringLiteral("Laskurivin määrä, à-hinta tai summa ei saa ylittää 999 999,99.") });
}

void TestMainWindowInvoices::referenceNumberCommand()
{
    press(Qt::Key_L, Qt::ControlModifier);
    QCOMPARE(window()->messages, QStringList { QStringLiteral("Valitse ensin laskun saaja.") });

    // The dialog's number goes into the invoice and, when asked, to the
    // customer.
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    window()->dialogHandler = [](QDialog* dialog) {
        dialog->findChild<QLineEdit*>(QStringLiteral("referenceEdit"))
            ->setText(withCheckDigit("4242"));
        dialog->findChild<QCheckBox*>(QStringLiteral("customerCheck"))->setChecked(true);
        dialog->accept();
        return dialog->result();
    };
    press(Qt::Key_L, Qt::ControlModifier);
    QCOMPARE(window()->messages.size(), 1);
    QCOMPARE(model()->invoice()->referenceNumber, withCheckDigit("4242"));
    QCOMPARE(stored(QStringLiteral("SELECT reference_number FROM customer WHERE name = "
                                   "'Virtanen Oy'"))
                 .toString(),
        withCheckDigit("4242"));
}

void TestMainWindowInvoices::helpPage()
{
    window()->urlOpens = false;
    press(Qt::Key_F1);
    QCOMPARE(window()->openedUrls,
        QList<QUrl> { QUrl(QStringLiteral("https://veklari.fi/ohje?v=1.28.1")) });
    QCOMPARE(window()->messages,
        QStringList { QStringLiteral(
            "Web-sivun avaaminen epäonnistui. Katso ohjeet osoitteesta https://veklari.fi/ohje") });
}

QTEST_MAIN(TestMainWindowInvoices)
#include "tst_mainwindowinvoices.moc"
