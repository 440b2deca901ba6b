#include "cliprocess.h"

#include <QtTest>

// The command-line program before it reaches a database: version, help,
// usage errors and configurations that lead to no database. None of these
// may leave a file behind.
class TestCliUsage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void version();
    void help_data();
    void help();
    void usageErrors_data();
    void usageErrors();
    void noDatabase_data();
    void noDatabase();

private:
    QString newHome();
    static QStringList filesUnder(const QString& dir);
    static QByteArray readFile(const QString& fileName);

    QTemporaryDir m_dir;
    int m_homes = 0;
};

namespace {

const QString usageLine
    = QStringLiteral("Käyttö: veklari-cli [-c ASETUSTIEDOSTO] [-d NUMERO] KOMENTO [VALITSIMET]");

} // namespace

void TestCliUsage::initTestCase()
{
    QVERIFY(m_dir.isValid());
}

QString TestCliUsage::newHome()
{
    const QString home = m_dir.filePath(QStringLiteral("home-%1").arg(++m_homes));
    QDir().mkpath(home);
    return home;
}

QStringList TestCliUsage::filesUnder(const QString& dir)
{
    QStringList files;
    QDirIterator it(
        dir, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(QDir(dir).relativeFilePath(it.next()));
    files.sort();
    return files;
}

QByteArray TestCliUsage::readFile(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestCliUsage::version()
{
    const CliProcess::Result result = CliProcess::run({ "--version" }, newHome());
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.out, QStringLiteral("veklari-cli " VEKLARI_VERSION "\n"));
    QCOMPARE(result.err, QString());
}

void TestCliUsage::help_data()
{
    QTest::addColumn<QStringList>("arguments");
    // Texts that only this help has.
    QTest::addColumn<QStringList>("expected");
    QTest::addRow("program") << QStringList { "--help" }
                             << QStringList { usageLine, "export finvoice", "list invoices",
                                    "report invoices|payments|customers|products" };
    QTest::addRow("program, short, after -c")
        << QStringList { "-c", "puuttuu.ini", "-h" } << QStringList { usageLine };
    QTest::addRow("export") << QStringList { "export", "--help" }
                            << QStringList { "--schema 3.0|2.01|1.3", "--no-soap", "--single",
                                   "1001-1010,1015", "TIEDOSTO:RIVI: viesti" };
    QTest::addRow("export, after the kind and options") << QStringList { "export", "pdf", "--dir",
        "x", "--help" } << QStringList { "--template MALLI" };
    QTest::addRow("list") << QStringList { "list", "--help" }
                          << QStringList { "list invoices [--csv]" };
    QTest::addRow("report") << QStringList { "report", "invoices", "--help" }
                            << QStringList { "(--pdf TIEDOSTO | --csv TIEDOSTO) [--landscape]" };
}

void TestCliUsage::help()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, expected);
    const QString home = newHome();
    const CliProcess::Result result = CliProcess::run(arguments, home);
    QVERIFY2(result.finished && result.exitCode == 0, result.describe());
    QCOMPARE(result.err, QString());
    for (const QString& text : std::as_const(expected))
        QVERIFY2(result.out.contains(text), qPrintable(text + "\n" + result.out));
    QCOMPARE(filesUnder(home), QStringList());
}

void TestCliUsage::usageErrors_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    auto row = [](const char* name, const QStringList& arguments, const QString& message) {
        QTest::addRow("%s", name) << arguments << message;
    };
    const QString example = QStringLiteral(" (esimerkiksi 1001-1010,1015)");
    row("no command", {}, "Komento puuttuu");
    row("unknown command", { "print", "invoices" }, "Tuntematon komento print");
    row("unknown global option", { "-x", "list", "invoices" }, "Tuntematon valitsin -x");
    row("-c without a file", { "-c" }, "Valitsimelta -c puuttuu arvo");
    row("-d without a number", { "-d" }, "Valitsimelta -d puuttuu arvo");
    row("-d not a number", { "-d", "kolme", "list", "invoices" },
        "Tietokannan numero ei kelpaa: kolme");
    row("-d zero", { "-d", "0", "list", "invoices" }, "Tietokannan numero ei kelpaa: 0");
    row("global option after the command", { "list", "invoices", "-c", "x.ini" },
        "Tuntematon valitsin -c komennolle list invoices");
    row("export without a kind", { "export" }, "Komennolta export puuttuu laji (finvoice, pdf)");
    row("export of an unknown kind", { "export", "html" },
        "Tuntematon laji html komennolle export (finvoice, pdf)");
    row("list of payments", { "list", "payments" },
        "Tuntematon laji payments komennolle list (invoices)");
    row("report of an unknown kind", { "report", "vat", "--pdf", "a.pdf" },
        "Tuntematon laji vat komennolle report (invoices, payments, customers, products)");
    row("unknown option", { "export", "pdf", "--open" },
        "Tuntematon valitsin --open komennolle export pdf");
    row("Finvoice option for PDF", { "export", "pdf", "--schema", "3.0" },
        "Tuntematon valitsin --schema komennolle export pdf");
    row("unknown Finvoice version", { "export", "finvoice", "--schema", "4.0" },
        "Tuntematon Finvoice-versio 4.0 (3.0, 2.01, 1.3)");
    row("missing value", { "export", "pdf", "--dir" }, "Valitsimelta --dir puuttuu arvo");
    row("empty value", { "export", "finvoice", "--template=" },
        "Valitsimelta --template puuttuu arvo");
    row("value for a switch", { "export", "pdf", "--single=kyllä" },
        "Valitsin --single ei ota arvoa");
    row("option twice", { "export", "pdf", "--dir", "a", "--dir=b" },
        "Valitsin --dir on annettu kahdesti");
    row("range backwards", { "export", "pdf", "1010-1001" },
        "Virheellinen laskuluettelo 1010-1001" + example);
    row("empty item", { "export", "pdf", "1001,,1003" },
        "Virheellinen laskuluettelo 1001,,1003" + example);
    row("open range", { "export", "finvoice", "1001-" },
        "Virheellinen laskuluettelo 1001-" + example);
    row("three ends", { "export", "pdf", "1-2-3" }, "Virheellinen laskuluettelo 1-2-3" + example);
    row("not a number", { "export", "pdf", "1001", "viimeinen" },
        "Virheellinen laskuluettelo 1001 viimeinen" + example);
    row("beyond 32 bits", { "export", "pdf", "99999999999" },
        "Virheellinen laskuluettelo 99999999999" + example);
    row("negative number", { "export", "pdf", "-5" },
        "Tuntematon valitsin -5 komennolle export pdf");
    row("argument for the list", { "list", "invoices", "1001" }, "Ylimääräinen argumentti 1001");
    row("report without a file", { "report", "customers", "--landscape" },
        "Anna raportille joko --pdf TIEDOSTO tai --csv TIEDOSTO");
    row("report to both", { "report", "products", "--pdf", "a.pdf", "--csv", "b.csv" },
        "Anna raportille joko --pdf TIEDOSTO tai --csv TIEDOSTO");
    row("CSV file for the list", { "list", "invoices", "--csv=laskut.csv" },
        "Valitsin --csv ei ota arvoa");
}

