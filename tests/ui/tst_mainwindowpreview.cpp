#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/invoiceitem.h"
#include "domain/payment.h"
#include "domain/settings.h"
#include "domain/vat.h"
#include "print/invoicelistprintmodel.h"
#include "print/invoiceprintmodel.h"
#include "print/paymentprintmodel.h"
#include "storage/database.h"
#include "storage/query.h"
#include "ui/invoicelistprintpreviewdialog.h"
#include "ui/invoiceprintpreviewdialog.h"
#include "ui/invoicerangedialog.h"
#include "ui/mainwindow.h"
#include "ui/paymentprintpreviewdialog.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QMessageBox>
#include <QPrinterInfo>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>
#include <functional>
#include <memory>

namespace {

class TestWindow : public MainWindow
{
public:
    using MainWindow::MainWindow;

    int firstNumber = 0;
    int lastNumber = 0;
    QStringList messages;

protected:
    bool askQuestion(const QString& question) override
    {
        messages.append(question);
        return true;
    }
    void showCriticalMessage(const QString& message) override { messages.append(message); }
    void showWarningMessage(const QString& message) override { messages.append(message); }
    int execDialog(QDialog* dialog) override
    {
        if (auto* range = qobject_cast<InvoiceRangeDialog*>(dialog)) {
            range->firstSpinBox()->setValue(firstNumber);
            range->lastSpinBox()->setValue(lastNumber);
            return QDialog::Accepted;
        }
        return QDialog::Rejected;
    }
};

} // namespace

// The main window's print and report commands open the right preview with
// the right invoices. The modal windows are answered from a timer: message
// boxes are recorded and confirmed, the preview is inspected and closed.
class TestMainWindowPreview : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void commandsEnabled();
    void printCurrentInvoice();
    void reminderOfInvoiceNotYetDue();
    void severalReceipts();
    void invoiceListFollowsTheSearch();
    void printStraightWithoutPrinter();
    void paymentJournal();
    void customerAndProductLists();

private:
    // Triggers the action and handles the modal windows it opens; returns
    // the texts of the message boxes.
    QStringList trigger(const char* action, const std::function<void(QDialog*)>& inspect);
    int addInvoice(int number, const QDate& dueDate);

    QTemporaryDir m_dir;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<TestWindow> m_window;
    int m_customerId = -1;
};

void TestMainWindowPreview::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_dir.filePath(QStringLiteral("veklari.ini")));
    m_window = std::make_unique<TestWindow>(m_registry.get());
    QVERIFY(m_window->openDatabase(-1));

    std::unique_ptr<Query> query(m_registry->database()->query());
    Customer customer;
    customer.number = 1;
    customer.name = QStringLiteral("Rautakauppa Virtanen Oy");
    QVERIFY(query->saveCustomer(&customer));
    m_customerId = customer.id;
    const QDate past = QDate::currentDate().addDays(-30);
    const QDate future = QDate::currentDate().addDays(30);
    QVERIFY(addInvoice(1, past) > 0);
    QVERIFY(addInvoice(2, future) > 0);
    const int paid = addInvoice(3, past);
    QVERIFY(paid > 0);
    Payment payment;
    payment.invoiceId = paid;
    payment.date = past.addDays(3);
    payment.amount = 5000;
    QVERIFY(query->savePayment(&payment));
    m_window->refresh();
    QVERIFY2(m_window->messages.isEmpty(), qPrintable(m_window->messages.join('\n')));
}

void TestMainWindowPreview::cleanupTestCase()
{
    m_window.reset();
    m_registry.reset();
}

