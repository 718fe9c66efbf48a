#include "UnseenScreen.h"

#include <QtCore/QLatin1String>
#include <QtCore/QString>

namespace Korvo::Web::TestSupport {

namespace {

// Qt's words, in its category for everything: no filter rule leaves them out alone.
const QLatin1String NOT_ON_THIS_SCREEN("This plugin does not support ");

QtMessageHandler formerHandler = nullptr;

void passOn(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (!text.startsWith(NOT_ON_THIS_SCREEN))
        formerHandler(type, context, text);
}

} // namespace

UnseenScreen::UnseenScreen()
{
    formerHandler = qInstallMessageHandler(passOn);
}

UnseenScreen::~UnseenScreen()
{
    qInstallMessageHandler(formerHandler);
}

} // namespace Korvo::Web::TestSupport
