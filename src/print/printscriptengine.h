#ifndef PRINTSCRIPTENGINE_H
#define PRINTSCRIPTENGINE_H

#include "printscriptenginebase.h"

#include <QFont>
#include <QPen>
#include <QRectF>

class QPagedPaintDevice;
class QPainter;
class QPdfWriter;

// Runs a print script's print() on a printer or PDF writer. Scripts draw in
// millimetres from the top-left corner of the paper and in point-sized fonts;
// the engine converts to device pixels. Pages outside fromPage..toPage are
// laid out but not output.
class PrintScriptEngine : public PrintScriptEngineBase
{
    Q_OBJECT
public:
    explicit PrintScriptEngine(QObject* parent = nullptr);

    bool print(QPdfWriter* writer);
    // Any paged device (a printer in the user interface); openError is the
    // message when the painter cannot open on it.
    bool print(QPagedPaintDevice* device, int resolution, const QString& openError);
    // Calls the script's print() with painter open on device.
    bool run(QPagedPaintDevice* device, QPainter* painter, int resolution);
    // Bit mask: 1 portrait, 2 landscape, 3 both.
    int supportedOrientations();

    int fromPage() const { return m_fromPage; }
    void setFromPage(int page) { m_fromPage = page; }
    int toPage() const { return m_toPage; }
    void setToPage(int page) { m_toPage = page; }
    bool isOutputEnabled() const { return m_outputEnabled; }
    void setOutputEnabled(bool enabled) { m_outputEnabled = enabled; }
    bool isTextClipping() const { return m_textClipping; }
    // The page the script is on (during a run) or ended on (after it).
    int pageNumber() const { return m_pageNumber; }
    // The font and pen of the last setFont() and setPen(), or the painter's at the start of a
    // run; drawing and measuring use them even when they were set while nothing was drawn.
    QFont font() const { return m_font; }
    QPen pen() const { return m_pen; }
    QString penColorName() const { return m_penColorName; }
    QString brushName() const { return m_brushName; }

    int millimetersToDevicePixels(double millimeters) const;
    double devicePixelsToMillimeters(int pixels) const;

public slots:
    void initialize() override;

    int envOrientation();
    int envPageRect();
    int envPaperRect();
    int envNewPage();
    int envDrawLine();
    int envDrawRect();
    int envFillRect();
    int envDrawText();
    int envDrawTextRight();
    int envDrawTextHCenter();
    int envDrawTextVCenter();
    int envDrawTextCenter();
    int envDrawImage();
    int envDrawBarcode128C();
    int envDrawQrCode();
    int envBoundingRect();
    int envBoundingRectRight();
    int envBoundingRectCenter();
    int envRotate();
    int envIsTextClipping();
    int envSetTextClipping();
    int envLineHeight();
    int envSetLineHeight();
    int envIsOutputEnabled();
    int envSetOutputEnabled();
    int envGetBrush();
    int envSetBrush();
    int envSetFont();
    int envSetPen();

private:
    bool canDraw() const;
    // Gives the painter the remembered font and pen before it draws.
    void applyFontAndPen();
    void setPageNumber(int page);
    bool readPixels(int first, int count, int* pixels);
    bool readRect(int first, QRect& rect);
    int drawTextAligned(int alignment);
    int boundingRectAligned(int alignment);
    // Lays a text out in a box of height > 0 line by line; paints when asked.
    // Returns the area the drawn lines take, in device pixels.
    QRectF layoutBox(const QString& text, const QRect& box, int alignment, bool paint);
    QString clippedLine(const QString& text, int width) const;
    void pushRect(const QRectF& pixels);

    QPagedPaintDevice* m_device = nullptr;
    QPainter* m_painter = nullptr;
    int m_resolution = 72;
    QString m_brushName;
    QString m_penColorName;
    QFont m_font;
    QPen m_pen;
    // Whether the painter has m_font and m_pen, which are set without it while nothing is drawn.
    bool m_painterHasFont = false;
    bool m_painterHasPen = false;
    bool m_textClipping = true;
    double m_lineHeight = -1.0;
    int m_fromPage = -1;
    int m_toPage = -1;
    int m_pageNumber = 1;
    bool m_pageInRange = true;
    bool m_outputEnabled = true;
};

#endif // PRINTSCRIPTENGINE_H
