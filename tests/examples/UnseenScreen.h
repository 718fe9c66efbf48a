#pragma once

namespace Korvo::Web::TestSupport {

/// Leaves out what Qt says of each window on a screen that nobody sees, so that the log shows what matters.
void silenceUnseenScreen();

} // namespace Korvo::Web::TestSupport
