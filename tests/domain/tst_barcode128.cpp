#include "domain/barcode128.h"

#include <QImage>
#include <QPainter>
#include <QSet>
#include <QTest>

namespace {

// Code 128 as modules, "1" a dark module and "0" a light one: values 0 to
// 102, then start A, B and C.
const char* const moduleTable[106] = {
    "11011001100",
    "11001101100",
    "11001100110",
    "10010011000",
    "10010001100",
    "10001001100",
    "10011001000",
    "10011000100",
    "10001100100",
    "11001001000",
    "11001000100",
    "11000100100",
    "10110011100",
    "10011011100",
    "10011001110",
    "10111001100",
    "10011101100",
    "10011100110",
    "11001110010",
    "11001011100",
    "11001001110",
    "11011100100",
    "11001110100",
    "11101101110",
    "11101001100",
    "11100101100",
    "11100100110",
    "11101100100",
    "11100110100",
    "11100110010",
    "11011011000",
    "11011000110",
    "11000110110",
    "10100011000",
    "10001011000",
    "10001000110",
    "10110001000",
    "10001101000",
    "10001100010",
    "11010001000",
    "11000101000",
    "11000100010",
    "10110111000",
    "10110001110",
    "10001101110",
    "10111011000",
    "10111000110",
    "10001110110",
    "11101110110",
    "11010001110",
    "11000101110",
    "11011101000",
    "11011100010",
    "11011101110",
    "11101011000",
    "11101000110",
    "11100010110",
    "11101101000",
    "11101100010",
    "11100011010",
    "11101111010",
    "11001000010",
    "11110001010",
    "10100110000",
    "10100001100",
    "10010110000",
    "10010000110",
    "10000101100",
    "10000100110",
    "10110010000",
    "10110000100",
    "10011010000",
    "10011000010",
    "10000110100",
    "10000110010",
    "11000010010",
    "11001010000",
    "11110111010",
    "11000010100",
    "10001111010",
    "10100111100",
    "10010111100",
    "10010011110",
    "10111100100",
    "10011110100",
    "10011110010",
    "11110100100",
    "11110010100",
    "11110010010",
    "11011011110",
    "11011110110",
    "11110110110",
    "10101111000",
    "10100011110",
    "10001011110",
    "10111101000",
    "10111100010",
    "11110101000",
    "11110100010",
    "10111011110",
    "10111101110",
    "11101011110",
    "11110101110",
    "11010000100",
    "11010010000",
    "11010011100",
};
const char* const stopModules = "1100011101011";

QString widthsToModules(int pattern)
{
    QString modules;
    const QString widths = QString::number(pattern);
    for (int i = 0; i < widths.size(); ++i)
        modules += QString(widths.at(i).digitValue(), i % 2 ? QLatin1Char('0') : QLatin1Char('1'));
    return modules;
}

struct Scan
{
    QList<int> values; // start, data, check, stop (106)
    int module = 0;
    int leadingWhite = 0;
    int trailingWhite = 0;
    QString error;
};

bool isDark(const QImage& image, int x, int y)
{
    return qGray(image.pixel(x, y)) < 128;
}

// Reads one row of the image back into Code 128 values: run lengths of dark
// and light pixels, the module width from the start character's 11 modules,
// and each character's runs matched against the table above.
Scan readRow(const QImage& image, int y)
{
    Scan scan;
    QList<int> runs;
    int x = 0;
    while (x < image.width() && !isDark(image, x, y))
        ++x;
    scan.leadingWhite = x;
    if (x == image.width()) {
        scan.error = QStringLiteral("no bars");
        return scan;
    }
    int lastDark = x;
    while (x < image.width()) {
        const bool dark = isDark(image, x, y);
        int length = 0;
        while (x < image.width() && isDark(image, x, y) == dark) {
            ++x;
            ++length;
        }
        if (dark)
            lastDark = x;
        runs.append(length);
    }
    scan.trailingWhite = image.width() - lastDark;
    if (runs.size() % 2 == 0)
        runs.removeLast(); // the quiet zone after the stop bar

    if (runs.size() < 6) {
        scan.error = QStringLiteral("too few runs");
        return scan;
    }
    const int startWidth = runs[0] + runs[1] + runs[2] + runs[3] + runs[4] + runs[5];
    if (startWidth % 11 != 0) {
        scan.error = QStringLiteral("start character is not 11 whole modules");
        return scan;
    }
    scan.module = startWidth / 11;
    QString modules;
    for (int i = 0; i < runs.size(); ++i) {
        if (runs[i] % scan.module != 0) {
            scan.error = QStringLiteral("run %1 is not whole modules").arg(i);
            return scan;
        }
        modules += QString(runs[i] / scan.module, i % 2 ? QLatin1Char('0') : QLatin1Char('1'));
    }
    // Characters are 11 modules each; the stop character, 13, ends the row.
    while (modules.size() >= 11) {
        if (modules == QLatin1String(stopModules)) {
            scan.values.append(106);
            return scan;
        }
        const QString character = modules.left(11);
        modules.remove(0, 11);
        int value = -1;
        for (int v = 0; v < 106; ++v) {
            if (character == QLatin1String(moduleTable[v]))
                value = v;
        }
        if (value < 0) {
            scan.error = QStringLiteral("unknown character ") + character;
            return scan;
        }
        scan.values.append(value);
    }
    scan.error = QStringLiteral("no stop character");
    return scan;
}

QImage whiteImage(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

int checkCharacter(const QString& evenDigits)
{
    int sum = 105;
    for (int i = 0; i < evenDigits.size() / 2; ++i)
        sum += evenDigits.mid(2 * i, 2).toInt() * (i + 1);
    return sum % 103;
}

} // namespace

class TestBarcode128 : public QObject
{
    Q_OBJECT

private slots:
    void tableIsCode128()
    {
        QSet<QString> seen;
        for (int v = 0; v < 106; ++v) {
            const QString modules = QLatin1String(moduleTable[v]);
            QCOMPARE(modules.size(), 11);
            QVERIFY(modules.startsWith(QLatin1Char('1')));
            QVERIFY(modules.endsWith(QLatin1Char('0')));
            // Code 128 characters carry an even number of dark modules.
            QCOMPARE(modules.count(QLatin1Char('1')) % 2, 0);
            QVERIFY(!seen.contains(modules));
            seen.insert(modules);
        }
    }

