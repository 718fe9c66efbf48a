#pragma once

#include "faults/Outcome.h"
#include "faults/RequestKinds.h"
#include "flow/LocalPlatform.h"
#include "flow/SignalRecorder.h"
#include "support/LogCapture.h"

namespace Korvo::Web::Faults {

/// The signals that tell of an end, in the words of the rules: "loginResult(0)".
QStringList heardOf(const TestSupport::SignalRecorder &recorder);

/// What was logged, sorted: "DownloadFileHandle: RemoteHostClosedError".
QStringList logLines(const QList<TestSupport::LogEntry> &entries);

/// How often the platform was asked, by route.
QMap<QString, int> requestsIn(const QJsonArray &journal, const RequestKind &request);

/// "whole", "part", "empty", "other" or "gone".
QString leftOf(const QString &path, const QByteArray &whole);

QString nameOf(KorvoWebApi::LoginStatus status);

/// The last words about the files of a transfer: "2 of 3".
QString filesDone(const TestSupport::SignalRecorder &recorder, const char *completed, const char *total);

/// What the platform holds of one uploaded project; @p files are the local ones by their keys.
QStringList storedOf(TestSupport::LocalPlatform &platform, const QJsonObject &state, const QString &projectId,
                     const QMap<QString, QByteArray> &files);

/// How many videos of the projects whose ids begin so were transcoded.
QStringList transcodedOf(const QJsonObject &state, const QString &idsBegin);

} // namespace Korvo::Web::Faults
