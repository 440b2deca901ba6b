#include "domain/decimal.h"
#include "logcapture.h"
#include "pdftools.h"
#include "print/printmodel.h"
#include "print/printscriptengine.h"
#include "print/scriptpdfwriter.h"

#include <QDir>
#include <QLocale>
#include <QPdfWriter>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>
#include <cmath>

// A model of fixed values for the engine's data functions.
class TableModel : public PrintModel
{
public:
    QMap<QString, QVariant> values;
    QImage picture;

    QString title() const override { return QStringLiteral("Testi"); }
    using PrintModel::image;
    using PrintModel::value;
    QVariant value(QStringList& path) override { return values.value(path.join('/')); }
    QImage image(QStringList& path) override
    {
        return path.join('/') == QLatin1String("kuva") ? picture : QImage();
    }
    bool exportToCSV(const QString&, const QString&) override { return false; }
};

class TestPrintScriptEngine : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void formatting_data();
    void formatting();
    void getIsLogged();
    void pageRanges_data();
    void pageRanges();
    void setBrushHasNoEffect();
    void textDrawing_data();
    void textDrawing();
    void supportedOrientations_data();
    void supportedOrientations();
    void setFontWeights_data();
    void setFontWeights();
    void pageGeometry_data();
    void pageGeometry();
    void millimetres_data();
    void millimetres();
    void boundingRectMatchesDrawing();
    void drawImageKeepsAspectRatio();
    void missingPrintFunction();
    void failingScriptLeavesNoPdf();
    void runIsLogged();

private:
    QString render(PrintScriptEngine& engine, const QByteArray& script,
        QPageLayout::Orientation orientation = QPageLayout::Portrait);
    static QString global(PrintScriptEngine& engine, const char* name);
    static QString plain(QString text);

    QTemporaryDir m_dir;
    TableModel m_model;
    int m_files = 0;
    QString m_error;
};

void TestPrintScriptEngine::initTestCase()
{
    QStandardPaths::setTestModeEnabled(true);
    Decimal::registerMetaType();
    QVERIFY(m_dir.isValid());
    m_model.values = {
        { "price", Decimal(125000, 4).toVariant() },
        { "quantity", Decimal(75000, 4).toVariant() },
        { "total", Decimal(139804, 2).toVariant() },
        { "negative", Decimal(-250, 2).toVariant() },
        { "whole", Decimal(12, 0).toVariant() },
        { "count", 1234 },
        { "date", QDate(2025, 3, 15) },
        { "name", QStringLiteral("Kuusela") },
    };
}

// Renders a script into a new PDF file; empty name on failure.
QString TestPrintScriptEngine::render(
    PrintScriptEngine& engine, const QByteArray& script, QPageLayout::Orientation orientation)
{
    engine.setModel(&m_model);
    if (!engine.evaluate(script)) {
        m_error = engine.lastError();
        return QString();
    }
    const QString file = m_dir.filePath(QStringLiteral("out-%1.pdf").arg(++m_files));
    ScriptPdfWriter writer;
    writer.setOrientation(orientation);
    if (!writer.write(&engine, file)) {
        m_error = writer.lastError();
        return QString();
    }
    return file;
}

QString TestPrintScriptEngine::global(PrintScriptEngine& engine, const char* name)
{
    duk_context* ctx = engine.context();
    duk_get_global_string(ctx, name);
    const QString value = QString::fromUtf8(duk_safe_to_string(ctx, -1));
    duk_pop(ctx);
    return value;
}

QString TestPrintScriptEngine::plain(QString text)
{
    text.replace(QChar(0x00A0), QLatin1Char(' '));
    text.replace(QChar(0x202F), QLatin1Char(' '));
    return text;
}

