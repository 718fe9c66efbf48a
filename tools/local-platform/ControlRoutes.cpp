#include "Answers.h"
#include "BucketName.h"
#include "Refusal.h"
#include "Routes.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <map>

namespace LocalPlatform {
namespace {

using nlohmann::json;
using Handler = std::function<void(Platform &, Exchange &)>;

json bodyOf(const Exchange &exchange)
{
    json body = json::parse(exchange.request->body, nullptr, false);
    if (body.is_discarded())
        throw Refusal(400, "the body is not JSON");
    return body;
}

void getJournal(Platform &platform, Exchange &exchange)
{
    answerJson(exchange, 200, platform.journal.since(parsedDecimal(queryValue(exchange.query, "since").value_or("")).value_or(0)));
}

void getRefusals(Platform &platform, Exchange &exchange)
{
    answerJson(exchange, 200, platform.journal.refusals());
}

void getFaults(Platform &platform, Exchange &exchange)
{
    answerJson(exchange, 200, platform.faults.overview());
}

void getFaultKinds(Platform &, Exchange &exchange)
{
    json kinds = json::array();
    for (const FaultKind &kind : faultKinds())
        kinds.push_back({{"kind", kind.name}, {"description", kind.description}, {"work", kind.work}});
    answerJson(exchange, 200, kinds);
}

/// One fault, a list of them, {"set": [...]} for exactly these, {"remove": id} or {"clear": true}.
void postFaults(Platform &platform, Exchange &exchange)
{
    json body = bodyOf(exchange);
    if (body.is_object() && body.contains("remove")) {
        const bool found = platform.faults.remove(body["remove"].is_number_integer() ? body["remove"].get<std::int64_t>() : 0);
        return answerJson(exchange, found ? 200 : 404, {{"removed", found}});
    }
    if (body.is_object() && (body.contains("clear") || body.contains("set"))) {
        platform.faults.clear();
        body = body.value("set", json::array());
    }
    if (body.is_object())
        body = json::array({body});
    json ids = json::array();
    for (const json &description : body)
        ids.push_back(platform.faults.add(description));
    answerJson(exchange, 200, {{"ids", ids}});
}

void postClock(Platform &platform, Exchange &exchange)
{
    const json body = bodyOf(exchange);
    if (!body.is_object() || !body.contains("skewSeconds") || !body["skewSeconds"].is_number_integer())
        throw Refusal(400, "expected {\"skewSeconds\": N}", "skewSeconds");
    platform.clock.setSkewSeconds(body["skewSeconds"].get<std::int64_t>());
    answerJson(exchange, 200, {{"now", isoDate(platform.clock.now())}});
}

void getState(Platform &platform, Exchange &exchange)
{
    const bool hashes = queryValue(exchange.query, "sha256").has_value();
    answerJson(exchange, 200,
               {{"accounts", platform.accounts.overview()}, {"projects", platform.projects.overview()},
                {"buckets", platform.objects.bucketsOverview(hashes)}, {"uploads", platform.objects.uploadsOverview()},
                {"transcodings", platform.objects.jobsOverview()}, {"faults", platform.faults.overview()},
                {"refusals", platform.journal.refusals()}, {"skewSeconds", platform.clock.skewSeconds()},
                {"now", isoDate(platform.clock.now())}});
}

void postAccounts(Platform &platform, Exchange &exchange)
{
    platform.accounts.add(bodyOf(exchange));
    answerJson(exchange, 200, {{"ok", true}});
}

void getResets(Platform &platform, Exchange &exchange)
{
    answerJson(exchange, 200, platform.accounts.resets());
}

void postTranscoding(Platform &platform, Exchange &exchange)
{
    const json body = bodyOf(exchange);
    if (!body.is_object() || !body.contains("webCopies") || !body["webCopies"].is_string())
        throw Refusal(400, "expected {\"webCopies\": \"same\"}", "webCopies");
    platform.objects.setWebCopies(webCopiesNamed(body["webCopies"].get<std::string>()));
    answerJson(exchange, 200, {{"ok", true}});
}

std::string contentOf(const json &object)
{
    if (object.contains("base64")) {
        const auto bytes = base64Decoded(object["base64"].get<std::string>());
        if (!bytes)
            throw Refusal(400, "not Base64", "base64");
        return *bytes;
    }
    if (!object.contains("size"))
        return object.value("text", "");
    // A pattern, so that a byte in the wrong place shows.
    std::string bytes(static_cast<std::size_t>(std::min<std::int64_t>(object["size"].get<std::int64_t>(), 1024 * 1024 * 1024)), '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * 31 + (i >> 8));
    return bytes;
}

/// A project with objects of any keys, hostile ones included, as if a client had uploaded it.
void postProjects(Platform &platform, Exchange &exchange)
{
    const json body = bodyOf(exchange);
    try {
        Project project;
        project.companyId = body.value("companyId", "korvo-company-01");
        project.projectId = body.at("projectId").get<std::string>();
        project.name = body.at("name").get<std::string>();
        project.creationDate = body.value("creationDate", "2026-03-03T14:05:09");
        project.owner = body.value("owner", "inspector@korvo.example");
        project = platform.projects.begin(project);
        platform.objects.createBucket(project.bucket, project.companyId);
        for (const json &object : body.value("objects", json::array()))
            platform.objects.put(project.bucket, object.at("key").get<std::string>(), contentOf(object));
        if (body.value("uploaded", true))
            platform.projects.finish(project.companyId, project.projectId, body.value("importType", ""));
        answerJson(exchange, 200, {{"bucket", project.bucket}, {"folder", project.folder}});
    } catch (const json::exception &error) {
        throw Refusal(400, error.what());
    }
}

void getObject(Platform &platform, Exchange &exchange)
{
    const std::string key = queryValue(exchange.query, "key").value_or("");
    const auto object = platform.objects.open(queryValue(exchange.query, "bucket").value_or(""), key);
    if (!object)
        throw Refusal(404, "no such object", key);
    answerObject(exchange, object, lastPart(key));
}

const std::map<std::string, Handler> &controlRoutes()
{
    static const std::map<std::string, Handler> ROUTES = {
        {"GET control/journal", getJournal},     {"GET control/refusals", getRefusals},   {"GET control/faults", getFaults},
        {"GET control/faults/kinds", getFaultKinds}, {"POST control/faults", postFaults}, {"POST control/clock", postClock},
        {"GET control/state", getState},         {"POST control/accounts", postAccounts}, {"GET control/resets", getResets},
        {"POST control/transcoding", postTranscoding}, {"POST control/projects", postProjects}, {"GET control/object", getObject},
    };
    return ROUTES;
}

} // namespace

void handleControlRequest(Platform &platform, Exchange &exchange)
{
    // A page of some web site that is open in a browser here has no business with the platform.
    const std::string origin = exchange.request->get_header_value("Origin");
    if (!origin.empty() && origin != "https://" + exchange.request->get_header_value("Host"))
        throw Refusal(403, "not from another site", "Origin");
    const auto route = controlRoutes().find(exchange.request->method + " " + exchange.route);
    if (route == controlRoutes().end())
        throw Refusal(404, "unknown control route");
    route->second(platform, exchange);
}

} // namespace LocalPlatform
