#include "domain/decimal.h"
#include "logcapture.h"
#include "pdftools.h"
#include "print/printmodel.h"
#include "print/printscriptengine.h"
#include "print/scriptpdfwriter.h"

#include <QPainter>
#include <QPdfWriter>
#include <QtTest>
#include <array>

// A model of fixed values for the engine's data functions.
class TableModel : public PrintModel
{
public:
    QMap<QString, QVariant> values;

    QString title() const override { return QStringLiteral("Testi"); }
    using PrintModel::value;
    QVariant value(QStringList& path) override { return values.value(path.join('/')); }
    bool exportToCSV(const QString&, const QString&) override { return false; }
};

// The print script engine: data and format functions, page ranges read back from real PDF files,
// and failures.
class TestPrintScriptEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void formatting_data();
    void formatting();
    void logging();
    void pageRanges_data();
    void pageRanges();
    void failuresLeaveNoPdf();
    void runawayScripts_data();
    void runawayScripts();
    void fontAndPenWhileNotDrawing_data();
    void fontAndPenWhileNotDrawing();

private:
    // Evaluates the script and prints it into a new PDF file; empty on failure.
    QString render(PrintScriptEngine& engine, const QByteArray& script);
    static QString global(PrintScriptEngine& engine, const char* name);

    QTemporaryDir m_dir;
    TableModel m_model;
    int m_files = 0;
    QString m_error;
};

void TestPrintScriptEngine::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    Decimal::registerMetaType();
    m_model.values = {
        { "price", Decimal(125000, 4).toVariant() },
        { "total", Decimal(139804, 2).toVariant() },
        { "negative", Decimal(-250, 2).toVariant() },
        { "count", 1234 },
        { "date", QDate(2025, 3, 15) },
        { "name", QStringLiteral("Kuusela") },
    };
}

QString TestPrintScriptEngine::render(PrintScriptEngine& engine, const QByteArray& script)
{
    engine.setModel(&m_model);
    const QString file = m_dir.filePath(QStringLiteral("out-%1.pdf").arg(++m_files));
    ScriptPdfWriter writer;
    if (engine.evaluate(script) && writer.write(&engine, file))
        return file;
    m_error = engine.lastError();
    return QString();
}

QString TestPrintScriptEngine::global(PrintScriptEngine& engine, const char* name)
{
    duk_context* ctx = engine.context();
    duk_get_global_string(ctx, name);
    const QString value = QString::fromUtf8(duk_safe_to_string(ctx, -1));
    duk_pop(ctx);
    return value;
}

void TestPrintScriptEngine::formatting_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected");
    // "_" stands for the Finnish group separator, "~" for its minus sign.
    const QList<std::array<const char*, 3>> rows {
        { "currency", "formatCurrency(123456)", "1_234,56" },
        { "number with minimum", "formatNumber(15, 4, 2)", "0,0015" },
        { "decimal as integer", "get('price')", "125000" },
        { "unit price", "getNumber('price', 2)", "12,50" },
        { "total", "getCurrency('total')", "1_398,04" },
        { "negative total", "getCurrency('negative')", "~2,50" },
        { "english locale", "(setLocale('en'), formatCurrency(123456))", "1,234.56" },
    };
    for (const auto& row : rows)
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2]);
    QTest::addRow("current year") << "currentDateTime('yyyy')"
                                  << QString::number(QDate::currentDate().year());
}

void TestPrintScriptEngine::formatting()
{
    QFETCH(QString, expression);
    QFETCH(QString, expected);
    const QLocale finnish(QLocale::Finnish, QLocale::Finland);
    expected.replace(QLatin1Char('_'), finnish.groupSeparator());
    expected.replace(QLatin1Char('~'), finnish.negativeSign());
    PrintScriptEngine engine;
    engine.setModel(&m_model);
    QVERIFY2(
        engine.evaluate(
            QStringLiteral("setLocale('fi'); var result = String(%1);").arg(expression).toUtf8()),
        qPrintable(engine.lastError()));
    QCOMPARE(global(engine, "result"), expected);
}

