// Takes the picture of the Quick sample in docs/images: quick-screenshot FOLDER SAMPLE-PROJECT
#include "QuickStage.h"
#include "flow/Session.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtGui/QGuiApplication>
#include <QtGui/QImage>

using namespace Korvo;
using namespace Korvo::Web::TestSupport;

namespace {

bool takePicture(LocalPlatform &platform, const QString &folder, const QString &sample)
{
    for (const char *name : {"Kanal Altstadt", "Sammler Nord"})
        platform.addProject(
            QString::fromLatin1(name).remove(QLatin1Char(' ')), QString::fromLatin1(name),
            {QJsonObject{{QStringLiteral("key"), QStringLiteral("a")}, {QStringLiteral("size"), 34500000}}});
    QuickStage stage;
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("noAnswer")},
                       {QStringLiteral("route"), QStringLiteral("api/bucket/multipart/upload")},
                       {QStringLiteral("nth"), 3},
                       {QStringLiteral("count"), 0}});
    if (!stage.window() || !stage.logIn(USER, PASSWORD) || !eventually([&] { return stage.isSeen("path"); }))
        return false;
    stage.item("path")->setProperty("text", sample);
    const auto isHalfDone = [&] { return stage.item("uploadBar")->property("percent").toInt() >= 40; };
    return stage.click("uploadButton") && eventually(isHalfDone, std::chrono::minutes(2))
           && stage.window()->grabWindow().save(folder + QLatin1String("/quick.png"), "PNG", 0);
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.size() != 3)
        qFatal("usage: quick-screenshot FOLDER SAMPLE-PROJECT");
    QQuickWindow::setSceneGraphBackend(QSGRendererInterface::Software);
    Web::KorvoWebLibrary::initialize();
    Qml::Host::registerTypes();
    LocalPlatform platform;
    const QString complaint = platform.start();
    if (!complaint.isEmpty() || !takePicture(platform, arguments.at(1), arguments.at(2)))
        qFatal("the picture could not be taken");
    return 0;
}
