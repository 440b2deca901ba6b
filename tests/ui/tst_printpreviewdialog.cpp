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
#include <QtTest>

namespace {

// A report of a given number of pages; run() fails on request and CSV
// output records the delimiter it was given.
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
    QVariant value(QStringList& path) override
    {
        if (path.join(QLatin1Char('/')) == QLatin1String("pages"))
            return pages;
        return QVariant();
    }
    bool exportToCSV(const QString& fileName, const QString& format) override
    {
        QFile file(fileName);
        if (!file.open(QIODevice::WriteOnly)) {
            m_lastError = file.errorString();
            return false;
        }
        file.write(QStringLiteral("a%1b\r\n").arg(format).toUtf8());
        return true;
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

    QStringList messages;
    QStringList scriptErrors;
    QStringList printers;
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

// The print preview: zoom, paging, orientations, printing with page range
// and copies, saving as PDF and CSV, and the invoice and list previews.
class TestPrintPreviewDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void zoomBoxOrder();
    void orientations_data();
    void orientations();
    void paging();
    void pageRangePrintsOnlyThosePages();
    void printReportCopies_data();
    void printReportCopies();
    void saveAs_data();
    void saveAs();
    void failures();
    void scriptErrorShownAfterPainting();
    void invoiceLayouts();
    void invoiceListColumnsAndSort();

private:
    std::unique_ptr<TestPreviewDialog> newDialog(int orientations = 3);

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
    PagesModel m_model;
};

void TestPrintPreviewDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_fixture.registry()->loadSettings(m_dir.filePath(QStringLiteral("Veklari.ini")));
}

std::unique_ptr<TestPreviewDialog> TestPrintPreviewDialog::newDialog(int orientations)
{
    auto dialog = std::make_unique<TestPreviewDialog>(m_fixture.registry());
    if (!dialog->engine()->evaluate(pagesScript(orientations)))
        qWarning() << dialog->engine()->lastError();
    m_model.pages = 4;
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
    QCOMPARE(dialog->previewWidget()->zoomMode(), QPrintPreviewWidget::CustomZoom);
    QCOMPARE(dialog->previewWidget()->zoomFactor(), 1.0);
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
    QTest::addColumn<int>("orientationAfterLandscape");

    const int portrait = QPageLayout::Portrait;
    const int landscape = QPageLayout::Landscape;
    QTest::addRow("both") << 3 << true << true << landscape;
    QTest::addRow("portrait only") << 1 << true << false << portrait;
    // A missing portrait bit does not force landscape.
    QTest::addRow("landscape only") << 2 << false << true << landscape;
    QTest::addRow("no function") << -1 << true << false << portrait;
    QTest::addRow("unknown bits") << 7 << true << false << portrait;
}

void TestPrintPreviewDialog::orientations()
{
    QFETCH(int, declared);
    QFETCH(bool, portraitEnabled);
    QFETCH(bool, landscapeEnabled);
    QFETCH(int, orientationAfterLandscape);

    auto dialog = newDialog(declared);
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QCOMPARE(dialog->portraitAction()->isEnabled(), portraitEnabled);
    QCOMPARE(dialog->landscapeAction()->isEnabled(), landscapeEnabled);
    QVERIFY(dialog->portraitAction()->isChecked());

    dialog->setOrientationToLandscape();
    QCOMPARE(int(dialog->orientation()), orientationAfterLandscape);
    const bool landscape = orientationAfterLandscape == QPageLayout::Landscape;
    QCOMPARE(dialog->landscapeAction()->isChecked(), landscape);
    QCOMPARE(dialog->portraitAction()->isChecked(), !landscape);
    QCOMPARE(dialog->printer()->pageLayout().orientation(), dialog->orientation());

    // What the script was given, read back from the saved PDF.
    const QString fileName = m_dir.filePath(QStringLiteral("suunta%1.pdf").arg(declared + 1));
    QVERIFY2(dialog->saveReport(fileName, 0), qPrintable(dialog->lastError()));
    const QString text = PdfTools::text(fileName, 1);
    QVERIFY2(text.contains(QStringLiteral("Sivu 1 / %1").arg(landscape ? 2 : 1)), qPrintable(text));
}

