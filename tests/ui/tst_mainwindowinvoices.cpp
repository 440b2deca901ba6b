#include "core/invoiceitemtablemodel.h"
#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/paymenttablemodel.h"
#include "core/registry.h"
#include "domain/decimalformat.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "logcapture.h"
#include "tst_mainwindowfixture.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableView>
#include <QtTest>

class TestMainWindowInvoices : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void saveChecksInOrder();
    void mistypedDateIsRefused();
    void numberInUseIsRefused();
    void removeInvoice_data();
    void removeInvoice();
    void removeOnlyInvoiceLeavesEmptyView();
    void copyInvoice();
    void editMode();
    void closeRefusedWhileInvalid();
    void tooLargeNumbersAreRefused_data();
    void tooLargeNumbersAreRefused();
    void productFromTypedText_data();
    void productFromTypedText();

private:
    TestWindow* window() const { return m_f->window(); }
    QTableView* rows() const { return m_f->window()->invoiceItemTableView(); }
    MainModel* model() const { return m_f->window()->model(); }
    QLineEdit* edit(const char* name) const { return m_f->widget<QLineEdit>(name); }
    QComboBox* customerCombo() const { return m_f->widget<QComboBox>("customerCombo"); }
    QString label(const char* name) const { return m_f->widget<QLabel>(name)->text(); }
    void addRow(const QString& product, const QString& quantity);
    void addTextRow(const QString& text);
    void save() { press(Qt::Key_S, Qt::ControlModifier); }
    QString shownNumbers() const
    {
        return shownColumn(window(), InvoiceTableModel::NumberColumn).join(u' ');
    }
    void addThreeInvoices();
    QVariant stored(const QString& sql) const { return m_f->storedValue(sql); }
    QStringList shownFields(const QStringList& names) const
    {
        QStringList result;
        for (const QString& name : names)
            result.append(m_f->text(qPrintable(name)));
        return result;
    }

    std::unique_ptr<WindowFixture> m_f;
    int m_virtanen = -1;
    int m_makinen = -1;
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

void TestMainWindowInvoices::mistypedDateIsRefused()
{
    chooseCustomer(customerCombo(), QStringLiteral("Virtanen Oy"));
    addRow(QStringLiteral("1"), QStringLiteral("2"));
    replaceText(edit("dateEdit"), QStringLiteral("45.45.2026"));
    save();
    QCOMPARE(
        window()->messages, QStringList { QStringLiteral("Laskun päivämäärä on virheellinen.") });
    QCOMPARE(QApplication::focusWidget(), edit("dateEdit"));
    QCOMPARE(m_f->text("dateEdit"), QStringLiteral("45.45.2026"));
    QCOMPARE(m_f->storedInvoiceCount(), 0);

    replaceText(edit("dateEdit"), QStringLiteral("14.3.2024"));
    save();
    QCOMPARE(window()->messages.size(), 1);
    QCOMPARE(stored(QStringLiteral("SELECT date FROM invoice")).toString(),
        QStringLiteral("2024-03-14"));
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
    QVERIFY(!window()->hasInvoice() && !m_f->action("removeInvoiceAction")->isEnabled());
    QCOMPARE(m_f->text("numberEdit") + customerCombo()->currentText(), QString());
    QCOMPARE(model()->invoiceItemTableModel()->rowCount()
            + window()->invoiceTableView()->model()->rowCount(),
        0);
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
    QCOMPARE(shownFields({ "dueDateEdit", "referenceNumberEdit" }),
        QStringList({ "22.3.2024", "1232" }));
    const QStringList fields = { "deliveryEdit", "buyerRefEdit", "sellerRefEdit", "interestEdit",
        "noticeText1Edit", "noticeText2Edit" };
    QStringList values = { "Posti", "Tilaus 15", "MK", "9.5", "Kiitos", "Viikolla 12" };
    for (int i = 0; i < fields.size(); ++i)
        replaceText(edit(qPrintable(fields.at(i))), values.at(i));
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
    // Due date from the copied terms; the reference number is the new
    // invoice's own ("{I}00" for invoice 2 and its check digit), not the
    // customer's that the source got when the customer was chosen.
    QCOMPARE(copy->dueDate.toString(Qt::ISODate) + ' ' + copy->referenceNumber,
        QStringLiteral("2024-03-22 2008"));
    // The interest is shown the way the program formats it.
    values[3] = DecimalFormat(2, 0).format(950);
    QCOMPARE(shownFields(fields), values);
    QCOMPARE(model()->invoiceItemTableModel()->rowCount(), 2);
    QCOMPARE(label("totalLabel"), total);

    save();
    const QString sql
        = QStringLiteral("SELECT total_amount || properties FROM invoice WHERE id = ");
    QCOMPARE(stored(sql + QString::number(model()->invoice()->id)).toString(),
        stored(sql + QString::number(sourceId)).toString());
}

