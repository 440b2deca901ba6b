#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/invoice.h"
#include "domain/referencenumber.h"
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
    QTest::newRow("spaces") << "4242 0324";
    QTest::newRow("longest") << "1234567890123456789";
}

void TestReferenceNumberDialog::calculator()
{
    QFETCH(QString, base);

    const QString digits = QString(base).remove(QLatin1Char(' '));
    Dialog dialog(m_f->registry(), m_f->window()->model());
    child<QLineEdit>(&dialog, "baseEdit")->setText(base);
    QCOMPARE(child<QLabel>(&dialog, "nationalLabel")->text().remove(' '), withCheckDigit(digits));
    QCOMPARE(child<QLabel>(&dialog, "rfLabel")->text().remove(' '), rf(withCheckDigit(digits)));
    QTest::mouseClick(child<QPushButton>(&dialog, "useNationalButton"), Qt::LeftButton);
    QCOMPARE(dialog.referenceNumber(), withCheckDigit(digits));
    QTest::mouseClick(child<QPushButton>(&dialog, "useRfButton"), Qt::LeftButton);
    QCOMPARE(dialog.referenceNumber(), rf(withCheckDigit(digits)));
    QVERIFY(ReferenceNumber::isValid(dialog.referenceNumber()));
}

void TestReferenceNumberDialog::validReferences_data()
{
    QTest::addColumn<QString>("reference");
    QTest::addColumn<bool>("valid");
    const QString good = withCheckDigit(QStringLiteral("123456"));
    QString wrong = good;
    wrong[wrong.size() - 1] = QChar(u'0' + (wrong.back().digitValue() + 1) % 10);
    QTest::newRow("national") << good << true;
    QTest::newRow("wrong check digit") << wrong << false;
    QTest::newRow("rf lower case") << rf(good).toLower() << true;
    QTest::newRow("rf wrong check") << QStringLiteral("RF00") + good << false;
}

void TestReferenceNumberDialog::validReferences()
{
    QFETCH(QString, reference);
    QFETCH(bool, valid);
    // The dialog refuses what is not valid and leaves the invoice alone.
    const QString before = invoice()->referenceNumber;
    Dialog dialog(m_f->registry(), m_f->window()->model());
    child<QLineEdit>(&dialog, "referenceEdit")->setText(reference);
    dialog.accept();
    QCOMPARE(dialog.result(), int(valid ? QDialog::Accepted : QDialog::Rejected));
    QCOMPARE(dialog.warnings,
        valid ? QStringList()
              : QStringList { QStringLiteral("Viitenumero %1 on virheellinen.").arg(reference) });
    QCOMPARE(invoice()->referenceNumber == before, !valid);
}

void TestReferenceNumberDialog::acceptWritesTheInvoice()
{
    Dialog dialog(m_f->registry(), m_f->window()->model());
    QCOMPARE(dialog.referenceNumber(), invoice()->referenceNumber);
    child<QLineEdit>(&dialog, "referenceEdit")->setText(rf(withCheckDigit("777")).toLower());
    child<QPlainTextEdit>(&dialog, "noticeText1Edit")->setPlainText(QStringLiteral("Kiitos"));
    child<QPlainTextEdit>(&dialog, "noticeText2Edit")->setPlainText(QString());
    QVERIFY(!dialog.saveAsCustomerReference());
    child<QCheckBox>(&dialog, "customerCheck")->setChecked(true);
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QVERIFY(dialog.saveAsCustomerReference());
    QCOMPARE(invoice()->referenceNumber, rf(withCheckDigit("777")));
    QCOMPARE(invoice()->property(QStringLiteral("t1")).toString(), QStringLiteral("Kiitos"));
    QVERIFY(!invoice()->properties.contains(QStringLiteral("t2")));
}

QTEST_MAIN(TestReferenceNumberDialog)
#include "tst_referencenumberdialog.moc"
