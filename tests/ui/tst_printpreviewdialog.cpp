#include "core/registry.h"
#include "domain/settings.h"
#include "invoicefixture.h"
#include "pdftools.h"
#include "print/invoicelistprintmodel.h"
#include "print/invoiceprintmodel.h"
#include "print/printmodel.h"
#include "print/printscriptengine.h"
#include "ui/invoicelistprintpreviewdialog.h"
#include "ui/invoiceprintpreviewdialog.h"
#include "ui/paymentprintpreviewdialog.h"
#include "ui/printpreviewdialog.h"

#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QSpinBox>
#include <QToolBar>
#include <QtTest>

namespace {

// A report of "pages" pages; run() fails on request, CSV output holds the delimiter given.
class PagesModel : public PrintModel
{
public:
    bool run() override
    {
        m_lastError = fail ? QStringLiteral("levy täynnä") : QString();
        return !fail;
    }
    QString title() const override { return QStringLiteral("Koeraportti"); }
    using PrintModel::value;
    QVariant value(QStringList& path) override { return path.join('/') == "pages" ? pages : 0; }
    bool exportToCSV(const QString& fileName, const QString& format) override
    {
        QFile file(fileName);
        return file.open(QIODevice::WriteOnly) && file.write(("a" + format + "b\r\n").toUtf8()) > 0;
    }

    int pages = 4;
    bool fail = false;
};

QByteArray pagesScript(int orientations)
{
    QByteArray script = "function print() {"
                        "  for (var i = 1; i <= get('pages'); i++) {"
                        "    if (i > 1) newPage();"
                        "    setFont('Arial', 14, 'normal');"
                        "    drawText(20, 20, 100, 'Sivu ' + i + ' / ' + orientation());"
                        "  }"
                        "}";
    if (orientations >= 0)
        script += "function supportedOrientations() { return " + QByteArray::number(orientations)
            + "; }";
    return script;
}

// Answers its messages itself and prints nowhere unless asked to.
class TestPreviewDialog : public PrintPreviewDialog
{
public:
    using PrintPreviewDialog::PrintPreviewDialog;

    QStringList messages, scriptErrors, printers;
    QStringList runs; // printer, document and copies of each run
    bool reallyPrint = false;

    void showScriptError(const QString& error) override { scriptErrors.append(error); }

protected:
    void showMessage(QMessageBox::Icon, const QString& text) override { messages.append(text); }
    QStringList installedPrinterNames() const override { return printers; }
    QString defaultPrinterName() const override { return printers.value(0); }
    bool runPrintScript(QPrinter* printer) override
    {
        runs.append(QStringLiteral("%1 %2 %3")
                        .arg(selectedPrinterName(), printer->docName())
                        .arg(printer->copyCount()));
        return reallyPrint ? PrintPreviewDialog::runPrintScript(printer) : true;
    }
};

} // namespace

// The print preview: zoom, paging, orientations, printing with page range and copies, saving as
// PDF and CSV, and the invoice and list previews.
class TestPrintPreviewDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void zoomBoxOrder();
    void orientations_data();
    void orientations();
    void pagingAndPageRange();
    void printReportCopies_data();
    void printReportCopies();
    void saveAs_data();
    void saveAs();
    void failures();
    void invoiceLayouts();
    void invoiceListColumnsAndSort();
    void wholeToolBarAtDefaultSize_data();
    void wholeToolBarAtDefaultSize();

private:
    std::unique_ptr<TestPreviewDialog> newDialog(int orientations = 3);

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
    PagesModel m_model;
};

void TestPrintPreviewDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_fixture.registry()->loadSettings(m_dir.filePath(QStringLiteral("Veklari.ini")));
}

std::unique_ptr<TestPreviewDialog> TestPrintPreviewDialog::newDialog(int orientations)
{
    auto dialog = std::make_unique<TestPreviewDialog>(m_fixture.registry());
    if (!dialog->engine()->evaluate(pagesScript(orientations)))
        qWarning() << dialog->engine()->lastError();
    m_model.fail = false;
    return dialog;
}

