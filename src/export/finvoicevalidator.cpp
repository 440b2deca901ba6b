#include "finvoicevalidator.h"

#include "print/xmlscriptengine.h"

#include <QFile>
#include <QRegularExpression>

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlschemas.h>

namespace {
const char* const soapNamespace = "http://schemas.xmlsoap.org/soap/envelope/";
const char* const ebxmlNamespace
    = "http://www.oasis-open.org/committees/ebxml-msg/schema/msg-header-2_0.xsd";
const QString unknownNumber = QStringLiteral("?");
// No network access for external entities; line numbers beyond 65535.
constexpr int parseOptions = XML_PARSE_NONET | XML_PARSE_BIG_LINES;

using Messages = QList<QPair<int, QString>>;

void collectMessage(void* messages, xmlErrorPtr error)
{
    if (!error || !error->message)
        return;
    static_cast<Messages*>(messages)->append(
        { error->line, QString::fromUtf8(error->message).trimmed() });
}

// libxml2's structured error handler is global: set for one call only.
class MessageCollector
{
public:
    explicit MessageCollector(Messages* messages)
    {
        xmlSetStructuredErrorFunc(messages, collectMessage);
    }
    ~MessageCollector() { xmlSetStructuredErrorFunc(nullptr, nullptr); }
    MessageCollector(const MessageCollector&) = delete;
    MessageCollector& operator=(const MessageCollector&) = delete;
};

bool isElement(const xmlNode* node, const char* ns, const char* name)
{
    if (!node || node->type != XML_ELEMENT_NODE || xmlStrcmp(node->name, BAD_CAST name) != 0)
        return false;
    if (!ns)
        return !node->ns;
    return node->ns && xmlStrcmp(node->ns->href, BAD_CAST ns) == 0;
}

QList<const xmlNode*> children(const xmlNode* parent, const char* ns, const char* name)
{
    QList<const xmlNode*> found;
    for (const xmlNode* child = parent ? parent->children : nullptr; child; child = child->next) {
        if (isElement(child, ns, name))
            found.append(child);
    }
    return found;
}

const xmlNode* child(const xmlNode* parent, const char* ns, const char* name)
{
    const QList<const xmlNode*> found = children(parent, ns, name);
    return found.isEmpty() ? nullptr : found.first();
}

QString content(const xmlNode* node)
{
    if (!node)
        return QString();
    xmlChar* text = xmlNodeGetContent(node);
    const QString result = QString::fromUtf8(reinterpret_cast<const char*>(text)).trimmed();
    xmlFree(text);
    return result;
}

QString attributeValue(const xmlNode* node, const char* ns, const char* name)
{
    xmlChar* value
        = ns ? xmlGetNsProp(node, BAD_CAST name, BAD_CAST ns) : xmlGetNoNsProp(node, BAD_CAST name);
    const QString result = QString::fromUtf8(reinterpret_cast<const char*>(value));
    xmlFree(value);
    return result;
}

const xmlNode* root(xmlDoc* document)
{
    return document ? xmlDocGetRootElement(document) : nullptr;
}

bool isFinvoice(xmlDoc* document)
{
    return isElement(root(document), nullptr, "Finvoice");
}

bool isEnvelope(xmlDoc* document)
{
    return isElement(root(document), soapNamespace, "Envelope");
}

QString messageId(xmlDoc* envelope)
{
    const xmlNode* header = child(root(envelope), soapNamespace, "Header");
    const xmlNode* message = child(header, ebxmlNamespace, "MessageHeader");
    return content(
        child(child(message, ebxmlNamespace, "MessageData"), ebxmlNamespace, "MessageId"));
}

QString invoiceNumber(xmlDoc* document)
{
    const xmlNode* details = child(root(document), nullptr, "InvoiceDetails");
    return content(child(details, nullptr, "InvoiceNumber"));
}
} // namespace

FinvoiceValidator::FinvoiceValidator()
{
    xmlInitParser();
}

FinvoiceValidator::~FinvoiceValidator()
{
    for (xmlSchemaPtr schema : std::as_const(m_schemas))
        xmlSchemaFree(schema);
}

QString FinvoiceValidator::schemaPath(const QString& version)
{
    return QStringLiteral(":/xsd/Finvoice%1.xsd").arg(version);
}

bool FinvoiceValidator::validateFile(const QString& fileName)
{
    m_findings.clear();
    m_details.clear();
    m_documentCount = 0;
    m_lastError.clear();
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        m_lastError = file.errorString();
        return false;
    }
    return validate(file.readAll());
}

