#pragma once

#include <NQKorvoWeb/Error.h>
#include <NQKorvoWeb/MediaNamesList.h>

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
    /// What an upload brings; all but the standard one send one file at a time.
    enum class Content {
        Standard,
        ImportTool, ///< has no id of its own: the library makes one of the title
        Quickview
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
    Content content = Content::Standard;
    unsigned int id = 0; ///< the library's; uploads and downloads are counted separately
    QString title;
    QString projectId;  ///< empty as long as only the platform knows it
    QString folder;     ///< local folder, or the local file of a single one
    QString folderName; ///< downloads: the name of the project's folder on the platform
    QString link;       ///< of a single file
    QDateTime created;
    int simultaneousFiles = 1;
    Web::MediaNamesList manholeMedia; ///< of a Quickview upload

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