void TestPrintPreviewDialog::zoomBoxOrder()
{
    auto dialog = newDialog();
    QStringList items;
    for (int i = 0; i < dialog->zoomComboBox()->count(); ++i)
        items.append(dialog->zoomComboBox()->itemText(i));
    QCOMPARE(items.join('|'),
        QStringLiteral("Sovita ikkunaan|Sovita leveys|10 %|20 %|30 %|40 %|50 %|60 %|70 %|80 %|"
                       "90 %|100 %|125 %|150 %|175 %|200 %|250 %|300 %|400 %"));
    QVERIFY(dialog->updatePrintPreview(&m_model));
    dialog->zoomComboBox()->setCurrentIndex(11); // 100 %
    QMetaObject::invokeMethod(dialog.get(), "zoomIn");
    QCOMPARE(dialog->zoomComboBox()->currentText(), QStringLiteral("125 %"));
    QCOMPARE(dialog->previewWidget()->zoomFactor(), 1.25);
    QMetaObject::invokeMethod(dialog.get(), "zoomOut");
    QMetaObject::invokeMethod(dialog.get(), "zoomOut");
    QCOMPARE(dialog->zoomComboBox()->currentText(), QStringLiteral("90 %"));
    dialog->zoomComboBox()->setCurrentIndex(1);
    QCOMPARE(dialog->previewWidget()->zoomMode(), QPrintPreviewWidget::FitToWidth);
}

void TestPrintPreviewDialog::orientations_data()
{
    QTest::addColumn<int>("declared");
    QTest::addColumn<bool>("portraitEnabled");
    QTest::addColumn<bool>("landscapeEnabled");
    QTest::addColumn<bool>("landscape"); // after choosing landscape
    QTest::addRow("both") << 3 << true << true << true;
    // A missing portrait bit does not force landscape.
    QTest::addRow("landscape only") << 2 << false << true << true;
    QTest::addRow("no function") << -1 << true << false << false;
}

void TestPrintPreviewDialog::orientations()
{
    QFETCH(int, declared);
    QFETCH(bool, portraitEnabled);
    QFETCH(bool, landscapeEnabled);
    QFETCH(bool, landscape);
    auto dialog = newDialog(declared);
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QCOMPARE(dialog->portraitAction()->isEnabled(), portraitEnabled);
    QCOMPARE(dialog->landscapeAction()->isEnabled(), landscapeEnabled);
    QVERIFY(dialog->portraitAction()->isChecked());
    dialog->setOrientationToLandscape();
    QCOMPARE(dialog->orientation() == QPageLayout::Landscape, landscape);
    QCOMPARE(dialog->landscapeAction()->isChecked(), landscape);
    QCOMPARE(dialog->portraitAction()->isChecked(), !landscape);
    QCOMPARE(dialog->printer()->pageLayout().orientation(), dialog->orientation());
    // What the script was given, read back from the saved PDF.
    const QString fileName = m_dir.filePath(QStringLiteral("suunta%1.pdf").arg(declared + 1));
    QVERIFY2(dialog->saveReport(fileName, 0), qPrintable(dialog->lastError()));
    const QString text = PdfTools::text(fileName, 1);
    QVERIFY2(text.contains(QStringLiteral("Sivu 1 / %1").arg(landscape ? 2 : 1)), qPrintable(text));
}

// Printing pages 2-3 to a PDF-backed printer; the range is for that print only.
void TestPrintPreviewDialog::pagingAndPageRange()
{
    auto dialog = newDialog();
    dialog->reallyPrint = true;
    QVERIFY(!dialog->printAction()->isEnabled());
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QCOMPARE(dialog->pageCountLabel()->text(), QStringLiteral("/ 4"));
    dialog->nextPageAction()->trigger();
    QCOMPARE(dialog->pageSpinBox()->value(), 2);
    dialog->lastPageAction()->trigger();
    QCOMPARE(dialog->currentPage(), 4);
    QVERIFY(!dialog->nextPageAction()->isEnabled());

    const QString fileName = m_dir.filePath(QStringLiteral("sivut.pdf"));
    QPrinter* printer = dialog->printer();
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setOutputFileName(fileName);
    printer->setPrintRange(QPrinter::PageRange);
    printer->setFromTo(2, 3);
    dialog->printDialogAccepted();
    QCOMPARE(dialog->runs.size(), 1);
    QVERIFY(dialog->scriptErrors.isEmpty());
    QCOMPARE(PdfTools::text(fileName).simplified(), QStringLiteral("Sivu 2 / 1 Sivu 3 / 1"));
    QCOMPARE(dialog->engine()->fromPage(), -1);
}

void TestPrintPreviewDialog::printReportCopies_data()
{
    QTest::addColumn<bool>("installed");
    QTest::addColumn<QString>("expected"); // printer, document and copies of each run
    QTest::addRow("two copies elsewhere")
        << true << "HP LaserJet 4 Koeraportti 1|Kopiokone Ricoh Koeraportti (kopio) 2";
    QTest::addRow("no printer installed") << false << "Yhtään tulostinta ei ole asennettu.";
}

