#ifndef EMAILHELPER_H
#define EMAILHELPER_H

#include <QObject>
#include <QString>
#include <QStringList>

class Customer;
class EmailProfile;
class Invoice;
class InvoicePrintModel;
class PrintScriptEngine;
class Registry;
class TemplateStringHelper;

// Hands an invoice to the user's own mail program: renders it as a PDF in
// the private temporary directory "veklari" and starts the configured
// program with a new message to the customer, the subject, the body and the
// PDF attached. The program is started directly with an argument list,
// never through a shell, and every value placed inside the quotes of an
// argument template is escaped so that it cannot end them.
//
// Nothing here shows a message: a refusal returns false with the reason in
// lastError(), which the window shows.
class EmailHelper : public QObject
{
    Q_OBJECT
public:
    // engine must hold the invoice print script; its model is restored
    // after the PDF has been rendered.
    EmailHelper(Registry* registry, PrintScriptEngine* engine, QObject* parent = nullptr);

    // Sends the first invoice of model as the model's print type. True when
    // the mail program was started.
    bool startApplication(InvoicePrintModel* model);
    QString lastError() const { return m_lastError; }
    // The title under which the windows show lastError().
    static QString messageTitle();
    // What was started last (for the log and for callers that show it).
    QString program() const { return m_program; }
    QStringList arguments() const { return m_arguments; }

    // Splits the expanded argument template at white space outside double
    // quotes. Quotes are dropped; a backslash makes the next character
    // literal. An empty quoted pair is an empty argument.
    static QStringList splitCommandLine(const QString& text);
    // The private directory of the attachments, created readable by its
    // owner only. Empty with error set when it cannot be used safely.
    static QString attachmentDirectory(QString* error);
    // An attachment's file name with no character that would mean
    // something in a mailto URI or a Thunderbird field, and no directory.
    static QString safeFileName(const QString& name);

private:
    bool fail(const QString& error);
    bool renderPdf(InvoicePrintModel* model, const QString& fileName);
    bool prepareProfile(const EmailProfile& profile, TemplateStringHelper* helper,
        const Invoice* invoice, const Customer* customer, const QString& fileName,
        const QString& body);

    Registry* m_registry;
    PrintScriptEngine* m_engine;
    QString m_lastError;
    QString m_program;
    QStringList m_arguments;
};

#endif // EMAILHELPER_H
