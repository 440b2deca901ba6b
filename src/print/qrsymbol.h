#ifndef QRSYMBOL_H
#define QRSYMBOL_H

#include <QByteArray>
#include <QList>
#include <QString>

class QPainter;
class QRectF;

// A QR code symbol: the square of dark and light modules that encodes some
// bytes, made with libqrencode at error correction level M.
class QrSymbol
{
public:
    // Encodes data in byte mode in the smallest version that holds it; a
    // null symbol with lastError() set when it does not fit.
    bool encode(const QByteArray& data);
    bool isNull() const { return m_size == 0; }
    // Modules on a side, without the quiet zone.
    int size() const { return m_size; }
    bool isDark(int x, int y) const;
    QString lastError() const { return m_lastError; }

    // Draws the modules into the largest square that fits the rectangle,
    // centred in it. Every module is a whole number of device pixels so that
    // the edges stay sharp. The quiet zone around it is the caller's to keep
    // empty.
    void draw(QPainter* painter, const QRectF& rect) const;

private:
    int m_size = 0;
    QList<bool> m_modules;
    QString m_lastError;
};

#endif // QRSYMBOL_H
