#include "printscriptengine.h"

#include "domain/barcode128.h"
#include "domain/logging.h"
#include "printmodel.h"
#include "qrsymbol.h"

#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QPdfWriter>
#include <QTextLayout>
#include <cmath>

namespace {
constexpr double inchesPerMillimeter = 0.0393700787;
// Single lines are drawn into a box this tall (millimetres).
constexpr double singleLineBoxHeight = 1000.0;
} // namespace

PrintScriptEngine::PrintScriptEngine(QObject* parent) : PrintScriptEngineBase(parent) { }

void PrintScriptEngine::initialize()
{
    PrintScriptEngineBase::initialize();
    duk_context* ctx = context();
    if (!ctx)
        return;
    duk_push_global_object(ctx);
    registerFunc("orientation", this, "envOrientation()");
    registerFunc("pageRect", this, "envPageRect()");
    registerFunc("paperRect", this, "envPaperRect()");
    registerFunc("newPage", this, "envNewPage()");
    registerFunc("drawLine", this, "envDrawLine()");
    registerFunc("drawRect", this, "envDrawRect()");
    registerFunc("fillRect", this, "envFillRect()");
    registerFunc("drawText", this, "envDrawText()");
    registerFunc("drawTextRight", this, "envDrawTextRight()");
    registerFunc("drawTextHCenter", this, "envDrawTextHCenter()");
    registerFunc("drawTextVCenter", this, "envDrawTextVCenter()");
    registerFunc("drawTextCenter", this, "envDrawTextCenter()");
    registerFunc("drawImage", this, "envDrawImage()");
    registerFunc("drawBarcode128C", this, "envDrawBarcode128C()");
    registerFunc("drawQrCode", this, "envDrawQrCode()");
    registerFunc("boundingRect", this, "envBoundingRect()");
    registerFunc("boundingRectRight", this, "envBoundingRectRight()");
    registerFunc("boundingRectCenter", this, "envBoundingRectCenter()");
    registerFunc("rotate", this, "envRotate()");
    registerFunc("isTextClipping", this, "envIsTextClipping()");
    registerFunc("setTextClipping", this, "envSetTextClipping()");
    registerFunc("isTextClippingEnabled", this, "envIsTextClipping()");
    registerFunc("setTextClippingEnabled", this, "envSetTextClipping()");
    registerFunc("lineHeight", this, "envLineHeight()");
    registerFunc("setLineHeight", this, "envSetLineHeight()");
    registerFunc("isOutputEnabled", this, "envIsOutputEnabled()");
    registerFunc("setOutputEnabled", this, "envSetOutputEnabled()");
    registerFunc("getBrush", this, "envGetBrush()");
    registerFunc("setBrush", this, "envSetBrush()");
    registerFunc("setFont", this, "envSetFont()");
    registerFunc("setPen", this, "envSetPen()");
    duk_pop(ctx);
}

bool PrintScriptEngine::print(QPdfWriter* writer)
{
    return print(writer, writer->resolution(), tr("PDF-tiedoston avaaminen epäonnistui"));
}

bool PrintScriptEngine::print(QPagedPaintDevice* device, int resolution, const QString& openError)
{
    // Before the painter opens, so that the first page has no margins either.
    device->setPageMargins(QMarginsF(0, 0, 0, 0), QPageLayout::Millimeter);
    QPainter painter;
    if (!painter.begin(device)) {
        setError(openError);
        return false;
    }
    const bool result = run(device, &painter, resolution);
    painter.end();
    return result;
}

