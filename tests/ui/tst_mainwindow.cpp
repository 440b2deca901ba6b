#include "core/mainmodel.h"
#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "ui/mainwindow.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

namespace {

using Entry = QVariantMap;

// Answers the window's questions from a script instead of a modal box.
class TestWindow : public MainWindow
{
public:
    using MainWindow::MainWindow;

    bool answer = false;
    QStringList questions;
    QStringList messages;

protected:
    bool askQuestion(const QString& question) override
    {
        questions.append(question);
        return answer;
    }
    void showCriticalMessage(const QString& message) override { messages.append(message); }
};

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void titleWithoutDatabase();
    void emptyConfigurationCreatesDefaultDatabase();
    void numberSelectsEntry_data();
    void numberSelectsEntry();
    void openDatabaseLaterWaitsForEventLoop();
    void missingDatabaseAsksToCreate_data();
    void missingDatabaseAsksToCreate();
    void failuresAreReported_data();
    void failuresAreReported();
    void missingPostgreSQLDatabaseIsCreated();
    void invoiceListShowsOpenedDatabase();
    void quitActionClosesWindow();

private:
    QString path(const QString& name) const { return QDir(m_base).filePath(name); }
    // No connection, the plain title and no last-used number written.
    bool nothingOpened() const
    {
        return !m_registry->isConnected() && m_window->windowTitle() == QLatin1String("Veklari")
            && !m_registry->appSettings()->contains(QStringLiteral("databases/lastUsed"));
    }

    QTemporaryDir m_dir;
    int m_counter = 0;
    QString m_base;
    std::unique_ptr<Registry> m_registry;
    std::unique_ptr<TestWindow> m_window;
};

void TestMainWindow::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestMainWindow::init()
{
    m_base = m_dir.filePath(QString::number(++m_counter));
    QVERIFY(QDir().mkpath(m_base));
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(path(QStringLiteral("veklari.ini")));
    m_window = std::make_unique<TestWindow>(m_registry.get());
}

void TestMainWindow::cleanup()
{
    m_window.reset();
    m_registry.reset();
}

void TestMainWindow::titleWithoutDatabase()
{
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Veklari"));
}

void TestMainWindow::emptyConfigurationCreatesDefaultDatabase()
{
    QVERIFY(m_window->openDatabase(-1));
    QVERIFY(m_window->messages.isEmpty());
    QVERIFY(m_window->questions.isEmpty());

    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("databases"));
    QCOMPARE(settings->beginReadArray(QStringLiteral("settings")), 1);
    settings->setArrayIndex(0);
    QCOMPARE(settings->value(QStringLiteral("number")).toInt(), 1);
    QCOMPARE(settings->value(QStringLiteral("name")).toString(), QString());
    QCOMPARE(settings->value(QStringLiteral("filename")).toString(),
        path(QStringLiteral("laskutus.sqlite")));
    QVERIFY(!settings->contains(QStringLiteral("type")));
    settings->endArray();
    QCOMPARE(settings->value(QStringLiteral("lastUsed")).toInt(), 1);
    settings->endGroup();

    QVERIFY(QFileInfo::exists(path(QStringLiteral("laskutus.sqlite"))));
    QVERIFY(m_registry->isConnected());
    QCOMPARE(m_registry->databaseNumber(), 1);
    // No name: the file's base name stands in.
    QCOMPARE(m_window->windowTitle(), QStringLiteral("laskutus - Veklari"));
}

void TestMainWindow::numberSelectsEntry_data()
{
    QTest::addColumn<QVariant>("lastUsed");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("openedFile");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("storedLastUsed");

    const QVariant none;
    QTest::addRow("second entry") << none << 7 << "b.sqlite"
                                  << "b - Veklari" << 7;
    QTest::addRow("first entry") << QVariant(9) << 3 << "a.sqlite"
                                 << "Alpha - Veklari" << 3;
    QTest::addRow("unknown number opens the first") << none << 5 << "a.sqlite"
                                                    << "Alpha - Veklari" << 5;
    QTest::addRow("zero takes the last used") << QVariant(9) << 0 << "c.sqlite"
                                              << "Gamma - Veklari" << 9;
    QTest::addRow("none given takes the last used") << QVariant(7) << -1 << "b.sqlite"
                                                    << "b - Veklari" << 7;
    QTest::addRow("nothing used yet opens the first") << none << -1 << "a.sqlite"
                                                      << "Alpha - Veklari" << -1;
}