void TestPrintScriptEngine::formatting_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected");
    // "_" stands for the Finnish group separator, "~" for its minus sign.
    QTest::addRow("currency") << "formatCurrency(123456)"
                              << "1_234,56";
    QTest::addRow("small negative currency") << "formatCurrency(-5)"
                                             << "~0,05";
    QTest::addRow("currency of text") << "formatCurrency('abc')"
                                      << "undefined";
    QTest::addRow("number with minimum") << "formatNumber(15, 4, 2)"
                                         << "0,0015";
    QTest::addRow("number without grouping") << "formatNumber(1234567, 2, 2, false)"
                                             << "12345,67";
    QTest::addRow("number with grouping") << "formatNumber(1234567, 2, 2)"
                                          << "12_345,67";
    QTest::addRow("trailing zeros dropped") << "formatNumber(15000, 4, 0)"
                                            << "1,5";
    QTest::addRow("number needs three") << "(function () { try { formatNumber(1, 2); } catch (e) "
                                           "{ return e.message; } })()"
                                        << "vähintään 3 parametria";
    QTest::addRow("iso date") << "formatDate('2025-03-15', 'd.M.yyyy')"
                              << "15.3.2025";
    QTest::addRow("date format") << "formatDate('2025-03-05', 'dd.MM.yy')"
                                 << "05.03.25";
    QTest::addRow("date object") << "formatDate(new Date(2025, 2, 15), 'd.M.yyyy')"
                                 << "undefined";
    QTest::addRow("finnish date text") << "formatDate('15.3.2025', 'd.M.yyyy')"
                                       << "undefined";
    QTest::addRow("current date") << "currentDate()" << QDate::currentDate().toString(Qt::ISODate);
    QTest::addRow("current year") << "currentDateTime('yyyy')"
                                  << QString::number(QDate::currentDate().year());
    QTest::addRow("decimal as integer") << "get('price')"
                                        << "125000";
    QTest::addRow("date as iso text") << "get('date')"
                                      << "2025-03-15";
    QTest::addRow("unknown path") << "get('missing')"
                                  << "undefined";
    QTest::addRow("unit price") << "getNumber('price', 2)"
                                << "12,50";
    QTest::addRow("unit price bare") << "getNumber('price')"
                                     << "12,5";
    QTest::addRow("quantity") << "getNumber('quantity')"
                              << "7,5";
    QTest::addRow("total") << "getCurrency('total')"
                           << "1_398,04";
    QTest::addRow("total without grouping") << "getCurrency('total', false)"
                                            << "1398,04";
    QTest::addRow("negative total") << "getCurrency('negative')"
                                    << "~2,50";
    QTest::addRow("whole number as currency") << "getCurrency('whole')"
                                              << "12,00";
    QTest::addRow("integer") << "getNumber('count')"
                             << "1_234";
    QTest::addRow("integer plain") << "getNumber('count', 0, false)"
                                   << "1234";
    QTest::addRow("missing number") << "getNumber('missing')"
                                    << "";
    QTest::addRow("date time of date") << "getDateTime('date', 'd.M.yyyy')"
                                       << "15.3.2025";
    QTest::addRow("date time of text") << "getDateTime('name', 'd.M.yyyy')"
                                       << "";
    QTest::addRow("constants") << "[AMOUNT_SCALE, QUANTITY_SCALE, PERCENTAGE_SCALE].join()"
                               << "4,4,2";
    QTest::addRow("constants are read-only") << "(AMOUNT_SCALE = 9, AMOUNT_SCALE)"
                                             << "4";
    QTest::addRow("english locale") << "(setLocale('en'), formatCurrency(123456))"
                                    << "1,234.56";
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

void TestPrintScriptEngine::getIsLogged()
{
    LogCapture log("veklari.script");
    PrintScriptEngine engine;
    engine.setModel(&m_model);
    QVERIFY(engine.evaluate("get('total'); get('name');"));
    QVERIFY2(
        log.contains(QStringLiteral("debug: total = 1398.04")), qPrintable(log.lines().join('\n')));
    QVERIFY(log.contains(QStringLiteral("debug: name = Kuusela")));
}

// Three pages, each marked with its number.
static const char threePages[] = "function print() {\n"
                                 "  setFont('Arial', 12, 'normal');\n"
                                 "  for (var i = 1; i <= 3; i++) {\n"
                                 "    if (i > 1) newPage();\n"
                                 "    drawText(20, 20, 100, 'Sivumerkki' + i);\n"
                                 "  }\n"
                                 "}\n";

