// Measures the library beside the libcurl client and writes what came out into a document.
#include "runner/Document.h"
#include "runner/Growth.h"
#include "runner/Inner.h"
#include "runner/Machine.h"
#include "runner/Profile.h"
#include "runner/SameBytes.h"
#include "runner/Transfers.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTextStream>

#include <exception>

namespace {

using namespace Korvo::Bench;

const QCommandLineOption WORK(QStringLiteral("work"), QStringLiteral("Folder in memory; default: /dev/shm."),
                              QStringLiteral("DIR"), QStringLiteral("/dev/shm"));
const QCommandLineOption DOCUMENT(QStringLiteral("document"),
                                  QStringLiteral("Where the figures go; default: standard output."),
                                  QStringLiteral("FILE"));
const QCommandLineOption PORT(QStringLiteral("port"), QStringLiteral("Port of the server; default: 443."),
                              QStringLiteral("N"), QStringLiteral("443"));
const QCommandLineOption TUNNEL(QStringLiteral("tunnel"),
                                QStringLiteral("Reach the hosts through the server's tunnel."));
const QCommandLineOption ROUNDS(QStringLiteral("rounds"), QStringLiteral("Paired rounds; default: 7."),
                                QStringLiteral("N"));
const QCommandLineOption SMOKE(QStringLiteral("smoke"), QStringLiteral("Tiny sizes: shows that everything works."));
const QCommandLineOption GROWTH(QStringLiteral("growth"), QStringLiteral("Measure huge files and projects instead."));
const QCommandLineOption PROFILE(QStringLiteral("profile"), QStringLiteral("Profile a large upload instead."));
const QCommandLineOption COMPARE(QStringLiteral("compare"),
                                 QStringLiteral("Compare the bytes sent and fetched, and no more."));

Place placeOf(const QCommandLineParser &options, const QTemporaryDir &work)
{
    Place place;
    place.programs = QCoreApplication::applicationDirPath();
    place.work = work.path();
    place.port = options.value(PORT).toInt();
    place.throughProxy = options.isSet(TUNNEL);
    return place;
}

Sizes sizesOf(const QCommandLineParser &options)
{
    Sizes sizes = options.isSet(SMOKE) ? Sizes::smoke() : Sizes();
    if (options.isSet(ROUNDS))
        sizes.rounds = options.value(ROUNDS).toInt();
    return sizes;
}

void measureAll(const Place &place, const Sizes &sizes, const Document &document)
{
    const QString same = compareBytes(place);
    const Quietness quietness;
    Transfers transfers(place, sizes);
    transfers.measure();
    const QVector<Row> rows = transfers.rows() + innerRows(place, sizes);
    document.replace(QStringLiteral("machine"),
                     machineText(place.throughProxy)
                         + QStringLiteral("- Paired rounds: %1. %2\n").arg(sizes.rounds).arg(quietness.text()));
    document.replace(QStringLiteral("figures"), rowsTable(rows));
    document.replace(QStringLiteral("details"), transfers.details());
    document.replace(QStringLiteral("tunnel"), transfers.tunnelText());
    document.replace(QStringLiteral("comparison"), same);
}

void measureGrowth(const Place &place, const Document &document)
{
    const Quietness quietness;
    const QString table = growthTable(place);
    document.replace(QStringLiteral("growth"), table + QLatin1Char('\n') + quietness.text() + QLatin1Char('\n'));
}

void run(const QCommandLineParser &options)
{
    const QTemporaryDir work(options.value(WORK) + QStringLiteral("/korvo-bench-XXXXXX"));
    const Place place = placeOf(options, work);
    const Document document(options.value(DOCUMENT));
    if (options.isSet(COMPARE))
        document.replace(QStringLiteral("comparison"), compareBytes(place));
    else if (options.isSet(GROWTH))
        measureGrowth(place, document);
    else if (options.isSet(PROFILE))
        document.replace(QStringLiteral("profile"), uploadProfile(place, sizesOf(options)));
    else
        measureAll(place, sizesOf(options), document);
}

} // namespace

int main(int count, char **values)
{
    const QCoreApplication application(count, values);
    QCommandLineParser options;
    options.setApplicationDescription(QStringLiteral("Measures the library beside a client written with libcurl."));
    options.addHelpOption();
    options.addOptions({WORK, DOCUMENT, PORT, TUNNEL, ROUNDS, SMOKE, GROWTH, PROFILE, COMPARE});
    options.process(application);
    try {
        run(options);
        return 0;
    } catch (const std::exception &failure) {
        QTextStream(stderr) << "korvo-bench: " << QString::fromUtf8(failure.what()) << '\n';
        return 1;
    }
}
