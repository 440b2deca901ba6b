#ifndef FINVOICEVALIDATOR_H
#define FINVOICEVALIDATOR_H

#include <QByteArray>
#include <QCoreApplication>
#include <QMap>
#include <QString>
#include <QStringList>

class XmlScriptEngine;
struct _xmlDoc;
struct _xmlSchema;

// Checks Finvoice files against the official schema of their version (the
// resources ":/xsd/Finvoice1.3.xsd", ":/xsd/Finvoice2.01.xsd",
// ":/xsd/Finvoice3.0.xsd", chosen by the document's Version attribute) and
// the SOAP envelope in front of each document for the parts of its message
// header. A file may hold several invoices one after another, each with or
// without its envelope; each document is checked on its own. Every finding
// names the invoice and the line of the file: "lasku 1001, rivi 23: ...".
class FinvoiceValidator
{
    Q_DECLARE_TR_FUNCTIONS(FinvoiceValidator)

public:
    // One finding as its parts: the invoice number as the file shows it ("?"
    // when unknown) and the line of the file.
    struct Finding
    {
        QString invoiceNumber;
        int line = 0;
        QString message;
    };

    FinvoiceValidator();
    ~FinvoiceValidator();
    FinvoiceValidator(const FinvoiceValidator&) = delete;
    FinvoiceValidator& operator=(const FinvoiceValidator&) = delete;

    // True when every document is valid. False with findings() for invalid
    // documents, or with lastError() when the file or a schema cannot be read.
    bool validateFile(const QString& fileName);
    bool validate(const QByteArray& data);

    QStringList findings() const { return m_findings; }
    QList<Finding> findingDetails() const { return m_details; }
    // The number of Finvoice documents met by the last validation.
    int documentCount() const { return m_documentCount; }
    QString lastError() const { return m_lastError; }
    // Hands the findings to the engine that wrote the file, as errors.
    void addFindingsTo(XmlScriptEngine* engine) const;

    static QString schemaPath(const QString& version);

private:
    // One XML document of the file and the line of the file it starts on.
    struct Part
    {
        QByteArray data;
        int firstLine = 1;
    };
    // A part read by libxml2, with what it reported on the way (lines of
    // the part and texts).
    struct ParsedPart
    {
        _xmlDoc* document = nullptr;
        int firstLine = 1;
        // The invoice number as the raw text shows it, for parts that do not parse.
        QString number;
        QList<QPair<int, QString>> messages;
    };

    static QList<Part> split(const QByteArray& data);
    static ParsedPart parse(const Part& part);
    _xmlSchema* schema(const QString& version);
    void checkEnvelope(
        const ParsedPart& envelope, const QString& number, const QString& documentVersion);
    // False only when the schema cannot be loaded at all.
    bool checkDocument(const ParsedPart& document, const QString& number);
    // line counts from 1 at the part's first line.
    void addFinding(const QString& number, const ParsedPart& part, long line, const QString& text);
    void addMessages(
        const QString& number, const ParsedPart& part, const QList<QPair<int, QString>>& messages);

    QMap<QString, _xmlSchema*> m_schemas;
    QStringList m_findings;
    QList<Finding> m_details;
    int m_documentCount = 0;
    QString m_lastError;
};

#endif // FINVOICEVALIDATOR_H
