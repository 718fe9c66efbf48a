#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Korvo::Web::Faults {

/// Where the platform lets a fault strike.
enum class Place { Request, Connection, Tunnel };

/// What the client meets when a fault has struck one exchange.
enum class Meets {
    GoodAnswer,       ///< the right answer, late or in an odd shape
    UnreadableAnswer, ///< a whole answer with a good status in which nothing can be read
    ShortenedAnswer,  ///< a whole answer whose last ten bytes are missing
    Failure,          ///< an end that is reported as an error
    BrokenLine,       ///< an end before anything of the answer could be used; Qt sends again by itself
    Silence,          ///< nothing, or nothing more
};

/// What a request is that a fault meets; some kinds concern only some requests.
struct RequestTraits
{
    bool bearer = false;     ///< carries the access token
    bool isSigned = false;   ///< carries a dated signature
    bool stores = false;     ///< makes the platform write to its disk
    bool streamed = false;   ///< its answer is a file, not something to be parsed
    bool redirected = false; ///< a redirect is followed
    bool oneWord = false;    ///< its answer is "true" or "false"
};

/// One column of the matrix: a kind of fault with its members.
struct FaultKind
{
    QString title;
    QString kind;
    Place place = Place::Request;
    Meets meets = Meets::GoodAnswer;
    bool isWorked = false; ///< the platform carries the request out nevertheless
    QString error;         ///< of a failure or a broken line, as Qt names it
    QJsonObject members;

    bool operator==(const FaultKind &other) const { return title == other.title; }
};

/// What one struck exchange comes to.
struct Strike
{
    Meets meets = Meets::GoodAnswer;
    QString error;
    bool isWorked = true;
    bool bodyBegins = false; ///< something of the body has come before the silence
};

const QVector<FaultKind> &faultKinds();
const FaultKind &faultKind(const QString &title);

/// Whether it takes hold of a tunnel that is there already; if not, and it is none on a request, of a new connection.
bool strikesRunningTunnel(const FaultKind &fault);

/// Whether the platform closes the connection without a reset, in the middle of an exchange.
bool closesInOrder(const FaultKind &fault);

/// The fault as the platform wants it described, without route and number.
QJsonObject description(const FaultKind &fault, const RequestTraits &request);

Strike strikeOf(const FaultKind &fault, const RequestTraits &request);

/// The host's code for an error that Qt names so.
int codeFor(const QString &error);

extern const QString REMOTE_CLOSED;
extern const QString UNAUTHORISED;
extern const QString NOT_FOUND;
extern const QString BAD_REQUEST;
extern const QString CONFLICT;
extern const QString TIME_OUT;

} // namespace Korvo::Web::Faults
