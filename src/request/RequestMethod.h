#pragma once

namespace Korvo::Web {

/// HTTP method of a request; its text is part of the signature of storage requests.
enum RequestMethod {
    GET = 0,  ///< "GET"
    POST = 1, ///< "POST"
    PUT = 2,  ///< "PUT"
};

} // namespace Korvo::Web