// Every value read and every run in the script log.
void TestPrintScriptEngine::logging()
{
    LogCapture log("veklari.script");
    PrintScriptEngine engine;
    QVERIFY(!render(engine, "get('total'); get('name'); function print() {}").isEmpty());
    QCOMPARE(log.lines(),
        (QStringList { "debug: total = 1398.04", "debug: name = Kuusela", "debug: Tulostetaan",
            "debug: Tulostus valmis" }));
}

void TestPrintScriptEngine::pageRanges_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QList<int>>("pages");
    QTest::addRow("all") << -1 << -1 << QList<int> { 1, 2, 3 };
    QTest::addRow("second only") << 2 << 2 << QList<int> { 2 };
    QTest::addRow("zero means no limit, beyond the end") << 0 << 9 << QList<int> { 1, 2, 3 };
}

void TestPrintScriptEngine::pageRanges()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QList<int>, pages);
    PrintScriptEngine engine;
    engine.setFromPage(from);
    engine.setToPage(to);
    const QString file = render(engine,
        "function print() {\n"
        "  setFont('Arial', 12, 'normal');\n"
        "  for (var i = 1; i <= 3; i++) {\n"
        "    if (i > 1) newPage();\n"
        "    drawText(20, 20, 100, 'Sivumerkki' + i);\n"
        "  }\n"
        "}\n");
    QVERIFY2(!file.isEmpty(), qPrintable(m_error));
    QCOMPARE(PdfTools::pageCount(file), pages.size());
    for (int i = 0; i < pages.size(); ++i)
        QCOMPARE(PdfTools::text(file, i + 1).simplified(),
            QStringLiteral("Sivumerkki%1").arg(pages.at(i)));
    // The script laid out all three pages.
    QCOMPARE(engine.pageNumber(), 3);
}

// A script without print() or one that fails half way never leaves a
// half-written PDF: the file that was there stays as it was.
void TestPrintScriptEngine::failuresLeaveNoPdf()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("lasku.pdf"));
    {
        QFile old(file);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("edellinen versio");
    }
    PrintScriptEngine engine;
    ScriptPdfWriter writer;
    QVERIFY(engine.evaluate("var onlyData = 1;"));
    QVERIFY(!writer.write(&engine, file));
    QCOMPARE(writer.lastError(), QStringLiteral("function print does not exist"));
    QVERIFY(engine.evaluate("function print() {\n"
                            "  drawText(10, 10, 50, 'alku');\n"
                            "  newPage();\n"
                            "  throw new Error('kesken');\n"
                            "}\n"));
    QVERIFY(!writer.write(&engine, file));
    QVERIFY2(writer.lastError().startsWith(QStringLiteral("Error: kesken")),
        qPrintable(writer.lastError()));
    QVERIFY2(writer.lastError().contains(QStringLiteral(":4")), qPrintable(writer.lastError()));
    QFile old(file);
    QVERIFY(old.open(QIODevice::ReadOnly));
    QCOMPARE(old.readAll(), QByteArray("edellinen versio"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList { "lasku.pdf" });

    QVERIFY(engine.evaluate("function print() { drawText(10, 10, 50, 'valmis'); }"));
    QVERIFY2(writer.write(&engine, file), qPrintable(writer.lastError()));
    QVERIFY(PdfTools::text(file).contains(QStringLiteral("valmis")));
}

// A print script that never ends, recurses without end or fills the memory is
// stopped with an error that says why; no PDF is left and the same engine
// prints the next script.
void TestPrintScriptEngine::runawayScripts_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("error");
    const QString time
        = QStringLiteral("Skripti keskeytettiin, koska sen suoritus kesti yli 0,1 s.");
    QTest::newRow("endless loop") << QByteArray("function print() {\n"
                                                "  var y = 0;\n"
                                                "  while (true) drawText(10, y++ % 200, 50, 'x');\n"
                                                "}\n")
                                  << time;
    QTest::newRow("endless page loop")
        << QByteArray("function print() { for (;;) newPage(); }") << time;
    QTest::newRow("unbounded recursion")
        << QByteArray("function rivi(n) { drawText(10, 10, 50, String(n)); rivi(n + 1); }\n"
                      "function print() { rivi(0); }")
        << QStringLiteral("Skripti keskeytettiin, koska sen funktiokutsuja oli sisäkkäin");
    QTest::newRow("unbounded allocation")
        << QByteArray("function print() { var s = get('name');\n"
                      "  for (;;) s += s; }")
        << QStringLiteral("Skripti keskeytettiin, koska se varasi muistia yli 16 Mt.");
}

