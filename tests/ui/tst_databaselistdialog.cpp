#include "core/registry.h"
#include "ui/databaselistdialog.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QSpinBox>
#include <QtTest>

namespace {

class Dialog : public DatabaseListDialog
{
public:
    using DatabaseListDialog::DatabaseListDialog;
    QStringList warnings;
    QString chosenFile;

protected:
    void showWarning(const QString& text) override { warnings.append(text); }
    QString chooseFileName(const QString&) override { return chosenFile; }
};

void typeOver(QWidget* dialog, const char* name, const QString& text)
{
    QLineEdit* edit = dialog->findChild<QLineEdit*>(QString::fromLatin1(name));
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Backspace);
    QTest::keyClicks(edit, text);
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
    void addedEntryIsNumberedAndSelected();
    void removedEntryIsGone();
    void refusedLists_data();
    void refusedLists();
    void cancelLeavesTheConfigurationAlone();
    void browseFillsTheFileName();

private:
    QVariant entryValue(int index, const char* key) const;

    QTemporaryDir m_dir;
    std::unique_ptr<Registry> m_registry;
};

void TestDatabaseListDialog::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY(m_dir.isValid());
}

void TestDatabaseListDialog::init()
{
    QFile::remove(m_dir.filePath(QStringLiteral("Veklari.ini")));
    m_registry = std::make_unique<Registry>();
    m_registry->loadSettings(m_dir.filePath(QStringLiteral("Veklari.ini")));
    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("databases"));
    settings->setValue(QStringLiteral("lastUsed"), 7);
    settings->beginWriteArray(QStringLiteral("settings"), 2);
    settings->setArrayIndex(0);
    settings->setValue(QStringLiteral("number"), 3);
    settings->setValue(QStringLiteral("name"), QStringLiteral("Toiminimi"));
    settings->setValue(QStringLiteral("filename"), m_dir.filePath(QStringLiteral("a.sqlite")));
    settings->setArrayIndex(1);
    settings->setValue(QStringLiteral("number"), 7);
    settings->setValue(QStringLiteral("type"), QStringLiteral("postgresql"));
    settings->setValue(QStringLiteral("host"), QStringLiteral("db.example.com"));
    settings->setValue(QStringLiteral("port"), 5433);
    settings->setValue(QStringLiteral("databaseName"), QStringLiteral("yhdistys"));
    settings->setValue(QStringLiteral("username"), QStringLiteral("virtanen"));
    settings->setValue(QStringLiteral("password"), QStringLiteral("salainen"));
    // A key of a later version stays as it is.
    settings->setValue(QStringLiteral("sslmode"), QStringLiteral("require"));
    settings->endArray();
    settings->endGroup();
    m_registry->setDatabaseNumber(7);
}

void TestDatabaseListDialog::cleanup()
{
    m_registry.reset();
}

QVariant TestDatabaseListDialog::entryValue(int index, const char* key) const
{
    QSettings* settings = m_registry->appSettings();
    settings->beginGroup(QStringLiteral("databases"));
    settings->beginReadArray(QStringLiteral("settings"));
    settings->setArrayIndex(index);
    const QVariant value = settings->value(QLatin1String(key));
    settings->endArray();
    settings->endGroup();
    return value;
}

void TestDatabaseListDialog::showsTheConfiguredDatabases()
{
    Dialog dialog(m_registry.get());
    QListWidget* list = dialog.findChild<QListWidget*>(QStringLiteral("databaseList"));
    QCOMPARE(list->count(), 2);
    QCOMPARE(list->item(0)->text(), QStringLiteral("3  Toiminimi"));
    // Without a name the database's own name stands in.
    QCOMPARE(list->item(1)->text(), QStringLiteral("7  yhdistys"));
    // The open database is chosen.
    QCOMPARE(dialog.currentRow(), 1);
    QCOMPARE(dialog.selectedNumber(), 7);
    QCOMPARE(dialog.findChild<QLineEdit*>(QStringLiteral("hostEdit"))->text(),
        QStringLiteral("db.example.com"));
    QCOMPARE(dialog.findChild<QSpinBox*>(QStringLiteral("portSpin"))->value(), 5433);
    QVERIFY(!dialog.findChild<QLineEdit*>(QStringLiteral("hostEdit"))->isHidden());
    QVERIFY(
        dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->parentWidget()->isHidden());

    dialog.setCurrentRow(0);
    QCOMPARE(dialog.findChild<QComboBox*>(QStringLiteral("typeCombo"))->currentIndex(), 0);
    QCOMPARE(dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(),
        m_dir.filePath(QStringLiteral("a.sqlite")));
    QVERIFY(dialog.findChild<QLineEdit*>(QStringLiteral("hostEdit"))->isHidden());
}

