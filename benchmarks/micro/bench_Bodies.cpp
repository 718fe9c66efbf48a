#include "handles/UploadFileDescriptor.h"
#include "request/PartRequestBody.h"
#include "request/RequestBodies.h"

#include <QtTest/QtTest>

using namespace Korvo::Web;

namespace {

constexpr int PART_BYTES = 4 * 1024 * 1024;

QByteArray content(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    unsigned state = 1;
    for (char &byte : bytes)
        byte = char((state = state * 1664525 + 1013904223) >> 24);
    return bytes;
}

} // namespace

/// The bodies that carry the content of files.
class bench_Bodies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void part();
    void smallFile();
    void base64OfQt();
};

void bench_Bodies::part()
{
    const QByteArray bytes = content(PART_BYTES);
    QBENCHMARK
    {
        PartRequestBody body;
        body.begin(bytes.size(), QByteArray());
        body.add(bytes);
        body.finish(QStringLiteral("0123456789abcdef"), 7);
    }
}

void bench_Bodies::smallFile()
{
    const QByteArray bytes = content(20 * 1024);
    const UploadFileDescriptor file{
        {}, QStringLiteral("/p/a.jpg"), QStringLiteral("Picture/Sec/a.jpg"), QStringLiteral("bucket"), false};
    QBENCHMARK
    {
        RequestBodies::uploadFile(file, bytes);
    }
}

// For comparison: what the encoding of a part alone takes with Qt.
void bench_Bodies::base64OfQt()
{
    const QByteArray bytes = content(PART_BYTES);
    QBENCHMARK
    {
        bytes.toBase64();
    }
}

QTEST_GUILESS_MAIN(bench_Bodies)

#include "bench_Bodies.moc"
