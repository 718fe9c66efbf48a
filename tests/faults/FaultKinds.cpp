#include "faults/FaultKinds.h"

namespace Korvo::Web::Faults {

const QString REMOTE_CLOSED = QStringLiteral("RemoteHostClosedError");
const QString UNAUTHORISED = QStringLiteral("AuthenticationRequiredError");
const QString NOT_FOUND = QStringLiteral("ContentNotFoundError");
const QString BAD_REQUEST = QStringLiteral("ProtocolInvalidOperationError");
const QString CONFLICT = QStringLiteral("ContentConflictError");
const QString TIME_OUT = QStringLiteral("TimeoutError");

namespace {

const QString BAD_CERTIFICATE = QStringLiteral("SslHandshakeFailedError");

constexpr bool WORKED = true;
constexpr bool LEFT = false; // not carried out

// So early in an answer that is to be parsed that nothing can be read of it.
constexpr int FEW_BYTES = 10;
constexpr int FEW_BYTES_OF_A_WORD = 2;

QJsonObject with(const char *name, const QJsonValue &value)
{
    return {{QLatin1String(name), value}};
}

FaultKind request(const char *kind, Meets meets, bool isWorked, const QString &error = {},
                  const QJsonObject &members = {})
{
    return {QLatin1String(kind), QLatin1String(kind), Place::Request, meets, isWorked, error, members};
}

FaultKind status(int code, const char *error)
{
    FaultKind fault = request("status", Meets::Failure, LEFT, QLatin1String(error), with("status", code));
    fault.title = QStringLiteral("status %1").arg(code);
    return fault;
}

FaultKind connection(const char *kind, Meets meets, const QString &error = {})
{
    return {QLatin1String(kind), QLatin1String(kind), Place::Connection, meets, LEFT, error, {}};
}

FaultKind tunnel(const char *kind, Meets meets, bool isWorked, const QString &error, const QJsonObject &members)
{
    return {QLatin1String(kind), QLatin1String(kind), Place::Tunnel, meets, isWorked, error, members};
}

QVector<FaultKind> allKinds()
{
    return {
        status(503, "ServiceUnavailableError"),
        status(500, "InternalServerError"),
        status(404, "ContentNotFoundError"),
        status(401, "AuthenticationRequiredError"),
        request("redirect", Meets::Failure, LEFT, QStringLiteral("TooManyRedirectsError")),
        request("expiredToken", Meets::Failure, LEFT, UNAUTHORISED),
        request("wrongClock", Meets::Failure, LEFT, UNAUTHORISED),
        request("diskFull", Meets::Failure, LEFT, QStringLiteral("UnknownServerError")),

        request("garbage", Meets::UnreadableAnswer, WORKED),
        request("emptyBody", Meets::UnreadableAnswer, WORKED),
        request("hugeBody", Meets::UnreadableAnswer, WORKED, {}, with("bytes", 2 * 1024 * 1024)),
        request("truncatedBody", Meets::UnreadableAnswer, WORKED),
        request("corruptBody", Meets::UnreadableAnswer, WORKED),
        request("contentLengthTooShort", Meets::ShortenedAnswer, WORKED),
        request("noContentLength", Meets::GoodAnswer, WORKED),
        request("delay", Meets::GoodAnswer, WORKED, {}, with("delayMs", 300)),
        request("trickle", Meets::GoodAnswer, WORKED, {}, with("bytesPerSecond", 2000)),

        request("closeWithoutAnswer", Meets::BrokenLine, LEFT, REMOTE_CLOSED),
        request("resetInRequest", Meets::BrokenLine, LEFT, REMOTE_CLOSED),
        request("resetBeforeAnswer", Meets::BrokenLine, WORKED, REMOTE_CLOSED),
        request("resetInHeaders", Meets::BrokenLine, WORKED, REMOTE_CLOSED),
        request("badStatusLine", Meets::BrokenLine, WORKED, REMOTE_CLOSED),
        request("resetAfterHeaders", Meets::Failure, WORKED, REMOTE_CLOSED),
        request("resetInBody", Meets::Failure, WORKED, REMOTE_CLOSED),
        request("cutBody", Meets::Failure, WORKED, REMOTE_CLOSED),
        request("resetAfterBody", Meets::GoodAnswer, WORKED),

        request("noAnswer", Meets::Silence, LEFT),
        request("stallInRequest", Meets::Silence, LEFT),
        request("stallInBody", Meets::Silence, WORKED),
        request("contentLengthTooLong", Meets::Silence, WORKED),

        connection("certificateWrongHost", Meets::Failure, BAD_CERTIFICATE),
        connection("certificateExpired", Meets::Failure, BAD_CERTIFICATE),
        connection("certificateSelfSigned", Meets::Failure, BAD_CERTIFICATE),
        connection("handshakeReset", Meets::Failure, REMOTE_CLOSED),
        connection("handshakeStall", Meets::Silence),

        tunnel("tunnelStatus", Meets::Failure, LEFT, QStringLiteral("UnknownNetworkError"), {}),
        tunnel("tunnelLatency", Meets::GoodAnswer, WORKED, {}, with("delayMs", 100)),
        tunnel("tunnelBandwidth", Meets::GoodAnswer, WORKED, {}, with("bytesPerSecond", 4 * 1024 * 1024)),
        tunnel("tunnelCut", Meets::BrokenLine, WORKED, REMOTE_CLOSED, with("bytes", FEW_BYTES)),
        tunnel("tunnelReset", Meets::BrokenLine, WORKED, REMOTE_CLOSED, with("bytes", FEW_BYTES)),
        tunnel("tunnelStall", Meets::Silence, WORKED, {}, with("bytes", FEW_BYTES)),
    };
}

bool isIn(const QString &text, std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        if (text == QLatin1String(name))
            return true;
    }
    return false;
}

/// Whether the request has what the fault is about; if not it is answered as ever.
bool concerns(const FaultKind &fault, const RequestTraits &request)
{
    if (fault.kind == QLatin1String("expiredToken"))
        return request.bearer;
    if (fault.kind == QLatin1String("wrongClock"))
        return request.isSigned;
    return fault.kind != QLatin1String("diskFull") || request.stores;
}

} // namespace

