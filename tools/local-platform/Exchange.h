#pragma once

#include "AccountStore.h"
#include "Faults.h"
#include "ObjectStore.h"
#include "Text.h"
#include "TlsStream.h"

#include <httplib.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace LocalPlatform {

enum class Area { Web, Service, Control, Page };

/// One request and its answer on their way through the platform.
struct Exchange
{
    explicit Exchange(TlsStream &tlsStream) : stream(tlsStream) {}

    TlsStream &stream;
    const httplib::Request *request = nullptr;
    httplib::Response *response = nullptr;

    Area area = Area::Page;
    std::string host;  ///< lower case, without port
    std::string route; ///< as sent, below the root of its server, without parameters
    Query query;
    std::optional<Fault> fault;
    std::int64_t announcedBytes = 0;
    std::int64_t connection = 0; ///< counted from 1
    std::int64_t now = 0; ///< the platform's time for this request

    std::string refusal;
    std::string refusedElement;
    std::string user;
    bool resent = false;
    bool closesAfterwards = false;
    std::shared_ptr<ObjectReader> download;
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();

    bool hasFault(const char *kind) const { return fault && fault->kind == kind; }
};

} // namespace LocalPlatform
