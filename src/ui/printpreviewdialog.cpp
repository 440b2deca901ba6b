#include "printpreviewdialog.h"

#include "core/registry.h"
#include "domain/logging.h"
#include "print/customerlistprintmodel.h"
#include "print/invoiceprintjob.h"
#include "print/printmodel.h"
#include "print/printscriptengine.h"
#include "print/productlistprintmodel.h"
#include "print/scripthelper.h"
#include "print/scriptpdfwriter.h"
#include "scripterrordialog.h"

#include <QAction>
#include <QActionGroup>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QPrintDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPrinterInfo>
#include <QSettings>
#include <QSpinBox>
#include <QStandardPaths>
#include <QStyle>
#include <QToolBar>
#include <QVBoxLayout>

namespace {

const double zoomFactors[]
    = { 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 1.0, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0, 4.0 };
// The combo box's first entries are the two fit modes.
constexpr int firstFactorIndex = 2;
constexpr int defaultZoomIndex = 0;
// An A4 page in a window of its own, when nothing was kept from last time.
constexpr QSize defaultSize(900, 1000);

} // namespace

PrintPreviewDialog::PrintPreviewDialog(Registry* registry, QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_engine(new PrintScriptEngine(this))
    , m_printer(new QPrinter(QPrinter::HighResolution))
{
    setWindowTitle(tr("Tulosteen esikatselu"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    m_printer->setPageSize(QPageSize(QPageSize::A4));
    m_printer->setFullPage(true);

    m_toolBar = new QToolBar(this);
    // Actions without an icon show their text.
    m_toolBar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    m_preview = new QPrintPreviewWidget(m_printer, this);
    connect(
        m_preview, &QPrintPreviewWidget::paintRequested, this, &PrintPreviewDialog::paintRequested);
    connect(
        m_preview, &QPrintPreviewWidget::previewChanged, this, &PrintPreviewDialog::previewChanged);

    m_zoomCombo = new QComboBox(this);
    m_zoomCombo->setObjectName(QStringLiteral("zoomCombo"));
    m_zoomCombo->addItem(tr("Sovita ikkunaan"));
    m_zoomCombo->addItem(tr("Sovita leveys"));
    for (double factor : zoomFactors)
        m_zoomCombo->addItem(tr("%1 %").arg(qRound(factor * 100)), factor);
    m_pageSpin = new QSpinBox(this);
    m_pageSpin->setObjectName(QStringLiteral("pageSpin"));
    m_pageSpin->setRange(1, 1);
    m_pageCountLabel = new QLabel(tr("/ %1").arg(0), this);

    createActions();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_toolBar);
    layout->addWidget(m_preview, 1);

    connect(m_zoomCombo, qOverload<int>(&QComboBox::currentIndexChanged), this,
        &PrintPreviewDialog::zoomChanged);
    connect(m_pageSpin, qOverload<int>(&QSpinBox::valueChanged), this,
        &PrintPreviewDialog::pageChanged);
    restoreSettings();
    updateButtonsEnabled();
}

PrintPreviewDialog::~PrintPreviewDialog()
{
    // The preview widget paints on the printer until it is gone.
    delete m_preview;
    m_preview = nullptr;
    delete m_printer;
}

void PrintPreviewDialog::createActions()
{
    QStyle* style = this->style();
    m_closeAction = new QAction(tr("&Sulje"), this);
    m_closeAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    connect(m_closeAction, &QAction::triggered, this, &QDialog::reject);

    m_printSetupAction = new QAction(tr("Tulostus&asetukset"), this);
    connect(m_printSetupAction, &QAction::triggered, this, &PrintPreviewDialog::openPrintDialog);
    m_printAction = new QAction(tr("&Tulosta"), this);
    connect(m_printAction, &QAction::triggered, this, [this]() { printReport(); });
    m_saveAction = new QAction(tr("Ta&llenna"), this);
    m_saveAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    connect(m_saveAction, &QAction::triggered, this, qOverload<>(&PrintPreviewDialog::saveReport));

    m_firstPageAction = new QAction(
        style->standardIcon(QStyle::SP_MediaSkipBackward), tr("Ensimmäinen sivu"), this);
    connect(m_firstPageAction, &QAction::triggered, this, &PrintPreviewDialog::firstPage);
    m_previousPageAction = new QAction(
        style->standardIcon(QStyle::SP_MediaSeekBackward), tr("Edellinen sivu"), this);
    m_previousPageAction->setShortcut(QKeySequence(Qt::Key_PageUp));
    connect(m_previousPageAction, &QAction::triggered, this, &PrintPreviewDialog::previousPage);
    m_nextPageAction
        = new QAction(style->standardIcon(QStyle::SP_MediaSeekForward), tr("Seuraava sivu"), this);
    m_nextPageAction->setShortcut(QKeySequence(Qt::Key_PageDown));
    connect(m_nextPageAction, &QAction::triggered, this, &PrintPreviewDialog::nextPage);
    m_lastPageAction
        = new QAction(style->standardIcon(QStyle::SP_MediaSkipForward), tr("Viimeinen sivu"), this);
    connect(m_lastPageAction, &QAction::triggered, this, &PrintPreviewDialog::lastPage);

    m_zoomInAction = new QAction(tr("Suurenna"), this);
    m_zoomInAction->setShortcut(QKeySequence::ZoomIn);
    connect(m_zoomInAction, &QAction::triggered, this, &PrintPreviewDialog::zoomIn);
    m_zoomOutAction = new QAction(tr("Pienennä"), this);
    m_zoomOutAction->setShortcut(QKeySequence::ZoomOut);
    connect(m_zoomOutAction, &QAction::triggered, this, &PrintPreviewDialog::zoomOut);

    m_orientationGroup = new QActionGroup(this);
    m_orientationGroup->setExclusive(true);
    m_portraitAction = new QAction(tr("Pysty"), m_orientationGroup);
    m_portraitAction->setCheckable(true);
    m_portraitAction->setChecked(true);
    connect(
        m_portraitAction, &QAction::triggered, this, &PrintPreviewDialog::setOrientationToPortrait);
    m_landscapeAction = new QAction(tr("Vaaka"), m_orientationGroup);
    m_landscapeAction->setCheckable(true);
    connect(m_landscapeAction, &QAction::triggered, this,
        &PrintPreviewDialog::setOrientationToLandscape);

    m_toolBar->addAction(m_closeAction);
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_printSetupAction);
    m_toolBar->addAction(m_printAction);
    m_toolBar->addAction(m_saveAction);
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_firstPageAction);
    m_toolBar->addAction(m_previousPageAction);
    m_toolBar->addWidget(new QLabel(tr("Sivu") + QLatin1Char(' '), this));
    m_toolBar->addWidget(m_pageSpin);
    m_toolBar->addWidget(m_pageCountLabel);
    m_toolBar->addAction(m_nextPageAction);
    m_toolBar->addAction(m_lastPageAction);
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_zoomOutAction);
    m_toolBar->addWidget(m_zoomCombo);
    m_toolBar->addAction(m_zoomInAction);
    m_toolBar->addSeparator();
    m_toolBar->addAction(m_portraitAction);
    m_toolBar->addAction(m_landscapeAction);
    m_toolBar->addSeparator();
}

