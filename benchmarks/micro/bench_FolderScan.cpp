#include "transfer/ProjectFolderScan.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QtTest>

using namespace Korvo::Web;

namespace {

constexpr int FOLDERS = 200;
constexpr int FILES_IN_A_FOLDER = 500;

} // namespace

/// The scan of a project of 100,000 files; the folder named by KORVOWEB_BENCH_FOLDER is scanned instead when set.
class bench_FolderScan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void scan();

private:
    QTemporaryDir temporary;
    QString root;
};

void bench_FolderScan::initTestCase()
{
    root = qEnvironmentVariable("KORVOWEB_BENCH_FOLDER");
    if (!root.isEmpty())
        return;
    root = temporary.path();
    for (int folder = 0; folder < FOLDERS; ++folder) {
        const QString path = root + QStringLiteral("/Section %1/Pictures").arg(folder);
        QVERIFY(QDir().mkpath(path));
        for (int i = 0; i < FILES_IN_A_FOLDER; ++i) {
            QFile file(path + QStringLiteral("/Inspection_%1_%2.jpg").arg(folder).arg(i));
            QVERIFY(file.open(QIODevice::WriteOnly));
            QCOMPARE(file.write("x"), qint64(1));
        }
    }
}

void bench_FolderScan::scan()
{
    int found = 0;
    QBENCHMARK
    {
        found = int(ProjectFolderScan(root, {}).run().size());
    }
    QVERIFY(found > 0);
}

QTEST_GUILESS_MAIN(bench_FolderScan)

#include "bench_FolderScan.moc"
