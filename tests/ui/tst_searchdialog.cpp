#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/invoicecriteria.h"
#include "domain/invoiceitem.h"
#include "storage/database.h"
#include "storage/query.h"
#include "tst_mainwindowfixture.h"
#include "ui/searchdialog.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QtTest>

namespace {

// Records the warnings instead of showing message boxes.
class Dialog : public SearchDialog
{
public:
    using SearchDialog::SearchDialog;
    QStringList warnings;

protected:
    void showWarning(const QString& text) override { warnings.append(text); }
};

QLineEdit* field(QDialog* dialog, const char* name)
{
    return dialog->findChild<QLineEdit*>(QString::fromLatin1(name));
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
    void cancelLeavesCriteriaAlone();
    void clearListsEverything();
    void windowSearchesWithTheDialog_data();
    void windowSearchesWithTheDialog();

private:
    void addInvoiceWithRows(int number, int customerId, int type, const QStringList& texts);

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

void TestSearchDialog::addInvoiceWithRows(
    int number, int customerId, int type, const QStringList& texts)
{
    const int id = m_f->addInvoice(
        number, customerId, QDate(2024, 3, number), QDate(2024, 3, number + 14), 0, 0);
    std::unique_ptr<Query> query(m_f->database()->query());
    if (type != 0)
        QVERIFY(m_f->exec(
            QStringLiteral("UPDATE invoice SET type = %1 WHERE id = %2").arg(type).arg(id)));
    for (int row = 0; row < texts.size(); ++row) {
        InvoiceItem item;
        item.invoiceId = id;
        item.productNumber = QStringLiteral("1");
        item.text = texts.at(row);
        item.rowNumber = row;
        QVERIFY2(query->saveInvoiceItem(&item), qPrintable(query->lastError()));
    }
}

void TestSearchDialog::typedFieldsBecomeCriteria()
{
    InvoiceCriteria criteria;
    Dialog dialog(m_f->registry(), &criteria);
    typeText(field(&dialog, "dateFromEdit"), QStringLiteral("1.2.2024"));
    typeText(field(&dialog, "dateToEdit"), QStringLiteral("29022024"));
    typeText(field(&dialog, "dueDateFromEdit"), QStringLiteral("15.3.2024"));
    typeText(field(&dialog, "deliveryDateToEdit"), QStringLiteral("31,12,2024"));
    typeText(field(&dialog, "numberFromEdit"), QStringLiteral("10"));
    typeText(field(&dialog, "numberToEdit"), QStringLiteral("20x"));
    QComboBox* customer = dialog.findChild<QComboBox*>(QStringLiteral("customerCombo"));
    customer->setCurrentIndex(customer->findText(QStringLiteral("Mäkinen Tmi")));
    dialog.findChild<QCheckBox*>(QStringLiteral("typeCheck4"))->setChecked(false);
    dialog.findChild<QCheckBox*>(QStringLiteral("typeCheck5"))->setChecked(false);
    dialog.findChild<QComboBox*>(QStringLiteral("paymentStatusCombo"))->setCurrentIndex(2);
    typeText(field(&dialog, "referenceNumberEdit"), QStringLiteral("rf18 5390 0754 7034"));
    typeText(field(&dialog, "textEdit"), QStringLiteral(" *levy* "));
    dialog.findChild<QSpinBox*>(QStringLiteral("limitSpin"))->setValue(50);

    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(criteria.dateFrom, QDate(2024, 2, 1));
    QCOMPARE(criteria.dateTo, QDate(2024, 2, 29));
    QCOMPARE(criteria.dueDateFrom, QDate(2024, 3, 15));
    QCOMPARE(criteria.dueDateTo, QDate());
    QCOMPARE(criteria.deliveryDateFrom, QDate());
    QCOMPARE(criteria.deliveryDateTo, QDate(2024, 12, 31));
    QCOMPARE(criteria.numberFrom, 10);
    // The validator took no letter.
    QCOMPARE(criteria.numberTo, 20);
    QCOMPARE(criteria.customerId, m_makinen);
    // Invoice, interest invoice, credit note and reminder: bits 0 to 3.
    QCOMPARE(criteria.types, 0xf);
    QCOMPARE(criteria.paymentStatus, 1);
    QCOMPARE(criteria.referenceNumber, QStringLiteral("RF18539007547034"));
    QCOMPARE(criteria.text, QStringLiteral("*levy*"));
    QCOMPARE(criteria.limit, 50);
    QVERIFY(criteria.descending);
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
    QCOMPARE(field(&dialog, "dateFromEdit")->text(), QStringLiteral("1.12.2023"));
    QCOMPARE(field(&dialog, "dueDateToEdit")->text(), QStringLiteral("31.1.2024"));
    QCOMPARE(field(&dialog, "numberFromEdit")->text(), QString());
    QCOMPARE(field(&dialog, "numberToEdit")->text(), QStringLiteral("99"));
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("customerCombo"))->currentText(),
        QStringLiteral("Virtanen Oy"));
    for (int type = 0; type < 6; ++type)
        QCOMPARE(dialog.findChild<QCheckBox*>(QStringLiteral("typeCheck%1").arg(type))->isChecked(),
            type == 2 || type == 3);
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("paymentStatusCombo"))->currentText(),
        QStringLiteral("Maksetut"));
    QCOMPARE(field(&dialog, "balanceDateEdit")->text(), QStringLiteral("29.2.2024"));

    // Read back unchanged.
    InvoiceCriteria read;
    QVERIFY(dialog.readCriteria(&read));
    QCOMPARE(read.dateFrom, criteria.dateFrom);
    QCOMPARE(read.dueDateTo, criteria.dueDateTo);
    QCOMPARE(read.numberFrom, -1);
    QCOMPARE(read.numberTo, 99);
    QCOMPARE(read.customerId, m_virtanen);
    QCOMPARE(read.types, criteria.types);
    QCOMPARE(read.paymentStatus, 0);
    QCOMPARE(read.balanceDate, criteria.balanceDate);
    QCOMPARE(read.text, criteria.text);
    QCOMPARE(read.limit, -1);
}

