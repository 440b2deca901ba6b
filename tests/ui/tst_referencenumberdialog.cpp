#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "tst_mainwindowfixture.h"
#include "ui/referencenumberdialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

namespace {

using Dialog = Recorded<ReferenceNumberDialog>;

// The 7-3-1 check digit, computed here without the program's helpers.
QString national(const QString& base)
{
    static const int weights[] = { 7, 3, 1 };
    int sum = 0;
    for (int i = 0; i < base.size(); ++i)
        sum += base.at(base.size() - 1 - i).digitValue() * weights[i % 3];
    return base + QString::number((10 - sum % 10) % 10);
}

// ISO 11649: the reference, then "RF00" as the digits 2715 00, taken
// modulo 97 one digit at a time; the check is 98 minus the remainder.
QString rf(const QString& reference)
{
    int remainder = 0;
    for (const QChar c : reference + QStringLiteral("271500"))
        remainder = (remainder * 10 + c.digitValue()) % 97;
    return QStringLiteral("RF%1").arg(98 - remainder, 2, 10, QLatin1Char('0')) + reference;
}

template<typename T>
T* child(QDialog* dialog, const char* name)
{
    return dialog->findChild<T*>(QString::fromLatin1(name));
}

} // namespace

class TestReferenceNumberDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void calculator_data();
    void calculator();
    void validReferences_data();
    void validReferences();
    void acceptWritesTheInvoice();
    void rebuildFromTheCompanySettings();
    void savedInvoiceOutsideEditModeIsOnlyShown();

private:
    Invoice* invoice() const { return m_f->window()->model()->invoice(); }

    std::unique_ptr<WindowFixture> m_f;
};

void TestReferenceNumberDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestReferenceNumberDialog::init()
{
    m_f = std::make_unique<WindowFixture>();
    QVERIFY(m_f->start());
    const int customer = m_f->addCustomer(QStringLiteral("Virtanen Oy"));
    m_f->refresh();
    chooseCustomer(m_f->widget<QComboBox>("customerCombo"), QStringLiteral("Virtanen Oy"));
    QCOMPARE(invoice()->customerId, customer);
}

void TestReferenceNumberDialog::cleanup()
{
    m_f.reset();
}

void TestReferenceNumberDialog::calculator_data()
{
    QTest::addColumn<QString>("base");
    QTest::newRow("short") << "123";
    QTest::newRow("spaces") << "4242 0324";
    QTest::newRow("longest") << "1234567890123456789";
}

void TestReferenceNumberDialog::calculator()
{
    QFETCH(QString, base);

    const QString digits = QString(base).remove(QLatin1Char(' '));
    Dialog dialog(m_f->registry(), m_f->window()->model());
    child<QLineEdit>(&dialog, "baseEdit")->setText(base);
    QCOMPARE(child<QLabel>(&dialog, "nationalLabel")->text().remove(' '), national(digits));
    QCOMPARE(child<QLabel>(&dialog, "rfLabel")->text().remove(' '), rf(national(digits)));
    QTest::mouseClick(child<QPushButton>(&dialog, "useNationalButton"), Qt::LeftButton);
    QCOMPARE(dialog.referenceNumber(), national(digits));
    QTest::mouseClick(child<QPushButton>(&dialog, "useRfButton"), Qt::LeftButton);
    QCOMPARE(dialog.referenceNumber(), rf(national(digits)));
    QVERIFY(ReferenceNumberDialog::isValidReference(dialog.referenceNumber()));
}

void TestReferenceNumberDialog::validReferences_data()
{
    QTest::addColumn<QString>("reference");
    QTest::addColumn<bool>("valid");
    const QString good = national(QStringLiteral("123456"));
    QString wrong = good;
    wrong[wrong.size() - 1] = QChar(u'0' + (wrong.back().digitValue() + 1) % 10);
    QTest::newRow("national") << good << true;
    QTest::newRow("with spaces") << good.left(2) + QLatin1Char(' ') + good.mid(2) << true;
    QTest::newRow("wrong check digit") << wrong << false;
    QTest::newRow("too short") << QStringLiteral("13") << false;
    QTest::newRow("letters") << QStringLiteral("12A4") << false;
    QTest::newRow("rf lower case") << rf(good).toLower() << true;
    QTest::newRow("rf wrong check") << QStringLiteral("RF00") + good << false;
    QTest::newRow("rf without reference") << QStringLiteral("RF18") << false;
}