void TestDatabaseListDialog::editedEntriesAreWrittenBack()
{
    Dialog dialog(m_registry.get());
    typeOver(&dialog, "nameEdit", QStringLiteral("Yhdistys ry"));
    typeOver(&dialog, "usernameEdit", QStringLiteral("rahastonhoitaja"));
    dialog.findChild<QSpinBox*>(QStringLiteral("portSpin"))->setValue(5432);
    QCOMPARE(dialog.findChild<QListWidget*>()->item(1)->text(), QStringLiteral("7  Yhdistys ry"));
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.selectedNumber(), 7);

    QCOMPARE(
        m_registry->appSettings()->value(QStringLiteral("databases/settings/size")).toInt(), 2);
    QCOMPARE(entryValue(1, "name").toString(), QStringLiteral("Yhdistys ry"));
    QCOMPARE(entryValue(1, "username").toString(), QStringLiteral("rahastonhoitaja"));
    QCOMPARE(entryValue(1, "port").toInt(), 5432);
    QCOMPARE(entryValue(1, "password").toString(), QStringLiteral("salainen"));
    QCOMPARE(entryValue(1, "sslmode").toString(), QStringLiteral("require"));
    QCOMPARE(entryValue(0, "filename").toString(), m_dir.filePath(QStringLiteral("a.sqlite")));
    QCOMPARE(m_registry->appSettings()->value(QStringLiteral("databases/lastUsed")).toInt(), 7);
}

void TestDatabaseListDialog::addedEntryIsNumberedAndSelected()
{
    Dialog dialog(m_registry.get());
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("addButton")), Qt::LeftButton);
    QCOMPARE(dialog.entryCount(), 3);
    QCOMPARE(dialog.currentRow(), 2);
    QCOMPARE(dialog.selectedNumber(), 8);
    typeOver(&dialog, "nameEdit", QStringLiteral("Kolmas"));
    dialog.accept();
    QVERIFY(dialog.warnings.isEmpty());
    QCOMPARE(entryValue(2, "number").toInt(), 8);
    QCOMPARE(entryValue(2, "name").toString(), QStringLiteral("Kolmas"));
    QCOMPARE(entryValue(2, "type").toString(), QStringLiteral("sqlite"));
    QCOMPARE(
        entryValue(2, "filename").toString(), m_dir.filePath(QStringLiteral("laskutus-8.sqlite")));
}

void TestDatabaseListDialog::removedEntryIsGone()
{
    Dialog dialog(m_registry.get());
    dialog.setCurrentRow(0);
    QTest::mouseClick(
        dialog.findChild<QPushButton*>(QStringLiteral("removeButton")), Qt::LeftButton);
    QCOMPARE(dialog.entryCount(), 1);
    QCOMPARE(dialog.selectedNumber(), 7);
    dialog.accept();
    QCOMPARE(
        m_registry->appSettings()->value(QStringLiteral("databases/settings/size")).toInt(), 1);
    QCOMPARE(entryValue(0, "number").toInt(), 7);
    QCOMPARE(entryValue(0, "sslmode").toString(), QStringLiteral("require"));
    QVERIFY(!entryValue(1, "number").isValid());
}

void TestDatabaseListDialog::refusedLists_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("warning");

    QTest::addRow("number taken") << "number"
                                  << "Numero 3 on jo toisen tietokannan käytössä.";
    QTest::addRow("no database name") << "databaseName"
                                      << "Anna tietokannan nimi.";
    QTest::addRow("no file") << "filename"
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
        typeOver(&dialog, "databaseNameEdit", QString());
    } else {
        dialog.setCurrentRow(0);
        typeOver(&dialog, "fileNameEdit", QString());
    }
    dialog.accept();
    QCOMPARE(dialog.warnings, QStringList { warning });
    QCOMPARE(dialog.result(), int(QDialog::Rejected));
    QCOMPARE(entryValue(1, "number").toInt(), 7);
    QCOMPARE(entryValue(1, "databaseName").toString(), QStringLiteral("yhdistys"));
    QCOMPARE(entryValue(0, "filename").toString(), m_dir.filePath(QStringLiteral("a.sqlite")));
}

void TestDatabaseListDialog::cancelLeavesTheConfigurationAlone()
{
    Dialog dialog(m_registry.get());
    typeOver(&dialog, "nameEdit", QStringLiteral("Muutettu"));
    QTest::mouseClick(dialog.findChild<QPushButton*>(QStringLiteral("addButton")), Qt::LeftButton);
    dialog.reject();
    QCOMPARE(
        m_registry->appSettings()->value(QStringLiteral("databases/settings/size")).toInt(), 2);
    QVERIFY(!entryValue(1, "name").isValid());
}

void TestDatabaseListDialog::browseFillsTheFileName()
{
    Dialog dialog(m_registry.get());
    dialog.setCurrentRow(0);
    dialog.chosenFile = m_dir.filePath(QStringLiteral("uusi.sqlite"));
    QTest::mouseClick(
        dialog.findChild<QPushButton*>(QStringLiteral("browseButton")), Qt::LeftButton);
    QCOMPARE(
        dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(), dialog.chosenFile);
    dialog.accept();
    QCOMPARE(entryValue(0, "filename").toString(), dialog.chosenFile);
    QCOMPARE(dialog.selectedNumber(), 3);
}

QTEST_MAIN(TestDatabaseListDialog)
#include "tst_databaselistdialog.moc"