bool PrintScriptEngine::run(QPagedPaintDevice* device, QPainter* painter, int resolution)
{
    clearError();
    duk_context* ctx = context();
    if (!ctx || !duk_get_global_string(ctx, "print") || !duk_is_function(ctx, -1)) {
        if (ctx)
            duk_pop(ctx);
        setError(QStringLiteral("function print does not exist"));
        return false;
    }
    qCDebug(logScript) << "Tulostetaan";
    device->setPageMargins(QMarginsF(0, 0, 0, 0), QPageLayout::Millimeter);
    painter->setRenderHints(
        QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    m_device = device;
    m_painter = painter;
    m_resolution = resolution > 0 ? resolution : 72;
    // Every run starts from the fresh painter's font and pen, not from the last run's.
    m_font = painter->font();
    m_pen = painter->pen();
    m_painterHasFont = true;
    m_painterHasPen = true;
    m_textClipping = true;
    m_lineHeight = -1.0;
    setPageNumber(1);

    const bool result = callFunction(0);
    duk_pop(ctx);

    m_device = nullptr;
    m_painter = nullptr;
    qCDebug(logScript) << "Tulostus valmis";
    return result;
}

int PrintScriptEngine::supportedOrientations()
{
    duk_context* ctx = context();
    if (!ctx || !isEvaluated())
        return 1;
    if (!duk_get_global_string(ctx, "supportedOrientations") || !duk_is_function(ctx, -1)) {
        duk_pop(ctx);
        return 1;
    }
    int result = 1;
    if (callFunction(0) && duk_is_number(ctx, -1)) {
        const double value = duk_get_number(ctx, -1);
        if (value == 1.0 || value == 2.0 || value == 3.0)
            result = int(value);
    }
    duk_pop(ctx);
    return result;
}

int PrintScriptEngine::millimetersToDevicePixels(double millimeters) const
{
    // std::lround rounds halves away from zero.
    return int(std::lround(m_resolution * millimeters * inchesPerMillimeter));
}

double PrintScriptEngine::devicePixelsToMillimeters(int pixels) const
{
    return double(pixels) / m_resolution * 25.4;
}

bool PrintScriptEngine::canDraw() const
{
    return m_device && m_painter && m_pageInRange && m_outputEnabled;
}

void PrintScriptEngine::applyFontAndPen()
{
    if (!m_painterHasFont)
        m_painter->setFont(m_font);
    if (!m_painterHasPen)
        m_painter->setPen(m_pen);
    m_painterHasFont = true;
    m_painterHasPen = true;
}

void PrintScriptEngine::setPageNumber(int page)
{
    m_pageNumber = page;
    m_pageInRange = !(m_fromPage > qMax(page, 0) || (m_toPage >= 1 && m_toPage < page));
}

static void pushMillimeterRect(duk_context* ctx, const QRectF& rect)
{
    duk_push_object(ctx);
    duk_push_number(ctx, rect.x());
    duk_put_prop_string(ctx, -2, "x");
    duk_push_number(ctx, rect.y());
    duk_put_prop_string(ctx, -2, "y");
    duk_push_number(ctx, rect.width());
    duk_put_prop_string(ctx, -2, "width");
    duk_push_number(ctx, rect.height());
    duk_put_prop_string(ctx, -2, "height");
}

void PrintScriptEngine::pushRect(const QRectF& pixels)
{
    auto mm = [this](qreal pixels) { return pixels / m_resolution * 25.4; };
    pushMillimeterRect(
        context(), QRectF(mm(pixels.x()), mm(pixels.y()), mm(pixels.width()), mm(pixels.height())));
}

int PrintScriptEngine::envOrientation()
{
    if (!m_device)
        return 0;
    duk_push_int(context(), m_device->pageLayout().orientation() == QPageLayout::Landscape ? 2 : 1);
    return 1;
}

int PrintScriptEngine::envPageRect()
{
    if (!m_device)
        return 0;
    pushMillimeterRect(context(), m_device->pageLayout().paintRect(QPageLayout::Millimeter));
    return 1;
}

int PrintScriptEngine::envPaperRect()
{
    if (!m_device)
        return 0;
    pushMillimeterRect(context(), m_device->pageLayout().fullRect(QPageLayout::Millimeter));
    return 1;
}

int PrintScriptEngine::envNewPage()
{
    if (!m_device)
        return 0;
    const bool wasInRange = m_pageInRange;
    setPageNumber(m_pageNumber + 1);
    if (wasInRange && m_pageInRange && m_outputEnabled)
        m_device->newPage();
    return 0;
}

bool PrintScriptEngine::readPixels(int first, int count, int* pixels)
{
    for (int i = 0; i < count; ++i) {
        bool ok = false;
        const double millimeters = doubleArg(first + i, ok);
        if (!ok)
            return false;
        pixels[i] = millimetersToDevicePixels(millimeters);
    }
    return true;
}

bool PrintScriptEngine::readRect(int first, QRect& rect)
{
    int p[4];
    if (!readPixels(first, 4, p))
        return false;
    rect = QRect(p[0], p[1], p[2], p[3]);
    return true;
}

int PrintScriptEngine::envDrawLine()
{
    if (checkArgCount(4) < 0)
        return 0;
    int p[4];
    if (!readPixels(0, 4, p) || !canDraw())
        return 0;
    applyFontAndPen();
    m_painter->drawLine(p[0], p[1], p[2], p[3]);
    return 0;
}

int PrintScriptEngine::envDrawRect()
{
    if (checkArgCount(4) < 0)
        return 0;
    QRect rect;
    if (!readRect(0, rect) || !canDraw())
        return 0;
    applyFontAndPen();
    m_painter->drawRect(rect);
    return 0;
}

int PrintScriptEngine::envFillRect()
{
    if (checkArgCount(4) < 0)
        return 0;
    QRect rect;
    if (!readRect(0, rect) || !canDraw())
        return 0;
    m_painter->fillRect(rect, QBrush(Qt::black, Qt::SolidPattern));
    return 0;
}

QString PrintScriptEngine::clippedLine(const QString& text, int width) const
{
    QString line = text;
    const QFontMetricsF metrics(m_font, m_device);
    while (!line.isEmpty() && metrics.horizontalAdvance(line) >= width)
        line.chop(1);
    return line;
}

QRectF PrintScriptEngine::layoutBox(
    const QString& text, const QRect& box, int alignment, bool paint)
{
    const qreal bottom = box.y() + box.height();
    const qreal fixedStep = m_lineHeight >= 0 ? millimetersToDevicePixels(m_lineHeight) : -1.0;
    QTextOption option { Qt::Alignment(alignment) };
    option.setWrapMode(QTextOption::WordWrap);
    qreal cursor = box.y();
    QRectF used;
    const QStringList paragraphs = text.split(QLatin1Char('\n'));
    for (const QString& paragraph : paragraphs) {
        if (cursor >= bottom)
            break;
        QTextLayout layout(paragraph, m_font, m_device);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLeadingIncluded(true);
            line.setLineWidth(box.width());
            line.setPosition(QPointF(0, 0));
        }
        layout.endLayout();
        for (int i = 0; i < layout.lineCount() && cursor < bottom; ++i) {
            const QTextLine line = layout.lineAt(i);
            const QPointF origin(box.x(), cursor);
            if (paint)
                line.draw(m_painter, origin);
            const qreal step = fixedStep >= 0 ? fixedStep : line.height();
            QRectF lineRect = line.naturalTextRect();
            lineRect.setHeight(step);
            used |= lineRect.translated(origin);
            cursor += step;
        }
    }
    return used;
}

