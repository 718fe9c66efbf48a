#include "handles/Response.h"

#include "handles/AuthenticationResponses.h"
#include "handles/BucketResponses.h"
#include "handles/NetworkOutcome.h"
#include "handles/ProjectResponses.h"
#include "handles/TransferResponses.h"

template <>
Korvo::Web::ResponseData *QSharedDataPointer<Korvo::Web::ResponseData>::clone()
{
    return d->clone();
}

namespace Korvo::Web {

namespace {

// Signals name a response without its namespace. The full name, under which it is declared, is registered along with it.
template <typename T>
void registerResponse(const char *unqualifiedName)
{
    qRegisterMetaType<T>(unqualifiedName);
}

} // namespace

ResponseData::~ResponseData() = default;

ResponseData *ResponseData::clone() const
{
    return new ResponseData(*this);
}

Response::Response()
    : Response(new ResponseData)
{
}

Response::Response(ResponseData *newData)
    : d(newData)
{
}

Response::~Response() = default;

bool Response::isSuccess() const
{
    return d->success;
}

bool Response::isCancelled() const
{
    return d->cancelled;
}

bool Response::isAuthenticationRequired() const
{
    return d->authenticationRequired;
}

Error Response::error() const
{
    return d->error;
}

void Response::setOutcome(QNetworkReply::NetworkError networkError)
{
    applyOutcome(networkError);
}

Error Response::applyOutcome(QNetworkReply::NetworkError networkError)
{
    const Error code = errorFor(networkError);
    ResponseData &outcome = changeableData();
    outcome.error = code;
    outcome.success = code == Error::None;
    outcome.cancelled |= code == Error::Cancelled;
    outcome.authenticationRequired |= code == Error::AuthenticationRequired;
    return code;
}

const ResponseData &Response::data() const
{
    return *d;
}

ResponseData &Response::changeableData()
{
    return *d;
}

void registerResponseMetaTypes()
{
    registerResponse<LoginResponse>("LoginResponse");
    registerResponse<Check2StepAuthenticationResponse>("Check2StepAuthenticationResponse");
    registerResponse<ClientCredentialsResponse>("ClientCredentialsResponse");
    registerResponse<BeginUploadProjectResponse>("BeginUploadProjectResponse");
    registerResponse<BucketCreateResponse>("BucketCreateResponse");
    registerResponse<BucketGetResponse>("BucketGetResponse");
    registerResponse<ObjectCleanupResponse>("ObjectCleanupResponse");
    registerResponse<ObjectDeleteResponse>("ObjectDeleteResponse");
    registerResponse<ObjectExistsResponse>("ObjectExistsResponse");
    registerResponse<ObjectSpaceResponse>("ObjectSpaceResponse");
    registerResponse<ListOfFilesFromLocationResponse>("ListOfFilesFromLocationResponse");
    registerResponse<UserProjectsResponse>("UserProjectsResponse");
    registerResponse<UploadProjectsStatusResponse>("UploadProjectsStatusResponse");
    registerResponse<SingleProjectFileDownloadResponse>("SingleProjectFileDownloadResponse");
    registerResponse<UploadFileResponse>("UploadFileResponse");
    registerResponse<UploadFileMultiPartInitResponse>("UploadFileMultiPartInitResponse");
    registerResponse<UploadFileMultiPartFinishedResponse>("UploadFileMultiPartFinishedResponse");
    registerResponse<DownloadFileResponse>("DownloadFileResponse");
    registerResponse<StatusResponse>("StatusResponse");
}

} // namespace Korvo::Web
