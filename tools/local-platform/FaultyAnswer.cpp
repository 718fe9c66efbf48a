#include "FaultyAnswer.h"

#include "Answers.h"

#include <functional>
#include <map>

namespace LocalPlatform {
namespace {

constexpr std::int64_t DEFAULT_HEADER_BYTES = 10;
constexpr std::int64_t DEFAULT_LENGTH_ERROR = 10;

std::int64_t bodyBytes(const Exchange &exchange)
{
    if (exchange.download && exchange.response->content_provider_)
        return exchange.download->size();
    return static_cast<std::int64_t>(exchange.response->body.size());
}

std::int64_t bytesOr(const Exchange &exchange, std::int64_t fallback)
{
    return exchange.fault->bytes < 0 ? fallback : exchange.fault->bytes;
}

/// Replaces whatever the answer was to carry.
void setBody(Exchange &exchange, const std::string &body)
{
    const std::string type = exchange.response->get_header_value("Content-Type");
    exchange.response->content_provider_ = nullptr;
    exchange.response->content_length_ = 0;
    exchange.response->headers.erase("Content-Type");
    exchange.response->set_content(body, type.empty() ? "application/xml; charset=utf-8" : type);
}

std::string nonsense(std::int64_t size)
{
    // No bracket, brace or quotation mark: neither XML nor JSON can begin in it.
    const std::string words = "\x01\xff garbage % nothing to read here \xc3 ";
    std::string text;
    while (static_cast<std::int64_t>(text.size()) < size)
        text += words;
    text.resize(static_cast<std::size_t>(size));
    return text;
}

std::string firstBytes(const Exchange &exchange, std::int64_t count)
{
    if (!exchange.response->content_provider_)
        return exchange.response->body.substr(0, static_cast<std::size_t>(count));
    std::string bytes;
    exchange.download->read(0, count, [&bytes](const char *piece, std::size_t size) {
        bytes.append(piece, size);
        return true;
    });
    return bytes;
}

void cut(Exchange &exchange, AnswerDamage::Base base, std::int64_t after, Ending ending)
{
    AnswerDamage damage;
    damage.cutFrom = base;
    damage.cutAfter = after;
    damage.ending = ending;
    exchange.stream.damageAnswer(damage);
}

void breakOff(Exchange &exchange, Ending ending)
{
    cut(exchange, AnswerDamage::Base::Headers, 0, ending);
}

void cutInBody(Exchange &exchange, Ending ending)
{
    cut(exchange, AnswerDamage::Base::Body, bytesOr(exchange, bodyBytes(exchange) / 2), ending);
}

void answerStatus(Exchange &exchange)
{
    exchange.response->status = static_cast<int>(exchange.fault->status);
    setBody(exchange, exchange.fault->body);
    if (exchange.fault->contentType.empty())
        return;
    exchange.response->headers.erase("Content-Type");
    exchange.response->set_header("Content-Type", exchange.fault->contentType);
}

void redirect(Exchange &exchange)
{
    setBody(exchange, std::string());
    exchange.response->status = static_cast<int>(exchange.fault->status);
    exchange.response->set_header("Location", exchange.fault->location);
}

void flipBit(Exchange &exchange)
{
    AnswerDamage damage;
    damage.flipAt = bytesOr(exchange, bodyBytes(exchange) / 2);
    exchange.stream.damageAnswer(damage);
}

void slowDown(Exchange &exchange)
{
    AnswerDamage damage;
    damage.bytesPerSecond = exchange.fault->bytesPerSecond;
    exchange.stream.damageAnswer(damage);
}

void speakNoHttp(Exchange &exchange)
{
    AnswerDamage damage;
    damage.insteadOfHeaders = "220 this is no web server\r\n\r\n";
    exchange.stream.damageAnswer(damage);
}

void answerGarbage(Exchange &exchange)
{
    setBody(exchange, nonsense(bytesOr(exchange, 200)));
}

void announce(Exchange &exchange, std::int64_t length)
{
    exchange.response->headers.erase("Content-Length");
    exchange.response->set_header("Content-Length", std::to_string(std::max<std::int64_t>(0, length)));
}

using Step = std::function<void(Exchange &)>;

const std::map<std::string, Step> &answerSteps()
{
    using Base = AnswerDamage::Base;
    static const std::map<std::string, Step> STEPS = {
        {"status", answerStatus},
        {"noAnswer", [](Exchange &e) { breakOff(e, Ending::Stall); }},
        {"closeWithoutAnswer", [](Exchange &e) { breakOff(e, Ending::Close); }},
        {"resetInRequest", [](Exchange &e) { breakOff(e, Ending::Reset); }},
        {"stallInRequest", [](Exchange &e) { breakOff(e, Ending::Stall); }},
        {"resetBeforeAnswer", [](Exchange &e) { breakOff(e, Ending::Reset); }},
        {"resetInHeaders", [](Exchange &e) { cut(e, Base::Headers, bytesOr(e, DEFAULT_HEADER_BYTES), Ending::Reset); }},
        {"resetAfterHeaders", [](Exchange &e) { cut(e, Base::Body, 0, Ending::Reset); }},
        {"resetInBody", [](Exchange &e) { cutInBody(e, Ending::Reset); }},
        {"cutBody", [](Exchange &e) { cutInBody(e, Ending::Close); }},
        {"stallInBody", [](Exchange &e) { cutInBody(e, Ending::Stall); }},
        {"garbage", answerGarbage},
        {"emptyBody", [](Exchange &e) { setBody(e, std::string()); }},
        {"hugeBody", [](Exchange &e) { setBody(e, nonsense(e.fault->bytes)); }},
        {"truncatedBody", [](Exchange &e) { setBody(e, firstBytes(e, bytesOr(e, bodyBytes(e) / 2))); }},
        {"corruptBody", flipBit},
        {"trickle", slowDown},
        {"redirect", redirect},
        {"badStatusLine", speakNoHttp},
    };
    return STEPS;
}

const std::map<std::string, Step> &headerSteps()
{
    static const std::map<std::string, Step> STEPS = {
        {"contentLengthTooLong", [](Exchange &e) { announce(e, bodyBytes(e) + bytesOr(e, DEFAULT_LENGTH_ERROR)); }},
        {"contentLengthTooShort",
         [](Exchange &e) {
             announce(e, bodyBytes(e) - bytesOr(e, DEFAULT_LENGTH_ERROR));
             e.closesAfterwards = true;
         }},
        {"noContentLength",
         [](Exchange &e) {
             e.response->headers.erase("Content-Length");
             e.response->headers.erase("Keep-Alive");
             e.response->headers.erase("Connection");
             e.response->set_header("Connection", "close");
             e.closesAfterwards = true;
         }},
    };
    return STEPS;
}

void runStep(const std::map<std::string, Step> &steps, Exchange &exchange)
{
    const auto step = steps.find(exchange.fault->kind);
    if (step != steps.end())
        step->second(exchange);
}

} // namespace

void damageRequest(Exchange &exchange)
{
    const bool resets = exchange.hasFault("resetInRequest");
    if (!resets && !exchange.hasFault("stallInRequest"))
        return;
    if (exchange.announcedBytes > 0)
        exchange.stream.limitRequestBody(bytesOr(exchange, exchange.announcedBytes / 2), resets ? Ending::Reset : Ending::Stall);
}

void damageAnswer(Exchange &exchange)
{
    if (exchange.response->status < 0)
        exchange.response->status = 200;
    runStep(answerSteps(), exchange);
}

void damageHeaders(Exchange &exchange)
{
    runStep(headerSteps(), exchange);
}

} // namespace LocalPlatform