void TestPrintScriptEngine::pageRanges_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<QList<int>>("pages");
    QTest::addRow("all") << -1 << -1 << QList<int> { 1, 2, 3 };
    QTest::addRow("second only") << 2 << 2 << QList<int> { 2 };
    QTest::addRow("from the second") << 2 << -1 << QList<int> { 2, 3 };
    QTest::addRow("up to the second") << -1 << 2 << QList<int> { 1, 2 };
    QTest::addRow("zero means no limit") << 0 << 0 << QList<int> { 1, 2, 3 };
    QTest::addRow("beyond the end") << 3 << 9 << QList<int> { 3 };
}

void TestPrintScriptEngine::pageRanges()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(QList<int>, pages);
    PrintScriptEngine engine;
    engine.setFromPage(from);
    engine.setToPage(to);
    const QString file = render(engine, threePages);
    QVERIFY2(!file.isEmpty(), qPrintable(m_error));
    QCOMPARE(PdfTools::pageCount(file), pages.size());
    for (int i = 0; i < pages.size(); ++i) {
        const QString text = PdfTools::text(file, i + 1).simplified();
        QCOMPARE(text, QStringLiteral("Sivumerkki%1").arg(pages.at(i)));
    }
    // The script laid out all three pages.
    QCOMPARE(engine.pageNumber(), 3);
}

void TestPrintScriptEngine::setBrushHasNoEffect()
{
    PrintScriptEngine engine;
    const QString file = render(engine,
        "var brush;\n"
        "function print() {\n"
        "  setBrush('#f00');\n"
        "  brush = getBrush();\n"
        "  fillRect(10, 10, 20, 20);\n"
        "}\n");
    QVERIFY2(!file.isEmpty(), qPrintable(m_error));
    QCOMPARE(global(engine, "brush"), QString());
    QVERIFY(engine.brushName().isEmpty());
    const QImage page = PdfTools::renderPage(file, 1, 72, false);
    const QRgb inside = page.pixel(int(20 / 25.4 * 72), int(20 / 25.4 * 72));
    QCOMPARE(qRed(inside), 0);
    QCOMPARE(qGreen(inside), 0);
    QCOMPARE(qBlue(inside), 0);
    const QRgb outside = page.pixel(int(40 / 25.4 * 72), int(40 / 25.4 * 72));
    QCOMPARE(qGray(outside), 255);
}

void TestPrintScriptEngine::textDrawing_data()
{
    QTest::addColumn<QString>("calls");
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QStringList>("absent");
    QTest::addRow("zero width clips everything")
        << "drawText(10, 10, 0, 0, 'abc')" << QStringList() << QStringList { "abc" };
    QTest::addRow("clipping off") << "setTextClipping(false); drawText(10, 10, 0, 0, 'abc')"
                                  << QStringList { "abc" } << QStringList();
    QTest::addRow("clipping off by the other name")
        << "setTextClippingEnabled(false); drawText(10, 10, 'abc')" << QStringList { "abc" }
        << QStringList();
    QTest::addRow("three arguments mean zero width")
        << "drawText(10, 10, 'abc')" << QStringList() << QStringList { "abc" };
    QTest::addRow("narrow box keeps the start")
        << "drawText(10, 10, 14, 'Alkuosa Loppuosa')" << QStringList { "Alku" }
        << QStringList { "Loppuosa" };
    QTest::addRow("line breaks become blanks in a line")
        << "drawText(10, 10, 150, 'Ensimmäinen\\nToinen')" << QStringList { "Ensimmäinen Toinen" }
        << QStringList();
    QTest::addRow("right aligned")
        << "drawTextRight(10, 10, 100, 'Oikealla')" << QStringList { "Oikealla" } << QStringList();
    QTest::addRow("box stops at its bottom")
        << "drawText(10, 10, 40, 7, 'rivi1\\nrivi2\\nrivi3\\nrivi4')"
        << QStringList { "rivi1", "rivi2" } << QStringList { "rivi3", "rivi4" };
    QTest::addRow("empty paragraphs take a line")
        << "drawText(10, 10, 40, 9, 'rivi1\\n\\n\\nrivi4')" << QStringList { "rivi1" }
        << QStringList { "rivi4" };
    QTest::addRow("tall box holds all") << "drawText(10, 10, 40, 40, 'rivi1\\n\\n\\nrivi4')"
                                        << QStringList { "rivi1", "rivi4" } << QStringList();
    QTest::addRow("fixed line height")
        << "setLineHeight(1.5); drawText(10, 10, 40, 7, "
           "'rivi1\\nrivi2\\nrivi3\\nrivi4\\nrivi5\\nrivi6')"
        << QStringList { "rivi1", "rivi4" } << QStringList { "rivi6" };
    QTest::addRow("words wrap in a box")
        << "drawText(10, 10, 25, 30, 'yksi kaksi kolme neljä viisi kuusi')"
        << QStringList { "yksi", "kuusi" } << QStringList();
    QTest::addRow("output switched off")
        << "setOutputEnabled(false); drawText(10, 10, 50, 'piilossa'); setOutputEnabled(true);"
           " drawText(10, 20, 50, 'näkyvissä')"
        << QStringList { "näkyvissä" } << QStringList { "piilossa" };
    QTest::addRow("positions must be numbers")
        << "drawText('10', 10, 50, 'ei'); drawText(10, 20, 50, 'kyllä')" << QStringList { "kyllä" }
        << QStringList { "ei" };
    QTest::addRow("numbers in exponent form")
        << "drawText(10, 10, 50, 1234567)" << QStringList { "1.23457e+06" } << QStringList();
}

