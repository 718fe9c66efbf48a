#pragma once

#include "handles/RequestHandle.h"
#include "support/ScriptedServer.h"

#include <NQKorvoWeb/WebCommunicator.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QMap>
#include <QtCore/QStringList>
#include <QtCore/QTimer>

#include <algorithm>
#include <atomic>
#include <memory>

namespace Korvo::Web::TestSupport {

namespace Route {

inline const QByteArray BEGIN = "/api/UploadProject/Init";
inline const QByteArray UPLOADED = "/api/UploadProject/Uploaded";
inline const QByteArray CANCEL = "/api/UploadProject/Cancel";
inline const QByteArray EXISTS = "/korvoservice/api/bucket/exists";
inline const QByteArray BUCKET = "/korvoservice/api/bucket";
inline const QByteArray LISTING = "/korvoservice/api/bucket/listoffilesfromlocations";
inline const QByteArray PUT_FILE = "/korvoservice/api/bucket/putfile";
inline const QByteArray MULTI_INIT = "/korvoservice/api/multipartupload/init";
inline const QByteArray MULTI_PART = "/korvoservice/api/multipartupload/upload";
inline const QByteArray MULTI_COMPLETE = "/korvoservice/api/multipartupload/complete";
inline const QByteArray MULTI_ABORT = "/korvoservice/api/multipartupload/abort";
inline const QByteArray TRANSCODE = "/korvoservice/api/job/putforeachpresets";
inline const QByteArray FILES = "/korvoservice/webdav/bucket/";

} // namespace Route

/// Text of the first element @p name; null when there is none.
inline QByteArray textOf(const QByteArray &xml, const QByteArray &name)
{
    const int start = xml.indexOf('<' + name + '>');
    const int end = xml.indexOf("</" + name + '>', start);
    return start < 0 || end < 0 ? QByteArray() : xml.mid(start + name.size() + 2, end - start - name.size() - 2);
}

/// Bytes that repeat nowhere near, other ones for each @p seed.
inline QByteArray patternOf(int bytes, quint32 seed = 1)
{
    QByteArray pattern(bytes, Qt::Uninitialized);
    quint32 state = seed * 2654435761U + 1;
    for (char &byte : pattern) {
        state = state * 1664525U + 1013904223U;
        byte = char(state >> 24);
    }
    return pattern;
}

/// Runs the event loop until the condition holds, or the limit has passed; says whether it holds.
///
/// Unlike the QTRY macros it never sleeps: a transfer that has a step for every 16 KiB would crawl behind them.
template <class Condition>
bool waitUntil(Condition condition, int limitMs = 15000)
{
    QEventLoop loop;
    QTimer look;
    const QDeadlineTimer limit(limitMs);
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (condition() || limit.hasExpired())
            loop.quit();
    });
    look.start(1);
    loop.exec();
    return condition();
}

/// One file in a listing.
struct ListedFile
{
    QByteArray key;
    qint64 size = 0;
    QByteArray type = "1";
};

inline QByteArray listingOf(const QList<ListedFile> &files, int count = -1)
{
    QByteArray text = "<FileListResponse><Count>" + QByteArray::number(count < 0 ? files.size() : count) + "</Count>";
    for (const ListedFile &file : files)
        text += "<ObjectModel><FileName>" + file.key.mid(file.key.lastIndexOf('/') + 1) + "</FileName><Key>" + file.key
                + "</Key><Size>" + QByteArray::number(file.size) + "</Size><Type>" + file.type + "</Type></ObjectModel>";
    return text + "</FileListResponse>";
}

/// The platform as the transfers need it: each request is answered as a healthy one does, until a test says otherwise.
struct TransferPlatform
{
    TransferPlatform();

    /// Answer to all requests for a file of the bucket, whatever its name.
    void serve(const QByteArray &key, const ScriptedAnswer &answer) { server.always(isForFile(key), answer); }
    /// The same for the next one alone.
    void serveOnce(const QByteArray &key, const ScriptedAnswer &answer) { server.enqueue(isForFile(key), answer); }
    int fileRequests(const QByteArray &key) const;

    /// Every request so far, as what stands behind "api/" or, for files, behind "webdav/".
    QStringList steps() const;
    /// Files that have arrived whole, by key; of files in parts, parts that are missing or doubled show as such.
    QMap<QByteArray, QByteArray> uploadedFiles() const;

