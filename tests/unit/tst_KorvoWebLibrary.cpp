#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/ImportType.h>
#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QMetaEnum>
#include <QtCore/QSequentialIterable>
#include <QtTest/QtTest>

using namespace Korvo::Web;

namespace {

using EnumKeys = QList<QPair<QByteArray, int>>;

EnumKeys keysOf(const QMetaEnum &metaEnum)
{
    EnumKeys keys;
    for (int i = 0; i < metaEnum.keyCount(); ++i)
        keys.append({ metaEnum.key(i), metaEnum.value(i) });
    return keys;
}

template<typename Container>
int iterableSize(const Container &container)
{
    const QVariant variant = QVariant::fromValue(container);
    return variant.canConvert<QVariantList>() ? variant.value<QSequentialIterable>().size() : -1;
}

} // namespace

Q_DECLARE_METATYPE(EnumKeys)

class tst_KorvoWebLibrary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void registersTheNamesThatSignalsUse_data();
    void registersTheNamesThatSignalsUse();
    void leavesOtherShortNamesAlone_data();
    void leavesOtherShortNamesAlone();
    void listsAreSequentialContainers();
    void mediaNamesAreASequentialContainer();
    void mayBeInitializedAgain();
    void finalizeChangesNothing();
    void enumerationsArePublishedWithTheirKeys_data();
    void enumerationsArePublishedWithTheirKeys();
    void importTypesKeepTheirNumbers();
    void errorsKeepTheirNumbers();
};

// Before anything else touches a type: it is initialize() that makes the names known.
void tst_KorvoWebLibrary::initTestCase()
{
    const QByteArrayList names {
        "Korvo::Web::Error", "SingleMediaFileLinkData", "Korvo::Web::SingleMediaFileLinkData",
        "KorvoWebApi::LoginResult", "KorvoWebApi::LoginStatus", "KorvoWebApi::UploadError",
        "KorvoWebApi::DownloadError", "DownloadError", "QList<ProjectInfo>", "QList<UploadStatusInfo>",
        "QList<SingleMediaFileLinkData>", "ImportType", "Korvo::Web::ImportType", "MediaNamesList"
    };
    for (const QByteArray &name : names)
        QVERIFY2(QMetaType::type(name) == QMetaType::UnknownType, name.constData());
    KorvoWebLibrary::initialize();
    for (const QByteArray &name : names)
        QVERIFY2(QMetaType::isRegistered(QMetaType::type(name)), name.constData());
}

void tst_KorvoWebLibrary::registersTheNamesThatSignalsUse_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("Korvo::Web::Error") << qMetaTypeId<Error>();
    QTest::newRow("SingleMediaFileLinkData") << qMetaTypeId<SingleMediaFileLinkData>();
    QTest::newRow("Korvo::Web::SingleMediaFileLinkData") << qMetaTypeId<SingleMediaFileLinkData>();
    QTest::newRow("KorvoWebApi::LoginResult") << qMetaTypeId<KorvoWebApi::LoginResult>();
    QTest::newRow("KorvoWebApi::LoginStatus") << qMetaTypeId<KorvoWebApi::LoginStatus>();
    QTest::newRow("KorvoWebApi::UploadError") << qMetaTypeId<KorvoWebApi::UploadError>();
    QTest::newRow("KorvoWebApi::DownloadError") << qMetaTypeId<KorvoWebApi::DownloadError>();
    QTest::newRow("DownloadError") << qMetaTypeId<KorvoWebApi::DownloadError>();
    QTest::newRow("QList<ProjectInfo>") << qMetaTypeId<QList<ProjectInfo>>();
    QTest::newRow("QList<UploadStatusInfo>") << qMetaTypeId<QList<UploadStatusInfo>>();
    QTest::newRow("QList<SingleMediaFileLinkData>") << qMetaTypeId<QList<SingleMediaFileLinkData>>();
    QTest::newRow("ImportType") << qMetaTypeId<ImportType>();
    QTest::newRow("Korvo::Web::ImportType") << qMetaTypeId<ImportType>();
    QTest::newRow("MediaNamesList") << qMetaTypeId<QSet<QString>>();
}

void tst_KorvoWebLibrary::registersTheNamesThatSignalsUse()
{
    QFETCH(int, type);
    QCOMPARE(QMetaType::type(QTest::currentDataTag()), type);
}

void tst_KorvoWebLibrary::leavesOtherShortNamesAlone_data()
{
    QTest::addColumn<int>("unused");
    for (const char *name : { "Error", "UploadError", "LoginResult", "LoginStatus", "UserRole", "KorvoWebApi::UserRole",
                              "ProjectInfo", "UploadStatusInfo", "Korvo::Web::MediaNamesList" })
        QTest::newRow(name) << 0;
}

void tst_KorvoWebLibrary::leavesOtherShortNamesAlone()
{
    QCOMPARE(QMetaType::type(QTest::currentDataTag()), int(QMetaType::UnknownType));
}