int PrintScriptEngine::drawTextAligned(int alignment)
{
    const int count = checkArgCount(3);
    if (count < 0)
        return 0;
    bool okX = false;
    bool okY = false;
    bool okW = true;
    bool okH = true;
    const double x = doubleArg(0, okX);
    const double y = doubleArg(1, okY);
    double w = 0;
    double h = 0;
    int textIndex = 2;
    if (count >= 4) {
        w = doubleArg(2, okW);
        textIndex = 3;
    }
    if (count >= 5) {
        h = doubleArg(3, okH);
        textIndex = 4;
    }
    if (!okX || !okY || !okW || !okH || !canDraw())
        return 0;
    applyFontAndPen();
    const QString text = stringArg(textIndex);
    const QRect box(millimetersToDevicePixels(x), millimetersToDevicePixels(y),
        millimetersToDevicePixels(w), millimetersToDevicePixels(h));
    if (box.height() > 0) {
        layoutBox(text, box, alignment, true);
        return 0;
    }
    QString line = text;
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    if (m_textClipping)
        line = clippedLine(line, box.width());
    const QRect lineBox(
        box.x(), box.y(), box.width(), millimetersToDevicePixels(singleLineBoxHeight));
    m_painter->drawText(lineBox, alignment | Qt::TextSingleLine | Qt::TextDontClip, line);
    return 0;
}

