#ifndef BARCODE128_H
#define BARCODE128_H

#include <QList>
#include <QString>

class QPainter;

// Code 128 symbols of subset C (digit pairs), used for the bank barcode on
// printed invoices.
class Barcode128
{
public:
    // The quiet zone left empty on both sides of the bars, in modules.
    static constexpr int quietZoneModules = 10;
    static constexpr int startA = 103;
    static constexpr int startB = 104;
    static constexpr int startC = 105;
    static constexpr int stop = 106;

    // The 103 data values, start A, B and C and the stop character. Each
    // pattern is a decimal number whose digits are the widths, in modules,
    // of alternating bars and spaces, a bar first.
    static const int charset[107];

    // Draws digits (an odd count gets a leading "0") as a subset C symbol
    // fitted into the rectangle: start C, one character per digit pair, the
    // check character and stop, with the quiet zone on both sides. The
    // module is a whole number of device pixels, at least one, so the bars
    // print sharp; the symbol is as wide as that allows and starts at x.
    // Returns false, drawing nothing, when the text has anything but digits.
    static bool renderC(
        QPainter* painter, qreal x, qreal y, qreal width, qreal height, const QString& digits);

    // Fills the bars of one pattern from x on and returns the x after it.
    static qreal drawBars(
        QPainter* painter, qreal x, qreal y, qreal moduleWidth, qreal height, int pattern);

    // The symbol values of digits in subset C: start, pairs, check, stop.
    static QList<int> symbolsC(const QString& digits);
    // Modules taken by a pattern (11 for data and start, 13 for stop).
    static int patternModules(int pattern);
};

#endif // BARCODE128_H
