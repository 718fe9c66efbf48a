#pragma once

#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/ProjectInfo.h>

#include <QtCore/QTemporaryDir>
#include <QtWidgets/QDialog>

class QTabWidget;
class QTreeWidget;
class QStackedLayout;

namespace Korvo::Desktop {

class EmptyState;

/// One kind of Quickview data as a tree.
class QuickviewPage : public QWidget
{
    Q_OBJECT
public:
    explicit QuickviewPage(QWidget *parent = nullptr);

    void showWaiting();
    void showProblem(const QString &title, const QString &hint);
    /// Shows what the file holds; a note when it is not readable as XML.
    void showFile(const QString &path);
    bool hasData() const { return !shownPath.isEmpty(); }
    QString path() const { return shownPath; }

private:
    QStackedLayout *const stack;
    EmptyState *const empty;
    QTreeWidget *const tree;
    QString shownPath;
};

/// A window with the project, survey and manhole data of one project.
class QuickviewView : public QDialog
{
    Q_OBJECT
public:
    explicit QuickviewView(Web::KorvoWebApi &usedApi, QWidget *parent = nullptr);

    void showProject(const Web::ProjectInfo &newProject);

    /// True while data are on their way: failures are shown here.
    bool isAsking() const { return !pagesById.isEmpty(); }
    QString projectName() const { return project.projectName(); }
    void takeError(Web::Error newError) { error = newError; }

    void reject() override;

private:
    using Download = unsigned int (Web::KorvoWebApi::*)(const QString &, const QString &);

    void addPage(const QString &title, const char *name, Download download);
    void fetch(int page);
    void handleFinished(unsigned int id);
    void cutOff();
    void saveCopy();
    void updateButtons();

    struct Kind
    {
        QuickviewPage *page;
        Download download;
        QString fileName;
    };

    Web::KorvoWebApi &api;
    Web::ProjectInfo project;
    QTemporaryDir folder;
    QVector<Kind> kinds;
    QHash<unsigned int, int> pagesById;
    Web::Error error = Web::Error::None; ///< comes right before the end that it explains
    QTabWidget *const tabs;
    QPushButton *const saveButton;
};

} // namespace Korvo::Desktop
