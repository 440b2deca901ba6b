#include "finvoicereader.h"

#include <QFile>
#include <QXmlStreamReader>

bool FinvoiceReader::readFile(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        m_error = file.errorString();
        return false;
    }
    return read(file.readAll());
}

bool FinvoiceReader::read(const QByteArray& bytes)
{
    m_parts.clear();
    m_roots.clear();
    m_bytes = bytes;
    m_error.clear();
    const QByteArray declaration("<?xml version=");
    QList<qsizetype> starts;
    for (qsizetype at = bytes.indexOf(declaration); at >= 0;
         at = bytes.indexOf(declaration, at + 1))
        starts.append(at);
    starts.append(bytes.size());
    for (int i = 0; i + 1 < starts.size(); ++i) {
        QXmlStreamReader xml(bytes.mid(starts.at(i), starts.at(i + 1) - starts.at(i)));
        QMap<QString, QStringList> values;
        QStringList path;
        QString text;
        while (!xml.atEnd()) {
            xml.readNext();
            if (xml.isStartElement()) {
                if (path.isEmpty())
                    m_roots.append(xml.qualifiedName().toString());
                path.append(xml.qualifiedName().toString());
                const QString element = path.join(QLatin1Char('/'));
                const QXmlStreamAttributes attributes = xml.attributes();
                for (const QXmlStreamAttribute& attribute : attributes)
                    values[element + QLatin1Char('@') + attribute.qualifiedName().toString()]
                        .append(attribute.value().toString());
                text.clear();
            } else if (xml.isCharacters()) {
                text += xml.text();
            } else if (xml.isEndElement()) {
                values[path.join(QLatin1Char('/'))].append(text.trimmed());
                text.clear();
                path.removeLast();
            }
        }
        if (xml.hasError()) {
            m_error = QStringLiteral("part %1, line %2: %3")
                          .arg(i + 1)
                          .arg(xml.lineNumber())
                          .arg(xml.errorString());
            return false;
        }
        m_parts.append(values);
    }
    return true;
}

QStringList FinvoiceReader::values(int part, const QString& path) const
{
    return m_parts.value(part).value(path);
}

QString FinvoiceReader::value(int part, const QString& path) const
{
    return values(part, path).value(0);
}

QString FinvoiceReader::root(int part) const
{
    return m_roots.value(part);
}
