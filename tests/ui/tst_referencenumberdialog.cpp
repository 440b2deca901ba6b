#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/invoice.h"
#include "domain/settings.h"
#include "tst_mainwindowfixture.h"
#include "ui/referencenumberdialog.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QtTest>

namespace {

class Dialog : public ReferenceNumberDialog
{
public:
    using ReferenceNumberDialog::ReferenceNumberDialog;
    QStringList warnings;

protected:
    void showWarning(const QString& text) override { warnings.append(text); }
};

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
    const QString digits = reference + QStringLiteral("271500");
    int remainder = 0;
    for (const QChar c : digits)
        remainder = (remainder * 10 + c.digitValue()) % 97;
    return QStringLiteral("RF%1").arg(98 - remainder, 2, 10, QLatin1Char('0')) + reference;
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
    void invalidReferenceIsRefused();
    void rebuildFromTheCompanySettings();
    void savedInvoiceOutsideEditModeIsOnlyShown();

private:
    std::unique_ptr<WindowFixture> m_f;
    int m_customer = -1;
};

void TestReferenceNumberDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestReferenceNumberDialog::init()
{
    m_f = std::make_unique<WindowFixture>();
    QVERIFY(m_f->start());
    m_customer = m_f->addCustomer(QStringLiteral("Virtanen Oy"));
    m_f->refresh();
    chooseCustomer(m_f->widget<QComboBox>("customerCombo"), QStringLiteral("Virtanen Oy"));
    QCOMPARE(m_f->window()->model()->invoice()->customerId, m_customer);
}

void TestReferenceNumberDialog::cleanup()
{
    m_f.reset();
}

void TestReferenceNumberDialog::calculator_data()
{
    QTest::addColumn<QString>("base");

    QTest::addRow("short") << "123";
    QTest::addRow("customer and month") << "4242 0324";
    QTest::addRow("zeros inside") << "1000001";
    QTest::addRow("longest") << "1234567890123456789";
}

void TestReferenceNumberDialog::calculator()
{
    QFETCH(QString, base);

    const QString digits = QString(base).remove(QLatin1Char(' '));
    QCOMPARE(ReferenceNumberDialog::nationalReference(base), national(digits));
    QCOMPARE(ReferenceNumberDialog::rfReference(base), rf(national(digits)));

    Dialog dialog(m_f->registry(), m_f->window()->model());
    dialog.findChild<QLineEdit*>(QStringLiteral("baseEdit"))->setText(base);
    QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("nationalLabel"))->text().remove(' '),
        national(digits));
    QCOMPARE(dialog.findChild<QLabel*>(QStringLiteral("rfLabel"))->text().remove(' '),
        rf(national(digits)));
    QTest::mouseClick(
        dialog.findChild<QPushButton*>(QStringLiteral("useNationalButton")), Qt::LeftButton);
    QCOMPARE(dialog.referenceNumber(), national(digits));
    QTest::mouseClick(
        dialog.findChild<QPushButton*>(QStringLiteral("useRfButton")), Qt::LeftButton);
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
    QTest::addRow("national") << good << true;
    QTest::addRow("with spaces") << good.left(2) + QLatin1Char(' ') + good.mid(2) << true;
    QTest::addRow("wrong check digit") << wrong << false;
    QTest::addRow("too short") << QStringLiteral("13") << false;
    QTest::addRow("letters") << QStringLiteral("12A4") << false;
    QTest::addRow("rf") << rf(good) << true;
    QTest::addRow("rf lower case") << rf(good).toLower() << true;
    QTest::addRow("rf wrong check") << QStringLiteral("RF00") + good << false;
    QTest::addRow("rf without reference") << QStringLiteral("RF18") << false;
}

void TestReferenceNumberDialog::validReferences()
{
    QFETCH(QString, reference);
    QFETCH(bool, valid);
    QCOMPARE(ReferenceNumberDialog::isValidReference(reference), valid);
}