// A shorter report after a redraw starts again from its first page.
void TestPrintPreviewDialog::paging()
{
    auto dialog = newDialog();
    QVERIFY(!dialog->printAction()->isEnabled());
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QCOMPARE(dialog->pageCountLabel()->text(), QStringLiteral("/ 4"));
    dialog->nextPageAction()->trigger();
    QCOMPARE(dialog->pageSpinBox()->value(), 2);
    dialog->lastPageAction()->trigger();
    QCOMPARE(dialog->currentPage(), 4);
    QVERIFY(!dialog->nextPageAction()->isEnabled());
    m_model.pages = 1;
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QCOMPARE(dialog->currentPage(), 1);
    QCOMPARE(dialog->pageCountLabel()->text(), QStringLiteral("/ 1"));
}

void TestPrintPreviewDialog::pageRangePrintsOnlyThosePages()
{
    auto dialog = newDialog();
    dialog->reallyPrint = true;
    QVERIFY(dialog->updatePrintPreview(&m_model));
    const QString fileName = m_dir.filePath(QStringLiteral("sivut.pdf"));
    QPrinter* printer = dialog->printer();
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setOutputFileName(fileName);
    printer->setPrintRange(QPrinter::PageRange);
    printer->setFromTo(2, 3);
    dialog->printDialogAccepted();
    QCOMPARE(dialog->runs.size(), 1);
    QVERIFY(dialog->runs.first().contains(QStringLiteral(" Koeraportti ")));
    QVERIFY(dialog->scriptErrors.isEmpty());

    QCOMPARE(PdfTools::pageCount(fileName), 2);
    QCOMPARE(PdfTools::text(fileName).simplified(), QStringLiteral("Sivu 2 / 1 Sivu 3 / 1"));
    // The range was for that print only.
    QCOMPARE(dialog->engine()->fromPage(), -1);
    printer->setOutputFileName(QString());
    printer->setPrintRange(QPrinter::AllPages);
    dialog->redrawPrintPreview();
    QCOMPARE(dialog->pageCount(), 4);
}

void TestPrintPreviewDialog::printReportCopies_data()
{
    QTest::addColumn<bool>("installed");
    QTest::addColumn<QString>("printer");
    QTest::addColumn<int>("copies");
    QTest::addColumn<QString>("expected"); // printer, document and copies of each run
    QTest::addRow("two copies elsewhere")
        << true << "HP" << 2 << "HP LaserJet 4 Koeraportti 1|Kopiokone Ricoh Koeraportti (kopio) 2";
    // A name that matches nothing falls back to the default printer.
    QTest::addRow("unknown printer")
        << true << "Canon" << 1
        << "Kopiokone Ricoh Koeraportti 1|Kopiokone Ricoh Koeraportti (kopio) 1";
    QTest::addRow("no printer installed")
        << false << "HP" << 1 << "Yhtään tulostinta ei ole asennettu.";
}

void TestPrintPreviewDialog::printReportCopies()
{
    QFETCH(bool, installed);
    QFETCH(QString, printer);
    QFETCH(int, copies);
    QFETCH(QString, expected);
    auto dialog = newDialog();
    if (installed)
        dialog->printers = QStringList { "Kopiokone Ricoh", "HP LaserJet 4" };
    dialog->setPrinterName(printer);
    dialog->setCopiesPrinterName(QStringLiteral("Kopio"));
    dialog->setNumberOfCopies(copies);
    QVERIFY(dialog->updatePrintPreview(&m_model));
    QCOMPARE(dialog->printReport(), installed);
    QCOMPARE((dialog->messages + dialog->runs).join('|'), expected);
    if (installed)
        QCOMPARE(dialog->printer()->docName(), QStringLiteral("Koeraportti"));
}

