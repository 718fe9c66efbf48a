#pragma once

#include "faults/FaultKinds.h"

#include <QtCore/QStringList>

namespace Korvo::Web::Faults {

/// What the host does, and with it in which company a request is sent.
enum class Scenario {
    LogIn,          ///< with a password
    LogInAskedCode, ///< up to the question for the second factor
    LogInWithCode,
    LogInAndFetch, ///< a login, then a download that shows whether signed requests are accepted
    Ask,           ///< a question or an order of one request, three times
    FetchData,     ///< the download of one file of data, three times
    Upload,        ///< of three small files
    UploadParts,   ///< of a file in parts
    UploadVideos,  ///< three times a project with one video
    AbortParts,    ///< of an upload whose first part is not acknowledged
    AbortFile,     ///< of an upload whose first file is not acknowledged
    Download,      ///< of three files
};

/// One row of the matrix.
struct RequestKind
{
    QString title;
    QString route; ///< as the platform names it; "*" at the end stands for anything
    Scenario scenario = Scenario::Ask;
    QString handle; ///< whose name stands in the log; empty when failures are not logged
    RequestTraits traits;
    bool isSentAgain = false;
    int waitSeconds = 0; ///< after which the library gives up waiting for the answer; 0 for ever
    int occurrences = 1; ///< in the scenario
    QStringList
        steps; ///< the scenario's requests in their order when nothing is in the way, after the login if it is none

    bool isDriven() const
    {
        return scenario == Scenario::Ask || scenario == Scenario::FetchData || scenario == Scenario::UploadVideos;
    }
    bool isLogin() const;
    bool isUpload() const;
};

const QVector<RequestKind> &requestKinds();
const RequestKind &requestKind(const QString &title);

/// Where an upload is held up until the host aborts it; empty for scenarios without an abort.
QString heldRoute(Scenario scenario);

bool isServiceRoute(const QString &route);

/// Whether a request on the route has a body; if not it has come whole when its headers have.
bool carriesBody(const QString &route);

/// A project with pictures that the platform has from the start.
extern const QString STORED_PROJECT;

namespace Route {
extern const QString CHECK;
extern const QString TOKEN;
extern const QString CLOCK;
extern const QString CREDENTIALS;
extern const QString STATUSES;
extern const QString BEGIN;
extern const QString UPLOADED;
extern const QString CANCEL;
extern const QString EXISTS;
extern const QString BUCKET;
extern const QString LISTING;
extern const QString PUT_FILE;
extern const QString INIT;
extern const QString PART;
extern const QString COMPLETE;
extern const QString ABORT;
extern const QString TRANSCODING;
extern const QString FILE;
} // namespace Route

} // namespace Korvo::Web::Faults
