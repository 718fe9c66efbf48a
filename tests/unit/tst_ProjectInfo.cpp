#include <NQKorvoWeb/ProjectInfo.h>

#include <QtTest/QtTest>

using Korvo::Web::ProjectInfo;

namespace {

const QDateTime CREATION_DATE(QDate(2026, 3, 3), QTime(14, 5, 9), Qt::UTC);

ProjectInfo sampleInfo()
{
    return ProjectInfo(QStringLiteral("North Sewer"), QStringLiteral("id-1"), QStringLiteral("north_sewer"),
                       CREATION_DATE, 5000000000ULL, false);
}

} // namespace

class tst_ProjectInfo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaultsClaimAnImportByTheWeb();
    void constructorTakesNameBeforeId();
    void settersReachTheirFields();
    void settingAFieldOfACopyLeavesTheOriginal();
    void assignmentSharesUntilASetterIsCalled();
    void selfAssignmentKeepsTheValue();
    void movedFromValueStaysUsable();
    void equalityLooksAtIdAndOriginOnly_data();
    void equalityLooksAtIdAndOriginOnly();
    void travelsInAVariant();
};

void tst_ProjectInfo::defaultsClaimAnImportByTheWeb()
{
    const ProjectInfo info;
    QVERIFY(info.projectName().isEmpty());
    QVERIFY(info.projectId().isEmpty());
    QVERIFY(info.projectFolderName().isEmpty());
    QVERIFY(info.creationDate().isNull());
    QVERIFY(!info.creationDate().isValid());
    QCOMPARE(info.diskUsage(), 0ULL);
    QCOMPARE(info.isImportedByWeb(), true);
}

void tst_ProjectInfo::constructorTakesNameBeforeId()
{
    const ProjectInfo info = sampleInfo();
    QCOMPARE(info.projectName(), QStringLiteral("North Sewer"));
    QCOMPARE(info.projectId(), QStringLiteral("id-1"));
    QCOMPARE(info.projectFolderName(), QStringLiteral("north_sewer"));
    QCOMPARE(info.creationDate(), CREATION_DATE);
    QCOMPARE(info.diskUsage(), 5000000000ULL);
    QCOMPARE(info.isImportedByWeb(), false);
}

void tst_ProjectInfo::settersReachTheirFields()
{
    ProjectInfo info;
    info.setProjectName(QStringLiteral("North Sewer"));
    info.setProjectId(QStringLiteral("id-1"));
    info.setProjectFolderName(QStringLiteral("north_sewer"));
    info.setCreationDateName(CREATION_DATE);
    info.setDiskUsage(18446744073709551615ULL);
    info.setIsImportedByWeb(false);
    QCOMPARE(info.projectName(), QStringLiteral("North Sewer"));
    QCOMPARE(info.projectId(), QStringLiteral("id-1"));
    QCOMPARE(info.projectFolderName(), QStringLiteral("north_sewer"));
    QCOMPARE(info.creationDate(), CREATION_DATE);
    QCOMPARE(info.diskUsage(), 18446744073709551615ULL);
    QCOMPARE(info.isImportedByWeb(), false);
}

void tst_ProjectInfo::settingAFieldOfACopyLeavesTheOriginal()
{
    const ProjectInfo original = sampleInfo();
    ProjectInfo copy(original);
    copy.setProjectName(QStringLiteral("other"));
    copy.setProjectId(QStringLiteral("other"));
    copy.setProjectFolderName(QStringLiteral("other"));
    copy.setCreationDateName(QDateTime());
    copy.setDiskUsage(1);
    copy.setIsImportedByWeb(true);
    QCOMPARE(original.projectName(), QStringLiteral("North Sewer"));
    QCOMPARE(original.projectId(), QStringLiteral("id-1"));
    QCOMPARE(original.projectFolderName(), QStringLiteral("north_sewer"));
    QCOMPARE(original.creationDate(), CREATION_DATE);
    QCOMPARE(original.diskUsage(), 5000000000ULL);
    QCOMPARE(original.isImportedByWeb(), false);
}

void tst_ProjectInfo::assignmentSharesUntilASetterIsCalled()
{
    ProjectInfo original = sampleInfo();
    ProjectInfo copy;
    copy = original;
    QCOMPARE(copy.projectName(), QStringLiteral("North Sewer"));
    original.setProjectName(QStringLiteral("other"));
    QCOMPARE(copy.projectName(), QStringLiteral("North Sewer"));
}

void tst_ProjectInfo::selfAssignmentKeepsTheValue()
{
    ProjectInfo info = sampleInfo();
    const ProjectInfo &same = info;
    info = same;
    QCOMPARE(info.projectId(), QStringLiteral("id-1"));
}

void tst_ProjectInfo::movedFromValueStaysUsable()
{
    ProjectInfo source = sampleInfo();
    const ProjectInfo target(std::move(source));
    QCOMPARE(target.projectId(), QStringLiteral("id-1"));
    QCOMPARE(source.projectId(), QStringLiteral("id-1"));
}

void tst_ProjectInfo::equalityLooksAtIdAndOriginOnly_data()
{
    QTest::addColumn<ProjectInfo>("other");
    QTest::addColumn<bool>("expected");
    const QDateTime otherDate = CREATION_DATE.addDays(1);
    const QString id = QStringLiteral("id-1");
    const QString text = QStringLiteral("other");
    QTest::newRow("same") << sampleInfo() << true;
    QTest::newRow("everything else differs") << ProjectInfo(text, id, text, otherDate, 1, false) << true;
    QTest::newRow("other origin") << ProjectInfo(text, id, text, otherDate, 1, true) << false;
    QTest::newRow("other id") << ProjectInfo(QStringLiteral("North Sewer"), text, QStringLiteral("north_sewer"),
                                             CREATION_DATE, 5000000000ULL, false) << false;
    QTest::newRow("id in other case") << ProjectInfo(text, QStringLiteral("ID-1"), text, otherDate, 1, false) << false;
}

void tst_ProjectInfo::equalityLooksAtIdAndOriginOnly()
{
    QFETCH(ProjectInfo, other);
    QFETCH(bool, expected);
    QCOMPARE(sampleInfo() == other, expected);
    QCOMPARE(other == sampleInfo(), expected);
}

void tst_ProjectInfo::travelsInAVariant()
{
    const QVariant variant = QVariant::fromValue(sampleInfo());
    QCOMPARE(QByteArray(variant.typeName()), QByteArray("Korvo::Web::ProjectInfo"));
    QCOMPARE(variant.value<ProjectInfo>().projectName(), QStringLiteral("North Sewer"));
}

QTEST_APPLESS_MAIN(tst_ProjectInfo)

#include "tst_ProjectInfo.moc"
