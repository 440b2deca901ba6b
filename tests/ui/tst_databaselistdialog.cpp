#include "core/registry.h"
#include "tst_mainwindowfixture.h"
#include "ui/databaselistdialog.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QtTest>

namespace {

class Dialog : public Recorded<DatabaseListDialog>
{
public:
    using Recorded::Recorded;
    QString chosenFile;

protected:
    QString chooseFileName(const QString&) override { return chosenFile; }
};

QLineEdit* edit(QWidget* dialog, const char* name)
{
    return dialog->findChild<QLineEdit*>(QString::fromLatin1(name));
}

void click(QWidget* dialog, const char* name)
{
    QTest::mouseClick(dialog->findChild<QPushButton*>(QString::fromLatin1(name)), Qt::LeftButton);
}

} // namespace

class TestDatabaseListDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void showsTheConfiguredDatabases();
    void editedEntriesAreWrittenBack();
    void addRemoveAndBrowse();
    void refusedLists_data();
    void refusedLists();
    void cancelLeavesTheConfigurationAlone();

private:
    // A key of entry `index` as the configuration file has it, "-" if none.
    QString entry(int index, const char* key) const;

    QTemporaryDir m_dir;
    std::unique_ptr<Registry> m_registry;
};

void TestDatabaseListDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestDatabaseListDialog::init()
{
    QFile::remove(m_dir.filePath(QStringLiteral("Veklari.ini")));
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_dir.filePath(QStringLiteral("Veklari.ini")));
    QSettings* settings = m_registry->appSettings();
    settings->setValue(QStringLiteral("databases/lastUsed"), 7);
    const QList<QList<std::pair<const char*, QVariant>>> entries = {
        { { "number", 3 }, { "name", "Toiminimi" }, { "filename", m_dir.filePath("a.sqlite") } },
        // A key of a later version stays as it is.
        { { "number", 7 }, { "type", "postgresql" }, { "host", "db.example.com" }, { "port", 5433 },
            { "databaseName", "yhdistys" }, { "username", "virtanen" }, { "password", "salainen" },
            { "sslmode", "require" } },
    };
    settings->beginGroup(QStringLiteral("databases"));
    settings->beginWriteArray(QStringLiteral("settings"), int(entries.size()));
    for (int i = 0; i < entries.size(); ++i) {
        settings->setArrayIndex(i);
        for (const auto& [key, value] : entries.at(i))
            settings->setValue(QLatin1String(key), value);
    }
    settings->endArray();
    settings->endGroup();
    m_registry->setDatabaseNumber(7);
}

void TestDatabaseListDialog::cleanup()
{
    m_registry.reset();
}

QString TestDatabaseListDialog::entry(int index, const char* key) const
{
    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("databases"));
    const int count = settings->beginReadArray(QStringLiteral("settings"));
    settings->setArrayIndex(index);
    const QVariant value = settings->value(QLatin1String(key));
    settings->endArray();
    settings->endGroup();
    return index < count && value.isValid() ? value.toString() : QStringLiteral("-");
}

void TestDatabaseListDialog::showsTheConfiguredDatabases()
{
    Dialog dialog(m_registry.get());
    QListWidget* list = dialog.findChild<QListWidget*>(QStringLiteral("databaseList"));
    // Without a name the database's own name stands in.
    QCOMPARE(QStringList({ list->item(0)->text(), list->item(1)->text() }),
        QStringList({ "3  Toiminimi", "7  yhdistys" }));
    // The open database is chosen, with the fields of a server.
    QCOMPARE(dialog.selectedNumber(), 7);
    QCOMPARE(edit(&dialog, "hostEdit")->text(), QStringLiteral("db.example.com"));
    QCOMPARE(dialog.findChild<QSpinBox*>(QStringLiteral("portSpin"))->value(), 5433);
    QVERIFY(edit(&dialog, "fileNameEdit")->parentWidget()->isHidden());

    dialog.setCurrentRow(0);
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("typeCombo"))->currentIndex(), 0);
    QCOMPARE(edit(&dialog, "fileNameEdit")->text(), m_dir.filePath(QStringLiteral("a.sqlite")));
    QVERIFY(edit(&dialog, "hostEdit")->isHidden());
}

