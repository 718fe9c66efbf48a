#pragma once

#include "Host.h"
#include "UnseenScreen.h"

#include <QtCore/QScopedPointer>
#include <QtCore/QStringList>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickItem>
#include <QtQuick/QQuickWindow>

namespace Korvo::Web::TestSupport {

/// The Quick sample on a screen that nobody sees, and a user's hands.
class QuickStage
{
public:
    QuickStage();

    KorvoWebApi &api() { return *host.api(); }
    const Qml::ProjectListModel &projects() { return *host.projects(); }
    QQuickWindow *window() const { return shown; }
    /// What QML has complained about: each is a mistake in the sample.
    const QStringList &complaints() const { return heard; }

    bool isSeen(const char *name) const;
    /// Null when there is no item of that name.
    QQuickItem *item(const char *name) const { return shown->findChild<QQuickItem *>(QString::fromLatin1(name)); }
    QString text(const char *name) const { return item(name)->property("text").toString(); }
    /// False when there is no such item, or it cannot be used, or something else was hit.
    bool click(const char *name);
    /// Replaces what is in a field, key by key.
    bool type(const char *name, const QString &text);
    bool logIn(const QString &user, const QString &password);

private:
    QPoint middleOf(const QQuickItem &target);

    const UnseenScreen screen;
    Qml::Host host;
    QQmlApplicationEngine engine;
    QQuickWindow *shown = nullptr;
    QStringList heard;
};

} // namespace Korvo::Web::TestSupport
