#include "core/registry.h"
#include "domain/customer.h"
#include "domain/invoicetype.h"
#include "domain/settingskeys.h"
#include "export/emailhelper.h"
#include "export/emailprofile.h"
#include "export/emailsettings.h"
#include "invoicefixture.h"
#include "pdftools.h"
#include "print/invoiceprintmodel.h"
#include "print/printscriptengine.h"
#include "print/scripthelper.h"
#include "standinprogram.h"
#include "util/scriptloader.h"

#include <QSettings>
#include <QUrlQuery>
#include <QtTest>

// An invoice handed to each mail program: stand-in programs written by the test record the
// arguments they were started with, for a customer whose data would break a careless command
// line. Also the refusals before anything starts, and the splitting of argument templates.
class TestEmailHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void splitCommandLine_data();
    void splitCommandLine();
    void profiles_data();
    void profiles();
    void databaseOverride();
    void refusals_data();
    void refusals();
    void privateDirectory_data();
    void privateDirectory();
    void throughXdgEmail();

private:
    struct Sent
    {
        bool started = false;
        QString error;
        QStringList arguments;
    };

    // A program that writes its arguments, each ended by a NUL, to `name`.args.
    QString standIn(const QString& name, const QString& path = QString());
    QStringList recordedArguments(const QString& program);
    void configure(const QString& app, const QString& path, const QString& args = QString());
    // engineSource: a script in place of the invoice layout.
    Sent send(int invoiceId, const QByteArray& engineSource = QByteArray());

    InvoiceFixture m_fixture;
    QTemporaryDir m_dir;
    QString m_tempPath;
    int m_hostile = -1;
    int m_spaces = -1;
    int m_noAddress = -1;
};

namespace {

const QString hostileName = QStringLiteral("O'Brien & \"Sons\"; $(touch pwned) `id` \\ Äijä, Oy");
const QString hostileEmail = QStringLiteral("o'brien@esimerkki.fi', attachment='/etc/passwd");
const QString subjectTemplate = QStringLiteral("Lasku {{ number }}: {{ customer/name }}',x");
const QString bodyTemplate = QStringLiteral(
    "Hei,\n\nliitteenä lasku {{ number }}.\n$(rm -rf ~); `id` C:\\temp \"lainaus\" {ab}\n");
// What the templates give for invoice 2001 of the hostile customer.
const QString expectedSubject
    = QStringLiteral("Lasku 2001: O'Brien & \"Sons\"; $(touch pwned) `id` \\ Äijä, Oy',x");
const QString expectedBody
    = QStringLiteral("Hei,\n\nliitteenä lasku 2001.\n$(rm -rf ~); `id` C:\\temp \"lainaus\" \n");
const QChar apostrophe(0x2019);

QString typographic(QString text)
{
    return text.replace(QLatin1Char('\''), apostrophe);
}

// The fields of Thunderbird's -compose argument as Thunderbird reads them: name=value pairs
// split at commas, a value opened by a quote right after "=" running to the same quote followed
// by a comma or the end.
QMap<QString, QString> thunderbirdFields(const QString& text)
{
    QStringList pairs;
    QString current;
    QChar quote;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        const QChar next = i + 1 < text.size() ? text.at(i + 1) : QChar();
        if (!quote.isNull() && c == quote && (next == QLatin1Char(',') || next.isNull()))
            quote = QChar();
        else if (quote.isNull() && (c == QLatin1Char('\'') || c == QLatin1Char('"')) && i > 0
            && text.at(i - 1) == QLatin1Char('='))
            quote = c;
        else if (quote.isNull() && c == QLatin1Char(',')) {
            pairs.append(current);
            current.clear();
            continue;
        }
        current += c;
    }
    pairs.append(current);
    QMap<QString, QString> fields;
    for (const QString& pair : pairs) {
        const int equals = pair.indexOf(QLatin1Char('='));
        QString value = pair.mid(equals + 1);
        if (value.size() >= 2 && value.startsWith(QLatin1Char('\''))
            && value.endsWith(QLatin1Char('\'')))
            value = value.mid(1, value.size() - 2);
        fields.insert(pair.left(equals), value);
    }
    return fields;
}