void TestPrintPreviewDialog::saveAs_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("filter");
    QTest::addColumn<QString>("written");

    QTest::addRow("pdf") << "lasku" << 0 << "lasku.pdf";
    QTest::addRow("pdf with suffix") << "Lasku.PDF" << 0 << "Lasku.PDF";
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
    QStringList offeredFilters;
    QString suggested;
    dialog->setFileNameChooser(
        [&](const QString& name, const QStringList& filters, int* filterIndex) {
            suggested = name;
            offeredFilters = filters;
            *filterIndex = filter;
            return m_dir.filePath(typed);
        });
    dialog->saveAction()->trigger();
    QCOMPARE(suggested, QStringLiteral("Koeraportti"));
    QCOMPARE(offeredFilters,
        (QStringList { "PDF-tiedosto (*.pdf)", "CSV-tiedosto, erottimena pilkku (*.csv)",
            "CSV-tiedosto, erottimena puolipiste (*.csv)" }));
    QVERIFY(dialog->messages.isEmpty());
    const QString fileName = m_dir.filePath(written);
    QVERIFY2(QFile::exists(fileName), qPrintable(fileName));
    if (filter == 0) {
        QCOMPARE(PdfTools::pageCount(fileName), 4);
        QVERIFY(PdfTools::info(fileName).contains(
            QRegularExpression(QStringLiteral("Title:\\s+Koeraportti"))));
    } else {
        QFile file(fileName);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), filter == 1 ? QByteArray("a,b\r\n") : QByteArray("a;b\r\n"));
    }
    QFile::remove(fileName);
}

void TestPrintPreviewDialog::failures()
{
    auto dialog = newDialog();
    QVERIFY(dialog->updatePrintPreview(&m_model));
    const QString target = m_dir.filePath(QStringLiteral("puuttuva/lasku"));
    dialog->setFileNameChooser([&](const QString&, const QStringList&, int* filterIndex) {
        *filterIndex = 0;
        return target;
    });
    dialog->saveReport();
    QCOMPARE(dialog->messages.size(), 1);
    QVERIFY2(dialog->messages.first().startsWith(
                 QStringLiteral("Tulosteen tallentaminen epäonnistui. ")),
        qPrintable(dialog->messages.first()));

    dialog = newDialog();
    m_model.fail = true;
    QVERIFY(!dialog->updatePrintPreview(&m_model));
    m_model.fail = false;
    QCOMPARE(dialog->messages, QStringList { "Tulosteen muodostaminen epäonnistui. levy täynnä" });
    QVERIFY(!dialog->saveAction()->isEnabled());
}

void TestPrintPreviewDialog::scriptErrorShownAfterPainting()
{
    auto dialog = std::make_unique<TestPreviewDialog>(m_fixture.registry());
    QVERIFY(dialog->engine()->evaluate("function print() {\n"
                                       "  drawText(20, 20, 50, 'ennen virhettä');\n"
                                       "  missingFunction();\n"
                                       "}"));
    QVERIFY(dialog->updatePrintPreview(&m_model));
    // Not from inside the paint callback: the error waits for the event loop.
    QVERIFY(dialog->scriptErrors.isEmpty());
    QTRY_VERIFY(!dialog->scriptErrors.isEmpty());
    QVERIFY(dialog->scriptErrors.first().contains(QStringLiteral("missingFunction")));
    // What was drawn before the error is shown.
    QCOMPARE(dialog->pageCount(), 1);
}

