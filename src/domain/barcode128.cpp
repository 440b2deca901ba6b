#include "barcode128.h"

#include <QPainter>
#include <QTransform>

const int Barcode128::charset[107] = {
    212222, 222122, 222221, 121223, 121322, 131222, 122213, 122312, 132212, 221213, // 0
    221312, 231212, 112232, 122132, 122231, 113222, 123122, 123221, 223211, 221132, // 10
    221231, 213212, 223112, 312131, 311222, 321122, 321221, 312212, 322112, 322211, // 20
    212123, 212321, 232121, 111323, 131123, 131321, 112313, 132113, 132311, 211313, // 30
    231113, 231311, 112133, 112331, 132131, 113123, 113321, 133121, 313121, 211331, // 40
    231131, 213113, 213311, 213131, 311123, 311321, 331121, 312113, 312311, 332111, // 50
    314111, 221411, 431111, 111224, 111422, 121124, 121421, 141122, 141221, 112214, // 60
    112412, 122114, 122411, 142112, 142211, 241211, 221114, 413111, 241112, 134111, // 70
    111242, 121142, 121241, 114212, 124112, 124211, 411212, 421112, 421211, 212141, // 80
    214121, 412121, 111143, 111341, 131141, 114113, 114311, 411113, 411311, 113141, // 90
    114131, 311141, 411131, // 100
    211412, // start A
    211214, // start B
    211232, // start C
    2331112, // stop
};

QList<int> Barcode128::symbolsC(const QString& digits)
{
    if (digits.isEmpty())
        return {};
    for (const QChar c : digits) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return {};
    }
    const QString even = digits.size() % 2 ? QString(QLatin1Char('0')) + digits : digits;
    QList<int> symbols;
    symbols.reserve(even.size() / 2 + 3);
    symbols.append(startC);
    int sum = startC;
    for (qsizetype i = 0; i < even.size(); i += 2) {
        const int value = (even.at(i).unicode() - '0') * 10 + (even.at(i + 1).unicode() - '0');
        symbols.append(value);
        sum += value * int(i / 2 + 1);
        sum %= 103;
    }
    symbols.append(sum % 103);
    symbols.append(stop);
    return symbols;
}

int Barcode128::patternModules(int pattern)
{
    int modules = 0;
    for (; pattern > 0; pattern /= 10)
        modules += pattern % 10;
    return modules;
}

qreal Barcode128::drawBars(
    QPainter* painter, qreal x, qreal y, qreal moduleWidth, qreal height, int pattern)
{
    // Odd positions are bars, even ones spaces; the stop character has a
    // seventh width, its closing bar.
    const QString widths = QString::number(pattern);
    for (qsizetype i = 0; i < widths.size(); ++i) {
        const qreal width = widths.at(i).digitValue() * moduleWidth;
        if (i % 2 == 0)
            painter->fillRect(QRectF(x, y, width, height), Qt::black);
        x += width;
    }
    return x;
}

bool Barcode128::renderC(
    QPainter* painter, qreal x, qreal y, qreal width, qreal height, const QString& digits)
{
    const QList<int> symbols = symbolsC(digits);
    if (!painter || symbols.isEmpty())
        return false;
    int modules = 2 * quietZoneModules;
    for (int symbol : symbols)
        modules += patternModules(charset[symbol]);

    const QTransform transform = painter->combinedTransform();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    if (transform.type() <= QTransform::TxScale) {
        // Work in device pixels so that every bar covers whole pixels: a
        // scanner reads widths, and blurred edges make them uneven.
        const QRectF device = transform.mapRect(QRectF(x, y, width, height));
        const int module = qMax(1, int(device.width()) / modules);
        const qreal top = qRound(device.top());
        const qreal barHeight = qMax<qreal>(1, qRound(device.bottom()) - top);
        qreal left = qRound(device.left()) + quietZoneModules * module;
        painter->setViewTransformEnabled(false);
        painter->resetTransform();
        for (int symbol : symbols)
            left = drawBars(painter, left, top, module, barHeight, charset[symbol]);
    } else {
        // Rotated or sheared: whole pixels cannot be had, share the width.
        const qreal module = width / modules;
        qreal left = x + quietZoneModules * module;
        for (int symbol : symbols)
            left = drawBars(painter, left, y, module, height, charset[symbol]);
    }
    painter->restore();
    return true;
}
