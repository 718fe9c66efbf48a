// Every parser reads every text: replies get mixed up, and none may mind.
#include "FuzzTarget.h"

#include "handles/AuthenticationResponses.h"
#include "handles/BucketResponses.h"
#include "handles/ProjectResponses.h"
#include "handles/TransferResponses.h"
#include "support/LogCapture.h"

namespace Korvo::Web::Fuzz {

namespace {

template <typename Answer>
Answer parsed(const QString &text)
{
    Answer answer;
    answer.parse(text);
    return answer;
}

void requireUntouchedOutcome(const Response &response)
{
    require(response.isSuccess() && response.error() == Error::None && !response.isCancelled()
                && !response.isAuthenticationRequired(),
            "parsing leaves the outcome as the network set it");
}

/// What one parser makes of the text, in words that can be compared.
template <typename Answer, typename Describe>
QString description(const QString &text, Describe describe)
{
    const Answer answer = parsed<Answer>(text);
    requireUntouchedOutcome(answer);
    const QString words = describe(answer);
    Answer another = answer;
    another.parse(QString());
    require(describe(answer) == words, "a copy that parses something else leaves the original alone");
    require(describe(another) == describe(Answer()), "nothing of an earlier text stays");
    another.parse(text);
    require(describe(another) == words, "the same text means the same twice");
    return words;
}

int occurrences(const QString &text, const char *name)
{
    return text.count(QLatin1String(name));
}

QString describeListing(const ListOfFilesFromLocationResponse &answer)
{
    QString words = QString::number(answer.count());
    const QList<RemoteFileEntry> entries = answer.entries();
    for (const RemoteFileEntry &entry : entries) {
        words += QStringList{QString(),
                             entry.fileName,
                             entry.key,
                             entry.modifiedDate.toString(Qt::ISODateWithMs),
                             QString::number(entry.size),
                             entry.type,
                             entry.directory}
                     .join(QLatin1Char('|'));
    }
    return words;
}

QString describeProjects(const UserProjectsResponse &answer)
{
    QString words;
    const QList<ProjectInfo> projects = answer.projects();
    for (const ProjectInfo &project : projects) {
        require(project.isImportedByWeb(), "the listing says nothing about who imported a project");
        words += QStringList{QString(),
                             project.projectName(),
                             project.projectId(),
                             project.projectFolderName(),
                             project.creationDate().toString(Qt::ISODateWithMs),
                             QString::number(project.diskUsage())}
                     .join(QLatin1Char('|'));
    }
    return words;
}

QString describeLinks(const SingleProjectFileDownloadResponse &answer)
{
    QString words;
    const QList<SingleMediaFileLinkData> links = answer.links();
    for (const SingleMediaFileLinkData &link : links)
        words += QStringList{QString(), link.url, link.type, link.name}.join(QLatin1Char('|'));
    return words;
}

QString describeStatuses(const UploadProjectsStatusResponse &answer)
{
    QString words;
    const QList<UploadStatusInfo> statuses = answer.statuses();
    for (const UploadStatusInfo &info : statuses)
        words += QStringList{QString(), info.projectId, QString::number(info.status)}.join(QLatin1Char('|'));
    return words;
}

void checkLists(const QString &text)
{
    description<ListOfFilesFromLocationResponse>(text, describeListing);
    description<UserProjectsResponse>(text, describeProjects);
    description<SingleProjectFileDownloadResponse>(text, describeLinks);
    description<UploadProjectsStatusResponse>(text, describeStatuses);
    require(parsed<ListOfFilesFromLocationResponse>(text).entries().size() <= occurrences(text, "ObjectModel"),
            "no more files than the listing names");
    require(parsed<UserProjectsResponse>(text).projects().size() <= occurrences(text, "ProjectInfo"),
            "no more projects than the list names");
    require(parsed<SingleProjectFileDownloadResponse>(text).links().size() <= occurrences(text, "media-item"),
            "no more links than the answer names");
}

void checkSingleValues(const QString &text)
{
    const QString name = description<BucketCreateResponse>(text, [](const auto &answer) { return answer.name(); });
    const BucketGetResponse bucket = parsed<BucketGetResponse>(text);
    requireUntouchedOutcome(bucket);
    require(bucket.name() == name, "both bucket answers find the same name");
    const bool exists = parsed<ObjectExistsResponse>(text).exists();
    require(bucket.exists() == (exists || !name.isEmpty()), "a bucket exists when it is said or named");
    require(name.isEmpty() || text.contains(QLatin1String("Name")), "a name has an element");
    require(!exists || (text.contains(QLatin1String("Exist")) && text.contains(QLatin1String("true"))),
            "an object exists only when that is said");
    description<BeginUploadProjectResponse>(text, [](const auto &answer) { return answer.bucketName(); });
    description<UploadFileMultiPartInitResponse>(text, [](const auto &answer) { return answer.multipartUploadId(); });
    description<ObjectCleanupResponse>(text, [](const auto &answer) { return QString::number(answer.succeeded()); });
    description<ObjectDeleteResponse>(text,
                                      [](const auto &answer) { return QString::number(answer.deletedFilesSize()); });
    description<ObjectSpaceResponse>(text, [](const auto &answer) { return QString::number(answer.usedSpace()); });
}

void checkCredentials(const QString &text)
{
    description<ClientCredentialsResponse>(text, [](const ClientCredentialsResponse &answer) {
        return QStringList{answer.url(), answer.clientId(), answer.secretKey(), answer.currentDate()}.join(
            QLatin1Char('|'));
    });
    require(!serverDateFrom(text).isValid() || text.contains(QLatin1String("CurrentDate")), "a date has an element");
    const bool authenticated = parsed<Check2StepAuthenticationResponse>(text).authenticated();
    require(authenticated == (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0),
            "only the bare word counts");
}

void checkLogin(const QString &text)
{
    const TestSupport::LogCapture log(TestSupport::LogCapture::Watch::Nothing);
    const LoginResponse login = parsed<LoginResponse>(text);
    const bool unreadable = login.error() == Error::UnreadableLogin;
    require(log.count() == (unreadable ? 1 : 0), "only what cannot be read is logged");
    require(!login.loggedIn() || (login.isSuccess() && login.error() == Error::None),
            "who is in is in without an error");
    require(login.loggedIn() || login.accessToken().isEmpty(), "no token without a login");
    require(unreadable != login.isSuccess(), "a refusal is an exchange that went well");

    LoginResponse cancelled;
    cancelled.setOutcome(QNetworkReply::OperationCanceledError);
    cancelled.parse(text);
    require(!cancelled.loggedIn() && cancelled.error() == Error::Cancelled, "a cancelled login is not read");
    require(log.count() == (unreadable ? 1 : 0), "and not logged");
}

} // namespace

void runTarget(const QByteArray &input)
{
    const QString text = QString::fromUtf8(input);
    checkSingleValues(text);
    checkLists(text);
    checkCredentials(text);
    checkLogin(text);
}

} // namespace Korvo::Web::Fuzz