void TestPrintPreviewDialog::printReportCopies()
{
    QFETCH(bool, installed);
    QFETCH(QString, expected);
    auto dialog = newDialog();
    if (installed)
        dialog->printers = QStringList { "Kopiokone Ricoh", "HP LaserJet 4" };
    dialog->setPrinterName(QStringLiteral("HP"));
    dialog->setCopiesPrinterName(QStringLiteral("Kopio"));
    dialog->setNumberOfCopies(2);
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QCOMPARE(dialog->printReport(), installed);
    QCOMPARE((dialog->messages + dialog->runs).join('|'), expected);
}

void TestPrintPreviewDialog::saveAs_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("filter");
    QTest::addColumn<QString>("written");
    QTest::addRow("pdf") << "lasku" << 0 << "lasku.pdf";
    QTest::addRow("csv semicolon") << "raportti.csv" << 2 << "raportti.csv";
    QTest::addRow("pdf name in csv") << "taulu.pdf" << 1 << "taulu.pdf.csv";
}

void TestPrintPreviewDialog::saveAs()
{
    QFETCH(QString, typed);
    QFETCH(int, filter);
    QFETCH(QString, written);
    auto dialog = newDialog();
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QStringList offered;
    dialog->setFileNameChooser([&](const QString& name, const QStringList& filters, int* index) {
        offered = QStringList { name } + filters;
        *index = filter;
        return m_dir.filePath(typed);
    });
    dialog->saveAction()->trigger();
    QCOMPARE(offered,
        (QStringList { "Koeraportti", "PDF-tiedosto (*.pdf)",
            "CSV-tiedosto, erottimena pilkku (*.csv)",
            "CSV-tiedosto, erottimena puolipiste (*.csv)" }));
    QVERIFY(dialog->messages.isEmpty());
    const QString fileName = m_dir.filePath(written);
    QFile file(fileName);
    QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(fileName));
    if (filter == 0) {
        QCOMPARE(PdfTools::pageCount(fileName), 4);
        QVERIFY(PdfTools::info(fileName).contains(QRegularExpression("Title:\\s+Koeraportti")));
    } else {
        QCOMPARE(file.readAll(), filter == 1 ? QByteArray("a,b\r\n") : QByteArray("a;b\r\n"));
    }
}

// A failed save, a failed run, and a script error that waits for the event loop.
void TestPrintPreviewDialog::failures()
{
    auto dialog = newDialog();
    QVERIFY(dialog->updatePrintPreview(&m_model));
    dialog->setFileNameChooser([&](const QString&, const QStringList&, int* index) {
        *index = 0;
        return m_dir.filePath(QStringLiteral("puuttuva/lasku"));
    });
    dialog->saveReport();
    QCOMPARE(dialog->messages.size(), 1);
    QVERIFY2(dialog->messages.first().startsWith("Tulosteen tallentaminen epäonnistui. "),
        qPrintable(dialog->messages.first()));

    dialog = newDialog();
    m_model.fail = true;
    QVERIFY(!dialog->updatePrintPreview(&m_model));
    QCOMPARE(dialog->messages, QStringList { "Tulosteen muodostaminen epäonnistui. levy täynnä" });
    QVERIFY(!dialog->saveAction()->isEnabled());

    dialog = newDialog();
    QVERIFY(dialog->engine()->evaluate(
        "function print() { drawText(20, 20, 50, 'ennen'); missingFunction(); }"));
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QVERIFY(dialog->scriptErrors.isEmpty());
    QTRY_VERIFY(!dialog->scriptErrors.isEmpty());
    QVERIFY(dialog->scriptErrors.first().contains(QStringLiteral("missingFunction")));
    QCOMPARE(dialog->pageCount(), 1); // what was drawn before the error
}

