#pragma once

#include <chrono>

namespace Korvo::Web::TestSupport {

/// The limit of every wait for a window or for the platform: far above what they take, on a loaded machine too.
constexpr int PATIENCE_MILLISECONDS = 45000;
constexpr std::chrono::milliseconds PATIENCE(PATIENCE_MILLISECONDS);

} // namespace Korvo::Web::TestSupport