void TestSearchDialog::refusedFields_data()
{
    QTest::addColumn<QString>("fieldName");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("warning");

    QTest::addRow("no such day") << "dateFromEdit"
                                 << "30.2.2024"
                                 << "Päivämäärä \"30.2.2024\" on virheellinen.";
    QTest::addRow("words") << "dueDateToEdit"
                           << "huomenna"
                           << "Päivämäärä \"huomenna\" on virheellinen.";
    QTest::addRow("balance date") << "balanceDateEdit"
                                  << "1.13."
                                  << "Päivämäärä \"1.13.\" on virheellinen.";
    QTest::addRow("unknown customer") << "customerCombo"
                                      << "Nieminen"
                                      << "Asiakasta \"Nieminen\" ei löytynyt.";
    QTest::addRow("no type") << "types"
                             << ""
                             << "Valitse vähintään yksi laskun tyyppi.";
}

void TestSearchDialog::refusedFields()
{
    QFETCH(QString, fieldName);
    QFETCH(QString, text);
    QFETCH(QString, warning);

    InvoiceCriteria criteria;
    criteria.numberFrom = 5;
    Dialog dialog(m_f->registry(), &criteria);
    if (fieldName == QLatin1String("customerCombo")) {
        dialog.findChild<QComboBox*>(fieldName)->setEditText(text);
    } else if (fieldName == QLatin1String("types")) {
        for (QCheckBox* check : dialog.findChildren<QCheckBox*>())
            check->setChecked(false);
    } else {
        typeText(dialog.findChild<QLineEdit*>(fieldName), text);
    }
    typeText(field(&dialog, "numberToEdit"), QStringLiteral("8"));
    dialog.accept();
    QCOMPARE(dialog.warnings, QStringList { warning });
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(criteria.numberFrom, 5);
    QCOMPARE(criteria.numberTo, -1);
}

