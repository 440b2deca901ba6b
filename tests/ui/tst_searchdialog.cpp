#include "core/registry.h"
#include "domain/invoicecriteria.h"
#include "recordfields.h"
#include "tst_mainwindowfixture.h"
#include "ui/searchdialog.h"

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

QCheckBox* typeCheck(QDialog* dialog, int type)
{
    return dialog->findChild<QCheckBox*>(QStringLiteral("typeCheck%1").arg(type));
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
    void refusedFields_data();
    void refusedFields();

private:
    std::unique_ptr<WindowFixture> m_f;
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
    m_f->addCustomer(QStringLiteral("Virtanen Oy"));
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
    const std::pair<const char*, const char*> typed[] = { { "dateFromEdit", "1.2.2024" },
        { "dateToEdit", "29022024" }, { "deliveryDateToEdit", "31,12,2024" },
        { "numberFromEdit", "10" }, { "numberToEdit", "20x" },
        { "referenceNumberEdit", "rf18 5390 0754 7034" }, { "textEdit", " *levy* " } };
    for (const auto& [name, text] : typed)
        typeText(field(&dialog, name), QLatin1String(text));
    combo(&dialog, "customerCombo")->setCurrentText(QStringLiteral("Mäkinen Tmi"));
    for (int type = 0; type < 6; ++type)
        typeCheck(&dialog, type)->setChecked(type < 4);
    combo(&dialog, "paymentStatusCombo")->setCurrentIndex(2);
    dialog.findChild<QSpinBox*>(QStringLiteral("limitSpin"))->setValue(50);
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());

    InvoiceCriteria expected;
    expected.dateFrom = QDate(2024, 2, 1);
    expected.dateTo = QDate(2024, 2, 29);
    expected.deliveryDateTo = QDate(2024, 12, 31);
    expected.numberFrom = 10;
    expected.numberTo = 20;
    expected.customerId = m_makinen;
    // Invoice, interest invoice, credit note and reminder: bits 0 to 3.
    expected.types = 0xf;
    expected.paymentStatus = 1;
    expected.referenceNumber = QStringLiteral("RF18539007547034");
    expected.text = QStringLiteral("*levy*");
    expected.limit = 50;
    expected.descending = true;
    QCOMPARE(RecordFields::of(criteria), RecordFields::of(expected));
}

void TestSearchDialog::refusedFields_data()
{
    addFieldColumns();
    QTest::newRow("no such day") << "dateFromEdit"
                                 << "30.2.2024"
                                 << QStringLiteral("Päivämäärä \"30.2.2024\" on virheellinen.");
    QTest::newRow("unknown customer")
        << "customerCombo"
        << "Nieminen" << QStringLiteral("Asiakasta \"Nieminen\" ei löytynyt.");
    QTest::newRow("no type") << "types"
                             << "" << QStringLiteral("Valitse vähintään yksi laskun tyyppi.");
}

void TestSearchDialog::refusedFields()
{
    QFETCH(QString, field);
    QFETCH(QString, text);
    QFETCH(QString, warning);

    InvoiceCriteria criteria;
    criteria.numberFrom = 5;
    Dialog dialog(m_f->registry(), &criteria);
    if (field == QLatin1String("customerCombo")) {
        combo(&dialog, "customerCombo")->setEditText(text);
    } else if (field == QLatin1String("types")) {
        for (int type = 0; type < 6; ++type)
            typeCheck(&dialog, type)->setChecked(false);
    } else {
        typeText(dialog.findChild<QLineEdit*>(field), text);
    }
    typeText(::field(&dialog, "numberToEdit"), QStringLiteral("8"));
    dialog.accept();
    QCOMPARE(dialog.warnings, QStringList { warning });
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(QList<int>({ criteria.numberFrom, criteria.numberTo }), QList<int>({ 5, -1 }));
}

QTEST_MAIN(TestSearchDialog)
#include "tst_searchdialog.moc"
