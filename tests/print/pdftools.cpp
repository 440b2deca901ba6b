#include "pdftools.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
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

} // namespace PdfTools
