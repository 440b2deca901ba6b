#include "clicommandline.h"

#include <QMap>
#include <QRegularExpression>
#include <QSet>

namespace {

const QString helpOption = QStringLiteral("--help");
const QString shortHelpOption = QStringLiteral("-h");
const QString versionOption = QStringLiteral("--version");
const QString configOption = QStringLiteral("-c");
const QString databaseOption = QStringLiteral("-d");

const QString schemaOption = QStringLiteral("--schema");
const QString noSoapOption = QStringLiteral("--no-soap");
const QString dirOption = QStringLiteral("--dir");
const QString templateOption = QStringLiteral("--template");
const QString singleOption = QStringLiteral("--single");
const QString csvOption = QStringLiteral("--csv");
const QString pdfOption = QStringLiteral("--pdf");
const QString landscapeOption = QStringLiteral("--landscape");
const QString dryRunOption = QStringLiteral("--dry-run");
const QString entryDateOption = QStringLiteral("--entry-date");
const QString paymentDateOption = QStringLiteral("--payment-date");
const QString accountOption = QStringLiteral("--account");
const QString forceOption = QStringLiteral("--force");

const QStringList schemaVersions
    = { QStringLiteral("3.0"), QStringLiteral("2.01"), QStringLiteral("1.3") };

struct CommandWord
{
    const char* word;
    const char* kind;
    CliCommandLine::Command command;
};

const CommandWord commandWords[] = {
    { "export", "finvoice", CliCommandLine::ExportFinvoice },
    { "export", "pdf", CliCommandLine::ExportPdf },
    { "list", "invoices", CliCommandLine::ListInvoices },
    { "import", "payments", CliCommandLine::ImportPayments },
    { "report", "invoices", CliCommandLine::ReportInvoices },
    { "report", "payments", CliCommandLine::ReportPayments },
    { "report", "customers", CliCommandLine::ReportCustomers },
    { "report", "products", CliCommandLine::ReportProducts },
};

bool isHelp(const QString& argument)
{
    return argument == helpOption || argument == shortHelpOption;
}

// A lone "-" is no option.
bool isOption(const QString& argument)
{
    return argument.size() > 1 && argument.startsWith(QLatin1Char('-'));
}

// The options a command takes; true for those that take a value.
QMap<QString, bool> optionsOf(CliCommandLine::Command command)
{
    switch (command) {
    case CliCommandLine::ExportFinvoice:
        return { { schemaOption, true }, { noSoapOption, false }, { dirOption, true },
            { templateOption, true }, { singleOption, false } };
    case CliCommandLine::ExportPdf:
        return { { dirOption, true }, { templateOption, true }, { singleOption, false } };
    case CliCommandLine::ListInvoices:
        return { { csvOption, false } };
    case CliCommandLine::ImportPayments:
        return { { dryRunOption, false }, { entryDateOption, false }, { paymentDateOption, false },
            { accountOption, true }, { forceOption, false } };
    case CliCommandLine::NoCommand:
        return {};
    default:
        // The reports.
        return { { pdfOption, true }, { csvOption, true }, { landscapeOption, false } };
    }
}

bool takesInvoiceNumbers(CliCommandLine::Command command)
{
    return command == CliCommandLine::ExportFinvoice || command == CliCommandLine::ExportPdf;
}

bool isReport(CliCommandLine::Command command)
{
    return command >= CliCommandLine::ReportInvoices;
}

} // namespace

bool CliCommandLine::fail(const QString& error)
{
    m_lastError = error;
    m_action = UsageError;
    return false;
}

CliCommandLine::Action CliCommandLine::parse(const QStringList& arguments)
{
    *this = CliCommandLine();
    int next = 0;
    if (!parseGlobalOptions(arguments, &next) || m_action != RunCommand)
        return m_action;
    if (!parseCommand(arguments, &next) || m_action != RunCommand)
        return m_action;
    parseCommandOptions(arguments, next);
    return m_action;
}

