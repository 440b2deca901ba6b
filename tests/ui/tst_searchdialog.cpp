#include "core/invoicetablemodel.h"
#include "core/registry.h"
#include "domain/invoicecriteria.h"
#include "tst_mainwindowfixture.h"
#include "ui/searchdialog.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QtTest>

namespace {

using Dialog = Recorded<SearchDialog>;

QLineEdit* field(QDialog* dialog, const char* name)
{
    return dialog->findChild<QLineEdit*>(QString::fromLatin1(name));
}

QComboBox* combo(QDialog* dialog, const char* name)
{
    return dialog->findChild<QComboBox*>(QString::fromLatin1(name));
}

// Checks exactly the invoice types in the list.
void checkTypes(QDialog* dialog, const QList<int>& types)
{
    for (int type = 0; type < 6; ++type)
        dialog->findChild<QCheckBox*>(QStringLiteral("typeCheck%1").arg(type))
            ->setChecked(types.contains(type));
}

} // namespace

class TestSearchDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void typedFieldsBecomeCriteria();
    void criteriaComeBackIntoFields();
    void refusedFields_data();
    void refusedFields();
    void cancelAndClear();
    void windowListsWhatTheDialogFinds();

private:
    std::unique_ptr<WindowFixture> m_f;
    int m_virtanen = -1;
    int m_makinen = -1;
};

void TestSearchDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestSearchDialog::init()
{
    m_f = std::make_unique<WindowFixture>();
    QVERIFY(m_f->start());
    m_virtanen = m_f->addCustomer(QStringLiteral("Virtanen Oy"));
    m_makinen = m_f->addCustomer(QStringLiteral("Mäkinen Tmi"));
    m_f->refresh();
}

void TestSearchDialog::cleanup()
{
    m_f.reset();
}

void TestSearchDialog::typedFieldsBecomeCriteria()
{
    InvoiceCriteria criteria;
    Dialog dialog(m_f->registry(), &criteria);
    const struct
    {
        const char* field;
        const char* text;
    } typed[] = { { "dateFromEdit", "1.2.2024" }, { "dateToEdit", "29022024" },
        { "dueDateFromEdit", "15.3.2024" }, { "deliveryDateToEdit", "31,12,2024" },
        { "numberFromEdit", "10" }, { "numberToEdit", "20x" },
        { "referenceNumberEdit", "rf18 5390 0754 7034" }, { "textEdit", " *levy* " } };
    for (const auto& entry : typed)
        typeText(field(&dialog, entry.field), QLatin1String(entry.text));
    combo(&dialog, "customerCombo")->setCurrentText(QStringLiteral("Mäkinen Tmi"));
    checkTypes(&dialog, { 0, 1, 2, 3 });
    combo(&dialog, "paymentStatusCombo")->setCurrentIndex(2);
    dialog.findChild<QSpinBox*>(QStringLiteral("limitSpin"))->setValue(50);

    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const QList<QDate> dates = { criteria.dateFrom, criteria.dateTo, criteria.dueDateFrom,
        criteria.dueDateTo, criteria.deliveryDateFrom, criteria.deliveryDateTo };
    QCOMPARE(dates,
        QList<QDate>({ QDate(2024, 2, 1), QDate(2024, 2, 29), QDate(2024, 3, 15), QDate(), QDate(),
            QDate(2024, 12, 31) }));
    // The validator took no letter.
    QCOMPARE(QList<int>({ criteria.numberFrom, criteria.numberTo }), QList<int>({ 10, 20 }));
    QCOMPARE(criteria.customerId, m_makinen);
    // Invoice, interest invoice, credit note and reminder: bits 0 to 3.
    QCOMPARE(criteria.types, 0xf);
    QCOMPARE(criteria.paymentStatus, 1);
    QCOMPARE(criteria.referenceNumber, QStringLiteral("RF18539007547034"));
    QCOMPARE(criteria.text, QStringLiteral("*levy*"));
    QCOMPARE(criteria.limit, 50);
}

