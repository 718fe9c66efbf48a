#include "api/ProjectIds.h"

#include <QtCore/QUuid>
#include <QtTest/QtTest>

using namespace Korvo::Web;

class tst_ProjectIds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void idComesFromTheNameAlone_data();
    void idComesFromTheNameAlone();
    void idHasTheFormOfAUuid();
    void namesThatDifferInOneLetterDifferInTheirIds();
};

// Expected values made apart from this code: md5(hex(utf8(name))), in groups.
void tst_ProjectIds::idComesFromTheNameAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("id");
    QTest::newRow("empty") << QString() << QStringLiteral("d41d8cd9-8f00-b204-e980-0998ecf8427e");
    QTest::newRow("one letter") << QStringLiteral("A") << QStringLiteral("3416a75f-4cea-9109-507c-acd8e2f2aefc");
    QTest::newRow("umlaut") << QString::fromUtf8("Kanal Süd")
                            << QStringLiteral("f68dd686-6a93-2ed9-3c5e-3d496e8bf459");
    QTest::newRow("place marker") << QString::fromUtf8("Straße 12/3 %1")
                                  << QStringLiteral("4e8af1a1-13a3-8837-4125-784c32ed1c5c");
}

void tst_ProjectIds::idComesFromTheNameAlone()
{
    QFETCH(QString, name);
    QTEST(derivedProjectId(name), "id");
    QTEST(derivedProjectId(name), "id");
}

void tst_ProjectIds::idHasTheFormOfAUuid()
{
    const QString id = derivedProjectId(QString::fromUtf8("Kanal Süd"));
    QCOMPARE(QUuid(id).toString(QUuid::WithoutBraces), id);
}

void tst_ProjectIds::namesThatDifferInOneLetterDifferInTheirIds()
{
    QVERIFY(derivedProjectId(QStringLiteral("Kanal")) != derivedProjectId(QStringLiteral("kanal")));
}

QTEST_APPLESS_MAIN(tst_ProjectIds)

#include "tst_ProjectIds.moc"
