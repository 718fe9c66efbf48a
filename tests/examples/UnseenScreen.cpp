#include "UnseenScreen.h"

#include <QtCore/QLatin1String>
#include <QtCore/QString>

namespace Korvo::Web::TestSupport {

namespace {

// Qt's words, in its category for everything: no filter rule leaves them out alone.
const QLatin1String SIZE_HINTS("This plugin does not support propagateSizeHints()");

QtMessageHandler formerHandler = nullptr;

void passOn(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (text != SIZE_HINTS)
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