void TestSearchDialog::criteriaComeBackIntoFields()
{
    InvoiceCriteria criteria;
    criteria.dateFrom = QDate(2023, 12, 1);
    criteria.dueDateTo = QDate(2024, 1, 31);
    criteria.numberTo = 99;
    criteria.customerId = m_virtanen;
    criteria.types = (1 << 2) | (1 << 3);
    criteria.paymentStatus = 0;
    criteria.balanceDate = QDate(2024, 2, 29);
    criteria.text = QStringLiteral("asennus?");
    Dialog dialog(m_f->registry(), &criteria);
    QStringList shown;
    for (const char* name :
        { "dateFromEdit", "dueDateToEdit", "numberFromEdit", "numberToEdit", "balanceDateEdit" })
        shown.append(field(&dialog, name)->text());
    shown.append(combo(&dialog, "customerCombo")->currentText());
    shown.append(combo(&dialog, "paymentStatusCombo")->currentText());
    for (int type = 0; type < 6; ++type) {
        if (dialog.findChild<QCheckBox*>(QStringLiteral("typeCheck%1").arg(type))->isChecked())
            shown.append(QString::number(type));
    }
    QCOMPARE(shown,
        QStringList({ "1.12.2023", "31.1.2024", "", "99", "29.2.2024", "Virtanen Oy", "Maksetut",
            "2", "3" }));

    // Read back unchanged.
    InvoiceCriteria read;
    QVERIFY(dialog.readCriteria(&read));
    QCOMPARE(QList<QDate>({ read.dateFrom, read.dueDateTo, read.balanceDate }),
        QList<QDate>({ criteria.dateFrom, criteria.dueDateTo, criteria.balanceDate }));
    QCOMPARE(QList<int>({ read.numberFrom, read.numberTo, read.customerId, read.types,
                 read.paymentStatus, read.limit }),
        QList<int>({ -1, 99, m_virtanen, criteria.types, 0, -1 }));
    QCOMPARE(read.text, criteria.text);
}

void TestSearchDialog::refusedFields_data()
{
    addFieldColumns();
    addFieldRow("no such day", "dateFromEdit", "30.2.2024",
        QStringLiteral("Päivämäärä \"30.2.2024\" on virheellinen."));
    addFieldRow("words", "dueDateToEdit", "huomenna",
        QStringLiteral("Päivämäärä \"huomenna\" on virheellinen."));
    addFieldRow("balance date", "balanceDateEdit", "1.13.",
        QStringLiteral("Päivämäärä \"1.13.\" on virheellinen."));
    addFieldRow("unknown customer", "customerCombo", "Nieminen",
        QStringLiteral("Asiakasta \"Nieminen\" ei löytynyt."));
    addFieldRow("no type", "types", "", QStringLiteral("Valitse vähintään yksi laskun tyyppi."));
}

void TestSearchDialog::refusedFields()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, warning);

    InvoiceCriteria criteria;
    criteria.numberFrom = 5;
    Dialog dialog(m_f->registry(), &criteria);
    if (field == QLatin1String("customerCombo"))
        combo(&dialog, "customerCombo")->setEditText(text);
    else if (field == QLatin1String("types"))
        checkTypes(&dialog, {});
    else
        typeText(dialog.findChild<QLineEdit*>(field), text);
    typeText(::field(&dialog, "numberToEdit"), QStringLiteral("8"));
    dialog.accept();
    QCOMPARE(dialog.warnings, QStringList { warning });
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(QList<int>({ criteria.numberFrom, criteria.numberTo }), QList<int>({ 5, -1 }));
}

void TestSearchDialog::cancelAndClear()
{
    InvoiceCriteria criteria;
    criteria.dateFrom = QDate(2024, 1, 1);
    criteria.customerId = m_virtanen;
    criteria.types = 1;
    criteria.text = QStringLiteral("x");
    {
        Dialog dialog(m_f->registry(), &criteria);
        typeText(field(&dialog, "numberFromEdit"), QStringLiteral("3"));
        dialog.reject();
        QCOMPARE(criteria.numberFrom, -1);
        QCOMPARE(criteria.customerId, m_virtanen);
    }
    Dialog dialog(m_f->registry(), &criteria);
    dialog.clearFields();
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(criteria.dateFrom, QDate());
    QCOMPARE(QList<int>({ criteria.customerId, criteria.types, criteria.paymentStatus }),
        QList<int>({ -1, -1, -1 }));
    QCOMPARE(criteria.text, QString());
}

void TestSearchDialog::windowListsWhatTheDialogFinds()
{
    for (int number = 1; number <= 4; ++number) {
        m_f->addInvoice(number, number % 2 ? m_virtanen : m_makinen, QDate(2024, 3, number),
            QDate(2024, 3, number + 14), 0, 0);
    }
    m_f->refresh();
    m_f->window()->dialogHandler = [](QDialog* dialog) {
        combo(dialog, "customerCombo")->setCurrentText(QStringLiteral("Mäkinen Tmi"));
        dialog->accept();
        return dialog->result();
    };
    m_f->action("searchAction")->trigger();
    QVERIFY(m_f->window()->messages.isEmpty());
    auto shown = [this] { return shownColumn(m_f->window(), InvoiceTableModel::NumberColumn); };
    QCOMPARE(shown(), QStringList({ "2", "4" }));
    QVERIFY(m_f->action("searchResultsAction")->isChecked());
    // A quick search and back: the results come again.
    m_f->action("quickSearch0Action")->trigger();
    QCOMPARE(shown().size(), 4);
    m_f->action("searchResultsAction")->trigger();
    QCOMPARE(shown(), QStringList({ "2", "4" }));
}

QTEST_MAIN(TestSearchDialog)
#include "tst_searchdialog.moc"
