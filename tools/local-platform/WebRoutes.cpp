#include "Answers.h"
#include "BodyReader.h"
#include "Refusal.h"
#include "Routes.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <map>

namespace LocalPlatform {
namespace {

using Handler = std::function<void(Platform &, Exchange &)>;

const std::string BEARER = "Bearer ";

Account authenticated(Platform &platform, Exchange &exchange)
{
    const std::string value = exchange.request->get_header_value("Authorization");
    if (!startsWith(value, BEARER))
        throw Refusal(401, "a bearer token is needed", "Authorization");
    const std::string token = value.substr(BEARER.size());
    if (exchange.hasFault("expiredToken"))
        platform.accounts.revokeToken(token);
    const auto account = platform.accounts.accountForToken(token);
    if (!account)
        throw Refusal(401, "the bearer token is unknown or has expired", "Authorization");
    exchange.user = account->email;
    return *account;
}

/// Items of the login form. Split at "&" first, and only the user name is decoded: clients send password and code as
/// they are, so one with an "&" is cut off there.
std::map<std::string, std::string> loginForm(const std::string &body)
{
    std::map<std::string, std::string> items;
    for (const std::string &item : split(body, '&')) {
        const std::size_t equals = item.find('=');
        if (equals != std::string::npos)
            items.emplace(item.substr(0, equals), item.substr(equals + 1));
    }
    items["username"] = percentDecoded(items["username"]).value_or(std::string());
    return items;
}

void answerInvalidGrant(Exchange &exchange, const char *description)
{
    answerJson(exchange, 400, {{"error", "invalid_grant"}, {"error_description", description}});
}

nlohmann::json tokenAnswer(const Account &account, const IssuedToken &token, bool persistent)
{
    return {{"access_token", token.text}, {"token_type", "bearer"}, {"expires_in", account.tokenLifetime},
            {"userName", account.email}, {"userFirstName", account.firstName}, {"userLastName", account.lastName},
            {"userCompanyId", account.companyId}, {"userRoles", account.roles}, {".persistent", persistent ? "true" : "false"},
            {".issued", mailDate(token.issued)}, {".expires", mailDate(token.expires)}};
}

void handleLogin(Platform &platform, Exchange &exchange)
{
    requireContentType(exchange, "application/x-www-form-urlencoded");
    if (exchange.request->has_header("Authorization") || exchange.request->has_header("X-KorvoService-ClientId"))
        throw Refusal(400, "a login carries neither Authorization nor client id", "Authorization");
    auto form = loginForm(exchange.request->body);
    if (form["grant_type"] != "password")
        throw Refusal(400, "the grant type is not password", "grant_type");
    exchange.user = form["username"];
    const auto account = platform.accounts.checkPassword(form["username"], form["password"]);
    if (!account)
        return answerInvalidGrant(exchange, "The user name or password is incorrect.");
    if (!account->secondFactor.empty() && form["twoFactorAuthenticationCode"] != account->secondFactor)
        return answerInvalidGrant(exchange, "The second factor is missing or incorrect.");
    answerJson(exchange, 200, tokenAnswer(*account, platform.accounts.issueToken(*account), form["keepInMind"] == "true"));
}

void handleTwoStepCheck(Platform &platform, Exchange &exchange)
{
    const auto user = queryValue(exchange.query, "username");
    if (!user || user->empty())
        throw Refusal(400, "missing parameter username", "username");
    const auto account = platform.accounts.find(*user);
    answerText(exchange, 200, account && !account->secondFactor.empty() ? "true" : "false", "text/plain; charset=utf-8");
}

void handleClientCredentials(Platform &platform, Exchange &exchange)
{
    const Account account = authenticated(platform, exchange);
    const auto company = platform.accounts.company(account.companyId);
    if (!company)
        throw Refusal(403, "the account has no company");
    answerXml(exchange, 200, "<CompanyKorvoService>" + element("ClientId", company->clientId) + element("CurrentDate", isoDate(exchange.now)) +
                                 element("SecretKey", company->secretKey) + element("Url", platform.serviceRootFor(exchange.host)) +
                                 "</CompanyKorvoService>");
}

void handleResetPassword(Platform &platform, Exchange &exchange)
{
    requireContentType(exchange, "application/xml");
    BodyReader body(exchange.request->body, accountRoot("AccountApiController.ResetPasswordBindingModel"));
    const std::string user = body.takeFilled("UserName");
    body.end();
    platform.accounts.recordReset(user);
    // The same answer for an unknown user: who has an account is nobody's business.
    answerXml(exchange, 200, "<ResetPasswordResult>true</ResetPasswordResult>");
}

std::string projectElement(Platform &platform, const Project &project)
{
    return "<ProjectInfo>" + element("DiskUsage", std::to_string(platform.objects.usedSpace(project.bucket, {}))) +
           element("ProjectDate", project.creationDate) + element("ProjectFolderName", project.folder) +
           element("ProjectId", project.projectId) + element("ProjectName", project.name) + "</ProjectInfo>";
}

void handleProjects(Platform &platform, Exchange &exchange)
{
    const Account account = authenticated(platform, exchange);
    const auto pageSize = parsedDecimal(queryValue(exchange.query, "pageSize").value_or(""));
    if (!pageSize || *pageSize < 1)
        throw Refusal(400, "pageSize is not a positive number", "pageSize");
    std::string body = "<ArrayOfProjectInfo>";
    std::int64_t left = *pageSize;
    for (const Project &project : platform.projects.listed(account.companyId))
        if (left-- > 0)
            body += projectElement(platform, project);
    answerXml(exchange, 200, body + "</ArrayOfProjectInfo>");
}

void handleUploadStatuses(Platform &platform, Exchange &exchange)
{
    const Account account = authenticated(platform, exchange);
    requireContentType(exchange, "application/json");
    const auto asked = nlohmann::json::parse(exchange.request->body, nullptr, false);
    if (!asked.is_object() || asked.size() != 1 || !asked.contains("Projects") || !asked["Projects"].is_array())
        throw Refusal(400, "expected an object with the one member Projects", "Projects");
    nlohmann::json answer = nlohmann::json::array();
    for (const auto &id : asked["Projects"]) {
        if (!id.is_string())
            throw Refusal(400, "a project id is a string", "Projects");
        const auto project = platform.projects.find(account.companyId, id.get<std::string>());
        answer.push_back({{"status", static_cast<int>(project ? project->state : ProjectState::Unknown)}, {"projectId", id}});
    }
    answerJson(exchange, 200, answer);
}

std::string takeCreationDate(BodyReader &body)
{
    const std::string text = body.take("CreationDate");
    const auto digits = parsedIsoDigits(text);
    if (!digits || !endsWith(text, "Z"))
        throw Refusal(400, "not an ISO date in UTC", "CreationDate");
    return *digits;
}

void handleUploadInit(Platform &platform, Exchange &exchange)
{
    const Account account = authenticated(platform, exchange);
    requireContentType(exchange, "application/xml");
    BodyReader body(exchange.request->body, webRoot("InitUploadProcesModel"));
    Project project;
    project.companyId = body.takeFilled("CompanyId");
    project.creationDate = takeCreationDate(body);
    project.owner = body.takeFilled("Email");
    if (body.take("HasPermissionsToOverrideAllProject") != "true")
        throw Refusal(400, "expected true", "HasPermissionsToOverrideAllProject");
    project.projectId = body.takeFilled("ProjectId");
    project.name = body.takeFilled("ProjectName");
    body.end();
    if (project.companyId != account.companyId)
        throw Refusal(403, "the company is not the user's", "CompanyId");
    if (lowered(project.owner) != lowered(account.email))
        throw Refusal(403, "the e-mail address is not the user's", "Email");
    project = platform.projects.begin(project);
    answerXml(exchange, 200, "<InitUploadProcesResult>" + element("BucketName", project.bucket) + element("ProjectFolderName", project.folder) +
                                 "</InitUploadProcesResult>");
}

std::string takeImportType(BodyReader &body)
{
    if (body.nextIs("OrvandeImport")) {
        if (body.take("OrvandeImport") != "true")
            throw Refusal(400, "expected true", "OrvandeImport");
        return "OrvandeImport";
    }
    if (!body.nextIs("ImportType"))
        return {};
    if (body.take("ImportType") != "Quickview")
        throw Refusal(400, "unknown import type", "ImportType");
    return "Quickview";
}

void answerProcessResult(Exchange &exchange, bool found)
{
    if (!found)
        throw Refusal(404, "unknown project", "ProjectId");
    answerXml(exchange, 200, "<UploadProcesResult>true</UploadProcesResult>");
}

void handleUploaded(Platform &platform, Exchange &exchange)
{
    const Account account = authenticated(platform, exchange);
    requireContentType(exchange, "application/xml");
    BodyReader body(exchange.request->body, webRoot("UploadProcesMessageModel"));
    const std::string importType = takeImportType(body);
    const std::string projectId = body.takeFilled("ProjectId");
    body.end();
    answerProcessResult(exchange, platform.projects.finish(account.companyId, projectId, importType));
}

void handleUploadCancel(Platform &platform, Exchange &exchange)
{
    const Account account = authenticated(platform, exchange);
    requireContentType(exchange, "application/xml");
    BodyReader body(exchange.request->body, webRoot("UploadProcesMessageModel"));
    const std::string projectId = body.takeFilled("ProjectId");
    body.end();
    answerProcessResult(exchange, platform.projects.cancel(account.companyId, projectId));
}

bool isMedia(const std::string &key)
{
    return (startsWith(key, "Picture/") || startsWith(key, "Video/")) && key.find("/web/") == std::string::npos;
}

std::string mediaItem(Platform &platform, const Exchange &exchange, const Project &project, const std::string &key)
{
    return "<media-item>" + element("url", platform.mediaLink(exchange.host, project.bucket, key)) +
           element("type", startsWith(key, "Video/") ? "video" : "picture") + element("name", lastPart(key)) + "</media-item>";
}

void answerMediaLinks(Platform &platform, Exchange &exchange, const Project &project, const std::string &fileName)
{
    std::string items;
    for (const StoredObject &object : platform.objects.list(project.bucket, {})) {
        const bool wanted = fileName.empty() ? isMedia(object.key)
                                             : object.key == fileName || (isMedia(object.key) && lastPart(object.key) == fileName) ||
                                                   object.key == "/" + fileName;
        if (wanted)
            items += mediaItem(platform, exchange, project, object.key);
    }
    if (items.empty() && !fileName.empty())
        throw Refusal(404, "no such file in the project", fileName);
    answerXml(exchange, 200, "<media-items>" + items + "</media-items>");
}

/// One element for each video or picture of sections ("/Sec/") or nodes ("/Nod/").
std::string observedElements(Platform &platform, const Project &project, const std::string &folder, const std::string &name)
{
    std::string elements;
    for (const StoredObject &object : platform.objects.list(project.bucket, {}))
        if (isMedia(object.key) && object.key.find(folder) != std::string::npos)
            elements += "<" + name + ">" + element("Media", object.key) + element("Size", std::to_string(object.size)) + "</" + name + ">";
    return elements;
}

void answerQuickview(Platform &platform, Exchange &exchange, const Project &project, const std::string &part)
{
    if (part == "Quickview")
        answerXml(exchange, 200, "<QuickviewProject>" + element("ProjectDate", project.creationDate) + element("ProjectId", project.projectId) +
                                     element("ProjectName", project.name) + "</QuickviewProject>");
    else if (part == "Quickview/Surveys")
        answerXml(exchange, 200, "<Surveys>" + observedElements(platform, project, "/Sec/", "Survey") + "</Surveys>");
    else
        answerXml(exchange, 200, "<Manholes>" + observedElements(platform, project, "/Nod/", "Manhole") + "</Manholes>");
}

/// Routes below one project: "{id}/Quickview" and what follows.
void handleProjectPart(Platform &platform, Exchange &exchange)
{
    const Account account = authenticated(platform, exchange);
    const std::string path = percentDecoded(exchange.route).value_or(std::string());
    const std::string rest = path.substr(std::string("api/Projects/").size());
    const std::size_t slash = rest.find('/');
    const std::string part = slash == std::string::npos ? std::string() : rest.substr(slash + 1);
    const auto project = platform.projects.find(account.companyId, rest.substr(0, slash));
    if (!project)
        throw Refusal(404, "unknown project", "ProjectId");
    const std::string media = "Quickview/Media/";
    if (part == "Quickview" || part == "Quickview/Surveys" || part == "Quickview/Manholes")
        answerQuickview(platform, exchange, *project, part);
    else if (part == media + "Download")
        answerMediaLinks(platform, exchange, *project, {});
    else if (startsWith(part, media) && endsWith(part, "/Download"))
        answerMediaLinks(platform, exchange, *project, part.substr(media.size(), part.size() - media.size() - std::string("/Download").size()));
    else
        throw Refusal(404, "unknown route");
}

struct Route
{
    const char *method;
    Handler handler;
};

const std::map<std::string, Route> &webRoutes()
{
    static const std::map<std::string, Route> ROUTES = {
        {"Token", {"PUT", handleLogin}},
        {"api/Users/CheckTwoStepAuthentication", {"GET", handleTwoStepCheck}},
        {"api/Projects/companykorvoservice", {"GET", handleClientCredentials}},
        {"api/Account/ResetPassword", {"POST", handleResetPassword}},
        {"api/Projects", {"GET", handleProjects}},
        {"api/UploadProject/Statuses", {"POST", handleUploadStatuses}},
        {"api/UploadProject/Init", {"POST", handleUploadInit}},
        {"api/UploadProject/Uploaded", {"POST", handleUploaded}},
        {"api/UploadProject/Cancel", {"POST", handleUploadCancel}},
    };
    return ROUTES;
}

} // namespace

void handleWebRequest(Platform &platform, Exchange &exchange)
{
    static const Route PROJECT_PART = {"GET", handleProjectPart};
    const auto found = webRoutes().find(exchange.route);
    const bool ofProject = found == webRoutes().end() && startsWith(exchange.route, "api/Projects/");
    if (found == webRoutes().end() && !ofProject)
        throw Refusal(404, "unknown route");
    const Route &route = ofProject ? PROJECT_PART : found->second;
    if (exchange.request->method != route.method)
        throw Refusal(405, std::string("this route takes ") + route.method);
    route.handler(platform, exchange);
}

} // namespace LocalPlatform