// The decoded fields of a mailto URI's query, and its address as "to".
QMap<QString, QString> mailtoFields(const QString& uri)
{
    const int question = uri.indexOf(QLatin1Char('?'));
    QMap<QString, QString> fields;
    fields.insert(QStringLiteral("to"), QUrl::fromPercentEncoding(uri.left(question).toUtf8()));
    const QStringList pairs = uri.mid(question + 1).split(QLatin1Char('&'));
    for (const QString& pair : pairs) {
        const int equals = pair.indexOf(QLatin1Char('='));
        fields.insert(pair.left(equals), QUrl::fromPercentEncoding(pair.mid(equals + 1).toUtf8()));
    }
    return fields;
}

} // namespace

void TestEmailHelper::initTestCase()
{
    QVERIFY(m_dir.isValid());
    // The attachment directory and KMail's body file land in the test's own directory.
    m_tempPath = m_dir.filePath(QStringLiteral("tmp"));
    QVERIFY(QDir().mkpath(m_tempPath));
    qputenv("TMPDIR", QFile::encodeName(m_tempPath));
    QCOMPARE(QDir::tempPath(), m_tempPath);

    QVERIFY2(m_fixture.open(), qPrintable(m_fixture.lastError()));
    m_fixture.registry()->loadSettings(m_dir.filePath(QStringLiteral("veklari.ini")));
    Customer customer;
    customer.name = hostileName;
    customer.streetName = QStringLiteral("Katu 1\nB 2");
    customer.emailAddress = hostileEmail;
    const int hostileIndex = m_fixture.addCustomer(customer);
    QVERIFY(hostileIndex >= 0);
    m_hostile = m_fixture.addInvoice(
        InvoiceType::Invoice, InvoiceFixture::sampleItems(), 2001, hostileIndex);
    QVERIFY(m_hostile > 0);
    customer.name = QStringLiteral("Tavallinen Oy");
    customer.emailAddress = QStringLiteral("   ");
    m_spaces = m_fixture.addInvoice(
        InvoiceType::Invoice, InvoiceFixture::sampleItems(), 2002, m_fixture.addCustomer(customer));
    customer.emailAddress.clear();
    m_noAddress = m_fixture.addInvoice(
        InvoiceType::Invoice, InvoiceFixture::sampleItems(), 2003, m_fixture.addCustomer(customer));
    QVERIFY(m_spaces > 0 && m_noAddress > 0);
    QVERIFY(m_fixture.setSetting(SettingsKeys::emailSubject, subjectTemplate));
    QVERIFY(m_fixture.setSetting(SettingsKeys::emailBody, bodyTemplate));
    QVERIFY(m_fixture.refresh());
}

void TestEmailHelper::init()
{
    m_fixture.registry()->appSettings()->clear();
    m_fixture.registry()->setDatabaseNumber(1);
}

QString TestEmailHelper::standIn(const QString& name, const QString& path)
{
    const QString program = path.isEmpty() ? m_dir.filePath(name) : path;
    const QString record = m_dir.filePath(name + QStringLiteral(".args"));
    return StandInProgram::write(program, record) ? program : QString();
}

QStringList TestEmailHelper::recordedArguments(const QString& name)
{
    return StandInProgram::recorded(m_dir.filePath(name + QStringLiteral(".args")));
}

void TestEmailHelper::configure(const QString& app, const QString& path, const QString& args)
{
    EmailSettings(m_fixture.registry()->appSettings()).setGeneral({ app, path, args });
}