// The built-in layout for this preview only; the setting stays.
void TestPrintPreviewDialog::invoiceLayouts()
{
    const int invoiceId = m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 1001);
    const int own = m_fixture.addPrintScript(QStringLiteral("Oma pohja"), QStringLiteral("invoice"),
        QStringLiteral("function print() { setFont('Arial', 12, 'normal');"
                       " drawText(20, 20, 120, 'OMA POHJA ' + get('invoices/0/number')); }"));
    QVERIFY(invoiceId > 0 && own > 0);
    QVERIFY(m_fixture.addPrintScript(QStringLiteral("Lista"), QStringLiteral("invoice-list"),
                QStringLiteral("function print() {}"))
        > 0);
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
    QCOMPARE(dialog.printScriptId(), -1);
    QVERIFY(!dialog.layoutActions().last()->isChecked());
    QVERIFY(dialog.saveReport(file, 0));
    const QString text = PdfTools::text(file);
    QVERIFY(text.contains(QStringLiteral("LASKU")) && !text.contains(QStringLiteral("OMA POHJA")));
    QCOMPARE(m_fixture.registry()->settings()->property("printScripts/invoice").toInt(), own);
}

// The chosen columns, sort order and orientation reach the report and are
// kept for the next time.
void TestPrintPreviewDialog::invoiceListColumnsAndSort()
{
    QSettings* settings = m_fixture.registry()->appSettings();
    settings->remove(QStringLiteral("invoiceListPrint"));
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 2001, 0) > 0);
    QVERIFY(m_fixture.addInvoice(0, InvoiceFixture::sampleItems(), 2002, 1) > 0);
    const int hidden = (1 << InvoiceListPrintModel::ReferenceNumberColumn)
        | (1 << InvoiceListPrintModel::DeliveryDateColumn);
    {
        InvoiceListPrintPreviewDialog dialog(m_fixture.registry());
        QStringList headings;
        for (QAction* action : dialog.columnActions())
            headings.append(action->text() + (action->isChecked() ? "" : " -"));
        QCOMPARE(headings.join('|'),
            QStringLiteral("Laskun numero|Päivämäärä|Eräpäivä|Toimituspäivä|Asiakasnumero|"
                           "Asiakkaan nimi|Veroton|ALV|Verollinen|Avoin saldo|Viitenumero"));
        QVERIFY(dialog.updatePrintPreview(dialog.listModel()));
        dialog.columnActions().at(InvoiceListPrintModel::ReferenceNumberColumn)->trigger();
        dialog.columnActions().at(InvoiceListPrintModel::DeliveryDateColumn)->trigger();
        dialog.sortComboBox()->setCurrentIndex(InvoiceListPrintModel::CustomerNameColumn);
        dialog.setOrientationToLandscape();
        const QString fileName = m_dir.filePath(QStringLiteral("luettelo.pdf"));
        QVERIFY(dialog.saveReport(fileName, 0));
        const QString text = PdfTools::text(fileName);
        QVERIFY(!text.contains(QStringLiteral("Viitenumero")));
        QVERIFY(!text.contains(QStringLiteral("Toimituspäivä")));
        // Nordic Timber (2002) before Rautakauppa Virtanen (2001).
        QVERIFY2(text.indexOf(QStringLiteral("Nordic Timber AB"))
                < text.indexOf(QStringLiteral("Rautakauppa Virtanen Oy")),
            qPrintable(text));
        QVERIFY(PdfTools::info(fileName).contains(QStringLiteral("842 x 595 pts")));
        dialog.reject();
    }
    QCOMPARE(settings->value(QStringLiteral("invoiceListPrint/columns")).toInt(),
        ((1 << 11) - 1) & ~hidden);
    InvoiceListPrintPreviewDialog again(m_fixture.registry());
    QCOMPARE(again.orientation(), QPageLayout::Landscape);
    QCOMPARE(again.sortComboBox()->currentIndex(), int(InvoiceListPrintModel::CustomerNameColumn));
    QCOMPARE(again.listModel()->columnFlags(), ((1 << 11) - 1) & ~hidden);
}

QTEST_MAIN(TestPrintPreviewDialog)
#include "tst_printpreviewdialog.moc"