bool CliCommandLine::parseGlobalOptions(const QStringList& arguments, int* next)
{
    int i = 0;
    for (; i < arguments.size() && isOption(arguments.at(i)); ++i) {
        const QString& option = arguments.at(i);
        if (isHelp(option)) {
            m_action = ShowHelp;
            return true;
        }
        if (option == versionOption) {
            m_action = ShowVersion;
            return true;
        }
        if (option != configOption && option != databaseOption)
            return fail(tr("Tuntematon valitsin %1").arg(option));
        if (i + 1 >= arguments.size() || arguments.at(i + 1).isEmpty())
            return fail(tr("Valitsimelta %1 puuttuu arvo").arg(option));
        const QString value = arguments.at(++i);
        if (option == configOption) {
            m_configFile = value;
            continue;
        }
        bool ok = false;
        m_databaseNumber = value.toInt(&ok);
        if (!ok || m_databaseNumber < 1)
            return fail(tr("Tietokannan numero ei kelpaa: %1").arg(value));
    }
    *next = i;
    m_action = RunCommand;
    return true;
}

bool CliCommandLine::parseCommand(const QStringList& arguments, int* next)
{
    int i = *next;
    if (i >= arguments.size())
        return fail(tr("Komento puuttuu"));
    m_commandName = arguments.at(i);
    QStringList kinds;
    for (const CommandWord& word : commandWords) {
        if (m_commandName == QLatin1String(word.word))
            kinds.append(QLatin1String(word.kind));
    }
    if (kinds.isEmpty())
        return fail(tr("Tuntematon komento %1").arg(m_commandName));
    // "--help" anywhere after the command word shows that command's help.
    for (int j = i + 1; j < arguments.size(); ++j) {
        if (isHelp(arguments.at(j))) {
            m_helpTopic = m_commandName;
            m_action = ShowHelp;
            return true;
        }
    }
    const QString kind = arguments.value(i + 1);
    if (kind.isEmpty() || isOption(kind)) {
        return fail(tr("Komennolta %1 puuttuu laji (%2)")
                        .arg(m_commandName, kinds.join(QLatin1String(", "))));
    }
    for (const CommandWord& word : commandWords) {
        if (m_commandName == QLatin1String(word.word) && kind == QLatin1String(word.kind))
            m_command = word.command;
    }
    if (m_command == NoCommand) {
        return fail(tr("Tuntematon laji %1 komennolle %2 (%3)")
                        .arg(kind, m_commandName, kinds.join(QLatin1String(", "))));
    }
    m_commandName += QLatin1Char(' ') + kind;
    *next = i + 2;
    return true;
}

bool CliCommandLine::parseCommandOptions(const QStringList& arguments, int next)
{
    const QMap<QString, bool> options = optionsOf(m_command);
    QSet<QString> seen;
    QStringList positional;
    for (int i = next; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        if (!isOption(argument)) {
            positional.append(argument);
            continue;
        }
        // "--dir=DIR" as well as "--dir DIR".
        const int equals = argument.startsWith(QLatin1String("--"))
            ? int(argument.indexOf(QLatin1Char('=')))
            : -1;
        const QString name = equals > 0 ? argument.left(equals) : argument;
        if (!options.contains(name))
            return fail(tr("Tuntematon valitsin %1 komennolle %2").arg(name, m_commandName));
        if (seen.contains(name))
            return fail(tr("Valitsin %1 on annettu kahdesti").arg(name));
        seen.insert(name);
        QString value;
        if (options.value(name)) {
            if (equals > 0)
                value = argument.mid(equals + 1);
            else if (i + 1 < arguments.size())
                value = arguments.at(++i);
            if (value.isEmpty())
                return fail(tr("Valitsimelta %1 puuttuu arvo").arg(name));
        } else if (equals > 0) {
            return fail(tr("Valitsin %1 ei ota arvoa").arg(name));
        }

        if (name == schemaOption) {
            if (!schemaVersions.contains(value)) {
                return fail(tr("Tuntematon Finvoice-versio %1 (%2)")
                                .arg(value, schemaVersions.join(QLatin1String(", "))));
            }
            m_schemaVersion = value;
        } else if (name == noSoapOption) {
            m_noSoapEnvelope = true;
        } else if (name == dirOption) {
            m_directory = value;
        } else if (name == templateOption) {
            m_fileTemplate = value;
        } else if (name == singleOption) {
            m_singleFile = true;
        } else if (name == csvOption) {
            // The list's CSV goes to standard output, a report's to its file.
            m_csv = m_command == ListInvoices;
            m_csvFile = value;
        } else if (name == pdfOption) {
            m_pdfFile = value;
        } else if (name == landscapeOption) {
            m_landscape = true;
        } else if (name == dryRunOption) {
            m_dryRun = true;
        } else if (name == entryDateOption || name == paymentDateOption) {
            if (m_importDate != StoredDate)
                return fail(tr("Anna joko %1 tai %2").arg(entryDateOption, paymentDateOption));
            m_importDate = name == entryDateOption ? EntryDate : PaymentDate;
        } else if (name == accountOption) {
            m_account = value;
        } else if (name == forceOption) {
            m_force = true;
        }
    }

    if (takesInvoiceNumbers(m_command)) {
        if (!positional.isEmpty()
            && !parseInvoiceNumbers(positional.join(QLatin1Char(',')), &m_invoiceNumbers)) {
            return fail(tr("Virheellinen laskuluettelo %1 (esimerkiksi 1001-1010,1015)")
                            .arg(positional.join(QLatin1Char(' '))));
        }
    } else if (m_command == ImportPayments) {
        if (positional.isEmpty())
            return fail(tr("Maksusuoritusaineisto puuttuu"));
        if (positional.size() > 1)
            return fail(tr("Ylimääräinen argumentti %1").arg(positional.at(1)));
        m_paymentFile = positional.first();
    } else if (!positional.isEmpty()) {
        return fail(tr("Ylimääräinen argumentti %1").arg(positional.first()));
    }
    if (isReport(m_command)) {
        if (m_pdfFile.isEmpty() == m_csvFile.isEmpty())
            return fail(tr("Anna raportille joko --pdf TIEDOSTO tai --csv TIEDOSTO"));
    }
    return true;
}

