#include "core/registry.h"
#include "domain/printscript.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"
#include "util/scriptloader.h"

#include <QStandardPaths>
#include <QtTest>
#include <memory>

// Stored scripts come from the database by id or by name in the registry's
// list order; built-in ones from the resources.
class TestScriptLoader : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void byId_data();
    void byId();
    void byName_data();
    void byName();
    void resource_data();
    void resource();
    void withoutDatabase();

private:
    TestDatabase m_database { TestDatabase::SQLite };
    Registry m_registry;
    QList<int> m_ids;
};

void TestScriptLoader::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    QVERIFY2(m_database.open(), qPrintable(m_database.lastError()));
    m_registry.setDatabase(m_database.database());
    std::unique_ptr<Query> query(m_database.database()->query());
    // The registry lists scripts by type, then name.
    const QList<QStringList> scripts = {
        { "invoice", "Oma lasku", "// oma lasku\nfunction print() {}" },
        { "finvoice", "Oma lasku", "// sama nimi, toinen tyyppi" },
        { "invoice", "Ääkköset", "var s = 'Hämeenkatu €';" },
        { "invoice", "tyhjä", "" },
    };
    for (const QStringList& data : scripts) {
        PrintScript script;
        script.type = data.at(0);
        script.name = data.at(1);
        script.sourceCode = data.at(2);
        QVERIFY2(query->savePrintScript(&script), qPrintable(query->lastError()));
        m_ids.append(script.id);
    }
    QVERIFY(m_registry.fetchPrintScripts(query.get()));
}

void TestScriptLoader::cleanupTestCase()
{
    m_registry.setDatabase(nullptr);
}

void TestScriptLoader::byId_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("source");
    QTest::addRow("first") << 0 << QByteArray("// oma lasku\nfunction print() {}");
    QTest::addRow("utf-8") << 2 << QString::fromUtf8("var s = 'Hämeenkatu €';").toUtf8();
    QTest::addRow("empty source is not missing") << 3 << QByteArray("");
    QTest::addRow("unknown id") << -1 << QByteArray();
}

void TestScriptLoader::byId()
{
    QFETCH(int, index);
    QFETCH(QByteArray, source);
    const ScriptLoader loader(&m_registry);
    const int id = index >= 0 ? m_ids.at(index) : 9999;
    const QByteArray loaded = loader.loadScriptById(id);
    QCOMPARE(loaded.isNull(), source.isNull());
    QCOMPARE(loaded, source);
    QVERIFY(loader.loadScriptById(-5).isNull());
}

void TestScriptLoader::byName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("source");
    // "finvoice" sorts before "invoice": the first of the list wins.
    QTest::addRow("first in list order")
        << "Oma lasku" << QByteArray("// sama nimi, toinen tyyppi");
    QTest::addRow("case-sensitive") << "oma lasku" << QByteArray();
    QTest::addRow("built-in is not stored") << "invoice" << QByteArray();
    QTest::addRow("utf-8 name") << QString::fromUtf8("Ääkköset")
                                << QString::fromUtf8("var s = 'Hämeenkatu €';").toUtf8();
}

void TestScriptLoader::byName()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, source);
    const QByteArray loaded = ScriptLoader(&m_registry).loadScriptByName(name);
    QCOMPARE(loaded.isNull(), source.isNull());
    QCOMPARE(loaded, source);
}

void TestScriptLoader::resource_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::addRow("invoice") << "invoice" << true;
    QTest::addRow("unknown") << "ei-ole" << false;
    QTest::addRow("path tricks stay in the resources") << "../sql/sqlite" << false;
}

void TestScriptLoader::resource()
{
    QFETCH(QString, name);
    QFETCH(bool, found);
    const QByteArray source = ScriptLoader(&m_registry).loadResource(name);
    QCOMPARE(!source.isNull(), found);
    if (found)
        QVERIFY(source.contains("function print()"));
}

void TestScriptLoader::withoutDatabase()
{
    Registry registry;
    const ScriptLoader loader(&registry);
    QVERIFY(loader.loadScriptById(1).isNull());
    QVERIFY(loader.loadScriptByName(QStringLiteral("Oma lasku")).isNull());
    QVERIFY(!loader.loadResource(QStringLiteral("invoice")).isNull());
}

QTEST_MAIN(TestScriptLoader)
#include "tst_scriptloader.moc"
