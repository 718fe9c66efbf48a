#include "Appearance.h"
#include "Language.h"
#include "LogCollector.h"
#include "MainWindow.h"
#include "NetworkSettings.h"
#include "Symbols.h"

#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QCommandLineParser>
#include <QtWidgets/QApplication>

using namespace Korvo;

int main(int argc, char *argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Korvo"));
    QApplication::setApplicationName(QStringLiteral("korvo-desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("Korvo Desktop"));
    QApplication::setWindowIcon(Desktop::programIcon());

    const QCommandLineOption language(QStringLiteral("language"),
                                      QStringLiteral("Language of the texts, \"de\" for one."), QStringLiteral("CODE"),
                                      QLocale().name());
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption(language);
    parser.process(application);

    Desktop::installLanguage(application, QLocale(parser.value(language)));
    Desktop::applyAppearance(Desktop::savedAppearance());
    const Desktop::NetworkSettings network = Desktop::NetworkSettings::load();
    network.apply();

    // In this order: the library logs until its facade is gone, and the window listens to both.
    Web::KorvoWebLibrary::initialize();
    const Desktop::LogCollector log;
    Web::KorvoWebApi api;
    Desktop::MainWindow window(api, log, network);
    window.show();
    window.start();
    return QApplication::exec();
}
