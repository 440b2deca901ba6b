#ifndef PRINTPREVIEWDIALOG_H
#define PRINTPREVIEWDIALOG_H

#include <QDialog>
#include <QMessageBox>
#include <QPageLayout>
#include <QStringList>
#include <functional>

class PrintModel;
class PrintScriptEngine;
class QAction;
class QActionGroup;
class QComboBox;
class QLabel;
class QPrintPreviewWidget;
class QPrinter;
class QSpinBox;
class QToolBar;
class Registry;

// Shows what a print script draws from a print model, pages and zooms
// through it, and prints it or saves it as PDF or CSV. The caller evaluates
// the script in engine() and hands the model to updatePrintPreview().
// Window geometry and zoom are kept in the configuration file, group
// "printPreviewWindow".
class PrintPreviewDialog : public QDialog
{
    Q_OBJECT
public:
    // Chooses the file to save: returns the name (empty to cancel) and
    // sets *filterIndex to the chosen entry of saveFilters().
    using FileNameChooser = std::function<QString(
        const QString& suggestedName, const QStringList& filters, int* filterIndex)>;

    explicit PrintPreviewDialog(Registry* registry, QWidget* parent = nullptr);
    ~PrintPreviewDialog() override;

    Registry* registry() const { return m_registry; }
    PrintScriptEngine* engine() const { return m_engine; }
    PrintModel* model() const { return m_model; }
    QPrinter* printer() const { return m_printer; }
    QPrintPreviewWidget* previewWidget() const { return m_preview; }
    QToolBar* toolBar() const { return m_toolBar; }
    QComboBox* zoomComboBox() const { return m_zoomCombo; }
    QSpinBox* pageSpinBox() const { return m_pageSpin; }
    QLabel* pageCountLabel() const { return m_pageCountLabel; }
    QAction* portraitAction() const { return m_portraitAction; }
    QAction* landscapeAction() const { return m_landscapeAction; }
    QAction* printAction() const { return m_printAction; }
    QAction* saveAction() const { return m_saveAction; }
    QAction* closeAction() const { return m_closeAction; }
    QAction* printSetupAction() const { return m_printSetupAction; }
    QAction* firstPageAction() const { return m_firstPageAction; }
    QAction* previousPageAction() const { return m_previousPageAction; }
    QAction* nextPageAction() const { return m_nextPageAction; }
    QAction* lastPageAction() const { return m_lastPageAction; }

    // Runs the model and shows its output; false (after telling the user)
    // when the model fails.
    bool updatePrintPreview(PrintModel* model);
    // Shows the model's report on the reports printer until the user closes
    // it; false when the report could not be made.
    bool execReport(PrintModel* model);
    int pageCount() const;
    int currentPage() const;

    QPageLayout::Orientation orientation() const { return m_orientation; }
    void setOrientation(QPageLayout::Orientation orientation);
    // Applies the orientation and measures from the paper's edge.
    void configurePrinter(QPrinter* printer) const;

    // The printer of the original and, with numberOfCopies above 0, the
    // printer of the copies; both matched by the beginning of the name.
    QString printerName() const { return m_printerName; }
    void setPrinterName(const QString& name) { m_printerName = name; }
    QString copiesPrinterName() const { return m_copiesPrinterName; }
    void setCopiesPrinterName(const QString& name) { m_copiesPrinterName = name; }
    int numberOfCopies() const { return m_numberOfCopies; }
    void setNumberOfCopies(int copies) { m_numberOfCopies = copies; }
    QString documentName() const { return m_documentName; }
    // Selects the first installed printer whose name begins with name (the
    // system's default for an empty name); false when none is installed.
    bool setPrinter(const QString& name);
    // The printer setPrinter() chose last.
    QString selectedPrinterName() const { return m_selectedPrinterName; }

    // The customer and product lists, shown on the reports printer.
    static bool showCustomerList(Registry* registry, QWidget* parent);
    static bool showProductList(Registry* registry, QWidget* parent);

    // Runs the engine's script on a printer.
    static bool printOn(PrintScriptEngine* engine, QPrinter* printer);

    static QStringList saveFilters();
    // The name with ".pdf" or ".csv" added when the filter's suffix is missing.
    static QString fileNameWithSuffix(const QString& fileName, int filterIndex);
    void setFileNameChooser(const FileNameChooser& chooser) { m_fileNameChooser = chooser; }
    // Writes the output as PDF (filter 0) or CSV (1 comma, 2 semicolon).
    bool saveReport(const QString& fileName, int filterIndex);
    QString lastError() const { return m_lastError; }

public slots:
    void setOrientationToPortrait();
    void setOrientationToLandscape();
    void redrawPrintPreview();
    void openPrintDialog();
    // Prints on printer() within the page range chosen in the print dialog.
    void printDialogAccepted();
    // The original on printerName(), then the copies on copiesPrinterName().
    bool printReport();
    void saveReport();
    void firstPage();
    void previousPage();
    void nextPage();
    void lastPage();
    void zoomIn();
    void zoomOut();
    virtual void showScriptError(const QString& error);
    void done(int result) override;

protected:
    void showEvent(QShowEvent* event) override;
    virtual void showMessage(QMessageBox::Icon icon, const QString& text);
    virtual QStringList installedPrinterNames() const;
    virtual QString defaultPrinterName() const;
    // Prints the script on printer; a script error is shown after return.
    virtual bool runPrintScript(QPrinter* printer);
    // Called when the dialog closes, for the subclasses' own settings.
    virtual void saveSettings();

private slots:
    void paintRequested(QPrinter* printer);
    void zoomChanged(int index);
    void pageChanged(int page);
    void previewChanged();
    void updateButtonsEnabled();

private:
    void createActions();
    void restoreSettings();
    void setZoomIndex(int index);

    Registry* m_registry;
    PrintScriptEngine* m_engine;
    PrintModel* m_model = nullptr;
    QPrinter* m_printer;
    QPrintPreviewWidget* m_preview;
    QToolBar* m_toolBar;
    QComboBox* m_zoomCombo;
    QSpinBox* m_pageSpin;
    QLabel* m_pageCountLabel;
    QActionGroup* m_orientationGroup;
    QAction* m_portraitAction;
    QAction* m_landscapeAction;
    QAction* m_printAction;
    QAction* m_saveAction;
    QAction* m_closeAction;
    QAction* m_printSetupAction;
    QAction* m_firstPageAction;
    QAction* m_previousPageAction;
    QAction* m_nextPageAction;
    QAction* m_lastPageAction;
    QAction* m_zoomInAction;
    QAction* m_zoomOutAction;
    QPageLayout::Orientation m_orientation = QPageLayout::Portrait;
    QString m_printerName;
    QString m_copiesPrinterName;
    QString m_selectedPrinterName;
    int m_numberOfCopies = 0;
    QString m_documentName;
    QString m_lastError;
    FileNameChooser m_fileNameChooser;
    bool m_updatingPage = false;
    // No size was kept from last time: the first showing widens the window
    // to the whole toolbar, subclasses' tools included.
    bool m_fitToolBar = false;
};

#endif // PRINTPREVIEWDIALOG_H