void PrintPreviewDialog::restoreSettings()
{
    QSettings* settings = m_registry ? m_registry->appSettings() : nullptr;
    int zoom = defaultZoomIndex;
    if (settings) {
        settings->beginGroup(QStringLiteral("printPreviewWindow"));
        const QByteArray geometry = settings->value(QStringLiteral("geometry")).toByteArray();
        if (geometry.isEmpty() || !restoreGeometry(geometry)) {
            resize(defaultSize);
            m_fitToolBar = true;
        }
        bool ok = false;
        const int saved = settings->value(QStringLiteral("zoom")).toInt(&ok);
        if (ok && saved >= 0 && saved < m_zoomCombo->count())
            zoom = saved;
        settings->endGroup();
    } else {
        resize(defaultSize);
        m_fitToolBar = true;
    }
    m_zoomCombo->setCurrentIndex(zoom);
    setZoomIndex(zoom);
}

void PrintPreviewDialog::saveSettings() { }

void PrintPreviewDialog::showEvent(QShowEvent* event)
{
    if (m_fitToolBar) {
        m_fitToolBar = false;
        const QMargins margins = layout()->contentsMargins();
        const int toolBarWidth = m_toolBar->sizeHint().width() + margins.left() + margins.right();
        if (toolBarWidth > width())
            resize(toolBarWidth, height());
    }
    QDialog::showEvent(event);
}

