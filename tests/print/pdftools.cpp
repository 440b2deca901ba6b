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
    const QRegularExpressionMatch match = QRegularExpression(
        QStringLiteral("^Pages:\\s+(\\d+)"), QRegularExpression::MultilineOption)
                                              .match(info(fileName));
    return match.hasMatch() ? match.captured(1).toInt() : -1;
}

QString text(const QString& fileName, int page)
{
    QStringList arguments { QStringLiteral("-layout"), QStringLiteral("-enc"),
        QStringLiteral("UTF-8") };
    if (page > 0)
        arguments << QStringLiteral("-f") << QString::number(page) << QStringLiteral("-l")
                  << QString::number(page);
    arguments << fileName << QStringLiteral("-");
    QString text = QString::fromUtf8(run(QStringLiteral("pdftotext"), arguments));
    text.replace(QChar(0x00A0), QLatin1Char(' '));
    text.replace(QChar(0x202F), QLatin1Char(' '));
    return text;
}

QImage renderPage(const QString& fileName, int page, int dpi, bool gray)
{
    QTemporaryDir dir;
    const QString prefix = dir.filePath(QStringLiteral("page"));
    QStringList arguments { QStringLiteral("-r"), QString::number(dpi), QStringLiteral("-f"),
        QString::number(page), QStringLiteral("-l"), QString::number(page),
        QStringLiteral("-singlefile"), QStringLiteral("-png") };
    if (gray)
        arguments.prepend(QStringLiteral("-gray"));
    arguments << fileName << prefix;
    run(QStringLiteral("pdftoppm"), arguments);
    const QImage image(prefix + QStringLiteral(".png"));
    return image.convertToFormat(gray ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
}

} // namespace PdfTools