QList<FinvoiceValidator::Part> FinvoiceValidator::split(const QByteArray& data)
{
    // Every document of the file begins with its XML declaration on a line of its own.
    QList<qsizetype> starts;
    for (qsizetype at = data.indexOf("<?xml"); at >= 0; at = data.indexOf("<?xml", at + 1)) {
        const char next = at + 5 < data.size() ? data.at(at + 5) : '\0';
        const bool lineStart = at == 0 || data.at(at - 1) == '\n';
        if (lineStart && (next == ' ' || next == '\t' || next == '\r' || next == '\n'))
            starts.append(at);
    }
    if (starts.isEmpty() || starts.first() > 0)
        starts.prepend(0);
    starts.append(data.size());

    QList<Part> parts;
    int line = 1;
    for (int i = 0; i + 1 < starts.size(); ++i) {
        const QByteArray bytes = data.mid(starts.at(i), starts.at(i + 1) - starts.at(i));
        if (!bytes.trimmed().isEmpty())
            parts.append({ bytes, line });
        line += int(bytes.count('\n'));
    }
    return parts;
}

FinvoiceValidator::ParsedPart FinvoiceValidator::parse(const Part& part)
{
    ParsedPart parsed;
    parsed.firstLine = part.firstLine;
    static const QRegularExpression number(
        QStringLiteral("<(?:InvoiceNumber|eb:MessageId)>([^<]{1,20})</"));
    parsed.number = number.match(QString::fromLatin1(part.data)).captured(1).trimmed();
    MessageCollector collector(&parsed.messages);
    parsed.document = xmlReadMemory(
        part.data.constData(), int(part.data.size()), "finvoice.xml", nullptr, parseOptions);
    return parsed;
}

xmlSchemaPtr FinvoiceValidator::schema(const QString& version)
{
    if (m_schemas.contains(version))
        return m_schemas.value(version);
    QFile file(schemaPath(version));
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    const QByteArray data = file.readAll();
    Messages messages;
    xmlSchemaPtr schema = nullptr;
    {
        MessageCollector collector(&messages);
        xmlSchemaParserCtxtPtr context
            = xmlSchemaNewMemParserCtxt(data.constData(), int(data.size()));
        schema = context ? xmlSchemaParse(context) : nullptr;
        xmlSchemaFreeParserCtxt(context);
    }
    if (!schema) {
        m_lastError = tr("Finvoice-skeeman %1 lukeminen epäonnistui: %2")
                          .arg(schemaPath(version),
                              messages.isEmpty() ? QString() : messages.first().second);
        return nullptr;
    }
    m_schemas.insert(version, schema);
    return schema;
}

bool FinvoiceValidator::validate(const QByteArray& data)
{
    m_findings.clear();
    m_details.clear();
    m_documentCount = 0;
    m_lastError.clear();

    QList<ParsedPart> parts;
    const QList<Part> pieces = split(data);
    for (const Part& piece : pieces)
        parts.append(parse(piece));

    bool ok = true;
    for (int i = 0; i < parts.size() && ok; ++i) {
        const ParsedPart& part = parts.at(i);
        if (!part.document) {
            addMessages(part.number, part, part.messages);
            continue;
        }
        if (isEnvelope(part.document)) {
            // An envelope belongs to the document that follows it.
            const ParsedPart* next = i + 1 < parts.size() ? &parts.at(i + 1) : nullptr;
            if (next && !next->document) {
                // The document's own messages come next; its version is unknown.
                checkEnvelope(part, next->number, QString());
                continue;
            }
            if (!next || !isFinvoice(next->document)) {
                addFinding(messageId(part.document), part, xmlGetLineNo(root(part.document)),
                    tr("SOAP-kehyksen jälkeen ei ole Finvoice-laskua"));
                continue;
            }
            const ParsedPart& document = parts.at(i + 1);
            const QString number = invoiceNumber(document.document);
            checkEnvelope(
                part, number, attributeValue(root(document.document), nullptr, "Version"));
            ok = checkDocument(document, number);
            ++i;
        } else if (isFinvoice(part.document)) {
            ok = checkDocument(part, invoiceNumber(part.document));
        } else {
            addFinding(unknownNumber, part, xmlGetLineNo(root(part.document)),
                tr("tiedostossa on tuntematon elementti %1")
                    .arg(QString::fromUtf8(
                        reinterpret_cast<const char*>(root(part.document)->name))));
        }
    }
    for (const ParsedPart& part : std::as_const(parts))
        xmlFreeDoc(part.document);

    if (ok && m_documentCount == 0 && m_findings.isEmpty())
        addFinding(unknownNumber, ParsedPart(), 1, tr("tiedostossa ei ole Finvoice-laskua"));
    return ok && m_findings.isEmpty();
}

bool FinvoiceValidator::checkDocument(const ParsedPart& document, const QString& number)
{
    ++m_documentCount;
    addMessages(number, document, document.messages);
    const xmlNode* finvoice = root(document.document);
    const QString version = attributeValue(finvoice, nullptr, "Version");
    if (!QFile::exists(schemaPath(version))) {
        addFinding(number, document, xmlGetLineNo(finvoice),
            tr("Finvoice-versiolle \"%1\" ei ole skeemaa").arg(version));
        return true;
    }
    xmlSchemaPtr finvoiceSchema = schema(version);
    if (!finvoiceSchema)
        return false;
    Messages messages;
    xmlSchemaValidCtxtPtr context = xmlSchemaNewValidCtxt(finvoiceSchema);
    xmlSchemaSetValidStructuredErrors(context, collectMessage, &messages);
    const int result = xmlSchemaValidateDoc(context, document.document);
    xmlSchemaFreeValidCtxt(context);
    addMessages(number, document, messages);
    if (result != 0 && messages.isEmpty())
        addFinding(number, document, xmlGetLineNo(finvoice),
            tr("laskua ei voitu tarkistaa Finvoice-skeemaa vasten"));
    return true;
}

