#include "xmlscriptengine.h"

#include "printmodel.h"

#include <QBuffer>
#include <QDateTime>
#include <QFile>
#include <QStringEncoder>
#include <QXmlStreamWriter>

namespace {
const char* const encodingName = "ISO-8859-15";
const QString declaration = QStringLiteral("<?xml version=\"1.0\" encoding=\"ISO-8859-15\"?>\n");
const QString soapNamespace = QStringLiteral("http://schemas.xmlsoap.org/soap/envelope/");
const QString xlinkNamespace = QStringLiteral("http://www.w3.org/1999/xlink");
const QString ebxmlNamespace
    = QStringLiteral("http://www.oasis-open.org/committees/ebxml-msg/schema/msg-header-2_0.xsd");
// Where a receiver finds the schema of the version named beside it.
const QString schemaLocation = QStringLiteral("http://www.finanssiala.fi/finvoice/Finvoice.xsd");
const QString cpaId = QStringLiteral("yoursandmycpa");
const QString timestampFormat = QStringLiteral("yyyy-MM-dd'T'hh:mm:ss");

QString fromCodePoint(char32_t c)
{
    return QString::fromUcs4(&c, 1);
}

// The declaration in front of what a stream writer wrote in UTF-8.
QString withDeclaration(const QByteArray& written)
{
    QString text = QString::fromUtf8(written);
    // The writer starts its first node on a line of its own.
    if (text.startsWith(QLatin1Char('\n')))
        text.remove(0, 1);
    return declaration + text;
}

bool isIso885915(char32_t c)
{
    switch (c) {
    // The eight places where ISO-8859-15 differs from ISO-8859-1.
    case 0x20AC: // euro sign
    case 0x0160:
    case 0x0161:
    case 0x017D:
    case 0x017E:
    case 0x0152:
    case 0x0153:
    case 0x0178:
        return true;
    case 0x00A4:
    case 0x00A6:
    case 0x00A8:
    case 0x00B4:
    case 0x00B8:
    case 0x00BC:
    case 0x00BD:
    case 0x00BE:
        return false;
    default:
        return c <= 0xFF;
    }
}

// Typographic marks that texts pasted from word processors bring along.
QString punctuation(char32_t c)
{
    switch (c) {
    case 0x2018:
    case 0x2019:
    case 0x201A:
    case 0x201B:
    case 0x2032:
        return QStringLiteral("'");
    case 0x201C:
    case 0x201D:
    case 0x201E:
    case 0x201F:
    case 0x2033:
        return QStringLiteral("\"");
    case 0x2010:
    case 0x2011:
    case 0x2012:
    case 0x2013:
    case 0x2014:
    case 0x2015:
    case 0x2212:
        return QStringLiteral("-");
    case 0x2044: // fraction slash, from the decomposition of "½"
        return QStringLiteral("/");
    default:
        return QString();
    }
}

bool isCombiningMark(char32_t c)
{
    const QChar::Category category = QChar::category(c);
    return category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining
        || category == QChar::Mark_Enclosing;
}

QString substitute(char32_t c)
{
    const QString mark = punctuation(c);
    if (!mark.isEmpty())
        return mark;
    const QString decomposed = QString::fromUcs4(&c, 1).normalized(QString::NormalizationForm_KD);
    QString result;
    const QList<uint> parts = decomposed.toUcs4();
    for (const uint part : parts) {
        if (isCombiningMark(part))
            continue;
        if (isIso885915(part)) {
            result += fromCodePoint(part);
            continue;
        }
        const QString partMark = punctuation(part);
        if (partMark.isEmpty())
            return QStringLiteral("?");
        result += partMark;
    }
    return result;
}
} // namespace

XmlScriptEngine::XmlScriptEngine(QObject* parent) : PrintScriptEngineBase(parent)
{
    useFinvoiceNumberFormats();
}

void XmlScriptEngine::useFinvoiceNumberFormats()
{
    for (DecimalFormat* format : { &m_currencyFormat, &m_numberFormat }) {
        format->setDecimalPoint(QStringLiteral(","));
        format->setNegativeSign(QStringLiteral("-"));
        format->setGrouping(false);
    }
    m_grouping = false;
}

void XmlScriptEngine::initialize()
{
    PrintScriptEngineBase::initialize();
    useFinvoiceNumberFormats();
    duk_context* ctx = context();
    if (!ctx)
        return;
    duk_push_global_object(ctx);
    registerFunc("doctype", this, "envDoctype()");
    registerFunc("startElement", this, "envStartElement()");
    registerFunc("endElement", this, "envEndElement()");
    registerFunc("textElement", this, "envTextElement()");
    registerFunc("attribute", this, "envAttribute()");
    registerFunc("characters", this, "envCharacters()");
    registerFunc("comment", this, "envComment()");
    registerFunc("processingInstruction", this, "envProcessingInstruction()");
    duk_pop(ctx);
}

