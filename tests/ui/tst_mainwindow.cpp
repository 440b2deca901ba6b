#include "core/mainmodel.h"
#include "core/registry.h"
#include "storage/database.h"
#include "testdatabase.h"
#include "ui/mainwindow.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

namespace {

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

const QString missingQuestion
    = QStringLiteral("Tietokantaa \"%1\" ei löytynyt. Haluatko luoda tietokannan?");

} // namespace

class TestMainWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void numberSelectsEntry_data();
    void numberSelectsEntry();
    void failuresAreReported_data();
    void failuresAreReported();
    void missingPostgreSQLDatabaseIsCreated();

private:
    QString path(const char* name) const { return QDir(m_base).filePath(QLatin1String(name)); }

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
    m_registry->loadSettings(path("veklari.ini"));
    m_window = std::make_unique<TestWindow>(m_registry.get());
}

void TestMainWindow::cleanup()
{
    m_window.reset();
    m_registry.reset();
}

void TestMainWindow::numberSelectsEntry_data()
{
    QTest::addColumn<bool>("entries");
    QTest::addColumn<QVariant>("lastUsed");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("openedFile");
    QTest::addColumn<QString>("title");
    QTest::addColumn<int>("storedLastUsed");

    const QVariant none;
    // Without a name the file's base name stands in.
    QTest::addRow("empty configuration") << false << none << -1 << "laskutus.sqlite"
                                         << "laskutus - Veklari" << 1;
    QTest::addRow("second entry") << true << none << 7 << "b.sqlite"
                                  << "b - Veklari" << 7;
    QTest::addRow("first entry") << true << QVariant(9) << 3 << "a.sqlite"
                                 << "Alpha - Veklari" << 3;
    QTest::addRow("unknown number opens the first") << true << none << 5 << "a.sqlite"
                                                    << "Alpha - Veklari" << 5;
    QTest::addRow("zero takes the last used") << true << QVariant(9) << 0 << "c.sqlite"
                                              << "Gamma - Veklari" << 9;
    QTest::addRow("nothing used yet opens the first") << true << none << -1 << "a.sqlite"
                                                      << "Alpha - Veklari" << -1;
}

void TestMainWindow::numberSelectsEntry()
{
    QFETCH(bool, entries);
    QFETCH(QVariant, lastUsed);
    QFETCH(int, number);
    QFETCH(QString, openedFile);
    QFETCH(QString, title);
    QFETCH(int, storedLastUsed);

    QSettings* settings = m_registry->appSettings();
    if (entries) {
        TestDatabase::writeEntries(settings,
            { { { "number", 3 }, { "name", "Alpha" }, { "filename", path("a.sqlite") } },
                { { "number", 7 }, { "filename", path("b.sqlite") } },
                { { "number", 9 }, { "name", "Gamma" }, { "filename", path("c.sqlite") } } });
    }
    if (lastUsed.isValid())
        settings->setValue(QStringLiteral("databases/lastUsed"), lastUsed);

    QVERIFY(m_window->openDatabase(number));
    QVERIFY(m_window->messages.isEmpty() && m_window->questions.isEmpty());
    for (const char* file : { "a.sqlite", "b.sqlite", "c.sqlite", "laskutus.sqlite" })
        QCOMPARE(QFileInfo::exists(path(file)), QLatin1String(file) == openedFile);
    QCOMPARE(m_window->windowTitle(), title);
    QCOMPARE(settings->value(QStringLiteral("databases/lastUsed"), -1).toInt(), storedLastUsed);
    // The list is left alone, or written with the new database.
    QCOMPARE(settings->value(QStringLiteral("databases/settings/size")).toInt(), entries ? 3 : 1);
    if (!entries)
        QCOMPARE(settings->value(QStringLiteral("databases/settings/1/filename")).toString(),
            path("laskutus.sqlite"));
}