const QVector<FaultKind> &faultKinds()
{
    static const QVector<FaultKind> KINDS = allKinds();
    return KINDS;
}

const FaultKind &faultKind(const QString &title)
{
    for (const FaultKind &fault : faultKinds()) {
        if (fault.title == title)
            return fault;
    }
    qFatal("no kind of fault has the title %s", qPrintable(title));
}

bool strikesRunningTunnel(const FaultKind &fault)
{
    return fault.place == Place::Tunnel && fault.kind != QLatin1String("tunnelStatus");
}

bool closesInOrder(const FaultKind &fault)
{
    return isIn(fault.kind, {"closeWithoutAnswer", "cutBody"});
}

QJsonObject description(const FaultKind &fault, const RequestTraits &request)
{
    QJsonObject described = fault.members;
    described.insert(QStringLiteral("kind"), fault.kind);
    if (request.streamed)
        return described; // the platform's own choice: half of the file, the byte in its middle
    if (isIn(fault.kind, {"truncatedBody", "resetInBody", "cutBody", "stallInBody"}))
        described.insert(QStringLiteral("bytes"), request.oneWord ? FEW_BYTES_OF_A_WORD : FEW_BYTES);
    if (fault.kind == QLatin1String("corruptBody"))
        described.insert(QStringLiteral("bytes"), 0); // neither XML nor JSON begins with what it becomes
    return described;
}

Strike strikeOf(const FaultKind &fault, const RequestTraits &request)
{
    if (!concerns(fault, request))
        return {};
    Strike strike{fault.meets, fault.error, fault.isWorked, isIn(fault.kind, {"stallInBody", "contentLengthTooLong"})};
    if (fault.kind == QLatin1String("redirect") && request.redirected)
        strike.error = BAD_CERTIFICATE; // where it leads to, nobody has a certificate for
    return strike;
}

int codeFor(const QString &error)
{
    if (isIn(error, {"TimeoutError", "UnknownNetworkError"}))
        return 1;
    if (error == QLatin1String("InternalServerError"))
        return 2;
    return error == UNAUTHORISED ? 3 : 14;
}

} // namespace Korvo::Web::Faults