bool CliCommandLine::parseInvoiceNumbers(
    const QString& text, QList<InvoiceCriteria::NumberRange>* ranges)
{
    static const QRegularExpression item(QStringLiteral("^\\s*(\\d+)\\s*(?:-\\s*(\\d+)\\s*)?$"));
    QList<InvoiceCriteria::NumberRange> result;
    const QStringList items = text.split(QLatin1Char(','));
    for (const QString& part : items) {
        const QRegularExpressionMatch match = item.match(part);
        if (!match.hasMatch())
            return false;
        bool fromOk = false;
        bool toOk = true;
        const int from = match.captured(1).toInt(&fromOk);
        const int to = match.hasCaptured(2) ? match.captured(2).toInt(&toOk) : from;
        if (!fromOk || !toOk || to < from)
            return false;
        result.append({ from, to });
    }
    *ranges = result;
    return true;
}

QString CliCommandLine::programName()
{
    return QStringLiteral("veklari-cli");
}

QString CliCommandLine::version()
{
    return programName() + QStringLiteral(" " VEKLARI_VERSION);
}

QString CliCommandLine::usage()
{
    return tr("Käyttö: %1 [-c ASETUSTIEDOSTO] [-d NUMERO] KOMENTO [VALITSIMET]").arg(programName());
}