void PrintPreviewDialog::done(int result)
{
    if (QSettings* settings = m_registry ? m_registry->appSettings() : nullptr) {
        settings->beginGroup(QStringLiteral("printPreviewWindow"));
        settings->setValue(QStringLiteral("geometry"), saveGeometry());
        settings->setValue(QStringLiteral("zoom"), m_zoomCombo->currentIndex());
        settings->endGroup();
    }
    saveSettings();
    QDialog::done(result);
}

bool PrintPreviewDialog::updatePrintPreview(PrintModel* model)
{
    if (!model)
        return false;
    if (!model->run()) {
        showMessage(QMessageBox::Critical,
            tr("Tulosteen muodostaminen epäonnistui. %1").arg(model->lastError()));
        return false;
    }
    m_documentName = model->title();
    m_model = model;
    m_engine->setModel(model);
    redrawPrintPreview();
    return true;
}

int PrintPreviewDialog::pageCount() const
{
    return m_preview->pageCount();
}

int PrintPreviewDialog::currentPage() const
{
    return m_preview->currentPage();
}

void PrintPreviewDialog::redrawPrintPreview()
{
    if (!m_model)
        return;
    const int mask = m_engine->supportedOrientations();
    // Only a landscape page that the script cannot draw is corrected.
    if (!(mask & 2) && m_orientation == QPageLayout::Landscape)
        m_orientation = QPageLayout::Portrait;
    m_portraitAction->setEnabled(mask & 1);
    m_landscapeAction->setEnabled(mask & 2);
    (m_orientation == QPageLayout::Portrait ? m_portraitAction : m_landscapeAction)
        ->setChecked(true);
    configurePrinter(m_printer);
    m_preview->updatePreview();
    const int pages = m_preview->pageCount();
    m_updatingPage = true;
    m_pageSpin->setRange(1, qMax(1, pages));
    m_pageSpin->setValue(1);
    m_updatingPage = false;
    m_pageCountLabel->setText(tr("/ %1").arg(pages));
    m_preview->setCurrentPage(1);
    updateButtonsEnabled();
}

void PrintPreviewDialog::paintRequested(QPrinter* printer)
{
    if (!m_model)
        return;
    if (!printOn(m_engine, printer)) {
        // The error dialog opens after painting has finished.
        QMetaObject::invokeMethod(
            this, "showScriptError", Qt::QueuedConnection, Q_ARG(QString, m_engine->lastError()));
    }
}

void PrintPreviewDialog::showScriptError(const QString& error)
{
    ScriptErrorDialog dialog(error, this);
    dialog.exec();
}

void PrintPreviewDialog::showMessage(QMessageBox::Icon icon, const QString& text)
{
    QMessageBox box(icon, windowTitle(), text, QMessageBox::Ok, this);
    box.exec();
}

void PrintPreviewDialog::setOrientation(QPageLayout::Orientation orientation)
{
    m_orientation = orientation;
    redrawPrintPreview();
    (m_orientation == QPageLayout::Portrait ? m_portraitAction : m_landscapeAction)
        ->setChecked(true);
}

void PrintPreviewDialog::setOrientationToPortrait()
{
    setOrientation(QPageLayout::Portrait);
}

void PrintPreviewDialog::setOrientationToLandscape()
{
    setOrientation(QPageLayout::Landscape);
}

void PrintPreviewDialog::configurePrinter(QPrinter* printer) const
{
    printer->setPageOrientation(m_orientation);
    printer->setFullPage(true);
}

QStringList PrintPreviewDialog::installedPrinterNames() const
{
    return QPrinterInfo::availablePrinterNames();
}

QString PrintPreviewDialog::defaultPrinterName() const
{
    return QPrinterInfo::defaultPrinterName();
}

bool PrintPreviewDialog::setPrinter(const QString& name)
{
    const QStringList printers = installedPrinterNames();
    if (printers.isEmpty()) {
        showMessage(QMessageBox::Information, tr("Yhtään tulostinta ei ole asennettu."));
        return false;
    }
    QString chosen;
    if (!name.isEmpty()) {
        for (const QString& printer : printers) {
            if (printer.startsWith(name)) {
                chosen = printer;
                break;
            }
        }
    }
    if (chosen.isEmpty()) {
        chosen = defaultPrinterName();
        if (!printers.contains(chosen))
            chosen = printers.first();
    }
    m_selectedPrinterName = chosen;
    m_printer->setPrinterName(chosen);
    qCDebug(logUi) << "Tulostin" << chosen;
    return true;
}

