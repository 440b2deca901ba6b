#include "qrsymbol.h"

#include <QPainter>
#include <QTransform>
#include <cerrno>
#include <cstring>
#include <qrencode.h>

bool QrSymbol::encode(const QByteArray& data)
{
    m_size = 0;
    m_modules.clear();
    m_lastError.clear();
    if (data.isEmpty()) {
        m_lastError = QStringLiteral("Tyhjää tekstiä ei voi koodata");
        return false;
    }
    QRcode* code = QRcode_encodeData(int(data.size()),
        reinterpret_cast<const unsigned char*>(data.constData()), 0, QR_ECLEVEL_M);
    if (!code) {
        m_lastError = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    m_size = code->width;
    m_modules.resize(qsizetype(m_size) * m_size);
    // The lowest bit of each byte tells a dark module; the others describe its role.
    for (int i = 0; i < m_size * m_size; ++i)
        m_modules[i] = code->data[i] & 1;
    QRcode_free(code);
    return true;
}

bool QrSymbol::isDark(int x, int y) const
{
    if (x < 0 || y < 0 || x >= m_size || y >= m_size)
        return false;
    return m_modules.at(qsizetype(y) * m_size + x);
}

void QrSymbol::draw(QPainter* painter, const QRectF& rect) const
{
    if (!painter || isNull())
        return;
    const QTransform transform = painter->combinedTransform();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    QRectF area = rect;
    qreal module = qMin(rect.width(), rect.height()) / m_size;
    if (transform.type() <= QTransform::TxScale) {
        // In device pixels, whole pixels a module: blurred edges merge modules for a camera.
        area = transform.mapRect(rect);
        module = qMax(1, int(qMin(area.width(), area.height())) / m_size);
        painter->setViewTransformEnabled(false);
        painter->resetTransform();
    }
    const qreal side = module * m_size;
    const qreal left = qRound(area.left() + (area.width() - side) / 2);
    const qreal top = qRound(area.top() + (area.height() - side) / 2);
    for (int y = 0; y < m_size; ++y) {
        // Runs of dark modules in a row as one rectangle keep the output small.
        for (int x = 0; x < m_size;) {
            if (!isDark(x, y)) {
                ++x;
                continue;
            }
            const int start = x;
            while (x < m_size && isDark(x, y))
                ++x;
            painter->fillRect(
                QRectF(left + start * module, top + y * module, (x - start) * module, module),
                Qt::black);
        }
    }
    painter->restore();
}
