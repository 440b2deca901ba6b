#include "pdftools.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtDebug>

namespace PdfTools {

QByteArray run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        qWarning() << program << arguments << "failed:" << process.readAllStandardError();
        return QByteArray();
    }
    return process.readAllStandardOutput();
}

QString info(const QString& fileName)
{
    return QString::fromUtf8(run(QStringLiteral("pdfinfo"), { fileName }));
}

int pageCount(const QString& fileName)
{
    const QRegularExpression pages(
        QStringLiteral("^Pages:\\s+(\\d+)"), QRegularExpression::MultilineOption);
    const QRegularExpressionMatch match = pages.match(info(fileName));
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

QString text(const QString& fileName, int page)
{
    QStringList arguments { "-layout", "-enc", "UTF-8" };
    if (page > 0)
        arguments << "-f" << QString::number(page) << "-l" << QString::number(page);
    QString text = QString::fromUtf8(run("pdftotext", arguments << fileName << "-"));
    return text.replace(QChar(0x00A0), ' ').replace(QChar(0x202F), ' ');
}

QImage renderPage(const QString& fileName, int page, int dpi)
{
    QTemporaryDir dir;
    const QString prefix = dir.filePath(QStringLiteral("page"));
    run("pdftoppm",
        { "-gray", "-r", QString::number(dpi), "-f", QString::number(page), "-l",
            QString::number(page), "-singlefile", "-png", fileName, prefix });
    return QImage(prefix + ".png").convertToFormat(QImage::Format_Grayscale8);
}

QStringList qrCodes(const QString& fileName, int page, int dpi)
{
    QTemporaryDir dir;
    const QString prefix = dir.filePath(QStringLiteral("page"));
    run("pdftoppm",
        { "-gray", "-r", QString::number(dpi), "-f", QString::number(page), "-l",
            QString::number(page), "-singlefile", "-png", fileName, prefix });
    // The XML form keeps the line breaks inside a code; exit status 4 means none was found.
    QProcess zbar;
    zbar.start(QStringLiteral("zbarimg"),
        { "--quiet", "--xml", "-Sdisable", "-Sqrcode.enable", prefix + ".png" });
    const bool finished = zbar.waitForFinished(60000) && zbar.exitStatus() == QProcess::NormalExit;
    if (!finished || (zbar.exitCode() != 0 && zbar.exitCode() != 4)) {
        qWarning() << "zbarimg failed:" << zbar.readAllStandardError();
        return {};
    }
    QStringList codes;
    QXmlStreamReader xml(zbar.readAllStandardOutput());
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.name() != QLatin1String("data"))
            continue;
        const bool base64
            = xml.attributes().value(QLatin1String("format")) == QLatin1String("base64");
        const QString data = xml.readElementText();
        codes.append(base64 ? QString::fromUtf8(QByteArray::fromBase64(data.toLatin1())) : data);
    }
    return codes;
}

static double millimeters(const QXmlStreamAttributes& attributes, const char* name)
{
    constexpr double millimetersPerPoint = 25.4 / 72.0;
    return attributes.value(QLatin1String(name)).toDouble() * millimetersPerPoint;
}

QList<Page> pages(const QString& fileName)
{
    QXmlStreamReader xml(run("pdftotext", { "-bbox", "-enc", "UTF-8", fileName, "-" }));
    QList<Page> result;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QXmlStreamAttributes attributes = xml.attributes();
        if (xml.name() == QLatin1String("page")) {
            result.append(
                { QSizeF(millimeters(attributes, "width"), millimeters(attributes, "height")),
                    {} });
        } else if (xml.name() == QLatin1String("word") && !result.isEmpty()) {
            const QPointF topLeft(millimeters(attributes, "xMin"), millimeters(attributes, "yMin"));
            const QPointF bottomRight(
                millimeters(attributes, "xMax"), millimeters(attributes, "yMax"));
            result.last().words.append({ xml.readElementText(), QRectF(topLeft, bottomRight) });
        }
    }
    if (xml.hasError())
        qWarning() << fileName << xml.errorString();
    return result;
}

QStringList texts(const QList<Word>& words)
{
    QStringList result;
    for (const Word& word : words)
        result.append(word.text);
    return result;
}

} // namespace PdfTools
