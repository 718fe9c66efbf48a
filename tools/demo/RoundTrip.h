#pragma once

#include "LocalPlatform.h"
#include "ReturningFiles.h"

#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/ProjectInfo.h>

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QScopedPointer>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QTextStream>

#include <chrono>
#include <vector>

namespace Korvo::Demo {

class Step;
class TransferView;
struct FolderComparison;

/// What the caller asks for.
struct RoundTripOptions
{
    QString platformProgram;
    QString folder;           // absolute
    QString target;           // absolute, new or empty
    int simultaneousFiles = 3;
    std::chrono::seconds stallLimit{60};
    bool isQuickview = false;
    QSet<QString> nodeMedia;  // relative paths; a Quickview project only
};

/// A project folder's way to the platform and back, through the public interface of the library alone.
class RoundTrip : public QObject
{
    Q_OBJECT
public:
    RoundTrip(const RoundTripOptions &givenOptions, QTextStream &stream);
    ~RoundTrip() override;

    /// True only if every file came back whole; tells on the stream what happens.
    bool run();

private:
    struct Stage
    {
        QString name;
        qint64 milliseconds = 0;
        qint64 bytes = 0;
    };

    bool lookAtFolder();
    bool startPlatform();
    bool trustAuthority();
    bool logIn();
    bool upload();
    bool listProjects();
    bool download();
    bool compare();
    bool stopEverything();

    bool timed(const QString &name, qint64 bytes, bool (RoundTrip::*stage)());
    bool waitFor(Step &step, const QString &what);
    bool waitFor(Step &step, TransferView &view, const QString &what);
    void watchForFailures(Step &step);
    unsigned int startUpload();
    void showUpload(TransferView &view, Step &step);
    void showDownload(TransferView &view, Step &step);
    void takeProjects(const QList<Web::ProjectInfo> &projects, Step &step);
    void printComparison(const FolderComparison &result);
    void printStages();
    bool fail(const QString &reason);

    const RoundTripOptions options;
    QTextStream &out;
    ReturningFiles travellers;
    QHash<QString, qint64> sizesByPath; // absolute local paths, as uploads report them
    QHash<QString, qint64> sizesByKey;  // names in the project's storage, as downloads report them
    qint64 bytesUp = 0;
    qint64 bytesDown = 0;
    LocalPlatform platform;
    QScopedPointer<Web::KorvoWebApi> api;
    QString projectId;
    QString secondFactor; // kept until the login's result has come
    Web::ProjectInfo listedProject;
    std::vector<Stage> stages;
};

} // namespace Korvo::Demo
