#ifndef EMAILPROFILE_H
#define EMAILPROFILE_H

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

// A mail program the program knows how to start: its name as the settings
// keep it, where it is usually installed, the argument template used when
// the user gives none, and what has to be prepared before it starts.
class EmailProfile
{
    Q_DECLARE_TR_FUNCTIONS(EmailProfile)
public:
    enum Kind
    {
        // A program of the user's own choosing: nothing but its arguments.
        Other,
        SystemDefault,
        Evolution,
        KMail,
        Thunderbird,
        Outlook,
        AppleMail
    };

    Kind kind = Other;
    QString name;
    // The usual places of the program, the likeliest first.
    QStringList defaultPaths;
    QString arguments;

    // The known programs in the order the settings offer them.
    static QList<EmailProfile> all();
    // The profile of a program name, compared without regard to case; an
    // unknown name gives an Other profile of that name with no template.
    static EmailProfile find(const QString& name);
    // The first of the usual places that exists, else the first of them.
    QString proposedPath() const;
    // Apple Mail is driven by an AppleScript beside the application.
    static QString appleMailScriptPath();
};

#endif // EMAILPROFILE_H
