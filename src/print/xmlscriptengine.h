#ifndef XMLSCRIPTENGINE_H
#define XMLSCRIPTENGINE_H

#include "printscriptenginebase.h"

#include <QStringList>

class QXmlStreamWriter;

// Runs a Finvoice script's write(), which emits the document through the
// element functions below, and writes the result to a file in ISO-8859-15,
// optionally behind a SOAP envelope with an ebXML message header. Amounts
// come out as Finvoice wants them: "1234,50", "-12,00", no digit grouping.
class XmlScriptEngine : public PrintScriptEngineBase
{
    Q_OBJECT
public:
    explicit XmlScriptEngine(QObject* parent = nullptr);

    // Writes (or appends, for several invoices in one file) the envelope and
    // the script's document. Nothing reaches the file unless both are
    // complete; false with lastError() otherwise.
    bool write(const QString& fileName, bool append);
    // False with lastError() when the evaluated script has no write().
    bool checkWriteFunction();

    bool isSoapEnvEnabled() const { return m_soapEnvEnabled; }
    void setSoapEnvEnabled(bool enabled) { m_soapEnvEnabled = enabled; }
    // The schema the document is meant for (":/xsd/Finvoice3.0.xsd"), kept
    // for whoever validates the file.
    QString xmlSchemaPath() const { return m_xmlSchemaPath; }
    void setXmlSchemaPath(const QString& path) { m_xmlSchemaPath = path; }

    // What the user should know about the files written: replaced characters
    // and, added by the caller, schema findings. error marks a finding that
    // makes the file unusable.
    QStringList warnings() const { return m_warnings; }
    bool hasErrors() const { return m_hasErrors; }
    void addWarning(const QString& warning, bool error = false);
    // Destroys the heap and forgets the warnings.
    void clear();

    // The text with every character that ISO-8859-15 lacks replaced: quotes
    // and dashes by their ASCII forms, other characters by their
    // decomposition without combining marks when that is all ISO-8859-15
    // ("ő" to "o", "ﬁ" to "fi"), anything else by "?". Each replaced
    // character and its replacement are appended to replaced.
    static QString replaceUnencodable(
        const QString& text, QList<QPair<QString, QString>>* replaced = nullptr);

public slots:
    void initialize() override;

    int envDoctype();
    int envStartElement();
    int envEndElement();
    int envTextElement();
    int envAttribute();
    int envCharacters();
    int envComment();
    int envProcessingInstruction();

private:
    void useFinvoiceNumberFormats();
    QString modelText(const QString& path) const;
    QString soapEnvelope() const;
    bool writeDocument(QString* document);

    QXmlStreamWriter* m_writer = nullptr;
    QStringList m_elements;
    bool m_soapEnvEnabled = true;
    QString m_xmlSchemaPath;
    QStringList m_warnings;
    bool m_hasErrors = false;
};

#endif // XMLSCRIPTENGINE_H