QString CliCommandLine::help(const QString& topic)
{
    const QString global = QStringLiteral("%1 [-c ASETUSTIEDOSTO] [-d NUMERO]").arg(programName());
    if (topic == QLatin1String("export")) {
        return tr("Käyttö: %1 export finvoice [--schema 3.0|2.01|1.3] [--no-soap]\n"
                  "           [--dir HAKEMISTO] [--template MALLI] [--single] [LASKUT]\n"
                  "       %1 export pdf [--dir HAKEMISTO] [--template MALLI] [--single] [LASKUT]\n"
                  "\n"
                  "Kirjoittaa laskut Finvoice-verkkolaskuiksi tai PDF-tiedostoiksi ja tulostaa\n"
                  "jokaisen kirjoitetun tiedoston polun omalle rivilleen.\n"
                  "\n"
                  "  LASKUT               laskunumerot ja numerovälit pilkuin eroteltuina,\n"
                  "                       esimerkiksi 1001-1010,1015 (oletus: kaikki laskut)\n"
                  "  --schema VERSIO      Finvoice-versio (oletus: yrityksen asetuksista)\n"
                  "  --no-soap            ilman SOAP-kehystä (oletus: yrityksen asetuksista)\n"
                  "  --dir HAKEMISTO      hakemisto, johon tiedostot kirjoitetaan; sen on oltava\n"
                  "                       olemassa (oletus: laskujen viennin asetuksista)\n"
                  "  --template MALLI     tiedostonimen malli, esimerkiksi lasku-$i-$n.pdf\n"
                  "                       (oletus: laskujen viennin asetuksista)\n"
                  "  --single             kaikki laskut yhteen tiedostoon\n"
                  "\n"
                  "Olemassa olevan tiedoston nimeen lisätään -1, -2, ... Finvoice-tiedostot\n"
                  "tarkistetaan skeemaa vasten; jokainen havainto tulostetaan virhetulosteeseen\n"
                  "muodossa TIEDOSTO:RIVI: viesti, ja paluuarvo on silloin 1.")
            .arg(global);
    }
    if (topic == QLatin1String("list")) {
        return tr("Käyttö: %1 list invoices [--csv]\n"
                  "\n"
                  "Tulostaa kaikkien laskujen numeron, päivämäärän, eräpäivän, asiakkaan,\n"
                  "tyypin, summan ja avoimen saldon taulukkona.\n"
                  "\n"
                  "  --csv                CSV-muodossa (erottimena puolipiste, otsikkorivi)")
            .arg(global);
    }
    if (topic == QLatin1String("import")) {
        return tr("Käyttö: %1 import payments TIEDOSTO [--dry-run]\n"
                  "           [--entry-date|--payment-date] [--account IBAN] [--force]\n"
                  "\n"
                  "Lukee pankin maksusuoritusaineiston (viitesiirrot, tiliote, camt-XML tai\n"
                  "CSV), kohdistaa viitemaksut laskuihin viitenumeron perusteella ja tallentaa\n"
                  "ne. Tulostaa rivin jokaisesta viitemaksusta muodossa\n"
                  "entry_date;payment_date;amount;reference;invoice;customer;info.\n"
                  "\n"
                  "  --dry-run            näyttää kohdistukset tallentamatta mitään\n"
                  "  --entry-date         suorituksen päiväksi kirjauspäivä\n"
                  "  --payment-date       suorituksen päiväksi maksupäivä\n"
                  "                       (oletus: ikkunaohjelmassa viimeksi valittu)\n"
                  "  --account IBAN       pankkitili, jolle suoritukset kirjataan\n"
                  "                       (oletus: aineiston tili tai viimeksi käytetty)\n"
                  "  --force              tallentaa aiemmin tallennetun aineiston uudelleen")
            .arg(global);
    }
    if (topic == QLatin1String("report")) {
        return tr("Käyttö: %1 report invoices|payments|customers|products\n"
                  "           (--pdf TIEDOSTO | --csv TIEDOSTO) [--landscape]\n"
                  "\n"
                  "Kirjoittaa laskuluettelon, suorituspäiväkirjan, asiakasluettelon tai\n"
                  "tuoteluettelon kaikista tiedoista oletussarakkein ja tulostaa tiedoston polun.\n"
                  "\n"
                  "  --pdf TIEDOSTO       PDF-tiedostoksi\n"
                  "  --csv TIEDOSTO       CSV-tiedostoksi (erottimena puolipiste)\n"
                  "  --landscape          vaakasuuntaan (PDF)")
            .arg(global);
    }
    return tr("%1\n"
              "\n"
              "Veklarin laskut ja raportit ilman ikkunaa, esimerkiksi palvelimella. Ohjelma\n"
              "käyttää samaa asetustiedostoa ja samoja tietokantoja kuin ikkunaohjelma\n"
              "eikä luo tai muuta niitä.\n"
              "\n"
              "  -c ASETUSTIEDOSTO    asetustiedosto (oletus: käyttäjän Veklari/Veklari.ini)\n"
              "  -d NUMERO            asetuksissa olevan tietokannan numero\n"
              "                       (oletus: viimeksi käytetty tietokanta)\n"
              "  -h, --help           tämä ohje\n"
              "  --version            ohjelman nimi ja versio\n"
              "\n"
              "Komennot:\n"
              "  export finvoice      laskut Finvoice-verkkolaskuiksi\n"
              "  export pdf           laskut PDF-tiedostoiksi\n"
              "  list invoices        luettelo laskuista\n"
              "  import payments      maksusuoritukset pankin aineistosta\n"
              "  report invoices|payments|customers|products\n"
              "                       raportti PDF- tai CSV-tiedostoon\n"
              "\n"
              "Komennon ohje: %2 KOMENTO --help\n"
              "Paluuarvo: 0 onnistui, 1 epäonnistui, 2 virheellinen komentorivi.")
        .arg(usage(), programName());
}
