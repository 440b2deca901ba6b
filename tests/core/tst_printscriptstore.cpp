#include "core/printscriptstore.h"
#include "core/registry.h"
#include "domain/printscript.h"
#include "domain/settings.h"
#include "storage/database.h"
#include "storage/query.h"
#include "testdatabase.h"

#include <QtTest>

#include <memory>

namespace {

// Statements that make the database refuse a change of the table.
QStringList refusal(TestDatabase::Backend backend, const QString& table)
{
    if (backend == TestDatabase::SQLite) {
        QStringList triggers;
        for (const char* event : { "INSERT", "UPDATE", "DELETE" })
            triggers.append(QStringLiteral("CREATE TRIGGER refuse_%1_%2 BEFORE %2 ON %1 BEGIN "
                                           "SELECT RAISE(ABORT, 'hylätty'); END")
                                .arg(table, QLatin1String(event)));
        return triggers;
    }
    return { QStringLiteral("CREATE FUNCTION refuse_%1() RETURNS trigger AS $$ BEGIN "
                            "RAISE EXCEPTION 'hylätty'; END $$ LANGUAGE plpgsql")
                 .arg(table),
        QStringLiteral("CREATE TRIGGER refuse_%1 BEFORE INSERT OR UPDATE OR DELETE ON %1 "
                       "FOR EACH ROW EXECUTE FUNCTION refuse_%1()")
            .arg(table) };
}

} // namespace

class TestPrintScriptStore : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void scriptAndSettingTogether_data();
    void scriptAndSettingTogether();
};

void TestPrintScriptStore::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
}

void TestPrintScriptStore::scriptAndSettingTogether_data()
{
    QTest::addColumn<int>("backend");
    // "save NAME TYPE default", "save NAME TYPE" (not default), or "remove".
    // The save of the name "Vanha" changes the stored script of that name;
    // remove removes it.
    QTest::addColumn<QString>("change");
    // The table that refuses every change: "", "print_script" or "settings".
    QTest::addColumn<QString>("refused");
    QTest::addColumn<bool>("ok");
    // The stored scripts by type and name, and the name of the default layout ("" for the
    // built-in one). Before the change: "Vanha", the default.
    QTest::addColumn<QStringList>("scripts");
    QTest::addColumn<QString>("defaultScript");

    const QStringList before = { "Vanha" };
    for (const int backend : { int(TestDatabase::SQLite), int(TestDatabase::PostgreSQL) }) {
        const QByteArray name = TestDatabase::backendName(TestDatabase::Backend(backend)).toUtf8();
        auto row = [&](const char* title) -> QTestData& {
            return QTest::addRow("%s: %s", name.constData(), title) << backend;
        };
        row("new default") << "save Uusi invoice default"
                           << "" << true << QStringList { "Uusi", "Vanha" } << "Uusi";
        row("new default, script refused") << "save Uusi invoice default"
                                           << "print_script" << false << before << "Vanha";
        row("new default, setting refused") << "save Uusi invoice default"
                                            << "settings" << false << before << "Vanha";
        row("default no more") << "save Vanha invoice"
                               << "" << true << before << "";
        row("default no more, setting refused") << "save Vanha invoice"
                                                << "settings" << false << before << "Vanha";
        // Only invoice layouts are defaults: the setting is not touched.
        row("list script, setting refused")
            << "save Lista invoice-list default"
            << "settings" << true << QStringList { "Vanha", "Lista" } << "Vanha";
        row("remove the default") << "remove"
                                  << "" << true << QStringList() << "";
        row("remove the default, setting refused") << "remove"
                                                   << "settings" << false << before << "Vanha";
        row("remove the default, script refused") << "remove"
                                                  << "print_script" << false << before << "Vanha";
    }
}

void TestPrintScriptStore::scriptAndSettingTogether()
{
    QFETCH(int, backend);
    QFETCH(QString, change);
    QFETCH(QString, refused);
    QFETCH(bool, ok);
    QFETCH(QStringList, scripts);
    QFETCH(QString, defaultScript);

    TestDatabase db { TestDatabase::Backend(backend) };
    QVERIFY2(db.open(), qPrintable(db.lastError()));
    Registry registry;
    registry.setDatabase(db.database());
    std::unique_ptr<Query> query(db.database()->query());
    PrintScript old;
    old.name = QStringLiteral("Vanha");
    old.type = QStringLiteral("invoice");
    old.sourceCode = QStringLiteral("function print() {}");
    QVERIFY(query->savePrintScript(&old));
    QVERIFY(registry.fetchSettings(query.get()));
    registry.settings()->setProperty(QStringLiteral("printScripts/invoice"), old.id);
    QVERIFY(query->updateSettings(registry.settings()));
    QVERIFY(registry.fetchSettings(query.get()) && registry.fetchPrintScripts(query.get()));
    if (!refused.isEmpty())
        QVERIFY2(db.exec(refusal(db.backend(), refused)), qPrintable(db.lastError()));

    PrintScriptStore store(&registry);
    QCOMPARE(store.defaultInvoiceScriptId(), old.id);
    const QStringList words = change.split(u' ');
    PrintScript script;
    bool done = false;
    if (words.first() == QLatin1String("remove")) {
        done = store.remove(old.id);
    } else {
        script.id = words.at(1) == old.name ? old.id : -1;
        script.name = words.at(1);
        script.type = words.at(2);
        script.sourceCode = old.sourceCode;
        done = store.save(&script, words.size() > 3);
    }
    QCOMPARE(done, ok);
    QCOMPARE(store.lastError().isEmpty(), ok);
    if (!ok && script.name == QLatin1String("Uusi"))
        QCOMPARE(script.id, -1);

    // What the database holds, read afresh, and what the registry keeps.
    QStringList stored;
    QString storedDefault;
    const QVariant defaultId = db.value(QStringLiteral("SELECT properties FROM settings"));
    Settings settings;
    settings.propertiesFromString(defaultId.toString());
    QVERIFY(query->fetchPrintScriptSummaries());
    while (query->next()) {
        PrintScript summary;
        query->printScriptSummary(&summary);
        stored.append(summary.name);
        if (settings.property(QStringLiteral("printScripts/invoice")).toInt() == summary.id)
            storedDefault = summary.name;
    }
    QCOMPARE(stored, scripts);
    QCOMPARE(storedDefault, defaultScript);
    QStringList listed;
    for (int i = 0; i < registry.printScriptCount(); ++i)
        listed.append(registry.printScriptAt(i)->name);
    QCOMPARE(listed, scripts);
    const int defaultIndex = registry.printScriptIndexById(store.defaultInvoiceScriptId());
    QCOMPARE(
        defaultIndex < 0 ? QString() : registry.printScriptAt(defaultIndex)->name, defaultScript);
}

QTEST_MAIN(TestPrintScriptStore)
#include "tst_printscriptstore.moc"
