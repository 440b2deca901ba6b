#include "core/registry.h"
#include "testdatabase.h"
#include "tst_mainwindowfixture.h"
#include "ui/databaselistdialog.h"

#include <QLineEdit>
#include <QListWidget>
#include <QSettings>
#include <QSpinBox>
#include <QtTest>

namespace {

using Dialog = Recorded<DatabaseListDialog>;

QLineEdit* edit(QWidget* dialog, const char* name)
{
    return dialog->findChild<QLineEdit*>(QString::fromLatin1(name));
}

} // namespace

class TestDatabaseListDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void editedEntriesAreWrittenBack();

private:
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
    m_registry->appSettings()->setValue(QStringLiteral("databases/lastUsed"), 7);
    TestDatabase::writeEntries(m_registry->appSettings(),
        { { { "number", 3 }, { "name", "Toiminimi" }, { "filename", m_dir.filePath("a.sqlite") } },
            // A key of a later version stays as it is.
            { { "number", 7 }, { "type", "postgresql" }, { "host", "db.example.com" },
                { "port", 5433 }, { "databaseName", "yhdistys" }, { "username", "virtanen" },
                { "password", "salainen" }, { "sslmode", "require" } } });
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

QTEST_MAIN(TestDatabaseListDialog)
#include "tst_databaselistdialog.moc"