// The built-in layout for this preview only; the setting stays.
void TestPrintPreviewDialog::invoiceLayouts()
{
    const int invoiceId = m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 1001);
    const int own = m_fixture.addPrintScript("Oma pohja", "invoice",
        "function print() { drawText(20, 20, 120, 'OMA POHJA ' + get('invoices/0/number')); }");
    QVERIFY(invoiceId > 0 && own > 0);
    QVERIFY(m_fixture.addPrintScript("Lista", "invoice-list", "function print() {}") > 0);
    QVERIFY(m_fixture.setSetting(QStringLiteral("printScripts/invoice"), QString::number(own)));
    QVERIFY(m_fixture.refresh());

    InvoicePrintPreviewDialog dialog(m_fixture.registry());
    QStringList names;
    for (QAction* action : dialog.layoutActions())
        names.append(action->text() + (action->isChecked() ? QStringLiteral(" *") : QString()));
    QCOMPARE(names, (QStringList { "Oletuslaskupohja", "Oma pohja *" }));
    dialog.invoicePrintModel()->criteria().id = invoiceId;
    QVERIFY(dialog.updatePrintPreview(dialog.invoicePrintModel()));
    const QString file = m_dir.filePath(QStringLiteral("lasku.pdf"));
    QVERIFY(dialog.saveReport(file, 0));
    QVERIFY(PdfTools::text(file).contains(QStringLiteral("OMA POHJA 1001")));
    dialog.layoutActions().first()->trigger();
    QVERIFY(dialog.saveReport(file, 0));
    const QString text = PdfTools::text(file);
    QVERIFY(text.contains(QStringLiteral("LASKU")) && !text.contains(QStringLiteral("OMA POHJA")));
    QCOMPARE(m_fixture.registry()->settings()->property("printScripts/invoice").toInt(), own);
}

// The chosen columns, sort order and orientation reach the report and are kept for next time.
void TestPrintPreviewDialog::invoiceListColumnsAndSort()
{
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 2001, 0) > 0);
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 2002, 1) > 0);
    {
        InvoiceListPrintPreviewDialog dialog(m_fixture.registry());
        QVERIFY(dialog.updatePrintPreview(dialog.listModel()));
        dialog.columnActions().at(InvoiceListPrintModel::ReferenceNumberColumn)->trigger();
        dialog.columnActions().at(InvoiceListPrintModel::DeliveryDateColumn)->trigger();
        dialog.sortComboBox()->setCurrentIndex(InvoiceListPrintModel::CustomerNameColumn);
        dialog.setOrientationToLandscape();
        const QString fileName = m_dir.filePath(QStringLiteral("luettelo.pdf"));
        QVERIFY(dialog.saveReport(fileName, 0));
        const QString text = PdfTools::text(fileName);
        QVERIFY(!text.contains("Viitenumero") && !text.contains("Toimituspäivä"));
        // Nordic Timber (2002) before Rautakauppa Virtanen (2001).
        QVERIFY2(text.indexOf("Nordic Timber AB") < text.indexOf("Rautakauppa Virtanen Oy"),
            qPrintable(text));
        QVERIFY(PdfTools::info(fileName).contains(QStringLiteral("842 x 595 pts")));
        dialog.reject();
    }
    InvoiceListPrintPreviewDialog again(m_fixture.registry());
    QCOMPARE(again.orientation(), QPageLayout::Landscape);
    QCOMPARE(again.sortComboBox()->currentIndex(), int(InvoiceListPrintModel::CustomerNameColumn));
    QCOMPARE(again.listModel()->columnFlags(),
        ((1 << 11) - 1)
            & ~((1 << InvoiceListPrintModel::ReferenceNumberColumn)
                | (1 << InvoiceListPrintModel::DeliveryDateColumn)));
}

void TestPrintPreviewDialog::wholeToolBarAtDefaultSize_data()
{
    QTest::addColumn<int>("kind");
    QTest::addRow("report") << 0;
    QTest::addRow("invoice") << 1;
    QTest::addRow("invoice list") << 2;
    QTest::addRow("payment journal") << 3;
}

// Without a size kept from last time, no tool hides behind the toolbar's
// extension button.
void TestPrintPreviewDialog::wholeToolBarAtDefaultSize()
{
    QFETCH(int, kind);
    Registry* registry = m_fixture.registry();
    registry->appSettings()->remove(QStringLiteral("printPreviewWindow"));
    std::unique_ptr<PrintPreviewDialog> dialog;
    if (kind == 0)
        dialog = std::make_unique<TestPreviewDialog>(registry);
    else if (kind == 1)
        dialog = std::make_unique<InvoicePrintPreviewDialog>(registry);
    else if (kind == 2)
        dialog = std::make_unique<InvoiceListPrintPreviewDialog>(registry);
    else
        dialog = std::make_unique<PaymentPrintPreviewDialog>(registry);
    dialog->show();
    QVERIFY(QTest::qWaitForWindowExposed(dialog.get()));
    QToolBar* toolBar = dialog->toolBar();
    const QList<QAction*> actions = toolBar->actions();
    QVERIFY(actions.size() > 10);
    for (QAction* action : actions) {
        const QWidget* widget = toolBar->widgetForAction(action);
        QVERIFY2(widget && widget->isVisible(), qPrintable(action->text()));
    }
    dialog->reject();
}

QTEST_MAIN(TestPrintPreviewDialog)
#include "tst_printpreviewdialog.moc"