void TestDatabaseListDialog::editedEntriesAreWrittenBack()
{
    Dialog dialog(m_registry.get());
    replaceText(edit(&dialog, "nameEdit"), QStringLiteral("Yhdistys ry"));
    replaceText(edit(&dialog, "usernameEdit"), QStringLiteral("rahastonhoitaja"));
    dialog.findChild<QSpinBox*>(QStringLiteral("portSpin"))->setValue(5432);
    QCOMPARE(dialog.findChild<QListWidget*>()->item(1)->text(), QStringLiteral("7  Yhdistys ry"));
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.selectedNumber(), 7);
    QStringList written;
    for (const char* key : { "name", "username", "port", "password", "sslmode" })
        written.append(entry(1, key));
    QCOMPARE(
        written, QStringList({ "Yhdistys ry", "rahastonhoitaja", "5432", "salainen", "require" }));
    QCOMPARE(entry(0, "filename"), m_dir.filePath(QStringLiteral("a.sqlite")));
    QCOMPARE(entry(2, "number"), QStringLiteral("-"));
}

void TestDatabaseListDialog::addRemoveAndBrowse()
{
    Dialog dialog(m_registry.get());
    click(&dialog, "addButton");
    QCOMPARE(dialog.currentRow(), 2);
    // The next number, and a file beside the configuration.
    QCOMPARE(dialog.selectedNumber(), 8);
    QCOMPARE(
        edit(&dialog, "fileNameEdit")->text(), m_dir.filePath(QStringLiteral("laskutus-8.sqlite")));
    dialog.chosenFile = m_dir.filePath(QStringLiteral("uusi.sqlite"));
    click(&dialog, "browseButton");
    QCOMPARE(edit(&dialog, "fileNameEdit")->text(), dialog.chosenFile);
    dialog.setCurrentRow(0);
    click(&dialog, "removeButton");
    QCOMPARE(dialog.entryCount(), 2);
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(QStringList({ entry(0, "number"), entry(1, "number"), entry(2, "number") }),
        QStringList({ "7", "8", "-" }));
    QCOMPARE(QStringList({ entry(0, "sslmode"), entry(1, "type"), entry(1, "filename") }),
        QStringList({ "require", "sqlite", dialog.chosenFile }));
}

void TestDatabaseListDialog::refusedLists_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("warning");
    QTest::newRow("number taken") << "number"
                                  << "Numero 3 on jo toisen tietokannan käytössä.";
    QTest::newRow("no database name") << "databaseName"
                                      << "Anna tietokannan nimi.";
    QTest::newRow("no file") << "filename"
                             << "Anna tietokantatiedoston nimi.";
}

void TestDatabaseListDialog::refusedLists()
{
    QFETCH(QString, change);
    QFETCH(QString, warning);

    Dialog dialog(m_registry.get());
    if (change == QLatin1String("number")) {
        dialog.findChild<QSpinBox*>(QStringLiteral("numberSpin"))->setValue(3);
    } else if (change == QLatin1String("databaseName")) {
        replaceText(edit(&dialog, "databaseNameEdit"), QString());
    } else {
        dialog.setCurrentRow(0);
        replaceText(edit(&dialog, "fileNameEdit"), QString());
    }
    dialog.accept();
    QCOMPARE(dialog.warnings, QStringList { warning });
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(QStringList({ entry(1, "number"), entry(1, "databaseName"), entry(0, "filename") }),
        QStringList({ "7", "yhdistys", m_dir.filePath(QStringLiteral("a.sqlite")) }));
}

void TestDatabaseListDialog::cancelLeavesTheConfigurationAlone()
{
    Dialog dialog(m_registry.get());
    replaceText(edit(&dialog, "nameEdit"), QStringLiteral("Muutettu"));
    click(&dialog, "addButton");
    dialog.reject();
    QCOMPARE(QStringList({ entry(1, "name"), entry(2, "number") }), QStringList({ "-", "-" }));
}

QTEST_MAIN(TestDatabaseListDialog)
#include "tst_databaselistdialog.moc"