void TestMainWindowInvoices::editMode()
{
    addThreeInvoices();
    press(Qt::Key_PageUp, Qt::ControlModifier);
    const int id = model()->invoice()->id;
    QAction* editAction = m_f->action("editModeAction");
    // "editable" or "read-only" when the invoice is so and looks so: outside
    // edit mode every field wears the window's colour (the combo boxes are
    // disabled); "mixed" otherwise.
    auto editable = [this] {
        int looksEditable = 0;
        const QList<QLineEdit*> edits = window()->findChildren<QLineEdit*>();
        for (const QLineEdit* field : edits) {
            const QPalette palette = field->palette();
            if (!qobject_cast<QComboBox*>(field->parentWidget()) && field->isVisible()
                && palette.color(QPalette::Base) != palette.color(QPalette::Window))
                ++looksEditable;
        }
        if (rows()->palette().color(QPalette::Base) != rows()->palette().color(QPalette::Window))
            ++looksEditable;
        const bool fields = !edit("deliveryEdit")->isReadOnly() && !edit("numberEdit")->isReadOnly()
            && customerCombo()->isEnabled() && m_f->action("addInvoiceItemAction")->isEnabled();
        // Eleven fields and the rows; the reference number is never typed here.
        if (fields && looksEditable == 12)
            return QStringLiteral("editable");
        if (!fields && looksEditable == 0)
            return QStringLiteral("read-only");
        return QStringLiteral("mixed %1").arg(looksEditable);
    };
    QVERIFY(!window()->isEditMode());
    QCOMPARE(editable(), QStringLiteral("read-only"));
    QCOMPARE(window()->lastInvoiceId(), -1);

    press(Qt::Key_F6);
    QVERIFY(window()->isEditMode() && editAction->isChecked());
    QCOMPARE(editable(), QStringLiteral("editable"));
    QCOMPARE(window()->lastInvoiceId(), id);
    replaceText(edit("deliveryEdit"), QStringLiteral("Nouto"));

    press(Qt::Key_F6);
    QVERIFY(!window()->isEditMode() && !editAction->isChecked());
    QCOMPARE(editable(), QStringLiteral("read-only"));
    QCOMPARE(window()->lastInvoiceId(), -1);
    QCOMPARE(
        stored(QStringLiteral("SELECT delivery FROM invoice WHERE id = %1").arg(id)).toString(),
        QStringLiteral("Nouto"));
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
}

void TestMainWindowInvoices::tooLargeNumbersAreRefused_data()
{
    QTest::addColumn<bool>("payment");
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("message");
    // The limits as the cells show numbers.
    const qint64 max = DecimalFormat::maxParsedValue;
    const QString price = DecimalFormat(4, 2).format(max);
    const QString quantity = DecimalFormat(4, 0).format(max);
    const QString cents = DecimalFormat(2, 2).format(max);
    // A row's refusal opens with the row message, then names the field.
    const QString row
        = QStringLiteral("Laskurivin määrä, à-hinta tai summa ei saa ylittää 999 999,99.\n");
    QTest::addRow("unit price") << false << int(InvoiceItemTableModel::PriceColumn) << "250000"
                                << row
            + QStringLiteral("À-hinta on liian suuri. Suurin sallittu à-hinta on %1.").arg(price);
    QTest::addRow("negative quantity")
        << false << int(InvoiceItemTableModel::QuantityColumn) << "-250000"
        << row + QStringLiteral("Määrä on liian suuri. Suurin sallittu määrä on %1.").arg(quantity);
    QTest::addRow("discount") << false << int(InvoiceItemTableModel::DiscountColumn)
                              << "99999999999"
                              << row + "Alennus on liian suuri. Suurin sallittu alennus on 100 %.";
    QTest::addRow("payment")
        << true << int(PaymentTableModel::AmountColumn) << "25000000"
        << QStringLiteral("Suorituksen summa on liian suuri. Suurin sallittu summa on %1.")
               .arg(cents);
}

// Typed into the cell, a number too large to be read is refused with its
// limit, and the cell keeps what it had.
void TestMainWindowInvoices::tooLargeNumbersAreRefused()
{
    QFETCH(bool, payment);
    QFETCH(int, column);
    QFETCH(QString, text);
    QFETCH(QString, message);
    addRow(QStringLiteral("2"), QStringLiteral("3"));
    QTableView* view = rows();
    if (payment) {
        m_f->widget<QPushButton>("addPaymentButton")->click();
        keys(QStringLiteral("1.3.2024"));
        commitEditor(window()->paymentTableView());
        view = window()->paymentTableView();
    }
    const QModelIndex cell = view->model()->index(0, column);
    const QString before = cell.data().toString();
    QVERIFY(!before.isEmpty());
    view->setFocus();
    view->setCurrentIndex(cell);
    keys(text);
    commitEditor(view);
    QTRY_COMPARE(window()->messages, QStringList { message });
    QCOMPARE(cell.data().toString(), before);
}

void TestMainWindowInvoices::productFromTypedText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("keys"); // pressed after the text
    QTest::addColumn<QString>("product"); // the row's product number afterwards
    const int enter = Qt::Key_Return;
    QTest::addRow("part of one name") << "unnit" << QList<int> { enter } << "1";
    QTest::addRow("part of one name, any case") << "KIINTO" << QList<int> { enter } << "2";
    // "i" is in every name: 1 Suunnittelu, 2 Kiintolevy, 999 Viivästyskorko.
    QTest::addRow("highlighted of several")
        << "i" << QList<int> { Qt::Key_Down, Qt::Key_Down, enter } << "2";
    // None highlighted: the list closes and the text means no product.
    QTest::addRow("several, none highlighted") << "i" << QList<int> { enter, enter } << "";
    QTest::addRow("no match") << "kahvi" << QList<int> { enter } << "";
}

// The product cell of a new row, typed into and left with the keyboard.
void TestMainWindowInvoices::productFromTypedText()
{
    QFETCH(QString, text);
    QFETCH(QList<int>, keys);
    QFETCH(QString, product);
    press(Qt::Key_F8);
    ::keys(text);
    for (int key : keys) {
        QVERIFY(editing(rows()));
        press(key);
    }
    QTRY_VERIFY(!editing(rows()));
    QCOMPARE(model()->invoiceItemTableModel()->invoiceItemAt(0)->productNumber, product);
}

QTEST_MAIN(TestMainWindowInvoices)
#include "tst_mainwindowinvoices.moc"