    void charset()
    {
        for (int v = 0; v < 106; ++v)
            QCOMPARE(widthsToModules(Barcode128::charset[v]), QLatin1String(moduleTable[v]));
        QCOMPARE(
            widthsToModules(Barcode128::charset[Barcode128::stop]), QLatin1String(stopModules));
        QCOMPARE(Barcode128::charset[Barcode128::startC], 211232);
        QCOMPARE(Barcode128::charset[Barcode128::stop], 2331112);
        QCOMPARE(Barcode128::charset[0], 212222);
        QCOMPARE(Barcode128::patternModules(Barcode128::charset[Barcode128::stop]), 13);
        QCOMPARE(Barcode128::patternModules(Barcode128::charset[42]), 11);
    }

    void drawBars()
    {
        QImage image = whiteImage(40, 4);
        QPainter painter(&image);
        const qreal end = Barcode128::drawBars(&painter, 3, 0, 2, 4, 2331112);
        painter.end();
        QCOMPARE(end, 3.0 + 13 * 2);
        QString row;
        for (int x = 0; x < image.width(); ++x)
            row += isDark(image, x, 2) ? QLatin1Char('1') : QLatin1Char('0');
        // 2 3 3 1 1 1 2 modules of two pixels: bar, space, bar, space, ...
        QCOMPARE(row,
            QStringLiteral("000"
                           "1111"
                           "000000"
                           "111111"
                           "00"
                           "11"
                           "00"
                           "1111"
                           "00000000000"));
    }

    void render_data()
    {
        QTest::addColumn<QString>("digits");
        QTest::addColumn<int>("width");
        QTest::addRow("bank barcode, 1 px modules")
            << "479440520200360820048831500000000868516259619897100612" << 600;
        QTest::addRow("bank barcode, 2 px modules")
            << "479440520200360820048831500000000868516259619897100612" << 800;
        QTest::addRow("bank barcode, 3 px modules")
            << "479440520200360820048831500000000868516259619897100612" << 1100;
        QTest::addRow("version 5")
            << "558101710000001220004829900000009868516259619897100131" << 900;
        QTest::addRow("odd length") << "12345" << 300;
        QTest::addRow("one digit") << "7" << 200;
        QTest::addRow("zeros") << "0000" << 200;
        QTest::addRow("nines") << "99999999999999999999" << 500;
        QTest::addRow("too narrow: one pixel anyway") << "12345678" << 40;
    }

