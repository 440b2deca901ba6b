#include "core/ravelotablemodel.h"
#include "core/registry.h"
#include "domain/settings.h"
#include "tst_mainwindowfixture.h"
#include "ui/ravelodialog.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

namespace {

QString dataPath(const QString& name)
{
    return qEnvironmentVariable("VEKLARI_TEST_DATA") + QStringLiteral("/ravelo/") + name;
}

// Answers the dialog's questions and messages with their default button,
// keeping their texts.
class MessageAnswerer : public QObject
{
public:
    QStringList texts;
    MessageAnswerer()
    {
        m_timer.setInterval(10);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            texts.append(box->text());
            QAbstractButton* yes = box->button(QMessageBox::Yes);
            (yes ? yes : box->button(QMessageBox::Ok))->click();
        });
        m_timer.start();
    }

private:
    QTimer m_timer;
};

} // namespace

class TestRaveloDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void invoicesFromTheWindow();
};

void TestRaveloDialog::invoicesFromTheWindow()
{
    WindowFixture f;
    const QDate today(2026, 12, 1);
    QVERIFY(f.start(today));
    QVERIFY(f.action("raveloAction")->isEnabled());
    // Names that match the time entries' are taken without asking.
    const int pajala
        = f.addCustomer(QStringLiteral("Pajala Oy"), QString(), QStringLiteral("12345672"));
    const int kumpula = f.addCustomer(QStringLiteral("Kumpulan Puutarha"));
    f.addProduct(QStringLiteral("OHJ"), QStringLiteral("Ohjelmointi"), QStringLiteral("h"), 800000,
        2550, true);
    f.addProduct(
        QStringLiteral("PAL"), QStringLiteral("Palaveri"), QStringLiteral("h"), 600000, 2550, true);
    f.addInvoice(10, pajala, today.addMonths(-1), today, 1000, 0);
    f.refresh();

    MessageAnswerer answerer;
    int previewRows = 0;
    f.window()->dialogHandler = [&](QDialog* dialog) {
        auto* ravelo = qobject_cast<RaveloDialog*>(dialog);
        if (!ravelo)
            return int(QDialog::Rejected);
        ravelo->findChild<QLineEdit*>(QStringLiteral("directoryEdit"))
            ->setText(dataPath(QStringLiteral("good")));
        ravelo->readFiles();
        // November, the month of fifteen days ago, with both customers.
        auto* customers = ravelo->findChild<QTableWidget*>(QStringLiteral("customerTable"));
        if (customers->rowCount() != 2)
            return int(QDialog::Rejected);
        auto* rounding = ravelo->findChild<QComboBox*>(QStringLiteral("roundingBox"));
        rounding->setCurrentIndex(rounding->findData(30));
        previewRows = ravelo->previewModel()->rowCount();
        auto* create = ravelo->findChild<QPushButton*>(QStringLiteral("createButton"));
        if (create->isEnabled())
            create->click();
        return ravelo->result();
    };
    f.action("raveloAction")->trigger();
    // Two rows for each customer and a total after each.
    QCOMPARE(previewRows, 6);
    QCOMPARE(answerer.texts,
        QStringList({ QStringLiteral("Luodaan 2 laskua. Jatketaanko?"),
            QStringLiteral("Luotiin laskut 11–12.") }));
    QCOMPARE(f.storedInvoiceCount(), 3);
    // The window shows the last one, Kumpula's: 260 and 20 minutes up to
    // whole half hours, 4.5 h at 80 and 0.5 h at 60 with 25.5 % VAT.
    QCOMPARE(
        f.storedValue(QStringLiteral("SELECT customer_id FROM invoice WHERE number = 12")).toInt(),
        kumpula);
    QCOMPARE(
        f.storedValue(QStringLiteral("SELECT total_amount FROM invoice WHERE number = 12")).toInt(),
        45180 + 3765);
    QCOMPARE(f.text("numberEdit"), QStringLiteral("12"));
    QVERIFY(f.window()->messages.isEmpty());
    // The choices are remembered.
    QCOMPARE(f.registry()->settings()->property(QStringLiteral("ravelo/roundingStep")).toInt(), 30);
}

QTEST_MAIN(TestRaveloDialog)
#include "tst_ravelodialog.moc"
