#include "runner/SameBytes.h"

#include "support/Workload.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QMap>

#include <stdexcept>

namespace Korvo::Bench {
namespace {

// Whole files, files in several parts with a short last one, and one that is not there at all but for its name.
const QStringList WORKLOADS{QStringLiteral("40x20481"), QStringLiteral("4x9000001"), QStringLiteral("1x4194304"),
                            QStringLiteral("1x0")};
constexpr int SHOWN_CHARACTERS = 2000;

struct Seen
{
    QByteArrayList requests;
    QMap<QString, QByteArray> files; ///< hash by relative path
};

QByteArrayList linesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().split('\n') : QByteArrayList();
}

QByteArray hashOf(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        throw std::runtime_error("cannot read " + path.toStdString());
    return hash.result().toHex();
}

QMap<QString, QByteArray> hashesBelow(const QString &root)
{
    QMap<QString, QByteArray> hashes;
    QDirIterator files(root, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        hashes.insert(path.mid(root.size()), hashOf(path));
    }
    return hashes;
}

Seen seenOf(const Place &place, const QString &program)
{
    const QString record = place.work + QStringLiteral("/requests");
    const QString target = place.work + QStringLiteral("/compared/");
    QDir(target).removeRecursively();
    {
        const Server server(place, record);
        for (const QString &workload : WORKLOADS) {
            const QStringList options{QStringLiteral("--workload"), workload, QStringLiteral("--in-flight"),
                                      QStringLiteral("3")};
            const QString folder = place.work + QStringLiteral("/same/") + workload;
            transferFigures(place, program,
                            QStringList{QStringLiteral("upload"), QStringLiteral("--folder"), folder} + options);
            if (workload != QLatin1String("1x0")) // of which nothing is to be fetched
                transferFigures(place, program,
                                QStringList{QStringLiteral("download"), QStringLiteral("--folder"), target + workload}
                                    + options);
        }
    }
    Seen seen{linesOf(record), hashesBelow(target)};
    QDir(target).removeRecursively();
    return seen;
}

[[noreturn]] void reportDifference(const QByteArrayList &library, const QByteArrayList &peer)
{
    int at = 0;
    while (at < library.size() && at < peer.size() && library.at(at) == peer.at(at))
        ++at;
    throw std::runtime_error("library and peer differ.\n  library: "
                             + library.value(at).left(SHOWN_CHARACTERS).toStdString()
                             + "\n  peer:    " + peer.value(at).left(SHOWN_CHARACTERS).toStdString());
}

/// What was fetched must be what the server sent, and what a project folder of the same workload holds.
void requireContent(const Place &place, const QMap<QString, QByteArray> &fetched)
{
    for (auto file = fetched.cbegin(); file != fetched.cend(); ++file) {
        if (file.value() != hashOf(place.work + QStringLiteral("/same/") + file.key()))
            throw std::runtime_error("not what was sent: " + file.key().toStdString());
    }
}

} // namespace

QString compareBytes(const Place &place)
{
    for (const QString &workload : WORKLOADS)
        writeFolder(Workload::atEndOf(workload.toStdString()),
                    (place.work + QStringLiteral("/same/") + workload).toStdString());
    const Seen library = seenOf(place, QStringLiteral("korvo-bench-client"));
    const Seen peer = seenOf(place, QStringLiteral("korvo-bench-peer"));
    if (library.requests != peer.requests)
        reportDifference(library.requests, peer.requests);
    if (library.files != peer.files)
        throw std::runtime_error("library and peer fetched different files");
    requireContent(place, library.files);
    return QStringLiteral(
               "Library and libcurl client sent %1 requests with the same targets, headers and bodies (SHA-256), "
               "and fetched %2 files with the same bytes.\n")
        .arg(library.requests.size())
        .arg(library.files.size());
}

} // namespace Korvo::Bench