TestEmailHelper::Sent TestEmailHelper::send(int invoiceId, const QByteArray& engineSource)
{
    Sent sent;
    InvoicePrintModel model(m_fixture.registry());
    model.criteria().id = invoiceId;
    PrintScriptEngine engine;
    ScriptLoader loader(m_fixture.registry());
    engine.setScriptLoader(&loader);
    const bool loaded = engineSource.isEmpty()
        ? ScriptHelper(m_fixture.registry()).loadInvoiceScript(&engine)
        : engine.evaluate(engineSource);
    if (!model.run() || !loaded) {
        sent.error = model.lastError() + engine.lastError();
        return sent;
    }
    EmailHelper helper(m_fixture.registry(), &engine);
    sent.started = helper.startApplication(&model);
    sent.error = helper.lastError();
    sent.arguments = helper.arguments();
    return sent;
}

void TestEmailHelper::splitCommandLine_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("arguments");

    QTest::newRow("words") << "a bb  ccc" << QStringList { "a", "bb", "ccc" };
    QTest::newRow("Unicode spaces") << QString::fromUtf8("a\u0085b\u00a0c\u2003d\u3000e")
                                    << QStringList { "a", "b", "c", "d", "e" };
    QTest::newRow("only spaces") << " \t\n" << QStringList();
    QTest::newRow("quoted run") << "-s \"two  words\"" << QStringList { "-s", "two  words" };
    QTest::newRow("quotes join a word") << "ab\"c d\"e" << QStringList { "abc de" };
    QTest::newRow("escaped quote") << "\"say \\\"hi\\\"\"" << QStringList { "say \"hi\"" };
    QTest::newRow("escaped space outside quotes") << "a\\ b c" << QStringList { "a b", "c" };
    QTest::newRow("empty quoted pair") << "-s \"\" x" << QStringList { "-s", "", "x" };
    QTest::newRow("unclosed quote") << "\"a b" << QStringList { "a b" };
    QTest::newRow("backslash at the end") << "a\\" << QStringList { "a" };
}

void TestEmailHelper::splitCommandLine()
{
    QFETCH(QString, text);
    QFETCH(QStringList, arguments);
    QCOMPARE(EmailHelper::splitCommandLine(text), arguments);
}

void TestEmailHelper::profiles_data()
{
    QTest::addColumn<QString>("app");
    QTest::addColumn<QString>("appArgs");

    QTest::newRow("system default") << "Järjestelmän oletus"
                                    << "";
    QTest::newRow("Evolution") << "Evolution"
                               << "";
    QTest::newRow("KMail") << "KMail"
                           << "";
    QTest::newRow("Thunderbird") << "Mozilla Thunderbird"
                                 << "";
    QTest::newRow("thunderbird in lower case") << "thunderbird"
                                               << "";
    QTest::newRow("Thunderbird, own arguments")
        << "Mozilla Thunderbird"
        << "--to \"{{ customer/emailAddress }}\" {{ attachmentUrl }}";
    QTest::newRow("Outlook") << "Microsoft Outlook"
                             << "";
    QTest::newRow("Apple Mail") << "Apple Mail"
                                << "";
    QTest::newRow("own program")
        << "Postimies"
        << "--to \"{{ customer/emailAddress }}\" --name \"{{ customer/name }}\" "
           "--street \"{{ customer/streetName }}\" -s \"{{ subject }}\" \"{{ attachmentPath }}\"";
}

