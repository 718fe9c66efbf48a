#pragma once

#include <NQKorvoWeb/Error.h>

#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Korvo::Desktop {

/// One file in flight.
struct FileInFlight
{
    QString name; ///< as it is shown
    QString key;  ///< as the library calls it
    int percent = 0;
};

/// One upload or download, from its order to its end.
struct Transfer
{
    enum class Kind {
        Upload,
        Download,
        SingleFile ///< has no progress: the library tells its end only
    };
    enum class Stage {
        Starting,
        Running,
        Paused,
        LastFiles,  ///< a download with no file left to start: the library takes no more orders for it
        Confirming, ///< an upload whose files have all arrived, until the platform has the notice of it
        Aborting,
        Done,
        Incomplete, ///< a download that ended with files missing
        Failed,
        Aborted
    };

    Kind kind = Kind::Upload;
    unsigned int id = 0; ///< the library's; uploads and downloads are counted separately
    QString title;
    QString projectId;
    QString folder;     ///< local folder, or the local file of a single one
    QString folderName; ///< downloads: the name of the project's folder on the platform
    QString link;       ///< of a single file
    QDateTime created;
    int simultaneousFiles = 1;

    Stage stage = Stage::Starting;
    int percent = 0;
    int filesTotal = -1; ///< not known yet
    int filesCompleted = 0;
    QVector<FileInFlight> files;
    Web::Error error = Web::Error::None;
    QString note; ///< something the user should know about the end

    bool isUpload() const { return kind == Kind::Upload; }
    bool hasEnded() const { return stage >= Stage::Done; }
    bool canPause() const { return stage == Stage::Starting || stage == Stage::Running; }
    bool canAbort() const { return canPause() || stage == Stage::Paused; }
    bool canRetry() const { return stage == Stage::Incomplete || stage == Stage::Failed || stage == Stage::Aborted; }
    bool isWhole() const { return filesTotal >= 0 && filesCompleted >= filesTotal; }
};

} // namespace Korvo::Desktop
