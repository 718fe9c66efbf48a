#pragma once

#include <NQKorvoWeb/Error.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>

namespace Korvo::Web {

/// What every download job tells the worker. Jobs are children of the worker and live on its thread.
class AbstractDownload : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

Q_SIGNALS:
    void totalDownloadProgressChanged(int downloadId, int filesCompleted, int filesTotal, int progress,
                                      QStringList currentDownloadFiles);
    void fileDownloadProgressChanged(int downloadId, QString fileName, int progress);
    void downloadCompleted(int downloadId);
    void errorOccurred(int downloadId, Korvo::Web::Error error);
};

} // namespace Korvo::Web