void TestEmailHelper::profiles()
{
    QFETCH(QString, app);
    QFETCH(QString, appArgs);
    const EmailProfile profile = EmailProfile::find(app);
    const bool apple = profile.kind == EmailProfile::AppleMail;
    const QString script = apple ? EmailProfile::appleMailScriptPath() : QString();
    if (apple)
        QVERIFY(QDir().mkpath(QFileInfo(script).absolutePath()));
    const QString program = standIn(QStringLiteral("mailer"), script);
    QVERIFY(!program.isEmpty());
    configure(app, apple ? QString() : program, appArgs);

    const Sent sent = send(m_hostile);
    // The shell reads the script after the start.
    const QStringList arguments = recordedArguments(QStringLiteral("mailer"));
    if (apple)
        QFile::remove(script);
    QVERIFY2(sent.started, qPrintable(sent.error));
    QCOMPARE(arguments, sent.arguments);

    const QString pdf = QDir(m_tempPath).filePath(QStringLiteral("veklari/lasku-2001.pdf"));
    QVERIFY(PdfTools::text(pdf).contains(QStringLiteral("2001")));

    if (!appArgs.isEmpty() && profile.kind == EmailProfile::Thunderbird) {
        QCOMPARE(arguments, QStringList({ "--to", typographic(hostileEmail), "file://" + pdf }));
        return;
    }
    if (!appArgs.isEmpty()) {
        QCOMPARE(arguments,
            QStringList({ "--to", hostileEmail, "--name", hostileName, "--street", "Katu 1\nB 2",
                "-s", expectedSubject, pdf }));
        return;
    }
    QMap<QString, QString> fields;
    switch (profile.kind) {
    case EmailProfile::SystemDefault:
        QCOMPARE(arguments.size(), 4);
        QCOMPARE(arguments.mid(0, 3), QStringList({ "--utf8", "--attach", pdf }));
        QVERIFY(arguments.at(3).startsWith(QLatin1String("mailto:")));
        fields = mailtoFields(arguments.at(3).mid(7));
        QCOMPARE(fields.keys(), QStringList({ "body", "subject", "to" }));
        break;
    case EmailProfile::Evolution:
        QCOMPARE(arguments.size(), 1);
        QVERIFY(arguments.at(0).startsWith(QLatin1String("mailto:")));
        fields = mailtoFields(arguments.at(0).mid(7));
        QCOMPARE(fields.keys(), QStringList({ "attachment", "body", "subject", "to" }));
        QCOMPARE(fields.value("attachment"), pdf);
        break;
    case EmailProfile::Outlook:
        QCOMPARE(arguments.size(), 6);
        QCOMPARE(arguments.mid(0, 3), QStringList({ "/c", "ipm.note", "/m" }));
        QCOMPARE(arguments.mid(4), QStringList({ "/a", pdf }));
        fields = mailtoFields(arguments.at(3));
        QCOMPARE(fields.keys(), QStringList({ "body", "subject", "to" }));
        break;
    case EmailProfile::KMail: {
        QCOMPARE(arguments.size(), 8);
        QCOMPARE(
            arguments.mid(0, 5), QStringList({ "-s", expectedSubject, "--attach", pdf, "--msg" }));
        QCOMPARE(arguments.mid(6), QStringList({ "--", hostileEmail }));
        QFile bodyFile(arguments.at(5));
        QVERIFY(bodyFile.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(bodyFile.readAll()), expectedBody);
        QVERIFY(QFileInfo(bodyFile).fileName().startsWith(QLatin1String("veklari.")));
        return;
    }
    case EmailProfile::Thunderbird:
        QCOMPARE(arguments.size(), 2);
        QCOMPARE(arguments.at(0), QStringLiteral("-compose"));
        fields = thunderbirdFields(arguments.at(1));
        QCOMPARE(fields.keys(), QStringList({ "attachment", "body", "subject", "to" }));
        QCOMPARE(fields.value("attachment"), "file://" + pdf);
        QCOMPARE(fields.value("to"), typographic(hostileEmail));
        QCOMPARE(fields.value("subject"), typographic(expectedSubject));
        QCOMPARE(fields.value("body"), typographic(expectedBody));
        return;
    case EmailProfile::AppleMail:
        QCOMPARE(arguments, QStringList({ hostileEmail, expectedSubject, expectedBody, pdf }));
        return;
    case EmailProfile::Other:
        QFAIL("no built-in arguments");
    }
    QCOMPARE(fields.value("to"), hostileEmail);
    QCOMPARE(fields.value("subject"), expectedSubject);
    QCOMPARE(fields.value("body"), expectedBody);
}