bool PrintPreviewDialog::printOn(PrintScriptEngine* engine, QPrinter* printer)
{
    return engine->print(printer, printer->resolution(), tr("Tulostimen avaaminen epäonnistui"));
}

bool PrintPreviewDialog::runPrintScript(QPrinter* printer)
{
    configurePrinter(printer);
    if (printOn(m_engine, printer))
        return true;
    QMetaObject::invokeMethod(
        this, "showScriptError", Qt::QueuedConnection, Q_ARG(QString, m_engine->lastError()));
    return false;
}

void PrintPreviewDialog::openPrintDialog()
{
    if (!m_model)
        return;
    QPrintDialog dialog(m_printer, this);
    dialog.setOption(QAbstractPrintDialog::PrintPageRange, true);
    dialog.setMinMax(1, qMax(1, pageCount()));
    if (dialog.exec() == QDialog::Accepted)
        printDialogAccepted();
}

void PrintPreviewDialog::printDialogAccepted()
{
    if (!m_model)
        return;
    if (m_printer->printRange() == QPrinter::PageRange) {
        m_engine->setFromPage(m_printer->fromPage());
        m_engine->setToPage(m_printer->toPage());
    }
    m_printer->setDocName(m_documentName);
    runPrintScript(m_printer);
    // The range is for this print only; the preview shows every page.
    m_engine->setFromPage(-1);
    m_engine->setToPage(-1);
}

bool PrintPreviewDialog::printReport()
{
    if (!m_model || !setPrinter(m_printerName))
        return false;
    m_printer->setDocName(m_documentName);
    m_printer->setCopyCount(1);
    bool result = runPrintScript(m_printer);
    if (result && m_numberOfCopies >= 1 && setPrinter(m_copiesPrinterName)) {
        m_printer->setDocName(tr("%1 (kopio)").arg(m_documentName));
        m_printer->setCopyCount(m_numberOfCopies);
        result = runPrintScript(m_printer);
        m_printer->setCopyCount(1);
        m_printer->setDocName(m_documentName);
    }
    return result;
}

QStringList PrintPreviewDialog::saveFilters()
{
    return { tr("PDF-tiedosto (*.pdf)"), tr("CSV-tiedosto, erottimena pilkku (*.csv)"),
        tr("CSV-tiedosto, erottimena puolipiste (*.csv)") };
}

QString PrintPreviewDialog::fileNameWithSuffix(const QString& fileName, int filterIndex)
{
    const QString suffix = filterIndex == 0 ? QStringLiteral(".pdf") : QStringLiteral(".csv");
    if (fileName.endsWith(suffix, Qt::CaseInsensitive))
        return fileName;
    return fileName + suffix;
}

void PrintPreviewDialog::saveReport()
{
    if (!m_model)
        return;
    const QStringList filters = saveFilters();
    const QString suggested = m_documentName.isEmpty() ? tr("tuloste") : m_documentName;
    int filterIndex = 0;
    QString fileName;
    if (m_fileNameChooser) {
        fileName = m_fileNameChooser(suggested, filters, &filterIndex);
    } else {
        const QString directory
            = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
        QString selected = filters.first();
        fileName = QFileDialog::getSaveFileName(this, tr("Tallenna"),
            QDir(directory).filePath(suggested), filters.join(QStringLiteral(";;")), &selected);
        filterIndex = qMax(0, filters.indexOf(selected));
    }
    if (fileName.isEmpty())
        return;
    if (!saveReport(fileName, filterIndex))
        showMessage(
            QMessageBox::Critical, tr("Tulosteen tallentaminen epäonnistui. %1").arg(m_lastError));
}

bool PrintPreviewDialog::saveReport(const QString& fileName, int filterIndex)
{
    m_lastError.clear();
    if (!m_model) {
        m_lastError = tr("Ei tulostetta");
        return false;
    }
    const QString target = fileNameWithSuffix(fileName, filterIndex);
    if (filterIndex == 0) {
        ScriptPdfWriter writer;
        writer.setTitle(m_documentName);
        writer.setOrientation(m_orientation);
        if (!writer.write(m_engine, target)) {
            m_lastError = writer.lastError();
            return false;
        }
        return true;
    }
    if (!m_model->exportToCSV(target, PrintModel::csvFormatToDelimiter(filterIndex - 1))) {
        m_lastError = m_model->lastError();
        return false;
    }
    return true;
}

