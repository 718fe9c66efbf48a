#include "peer/Requests.h"

#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace Korvo::Bench {
namespace {

constexpr int POLL_MILLISECONDS = 1000;
constexpr long OK = 200;

std::size_t takeText(char *bytes, std::size_t, std::size_t count, void *text)
{
    static_cast<std::string *>(text)->append(bytes, count);
    return count;
}

std::size_t takeFile(char *bytes, std::size_t, std::size_t count, void *file)
{
    return static_cast<std::size_t>(::write(*static_cast<int *>(file), bytes, count));
}

} // namespace

/// One request in flight, with the easy handle that it keeps for the next one.
struct Requests::Flight
{
    CURL *easy = curl_easy_init();
    PeerRequest request;
    Done done;
    curl_slist *headers = nullptr;
    std::string answer;

    ~Flight()
    {
        curl_slist_free_all(headers);
        curl_easy_cleanup(easy);
    }
};

Requests::Requests(std::string authorityFile, std::string proxyAddress)
    : authority(std::move(authorityFile))
    , proxy(std::move(proxyAddress))
    , multi(curl_multi_init())
{
}

Requests::~Requests()
{
    for (const FlightPointer &flight : inFlight)
        curl_multi_remove_handle(multi, flight->easy);
    inFlight.clear();
    spare.clear();
    curl_multi_cleanup(multi);
}

Requests::FlightPointer Requests::freeFlight()
{
    if (spare.empty())
        return std::make_unique<Flight>();
    FlightPointer flight = std::move(spare.back());
    spare.pop_back();
    return flight;
}

void Requests::prepare(Flight &flight)
{
    CURL *const easy = flight.easy;
    curl_easy_reset(easy);
    curl_easy_setopt(easy, CURLOPT_URL, flight.request.url.c_str());
    curl_easy_setopt(easy, CURLOPT_CAINFO, authority.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_PRIVATE, &flight);
    if (!proxy.empty())
        curl_easy_setopt(easy, CURLOPT_PROXY, proxy.c_str());
    if (std::string(flight.request.method) != "GET") {
        curl_easy_setopt(easy, CURLOPT_CUSTOMREQUEST, flight.request.method);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(flight.request.body.size()));
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, flight.request.body.data());
    }
    for (const std::string &header : flight.request.headers)
        flight.headers = curl_slist_append(flight.headers, header.c_str());
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, flight.headers);
    const bool toFile = flight.request.file >= 0;
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, toFile ? takeFile : takeText);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, toFile ? static_cast<void *>(&flight.request.file) : &flight.answer);
}

void Requests::send(PeerRequest request, Done done)
{
    FlightPointer flight = freeFlight();
    flight->request = std::move(request);
    flight->done = std::move(done);
    prepare(*flight);
    curl_multi_add_handle(multi, flight->easy);
    inFlight.push_back(std::move(flight));
}

void Requests::run()
{
    while (!inFlight.empty()) {
        int running = 0;
        curl_multi_perform(multi, &running);
        finishEnded();
        if (running > 0)
            curl_multi_poll(multi, nullptr, 0, POLL_MILLISECONDS, nullptr);
    }
}

void Requests::finishEnded()
{
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode code = message->data.result;
        Flight *flight = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &flight);
        finish(flight, code);
    }
}

void Requests::finish(Flight *flight, CURLcode code)
{
    long status = 0;
    curl_easy_getinfo(flight->easy, CURLINFO_RESPONSE_CODE, &status);
    if (code != CURLE_OK || status != OK)
        throw std::runtime_error(flight->request.url + ": " + curl_easy_strerror(code) + ", status "
                                 + std::to_string(status));
    curl_multi_remove_handle(multi, flight->easy);
    const auto place
        = std::find_if(inFlight.begin(), inFlight.end(), [flight](const auto &each) { return each.get() == flight; });
    FlightPointer ended = std::move(*place);
    inFlight.erase(place);

    const Done done = std::move(ended->done);
    const std::string answer = std::move(ended->answer);
    curl_slist_free_all(ended->headers);
    ended->headers = nullptr;
    ended->request = {};
    ended->answer.clear();
    spare.push_back(std::move(ended));
    done(answer);
}

std::string Requests::wait(PeerRequest request)
{
    std::string text;
    send(std::move(request), [&text](const std::string &answer) { text = answer; });
    run();
    return text;
}

} // namespace Korvo::Bench