void TestEmailHelper::databaseOverride()
{
    const QString general = standIn(QStringLiteral("general"));
    const QString own = standIn(QStringLiteral("own"));
    configure(QStringLiteral("Yleinen"), general, QStringLiteral("yleinen"));
    EmailSettings(m_fixture.registry()->appSettings())
        .setDatabaseEntries({ { 2, { QStringLiteral("Toinen"), general, QStringLiteral("2") } },
            { 1, { QStringLiteral("Oma"), own, QStringLiteral("oma {{ number }}") } },
            { 1, { QStringLiteral("Toinen"), general, QStringLiteral("1b") } } });
    QVERIFY(send(m_hostile).started);
    QCOMPARE(recordedArguments(QStringLiteral("own")), QStringList({ "oma", "2001" }));

    // Number 0 means no database of the list: the general choice.
    m_fixture.registry()->setDatabaseNumber(0);
    EmailSettings(m_fixture.registry()->appSettings())
        .setDatabaseEntries({ { 0, { QStringLiteral("Oma"), own, QStringLiteral("0") } } });
    QVERIFY(send(m_hostile).started);
    QCOMPARE(recordedArguments(QStringLiteral("general")), QStringList({ "yleinen" }));
}

void TestEmailHelper::refusals_data()
{
    QTest::addColumn<int>("customer");
    QTest::addColumn<QString>("app");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("layout");
    QTest::addColumn<QString>("message");

    enum
    {
        hostile,
        spaces,
        noAddress
    };
    const QString missing = m_dir.filePath(QStringLiteral("puuttuu/ohjelma"));
    const QString notExecutable = m_dir.filePath(QStringLiteral("veklari.ini"));
    const QString settingsHint = QStringLiteral("Määritä sähköpostiasetukset valitsemalla "
                                                "pääikkunassa Asetukset | Sähköpostiasetukset.");
    QTest::newRow("no address") << int(noAddress) << "KMail"
                                << "/bin/true" << QByteArray()
                                << "Asiakkaan sähköpostiosoitetta ei ole määritetty.";
    // Spaces are an address as far as this goes: the next check speaks.
    QTest::newRow("spaces for an address") << int(spaces) << ""
                                           << "/bin/true" << QByteArray() << settingsHint;
    QTest::newRow("no settings") << int(hostile) << ""
                                 << "/bin/true" << QByteArray() << settingsHint;
    QTest::newRow("no path") << int(hostile) << "KMail"
                             << "" << QByteArray()
                             << "Sähköpostiohjelmaa ei voida käynnistää, koska ohjelmatiedoston "
                                "polkua ei ole määritetty.";
    QTest::newRow("no program") << int(hostile) << "KMail" << missing << QByteArray()
                                << QStringLiteral("Ohjelmatiedostoa %1 ei löytynyt.").arg(missing);
    QTest::newRow("failing layout")
        << int(hostile) << "Evolution"
        << "/bin/true" << QByteArray("function print() { throw new Error('rikki'); }")
        << "Laskun tallentaminen epäonnistui.";
    QTest::newRow("not executable") << int(hostile) << "Evolution" << notExecutable << QByteArray()
                                    << "Sähköpostiohjelman käynnistäminen epäonnistui. Tarkista "
                                       "sähköpostiasetukset.";
}

void TestEmailHelper::refusals()
{
    QFETCH(int, customer);
    QFETCH(QString, app);
    QFETCH(QString, path);
    QFETCH(QByteArray, layout);
    QFETCH(QString, message);
    configure(app, path);
    m_fixture.registry()->appSettings()->sync();
    const QString pdf = QDir(m_tempPath).filePath(QStringLiteral("veklari/lasku-2001.pdf"));
    QFile::remove(pdf);

    const Sent sent = send(QList<int> { m_hostile, m_spaces, m_noAddress }.at(customer), layout);
    QVERIFY(!sent.started);
    QCOMPARE(sent.error, message);
    // Only a start that failed leaves its PDF.
    QCOMPARE(QFile::exists(pdf), QTest::currentDataTag() == QLatin1String("not executable"));
}

void TestEmailHelper::privateDirectory_data()
{
    QTest::addColumn<QString>("setUp");
    QTest::addColumn<bool>("usable");

    QTest::newRow("missing") << "" << true;
    QTest::newRow("left open") << "chmod 755" << true;
    QTest::newRow("a link") << "ln -s" << false;
    QTest::newRow("another user's") << "chown nobody" << false;
    QTest::newRow("a file") << "touch" << false;
}

