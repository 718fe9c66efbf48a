#include "FuzzTarget.h"

#include <cstdio>
#include <cstdlib>

namespace Korvo::Web::Fuzz {

void require(bool holds, const char *claim)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", claim);
    std::abort();
}

} // namespace Korvo::Web::Fuzz