void XmlScriptEngine::clear()
{
    ECMAScriptEngine::clear();
    m_warnings.clear();
    m_hasErrors = false;
    m_elements.clear();
}

void XmlScriptEngine::addWarning(const QString& warning, bool error)
{
    m_warnings.append(warning);
    m_hasErrors = m_hasErrors || error;
}

bool XmlScriptEngine::checkWriteFunction()
{
    duk_context* ctx = context();
    const bool found = ctx && duk_get_global_string(ctx, "write") && duk_is_function(ctx, -1);
    if (ctx)
        duk_pop(ctx);
    if (!found)
        setError(QStringLiteral("function write does not exist"));
    return found;
}

// The element functions work only while write() runs the script.

int XmlScriptEngine::envDoctype()
{
    if (checkArgCount(1) < 0 || !m_writer)
        return 0;
    m_writer->writeDTD(stringArg(0));
    return 0;
}

int XmlScriptEngine::envStartElement()
{
    if (checkArgCount(1) < 0 || !m_writer)
        return 0;
    const QString name = stringArg(0);
    m_elements.append(name);
    m_writer->writeStartElement(name);
    return 0;
}

int XmlScriptEngine::envEndElement()
{
    if (checkArgCount(1) < 0 || !m_writer)
        return 0;
    const QString name = stringArg(0);
    const QString open = m_elements.isEmpty() ? QString() : m_elements.takeLast();
    if (open != name) {
        runtimeError(QStringLiteral("Mismatched tag: %1 != %2").arg(open, name));
        return 0;
    }
    m_writer->writeEndElement();
    return 0;
}

int XmlScriptEngine::envTextElement()
{
    if (checkArgCount(2) < 0 || !m_writer)
        return 0;
    m_writer->writeTextElement(stringArg(0), stringArg(1));
    return 0;
}

int XmlScriptEngine::envAttribute()
{
    if (checkArgCount(2) < 0 || !m_writer)
        return 0;
    m_writer->writeAttribute(stringArg(0), stringArg(1));
    return 0;
}

int XmlScriptEngine::envCharacters()
{
    if (checkArgCount(1) < 0 || !m_writer)
        return 0;
    m_writer->writeCharacters(stringArg(0));
    return 0;
}

int XmlScriptEngine::envComment()
{
    if (checkArgCount(1) < 0 || !m_writer)
        return 0;
    m_writer->writeComment(stringArg(0));
    return 0;
}

int XmlScriptEngine::envProcessingInstruction()
{
    const int count = checkArgCount(1);
    if (count < 0 || !m_writer)
        return 0;
    m_writer->writeProcessingInstruction(stringArg(0), count > 1 ? stringArg(1) : QString());
    return 0;
}

QString XmlScriptEngine::modelText(const QString& path) const
{
    return m_model ? m_model->value(path).toString() : QString();
}

