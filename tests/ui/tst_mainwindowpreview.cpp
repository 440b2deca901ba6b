#include "core/mainmodel.h"
#include "print/invoiceprintmodel.h"
#include "tst_mainwindowfixture.h"
#include "ui/invoiceprintpreviewdialog.h"
#include "ui/invoicerangedialog.h"
#include "ui/mainwindow.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QMessageBox>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTimer>
#include <QtTest>
#include <functional>

// The main window's print and report commands open the right preview with
// the right invoices. The modal windows are answered from a timer: message
// boxes are recorded and confirmed, the preview is inspected and closed.
class TestMainWindowPreview : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void invoiceCommands_data();
    void invoiceCommands();
    void reports_data();
    void reports();

private:
    // Triggers the action, answers the message boxes it opens and returns their texts.
    QStringList trigger(const char* action, const std::function<void(QDialog*)>& inspect);

    WindowFixture m_fixture;
    TestWindow* m_window = nullptr;
};

// Invoices 1 and 3 fell due a month ago, 2 falls due in a month.
void TestMainWindowPreview::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_fixture.start(QDate::currentDate()));
    m_window = m_fixture.window();
    const int customer = m_fixture.addCustomer(QStringLiteral("Rautakauppa Virtanen Oy"));
    QVERIFY(customer > 0);
    const QDate past = QDate::currentDate().addDays(-30);
    const QDate future = QDate::currentDate().addDays(30);
    for (int number = 1; number <= 3; ++number) {
        const QDate due = number == 2 ? future : past;
        QVERIFY(m_fixture.addInvoice(number, customer, due.addDays(-14), due, 12550, 12550) > 0);
    }
    m_window->refresh();
    QVERIFY2(m_window->messages.isEmpty(), qPrintable(m_window->messages.join('\n')));
}

void TestMainWindowPreview::cleanupTestCase()
{
    m_fixture.stop();
}

QStringList TestMainWindowPreview::trigger(
    const char* action, const std::function<void(QDialog*)>& inspect)
{
    QStringList boxes;
    bool inspected = false;
    QTimer timer;
    timer.setInterval(20);
    connect(&timer, &QTimer::timeout, this, [&]() {
        QWidget* modal = QApplication::activeModalWidget();
        if (auto* box = qobject_cast<QMessageBox*>(modal)) {
            boxes.append(box->text());
            QAbstractButton* button = box->button(QMessageBox::Yes);
            if (!button)
                button = box->button(QMessageBox::Ok);
            button->click();
        } else if (auto* dialog = qobject_cast<QDialog*>(modal)) {
            if (!inspected) {
                inspected = true;
                inspect(dialog);
            }
            dialog->reject();
        }
    });
    timer.start();
    QAction* command = m_window->findChild<QAction*>(QLatin1String(action));
    if (!command) {
        boxes.append(QStringLiteral("no action %1").arg(QLatin1String(action)));
        return boxes;
    }
    command->trigger();
    timer.stop();
    if (!inspected)
        boxes.append(QStringLiteral("no preview"));
    return boxes;
}

void TestMainWindowPreview::invoiceCommands_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("first"); // the current invoice, or the range asked for
    QTest::addColumn<int>("last");
    QTest::addColumn<QString>("shown"); // the message boxes and the preview
    // The preview is on by default: nothing to ask.
    QTest::addRow("invoice") << "printAction" << 1 << 1 << "1 as type 0 on 1 pages";
    QTest::addRow("several receipts")
        << "printReceiptsAction" << 1 << 3
        << "Huomaathan, että lasku ei ole vielä erääntynyt.|1 2 3 as type 4 on 3 pages";
}

// The print commands open the invoice preview with the right invoices
// printed as the right type, after the cautions.
void TestMainWindowPreview::invoiceCommands()
{
    QFETCH(QString, action);
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(QString, shown);
    QVERIFY(m_window->goToInvoice(0));
    for (int i = 1; i < 3 && m_window->model()->invoice()->number != first; ++i)
        QVERIFY(m_window->goToInvoice(i));
    QCOMPARE(m_window->model()->invoice()->number, first);
    m_window->dialogHandler = [&](QDialog* dialog) {
        auto* range = qobject_cast<InvoiceRangeDialog*>(dialog);
        if (!range)
            return int(QDialog::Rejected);
        range->firstSpinBox()->setValue(first);
        range->lastSpinBox()->setValue(last);
        return int(QDialog::Accepted);
    };
    QStringList preview;
    QStringList boxes = trigger(qPrintable(action), [&](QDialog* dialog) {
        if (auto* invoices = qobject_cast<InvoicePrintPreviewDialog*>(dialog)) {
            InvoicePrintModel* model = invoices->invoicePrintModel();
            for (int i = 0; i < model->invoiceCount(); ++i)
                preview.append(QString::number(model->invoice(i)->number));
            preview.append(QStringLiteral("as type %1 on %2 pages")
                               .arg(model->printType())
                               .arg(invoices->pageCount()));
        }
    });
    boxes.append(preview.join(' '));
    QCOMPARE(boxes.join('|'), shown);
}

void TestMainWindowPreview::reports_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("shown"); // the title and the value at path
    // The window's active search, open invoices, chooses the invoices listed.
    QTest::addRow("invoice list") << "invoiceListAction"
                                  << "invoices/length"
                                  << "Laskuluettelo 3";
    QTest::addRow("customer list") << "customerListAction"
                                   << "customers/0/name"
                                   << "Asiakasluettelo Rautakauppa Virtanen Oy";
}

void TestMainWindowPreview::reports()
{
    QFETCH(QString, action);
    QFETCH(QString, path);
    QFETCH(QString, shown);
    m_window->model()->lastCriteria()->paymentStatus = 1;
    QString seen;
    const QStringList boxes = trigger(qPrintable(action), [&](QDialog* dialog) {
        if (auto* preview = qobject_cast<PrintPreviewDialog*>(dialog))
            seen = preview->documentName() + QLatin1Char(' ')
                + preview->model()->value(path).toString();
    });
    m_window->model()->lastCriteria()->paymentStatus = -1;
    QCOMPARE(boxes, QStringList());
    QCOMPARE(seen, shown);
}

QTEST_MAIN(TestMainWindowPreview)
#include "tst_mainwindowpreview.moc"
