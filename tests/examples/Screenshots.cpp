// Takes the pictures of docs/images: screenshots FOLDER SAMPLE-PROJECT
#include "Appearance.h"
#include "DesktopStage.h"
#include "Language.h"
#include "MediaModel.h"
#include "PictureProjects.h"
#include "flow/Session.h"

#include <QtCore/QDir>
#include <QtGui/QPainter>
#include <QtTest/QTest>
#include <QtWidgets/QListView>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTreeWidget>

#include <algorithm>

using namespace Korvo::Desktop;
using namespace Korvo::Web::TestSupport;

namespace {

const QString PART_ROUTE = QStringLiteral("api/multipartupload/upload");

/// One turn through the program in one palette.
class Tour
{
public:
    Tour(LocalPlatform &usedPlatform, const QString &pictureFolder, const QString &sampleProject, const char *palette)
        : platform(usedPlatform)
        , folder(pictureFolder)
        , sample(sampleProject)
        , suffix(QString::fromLatin1(palette))
    {
    }

    bool run();

private:
    bool login();
    bool upload();
    bool problems();
    bool media();
    bool quickview();
    bool settings();
    bool abort();
    bool take(const char *name, const char *dialog = nullptr);

    LocalPlatform &platform;
    const QString folder;
    const QString sample;
    const QString suffix;
    DesktopStage stage;
};

bool Tour::run()
{
    return login() && upload() && problems() && media() && quickview() && settings() && abort();
}

// A dialog is shown where it stands: in the middle of the window that it belongs to.
bool Tour::take(const char *name, const char *dialogName)
{
    QApplication::processEvents();
    QPixmap picture = stage.window().grab();
    if (dialogName) {
        QWidget *const dialog = stage.see<QWidget>(dialogName);
        if (!dialog)
            return false;
        QApplication::processEvents();
        const QPixmap front = dialog->grab();
        QPainter painter(&picture);
        painter.fillRect(picture.rect(), QColor(0, 0, 0, 70));
        const QPoint corner((picture.width() - front.width()) / 2, (picture.height() - front.height()) / 2);
        painter.drawPixmap(corner, front);
        painter.setPen(dialog->palette().color(QPalette::Mid));
        painter.drawRect(QRect(corner, front.size()).adjusted(-1, -1, 0, 0));
    }
    const QString path = QStringLiteral("%1/desktop-%2-%3.png").arg(folder, QString::fromLatin1(name), suffix);
    return picture.toImage().convertToFormat(QImage::Format_RGB888).save(path, "PNG", 0);
}

bool Tour::login()
{
    return stage.type("userName", SECURE_USER) && stage.type("password", SECURE_PASSWORD)
           && take("login", "loginDialog") && stage.click("loginButton") && stage.type("code", SECURE_CODE)
           && take("code", "loginDialog") && stage.click("codeButton") && stage.waitUntilGone("loginDialog")
           && eventually([this] { return stage.isSeen("projectsEmpty/emptyTitle") || stage.isSeen("projectTable"); });
}

// One upload has ended well; one is slowed down for its picture, and then held for the pictures that follow.
bool Tour::upload()
{
    const auto isCounted = [this] { return stage.read("folderSummary").contains(QLatin1Char(',')); };
    if (!take("empty"))
        return false;
    addPictureProjects(platform);
    if (!stage.drop(sample) || !eventually(isCounted) || !take("upload", "uploadDialog") || !stage.click("startUpload")
        || !stage.waitFor(Transfer::Stage::Done) || !eventually([this] { return stage.isSeen("projectTable"); }))
        return false;
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                       {QStringLiteral("delayMs"), 1500},
                       {QStringLiteral("route"), PART_ROUTE},
                       {QStringLiteral("count"), 0}});
    const auto isHalfDone = [](const FileInFlight &file) { return file.percent > 0 && file.percent < 100; };
    const auto isWorthAPicture = [&] {
        const Transfer &transfer = stage.transfer();
        return transfer.percent >= 30 && transfer.filesCompleted >= 5
               && std::count_if(transfer.files.begin(), transfer.files.end(), isHalfDone) >= 2;
    };
    if (!stage.drop(sample) || !stage.click("startUpload") || !stage.waitUntilGone("uploadDialog")
        || !eventually(isWorthAPicture, std::chrono::minutes(2)) || !take("uploading"))
        return false;
    platform.clearFaults();
    platform.addFault(QStringLiteral("noAnswer"), PART_ROUTE, 0);
    return true;
}