void FinvoiceValidator::checkEnvelope(
    const ParsedPart& envelope, const QString& number, const QString& documentVersion)
{
    const xmlNode* top = root(envelope.document);
    // Each step names what is missing at the line of the element that should hold it.
    auto require = [&](const xmlNode* parent, const char* ns, const char* name,
                       const QString& label) -> const xmlNode* {
        if (!parent)
            return nullptr;
        const xmlNode* found = child(parent, ns, name);
        if (!found)
            addFinding(number, envelope, xmlGetLineNo(parent),
                tr("SOAP-kehyksestä puuttuu %1").arg(label));
        return found;
    };
    auto requireText = [&](const xmlNode* parent, const char* name, const QString& label) {
        const xmlNode* found = require(parent, ebxmlNamespace, name, label);
        if (found && content(found).isEmpty())
            addFinding(
                number, envelope, xmlGetLineNo(found), tr("SOAP-kehyksen %1 on tyhjä").arg(label));
    };

    const xmlNode* header
        = require(require(top, soapNamespace, "Header", QStringLiteral("SOAP-ENV:Header")),
            ebxmlNamespace, "MessageHeader", QStringLiteral("eb:MessageHeader"));
    // The sender and the receiver must be named; the operators may be left open.
    const struct
    {
        const char* element;
        const char* role;
        bool named;
    } parties[] = { { "From", "Sender", true }, { "From", "Intermediator", false },
        { "To", "Receiver", true }, { "To", "Intermediator", false } };
    for (const auto& party : parties) {
        if (!header)
            break;
        const QString label = QStringLiteral("eb:%1 (%2)")
                                  .arg(QLatin1String(party.element), QLatin1String(party.role));
        const xmlNode* found = nullptr;
        const QList<const xmlNode*> candidates = children(header, ebxmlNamespace, party.element);
        for (const xmlNode* candidate : candidates) {
            if (content(child(candidate, ebxmlNamespace, "Role")) == QLatin1String(party.role))
                found = candidate;
        }
        if (!found) {
            addFinding(number, envelope, xmlGetLineNo(header),
                tr("SOAP-kehyksestä puuttuu %1").arg(label));
        } else if (party.named) {
            requireText(found, "PartyId", label + QStringLiteral(" eb:PartyId"));
        } else {
            require(found, ebxmlNamespace, "PartyId", label + QStringLiteral(" eb:PartyId"));
        }
    }
    require(header, ebxmlNamespace, "CPAId", QStringLiteral("eb:CPAId"));
    const xmlNode* data
        = require(header, ebxmlNamespace, "MessageData", QStringLiteral("eb:MessageData"));
    requireText(data, "MessageId", QStringLiteral("eb:MessageId"));
    requireText(data, "Timestamp", QStringLiteral("eb:Timestamp"));

    const xmlNode* schemaNode = require(
        require(require(require(top, soapNamespace, "Body", QStringLiteral("SOAP-ENV:Body")),
                    ebxmlNamespace, "Manifest", QStringLiteral("eb:Manifest")),
            ebxmlNamespace, "Reference", QStringLiteral("eb:Reference")),
        ebxmlNamespace, "Schema", QStringLiteral("eb:Schema"));
    if (!schemaNode)
        return;
    if (attributeValue(schemaNode, ebxmlNamespace, "location").isEmpty())
        addFinding(number, envelope, xmlGetLineNo(schemaNode),
            tr("SOAP-kehyksestä puuttuu %1").arg(QStringLiteral("eb:Schema eb:location")));
    const QString version = attributeValue(schemaNode, ebxmlNamespace, "version");
    if (!documentVersion.isNull() && version != documentVersion)
        addFinding(number, envelope, xmlGetLineNo(schemaNode),
            tr("SOAP-kehyksen Finvoice-versio \"%1\" ei vastaa laskun versiota \"%2\"")
                .arg(version, documentVersion));
}

void FinvoiceValidator::addFinding(
    const QString& number, const ParsedPart& part, long line, const QString& text)
{
    const long fileLine = part.firstLine + qMax(line, 1L) - 1;
    const QString shownNumber = number.isEmpty() ? unknownNumber : number;
    m_findings.append(tr("lasku %1, rivi %2: %3").arg(shownNumber).arg(fileLine).arg(text));
    m_details.append({ shownNumber, int(fileLine), text });
}

void FinvoiceValidator::addMessages(
    const QString& number, const ParsedPart& part, const Messages& messages)
{
    for (const auto& message : messages)
        addFinding(number, part, message.first, message.second);
}

void FinvoiceValidator::addFindingsTo(XmlScriptEngine* engine) const
{
    for (const QString& finding : m_findings)
        engine->addWarning(finding, true);
}
