#include "emailprofile.h"

#include <QDir>
#include <QFileInfo>

QList<EmailProfile> EmailProfile::all()
{
    // The system's default program is reached through xdg-email. Subject,
    // body and address go inside the mailto URI: xdg-email refuses an empty
    // subject or body given as options, and an address starting with "-"
    // cannot pass for an option there.
    return {
        { SystemDefault, tr("Järjestelmän oletus"), { QStringLiteral("/usr/bin/xdg-email") },
            QStringLiteral("--utf8 --attach \"{{ attachmentPath }}\" "
                           "\"mailto:{{ customer/emailAddressEncoded }}"
                           "?subject={{ subjectEncoded }}&body={{ bodyEncoded }}\"") },
        { Evolution, QStringLiteral("Evolution"), { QStringLiteral("/usr/bin/evolution") },
            QStringLiteral(
                "mailto:{{ customer/emailAddressEncoded }}?subject={{ subjectEncoded }}&body={{ bodyEncoded }}&attachment={{ attachmentPath }}") },
        // "--" ends the options: an address cannot be read as one.
        { KMail, QStringLiteral("KMail"), { QStringLiteral("/usr/bin/kmail") },
            QStringLiteral(
                "-s \"{{ subject }}\" --attach \"{{ attachmentPath }}\" --msg \"{{ bodyPath }}\" -- \"{{ customer/emailAddress }}\"") },
        { Thunderbird, QStringLiteral("Mozilla Thunderbird"),
            { QStringLiteral("/usr/bin/thunderbird"),
                QStringLiteral("C:/Program Files/Mozilla Thunderbird/thunderbird.exe"),
                QStringLiteral("/Applications/Thunderbird.app/Contents/MacOS/thunderbird-bin") },
            QStringLiteral("-compose \"to='{{ customer/emailAddress }}',subject='{{ subject }}',"
                           "body='{{ body }}',attachment={{ attachmentUrl }}\"") },
        { Outlook, QStringLiteral("Microsoft Outlook"),
            { QStringLiteral("C:/Program Files/Microsoft Office/Office12/Outlook.exe"),
                QStringLiteral("C:/Program Files/Microsoft Office/Office11/Outlook.exe") },
            QStringLiteral(
                "/c ipm.note /m \"{{ customer/emailAddressEncoded }}?subject={{ subjectEncoded }}&body={{ bodyEncoded }}\" /a \"{{ attachmentPath }}\"") },
        { AppleMail, QStringLiteral("Apple Mail"), {},
            QStringLiteral("\"{{ customer/emailAddress }}\" \"{{ subject }}\" \"{{ body }}\" "
                           "\"{{ attachmentPath }}\"") },
    };
}

EmailProfile EmailProfile::find(const QString& name)
{
    const QList<EmailProfile> profiles = all();
    for (const EmailProfile& profile : profiles) {
        if (profile.name.compare(name, Qt::CaseInsensitive) == 0)
            return profile;
    }
    // The two programs are often named without their maker.
    const struct
    {
        const char* alias;
        Kind kind;
    } aliases[] = { { "Thunderbird", Thunderbird }, { "Outlook", Outlook } };
    for (const auto& alias : aliases) {
        if (name.compare(QLatin1String(alias.alias), Qt::CaseInsensitive) != 0)
            continue;
        for (const EmailProfile& profile : profiles) {
            if (profile.kind == alias.kind)
                return profile;
        }
    }
    EmailProfile other;
    other.name = name;
    return other;
}

QString EmailProfile::proposedPath() const
{
    for (const QString& path : defaultPaths) {
        if (QFileInfo::exists(path))
            return QDir::toNativeSeparators(path);
    }
    return defaultPaths.isEmpty() ? QString() : QDir::toNativeSeparators(defaultPaths.first());
}

QString EmailProfile::appleMailScriptPath()
{
    return QDir::cleanPath(
        QCoreApplication::applicationDirPath() + QStringLiteral("/../Resources/mail.scpt"));
}
