#pragma once

#include "runner/Pairs.h"
#include "runner/Programs.h"
#include "runner/Rows.h"
#include "runner/Sizes.h"

#include <QtCore/QSet>

namespace Korvo::Bench {

/// Uploads and downloads of the library beside those of the peer.
class Transfers
{
public:
    Transfers(const Place &usedPlace, const Sizes &usedSizes)
        : place(usedPlace)
        , sizes(usedSizes)
    {
    }

    void measure();
    QVector<Row> rows() const { return results; }
    /// What stands behind the ratios.
    QString details() const;
    /// What the way through a tunnel costs either client.
    QString tunnelText() const { return tunnel; }

private:
    struct Work
    {
        QString name;
        QString workload;
        int inFlight = 1;
        bool upload = true;
    };

    Pairs compare(const Work &work);
    QJsonObject run(const QString &program, const Work &work, const QStringList &options = {}) const;
    Rounds probe(const Work &work);
    QString folderOf(const QString &workload) const;
    void prepare(const QString &workload);

    void measureLargeUpload();
    void measureHugeUpload();
    void measureSmallUpload();
    void measureLargeDownload();
    void measureHugeDownload();
    void measureSmallDownload();
    void measureHost();
    void measureManyFiles();
    void measureTunnel();

    void addRatio(const Work &work, const Pairs &pairs, double atMost, double reachFor);
    void addMemory(const QString &name, const Pairs &pairs, double atMost, double reachFor);
    void addDetail(const Work &work, const Pairs &pairs, const Pairs &bare);
    void add(const Row &row) { results.append(row); }

    Place place;
    Sizes sizes;
    QSet<QString> prepared;
    QVector<Row> results;
    QVector<QStringList> detailLines;
    QString tunnel;
};

} // namespace Korvo::Bench
