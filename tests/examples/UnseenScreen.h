#pragma once

#include <QtCore/QtGlobal>

namespace Korvo::Web::TestSupport {

/// A screen that nobody sees: as long as it lives, it leaves out what Qt says of each window there, so that the log shows
/// what matters. Handlers of messages that are installed meanwhile must have gone before it.
class UnseenScreen
{
public:
    UnseenScreen();
    ~UnseenScreen();
    Q_DISABLE_COPY_MOVE(UnseenScreen)
};

} // namespace Korvo::Web::TestSupport
