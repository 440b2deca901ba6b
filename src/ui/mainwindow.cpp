#include "mainwindow.h"

#include "core/invoicetablemodel.h"
#include "core/mainmodel.h"
#include "core/registry.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>

namespace {

const QString applicationTitle = QStringLiteral("Veklari");

} // namespace

MainWindow::MainWindow(Registry* registry, QWidget* parent)
    : QMainWindow(parent)
    , m_registry(registry)
    , m_model(new MainModel(registry, this))
    , m_invoiceTableView(new QTableView(this))
    , m_statusLabel(new QLabel(this))
{
    m_invoiceTableView->setModel(m_model->invoiceTableModel());
    m_invoiceTableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_invoiceTableView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_invoiceTableView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_invoiceTableView->verticalHeader()->hide();
    m_invoiceTableView->horizontalHeader()->setSectionResizeMode(
        InvoiceTableModel::CustomerColumn, QHeaderView::Stretch);
    setCentralWidget(m_invoiceTableView);

    m_quitAction = new QAction(tr("&Lopeta"), this);
    m_quitAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(m_quitAction, &QAction::triggered, this, &QWidget::close);
    menuBar()->addMenu(tr("&Tiedosto"))->addAction(m_quitAction);

    statusBar()->addWidget(m_statusLabel, 1);
    resize(900, 600);
    updateWindowTitle();
    updateStatus();
}

MainWindow::~MainWindow() = default;

void MainWindow::openDatabaseLater(int number)
{
    m_numberToOpen = number;
    QTimer::singleShot(0, this, &MainWindow::openDatabaseSlot);
}

void MainWindow::openDatabaseSlot()
{
    openDatabase(m_numberToOpen);
}

bool MainWindow::openDatabase(int number)
{
    QSettings* appSettings = m_registry->appSettings();
    appSettings->beginGroup(QStringLiteral("databases"));
    if (number <= 0)
        number = appSettings->value(QStringLiteral("lastUsed"), -1).toInt();

    int index = 0;
    const int count = appSettings->beginReadArray(QStringLiteral("settings"));
    if (number >= 1) {
        for (int i = 0; i < count; ++i) {
            appSettings->setArrayIndex(i);
            if (appSettings->value(QStringLiteral("number"), 0).toInt() == number) {
                index = i;
                break;
            }
        }
    }
    appSettings->endArray();
    appSettings->endGroup();

    if (count == 0) {
        number = addDefaultDatabase();
        index = 0;
    }

    appSettings->beginGroup(QStringLiteral("databases"));
    appSettings->beginReadArray(QStringLiteral("settings"));
    appSettings->setArrayIndex(index);
    const QString databaseName = appSettings->value(QStringLiteral("databaseName")).toString();
    m_databaseTitle = appSettings->value(QStringLiteral("name")).toString();
    if (m_databaseTitle.isEmpty()) {
        const QString fileName = appSettings->value(QStringLiteral("filename")).toString();
        m_databaseTitle
            = fileName.isEmpty() ? databaseName : QFileInfo(fileName).completeBaseName();
    }
    appSettings->endArray();
    appSettings->endGroup();

    m_registry->setDatabaseNumber(number);
    int status = m_model->openDatabase(index, false);
    if (status == -2) {
        const QString question
            = tr("Tietokantaa \"%1\" ei löytynyt. Haluatko luoda tietokannan?").arg(databaseName);
        if (!askQuestion(question)) {
            m_model->closeDatabase();
            updateWindowTitle();
            updateStatus();
            return false;
        }
        status = m_model->openDatabase(index, true);
    }

    bool ok = false;
    if (status != 0) {
        showCriticalMessage(
            tr("Tietokantayhteyden avaaminen epäonnistui. %1").arg(m_model->lastError()));
        m_model->closeDatabase();
    } else if (!m_model->fetchData()) {
        showCriticalMessage(
            tr("Laskutustietojen hakeminen epäonnistui. %1").arg(m_model->lastError()));
        m_model->closeDatabase();
    } else {
        m_invoiceTableView->scrollToBottom();
        const int last = m_model->invoiceCount() - 1;
        if (last >= 0)
            m_invoiceTableView->selectRow(last);
        appSettings->beginGroup(QStringLiteral("databases"));
        appSettings->setValue(QStringLiteral("lastUsed"), number);
        appSettings->endGroup();
        ok = true;
    }

    updateWindowTitle();
    updateStatus();
    return ok;
}

int MainWindow::addDefaultDatabase()
{
    QSettings* appSettings = m_registry->appSettings();
    const QString fileName = QFileInfo(appSettings->fileName())
                                 .absoluteDir()
                                 .absoluteFilePath(tr("laskutus") + QStringLiteral(".sqlite"));
    appSettings->beginGroup(QStringLiteral("databases"));
    appSettings->beginWriteArray(QStringLiteral("settings"), 1);
    appSettings->setArrayIndex(0);
    appSettings->setValue(QStringLiteral("number"), 1);
    appSettings->setValue(QStringLiteral("name"), QString());
    appSettings->setValue(QStringLiteral("filename"), fileName);
    appSettings->endArray();
    appSettings->endGroup();
    return 1;
}

void MainWindow::showErrorMessage(const QString& message)
{
    showCriticalMessage(message);
}

bool MainWindow::askQuestion(const QString& question)
{
    return QMessageBox::question(this, windowTitle(), question, QMessageBox::Yes | QMessageBox::No)
        == QMessageBox::Yes;
}

void MainWindow::showCriticalMessage(const QString& message)
{
    QMessageBox::critical(this, windowTitle(), message);
}

void MainWindow::updateWindowTitle()
{
    if (m_registry->isConnected() && !m_databaseTitle.isEmpty())
        setWindowTitle(QStringLiteral("%1 - %2").arg(m_databaseTitle, applicationTitle));
    else
        setWindowTitle(applicationTitle);
}

void MainWindow::updateStatus()
{
    if (m_registry->isConnected())
        m_statusLabel->setText(tr("Laskuja %1 kpl").arg(m_model->invoiceCount()));
    else
        m_statusLabel->setText(tr("Ei avointa tietokantaa"));
}