void TestPrintScriptEngine::runawayScripts()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, error);
    constexpr int timeLimit = 100;
    constexpr size_t memoryLimit = size_t(16) * 1024 * 1024;
    QLocale::setDefault(QLocale(QLocale::Finnish, QLocale::Finland));
    PrintScriptEngine engine;
    engine.setTimeLimit(timeLimit);
    engine.setMemoryLimit(memoryLimit);
    const QStringList files = QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden);
    QVERIFY(render(engine, script).isEmpty());
    QLocale::setDefault(QLocale::c());
    QVERIFY2(m_error.startsWith(error), qPrintable(m_error));
    QCOMPARE(QDir(m_dir.path()).entryList(QDir::Files | QDir::Hidden), files);

    const QString file = render(engine,
        "function supportedOrientations() { return 1; }\n"
        "function print() { drawText(10, 10, 50, 'seuraava ' + get('name')); }");
    QVERIFY2(!file.isEmpty(), qPrintable(m_error));
    QVERIFY(PdfTools::text(file).contains(QStringLiteral("seuraava Kuusela")));
    QVERIFY(QFile::remove(file));
}

void TestPrintScriptEngine::fontAndPenWhileNotDrawing_data()
{
    QTest::addColumn<int>("page"); // the one page printed, or -1 for all
    QTest::addColumn<QString>("stop"); // makes drawing impossible
    QTest::addColumn<QString>("resume");
    QTest::addRow("output off") << -1 << "setOutputEnabled(false)"
                                << "setOutputEnabled(true)";
    QTest::addRow("page out of range") << 2 << "newPage()"
                                       << "newPage()";
}

// While nothing can be drawn, setFont() and setPen() leave the painter alone, yet measuring and
// the drawing that follows use what they were given.
void TestPrintScriptEngine::fontAndPenWhileNotDrawing()
{
    QFETCH(int, page);
    QFETCH(QString, stop);
    QFETCH(QString, resume);
    PrintScriptEngine engine;
    engine.setFromPage(page);
    engine.setToPage(page);
    engine.setModel(&m_model);
    const QString script = QStringLiteral(R"(var wide, narrow;
        function print() {
            if (%1 < 0) %2;
            setFont('Arial', 8, 'normal'); narrow = boundingRect('Mittari').width;
            setFont('Arial', 24, 'normal'); wide = boundingRect('Mittari').width;
            setPen('#ff0000', 0.5);
            %3; drawText(20, 20, 150, 'Mittari'); %2;
            setFont('Arial', 6, 'bold'); setPen('#0000ff', 0.5);
        })");
    QVERIFY(engine.evaluate(script.arg(page).arg(stop, resume).toUtf8()));
    const QString file = m_dir.filePath(QStringLiteral("font-%1.pdf").arg(++m_files));
    QPdfWriter writer(file);
    QPainter painter(&writer);
    QVERIFY2(engine.run(&writer, &painter, writer.resolution()), qPrintable(engine.lastError()));
    QCOMPARE(painter.font().pointSizeF(), 24.0);
    QCOMPARE(painter.pen().color(), QColor(Qt::red));
    painter.end();
    QCOMPARE(engine.font().pointSizeF(), 6.0);
    QCOMPARE(engine.pen().color(), QColor(Qt::blue));
    QVERIFY(global(engine, "wide").toDouble() > 2 * global(engine, "narrow").toDouble());

    // The word drawn when drawing resumed is in 24 pt.
    const QList<PdfTools::Word> words = PdfTools::pages(file).value(0).words;
    QCOMPARE(PdfTools::texts(words), QStringList { "Mittari" });
    const double points = words.at(0).box.height() * 72 / 25.4;
    QVERIFY2(points > 20 && points < 30, qPrintable(QString::number(points)));
}

QTEST_MAIN(TestPrintScriptEngine)
#include "tst_printscriptengine.moc"