void TestPrintScriptEngine::textDrawing()
{
    QFETCH(QString, calls);
    QFETCH(QStringList, present);
    QFETCH(QStringList, absent);
    PrintScriptEngine engine;
    const QString file = render(engine,
        QStringLiteral("function print() {\n setFont('Arial', 10, 'normal');\n %1;\n"
                       " drawText(10, 250, 50, 'loppu');\n}\n")
            .arg(calls)
            .toUtf8());
    QVERIFY2(!file.isEmpty(), qPrintable(m_error));
    const QString text = PdfTools::text(file);
    QVERIFY(text.contains(QStringLiteral("loppu")));
    for (const QString& word : present)
        QVERIFY2(text.contains(word), qPrintable(text));
    for (const QString& word : absent)
        QVERIFY2(!text.contains(word), qPrintable(text));
}

void TestPrintScriptEngine::supportedOrientations_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("mask");
    QTest::addColumn<bool>("error");
    QTest::addRow("not evaluated") << "" << 1 << false;
    QTest::addRow("no function") << "function print() {}" << 1 << false;
    QTest::addRow("portrait") << "function supportedOrientations() { return 1; }" << 1 << false;
    QTest::addRow("landscape") << "function supportedOrientations() { return 2; }" << 2 << false;
    QTest::addRow("both") << "function supportedOrientations() { return 3; }" << 3 << false;
    QTest::addRow("seven") << "function supportedOrientations() { return 7; }" << 1 << false;
    QTest::addRow("zero") << "function supportedOrientations() { return 0; }" << 1 << false;
    QTest::addRow("text") << "function supportedOrientations() { return '2'; }" << 1 << false;
    QTest::addRow("throws") << "function supportedOrientations() { throw new Error('x'); }" << 1
                            << true;
}

void TestPrintScriptEngine::supportedOrientations()
{
    QFETCH(QString, script);
    QFETCH(int, mask);
    QFETCH(bool, error);
    PrintScriptEngine engine;
    if (!script.isEmpty())
        QVERIFY(engine.evaluate(script.toUtf8()));
    QCOMPARE(engine.supportedOrientations(), mask);
    QCOMPARE(engine.lastError().startsWith(QStringLiteral("Error: x")), error);
}

void TestPrintScriptEngine::setFontWeights_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<int>("weight");
    QTest::addColumn<bool>("italic");
    QTest::addRow("light") << "light" << 300 << false;
    QTest::addRow("normal") << "normal" << 400 << false;
    QTest::addRow("demiBold") << "demiBold" << 600 << false;
    QTest::addRow("bold") << "bold" << 700 << false;
    QTest::addRow("black") << "black" << 900 << false;
    QTest::addRow("demiBolditalic") << "demiBolditalic" << 600 << true;
    QTest::addRow("bolditalic") << "bolditalic" << 700 << true;
    QTest::addRow("italic") << "italic" << 400 << true;
    QTest::addRow("light italic") << "light italic" << 300 << true;
    QTest::addRow("names are case-sensitive") << "Bold" << 400 << false;
    QTest::addRow("empty") << "" << 400 << false;
}