bool Tour::problems()
{
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("status")},
                       {QStringLiteral("status"), 500},
                       {QStringLiteral("route"), QStringLiteral("api/Projects")}});
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("status")},
                       {QStringLiteral("status"), 503},
                       {QStringLiteral("nth"), 2},
                       {QStringLiteral("route"), QStringLiteral("api/Projects")}});
    const auto *const tabs = stage.see<QTabWidget>("lowerTabs");
    const auto failOnce = [&] {
        const QString before = tabs->tabText(1);
        return stage.press(Qt::Key_F5) && eventually([&] { return tabs->tabText(1) != before; });
    };
    return failOnce() && failOnce() && take("message") && stage.click("messageButton") && take("problems")
           && stage.press(Qt::Key_3, Qt::ControlModifier) && take("log") && stage.press(Qt::Key_1, Qt::ControlModifier);
}

bool Tour::media()
{
    if (!stage.select(QDir(sample).dirName()) || !stage.press(Qt::Key_M, Qt::ControlModifier))
        return false;
    const auto *const list = stage.see<QListView>("mediaList");
    const auto isShown = [list](int row) {
        return list->model()->index(row, 0).data(MediaModel::StateRole).toInt() != int(MediaModel::State::Waiting);
    };
    const auto allAreShown = [&] {
        for (int row = 0; row < list->model()->rowCount(); ++row) {
            if (!isShown(row))
                return false;
        }
        return list->model()->rowCount() > 0;
    };
    return list && eventually(allAreShown) && take("media", "mediaView") && stage.press(Qt::Key_Escape)
           && stage.waitUntilGone("mediaView");
}

bool Tour::quickview()
{
    if (!stage.press(Qt::Key_I, Qt::ControlModifier))
        return false;
    auto *const tabs = stage.see<QTabWidget>("quickviewTabs");
    if (!tabs)
        return false;
    tabs->setCurrentIndex(1);
    const auto *const tree = tabs->widget(1)->findChild<QTreeWidget *>();
    return eventually([tree] { return tree->isVisible() && tree->topLevelItemCount() > 0; })
           && take("quickview", "quickviewView") && stage.press(Qt::Key_Escape) && stage.waitUntilGone("quickviewView");
}

bool Tour::settings()
{
    return stage.press(Qt::Key_Comma, Qt::ControlModifier) && take("network", "networkDialog")
           && stage.press(Qt::Key_Escape) && stage.waitUntilGone("networkDialog");
}

bool Tour::abort()
{
    const bool asked = stage.press(Qt::Key_Backspace, Qt::ControlModifier) && take("abort", "abortQuestion");
    platform.clearFaults();
    return asked && stage.click("abortConfirmed") && stage.waitFor(Transfer::Stage::Aborted);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 3)
        qFatal("usage: screenshots FOLDER SAMPLE-PROJECT");
    QFont font = QApplication::font();
    font.setPointSize(10);
    QApplication::setFont(font);
    const FreshSettings settings;
    installLanguage(application, QLocale(QLocale::English, QLocale::UnitedKingdom));
    for (const bool dark : {false, true}) {
        LocalPlatform platform;
        const QString complaint = platform.start();
        if (!complaint.isEmpty())
            qFatal("%s", qPrintable(complaint));
        applyAppearance(dark ? Appearance::Dark : Appearance::Light);
        if (!Tour(platform, arguments.at(1), arguments.at(2), dark ? "dark" : "light").run())
            qFatal("a picture could not be taken");
    }
    return 0;
}