int PrintScriptEngine::envDrawText()
{
    return drawTextAligned(Qt::AlignLeft);
}

int PrintScriptEngine::envDrawTextRight()
{
    return drawTextAligned(Qt::AlignRight);
}

int PrintScriptEngine::envDrawTextHCenter()
{
    return drawTextAligned(Qt::AlignHCenter);
}

int PrintScriptEngine::envDrawTextVCenter()
{
    return drawTextAligned(Qt::AlignLeft | Qt::AlignVCenter);
}

int PrintScriptEngine::envDrawTextCenter()
{
    return drawTextAligned(Qt::AlignCenter);
}

int PrintScriptEngine::boundingRectAligned(int alignment)
{
    const int count = checkArgCount(1);
    if (count < 0 || !m_painter)
        return 0;
    const int textIndex = qMin(count, 5) - 1;
    double values[4] = { 0, 0, 0, 0 };
    for (int i = 0; i < textIndex; ++i) {
        bool ok = false;
        values[i] = doubleArg(i, ok);
        if (!ok)
            return 0;
    }
    const QString text = stringArg(textIndex);
    const QRect box(millimetersToDevicePixels(values[0]), millimetersToDevicePixels(values[1]),
        millimetersToDevicePixels(values[2]), millimetersToDevicePixels(values[3]));
    if (box.height() > 0) {
        QRectF used = layoutBox(text, box, alignment, false);
        if (used.isNull())
            used = QRectF(box.x(), box.y(), 0, 0);
        pushRect(used);
        return 1;
    }
    const QRect lineBox(
        box.x(), box.y(), box.width(), millimetersToDevicePixels(singleLineBoxHeight));
    const QRect bounds = QFontMetrics(m_font, m_device)
                             .boundingRect(lineBox, alignment | Qt::TextSingleLine, text);
    pushRect(QRectF(bounds.x(), bounds.y(), bounds.width(), bounds.height()));
    return 1;
}

int PrintScriptEngine::envBoundingRect()
{
    return boundingRectAligned(Qt::AlignLeft);
}

int PrintScriptEngine::envBoundingRectRight()
{
    return boundingRectAligned(Qt::AlignRight);
}

int PrintScriptEngine::envBoundingRectCenter()
{
    return boundingRectAligned(Qt::AlignCenter);
}

