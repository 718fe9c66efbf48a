#include "Answers.h"

#include <nlohmann/json.hpp>

#include <map>

namespace LocalPlatform {

std::string element(const std::string &name, std::string_view value)
{
    return "<" + name + ">" + xmlEscaped(value) + "</" + name + ">";
}

void answerText(Exchange &exchange, int status, const std::string &body, const std::string &type)
{
    exchange.response->status = status;
    exchange.response->set_content(body, type);
}

void answerXml(Exchange &exchange, int status, const std::string &body)
{
    answerText(exchange, status, body, "application/xml; charset=utf-8");
}

void answerJson(Exchange &exchange, int status, const nlohmann::json &body)
{
    answerText(exchange, status, body.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace), "application/json; charset=utf-8");
}

void answerObject(Exchange &exchange, const std::shared_ptr<ObjectReader> &object, const std::string &name)
{
    exchange.download = object;
    if (object->size() == 0) {
        answerText(exchange, 200, std::string(), contentTypeOf(name));
        return;
    }
    exchange.response->set_content_provider(
        static_cast<std::size_t>(object->size()), contentTypeOf(name),
        [object](std::size_t offset, std::size_t length, httplib::DataSink &sink) {
            return object->read(static_cast<std::int64_t>(offset), static_cast<std::int64_t>(length),
                                [&sink](const char *bytes, std::size_t count) { return sink.write(bytes, count); });
        });
}

std::string contentTypeOf(const std::string &fileName)
{
    static const std::map<std::string, std::string> TYPES = {
        {"png", "image/png"},   {"jpg", "image/jpeg"}, {"jpeg", "image/jpeg"},      {"bmp", "image/bmp"},
        {"mp4", "video/mp4"},   {"mov", "video/mp4"},  {"mpg", "video/mpeg"},       {"avi", "video/x-msvideo"},
        {"webm", "video/webm"}, {"svg", "text/plain"}, {"xml", "application/xml"},  {"txt", "text/plain; charset=utf-8"},
    };
    const auto type = TYPES.find(lowered(fileName.substr(fileName.rfind('.') + 1)));
    return type == TYPES.end() ? "application/octet-stream" : type->second;
}

} // namespace LocalPlatform
