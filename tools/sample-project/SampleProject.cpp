#include "SampleProject.h"

#include "MotionJpegAvi.h"
#include "PipeScene.h"
#include "ProjectDatabase.h"
#include "ProjectTexts.h"

namespace Korvo::Sample {

namespace {

constexpr int JPEG_QUALITY = 85;
constexpr double CAMERA_METRES_PER_SECOND = 0.15;

// Each picture and each video has a wall of its own; the scan comes after them.
constexpr quint64 PICTURE_WALLS = 1000;
constexpr quint64 VIDEO_WALLS = 2000000;
constexpr quint64 SCAN_POINTS = 4000000;

PipeScene::View viewOf(const Media &media)
{
    return media.owner == Owner::Node ? PipeScene::View::Shaft : PipeScene::View::Pipe;
}

QByteArray captionOf(const ProjectPlan &plan, const Media &media)
{
    return plan.ownerName(media.owner, media.ownerIndex).toLatin1() + "  18.03.2024";
}

bool writePicture(ProjectFolder &folder, const ProjectPlan &plan, const Media &picture, quint64 seed)
{
    const bool bitmap = picture.path.endsWith(QLatin1String(".bmp"));
    const PipeScene scene(bitmap ? 320 : 960, bitmap ? 240 : 720, viewOf(picture), seed);
    const Image image = scene.frame(picture.position, captionOf(plan, picture));
    return folder.write(picture.path, bitmap ? image.toBmp() : image.toJpeg(JPEG_QUALITY));
}

bool appendFrames(MotionJpegAvi &video, const ProjectPlan &plan, const Media &media, const PipeScene &scene)
{
    constexpr double STEP = CAMERA_METRES_PER_SECOND / MotionJpegAvi::FRAMES_PER_SECOND;
    QByteArray jpeg = scene.frame(0, captionOf(plan, media)).toJpeg(JPEG_QUALITY);
    for (int frame = 1; frame == 1 || video.sizeWith(jpeg.size()) <= media.bytes; ++frame) {
        if (!video.append(jpeg))
            return false;
        jpeg = scene.frame(frame * STEP, captionOf(plan, media)).toJpeg(JPEG_QUALITY);
    }
    return true;
}

bool writeVideo(ProjectFolder &folder, const ProjectPlan &plan, const Media &media, quint64 seed)
{
    constexpr int WIDTH = 640;
    constexpr int HEIGHT = 360;
    const QString path = folder.makeRoomFor(media.path);
    if (path.isEmpty())
        return false;
    MotionJpegAvi video(path, WIDTH, HEIGHT);
    const PipeScene scene(WIDTH, HEIGHT, viewOf(media), seed);
    const bool good = video.open() && appendFrames(video, plan, media, scene) && video.finish(media.bytes);
    return good || folder.fail(QStringLiteral("cannot write ") + path + QStringLiteral(": ") + video.errorString());
}

bool writeMedia(ProjectFolder &folder, const ProjectPlan &plan, quint64 seed)
{
    for (std::size_t index = 0; index < plan.pictures.size(); ++index) {
        if (!writePicture(folder, plan, plan.pictures[index], seed * PICTURE_WALLS + index))
            return false;
    }
    for (std::size_t index = 0; index < plan.videos.size(); ++index) {
        if (!writeVideo(folder, plan, plan.videos[index], seed * PICTURE_WALLS + VIDEO_WALLS + index))
            return false;
    }
    return true;
}

bool writeDocuments(ProjectFolder &folder, const ProjectPlan &plan, const ProjectSize &size)
{
    const QByteArray report = reportText(plan);
    const QByteArray note = "Rückfragen: Müller & Söhne, Abt. Kanal + Schacht\n";
    const bool good = folder.write(QStringLiteral("Dokumente/Prüfbericht Endfassung.txt"), report)
        && folder.write(QStringLiteral("Dokumente/Ältere Fassungen/Prüfbericht v1.2/LIESMICH"), note)
        && folder.write(QStringLiteral("Dokumente/Anschrift Müller & Söhne.txt"), note)
        && folder.write(QStringLiteral("Dokumente/Lage+Höhe.csv"), report.left(2000))
        && folder.write(QStringLiteral("Dokumente/Plan%20Entwurf.txt"), note)
        && folder.write(QStringLiteral("Dokumente/Anlagen/leer.dat"), QByteArray())
        && folder.write(QStringLiteral("Notizen.txt"), QByteArray());
    if (size.scanBytes == 0)
        return good;
    return good && folder.write(QStringLiteral("Dokumente/Anlagen/Laserscan Schacht K02.xyz"),
                                scanText(size.seed + SCAN_POINTS, size.scanBytes));
}

} // namespace

bool writeProject(ProjectFolder &folder, const ProjectPlan &plan, const ProjectSize &size)
{
    const QString databaseName = plan.name + QStringLiteral(".db3");
    const QByteArray description = projectXml(plan, databaseName);
    return folder.write(QStringLiteral("project.xml"), description)
        && folder.write(QStringLiteral("project.xml_bak"), description)
        && folder.write(databaseName + QStringLiteral(".xml_bak"), description)
        && writeDatabase(folder, databaseName, plan) && writeDocuments(folder, plan, size)
        && writeMedia(folder, plan, size.seed);
}

} // namespace Korvo::Sample