void TestMainWindow::numberSelectsEntry()
{
    QFETCH(QVariant, lastUsed);
    QFETCH(int, number);
    QFETCH(QString, openedFile);
    QFETCH(QString, title);
    QFETCH(int, storedLastUsed);

    QSettings* settings = m_registry->appSettings();
    TestDatabase::writeEntries(settings,
        { { { "number", 3 }, { "name", "Alpha" }, { "filename", path("a.sqlite") } },
            { { "number", 7 }, { "filename", path("b.sqlite") } },
            { { "number", 9 }, { "name", "Gamma" }, { "filename", path("c.sqlite") } } });
    if (lastUsed.isValid())
        settings->setValue(QStringLiteral("databases/lastUsed"), lastUsed);

    QVERIFY(m_window->openDatabase(number));
    QVERIFY(m_window->messages.isEmpty());
    for (const char* file : { "a.sqlite", "b.sqlite", "c.sqlite" })
        QCOMPARE(QFileInfo::exists(path(QLatin1String(file))), QLatin1String(file) == openedFile);
    QCOMPARE(m_window->windowTitle(), title);
    QCOMPARE(settings->value(QStringLiteral("databases/lastUsed")).toInt(), storedLastUsed);
    // The list itself is left alone.
    QCOMPARE(settings->value(QStringLiteral("databases/settings/size")).toInt(), 3);
}

void TestMainWindow::openDatabaseLaterWaitsForEventLoop()
{
    TestDatabase::writeEntries(m_registry->appSettings(),
        { { { "number", 4 }, { "name", "Myöhemmin" }, { "filename", path("later.sqlite") } } });
    m_window->openDatabaseLater(4);
    QVERIFY(!m_registry->isConnected());
    QTRY_VERIFY(m_registry->isConnected());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Myöhemmin - Veklari"));
    QCOMPARE(m_registry->databaseNumber(), 4);
}

void TestMainWindow::missingDatabaseAsksToCreate_data()
{
    QTest::addColumn<bool>("answer");
    QTest::addRow("yes") << true;
    QTest::addRow("no") << false;
}

void TestMainWindow::missingDatabaseAsksToCreate()
{
    QFETCH(bool, answer);

    // An entry without a file cannot be found, nor created.
    TestDatabase::writeEntries(m_registry->appSettings(),
        { { { "number", 1 }, { "name", "Kirjanpito" }, { "databaseName", "kirjanpito" } } });
    m_window->answer = answer;
    QVERIFY(!m_window->openDatabase(1));

    QCOMPARE(m_window->questions,
        QStringList { QStringLiteral(
            "Tietokantaa \"kirjanpito\" ei löytynyt. Haluatko luoda tietokannan?") });
    if (answer) {
        QCOMPARE(m_window->messages.size(), 1);
        QVERIFY(m_window->messages.at(0).startsWith(
            QStringLiteral("Tietokantayhteyden avaaminen epäonnistui. ")));
    } else {
        QVERIFY(m_window->messages.isEmpty());
    }
    QCOMPARE(m_registry->database(), nullptr);
    QVERIFY(nothingOpened());
}

void TestMainWindow::failuresAreReported_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("reason");
    QTest::addRow("not a database") << "Tietokantayhteyden avaaminen epäonnistui. "
                                    << "not a database";
    QTest::addRow("fetch fails") << "Laskutustietojen hakeminen epäonnistui. "
                                 << "print_script";
}