void TestReferenceNumberDialog::validReferences()
{
    QFETCH(QString, reference);
    QFETCH(bool, valid);
    QCOMPARE(ReferenceNumberDialog::isValidReference(reference), valid);
    // The dialog refuses what is not valid and leaves the invoice alone.
    const QString before = invoice()->referenceNumber;
    Dialog dialog(m_f->registry(), m_f->window()->model());
    child<QLineEdit>(&dialog, "referenceEdit")->setText(reference);
    dialog.accept();
    QCOMPARE(dialog.result(), int(valid ? QDialog::Accepted : QDialog::Rejected));
    if (!valid) {
        QCOMPARE(dialog.warnings,
            QStringList { QStringLiteral("Viitenumero %1 on virheellinen.").arg(reference) });
        QCOMPARE(invoice()->referenceNumber, before);
    }
}

void TestReferenceNumberDialog::acceptWritesTheInvoice()
{
    Dialog dialog(m_f->registry(), m_f->window()->model());
    QCOMPARE(dialog.referenceNumber(), invoice()->referenceNumber);
    child<QLineEdit>(&dialog, "referenceEdit")->setText(rf(national("777")).toLower());
    child<QPlainTextEdit>(&dialog, "noticeText1Edit")->setPlainText(QStringLiteral("Kiitos"));
    child<QPlainTextEdit>(&dialog, "noticeText2Edit")->setPlainText(QString());
    QVERIFY(!dialog.saveAsCustomerReference());
    child<QCheckBox>(&dialog, "customerCheck")->setChecked(true);
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QVERIFY(dialog.saveAsCustomerReference());
    QCOMPARE(invoice()->referenceNumber, rf(national("777")));
    QCOMPARE(invoice()->property(QStringLiteral("t1")).toString(), QStringLiteral("Kiitos"));
    QVERIFY(!invoice()->properties.contains(QStringLiteral("t2")));
}

void TestReferenceNumberDialog::rebuildFromTheCompanySettings()
{
    Settings* settings = m_f->registry()->settings();
    settings->setProperty(
        QStringLiteral("settings/referenceNumberTemplate"), QStringLiteral("{I}77"));
    settings->setProperty(QStringLiteral("invoiceForm/noticeText1"), QStringLiteral("Tervetuloa"));
    Dialog dialog(m_f->registry(), m_f->window()->model());
    child<QLineEdit>(&dialog, "referenceEdit")->setText(QString());
    QTest::mouseClick(child<QPushButton>(&dialog, "rebuildButton"), Qt::LeftButton);
    // Invoice 1 with the template {I}77.
    QCOMPARE(dialog.referenceNumber(), national(QStringLiteral("177")));
    QCOMPARE(child<QPlainTextEdit>(&dialog, "noticeText1Edit")->toPlainText(),
        QStringLiteral("Tervetuloa"));
}

void TestReferenceNumberDialog::savedInvoiceOutsideEditModeIsOnlyShown()
{
    // An empty invoice with a customer saves; edit mode then goes off.
    QVERIFY(m_f->window()->toggleEditMode(false));
    QVERIFY(invoice()->id >= 0);
    const QString before = invoice()->referenceNumber;
    Dialog dialog(m_f->registry(), m_f->window()->model());
    QLineEdit* reference = child<QLineEdit>(&dialog, "referenceEdit");
    QVERIFY(reference->isReadOnly());
    QVERIFY(child<QPlainTextEdit>(&dialog, "noticeText1Edit")->isReadOnly());
    QVERIFY(!child<QPushButton>(&dialog, "rebuildButton")->isEnabled());
    child<QLineEdit>(&dialog, "baseEdit")->setText(QStringLiteral("55"));
    QVERIFY(!child<QPushButton>(&dialog, "useRfButton")->isEnabled());
    reference->setText(QStringLiteral("999"));
    dialog.accept();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(invoice()->referenceNumber, before);
}

QTEST_MAIN(TestReferenceNumberDialog)
#include "tst_referencenumberdialog.moc"
