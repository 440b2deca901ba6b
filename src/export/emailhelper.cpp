#include "emailhelper.h"

#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoice.h"
#include "domain/logging.h"
#include "domain/settings.h"
#include "domain/settingskeys.h"
#include "emailprofile.h"
#include "emailsettings.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "util/templatestringhelper.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPdfWriter>
#include <QProcess>
#include <QTemporaryFile>
#include <QUrl>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace {

const QString attachmentDirectoryName = QStringLiteral("veklari");
const QString defaultAttachmentName = QStringLiteral("$h-$i.pdf");
const QString bodyFileTemplate = QStringLiteral("veklari.XXXXXX.txt");
const QString fileUrlPrefix = QStringLiteral("file://");
// Characters that end or start something in a mailto URI ("&", "?", "#",
// "%"), in a Thunderbird field ("'", ","), on a command line ("\"", ";")
// or in a path ("/", "\\").
const QString unsafeFileNameCharacters = QStringLiteral("&?#%',\";/\\");

// The variables Thunderbird's templates put between single quotes.
// Thunderbird knows no escape inside such a field and ends it at a quote
// followed by a comma, so a value's apostrophes become typographic ones
// (which Finnish text uses anyway).
const QStringList thunderbirdQuotedFields
    = { QStringLiteral("customer/emailAddress"), QStringLiteral("customer/name"),
          QStringLiteral("customer/contact"), QStringLiteral("subject"), QStringLiteral("body") };
constexpr QChar typographicApostrophe(0x2019);

QString shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

bool isOwnDirectory(const QFileInfo& info)
{
#ifdef Q_OS_UNIX
    return info.ownerId() == ::geteuid();
#else
    Q_UNUSED(info)
    return true;
#endif
}

} // namespace

EmailHelper::EmailHelper(Registry* registry, PrintScriptEngine* engine, QObject* parent)
    : QObject(parent), m_registry(registry), m_engine(engine)
{
}

QString EmailHelper::messageTitle()
{
    return tr("Lähetä sähköpostitse");
}

bool EmailHelper::fail(const QString& error)
{
    m_lastError = error;
    return false;
}

QStringList EmailHelper::splitCommandLine(const QString& text)
{
    QStringList arguments;
    QString current;
    // A quoted pair makes an argument even when nothing is between.
    bool started = false;
    bool quoted = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('\\')) {
            // A backslash at the very end has nothing to protect and is dropped.
            if (i + 1 < text.size())
                current += text.at(++i);
            started = true;
        } else if (c == QLatin1Char('"')) {
            quoted = !quoted;
            started = true;
        } else if (!quoted && c.isSpace()) {
            if (started)
                arguments.append(current);
            current.clear();
            started = false;
        } else {
            current += c;
            started = true;
        }
    }
    if (started)
        arguments.append(current);
    return arguments;
}

QString EmailHelper::attachmentDirectory(QString* error)
{
    const QDir temp(QDir::tempPath());
    const QString path = temp.filePath(attachmentDirectoryName);
    constexpr QFile::Permissions ownerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    // Made readable by its owner only: on a shared machine the other users
    // must not read the invoices, nor put files or links in their place.
    if (!QFileInfo(path).exists() && !QFileInfo(path).isSymLink())
        temp.mkdir(attachmentDirectoryName, ownerOnly);
    const QFileInfo info(path);
    if (info.isSymLink() || (info.exists() && (!info.isDir() || !isOwnDirectory(info)))) {
        *error = tr("Väliaikaishakemisto %1 kuuluu toiselle käyttäjälle tai ei ole hakemisto, "
                    "joten laskua ei tallenneta siihen. Poista se tai valitse toinen "
                    "väliaikaishakemisto (TMPDIR).")
                     .arg(shown(path));
        return QString();
    }
    if (!info.isDir()) {
        *error = tr("Väliaikaishakemiston %1 luonti epäonnistui.").arg(shown(path));
        return QString();
    }
    // One made by hand or by another program may be open to others.
    if ((info.permissions() & ~(ownerOnly | QFile::ReadUser | QFile::WriteUser | QFile::ExeUser))
        && !QFile::setPermissions(path, ownerOnly)) {
        *error = tr("Väliaikaishakemiston %1 oikeuksia ei voitu rajata.").arg(shown(path));
        return QString();
    }
    return path;
}

QString EmailHelper::safeFileName(const QString& name)
{
    QString safe;
    for (const QChar c : name) {
        if (c.category() != QChar::Other_Control && !unsafeFileNameCharacters.contains(c))
            safe += c;
    }
    const QString trimmed = safe.trimmed();
    if (trimmed.isEmpty() || trimmed == QLatin1String(".") || trimmed == QLatin1String(".."))
        return QString();
    return safe;
}

bool EmailHelper::renderPdf(InvoicePrintModel* model, const QString& fileName)
{
    if (!m_engine)
        return fail(tr("Laskun tallentaminen epäonnistui."));
    // Only the first invoice: the others belong to other customers.
    InvoicePrintModel single(m_registry);
    single.copyInvoice(model, 0);
    single.setPrintType(model->printType());
    single.setTitle(model->title());

    // The engine may be a preview's, showing its own model.
    PrintModel* shownModel = m_engine->model();
    m_engine->setModel(&single);
    bool printed = false;
    {
        // The document is finished when the writer goes.
        QPdfWriter writer(fileName);
        writer.setTitle(single.title());
        writer.setCreator(QStringLiteral("%1 %2").arg(
            QCoreApplication::applicationName(), QCoreApplication::applicationVersion()));
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        printed = m_engine->print(&writer);
    }
    m_engine->setModel(shownModel);
    if (!printed || !QFileInfo(fileName).isFile()) {
        // Half a document is not sent.
        QFile::remove(fileName);
        return fail(tr("Laskun tallentaminen epäonnistui."));
    }
    return true;
}

