#include "InterfaceComparison.h"

#include <QtCore/QFile>
#include <QtTest/QtTest>

namespace {

const QString META_OBJECT = QStringLiteral("meta-object.txt");
const QString BINARY = QStringLiteral("binary.txt");

QString keptText(const QString &name)
{
    QFile file(QStringLiteral(KEPT_INTERFACE "/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// The kept description with one thing replaced, which must stand in it once.
QString doctored(const QString &file, const QString &before, const QString &after)
{
    const QString text = keptText(file);
    return text.count(before) == 1 ? QString(text).replace(before, after) : QString();
}

} // namespace

class tst_InterfaceComparison : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theKeptDescriptionsEqualThemselves();
    void saysInWordsWhatChanged_data();
    void saysInWordsWhatChanged();
    void tellsSectionsApart();
    void describesTheWholeFacade();
};

void tst_InterfaceComparison::theKeptDescriptionsEqualThemselves()
{
    for (const QString &name : {META_OBJECT, BINARY}) {
        QVERIFY(!keptText(name).isEmpty());
        QCOMPARE(interfaceDifferences(keptText(name), keptText(name)), QStringList());
    }
}

void tst_InterfaceComparison::saysInWordsWhatChanged_data()
{
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QStringList>("expected");

    const auto row = [](const char *name, const char *kept, const char *current, const QStringList &expected) {
        QTest::newRow(name) << QStringLiteral("[class A : QObject]\n") + QLatin1String(kept)
                            << QStringLiteral("[class A : QObject]\n") + QLatin1String(current) << expected;
    };
    row("virtual methods change places", "virtual 3: A::login()\nvirtual 4: A::logout()\n",
        "virtual 3: A::logout()\nvirtual 4: A::login()\n",
        {QStringLiteral("virtual A::login() moved from slot 3 to 4"),
         QStringLiteral("virtual A::logout() moved from slot 4 to 3")});
    row("virtual method in between", "virtual 3: A::login()\n", "virtual 3: A::ask()\nvirtual 4: A::login()\n",
        {QStringLiteral("virtual A::login() moved from slot 3 to 4"),
         QStringLiteral("added: virtual A::ask() at slot 3 of class A : QObject")});
    row("signals change places", "signal 0: void a()\nsignal 1: void b()\n", "signal 0: void b()\nsignal 1: void a()\n",
        {QStringLiteral("signal a moved from place 0 to 1"), QStringLiteral("signal b moved from place 1 to 0")});
    row("parameter renamed", "signal 7: void uploadFinished(uint id)\n",
        "signal 7: void uploadFinished(uint uploadId)\n",
        {QStringLiteral("signal uploadFinished: parameter 'id' renamed to 'uploadId'")});
    row("second parameter renamed", "signal 0: void a(QMap<int,int> x, int y)\n",
        "signal 0: void a(QMap<int,int> x, int z)\n", {QStringLiteral("signal a: parameter 'y' renamed to 'z'")});
    row("other type", "signal 0: void a(uint id)\n", "signal 0: void a(int id)\n",
        {QStringLiteral("signal a takes (int) instead of (uint)")});
    row("other result", "method 0: uint a(int x)\n", "method 0: int a(int x)\n",
        {QStringLiteral("method a returns int instead of uint")});
    row("other name", "method 0: void a(int x)\n", "method 0: void b(int x)\n",
        {QStringLiteral("method a at place 0 gave way to \"void b(int x)\"")});
    row("removed", "signal 0: void a()\n", "",
        {QStringLiteral("removed: signal void a() at place 0 of class A : QObject")});
    row("added at the end", "", "method 9: void a(int x)\n",
        {QStringLiteral("added: method void a(int x) at place 9 of class A : QObject")});
    row("one of two of a name goes", "method 0: void a(int x, int y)\nmethod 1: void a(int x)\n",
        "method 0: void a(int x, int y)\n",
        {QStringLiteral("removed: method void a(int x) at place 1 of class A : QObject")});
    row("enumerator", "enumerator Role::Guest = 0\n", "enumerator Role::Guest = 1\n",
        {QStringLiteral("enumerator Role::Guest: was \"Role::Guest = 0\", is \"Role::Guest = 1\"")});
    row("layout", "size S = 8\nfield S::a = 0\n", "size S = 16\nfield S::a = 8\n",
        {QStringLiteral("size S: was \"S = 8\", is \"S = 16\""),
         QStringLiteral("field S::a: was \"S::a = 0\", is \"S::a = 8\"")});
    row("property", "property 0: bool busy, read only, notify a\n", "property 0: bool busy, read only, notify b\n",
        {QStringLiteral(
            "property busy: was \"bool busy, read only, notify a\", is \"bool busy, read only, notify b\"")});
    row("symbol", "symbol A::login()\nsymbol A::b()\n", "symbol A::b()\n",
        {QStringLiteral("removed: symbol A::login() of class A : QObject")});
    row("nothing", "signal 0: void a(uint id)\n", "signal 0: void a(uint id)\n", {});

    // The same on the kept descriptions themselves.
    QTest::newRow("a signal of the facade")
        << keptText(META_OBJECT)
        << doctored(META_OBJECT, QStringLiteral("void uploadFinished(uint uploadId)"),
                    QStringLiteral("void uploadFinished(uint id)"))
        << QStringList{QStringLiteral("signal uploadFinished: parameter 'uploadId' renamed to 'id'")};
    QTest::newRow("a virtual method of the facade")
        << keptText(BINARY)
        << doctored(BINARY, QStringLiteral("Korvo::Web::KorvoWebApi::logout()\nvirtual"),
                    QStringLiteral("Korvo::Web::KorvoWebApi::leave()\nvirtual"))
        << QStringList{QStringLiteral("virtual Korvo::Web::KorvoWebApi::logout() at slot 14 gave way to "
                                      "\"Korvo::Web::KorvoWebApi::leave()\"")};
}

void tst_InterfaceComparison::saysInWordsWhatChanged()
{
    QFETCH(QString, kept);
    QFETCH(QString, current);
    QFETCH(QStringList, expected);
    QCOMPARE(interfaceDifferences(kept, current), expected);
}

void tst_InterfaceComparison::tellsSectionsApart()
{
    const QString kept
        = QStringLiteral("[class A : QObject]\nsignal 0: void a()\n[class B : QObject]\nsignal 0: void a()\n");
    const QString current = QStringLiteral("[class A : QObject]\nsignal 0: void a()\n");
    QCOMPARE(interfaceDifferences(kept, current),
             QStringList{QStringLiteral("removed: signal void a() at place 0 of class B : QObject")});
}

void tst_InterfaceComparison::describesTheWholeFacade()
{
    const QRegularExpression ownSlot(QStringLiteral("\nvirtual \\d+: Korvo::Web::KorvoWebApi::[a-z][A-Za-z]*\\("));
    QCOMPARE(keptText(META_OBJECT).count(QStringLiteral("\nsignal ")), 29);
    QCOMPARE(keptText(META_OBJECT).count(QStringLiteral("\nproperty ")), 8);
    QCOMPARE(keptText(BINARY).count(ownSlot), 18 + 1); // and metaObject()
}

QTEST_APPLESS_MAIN(tst_InterfaceComparison)

#include "tst_InterfaceComparison.moc"