void TestReferenceNumberDialog::acceptWritesTheInvoice()
{
    Invoice* invoice = m_f->window()->model()->invoice();
    Dialog dialog(m_f->registry(), m_f->window()->model());
    QCOMPARE(dialog.referenceNumber(), invoice->referenceNumber);
    QLineEdit* reference = dialog.findChild<QLineEdit*>(QStringLiteral("referenceEdit"));
    reference->setText(rf(national(QStringLiteral("777"))).toLower());
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("noticeText1Edit"))
        ->setPlainText(QStringLiteral("Kiitos tilauksesta"));
    dialog.findChild<QPlainTextEdit*>(QStringLiteral("noticeText2Edit"))->setPlainText(QString());
    QVERIFY(!dialog.saveAsCustomerReference());
    dialog.findChild<QCheckBox*>(QStringLiteral("customerCheck"))->setChecked(true);
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QVERIFY(dialog.saveAsCustomerReference());
    QCOMPARE(invoice->referenceNumber, rf(national(QStringLiteral("777"))));
    QCOMPARE(
        invoice->property(QStringLiteral("t1")).toString(), QStringLiteral("Kiitos tilauksesta"));
    QVERIFY(!invoice->properties.contains(QStringLiteral("t2")));
}

void TestReferenceNumberDialog::invalidReferenceIsRefused()
{
    Invoice* invoice = m_f->window()->model()->invoice();
    const QString before = invoice->referenceNumber;
    Dialog dialog(m_f->registry(), m_f->window()->model());
    dialog.findChild<QLineEdit*>(QStringLiteral("referenceEdit"))
        ->setText(QStringLiteral("1234 5"));
    dialog.accept();
    QCOMPARE(
        dialog.warnings, QStringList { QStringLiteral("Viitenumero 1234 5 on virheellinen.") });
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(invoice->referenceNumber, before);
}

void TestReferenceNumberDialog::rebuildFromTheCompanySettings()
{
    Settings* settings = m_f->registry()->settings();
    settings->setProperty(
        QStringLiteral("settings/referenceNumberTemplate"), QStringLiteral("{I}77"));
    settings->setProperty(QStringLiteral("invoiceForm/noticeText1"), QStringLiteral("Tervetuloa"));
    Dialog dialog(m_f->registry(), m_f->window()->model());
    dialog.findChild<QLineEdit*>(QStringLiteral("referenceEdit"))->setText(QString());
    QTest::mouseClick(
        dialog.findChild<QPushButton*>(QStringLiteral("rebuildButton")), Qt::LeftButton);
    // Invoice 1 with the template {I}77.
    QCOMPARE(dialog.referenceNumber(), national(QStringLiteral("177")));
    QCOMPARE(dialog.findChild<QPlainTextEdit*>(QStringLiteral("noticeText1Edit"))->toPlainText(),
        QStringLiteral("Tervetuloa"));
}

void TestReferenceNumberDialog::savedInvoiceOutsideEditModeIsOnlyShown()
{
    // An empty invoice with a customer saves; edit mode then goes off.
    QVERIFY(m_f->window()->toggleEditMode(false));
    Invoice* invoice = m_f->window()->model()->invoice();
    QVERIFY(invoice->id >= 0);
    const QString before = invoice->referenceNumber;
    Dialog dialog(m_f->registry(), m_f->window()->model());
    QLineEdit* reference = dialog.findChild<QLineEdit*>(QStringLiteral("referenceEdit"));
    QVERIFY(reference->isReadOnly());
    QVERIFY(dialog.findChild<QPlainTextEdit*>(QStringLiteral("noticeText1Edit"))->isReadOnly());
    QVERIFY(!dialog.findChild<QPushButton*>(QStringLiteral("rebuildButton"))->isEnabled());
    dialog.findChild<QLineEdit*>(QStringLiteral("baseEdit"))->setText(QStringLiteral("55"));
    QVERIFY(!dialog.findChild<QPushButton*>(QStringLiteral("useRfButton"))->isEnabled());
    reference->setText(QStringLiteral("999"));
    dialog.accept();
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(invoice->referenceNumber, before);
}

QTEST_MAIN(TestReferenceNumberDialog)
#include "tst_referencenumberdialog.moc"
