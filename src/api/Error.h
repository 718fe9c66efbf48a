#pragma once

#include <QtCore/QMetaType>

namespace Korvo::Web {

/// The one failure code of the whole library, carried by errorOccurred() and queryRemoteProjectsError().
///
/// The numbers are part of the published interface; 9, 12 and 13 are not in use.
enum class Error : int {
    None = 0,                   ///< the exchange succeeded; raised for a single media link only: there is no such file
    TimeOut = 1,                ///< no answer in time, a download that stood still, or an unknown network failure
    Server = 2,                 ///< the server answered with HTTP status 500
    AuthenticationRequired = 3, ///< HTTP status 401; a refused login ends with LoginResultFalseCredentials instead
    Cancelled = 4,              ///< the request was aborted: files in flight when an upload is aborted
    UnreadableLogin = 5,        ///< the login answer is not JSON
    FileOpen = 6,               ///< a local file cannot be opened or read, or has shrunk during its upload
    CreationDate = 7,           ///< the creation date of a project to upload is missing or invalid
    DownloadFolder = 8,         ///< a download folder cannot be created, or a listed file would leave it
    FileWrite = 10,             ///< writing a downloaded file failed
    InvalidParameter = 11,      ///< an argument of a public call was rejected; raised inside the call
    Network = 14                ///< every other transport failure, and every HTTP status not named above
};

} // namespace Korvo::Web

Q_DECLARE_METATYPE(Korvo::Web::Error)