    /// Whether no request is on its way, of the communicator and of @p job, if there is one.
    bool isQuiet(const QObject *job = nullptr) const { return isIdle(&communicator) && (!job || isIdle(job)); }

    ScriptedServer server;
    RouteToServer route{server};
    WebCommunicator communicator;

private:
    static ScriptedServer::Matcher isForFile(const QByteArray &key);
    static bool isIdle(const QObject *owner);
    QByteArray joinedParts(const QByteArray &uploadId) const;
};

inline TransferPlatform::TransferPlatform()
{
    server.always(Route::BEGIN, ScriptedAnswer::ok("<Begin><BucketName>bucket</BucketName></Begin>"));
    server.always(Route::EXISTS, ScriptedAnswer::ok("<Exists><Exist>true</Exist></Exists>"));
    server.always(Route::BUCKET, ScriptedAnswer::ok("<Bucket><Name>bucket</Name></Bucket>"));
    server.always(Route::LISTING, ScriptedAnswer::ok(listingOf({})));
    const auto uploads = std::make_shared<std::atomic<int>>(0);
    server.always(Route::MULTI_INIT, [uploads](const RecordedRequest &) {
        return ScriptedAnswer::ok("<InitMultipartUploadResponse><MultipartUploadId>upload-"
                                  + QByteArray::number(++*uploads)
                                  + "</MultipartUploadId></InitMultipartUploadResponse>");
    });
    server.always(Route::MULTI_PART, ScriptedAnswer::ok("<PutMultipartUploadResponse/>"));
    server.always(Route::MULTI_COMPLETE, ScriptedAnswer::ok("<CompleteMultipartUploadResponse/>"));
    server.always(Route::MULTI_ABORT, ScriptedAnswer::ok("<AbortMultipartUploadResponse/>"));
}

inline ScriptedServer::Matcher TransferPlatform::isForFile(const QByteArray &key)
{
    return [key](const RecordedRequest &request) {
        return QByteArray::fromPercentEncoding(request.path()) == Route::FILES + key;
    };
}

inline int TransferPlatform::fileRequests(const QByteArray &key) const
{
    const auto requests = server.requests();
    return int(std::count_if(requests.cbegin(), requests.cend(), isForFile(key)));
}

inline QStringList TransferPlatform::steps() const
{
    QStringList steps;
    const auto requests = server.requests();
    for (const RecordedRequest &request : requests) {
        const QByteArray path = request.path();
        const QByteArray mark = path.contains("/webdav/") ? "/webdav/" : "/api/";
        steps.append(QString::fromUtf8(path.mid(path.indexOf(mark) + mark.size())));
    }
    return steps;
}

inline QMap<QByteArray, QByteArray> TransferPlatform::uploadedFiles() const
{
    QMap<QByteArray, QByteArray> files;
    for (const RecordedRequest &request : server.requests(Route::PUT_FILE))
        files[textOf(request.body, "OutputFilePath")]
            = QByteArray::fromBase64(textOf(request.body, "InputFileArray"));
    const auto begun = server.requests(Route::MULTI_INIT);
    for (const RecordedRequest &request : server.requests(Route::MULTI_COMPLETE)) {
        const QByteArray uploadId = textOf(request.body, "MultipartUploadId");
        // The server counts the uploads in the order in which they are begun.
        const int number = uploadId.mid(uploadId.indexOf('-') + 1).toInt();
        files[textOf(begun.value(number - 1).body, "OutputFilePath")] = joinedParts(uploadId);
    }
    return files;
}

inline QByteArray TransferPlatform::joinedParts(const QByteArray &uploadId) const
{
    QByteArray content;
    int expected = 1;
    for (const RecordedRequest &request : server.requests(Route::MULTI_PART)) {
        if (textOf(request.body, "MultipartUploadId") != uploadId)
            continue;
        if (textOf(request.body, "PartNumber").toInt() != expected++)
            return "a part is missing or doubled";
        content += QByteArray::fromBase64(textOf(request.body, "InputFilePartArray"));
    }
    return content;
}

inline bool TransferPlatform::isIdle(const QObject *owner)
{
    const auto handles = owner->findChildren<RequestHandle *>();
    return std::none_of(handles.cbegin(), handles.cend(), [](const RequestHandle *handle) { return handle->isInFlight(); });
}

} // namespace Korvo::Web::TestSupport