void TestPrintScriptEngine::setFontWeights()
{
    QFETCH(QString, style);
    QFETCH(int, weight);
    QFETCH(bool, italic);
    PrintScriptEngine engine;
    QVERIFY(engine.evaluate(QStringLiteral("setFont('Arial', 10.5, '%1');").arg(style).toUtf8()));
    QCOMPARE(int(engine.font().weight()), weight);
    QCOMPARE(engine.font().italic(), italic);
    QCOMPARE(engine.font().pointSizeF(), 10.5);
    QCOMPARE(engine.font().family(), QStringLiteral("Arial"));
}

void TestPrintScriptEngine::pageGeometry_data()
{
    QTest::addColumn<int>("orientation");
    QTest::addColumn<QString>("geometry");
    QTest::addRow("portrait") << int(QPageLayout::Portrait) << "0,0,210,297;0,0,210,297;1";
    QTest::addRow("landscape") << int(QPageLayout::Landscape) << "0,0,297,210;0,0,297,210;2";
}

void TestPrintScriptEngine::pageGeometry()
{
    QFETCH(int, orientation);
    QFETCH(QString, geometry);
    PrintScriptEngine engine;
    const QString file = render(engine,
        "function r(x) { return [x.x, x.y, x.width, x.height].map(Math.round).join(); }\n"
        "var outside = typeof pageRect() + typeof orientation();\n"
        "var inside;\n"
        "function print() { inside = r(pageRect()) + ';' + r(paperRect()) + ';' + orientation(); "
        "}\n",
        QPageLayout::Orientation(orientation));
    QVERIFY2(!file.isEmpty(), qPrintable(m_error));
    QCOMPARE(global(engine, "inside"), geometry);
    // Outside a run the page queries give nothing.
    QCOMPARE(global(engine, "outside"), QStringLiteral("undefinedundefined"));
}

void TestPrintScriptEngine::millimetres_data()
{
    QTest::addColumn<double>("millimetres");
    QTest::addColumn<int>("pixels");
    // At the PDF writer's 1200 dots per inch.
    QTest::addRow("inch") << 25.4 << 1200;
    QTest::addRow("half") << 0.5 << 24;
    QTest::addRow("negative half") << -0.5 << -24;
    QTest::addRow("one") << 1.0 << 47;
    QTest::addRow("a4 height") << 297.0 << 14031;
    QTest::addRow("zero") << 0.0 << 0;
}

void TestPrintScriptEngine::millimetres()
{
    QFETCH(double, millimetres);
    QFETCH(int, pixels);
    PrintScriptEngine engine;
    QVERIFY(!render(engine, "function print() {}").isEmpty());
    QCOMPARE(engine.millimetersToDevicePixels(millimetres), pixels);
    QVERIFY(std::abs(engine.devicePixelsToMillimeters(pixels) - millimetres) < 0.02);
}

void TestPrintScriptEngine::boundingRectMatchesDrawing()
{
    PrintScriptEngine engine;
    const QString file = render(engine,
        "var line, wide, one, two, capped, noText;\n"
        "function h(r) { return r.height; }\n"
        "function print() {\n"
        "  setFont('Arial', 10, 'normal');\n"
        "  line = boundingRect('Kuusela Design Oy');\n"
        "  wide = boundingRect('Kuusela Design Oy Kuusela Design Oy');\n"
        "  one = boundingRect(10, 10, 100, 50, 'lyhyt');\n"
        "  two = boundingRect(10, 10, 100, 50, 'lyhyt\\ntoinen');\n"
        "  capped = boundingRect(10, 10, 100, 6, 'a\\nb\\nc\\nd');\n"
        "  try { boundingRect(); } catch (e) { noText = e.message; }\n"
        "}\n"
        "function result() {\n"
        "  return [line.width > 20 && line.width < 40, wide.width > 1.9 * line.width,\n"
        "    Math.abs(h(one) - line.height) < 0.3, Math.abs(h(two) - 2 * h(one)) < 0.3,\n"
        "    Math.abs(h(capped) - 2 * h(one)) < 0.3, Math.abs(one.x - 10) < 0.05 && Math.abs(one.y "
        "- 10) < 0.05].join();\n"
        "}\n");
    QVERIFY2(!file.isEmpty(), qPrintable(m_error));
    QVERIFY(engine.evaluate("var checks = result();"));
    QCOMPARE(global(engine, "checks"), QStringLiteral("true,true,true,true,true,true"));
    QCOMPARE(global(engine, "noText"), QStringLiteral("vähintään 1 parametri"));
}

