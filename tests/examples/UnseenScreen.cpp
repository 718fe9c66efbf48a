#include "UnseenScreen.h"

#include <QtCore/QLatin1String>
#include <QtCore/QString>
#include <QtCore/QtGlobal>

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

void silenceUnseenScreen()
{
    // Once: by the next time a window's own handler may stand in front of this one.
    if (!formerHandler)
        formerHandler = qInstallMessageHandler(passOn);
}

} // namespace Korvo::Web::TestSupport
