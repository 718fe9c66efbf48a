#include "handles/BucketResponses.h"
#include "handles/ProjectResponses.h"

#include <QtTest/QtTest>

using namespace Korvo::Web;

namespace {

constexpr int ENTRIES = 100000;
constexpr int PROJECTS = 10000;

QByteArray listing()
{
    QByteArray reply = "<?xml version=\"1.0\" encoding=\"utf-8\"?><FileListFromLocationsResponse "
                       "xmlns=\"http://schemas.example/2004/07/Service\"><Count>100000</Count><Objects>";
    for (int i = 0; i < ENTRIES; ++i) {
        const QByteArray number = QByteArray::number(1000000 + i);
        const QByteArray folder = "Picture/Sec/Street-" + number.right(3);
        const QByteArray name = "Inspection_" + number + "_manhole_to_manhole.jpg";
        reply += "<ObjectModel><Directory>" + folder + "</Directory><FileName>" + name + "</FileName><Key>" + folder
                 + '/' + name + "</Key><ModifiedDate>2025-03-04T10:11:12.345Z</ModifiedDate><Size>" + number
                 + "</Size><Type>1</Type></ObjectModel>";
    }
    return reply + "</Objects></FileListFromLocationsResponse>";
}

QByteArray projectList()
{
    QByteArray reply = "<ArrayOfProjectInfo xmlns=\"http://schemas.example/2004/07/Web\">";
    for (int i = 0; i < PROJECTS; ++i) {
        const QByteArray number = QByteArray::number(10000 + i);
        reply += "<ProjectInfo><DiskUsage>" + number + "000</DiskUsage><ProjectDate>20"
                 + QByteArray::number(10 + i % 15) + "-07-04T10:11:12</ProjectDate><ProjectFolderName>folder-" + number
                 + "</ProjectFolderName><ProjectId>"
                   "0f8fad5b-d9cb-469f-a165-70867728"
                 + number.right(4)
                 + "</ProjectId><ProjectName>Inspection of "
                   "district "
                 + number + "</ProjectName></ProjectInfo>";
    }
    return reply + "</ArrayOfProjectInfo>";
}

} // namespace

/// From the bytes of the two long replies to their values.
class bench_Replies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listingOf100000Entries();
    void listOf10000Projects();
};

void bench_Replies::listingOf100000Entries()
{
    const QByteArray reply = listing();
    int entries = 0;
    QBENCHMARK
    {
        ListOfFilesFromLocationResponse response;
        response.parse(reply);
        entries = response.entries().size();
    }
    QCOMPARE(entries, ENTRIES);
}

void bench_Replies::listOf10000Projects()
{
    const QByteArray reply = projectList();
    int projects = 0;
    QBENCHMARK
    {
        UserProjectsResponse response;
        response.parse(QString::fromUtf8(reply.constData()));
        projects = response.projects().size();
    }
    QCOMPARE(projects, PROJECTS);
}

QTEST_GUILESS_MAIN(bench_Replies)

#include "bench_Replies.moc"
