#pragma once

namespace Korvo::Web {

/// HTTP method of a request; its text is part of the signature of storage requests.
enum RequestMethod {
    GET = 0,
    POST = 1,
    PUT = 2,
};

} // namespace Korvo::Web
