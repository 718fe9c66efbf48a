#pragma once

#include "MediaModel.h"
#include "ThumbnailLoader.h"
#include "Transfer.h"

#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/ProjectInfo.h>

#include <QtWidgets/QDialog>

class QLabel;
class QListView;
class QPushButton;
class QStackedLayout;

namespace Korvo::Desktop {

class EmptyState;

/// A window with the pictures and videos of one project; any of them can be saved.
class MediaView : public QDialog
{
    Q_OBJECT
public:
    explicit MediaView(Web::KorvoWebApi &usedApi, QWidget *parent = nullptr);

    void showProject(const Web::ProjectInfo &newProject);

    /// True while the platform is asked for links: its failures are shown here.
    bool isAsking() const { return questions > 0; }
    QString projectName() const { return project.projectName(); }
    void takeError(Web::Error error);

Q_SIGNALS:
    /// An order for Transfers::startSingleFile().
    void saveWanted(const Korvo::Desktop::Transfer &order);

private:
    void takeLinks(const QList<Web::SingleMediaFileLinkData> &links);
    void saveSelected();
    void updateButtons();

    Web::KorvoWebApi &api;
    MediaModel model;
    ThumbnailLoader loader;
    Web::ProjectInfo project;
    Web::Error error = Web::Error::None;
    int questions = 0; ///< answers carry no project: that of the last question counts
    QStackedLayout *const stack;
    EmptyState *const empty;
    QListView *const view;
    QLabel *const count;
    QPushButton *const saveButton;
};

} // namespace Korvo::Desktop