void TestSearchDialog::cancelLeavesCriteriaAlone()
{
    InvoiceCriteria criteria;
    criteria.customerId = m_virtanen;
    Dialog dialog(m_f->registry(), &criteria);
    typeText(field(&dialog, "numberFromEdit"), QStringLiteral("3"));
    dialog.reject();
    QCOMPARE(criteria.numberFrom, -1);
    QCOMPARE(criteria.customerId, m_virtanen);
}

void TestSearchDialog::clearListsEverything()
{
    InvoiceCriteria criteria;
    criteria.dateFrom = QDate(2024, 1, 1);
    criteria.customerId = m_virtanen;
    criteria.types = 1;
    criteria.text = QStringLiteral("x");
    Dialog dialog(m_f->registry(), &criteria);
    dialog.clearFields();
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(criteria.dateFrom, QDate());
    QCOMPARE(criteria.customerId, -1);
    QCOMPARE(criteria.types, -1);
    QCOMPARE(criteria.paymentStatus, -1);
    QCOMPARE(criteria.text, QString());
}

void TestSearchDialog::windowSearchesWithTheDialog_data()
{
    QTest::addColumn<QString>("fieldName");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QList<int>>("numbers");

    QTest::addRow("a word anywhere in a row") << "textEdit"
                                              << "*levy*" << QList<int> { 1, 3 };
    QTest::addRow("one character") << "textEdit"
                                   << "Kiintolevy ? TB" << QList<int> { 1 };
    QTest::addRow("the whole text only") << "textEdit"
                                         << "levy" << QList<int> {};
    QTest::addRow("customer") << "customerCombo"
                              << "Mäkinen Tmi" << QList<int> { 2, 4 };
    QTest::addRow("number range") << "numberFromEdit"
                                  << "2" << QList<int> { 2, 3, 4 };
    QTest::addRow("credit notes") << "types"
                                  << "2" << QList<int> { 4 };
}

void TestSearchDialog::windowSearchesWithTheDialog()
{
    QFETCH(QString, fieldName);
    QFETCH(QString, text);
    QFETCH(QList<int>, numbers);

    addInvoiceWithRows(1, m_virtanen, 0, { QStringLiteral("Kiintolevy 2 TB") });
    addInvoiceWithRows(2, m_makinen, 0, { QStringLiteral("Suunnittelu") });
    addInvoiceWithRows(
        3, m_virtanen, 0, { QStringLiteral("Asennus"), QStringLiteral("Levyjen vaihto") });
    addInvoiceWithRows(4, m_makinen, 2, { QStringLiteral("Hyvitys") });
    m_f->refresh();

    m_f->window()->dialogHandler = [&](QDialog* dialog) {
        if (fieldName == QLatin1String("customerCombo")) {
            QComboBox* combo = dialog->findChild<QComboBox*>(fieldName);
            combo->setCurrentIndex(combo->findText(text));
        } else if (fieldName == QLatin1String("types")) {
            for (int type = 0; type < 6; ++type)
                dialog->findChild<QCheckBox*>(QStringLiteral("typeCheck%1").arg(type))
                    ->setChecked(type == text.toInt());
        } else {
            typeText(dialog->findChild<QLineEdit*>(fieldName), text);
        }
        dialog->accept();
        return dialog->result();
    };
    m_f->action("searchAction")->trigger();
    QVERIFY(m_f->window()->messages.isEmpty());
    QList<int> shown;
    for (const QString& number : shownColumn(m_f->window(), InvoiceTableModel::NumberColumn))
        shown.append(number.toInt());
    QCOMPARE(shown, numbers);
    QVERIFY(m_f->action("searchResultsAction")->isChecked());

    // A quick search and back: the results come again.
    m_f->action("quickSearch0Action")->trigger();
    QCOMPARE(shownColumn(m_f->window(), InvoiceTableModel::NumberColumn).size(), 4);
    m_f->action("searchResultsAction")->trigger();
    QCOMPARE(shownColumn(m_f->window(), InvoiceTableModel::NumberColumn).size(), numbers.size());
}

QTEST_MAIN(TestSearchDialog)
#include "tst_searchdialog.moc"