void TestPrintScriptEngine::drawImageKeepsAspectRatio()
{
    m_model.picture = QImage(200, 100, QImage::Format_RGB32);
    m_model.picture.fill(Qt::red);
    PrintScriptEngine engine;
    const QString file = render(engine,
        "function print() { drawImage(10, 10, 40, 40, 'kuva'); drawImage(10, 60, 40, 40, 'ei'); }");
    m_model.picture = QImage();
    QVERIFY2(!file.isEmpty(), qPrintable(m_error));
    const int dpi = 72;
    const QImage page = PdfTools::renderPage(file, 1, dpi, false);
    auto at
        = [&](double x, double y) { return page.pixel(int(x / 25.4 * dpi), int(y / 25.4 * dpi)); };
    // 40 x 20 mm of red from the top-left corner, white below it.
    QVERIFY(qRed(at(30, 20)) > 240);
    QVERIFY(qGreen(at(30, 20)) < 40);
    QCOMPARE(qGray(at(30, 36)), 255);
    QCOMPARE(qGray(at(30, 70)), 255);
}

void TestPrintScriptEngine::missingPrintFunction()
{
    PrintScriptEngine engine;
    engine.setModel(&m_model);
    QVERIFY(engine.evaluate("var onlyData = 1;"));
    const QString file = m_dir.filePath(QStringLiteral("missing.pdf"));
    ScriptPdfWriter writer;
    QVERIFY(!writer.write(&engine, file));
    QCOMPARE(engine.lastError(), QStringLiteral("function print does not exist"));
    QCOMPARE(writer.lastError(), engine.lastError());
    QVERIFY(!QFile::exists(file));
}

void TestPrintScriptEngine::failingScriptLeavesNoPdf()
{
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("lasku.pdf"));
    {
        QFile old(file);
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("edellinen versio");
    }
    PrintScriptEngine engine;
    engine.setModel(&m_model);
    QVERIFY(engine.evaluate("function print() {\n"
                            "  drawText(10, 10, 50, 'alku');\n"
                            "  newPage();\n"
                            "  throw new Error('kesken');\n"
                            "}\n"));
    ScriptPdfWriter writer;
    QVERIFY(!writer.write(&engine, file));
    QVERIFY2(writer.lastError().startsWith(QStringLiteral("Error: kesken")),
        qPrintable(writer.lastError()));
    QVERIFY2(writer.lastError().contains(QStringLiteral(":4")), qPrintable(writer.lastError()));
    // The old file is untouched and no temporary file is left beside it.
    QFile old(file);
    QVERIFY(old.open(QIODevice::ReadOnly));
    QCOMPARE(old.readAll(), QByteArray("edellinen versio"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList { "lasku.pdf" });

    QVERIFY(engine.evaluate("function print() { drawText(10, 10, 50, 'valmis'); }"));
    QVERIFY2(writer.write(&engine, file), qPrintable(writer.lastError()));
    QVERIFY(PdfTools::text(file).contains(QStringLiteral("valmis")));
}

void TestPrintScriptEngine::runIsLogged()
{
    LogCapture log("veklari.script");
    PrintScriptEngine engine;
    QVERIFY(!render(engine, "function print() {}").isEmpty());
    QCOMPARE(log.lines(), (QStringList { "debug: Tulostetaan", "debug: Tulostus valmis" }));
}

QTEST_MAIN(TestPrintScriptEngine)
#include "tst_printscriptengine.moc"