void tst_KorvoWebLibrary::listsAreSequentialContainers()
{
    QCOMPARE(iterableSize(QList<ProjectInfo> { ProjectInfo(), ProjectInfo() }), 2);
    QCOMPARE(iterableSize(QList<UploadStatusInfo> { { QStringLiteral("id-1"), 3 } }), 1);

    const QVariant links = QVariant::fromValue(QList<SingleMediaFileLinkData> {
        { QStringLiteral("https://x"), QStringLiteral("video"), QStringLiteral("a.mp4") },
        { QStringLiteral("https://y"), QStringLiteral("image"), QStringLiteral("b.jpg") } });
    QVERIFY(links.canConvert<QVariantList>());
    const auto iterable = links.value<QSequentialIterable>();
    QCOMPARE(iterable.size(), 2);
    QCOMPARE(iterable.at(1).value<SingleMediaFileLinkData>().url, QStringLiteral("https://y"));
}

void tst_KorvoWebLibrary::mediaNamesAreASequentialContainer()
{
    QCOMPARE(iterableSize(MediaNamesList { QStringLiteral("Video/a.mp4"), QStringLiteral("Picture/b.jpg") }), 2);
}

void tst_KorvoWebLibrary::mayBeInitializedAgain()
{
    const int before = QMetaType::type("QList<ProjectInfo>");
    KorvoWebLibrary::initialize();
    QCOMPARE(QMetaType::type("QList<ProjectInfo>"), before);
}

void tst_KorvoWebLibrary::finalizeChangesNothing()
{
    KorvoWebLibrary::finalize();
    KorvoWebLibrary::finalize();
    QCOMPARE(QMetaType::type("DownloadError"), qMetaTypeId<KorvoWebApi::DownloadError>());
}

void tst_KorvoWebLibrary::enumerationsArePublishedWithTheirKeys_data()
{
    QTest::addColumn<EnumKeys>("keys");
    QTest::newRow("LoginResult") << EnumKeys { { "LoginResultSuccess", 0 }, { "LoginResultTimeOut", 1 },
        { "LoginResultFalseCredentials", 2 }, { "LoginResultCancelled", 3 } };
    QTest::newRow("LoginStatus") << EnumKeys { { "LoginStatusLoggedIn", 0 }, { "LoginStatusLoggingIn", 1 },
        { "LoginStatusLoggedOut", 2 } };
    QTest::newRow("UploadError") << EnumKeys { { "UploadErrorNone", 0 }, { "UploadErrorInternal", 1 },
        { "UploadErrorTimeOut", 2 }, { "UploadErrorFileAccess", 3 }, { "UploadErrorInvalidParameter", 4 } };
    QTest::newRow("DownloadError") << EnumKeys { { "DownloadErrorNone", 0 }, { "DownloadErrorInternal", 1 },
        { "DownloadErrorTimeOut", 2 }, { "DownloadErrorFileAccess", 3 }, { "DownloadErrorInvalidParameter", 4 } };
    QTest::newRow("UserRole") << EnumKeys { { "Guest", 0 }, { "RzOperator", 1 }, { "CompanyOperator", 2 },
        { "SystemAdministrator", 3 }, { "CompanyAdministrator", 4 }, { "EndUser", 5 } };
}

void tst_KorvoWebLibrary::enumerationsArePublishedWithTheirKeys()
{
    QFETCH(EnumKeys, keys);
    const QMetaObject &api = KorvoWebApi::staticMetaObject;
    const QMetaEnum metaEnum = api.enumerator(api.indexOfEnumerator(QTest::currentDataTag()));
    QVERIFY(metaEnum.isScoped());
    QCOMPARE(keysOf(metaEnum), keys);
}

void tst_KorvoWebLibrary::importTypesKeepTheirNumbers()
{
    QCOMPARE(int(ImportType::Standard), 0);
    QCOMPARE(int(ImportType::QZImport), 1);
    QCOMPARE(int(ImportType::Quickview), 2);
    QCOMPARE(sizeof(ImportType), sizeof(qint32));
}

void tst_KorvoWebLibrary::errorsKeepTheirNumbers()
{
    QCOMPARE(int(Error::None), 0);
    QCOMPARE(int(Error::TimeOut), 1);
    QCOMPARE(int(Error::Server), 2);
    QCOMPARE(int(Error::AuthenticationRequired), 3);
    QCOMPARE(int(Error::Cancelled), 4);
    QCOMPARE(int(Error::UnreadableLogin), 5);
    QCOMPARE(int(Error::FileOpen), 6);
    QCOMPARE(int(Error::CreationDate), 7);
    QCOMPARE(int(Error::DownloadFolder), 8);
    QCOMPARE(int(Error::FileWrite), 10);
    QCOMPARE(int(Error::InvalidParameter), 11);
    QCOMPARE(int(Error::Network), 14);
    QCOMPARE(sizeof(Error), sizeof(qint32));
}

QTEST_APPLESS_MAIN(tst_KorvoWebLibrary)

#include "tst_KorvoWebLibrary.moc"