    void render()
    {
        QFETCH(QString, digits);
        QFETCH(int, width);
        const int imageWidth = qMax(width, 400);
        QImage image = whiteImage(imageWidth, 50);
        QPainter painter(&image);
        QVERIFY(Barcode128::renderC(&painter, 0, 5, width, 40, digits));
        painter.end();

        const Scan scan = readRow(image, 25);
        QVERIFY2(scan.error.isEmpty(), qPrintable(scan.error));

        const QString even = digits.size() % 2 ? QLatin1Char('0') + digits : digits;
        const int pairs = int(even.size() / 2);
        QCOMPARE(scan.values.size(), pairs + 3);
        QCOMPARE(scan.values.first(), 105);
        QCOMPARE(scan.values.last(), 106);
        for (int i = 0; i < pairs; ++i)
            QCOMPARE(scan.values.at(1 + i), even.mid(2 * i, 2).toInt());
        QCOMPARE(scan.values.at(pairs + 1), checkCharacter(even));

        // The widest whole-pixel module that fits with ten modules of quiet
        // zone on both sides, never below one pixel.
        const int modules = 11 * (pairs + 2) + 13 + 20;
        QCOMPARE(scan.module, qMax(1, width / modules));
        QCOMPARE(scan.leadingWhite, 10 * scan.module);
        if (width >= modules) {
            QVERIFY(modules * scan.module <= width);
            QVERIFY(scan.trailingWhite >= 10 * scan.module);
        }

        // Bars run the whole height given and nothing is drawn outside it.
        const int firstBar = scan.leadingWhite;
        QVERIFY(isDark(image, firstBar, 5));
        QVERIFY(isDark(image, firstBar, 44));
        QVERIFY(!isDark(image, firstBar, 4));
        QVERIFY(!isDark(image, firstBar, 45));
    }

    void scaledPainter()
    {
        // Print scripts draw in scaled coordinates; the modules still fall on
        // whole device pixels.
        const QString digits
            = QStringLiteral("421123456000007850010000000000000000000000001232250317");
        QImage image = whiteImage(900, 100);
        QPainter painter(&image);
        painter.scale(2.0, 2.0);
        painter.setRenderHint(QPainter::Antialiasing, true);
        QVERIFY(Barcode128::renderC(&painter, 10.25, 5, 380, 30, digits));
        painter.end();
        const Scan scan = readRow(image, 40);
        QVERIFY2(scan.error.isEmpty(), qPrintable(scan.error));
        QCOMPARE(scan.module, 760 / (11 * 29 + 13 + 20));
        QCOMPARE(scan.values.size(), 30);
        QCOMPARE(scan.values.at(1), 42);
        QCOMPARE(scan.values.at(27), 17);
        QCOMPARE(scan.values.at(28), checkCharacter(digits));
        // Every pixel is either black or white: no blurred edges.
        for (int x = 0; x < image.width(); ++x) {
            const int gray = qGray(image.pixel(x, 40));
            QVERIFY(gray == 0 || gray == 255);
        }
    }

    void badInput_data()
    {
        QTest::addColumn<QString>("digits");
        QTest::addRow("empty") << "";
        QTest::addRow("letters") << "12a4";
        QTest::addRow("spaces") << "12 34";
        QTest::addRow("other script digits") << QString::fromUtf8("\u0661\u0662");
    }

    void badInput()
    {
        QFETCH(QString, digits);
        QImage image = whiteImage(300, 20);
        QPainter painter(&image);
        QVERIFY(!Barcode128::renderC(&painter, 0, 0, 300, 20, digits));
        painter.end();
        QCOMPARE(image, whiteImage(300, 20));
        QVERIFY(!Barcode128::renderC(nullptr, 0, 0, 300, 20, QStringLiteral("12")));
    }
};

QTEST_MAIN(TestBarcode128)
#include "tst_barcode128.moc"
