#include "domain/barcode128.h"

#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QTest>

namespace {

// Code 128 as modules, written out from the standard: the bits of each
// character from the most significant of eleven, 1 a dark module. Values 0 to
// 102, then start A, B and C; the stop character has thirteen modules.
const int moduleBits[106] = { 0x6CC, 0x66C, 0x666, 0x498, 0x48C, 0x44C, 0x4C8, 0x4C4, 0x464, 0x648,
    0x644, 0x624, 0x59C, 0x4DC, 0x4CE, 0x5CC, 0x4EC, 0x4E6, 0x672, 0x65C, 0x64E, 0x6E4, 0x674,
    0x76E, 0x74C, 0x72C, 0x726, 0x764, 0x734, 0x732, 0x6D8, 0x6C6, 0x636, 0x518, 0x458, 0x446,
    0x588, 0x468, 0x462, 0x688, 0x628, 0x622, 0x5B8, 0x58E, 0x46E, 0x5D8, 0x5C6, 0x476, 0x776,
    0x68E, 0x62E, 0x6E8, 0x6E2, 0x6EE, 0x758, 0x746, 0x716, 0x768, 0x762, 0x71A, 0x77A, 0x642,
    0x78A, 0x530, 0x50C, 0x4B0, 0x486, 0x42C, 0x426, 0x590, 0x584, 0x4D0, 0x4C2, 0x434, 0x432,
    0x612, 0x650, 0x7BA, 0x614, 0x47A, 0x53C, 0x4BC, 0x49E, 0x5E4, 0x4F4, 0x4F2, 0x7A4, 0x794,
    0x792, 0x6DE, 0x6F6, 0x7B6, 0x578, 0x51E, 0x45E, 0x5E8, 0x5E2, 0x7A8, 0x7A2, 0x5DE, 0x5EE,
    0x75E, 0x7AE, 0x684, 0x690, 0x69C };
const int stopBits = 0x18EB;

QString bits(int value, int count)
{
    return QString::number(value, 2).rightJustified(count, QLatin1Char('0'));
}

QImage whiteImage(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

// One pixel row as "1" for dark and "0" for light.
QString pixels(const QImage& image, int y)
{
    QString row;
    for (int x = 0; x < image.width(); ++x)
        row += qGray(image.pixel(x, y)) < 128 ? QLatin1Char('1') : QLatin1Char('0');
    return row;
}

// Reads the bars of a pixel row back into Code 128 values: the narrowest run
// is one module, every run must be whole modules, and each character's
// eleven modules are looked up in the table above. Empty when unreadable.
QList<int> readBars(const QString& row, int* module)
{
    const QString bars = row.mid(row.indexOf('1'), row.lastIndexOf('1') - row.indexOf('1') + 1);
    QList<qsizetype> runs;
    auto it = QRegularExpression(QStringLiteral("1+|0+")).globalMatch(bars);
    while (it.hasNext())
        runs.append(it.next().capturedLength());
    *module = int(*std::min_element(runs.begin(), runs.end()));
    QString modules;
    for (int i = 0; i < runs.size(); ++i) {
        if (runs.at(i) % *module != 0)
            return {};
        modules += QString(runs.at(i) / *module, i % 2 ? QLatin1Char('0') : QLatin1Char('1'));
    }
    QList<int> values;
    for (; modules.size() > 13; modules.remove(0, 11)) {
        int value = 0;
        while (value < 106 && modules.left(11) != bits(moduleBits[value], 11))
            ++value;
        if (value == 106)
            return {};
        values.append(value);
    }
    if (modules != bits(stopBits, 13))
        return {};
    return values << 106;
}

// The check character computed from the digit pairs, positions from 1.
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

    void render_data()
    {
        QTest::addColumn<QString>("digits");
        QTest::addColumn<int>("width");
        QTest::addRow("bank barcode, 3 px modules")
            << "479440520200360820048831500000000868516259619897100612" << 1100;
        QTest::addRow("odd length") << "12345" << 300;
        QTest::addRow("too narrow: one pixel anyway") << "12345678" << 40;
    }

    void render()
    {
        QFETCH(QString, digits);
        QFETCH(int, width);
        QImage image = whiteImage(qMax(width, 400), 50);
        QPainter painter(&image);
        QVERIFY(Barcode128::renderC(&painter, 0, 5, width, 40, digits));
        painter.end();

        const QString row = pixels(image, 25);
        int module = 0;
        const QString even = digits.size() % 2 ? QLatin1Char('0') + digits : digits;
        QList<int> expected { 105 };
        for (int i = 0; i < even.size() / 2; ++i)
            expected.append(even.mid(2 * i, 2).toInt());
        expected << checkCharacter(even) << 106;
        QCOMPARE(readBars(row, &module), expected);

        // The widest whole-pixel module that fits with ten modules of quiet
        // zone on both sides, never below one pixel.
        const int modules = 11 * int(expected.size() - 1) + 13 + 20;
        QCOMPARE(module, qMax(1, width / modules));
        QCOMPARE(row.indexOf('1'), 10 * module);
        if (width >= modules)
            QVERIFY(row.size() - 1 - row.lastIndexOf('1') >= 10 * module);
        // Bars run the whole height given and nothing is drawn outside it.
        const int x = row.indexOf('1');
        QCOMPARE(QString(pixels(image, 4).at(x)) + pixels(image, 5).at(x) + pixels(image, 44).at(x)
                + pixels(image, 45).at(x),
            QStringLiteral("0110"));
    }

    void badInput()
    {
        for (const QString digits : { "", "12a4", "\u0661\u0662" }) {
            QImage image = whiteImage(300, 20);
            QPainter painter(&image);
            QVERIFY(!Barcode128::renderC(&painter, 0, 0, 300, 20, digits));
            painter.end();
            QCOMPARE(image, whiteImage(300, 20));
        }
        QVERIFY(!Barcode128::renderC(nullptr, 0, 0, 300, 20, QStringLiteral("12")));
    }
};

QTEST_MAIN(TestBarcode128)
#include "tst_barcode128.moc"