void TestEmailHelper::privateDirectory()
{
    QFETCH(QString, setUp);
    QFETCH(bool, usable);
    const QString path = QDir(m_tempPath).filePath(QStringLiteral("veklari"));
    const QString elsewhere = m_dir.filePath(QStringLiteral("elsewhere"));
    // A link goes first, so that the removal does not follow it.
    QFile::remove(path);
    QDir(path).removeRecursively();
    QVERIFY(!QFileInfo(path).exists() && !QFileInfo(path).isSymLink());
    QVERIFY(QDir().mkpath(elsewhere));
    if (setUp == QLatin1String("chmod 755")) {
        QVERIFY(QDir().mkdir(path));
        QVERIFY(QFile::setPermissions(path, QFile::Permissions(0x7755)));
    } else if (setUp == QLatin1String("ln -s")) {
        QVERIFY(QFile::link(elsewhere, path));
    } else if (setUp == QLatin1String("chown nobody")) {
        QVERIFY(QDir().mkdir(path));
        if (QProcess::execute(QStringLiteral("chown"), { QStringLiteral("nobody"), path }) != 0)
            QSKIP("Only root can give a directory to another user.");
    } else if (setUp == QLatin1String("touch")) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    configure(QStringLiteral("Evolution"), standIn(QStringLiteral("mailer")));
    const Sent sent = send(m_hostile);
    QCOMPARE(sent.started, usable);
    if (usable) {
        recordedArguments(QStringLiteral("mailer"));
        QCOMPARE(QFileInfo(path).permissions() & QFile::Permissions(0x0077), QFile::Permissions());
        QVERIFY(QFile::exists(QDir(path).filePath(QStringLiteral("lasku-2001.pdf"))));
    } else {
        QVERIFY2(sent.error.contains(QDir::toNativeSeparators(path)), qPrintable(sent.error));
        QVERIFY(QDir(elsewhere).isEmpty());
    }
    QFile::remove(path);
}

// The system's default program through the real xdg-email, which hands the message to $MAILER
// as one mailto URI. A second send replaces the PDF of the first.
void TestEmailHelper::throughXdgEmail()
{
    const QString xdgEmail
        = EmailProfile::find(QStringLiteral("Järjestelmän oletus")).proposedPath();
    if (!QFileInfo(xdgEmail).isExecutable())
        QSKIP("xdg-email (xdg-utils) is not installed.");
    QString error;
    const QString pdf
        = QDir(EmailHelper::attachmentDirectory(&error)).filePath(QStringLiteral("lasku-2001.pdf"));
    QFile file(pdf);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(error));
    file.write("ei PDF");
    file.close();
    qputenv("MAILER", QFile::encodeName(standIn(QStringLiteral("mailer"))));
    configure(QStringLiteral("Järjestelmän oletus"), xdgEmail);
    const Sent sent = send(m_hostile);
    const QStringList arguments = recordedArguments(QStringLiteral("mailer"));
    qunsetenv("MAILER");
    QVERIFY2(sent.started, qPrintable(sent.error));

    QCOMPARE(arguments.size(), 1);
    QVERIFY(arguments.at(0).startsWith(QLatin1String("mailto:")));
    const QMap<QString, QString> fields = mailtoFields(arguments.at(0).mid(7));
    QCOMPARE(fields.keys(), QStringList({ "attach", "body", "subject", "to" }));
    QCOMPARE(fields.value("to"), hostileEmail);
    QCOMPARE(fields.value("subject"), expectedSubject);
    QCOMPARE(fields.value("body"), expectedBody);
    QCOMPARE(fields.value("attach"), pdf);
    QVERIFY(PdfTools::text(pdf).contains(QStringLiteral("2001")));
    QCOMPARE(QDir(QFileInfo(pdf).absolutePath()).entryList(QDir::Files),
        QStringList { QStringLiteral("lasku-2001.pdf") });
}

QTEST_MAIN(TestEmailHelper)
#include "tst_emailhelper.moc"