void PrintPreviewDialog::setZoomIndex(int index)
{
    if (index == 0) {
        m_preview->setZoomMode(QPrintPreviewWidget::FitInView);
    } else if (index == 1) {
        m_preview->setZoomMode(QPrintPreviewWidget::FitToWidth);
    } else if (index >= firstFactorIndex && index < m_zoomCombo->count()) {
        m_preview->setZoomMode(QPrintPreviewWidget::CustomZoom);
        m_preview->setZoomFactor(zoomFactors[index - firstFactorIndex]);
    }
}

void PrintPreviewDialog::zoomChanged(int index)
{
    setZoomIndex(index);
    updateButtonsEnabled();
}

void PrintPreviewDialog::zoomIn()
{
    const double current = m_preview->zoomFactor();
    const int count = int(std::size(zoomFactors));
    for (int i = 0; i < count; ++i) {
        if (zoomFactors[i] > current + 0.001) {
            m_zoomCombo->setCurrentIndex(firstFactorIndex + i);
            return;
        }
    }
    m_zoomCombo->setCurrentIndex(firstFactorIndex + count - 1);
}

void PrintPreviewDialog::zoomOut()
{
    const double current = m_preview->zoomFactor();
    for (int i = int(std::size(zoomFactors)) - 1; i >= 0; --i) {
        if (zoomFactors[i] < current - 0.001) {
            m_zoomCombo->setCurrentIndex(firstFactorIndex + i);
            return;
        }
    }
    m_zoomCombo->setCurrentIndex(firstFactorIndex);
}

void PrintPreviewDialog::firstPage()
{
    m_pageSpin->setValue(1);
}

void PrintPreviewDialog::previousPage()
{
    m_pageSpin->setValue(qMax(1, m_pageSpin->value() - 1));
}

void PrintPreviewDialog::nextPage()
{
    m_pageSpin->setValue(qMin(qMax(1, pageCount()), m_pageSpin->value() + 1));
}

void PrintPreviewDialog::lastPage()
{
    m_pageSpin->setValue(qMax(1, pageCount()));
}

void PrintPreviewDialog::pageChanged(int page)
{
    if (!m_updatingPage)
        m_preview->setCurrentPage(page);
    updateButtonsEnabled();
}

void PrintPreviewDialog::previewChanged()
{
    const int page = m_preview->currentPage();
    if (page >= 1 && page != m_pageSpin->value()) {
        m_updatingPage = true;
        m_pageSpin->setValue(page);
        m_updatingPage = false;
    }
    updateButtonsEnabled();
}

void PrintPreviewDialog::updateButtonsEnabled()
{
    const bool hasOutput = m_model != nullptr;
    const int pages = hasOutput ? pageCount() : 0;
    const int page = m_pageSpin->value();
    m_firstPageAction->setEnabled(pages > 1 && page > 1);
    m_previousPageAction->setEnabled(pages > 1 && page > 1);
    m_nextPageAction->setEnabled(pages > 1 && page < pages);
    m_lastPageAction->setEnabled(pages > 1 && page < pages);
    m_pageSpin->setEnabled(pages > 1);
    m_printAction->setEnabled(hasOutput);
    m_printSetupAction->setEnabled(hasOutput);
    m_saveAction->setEnabled(hasOutput);
    const int zoom = m_zoomCombo->currentIndex();
    m_zoomOutAction->setEnabled(zoom != firstFactorIndex);
    m_zoomInAction->setEnabled(zoom != m_zoomCombo->count() - 1);
}

bool PrintPreviewDialog::execReport(PrintModel* model)
{
    setPrinterName(InvoicePrintJob(m_registry).reportPrinterName());
    if (!updatePrintPreview(model))
        return false;
    exec();
    return true;
}

bool PrintPreviewDialog::showCustomerList(Registry* registry, QWidget* parent)
{
    PrintPreviewDialog dialog(registry, parent);
    CustomerListPrintModel model(registry);
    ScriptHelper(registry).loadCustomerListScript(dialog.engine());
    return dialog.execReport(&model);
}

bool PrintPreviewDialog::showProductList(Registry* registry, QWidget* parent)
{
    PrintPreviewDialog dialog(registry, parent);
    ProductListPrintModel model(registry);
    ScriptHelper(registry).loadProductListScript(dialog.engine());
    return dialog.execReport(&model);
}