int TestMainWindowPreview::addInvoice(int number, const QDate& dueDate)
{
    std::unique_ptr<Query> query(m_registry->database()->query());
    InvoiceItem item;
    item.productName = QStringLiteral("Suunnittelu");
    item.quantity = 20000;
    item.unitCode = QStringLiteral("h");
    item.amount = 500000;
    item.vatExcluded = true;
    item.vatRate = 2550;
    Vat vat;
    vat.addInvoiceItem(&item);
    Invoice invoice;
    invoice.customerId = m_customerId;
    invoice.number = number;
    invoice.date = dueDate.addDays(-14);
    invoice.dueDate = dueDate;
    invoice.referenceNumber
        = Invoice::appendCheckDigitToReferenceNumber(QString::number(number) + "00");
    invoice.totalAmount = int(vat.totalAmountVatIncluded());
    invoice.balance = invoice.totalAmount;
    if (!query->saveInvoice(&invoice))
        return -1;
    item.invoiceId = invoice.id;
    return query->saveInvoiceItem(&item) ? invoice.id : -1;
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

void TestMainWindowPreview::commandsEnabled()
{
    for (const char* name : { "printAction", "printSelectedAction", "printSeveralAction",
             "printReminderAction", "printRemindersAction", "printReceiptAction",
             "printReceiptsAction", "invoiceListAction", "paymentJournalAction",
             "customerListAction", "productListAction" }) {
        QAction* action = m_window->findChild<QAction*>(QLatin1String(name));
        QVERIFY2(action, name);
        QVERIFY2(action->isEnabled(), name);
    }
    QCOMPARE(m_window->findChild<QAction*>(QStringLiteral("printAction"))->shortcut(),
        QKeySequence(Qt::Key_F9));
}

void TestMainWindowPreview::printCurrentInvoice()
{
    QVERIFY(m_window->goToInvoice(0));
    const int number = m_window->model()->invoice()->number;
    int shown = -1;
    int pages = 0;
    const QStringList boxes = trigger("printAction", [&](QDialog* dialog) {
        auto* preview = qobject_cast<InvoicePrintPreviewDialog*>(dialog);
        if (!preview)
            return;
        InvoicePrintModel* model = preview->invoicePrintModel();
        shown = model->invoiceCount() == 1 ? model->invoice(0)->number : -1;
        pages = preview->pageCount();
    });
    // The preview is on by default; an invoice with rows asks nothing.
    QCOMPARE(boxes, QStringList());
    QCOMPARE(shown, number);
    QCOMPARE(pages, 1);
}

void TestMainWindowPreview::reminderOfInvoiceNotYetDue()
{
    // Invoice 2 falls due in a month.
    bool found = false;
    for (int i = 0; i < 3 && !found; ++i) {
        QVERIFY(m_window->goToInvoice(i));
        found = m_window->model()->invoice()->number == 2;
    }
    QVERIFY(found);
    int printType = -1;
    const QStringList boxes = trigger("printReminderAction", [&](QDialog* dialog) {
        if (auto* preview = qobject_cast<InvoicePrintPreviewDialog*>(dialog))
            printType = preview->invoicePrintModel()->printType();
    });
    QCOMPARE(boxes,
        QStringList { "Huomaathan, että yksi tai usempi laskuista ei ole vielä erääntynyt." });
    QCOMPARE(printType, 3);
}

void TestMainWindowPreview::severalReceipts()
{
    m_window->firstNumber = 1;
    m_window->lastNumber = 3;
    QList<int> numbers;
    int printType = -1;
    const QStringList boxes = trigger("printReceiptsAction", [&](QDialog* dialog) {
        auto* preview = qobject_cast<InvoicePrintPreviewDialog*>(dialog);
        if (!preview)
            return;
        InvoicePrintModel* model = preview->invoicePrintModel();
        for (int i = 0; i < model->invoiceCount(); ++i)
            numbers.append(model->invoice(i)->number);
        printType = model->printType();
    });
    // Invoice 2 is not yet due.
    QCOMPARE(boxes, QStringList { "Huomaathan, että lasku ei ole vielä erääntynyt." });
    QCOMPARE(numbers, (QList<int> { 1, 2, 3 }));
    QCOMPARE(printType, 4);
}

void TestMainWindowPreview::invoiceListFollowsTheSearch()
{
    // The window's active search: open invoices.
    m_window->model()->lastCriteria()->paymentStatus = 1;
    QStringList criteria;
    int count = -1;
    const QStringList boxes = trigger("invoiceListAction", [&](QDialog* dialog) {
        if (auto* preview = qobject_cast<InvoiceListPrintPreviewDialog*>(dialog)) {
            criteria = preview->listModel()->criteriaTexts();
            count = preview->listModel()->invoiceCount();
        }
    });
    m_window->model()->lastCriteria()->paymentStatus = -1;
    QCOMPARE(boxes, QStringList());
    QCOMPARE(criteria, QStringList { "Avoimet laskut" });
    QCOMPARE(count, 3);
}

void TestMainWindowPreview::printStraightWithoutPrinter()
{
    // Never send a job to a real printer.
    if (!QPrinterInfo::availablePrinterNames().isEmpty())
        QSKIP("a printer is installed on this machine");
    Settings* settings = m_registry->settings();
    settings->setProperty(QStringLiteral("invoiceForm/printPreview"), false);
    QVERIFY(m_window->model()->saveSettings());
    QVERIFY(m_window->goToInvoice(0));
    const QStringList boxes = trigger("printAction", [](QDialog*) {});
    settings->setProperty(QStringLiteral("invoiceForm/printPreview"), true);
    QVERIFY(m_window->model()->saveSettings());
    // No preview opens; the test machine has no printer.
    QCOMPARE(boxes, (QStringList { "Yhtään tulostinta ei ole asennettu.", "no preview" }));
}

void TestMainWindowPreview::paymentJournal()
{
    int payments = -1;
    QString title;
    const QStringList boxes = trigger("paymentJournalAction", [&](QDialog* dialog) {
        if (auto* preview = qobject_cast<PaymentPrintPreviewDialog*>(dialog)) {
            payments = preview->listModel()->paymentCount();
            title = preview->documentName();
        }
    });
    QCOMPARE(boxes, QStringList());
    QCOMPARE(payments, 1);
    QCOMPARE(title, QStringLiteral("Suorituspäiväkirja"));
}

void TestMainWindowPreview::customerAndProductLists()
{
    QString customers;
    QStringList boxes = trigger("customerListAction", [&](QDialog* dialog) {
        if (auto* preview = qobject_cast<PrintPreviewDialog*>(dialog))
            customers = preview->documentName() + QLatin1Char(' ')
                + preview->model()->value(QStringLiteral("customers/0/name")).toString();
    });
    QCOMPARE(boxes, QStringList());
    QCOMPARE(customers, QStringLiteral("Asiakasluettelo Rautakauppa Virtanen Oy"));

    QString products;
    boxes = trigger("productListAction", [&](QDialog* dialog) {
        if (auto* preview = qobject_cast<PrintPreviewDialog*>(dialog))
            products = preview->documentName() + QLatin1Char(' ')
                + preview->model()->value(QStringLiteral("products/0/name")).toString();
    });
    QCOMPARE(boxes, QStringList());
    // A new database has the product of interest rows.
    QCOMPARE(products, QStringLiteral("Tuoteluettelo Viivästyskorko"));
}

QTEST_MAIN(TestMainWindowPreview)
#include "tst_mainwindowpreview.moc"
