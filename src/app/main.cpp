#include "core/commandline.h"
#include "core/registry.h"
#include "domain/decimal.h"
#include "ui/mainwindow.h"

#include <QApplication>
#include <QFile>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Veklari"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("veklari.invalid"));
    QCoreApplication::setApplicationName(QStringLiteral("Veklari"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VEKLARI_VERSION));

    qRegisterMetaType<Decimal>("Decimal");

    CommandLine commandLine;
    if (!commandLine.parse(QCoreApplication::arguments().mid(1))) {
        QFile standardError;
        if (standardError.open(2, QIODevice::WriteOnly))
            standardError.write((CommandLine::usage() + QLatin1Char('\n')).toUtf8());
        return -1;
    }

    // Only Qt's own texts are translated; the program's texts are Finnish.
    QTranslator* translator = new QTranslator();
    const QString translationFile
        = QStringLiteral("qt_") + QLocale::system().name() + QStringLiteral(".qm");
    // Debian keeps Qt 6's own translations under Qt's translations path rather
    // than the traditional directory, so look there too before giving up.
    if (!translator->load(translationFile, QStringLiteral("/usr/share/qt/translations"))
        && !translator->load(translationFile, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        qWarning("Failed to load translations");
    QCoreApplication::installTranslator(translator);

    Registry* registry = new Registry();
    registry->loadSettings(commandLine.configFile());
    registry->setupLogging();

    MainWindow* window = new MainWindow(registry);
    window->openDatabaseLater(commandLine.number());
    window->show();
    const int result = QApplication::exec();

    delete window;
    delete registry;
    delete translator;
    return result;
}
