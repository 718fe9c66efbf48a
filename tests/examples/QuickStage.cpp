#include "QuickStage.h"

#include "Patience.h"
#include "flow/SignalRecorder.h"

#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

namespace Korvo::Web::TestSupport {

QuickStage::QuickStage()
{
    QObject::connect(&engine, &QQmlEngine::warnings, &engine, [this](const QList<QQmlError> &errors) {
        for (const QQmlError &error : errors)
            heard.append(error.toString());
    });
    engine.setInitialProperties({{QStringLiteral("host"), QVariant::fromValue(&host)}});
    engine.load(QUrl(QStringLiteral("qrc:/Main.qml")));
    shown = engine.rootObjects().isEmpty() ? nullptr : qobject_cast<QQuickWindow *>(engine.rootObjects().first());
    if (!shown || !QTest::qWaitForWindowExposed(shown, PATIENCE_MILLISECONDS))
        return;
    shown->requestActivate();
    if (!QTest::qWaitForWindowActive(shown, PATIENCE_MILLISECONDS))
        shown = nullptr;
}

bool QuickStage::isSeen(const char *name) const
{
    return item(name) && item(name)->isVisible();
}

// Where an item lies is certain only once a frame has been drawn: until then its layout may still be due.
QPoint QuickStage::middleOf(const QQuickItem &target)
{
    shown->grabWindow();
    return target.mapToScene(QPointF(target.width() / 2, target.height() / 2)).toPoint();
}

bool QuickStage::click(const char *name)
{
    QQuickItem *const target = item(name);
    if (!target || !eventually([&] { return target->isVisible() && target->isEnabled(); }, PATIENCE))
        return false;
    if (!target->inherits("QQuickAbstractButton")) {
        QTest::mouseClick(shown, Qt::LeftButton, Qt::NoModifier, middleOf(*target));
        return eventually([&] { return target->hasActiveFocus(); }, PATIENCE);
    }
    const QSignalSpy clicks(target, SIGNAL(clicked()));
    QTest::mouseClick(shown, Qt::LeftButton, Qt::NoModifier, middleOf(*target));
    return eventually([&] { return !clicks.isEmpty(); }, PATIENCE);
}

bool QuickStage::type(const char *name, const QString &newText)
{
    if (!click(name))
        return false;
    QTest::keyClick(shown, Qt::Key_A, Qt::ControlModifier);
    for (const QChar letter : newText)
        QTest::keyClick(shown, letter.toLatin1());
    return text(name) == newText;
}

bool QuickStage::logIn(const QString &user, const QString &password)
{
    return type("user", user) && type("password", password) && click("loginButton");
}

} // namespace Korvo::Web::TestSupport
