#pragma once

#include <QtNetwork/QNetworkReply>

#include <chrono>

namespace Korvo::Web {

/// How a finished reply really ended, given the bytes of its body that have arrived.
///
/// Qt calls two ends a success that are none: a body cut short of its Content-Length on a reused connection, and a
/// redirect, which is not followed because it would carry credentials or a signature elsewhere.
QNetworkReply::NetworkError errorOf(const QNetworkReply &reply, qint64 bytesReceived);

/// Lets only a little of the body wait unread, and gives the reply up when the body has begun to come and then nothing
/// more of it comes for @p silenceLimit; errorOf() calls that a time-out.
///
/// The body has to be read with readBody() from then on.
/// @param expectedBytes  length of the body as far as is known before the reply tells; -1 when it is not
void watchBody(QNetworkReply *reply, qint64 expectedBytes = -1,
               std::chrono::milliseconds silenceLimit = std::chrono::seconds(30));

/// Everything of a watched body that has arrived and has not been read yet.
QByteArray readBody(QNetworkReply &reply);

/// Whether the body of this reply is the content asked for, not the text of a refusal.
bool carriesContent(const QNetworkReply &reply);

} // namespace Korvo::Web
