// Takes the picture of the Quick sample in docs/images: quick-screenshot FOLDER SAMPLE-PROJECT
#include "PictureProjects.h"
#include "QuickStage.h"
#include "flow/Session.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtQuick/QQuickItemGrabResult>

using namespace Korvo;
using namespace Korvo::Web::TestSupport;

namespace {

// The window as a whole cannot be taken from a screen that nobody sees; what it holds can.
bool save(QQuickWindow &window, const QString &path)
{
    const auto grab = window.contentItem()->grabToImage();
    if (!grab || !eventually([&] { return !grab->image().isNull(); }))
        return false;
    return grab->image().convertToFormat(QImage::Format_RGB888).save(path, "PNG", 0);
}

bool takePicture(LocalPlatform &platform, const QString &folder, const QString &sample)
{
    addPictureProjects(platform);
    QuickStage stage;
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                       {QStringLiteral("delayMs"), 1000},
                       {QStringLiteral("route"), QStringLiteral("api/multipartupload/upload")},
                       {QStringLiteral("count"), 0}});
    if (!stage.window() || !stage.logIn(USER, PASSWORD)
        || !eventually([&] { return stage.isSeen("path") && stage.projects().count() > 0; }))
        return false;
    stage.item("path")->setProperty("text", sample);
    const auto isHalfDone = [&] { return stage.item("uploadBar")->property("percent").toInt() >= 40; };
    return stage.click("uploadButton") && eventually(isHalfDone, std::chrono::minutes(2))
           && save(*stage.window(), folder + QLatin1String("/quick.png"));
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3)
        qFatal("usage: quick-screenshot FOLDER SAMPLE-PROJECT");
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software);
    Web::KorvoWebLibrary::initialize();
    Qml::Host::registerTypes();
    LocalPlatform platform;
    const QString complaint = platform.start();
    if (!complaint.isEmpty() || !takePicture(platform, arguments.at(1), arguments.at(2)))
        qFatal("the picture could not be taken");
    return 0;
}