void TestMainWindow::failuresAreReported()
{
    QFETCH(QString, message);
    QFETCH(QString, reason);
    TestDatabase::writeEntries(m_registry->appSettings(),
        { { { "number", 2 }, { "name", "Rikki" }, { "filename", path("broken.sqlite") } } });
    if (reason == QLatin1String("print_script")) {
        QVERIFY(m_window->openDatabase(2));
        m_registry->appSettings()->remove(QStringLiteral("databases/lastUsed"));
        QSqlQuery drop(QSqlDatabase::database(m_registry->database()->connectionName()));
        QVERIFY(drop.exec(QStringLiteral("DROP TABLE print_script")));
    } else {
        QFile file(path("broken.sqlite"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(4096, 'x'));
    }
    QVERIFY(!m_window->openDatabase(2));
    QVERIFY(m_window->questions.isEmpty());
    QCOMPARE(m_window->messages.size(), 1);
    // The reason follows the text.
    QVERIFY2(m_window->messages.at(0).startsWith(message), qPrintable(m_window->messages.at(0)));
    QVERIFY2(m_window->messages.at(0).contains(reason), qPrintable(m_window->messages.at(0)));
    QVERIFY(nothingOpened());
}

void TestMainWindow::missingPostgreSQLDatabaseIsCreated()
{
    // The test server's connection, taken from an entry TestDatabase wrote.
    TestDatabase server(TestDatabase::PostgreSQL);
    QVERIFY2(server.open(), qPrintable(server.lastError()));
    server.close();
    Entry entry = server.entry();
    entry.insert(QStringLiteral("number"), 5);
    entry.insert(QStringLiteral("name"), QStringLiteral("Yhdistys"));
    const QString databaseName = server.databaseName() + QStringLiteral("_window");
    entry.insert(QStringLiteral("databaseName"), databaseName);
    TestDatabase::writeEntries(m_registry->appSettings(), { entry });

    m_window->answer = true;
    QVERIFY(m_window->openDatabase(5));
    QCOMPARE(m_window->questions,
        QStringList { QStringLiteral("Tietokantaa \"%1\" ei löytynyt. Haluatko luoda tietokannan?")
                          .arg(databaseName) });
    QVERIFY2(m_window->messages.isEmpty(), qPrintable(m_window->messages.join(QLatin1Char('\n'))));
    QVERIFY(m_registry->isConnected());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Yhdistys - Veklari"));
    QCOMPARE(m_registry->appSettings()->value(QStringLiteral("databases/lastUsed")).toInt(), 5);

    // Now it exists: no question the second time.
    QVERIFY(m_window->openDatabase(5));
    QCOMPARE(m_window->questions.size(), 1);
    m_window->model()->closeDatabase();
}

void TestMainWindow::invoiceListShowsOpenedDatabase()
{
    TestDatabase::writeEntries(
        m_registry->appSettings(), { { { "number", 1 }, { "filename", path("list.sqlite") } } });
    QVERIFY(m_window->openDatabase(1));
    {
        std::unique_ptr<Query> query(m_registry->database()->query());
        Customer customer;
        customer.name = QStringLiteral("Virtanen");
        QVERIFY(query->saveCustomer(&customer));
        for (int number : { 2, 1, 3 }) {
            Invoice invoice;
            invoice.number = number;
            invoice.customerId = customer.id;
            invoice.date = QDate(2024, 5, number);
            invoice.dueDate = invoice.date;
            QVERIFY2(query->saveInvoice(&invoice), qPrintable(query->lastError()));
        }
    }
    // Reopen to see the saved invoices.
    QVERIFY(m_window->openDatabase(1));

    QAbstractItemModel* shown = m_window->invoiceTableView()->model();
    QCOMPARE(shown->rowCount(), 3);
    QCOMPARE(shown->index(0, 0).data().toInt(), 1);
    QCOMPARE(shown->index(2, 0).data().toInt(), 3);
    // The newest invoice is the current row.
    const QModelIndexList selected = m_window->invoiceTableView()->selectionModel()->selectedRows();
    QCOMPARE(selected.size(), 1);
    QCOMPARE(selected.at(0).row(), 2);
}

void TestMainWindow::quitActionClosesWindow()
{
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QAction* quit = nullptr;
    for (QAction* action : m_window->findChildren<QAction*>()) {
        if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Q))
            quit = action;
    }
    QVERIFY(quit);
    quit->trigger();
    QVERIFY(!m_window->isVisible());
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