void TestMainWindow::failuresAreReported_data()
{
    QTest::addColumn<QString>("broken"); // missing, file or table
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QString>("message"); // the start of it, empty for none
    QTest::addColumn<QString>("reason");
    const QString connection = QStringLiteral("Tietokantayhteyden avaaminen epäonnistui. ");
    // An entry without a file cannot be found, nor created.
    QTest::addRow("missing, create") << "missing" << true << connection << "";
    QTest::addRow("missing, do not create") << "missing" << false << ""
                                            << "";
    QTest::addRow("not a database") << "file" << false << connection << "not a database";
    // A file that cannot be made is no question of creating: the cause is shown.
    QTest::addRow("directory is a file")
        << "unusable" << true << connection << "kansio/uusi.sqlite";
    QTest::addRow("fetch fails") << "table" << false << "Laskutustietojen hakeminen epäonnistui. "
                                 << "print_script";
}

void TestMainWindow::failuresAreReported()
{
    QFETCH(QString, broken);
    QFETCH(bool, answer);
    QFETCH(QString, message);
    QFETCH(QString, reason);

    if (broken == QLatin1String("missing")) {
        TestDatabase::writeEntries(m_registry->appSettings(),
            { { { "number", 2 }, { "name", "Kirjanpito" }, { "databaseName", "kirjanpito" } } });
    } else if (broken == QLatin1String("unusable")) {
        QFile notADirectory(path("kansio"));
        QVERIFY(notADirectory.open(QIODevice::WriteOnly));
        TestDatabase::writeEntries(m_registry->appSettings(),
            { { { "number", 2 }, { "filename", path("kansio/uusi.sqlite") } } });
    } else {
        TestDatabase::writeEntries(m_registry->appSettings(),
            { { { "number", 2 }, { "name", "Rikki" }, { "filename", path("broken.sqlite") } } });
    }
    if (broken == QLatin1String("table")) {
        QVERIFY(m_window->openDatabase(2));
        m_registry->appSettings()->remove(QStringLiteral("databases/lastUsed"));
        QSqlQuery drop(QSqlDatabase::database(m_registry->database()->connectionName()));
        QVERIFY(drop.exec(QStringLiteral("DROP TABLE print_script")));
    } else if (broken == QLatin1String("file")) {
        QFile file(path("broken.sqlite"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(4096, 'x'));
    }
    m_window->answer = answer;
    QVERIFY(!m_window->openDatabase(2));

    QCOMPARE(m_window->questions,
        broken == QLatin1String("missing") ? QStringList { missingQuestion.arg("kirjanpito") }
                                           : QStringList());
    QCOMPARE(m_window->messages.size(), message.isEmpty() ? 0 : 1);
    if (!message.isEmpty()) {
        const QString shown = m_window->messages.at(0);
        // The reason follows the text.
        QVERIFY2(shown.startsWith(message) && shown.contains(reason), qPrintable(shown));
    }
    QVERIFY(!m_registry->isConnected());
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Veklari"));
    QVERIFY(!m_registry->appSettings()->contains(QStringLiteral("databases/lastUsed")));
}

void TestMainWindow::missingPostgreSQLDatabaseIsCreated()
{
    // The test server's connection, taken from an entry TestDatabase wrote.
    TestDatabase server(TestDatabase::PostgreSQL);
    QVERIFY2(server.open(), qPrintable(server.lastError()));
    server.close();
    QVariantMap entry = server.entry();
    entry.insert(QStringLiteral("number"), 5);
    entry.insert(QStringLiteral("name"), QStringLiteral("Yhdistys"));
    const QString databaseName = server.databaseName() + QStringLiteral("_window");
    entry.insert(QStringLiteral("databaseName"), databaseName);
    TestDatabase::writeEntries(m_registry->appSettings(), { entry });

    m_window->answer = true;
    QVERIFY(m_window->openDatabase(5));
    QCOMPARE(m_window->questions, QStringList { missingQuestion.arg(databaseName) });
    QVERIFY2(m_window->messages.isEmpty(), qPrintable(m_window->messages.join(QLatin1Char('\n'))));
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Yhdistys - Veklari"));
    QCOMPARE(m_registry->appSettings()->value(QStringLiteral("databases/lastUsed")).toInt(), 5);

    m_window->model()->closeDatabase();
}

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