int PrintScriptEngine::envDrawImage()
{
    if (checkArgCount(5) < 0)
        return 0;
    QRect rect;
    if (!readRect(0, rect) || !canDraw() || !model())
        return 0;
    const QImage image = model()->image(stringArg(4));
    if (image.isNull() || rect.width() <= 0 || rect.height() <= 0)
        return 0;
    const QImage scaled = image.scaled(rect.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
    m_painter->drawImage(rect.topLeft(), scaled);
    return 0;
}

int PrintScriptEngine::envDrawBarcode128C()
{
    if (checkArgCount(5) < 0)
        return 0;
    QRect rect;
    if (!readRect(0, rect) || !canDraw())
        return 0;
    applyFontAndPen();
    Barcode128::renderC(m_painter, rect.x(), rect.y(), rect.width(), rect.height(), stringArg(4));
    return 0;
}

int PrintScriptEngine::envDrawQrCode()
{
    if (checkArgCount(5) < 0)
        return 0;
    QRect rect;
    if (!readRect(0, rect) || !canDraw())
        return 0;
    const QString text = stringArg(4);
    if (text.isEmpty())
        return 0;
    QrSymbol symbol;
    if (!symbol.encode(text.toUtf8())) {
        qCWarning(logScript) << "QR-koodia ei voi tehdä:" << symbol.lastError();
        return 0;
    }
    symbol.draw(m_painter, rect);
    return 0;
}

int PrintScriptEngine::envRotate()
{
    if (checkArgCount(1) < 0)
        return 0;
    bool ok = false;
    const double angle = doubleArg(0, ok);
    if (ok && m_painter)
        m_painter->rotate(angle);
    return 0;
}

int PrintScriptEngine::envIsTextClipping()
{
    duk_push_boolean(context(), m_textClipping);
    return 1;
}

int PrintScriptEngine::envSetTextClipping()
{
    if (checkArgCount(1) < 0)
        return 0;
    m_textClipping = boolArg(0);
    return 0;
}

int PrintScriptEngine::envLineHeight()
{
    duk_push_number(context(), m_lineHeight);
    return 1;
}

int PrintScriptEngine::envSetLineHeight()
{
    if (checkArgCount(1) < 0)
        return 0;
    bool ok = false;
    const double height = doubleArg(0, ok);
    if (ok)
        m_lineHeight = height < 0 ? -1.0 : height;
    return 0;
}

int PrintScriptEngine::envIsOutputEnabled()
{
    duk_push_boolean(context(), m_outputEnabled);
    return 1;
}

int PrintScriptEngine::envSetOutputEnabled()
{
    if (checkArgCount(1) < 0)
        return 0;
    m_outputEnabled = boolArg(0);
    return 0;
}

int PrintScriptEngine::envGetBrush()
{
    pushString(m_brushName);
    return 1;
}

int PrintScriptEngine::envSetBrush()
{
    // Scripts have always filled with black whatever they name here: the call
    // only checks its argument, and the brush is left alone.
    checkArgCount(1);
    return 0;
}

int PrintScriptEngine::envSetFont()
{
    if (checkArgCount(3) < 0)
        return 0;
    bool ok = false;
    const QString family = stringArg(0);
    const double size = doubleArg(1, ok);
    const QString style = stringArg(2);
    if (!ok)
        return 0;
    int weight = QFont::Normal;
    if (style.startsWith(QLatin1String("light")))
        weight = QFont::Light;
    else if (style.startsWith(QLatin1String("demiBold")))
        weight = QFont::DemiBold;
    else if (style.startsWith(QLatin1String("bold")))
        weight = QFont::Bold;
    else if (style.startsWith(QLatin1String("black")))
        weight = QFont::Black;
    QFont font(family);
    if (size > 0)
        font.setPointSizeF(size);
    font.setWeight(QFont::Weight(weight));
    font.setItalic(style.endsWith(QLatin1String("italic")));
    m_font = font;
    m_painterHasFont = canDraw();
    if (m_painterHasFont)
        m_painter->setFont(m_font);
    return 0;
}

int PrintScriptEngine::envSetPen()
{
    if (checkArgCount(2) < 0)
        return 0;
    m_penColorName = stringArg(0);
    bool ok = false;
    const double width = doubleArg(1, ok);
    QPen pen { QColor(m_penColorName) };
    if (ok && width > 0)
        pen.setWidth(millimetersToDevicePixels(width));
    m_pen = pen;
    m_painterHasPen = canDraw();
    if (m_painterHasPen)
        m_painter->setPen(m_pen);
    return 0;
}
