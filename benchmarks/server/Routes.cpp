#include "server/Routes.h"

#include "support/Listing.h"
#include "support/Workload.h"

#include "Text.h"

#include <ctime>
#include <map>

namespace Korvo::Bench {
namespace {

const std::string SERVICE_PATH = "/korvoservice/";
const std::string WEBDAV = "webdav/";
const std::string UPLOAD_BUCKET = "sink";
constexpr std::time_t TOKEN_SECONDS = 24 * 3600;

using Handler = Answer (*)(const std::string &body);

/// Text of the first element of this name.
std::string textOf(const std::string &xml, const std::string &name)
{
    const std::size_t start = xml.find('<' + name + '>');
    const std::size_t end = xml.find("</" + name + '>', start);
    if (start == std::string::npos || end == std::string::npos)
        return {};
    return xml.substr(start + name.size() + 2, end - start - name.size() - 2);
}

std::string timeText(std::time_t time, const char *pattern)
{
    std::tm parts{};
    gmtime_r(&time, &parts);
    char text[64];
    return std::string(text, std::strftime(text, sizeof text, pattern, &parts));
}

std::string isoNow()
{
    return timeText(std::time(nullptr), "%Y-%m-%dT%H:%M:%SZ");
}

Answer xml(const std::string &text)
{
    Answer answer;
    answer.text = text;
    return answer;
}

Answer ofType(const std::string &type, const std::string &text)
{
    Answer answer = xml(text);
    answer.type = type;
    return answer;
}

Answer twoStepCheck(const std::string &)
{
    return ofType("text/plain; charset=utf-8", "false");
}

Answer token(const std::string &)
{
    const std::time_t now = std::time(nullptr);
    const char *const MAIL_DATE = "%a, %d %b %Y %H:%M:%S GMT";
    return ofType(
        "application/json; charset=utf-8",
        R"({"access_token":"bench","token_type":"bearer","expires_in":86400,"userName":"inspector@korvo.example",)"
        R"("userFirstName":"Ines","userLastName":"Inspector","userCompanyId":"korvo-company-01",)"
        R"("userRoles":"COMPANY_OPERATOR",".persistent":"true",".issued":")"
            + timeText(now, MAIL_DATE) + R"(",".expires":")" + timeText(now + TOKEN_SECONDS, MAIL_DATE) + "\"}");
}

Answer status(const std::string &)
{
    return xml("<StatusResponse><CurrentDate>" + isoNow() + "</CurrentDate></StatusResponse>");
}

Answer credentials(const std::string &)
{
    return xml("<CompanyKorvoService><ClientId>bench-client</ClientId><CurrentDate>" + isoNow()
               + "</CurrentDate><SecretKey>bench-secret</SecretKey><Url>" SERVICE_ROOT "</Url></CompanyKorvoService>");
}

Answer begin(const std::string &)
{
    return xml("<InitUploadProcesResult><BucketName>" + UPLOAD_BUCKET + "</BucketName></InitUploadProcesResult>");
}

Answer noticed(const std::string &)
{
    return xml("<UploadProcesResult>true</UploadProcesResult>");
}

Answer statuses(const std::string &)
{
    return ofType("application/json; charset=utf-8", "[]");
}

Answer exists(const std::string &)
{
    return xml("<ObjectExistsResponse><Exist>false</Exist></ObjectExistsResponse>");
}

Answer createBucket(const std::string &body)
{
    return xml("<BucketResponse><Name>" + textOf(body, "BucketName") + "</Name></BucketResponse>");
}

// A bucket whose name ends in a workload holds that; every other one is empty.
Answer listing(const std::string &body)
{
    return xml(listingXml(Workload::atEndOf(textOf(body, "BucketName"))));
}

Answer putFile(const std::string &)
{
    return xml("<PutFileResponse><Size>0</Size></PutFileResponse>");
}

// Made of the key, so that two clients send the same bodies.
Answer beginMultipart(const std::string &body)
{
    return xml("<InitMultipartUploadResponse><MultipartUploadId>upload-"
               + std::to_string(std::hash<std::string>()(textOf(body, "OutputFilePath")))
               + "</MultipartUploadId></InitMultipartUploadResponse>");
}

Answer putPart(const std::string &)
{
    return xml("<PutMultipartUploadResponse><PartNumber>1</PartNumber></PutMultipartUploadResponse>");
}

Answer completeMultipart(const std::string &)
{
    return xml("<CompleteMultipartUploadResponse><Key></Key></CompleteMultipartUploadResponse>");
}

Answer transcode(const std::string &)
{
    return xml("<PutJobForEachPresetResponse></PutJobForEachPresetResponse>");
}

Answer file(const std::string &route)
{
    const std::string path = LocalPlatform::percentDecoded(route.substr(WEBDAV.size())).value_or(std::string());
    const std::size_t slash = path.find('/');
    Answer answer = ofType("application/octet-stream", {});
    answer.fileBytes = Workload::atEndOf(path.substr(0, slash)).bytes;
    answer.fileStart = contentStart(std::string_view(path).substr(slash + 1));
    return answer;
}

const std::map<std::string, Handler> &routes()
{
    static const std::map<std::string, Handler> ROUTES = {
        {"Token", token},
        {"api/Users/CheckTwoStepAuthentication", twoStepCheck},
        {"api/Projects/companykorvoservice", credentials},
        {"api/UploadProject/Init", begin},
        {"api/UploadProject/Uploaded", noticed},
        {"api/UploadProject/Cancel", noticed},
        {"api/UploadProject/Statuses", statuses},
        {"api/Status/Get", status},
        {"api/bucket", createBucket},
        {"api/bucket/exists", exists},
        {"api/bucket/listoffilesfromlocations", listing},
        {"api/bucket/putfile", putFile},
        {"api/multipartupload/init", beginMultipart},
        {"api/multipartupload/upload", putPart},
        {"api/multipartupload/complete", completeMultipart},
        {"api/job/putforeachpresets", transcode},
    };
    return ROUTES;
}

} // namespace

Answer answerTo(std::string_view target, const std::string &body)
{
    const std::string path(target.substr(0, target.find('?')));
    const bool ofService = LocalPlatform::startsWith(path, SERVICE_PATH);
    const std::string route = path.substr(ofService ? SERVICE_PATH.size() : 1);
    if (LocalPlatform::startsWith(route, WEBDAV))
        return file(route);
    const auto found = routes().find(route);
    if (found != routes().end())
        return found->second(body);
    Answer answer = xml("<Refused/>");
    answer.status = 404;
    return answer;
}

} // namespace Korvo::Bench
