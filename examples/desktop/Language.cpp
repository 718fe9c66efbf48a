#include "Language.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLibraryInfo>
#include <QtCore/QTranslator>

// The resource lives in a static library, where nothing refers to it by itself. Not in a namespace: that is the macro's.
static void takeTranslationsAlong()
{
#ifdef KORVO_DESKTOP_TRANSLATIONS
    Q_INIT_RESOURCE(translations);
#endif
}

namespace Korvo::Desktop {

namespace {

bool installOwn(QCoreApplication &application, const QLocale &locale)
{
    auto *const translator = new QTranslator(&application);
    return translator->load(locale, QStringLiteral("korvo-desktop"), QStringLiteral("_"),
                            QStringLiteral(":/translations"))
           && QCoreApplication::installTranslator(translator);
}

} // namespace

bool installLanguage(QCoreApplication &application, const QLocale &locale)
{
    takeTranslationsAlong();
    QLocale::setDefault(locale);
    auto *const ofQt = new QTranslator(&application);
    if (ofQt->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                   QLibraryInfo::location(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(ofQt);
    // English stands in the program itself, all but its plurals. Of two translators the later one is asked first.
    installOwn(application, QLocale(QLocale::English));
    return installOwn(application, locale);
}

} // namespace Korvo::Desktop