bool EmailHelper::prepareProfile(const EmailProfile& profile, TemplateStringHelper* helper,
    const Invoice* invoice, const Customer* customer, const QString& fileName, const QString& body)
{
    switch (profile.kind) {
    case EmailProfile::KMail: {
        // KMail reads the body from a file, left for it after the start.
        QTemporaryFile file(QDir(QDir::tempPath()).filePath(bodyFileTemplate));
        file.setAutoRemove(false);
        if (!file.open() || file.write(body.toUtf8()) < 0) {
            file.remove();
            return fail(tr("Laskun tallentaminen epäonnistui."));
        }
        file.close();
        helper->appendVariable(
            QStringLiteral("bodyPath"), shown(QFileInfo(file.fileName()).absoluteFilePath()));
        break;
    }
    case EmailProfile::Thunderbird:
        helper->appendVariable(QStringLiteral("attachmentUrl"),
            fileUrlPrefix + QFileInfo(fileName).absoluteFilePath());
        for (const QString& name : thunderbirdQuotedFields) {
            QString value = helper->valueForVariable(name, invoice, customer);
            helper->appendVariable(name, value.replace(QLatin1Char('\''), typographicApostrophe));
        }
        break;
    default:
        break;
    }
    return true;
}

bool EmailHelper::startApplication(InvoicePrintModel* model)
{
    m_lastError.clear();
    m_program.clear();
    m_arguments.clear();
    const Invoice* invoice = model && m_registry ? model->invoice(0) : nullptr;
    bool found = false;
    const Customer* customer
        = invoice ? m_registry->customerById(invoice->customerId, found) : nullptr;
    if (!found || !customer || customer->emailAddress.isEmpty())
        return fail(tr("Asiakkaan sähköpostiosoitetta ei ole määritetty."));

    const EmailSettings::Program program
        = EmailSettings(m_registry->appSettings()).forDatabase(m_registry->databaseNumber());
    if (program.app.isEmpty())
        return fail(tr("Määritä sähköpostiasetukset valitsemalla pääikkunassa Asetukset | "
                       "Sähköpostiasetukset."));
    const EmailProfile profile = EmailProfile::find(program.app);
    // Apple Mail is reached through the script beside the application, so
    // the path of the settings is not asked for.
    const QString path = profile.kind == EmailProfile::AppleMail
        ? EmailProfile::appleMailScriptPath()
        : program.appPath;
    if (path.isEmpty())
        return fail(tr(
            "Sähköpostiohjelmaa ei voida käynnistää, koska ohjelmatiedoston polkua ei ole määritetty."));
    if (!QFileInfo(path).isFile())
        return fail(tr("Ohjelmatiedostoa %1 ei löytynyt.").arg(shown(path)));

    const Settings* settings = m_registry->settings();
    auto setting = [settings](const QString& key) {
        return settings ? settings->property(key).toString() : QString();
    };
    const QString subjectTemplate = setting(SettingsKeys::emailSubject);
    const QString bodyTemplate = setting(SettingsKeys::emailBody);
    QString attachmentName = setting(SettingsKeys::attachmentName);
    if (attachmentName.isEmpty())
        attachmentName = defaultAttachmentName;

    QString error;
    const QString directory = attachmentDirectory(&error);
    if (directory.isEmpty())
        return fail(error);
    TemplateStringHelper helper(settings, m_registry->bankAccounts());
    QString name = safeFileName(
        helper.substituteShortVariables(attachmentName, invoice, customer, model->printType()));
    if (name.isEmpty())
        name = helper.substituteShortVariables(
            defaultAttachmentName, invoice, customer, model->printType());
    const QString fileName = QDir(directory).filePath(name);
    if (!renderPdf(model, fileName))
        return false;

    const QString subject = helper.substituteVariables(subjectTemplate, invoice, customer);
    const QString body = helper.substituteVariables(bodyTemplate, invoice, customer);
    helper.appendVariable(QStringLiteral("subject"), subject);
    helper.appendVariable(
        QStringLiteral("subjectEncoded"), QString::fromLatin1(QUrl::toPercentEncoding(subject)));
    helper.appendVariable(QStringLiteral("body"), body);
    helper.appendVariable(
        QStringLiteral("bodyEncoded"), QString::fromLatin1(QUrl::toPercentEncoding(body)));
    helper.appendVariable(QStringLiteral("attachmentPath"), shown(fileName));
    if (!prepareProfile(profile, &helper, invoice, customer, fileName, body))
        return false;

    const QString argumentTemplate
        = program.appArgs.isEmpty() ? profile.arguments : program.appArgs;
    helper.setEscapeEnabled(true);
    m_program = path;
    m_arguments = splitCommandLine(helper.substituteVariables(argumentTemplate, invoice, customer));
    qCDebug(logUi).noquote() << QStringLiteral("Käynnistetään sähköpostiohjelma:")
                             << (QStringList(m_program) + m_arguments).join(QLatin1Char(' '));
    // Straight to the program: no shell reads the customer's data.
    if (!QProcess::startDetached(m_program, m_arguments))
        return fail(
            tr("Sähköpostiohjelman käynnistäminen epäonnistui. Tarkista sähköpostiasetukset."));
    return true;
}
