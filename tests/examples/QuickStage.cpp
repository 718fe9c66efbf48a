#include "QuickStage.h"

#include "flow/SignalRecorder.h"

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
    if (shown && QTest::qWaitForWindowExposed(shown))
        shown->requestActivate();
}

bool QuickStage::isSeen(const char *name) const
{
    return item(name) && item(name)->isVisible();
}

bool QuickStage::click(const char *name)
{
    QQuickItem *const target = item(name);
    if (!target || !eventually([&] { return target->isVisible() && target->isEnabled() && target->width() > 0; }))
        return false;
    const QPointF middle = target->mapToScene(QPointF(target->width() / 2, target->height() / 2));
    QTest::mouseClick(shown, Qt::LeftButton, Qt::NoModifier, middle.toPoint());
    return true;
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
