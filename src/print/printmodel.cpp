#include "printmodel.h"

PrintModel::PrintModel(QObject* parent) : QObject(parent) { }

bool PrintModel::run()
{
    return true;
}

QString PrintModel::lastError() const
{
    return m_lastError;
}

QVariant PrintModel::value(const QString& path)
{
    QStringList parts = path.split(QLatin1Char('/'));
    return value(parts);
}

QImage PrintModel::image(const QString& path)
{
    QStringList parts = path.split(QLatin1Char('/'));
    return image(parts);
}

QImage PrintModel::image(QStringList& path)
{
    Q_UNUSED(path)
    return QImage();
}

QString PrintModel::csvFormatToDelimiter(int format)
{
    return format == 1 ? QStringLiteral(";") : QStringLiteral(",");
}