QString XmlScriptEngine::soapEnvelope() const
{
    QByteArray buffer;
    QBuffer device(&buffer);
    device.open(QIODevice::WriteOnly);
    QXmlStreamWriter xml(&device);
    xml.setAutoFormatting(true);
    auto party = [&xml](const QString& element, const QString& id, const QString& role) {
        xml.writeStartElement(element);
        xml.writeTextElement(QStringLiteral("eb:PartyId"), id);
        xml.writeTextElement(QStringLiteral("eb:Role"), role);
        xml.writeEndElement();
    };
    QString receiver = modelText(QStringLiteral("invoice/customer/receiverId"));
    if (receiver.isEmpty())
        receiver = modelText(QStringLiteral("settings/defaultReceiverId"));

    xml.writeStartElement(QStringLiteral("SOAP-ENV:Envelope"));
    xml.writeAttribute(QStringLiteral("xmlns:SOAP-ENV"), soapNamespace);
    xml.writeAttribute(QStringLiteral("xmlns:xlink"), xlinkNamespace);
    xml.writeAttribute(QStringLiteral("xmlns:eb"), ebxmlNamespace);
    xml.writeStartElement(QStringLiteral("SOAP-ENV:Header"));
    xml.writeStartElement(QStringLiteral("eb:MessageHeader"));
    xml.writeAttribute(QStringLiteral("SOAP-ENV:mustUnderstand"), QStringLiteral("1"));
    xml.writeAttribute(QStringLiteral("eb:version"), QStringLiteral("2.0"));
    party(QStringLiteral("eb:From"), modelText(QStringLiteral("settings/senderId")),
        QStringLiteral("Sender"));
    party(QStringLiteral("eb:From"), modelText(QStringLiteral("settings/intermediatorId")),
        QStringLiteral("Intermediator"));
    party(QStringLiteral("eb:To"), receiver, QStringLiteral("Receiver"));
    party(QStringLiteral("eb:To"), modelText(QStringLiteral("invoice/customer/intermediatorId")),
        QStringLiteral("Intermediator"));
    xml.writeTextElement(QStringLiteral("eb:CPAId"), cpaId);
    xml.writeStartElement(QStringLiteral("eb:MessageData"));
    xml.writeTextElement(
        QStringLiteral("eb:MessageId"), modelText(QStringLiteral("invoice/number")));
    xml.writeTextElement(
        QStringLiteral("eb:Timestamp"), QDateTime::currentDateTime().toString(timestampFormat));
    xml.writeEndElement(); // eb:MessageData
    xml.writeEndElement(); // eb:MessageHeader
    xml.writeEndElement(); // SOAP-ENV:Header
    xml.writeStartElement(QStringLiteral("SOAP-ENV:Body"));
    xml.writeStartElement(QStringLiteral("eb:Manifest"));
    xml.writeAttribute(QStringLiteral("eb:id"), QStringLiteral("Manifest"));
    xml.writeAttribute(QStringLiteral("eb:version"), QStringLiteral("2.0"));
    xml.writeStartElement(QStringLiteral("eb:Reference"));
    xml.writeAttribute(QStringLiteral("xlink:href"), QStringLiteral("Finvoice"));
    xml.writeEmptyElement(QStringLiteral("eb:Schema"));
    xml.writeAttribute(QStringLiteral("eb:location"), schemaLocation);
    xml.writeAttribute(QStringLiteral("eb:version"), modelText(QStringLiteral("xmlSchemaVersion")));
    xml.writeEndDocument();
    return withDeclaration(buffer);
}

bool XmlScriptEngine::writeDocument(QString* document)
{
    if (!checkWriteFunction())
        return false;
    duk_context* ctx = context();
    duk_get_global_string(ctx, "write");
    QByteArray buffer;
    QBuffer device(&buffer);
    device.open(QIODevice::WriteOnly);
    QXmlStreamWriter xml(&device);
    xml.setAutoFormatting(true);
    m_writer = &xml;
    m_elements.clear();
    const bool ok = callFunction(0);
    duk_pop(ctx);
    m_writer = nullptr;
    if (!ok)
        return false;
    xml.writeEndDocument();
    m_elements.clear();
    *document = withDeclaration(buffer);
    return true;
}

bool XmlScriptEngine::write(const QString& fileName, bool append)
{
    clearError();
    QStringEncoder encoder(encodingName);
    if (!encoder.isValid()) {
        setError(QStringLiteral("invalid ISO-8859-15 encoder"));
        return false;
    }
    QString text = m_soapEnvEnabled ? soapEnvelope() : QString();
    QString document;
    if (!writeDocument(&document))
        return false;
    text += document;

    // The encoder would write the control byte 0x1A for a character it
    // lacks, which no XML reader accepts.
    QList<QPair<QString, QString>> replaced;
    const QByteArray bytes = encoder.encode(replaceUnencodable(text, &replaced));

    QFile file(fileName);
    const QIODevice::OpenMode mode
        = QIODevice::WriteOnly | (append ? QIODevice::Append : QIODevice::Truncate);
    if (!file.open(mode) || file.write(bytes) != bytes.size()) {
        setError(file.errorString());
        return false;
    }
    const QString number = modelText(QStringLiteral("invoice/number"));
    for (const auto& pair : std::as_const(replaced)) {
        const QString character = pair.first;
        const QString code = QString::number(character.toUcs4().value(0), 16).toUpper();
        const QString warning
            = tr("merkki %1 (U+%2) ei kuulu ISO-8859-15-merkistöön, tilalle kirjoitettiin \"%3\"")
                  .arg(character, code.rightJustified(4, QLatin1Char('0')), pair.second);
        addWarning(number.isEmpty() ? warning : tr("lasku %1: %2").arg(number, warning));
    }
    return true;
}

QString XmlScriptEngine::replaceUnencodable(
    const QString& text, QList<QPair<QString, QString>>* replaced)
{
    // Composed first, so that a letter typed with a separate accent stays one letter.
    const QList<uint> characters = text.normalized(QString::NormalizationForm_C).toUcs4();
    QString result;
    result.reserve(characters.size());
    for (const uint c : characters) {
        const QString original = fromCodePoint(c);
        if (isIso885915(c)) {
            result += original;
            continue;
        }
        const QString replacement = substitute(c);
        result += replacement;
        if (replaced && !replaced->contains(qMakePair(original, replacement)))
            replaced->append(qMakePair(original, replacement));
    }
    return result;
}