void TestCliUsage::usageErrors()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const QString home = newHome();
    const CliProcess::Result result = CliProcess::run(arguments, home);
    QVERIFY2(result.finished && result.exitCode == 2, result.describe());
    QCOMPARE(result.out, QString());
    QCOMPARE(result.errLines(),
        QStringList({ "veklari-cli: " + message, usageLine, "Ohje: veklari-cli --help" }));
    // It stopped before reading any configuration.
    QCOMPARE(filesUnder(home), QStringList());
}

// Configurations that name no usable database: each an error of its own,
// and neither a file, a directory, a database nor a change to the
// configuration follows.
void TestCliUsage::noDatabase_data()
{
    QTest::addColumn<QString>("ini");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    const QString missingDir = QStringLiteral("puuttuva/hakemisto");
    QTest::addRow("no per-user configuration")
        << QString() << QStringList { "list", "invoices" }
        << "Asetustiedostoa HOME/config/Veklari/Veklari.ini ei ole.";
    QTest::addRow("-c file in a missing directory")
        << QString() << QStringList { "-c", "HOME/" + missingDir + "/oma.ini", "list", "invoices" }
        << "Asetustiedostoa HOME/" + missingDir + "/oma.ini ei ole.";
    QTest::addRow("-c file missing")
        << QString()
        << QStringList { "-c", "oma.ini", "report", "customers", "--csv", "asiakkaat.csv" }
        << "Asetustiedostoa HOME/oma.ini ei ole.";
    QTest::addRow("no databases") << QStringLiteral("[logging]\nenabled=true\nfilename=oma.log\n")
                                  << QStringList { "list", "invoices" }
                                  << "Asetustiedostossa INI ei ole tietokantoja.";
    const QString twoFiles = QStringLiteral("[databases]\nlastUsed=2\nsettings\\size=2\n"
                                            "settings\\1\\number=1\n"
                                            "settings\\1\\filename=HOME/yksi.sqlite\n"
                                            "settings\\2\\number=2\n"
                                            "settings\\2\\filename=HOME/kaksi.sqlite\n");
    QTest::addRow("number not configured")
        << twoFiles << QStringList { "-d", "3", "list", "invoices" }
        << "Asetustiedostossa INI ei ole tietokantaa numero 3.";
    QTest::addRow("chosen SQLite file missing")
        << twoFiles << QStringList { "-d", "1", "export", "pdf", "--dir", "HOME" }
        << "Tietokantayhteyden avaaminen epäonnistui. Tietokantatiedostoa HOME/yksi.sqlite ei "
           "ole olemassa";
    QTest::addRow("last used SQLite file missing")
        << twoFiles << QStringList { "list", "invoices" }
        << "Tietokantayhteyden avaaminen epäonnistui. Tietokantatiedostoa HOME/kaksi.sqlite ei "
           "ole olemassa";
}

void TestCliUsage::noDatabase()
{
    QFETCH(QString, ini);
    QFETCH(QStringList, arguments);
    QFETCH(QString, message);
    const QString home = newHome();
    const QString iniFile = CliProcess::userConfigFile(home);
    const QByteArray iniText = ini.replace(QLatin1String("HOME"), home).toUtf8();
    if (!ini.isEmpty()) {
        QVERIFY(QDir().mkpath(QFileInfo(iniFile).path()));
        QFile file(iniFile);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(iniText) == iniText.size());
    }
    const QStringList before = filesUnder(home);
    arguments.replaceInStrings(QLatin1String("HOME"), home);

    const CliProcess::Result result = CliProcess::run(arguments, home);
    QVERIFY2(result.finished && result.exitCode == 1, result.describe());
    QCOMPARE(result.out, QString());
    QCOMPARE(result.errLines(),
        QStringList("veklari-cli: "
            + message.replace(QLatin1String("HOME"), home).replace(QLatin1String("INI"), iniFile)));
    QCOMPARE(filesUnder(home), before);
    if (!ini.isEmpty())
        QCOMPARE(readFile(iniFile), iniText);
}

QTEST_GUILESS_MAIN(TestCliUsage)
#include "tst_cliusage.moc"
