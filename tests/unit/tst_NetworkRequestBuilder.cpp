#include <NQKorvoWeb/NetworkRequestBuilder.h>

#include "request/Constants.h"
#include "request/RequestSignature.h"
#include "request/ServerRoots.h"

#include <QtCore/QMessageAuthenticationCode>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUrl>
#include <QtTest/QtTest>

#include <cstdio>
#include <memory>

using namespace Korvo::Web;

namespace {

const QString WEB_ROOT = QString::fromUtf8(ServerRoots::PRODUCTION_WEB);
const QString SERVICE_ROOT = QString::fromUtf8(ServerRoots::PRODUCTION_SERVICE);
const QByteArray DEFAULT_ACCEPT = "text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8";
const QByteArray DEFAULT_TYPE = "application/xml; charset=UTF-8";

// What the program does when it runs as a helper in a folder of its own, see main().
const QString PRINT_ROOTS = QStringLiteral("--print-roots");
const QString PRINT_ROOTS_WITHOUT_APPLICATION = QStringLiteral("--print-roots-without-application");
const QString PRINT_ROOTS_WHEN_MARKER_COMES_LATE = QStringLiteral("--print-roots-when-marker-comes-late");
const QString PRINT_DATE = QStringLiteral("--print-date");

NetworkRequestBuilder sampleBuilder()
{
    return NetworkRequestBuilder("Vantrel", QByteArray());
}

QByteArray addressOf(const QNetworkRequest &request)
{
    return request.url().toEncoded();
}

QByteArray rootsOf(NetworkRequestBuilder &builder)
{
    return addressOf(builder.initializeRequest(true, QString())) + '\n'
        + addressOf(builder.initializeRequest(false, QString()));
}

QByteArray printedRoots(const char *web, const char *service)
{
    return QByteArray(web) + '\n' + service;
}

// Independent of the builder's own arithmetic.
QByteArray signatureOf(const QByteArray &key, const QByteArrayList &lines)
{
    const QByteArray text = lines.join("\x0A");
    return "KorvoService " + QMessageAuthenticationCode::hash(text, key, QCryptographicHash::Sha256).toBase64();
}

// The signature that belongs to the headers of a request.
QByteArray expectedSignature(const QByteArray &key, const QByteArray &method, const QNetworkRequest &request,
                             const QByteArray &path)
{
    return signatureOf(key, { method, request.rawHeader("Date"), request.rawHeader("X-KorvoService-MessageToken"),
                              request.rawHeader("X-KorvoService-ClientId"), path });
}

// The offset that makes the server's clock read @p serverTime now.
qint64 offsetTo(const QDateTime &serverTime)
{
    return QDateTime::currentDateTimeUtc().secsTo(serverTime);
}

bool makeMarker(const QString &folder, bool asFolder)
{
    const QString marker = QDir(folder).filePath(QStringLiteral("UAT"));
    return asFolder ? QDir().mkpath(marker) : QFile(marker).open(QIODevice::WriteOnly);
}

// Runs a copy of this program, whose folder is @p programFolder and whose current folder is @p currentFolder.
QByteArray runHelper(const QString &mode, const QString &programFolder, const QString &currentFolder)
{
    const QString original = QCoreApplication::applicationFilePath();
    const QString copy = QDir(programFolder).filePath(QFileInfo(original).fileName());
    if (!QFile::exists(copy) && !QFile::copy(original, copy))
        return "the program could not be copied";
    QProcess helper;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8"));
    helper.setProcessEnvironment(environment);
    helper.setWorkingDirectory(currentFolder);
    helper.start(copy, { mode });
    if (!helper.waitForFinished() || helper.exitCode() != 0)
        return "the program failed: " + helper.readAllStandardError();
    // Warnings belong to the result: asking a missing application object for its folder makes Qt complain.
    return helper.readAllStandardOutput() + helper.readAllStandardError();
}

} // namespace

Q_DECLARE_METATYPE(Korvo::Web::RequestMethod)

class tst_NetworkRequestBuilder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void methodTexts();
    void hmacGivesThePublishedDigests_data();
    void hmacGivesThePublishedDigests();
    void hmacAgreesWithAnotherImplementation_data();
    void hmacAgreesWithAnotherImplementation();

    void rootsEndInOneSlash();
    void noMarkerSelectsProduction();
    void markerSelectsBeta_data();
    void markerSelectsBeta();
    void markerInTheCurrentFolderCountsWithoutApplicationOnly();
    void markerOfOtherNameOrPlaceDoesNotCount();
    void rootsAreLookedUpOnce();
    void serviceRootIsReplacedAsGiven_data();
    void serviceRootIsReplacedAsGiven();

    void bareRequestHasNoHeaders_data();
    void bareRequestHasNoHeaders();
    void webRequestCarriesItsHeadersOnly();
    void serviceRequestCarriesItsHeadersOnly();
    void initializationForgetsTheRequestBefore();
    void conversionWithoutInitializationIsARequestToTheServiceRoot();
    void convertingTwiceGivesTheSameRequest();
    void whatIsAddedBetweenConversionsCounts();
    void serviceRequestsDifferInTheirMessageToken();

    void userAgent_data();
    void userAgent();
    void userAgentIsReadAtEachInitialization();

    void noParameterNoQuestionMark();
    void parameterValuesAreEncoded_data();
    void parameterValuesAreEncoded();
    void parameterKeysAreNotEncoded();
    void parametersKeepTheirOrder();

    void laterHeaderReplacesEarlier();
    void rawHeaderWinsOverKnownHeader();
    void knownHeadersComeFirst();
    void headersAreUtf8();
    void noHeaderSmugglesInAnother();
    void lineBreaksOfTheClientIdAreNotSignedEither();
    void acceptHeader_data();
    void acceptHeader();
    void contentType_data();
    void contentType();
    void emptyContentTypeIsNotSent();

    void dateIsTheServersTime_data();
    void dateIsTheServersTime();
    void dateNames_data();
    void dateNames();
    void dateIsEnglishOnAGermanComputer();
    void dateIsEnglishUnderAnotherDefaultLocale();
    void dateHeaderIncludesTheOffset();

    void webAuthorization_data();
    void webAuthorization();
    void noAuthorizationUnlessAskedFor();
    void authorizationWinsOverTheMap();
    void authorizationIsTheLastHeader();
    void serviceAuthorization_data();
    void serviceAuthorization();
    void parametersAreNotSigned();
    void unknownMethodSignsAnEmptyLine();
    void eachSignedItemChangesTheSignature();
    void bareServiceRequestSignsAnEmptyDate();
    void clientIdIsSignedAsSent_data();
    void clientIdIsSignedAsSent();
    void clientDataIsUtf8();
    void clearLoginDataForgetsTokenAndSecret();
    void clearLoginDataKeepsServiceRootAndOffset();

    void copiesAreIndependent();
    void copyOutlivesItsOriginal();
    void assignmentReplacesEverything();
    void movedFromBuilderCanStartAgain();
};

void tst_NetworkRequestBuilder::init()
{
    QCoreApplication::setApplicationName(QStringLiteral("Site Manager"));
    QCoreApplication::setApplicationVersion(QStringLiteral("2.1.0"));
}

void tst_NetworkRequestBuilder::methodTexts()
{
    QCOMPARE(int(GET), 0);
    QCOMPARE(int(POST), 1);
    QCOMPARE(int(PUT), 2);
    QCOMPARE(requestMethodToString(GET), QStringLiteral("GET"));
    QCOMPARE(requestMethodToString(POST), QStringLiteral("POST"));
    QCOMPARE(requestMethodToString(PUT), QStringLiteral("PUT"));
    QCOMPARE(requestMethodToString(static_cast<RequestMethod>(3)), QString());
}

// The test vectors of RFC 4231.
void tst_NetworkRequestBuilder::hmacGivesThePublishedDigests_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<QByteArray>("digest");
    QTest::newRow("1: key of 20 bytes") << QByteArray(20, '\x0b') << QByteArray("Hi There")
        << QByteArray("b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
    QTest::newRow("2: short key") << QByteArray("Jefe") << QByteArray("what do ya want for nothing?")
        << QByteArray("5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
    QTest::newRow("3: both of one byte repeated") << QByteArray(20, '\xaa') << QByteArray(50, '\xdd')
        << QByteArray("773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe");
    QTest::newRow("4: key of 25 bytes") << QByteArray::fromHex("0102030405060708090a0b0c0d0e0f10111213141516171819")
        << QByteArray(50, '\xcd') << QByteArray("82558a389a443c0ea4cc819899f2083a85f0faa3e578f8077a2e3ff46729665b");
    QTest::newRow("6: key longer than a block") << QByteArray(131, '\xaa')
        << QByteArray("Test Using Larger Than Block-Size Key - Hash Key First")
        << QByteArray("60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
    QTest::newRow("7: both longer than a block") << QByteArray(131, '\xaa')
        << QByteArray("This is a test using a larger than block-size key and a larger than block-size data. The key "
                      "needs to be hashed before being used by the HMAC algorithm.")
        << QByteArray("9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2");
}

void tst_NetworkRequestBuilder::hmacGivesThePublishedDigests()
{
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, message);
    QFETCH(QByteArray, digest);
    QCOMPARE(hmacSha256(key, message), QByteArray::fromHex(digest).toBase64());
}

void tst_NetworkRequestBuilder::hmacAgreesWithAnotherImplementation_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("no key") << QByteArray() << QByteArray("message");
    QTest::newRow("no message") << QByteArray("key") << QByteArray();
    QTest::newRow("63 bytes") << QByteArray(63, 'k') << QByteArray("message");
    QTest::newRow("a whole block") << QByteArray(64, 'k') << QByteArray("message");
    QTest::newRow("65 bytes") << QByteArray(65, 'k') << QByteArray("message");
    QTest::newRow("zero and high bytes") << QByteArray("\0\xff\x80k", 4) << QByteArray("a\0b\xff", 4);
}

void tst_NetworkRequestBuilder::hmacAgreesWithAnotherImplementation()
{
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, message);
    QCOMPARE(hmacSha256(key, message),
             QMessageAuthenticationCode::hash(message, key, QCryptographicHash::Sha256).toBase64());
}

void tst_NetworkRequestBuilder::rootsEndInOneSlash()
{
    for (const char *text : { ServerRoots::PRODUCTION_WEB, ServerRoots::BETA_WEB }) {
        const QUrl root(QString::fromUtf8(text));
        QCOMPARE(root.scheme(), QStringLiteral("https"));
        QCOMPARE(root.path(), QStringLiteral("/"));
    }
    for (const char *text : { ServerRoots::PRODUCTION_SERVICE, ServerRoots::BETA_SERVICE }) {
        const QUrl root(QString::fromUtf8(text));
        QCOMPARE(root.scheme(), QStringLiteral("https"));
        QCOMPARE(root.path(), QStringLiteral("/korvoservice/"));
    }
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeServiceRequest(Constants::Route::STATUS);
    QCOMPARE(request.url().path(), QStringLiteral("/korvoservice/api/Status/Get"));
}

void tst_NetworkRequestBuilder::noMarkerSelectsProduction()
{
    const QTemporaryDir folder;
    QCOMPARE(runHelper(PRINT_ROOTS, folder.path(), folder.path()),
             printedRoots(ServerRoots::PRODUCTION_WEB, ServerRoots::PRODUCTION_SERVICE));
}

void tst_NetworkRequestBuilder::markerSelectsBeta_data()
{
    QTest::addColumn<bool>("asFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void tst_NetworkRequestBuilder::markerSelectsBeta()
{
    QFETCH(bool, asFolder);
    const QTemporaryDir programFolder;
    const QTemporaryDir currentFolder;
    QVERIFY(makeMarker(programFolder.path(), asFolder));
    QCOMPARE(runHelper(PRINT_ROOTS, programFolder.path(), currentFolder.path()),
             printedRoots(ServerRoots::BETA_WEB, ServerRoots::BETA_SERVICE));
}

void tst_NetworkRequestBuilder::markerInTheCurrentFolderCountsWithoutApplicationOnly()
{
    const QTemporaryDir programFolder;
    const QTemporaryDir currentFolder;
    QVERIFY(makeMarker(currentFolder.path(), false));
    QCOMPARE(runHelper(PRINT_ROOTS, programFolder.path(), currentFolder.path()),
             printedRoots(ServerRoots::PRODUCTION_WEB, ServerRoots::PRODUCTION_SERVICE));
    QCOMPARE(runHelper(PRINT_ROOTS_WITHOUT_APPLICATION, programFolder.path(), currentFolder.path()),
             printedRoots(ServerRoots::BETA_WEB, ServerRoots::BETA_SERVICE));
    QCOMPARE(runHelper(PRINT_ROOTS_WITHOUT_APPLICATION, programFolder.path(), programFolder.path()),
             printedRoots(ServerRoots::PRODUCTION_WEB, ServerRoots::PRODUCTION_SERVICE));
}

void tst_NetworkRequestBuilder::markerOfOtherNameOrPlaceDoesNotCount()
{
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("UAT.txt")));
    QVERIFY(QDir(folder.path()).mkpath(QStringLiteral("sub/UAT")));
    QCOMPARE(runHelper(PRINT_ROOTS, folder.path(), folder.path()),
             printedRoots(ServerRoots::PRODUCTION_WEB, ServerRoots::PRODUCTION_SERVICE));
}

void tst_NetworkRequestBuilder::rootsAreLookedUpOnce()
{
    const QTemporaryDir folder;
    QCOMPARE(runHelper(PRINT_ROOTS_WHEN_MARKER_COMES_LATE, folder.path(), folder.path()),
             printedRoots(ServerRoots::PRODUCTION_WEB, ServerRoots::PRODUCTION_SERVICE));
}

void tst_NetworkRequestBuilder::serviceRootIsReplacedAsGiven_data()
{
    QTest::addColumn<QString>("root");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("with slash") << QStringLiteral("https://files.example:8443/s/")
        << QByteArray("https://files.example:8443/s/api/x");
    QTest::newRow("without slash") << QStringLiteral("https://files.example/s")
        << QByteArray("https://files.example/sapi/x");
}

void tst_NetworkRequestBuilder::serviceRootIsReplacedAsGiven()
{
    QFETCH(QString, root);
    QFETCH(QByteArray, expected);
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setKorvoServiceUrl(root);
    QCOMPARE(addressOf(builder.initializeServiceRequest(QStringLiteral("api/x"))), expected);
    QCOMPARE(addressOf(builder.initializeWebRequest(QStringLiteral("api/x"))), WEB_ROOT.toUtf8() + "api/x");
}

void tst_NetworkRequestBuilder::bareRequestHasNoHeaders_data()
{
    QTest::addColumn<bool>("isWeb");
    QTest::addColumn<QString>("address");
    QTest::newRow("web") << true << WEB_ROOT + QStringLiteral("Token");
    QTest::newRow("service") << false << SERVICE_ROOT + QStringLiteral("Token");
}

void tst_NetworkRequestBuilder::bareRequestHasNoHeaders()
{
    QFETCH(bool, isWeb);
    QFETCH(QString, address);
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeRequest(isWeb, QStringLiteral("Token"));
    QCOMPARE(addressOf(request), address.toUtf8());
    QCOMPARE(request.rawHeaderList(), QByteArrayList());
}

void tst_NetworkRequestBuilder::webRequestCarriesItsHeadersOnly()
{
    NetworkRequestBuilder builder("client-7", "secret");
    const QNetworkRequest request = builder.initializeWebRequest(QStringLiteral("api/Projects"));
    QCOMPARE(addressOf(request), WEB_ROOT.toUtf8() + "api/Projects");
    QCOMPARE(request.rawHeaderList(), QByteArrayList({ "Content-Type", "User-Agent", "X-KorvoService-ClientId" }));
    QCOMPARE(request.rawHeader("Content-Type"), DEFAULT_TYPE);
    QCOMPARE(request.rawHeader("User-Agent"), QByteArray("SiteManager / 2.1.0"));
    QCOMPARE(request.rawHeader("X-KorvoService-ClientId"), QByteArray("client-7"));
}

void tst_NetworkRequestBuilder::serviceRequestCarriesItsHeadersOnly()
{
    NetworkRequestBuilder builder("client-7", "secret");
    const QNetworkRequest request = builder.initializeServiceRequest(QStringLiteral("api/bucket"));
    QCOMPARE(addressOf(request), SERVICE_ROOT.toUtf8() + "api/bucket");
    QCOMPARE(request.rawHeaderList(), QByteArrayList({ "Content-Type", "User-Agent", "Accept", "Date",
                                                       "X-KorvoService-ClientId", "X-KorvoService-MessageToken" }));
    QCOMPARE(request.rawHeader("Content-Type"), DEFAULT_TYPE);
    QCOMPARE(request.rawHeader("User-Agent"), QByteArray("SiteManager / 2.1.0"));
    QCOMPARE(request.rawHeader("Accept"), DEFAULT_ACCEPT);
    QCOMPARE(request.rawHeader("X-KorvoService-ClientId"), QByteArray("client-7"));
    const QRegularExpression token(QStringLiteral("\\A\\{[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}\\}\\z"));
    QVERIFY(token.match(QString::fromUtf8(request.rawHeader("X-KorvoService-MessageToken"))).hasMatch());
}

void tst_NetworkRequestBuilder::initializationForgetsTheRequestBefore()
{
    NetworkRequestBuilder builder("client-7", "secret");
    builder.initializeServiceRequest(QStringLiteral("api/x"))
        .usingMethod(PUT)
        .withParam(QStringLiteral("a"), QStringLiteral("b"))
        .withHeader(QStringLiteral("X-Mine"), QStringLiteral("1"))
        .withAuthHeader();
    QNetworkRequest request = builder.initializeRequest(true, QStringLiteral("api/y"));
    QCOMPARE(addressOf(request), WEB_ROOT.toUtf8() + "api/y");
    QCOMPARE(request.rawHeaderList(), QByteArrayList());
    // The method is back at GET.
    request = builder.initializeServiceRequest(QStringLiteral("api/z")).withAuthHeader();
    QCOMPARE(request.rawHeader("Authorization"), expectedSignature("secret", "GET", request, "api/z"));
}

void tst_NetworkRequestBuilder::conversionWithoutInitializationIsARequestToTheServiceRoot()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder;
    QCOMPARE(addressOf(request), SERVICE_ROOT.toUtf8());
    QCOMPARE(request.rawHeaderList(), QByteArrayList());
}

void tst_NetworkRequestBuilder::convertingTwiceGivesTheSameRequest()
{
    NetworkRequestBuilder builder("client-7", "secret");
    builder.initializeServiceRequest(QStringLiteral("api/x"))
        .usingMethod(PUT)
        .withParam(QStringLiteral("download"), QStringLiteral("true"))
        .withAuthHeader();
    const QNetworkRequest first = builder;
    builder.setServerTimeOffset(86400);
    const QNetworkRequest second = builder;
    QCOMPARE(addressOf(first), SERVICE_ROOT.toUtf8() + "api/x?download=true");
    QCOMPARE(second, first);
}

void tst_NetworkRequestBuilder::whatIsAddedBetweenConversionsCounts()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest first = builder.initializeRequest(true, QStringLiteral("api/x"));
    const QNetworkRequest second = builder
        .withParam(QStringLiteral("a"), QStringLiteral("1"))
        .withAcceptHeader(QString());
    QCOMPARE(addressOf(first), WEB_ROOT.toUtf8() + "api/x");
    QCOMPARE(addressOf(second), WEB_ROOT.toUtf8() + "api/x?a=1");
    QVERIFY(second.hasRawHeader("Accept"));
}

void tst_NetworkRequestBuilder::serviceRequestsDifferInTheirMessageToken()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest first = builder.initializeServiceRequest(QStringLiteral("api/x"));
    const QNetworkRequest second = builder.initializeServiceRequest(QStringLiteral("api/x"));
    QVERIFY(first.rawHeader("X-KorvoService-MessageToken") != second.rawHeader("X-KorvoService-MessageToken"));
}

void tst_NetworkRequestBuilder::userAgent_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("one blank") << QStringLiteral("Site Manager") << QStringLiteral("2.1.0")
        << QByteArray("SiteManager / 2.1.0");
    QTest::newRow("many blanks") << QStringLiteral(" A  b C ") << QStringLiteral("1") << QByteArray("AbC / 1");
    QTest::newRow("blank in version stays") << QStringLiteral("A") << QStringLiteral("1 beta")
        << QByteArray("A / 1 beta");
    QTest::newRow("tab stays") << QStringLiteral("A\tb") << QStringLiteral("1") << QByteArray("A\tb / 1");
    QTest::newRow("no version") << QStringLiteral("A") << QString() << QByteArray("A / ");
}

void tst_NetworkRequestBuilder::userAgent()
{
    QFETCH(QString, name);
    QFETCH(QString, version);
    QFETCH(QByteArray, expected);
    QCoreApplication::setApplicationName(name);
    QCoreApplication::setApplicationVersion(version);
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeRequest(true, QStringLiteral("Token")).withUserAgentHeader();
    QCOMPARE(request.rawHeaderList(), QByteArrayList({ "User-Agent" }));
    QCOMPARE(request.rawHeader("User-Agent"), expected);
}

void tst_NetworkRequestBuilder::userAgentIsReadAtEachInitialization()
{
    NetworkRequestBuilder builder = sampleBuilder();
    builder.initializeRequest(true, QStringLiteral("Token"));
    QCoreApplication::setApplicationVersion(QStringLiteral("3.0"));
    QNetworkRequest request = builder.withUserAgentHeader();
    QCOMPARE(request.rawHeader("User-Agent"), QByteArray("SiteManager / 2.1.0"));
    request = builder.initializeRequest(true, QStringLiteral("Token")).withUserAgentHeader();
    QCOMPARE(request.rawHeader("User-Agent"), QByteArray("SiteManager / 3.0"));
}

void tst_NetworkRequestBuilder::noParameterNoQuestionMark()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeWebRequest(QStringLiteral("api/x"));
    QVERIFY(!addressOf(request).contains('?'));
}

void tst_NetworkRequestBuilder::parameterValuesAreEncoded_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("reserved and UTF-8") << QString::fromUtf8("a b&c=d/\xC3\xA9")
        << QByteArray("q=a%20b%26c%3Dd%2F%C3%A9");
    QTest::newRow("unreserved stays") << QStringLiteral("aZ09-._~") << QByteArray("q=aZ09-._~");
    QTest::newRow("plus") << QStringLiteral("me+x@site.example") << QByteArray("q=me%2Bx%40site.example");
    QTest::newRow("percent") << QStringLiteral("100%1") << QByteArray("q=100%251");
    QTest::newRow("fragment") << QStringLiteral("a#b?c") << QByteArray("q=a%23b%3Fc");
    QTest::newRow("empty") << QString() << QByteArray("q=");
}

void tst_NetworkRequestBuilder::parameterValuesAreEncoded()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, expected);
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request =
        builder.initializeWebRequest(QStringLiteral("api/x")).withParam(QStringLiteral("q"), value);
    QCOMPARE(addressOf(request), WEB_ROOT.toUtf8() + "api/x?" + expected);
}

void tst_NetworkRequestBuilder::parameterKeysAreNotEncoded()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request =
        builder.initializeWebRequest(QStringLiteral("api/x")).withParam(QStringLiteral("a/b:c&d"), QStringLiteral("1"));
    QCOMPARE(addressOf(request), WEB_ROOT.toUtf8() + "api/x?a/b:c&d=1");
}

void tst_NetworkRequestBuilder::parametersKeepTheirOrder()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeWebRequest(QStringLiteral("api/x"))
        .withParam(QStringLiteral("z"), QStringLiteral("1"))
        .withParam(QStringLiteral("a"), QStringLiteral("2"))
        .withParam(QStringLiteral("z"), QStringLiteral("3"));
    QCOMPARE(addressOf(request), WEB_ROOT.toUtf8() + "api/x?z=1&a=2&z=3");
}

void tst_NetworkRequestBuilder::laterHeaderReplacesEarlier()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeRequest(true, QStringLiteral("api/x"))
        .withHeader(QStringLiteral("X-Mine"), QStringLiteral("1"))
        .withHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("one"))
        .withHeader(QStringLiteral("X-Mine"), QStringLiteral("2"))
        .withHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("two"));
    QCOMPARE(request.rawHeader("X-Mine"), QByteArray("2"));
    QCOMPARE(request.rawHeader("User-Agent"), QByteArray("two"));
    QCOMPARE(request.rawHeaderList().size(), 2);
}

void tst_NetworkRequestBuilder::rawHeaderWinsOverKnownHeader()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeRequest(true, QStringLiteral("api/x"))
        .withHeader(QStringLiteral("Content-Type"), QStringLiteral("text/plain"))
        .withContentTypeHeader("application/json");
    QCOMPARE(request.rawHeader("Content-Type"), QByteArray("text/plain"));
}

void tst_NetworkRequestBuilder::knownHeadersComeFirst()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeRequest(true, QStringLiteral("api/x"))
        .withHeader(QStringLiteral("B"), QStringLiteral("1"))
        .withHeader(QStringLiteral("A"), QStringLiteral("1"))
        .withHeader(QStringLiteral("Z"), QStringLiteral("1"))
        .withUserAgentHeader()
        .withContentTypeHeader(QByteArray());
    QCOMPARE(request.rawHeaderList(), QByteArrayList({ "Content-Type", "User-Agent", "A", "B", "Z" }));
}

void tst_NetworkRequestBuilder::headersAreUtf8()
{
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeRequest(true, QStringLiteral("api/x"))
        .withHeader(QStringLiteral("X-Mine"), QString::fromUtf8("Gr\xC3\xBC\xC3\x9F" "e"));
    QCOMPARE(request.rawHeader("X-Mine"), QByteArray("Gr\xC3\xBC\xC3\x9F" "e"));
}

// Tokens and ids come from servers, and Qt writes headers out as they are.
void tst_NetworkRequestBuilder::noHeaderSmugglesInAnother()
{
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setBearerToken(QStringLiteral("token\r\nHost: elsewhere"));
    const QNetworkRequest request = builder.initializeRequest(true, QStringLiteral("api/x"))
        .withHeader(QStringLiteral("X-Mine\nX-Other"), QStringLiteral("1\r\nX-Third: 2"))
        .withHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("one\ntwo\rthree") + QChar(QChar::Null))
        .withAuthHeader();
    QCOMPARE(request.rawHeaderList(), QByteArrayList({ "User-Agent", "X-MineX-Other", "Authorization" }));
    QCOMPARE(request.rawHeader("X-MineX-Other"), QByteArray("1X-Third: 2"));
    QCOMPARE(request.rawHeader("User-Agent"), QByteArray("onetwothree"));
    QCOMPARE(request.rawHeader("Authorization"), QByteArray("Bearer tokenHost: elsewhere"));
}

void tst_NetworkRequestBuilder::lineBreaksOfTheClientIdAreNotSignedEither()
{
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setClientData(QStringLiteral("cli\nent"), QStringLiteral("key"));
    const QNetworkRequest request = builder.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    QCOMPARE(request.rawHeader("X-KorvoService-ClientId"), QByteArray("client"));
    const QByteArrayList lines { "GET", request.rawHeader("Date"), request.rawHeader("X-KorvoService-MessageToken"),
                                 "client", "api/x" };
    QCOMPARE(request.rawHeader("Authorization"), "KorvoService " + hmacSha256("key", lines.join('\n')));
}

void tst_NetworkRequestBuilder::acceptHeader_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("null") << QString() << DEFAULT_ACCEPT;
    QTest::newRow("empty") << QStringLiteral("") << DEFAULT_ACCEPT;
    QTest::newRow("given") << QStringLiteral("application/xml") << QByteArray("application/xml");
}

void tst_NetworkRequestBuilder::acceptHeader()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, expected);
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeRequest(true, QStringLiteral("api/x")).withAcceptHeader(value);
    QCOMPARE(request.rawHeader("Accept"), expected);
}

void tst_NetworkRequestBuilder::contentType_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("given") << QByteArray("application/json; charset=UTF-8")
        << QByteArray("application/json; charset=UTF-8");
    QTest::newRow("null restores the default") << QByteArray() << DEFAULT_TYPE;
    QTest::newRow("ends at the first NUL") << QByteArray("text/plain\0; x=y", 16) << QByteArray("text/plain");
}

void tst_NetworkRequestBuilder::contentType()
{
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, expected);
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeWebRequest(QStringLiteral("api/x"))
        .withContentTypeHeader("text/html")
        .withContentTypeHeader(value);
    QCOMPARE(request.rawHeader("Content-Type"), expected);
}

void tst_NetworkRequestBuilder::emptyContentTypeIsNotSent()
{
    // Qt sets no such header and says so.
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("setHeader.*Content-Type")));
    NetworkRequestBuilder builder = sampleBuilder();
    const QNetworkRequest request = builder.initializeWebRequest(QStringLiteral("api/x")).withContentTypeHeader("");
    QCOMPARE(request.rawHeaderList(), QByteArrayList({ "User-Agent", "X-KorvoService-ClientId" }));
    QVERIFY(request.header(QNetworkRequest::ContentTypeHeader).toString().isEmpty());
}

void tst_NetworkRequestBuilder::dateIsTheServersTime_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::newRow("same clock") << qint64(0);
    QTest::newRow("an hour ahead") << qint64(3600);
    QTest::newRow("behind") << qint64(-90);
    QTest::newRow("a hundred years ahead") << qint64(3155760000);
}

void tst_NetworkRequestBuilder::dateIsTheServersTime()
{
    QFETCH(qint64, offset);
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setServerTimeOffset(offset);
    const QDateTime before = QDateTime::currentDateTimeUtc().addSecs(offset - 1);
    const QString text = QString::fromUtf8(builder.getCurrentTimeUtc());
    const QDateTime after = QDateTime::currentDateTimeUtc().addSecs(offset);
    QVERIFY2(text.endsWith(QStringLiteral(" GMT")), qPrintable(text));
    QDateTime date = QLocale::c().toDateTime(text.chopped(4), QStringLiteral("ddd, dd MMM yyyy hh:mm:ss"));
    date.setTimeSpec(Qt::UTC);
    QVERIFY2(date.isValid() && before <= date && date <= after, qPrintable(text));
}

void tst_NetworkRequestBuilder::dateNames_data()
{
    QTest::addColumn<QDateTime>("serverTime");
    QTest::addColumn<QString>("expected");
    const char *const texts[] = {
        "Thu, 01 Jan 2026 00:00:3", "Sun, 01 Feb 2026 01:00:3", "Tue, 03 Mar 2026 14:05:3", "Wed, 01 Apr 2026 10:00:3",
        "Fri, 01 May 2026 11:00:3", "Mon, 01 Jun 2026 12:00:3", "Wed, 01 Jul 2026 13:00:3", "Sat, 01 Aug 2026 20:00:3",
        "Tue, 01 Sep 2026 21:00:3", "Thu, 01 Oct 2026 22:00:3", "Sun, 01 Nov 2026 23:00:3", "Fri, 25 Dec 2026 23:59:3"
    };
    const QList<QDateTime> times {
        QDateTime({ 2026, 1, 1 }, { 0, 0, 35 }, Qt::UTC), QDateTime({ 2026, 2, 1 }, { 1, 0, 35 }, Qt::UTC),
        QDateTime({ 2026, 3, 3 }, { 14, 5, 35 }, Qt::UTC), QDateTime({ 2026, 4, 1 }, { 10, 0, 35 }, Qt::UTC),
        QDateTime({ 2026, 5, 1 }, { 11, 0, 35 }, Qt::UTC), QDateTime({ 2026, 6, 1 }, { 12, 0, 35 }, Qt::UTC),
        QDateTime({ 2026, 7, 1 }, { 13, 0, 35 }, Qt::UTC), QDateTime({ 2026, 8, 1 }, { 20, 0, 35 }, Qt::UTC),
        QDateTime({ 2026, 9, 1 }, { 21, 0, 35 }, Qt::UTC), QDateTime({ 2026, 10, 1 }, { 22, 0, 35 }, Qt::UTC),
        QDateTime({ 2026, 11, 1 }, { 23, 0, 35 }, Qt::UTC), QDateTime({ 2026, 12, 25 }, { 23, 59, 35 }, Qt::UTC)
    };
    for (int i = 0; i < times.size(); ++i)
        QTest::newRow(texts[i]) << times.at(i) << QString::fromUtf8(texts[i]);
}

// The offset leads to a known moment; the last digit of the seconds is left to the clock that goes on.
void tst_NetworkRequestBuilder::dateNames()
{
    QFETCH(QDateTime, serverTime);
    QFETCH(QString, expected);
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setServerTimeOffset(offsetTo(serverTime));
    const QString date = QString::fromUtf8(builder.getCurrentTimeUtc());
    const QRegularExpression pattern(QStringLiteral("\\A") + expected + QStringLiteral("\\d GMT\\z"));
    QVERIFY2(pattern.match(date).hasMatch(), qPrintable(date));
}

void tst_NetworkRequestBuilder::dateIsEnglishOnAGermanComputer()
{
    const QTemporaryDir folder;
    const QByteArray output = runHelper(PRINT_DATE, folder.path(), folder.path());
    const QStringList lines = QString::fromUtf8(output).split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 2);
    // Without this line the test would prove nothing: the helper has to be a German program.
    QCOMPARE(lines.at(0), QStringLiteral("de_DE"));
    QVERIFY2(lines.at(1).startsWith(QStringLiteral("Tue, 03 Mar 2026 14:05:3")), qPrintable(lines.at(1)));
}

void tst_NetworkRequestBuilder::dateIsEnglishUnderAnotherDefaultLocale()
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    NetworkRequestBuilder builder = sampleBuilder();
    const QString date = QString::fromUtf8(builder.getCurrentTimeUtc());
    QLocale::setDefault(before);
    const QRegularExpression pattern(
        QStringLiteral("\\A(Mon|Tue|Wed|Thu|Fri|Sat|Sun), [0-9]{2} "
                       "(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) [0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2} GMT\\z"));
    QVERIFY2(pattern.match(date).hasMatch(), qPrintable(date));
}

void tst_NetworkRequestBuilder::dateHeaderIncludesTheOffset()
{
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setServerTimeOffset(offsetTo(QDateTime({ 2026, 3, 3 }, { 11, 0, 35 }, Qt::UTC)));
    const QNetworkRequest request = builder.initializeServiceRequest(QStringLiteral("api/x"));
    QVERIFY2(request.rawHeader("Date").startsWith("Tue, 03 Mar 2026 11:00:3"), request.rawHeader("Date").constData());
}

void tst_NetworkRequestBuilder::webAuthorization_data()
{
    QTest::addColumn<QString>("token");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("token") << QStringLiteral("abc.def") << QByteArray("Bearer abc.def");
    QTest::newRow("no token") << QString() << QByteArray("Bearer ");
    QTest::newRow("UTF-8") << QString::fromUtf8("\xC3\xA9") << QByteArray("Bearer \xC3\xA9");
}

void tst_NetworkRequestBuilder::webAuthorization()
{
    QFETCH(QString, token);
    QFETCH(QByteArray, expected);
    NetworkRequestBuilder builder("client-7", "secret");
    builder.setBearerToken(token);
    const QNetworkRequest request = builder.initializeWebRequest(QStringLiteral("api/x")).withAuthHeader();
    QVERIFY(request.hasRawHeader("Authorization"));
    QCOMPARE(request.rawHeader("Authorization"), expected);
}

void tst_NetworkRequestBuilder::noAuthorizationUnlessAskedFor()
{
    NetworkRequestBuilder builder("client-7", "secret");
    builder.setBearerToken(QStringLiteral("abc"));
    const QNetworkRequest web = builder.initializeWebRequest(QStringLiteral("api/x"));
    QVERIFY(!web.hasRawHeader("Authorization"));
    const QNetworkRequest service = builder.initializeServiceRequest(QStringLiteral("api/x"));
    QVERIFY(!service.hasRawHeader("Authorization"));
}

void tst_NetworkRequestBuilder::authorizationWinsOverTheMap()
{
    NetworkRequestBuilder builder("client-7", "secret");
    builder.setBearerToken(QStringLiteral("abc"));
    builder.initializeWebRequest(QStringLiteral("api/x"))
        .withAuthHeader()
        .withHeader(QStringLiteral("Authorization"), QStringLiteral("mine"))
        .withHeader(QStringLiteral("authorization"), QStringLiteral("mine too"));
    const QNetworkRequest request = builder;
    QCOMPARE(request.rawHeader("Authorization"), QByteArray("Bearer abc"));
    QCOMPARE(request.rawHeaderList().count("authorization"), 0);
}

void tst_NetworkRequestBuilder::authorizationIsTheLastHeader()
{
    NetworkRequestBuilder builder("client-7", "secret");
    const QNetworkRequest request = builder.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    QCOMPARE(request.rawHeaderList().last(), QByteArray("Authorization"));
    QCOMPARE(request.rawHeaderList().size(), 7);
}

void tst_NetworkRequestBuilder::serviceAuthorization_data()
{
    QTest::addColumn<RequestMethod>("method");
    QTest::addColumn<QByteArray>("methodText");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("secret");
    QTest::newRow("get") << GET << QByteArray("GET") << QStringLiteral("api/x") << QStringLiteral("secret");
    QTest::newRow("post") << POST << QByteArray("POST") << QStringLiteral("api/bucket/exists")
        << QStringLiteral("secret");
    QTest::newRow("put") << PUT << QByteArray("PUT") << QStringLiteral("api/bucket") << QStringLiteral("secret");
    QTest::newRow("leading slash") << GET << QByteArray("GET") << QStringLiteral("/api/x") << QStringLiteral("secret");
    QTest::newRow("path as passed") << GET << QByteArray("GET") << QString::fromUtf8("webdav/b/K\xC3\xB6 1%23.db3")
        << QStringLiteral("secret");
    QTest::newRow("no secret") << GET << QByteArray("GET") << QStringLiteral("api/x") << QString();
    QTest::newRow("long secret") << GET << QByteArray("GET") << QStringLiteral("api/x")
        << QString(100, QLatin1Char('k'));
}

void tst_NetworkRequestBuilder::serviceAuthorization()
{
    QFETCH(RequestMethod, method);
    QFETCH(QByteArray, methodText);
    QFETCH(QString, path);
    QFETCH(QString, secret);
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setClientData(QStringLiteral("client-7"), secret);
    builder.setBearerToken(QStringLiteral("not for the service"));
    const QNetworkRequest request = builder.initializeServiceRequest(path).usingMethod(method).withAuthHeader();
    QCOMPARE(request.rawHeader("X-KorvoService-ClientId"), QByteArray("client-7"));
    QCOMPARE(request.rawHeader("Authorization"),
             expectedSignature(secret.toUtf8(), methodText, request, path.toUtf8()));
}

void tst_NetworkRequestBuilder::parametersAreNotSigned()
{
    NetworkRequestBuilder builder("client-7", "secret");
    builder.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    const QNetworkRequest plain = builder;
    const QNetworkRequest withParameter = builder.withParam(QStringLiteral("download"), QStringLiteral("true"));
    QVERIFY(plain.url() != withParameter.url());
    QCOMPARE(withParameter.rawHeader("Authorization"), plain.rawHeader("Authorization"));
}

void tst_NetworkRequestBuilder::unknownMethodSignsAnEmptyLine()
{
    NetworkRequestBuilder builder("client-7", "secret");
    const QNetworkRequest request = builder.initializeServiceRequest(QStringLiteral("api/x"))
        .usingMethod(static_cast<RequestMethod>(3))
        .withAuthHeader();
    QCOMPARE(request.rawHeader("Authorization"), expectedSignature("secret", QByteArray(), request, "api/x"));
}

void tst_NetworkRequestBuilder::eachSignedItemChangesTheSignature()
{
    NetworkRequestBuilder builder("client-7", "secret");
    builder.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    const QNetworkRequest request = builder;
    const QByteArrayList items { "GET", request.rawHeader("Date"), request.rawHeader("X-KorvoService-MessageToken"),
                                 "client-7", "api/x" };
    QCOMPARE(request.rawHeader("Authorization"), signatureOf("secret", items));
    for (int i = 0; i < items.size(); ++i) {
        QByteArrayList changed = items;
        changed[i] += 'x';
        QVERIFY(request.rawHeader("Authorization") != signatureOf("secret", changed));
    }
    const QNetworkRequest put = builder.usingMethod(PUT);
    QVERIFY(put.rawHeader("Authorization") != request.rawHeader("Authorization"));
}

// The date belongs to one request, while the message token stays until the next one is made.
void tst_NetworkRequestBuilder::bareServiceRequestSignsAnEmptyDate()
{
    NetworkRequestBuilder builder("client-7", "secret");
    const QNetworkRequest before = builder.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    const QNetworkRequest request = builder.initializeRequest(false, QStringLiteral("api/y")).withAuthHeader();
    QVERIFY(!request.hasRawHeader("Date"));
    QCOMPARE(request.rawHeader("Authorization"),
             signatureOf("secret", { "GET", QByteArray(), before.rawHeader("X-KorvoService-MessageToken"), "client-7", "api/y" }));
}

void tst_NetworkRequestBuilder::clientIdIsSignedAsSent_data()
{
    QTest::addColumn<QString>("headerName");
    QTest::addColumn<QByteArray>("clientId");
    QTest::newRow("set at the beginning") << QString() << QByteArray("client-7");
    QTest::newRow("set by name") << QStringLiteral("X-KorvoService-ClientId") << QByteArray("mine");
    QTest::newRow("set by name in lower case") << QStringLiteral("x-korvoservice-clientid") << QByteArray("mine");
}

void tst_NetworkRequestBuilder::clientIdIsSignedAsSent()
{
    QFETCH(QString, headerName);
    QFETCH(QByteArray, clientId);
    NetworkRequestBuilder builder("client-7", "secret");
    builder.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    if (!headerName.isEmpty())
        builder.withHeader(headerName, QString::fromUtf8(clientId));
    builder.setClientData(QStringLiteral("client-8"), QStringLiteral("other secret"));
    const QNetworkRequest request = builder;
    QCOMPARE(request.rawHeader("X-KorvoService-ClientId"), clientId);
    QCOMPARE(request.rawHeader("Authorization"), expectedSignature("other secret", "GET", request, "api/x"));
}

void tst_NetworkRequestBuilder::clientDataIsUtf8()
{
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setClientData(QString::fromUtf8("k\xC3\xB6" "ln"), QString::fromUtf8("\xC3\xA9"));
    const QNetworkRequest request = builder.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    QCOMPARE(request.rawHeader("X-KorvoService-ClientId"), QByteArray("k\xC3\xB6" "ln"));
    QCOMPARE(request.rawHeader("Authorization"), expectedSignature("\xC3\xA9", "GET", request, "api/x"));
}

void tst_NetworkRequestBuilder::clearLoginDataForgetsTokenAndSecret()
{
    NetworkRequestBuilder builder("client-7", "secret");
    builder.setBearerToken(QStringLiteral("abc"));
    builder.clearLoginData();
    const QNetworkRequest web = builder.initializeWebRequest(QStringLiteral("api/x")).withAuthHeader();
    QCOMPARE(web.rawHeader("X-KorvoService-ClientId"), QByteArray("Vantrel"));
    QCOMPARE(web.rawHeader("Authorization"), QByteArray("Bearer "));
    const QNetworkRequest service = builder.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    QCOMPARE(service.rawHeader("X-KorvoService-ClientId"), QByteArray("Vantrel"));
    QCOMPARE(service.rawHeader("Authorization"), expectedSignature(QByteArray(), "GET", service, "api/x"));
}

void tst_NetworkRequestBuilder::clearLoginDataKeepsServiceRootAndOffset()
{
    NetworkRequestBuilder builder("client-7", "secret");
    builder.setKorvoServiceUrl(QStringLiteral("https://files.example/s/"));
    builder.setServerTimeOffset(offsetTo(QDateTime({ 2026, 3, 3 }, { 11, 0, 35 }, Qt::UTC)));
    builder.clearLoginData();
    const QNetworkRequest request = builder.initializeServiceRequest(QStringLiteral("api/x"));
    QCOMPARE(addressOf(request), QByteArray("https://files.example/s/api/x"));
    QVERIFY(request.rawHeader("Date").startsWith("Tue, 03 Mar 2026 11:00:3"));
}

void tst_NetworkRequestBuilder::copiesAreIndependent()
{
    NetworkRequestBuilder original("client-7", "secret");
    original.initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    const QNetworkRequest before = original;
    NetworkRequestBuilder copy(original);
    copy.usingMethod(PUT)
        .withParam(QStringLiteral("a"), QStringLiteral("b"))
        .withHeader(QStringLiteral("X-Mine"), QStringLiteral("1"));
    copy.setClientData(QStringLiteral("other"), QStringLiteral("other"));
    const QNetworkRequest fromCopy = copy;
    QVERIFY(fromCopy.hasRawHeader("X-Mine"));
    QCOMPARE(fromCopy.rawHeader("Date"), before.rawHeader("Date"));
    QCOMPARE(static_cast<QNetworkRequest>(original), before);
    copy.initializeRequest(true, QStringLiteral("Token"));
    QCOMPARE(static_cast<QNetworkRequest>(original), before);
}

void tst_NetworkRequestBuilder::copyOutlivesItsOriginal()
{
    auto original = std::make_unique<NetworkRequestBuilder>("client-7", "secret");
    original->initializeServiceRequest(QStringLiteral("api/x")).withAuthHeader();
    const QNetworkRequest before = *original;
    NetworkRequestBuilder copy(*original);
    original.reset();
    QCOMPARE(static_cast<QNetworkRequest>(copy), before);
}

void tst_NetworkRequestBuilder::assignmentReplacesEverything()
{
    NetworkRequestBuilder source("client-7", "secret");
    source.initializeServiceRequest(QStringLiteral("api/x")).usingMethod(PUT).withAuthHeader();
    NetworkRequestBuilder target = sampleBuilder();
    target.initializeWebRequest(QStringLiteral("Token")).withParam(QStringLiteral("a"), QStringLiteral("b"));
    target = source;
    const NetworkRequestBuilder &same = target;
    target = same;
    QCOMPARE(static_cast<QNetworkRequest>(target), static_cast<QNetworkRequest>(source));
}

void tst_NetworkRequestBuilder::movedFromBuilderCanStartAgain()
{
    NetworkRequestBuilder source("client-7", "secret");
    source.initializeServiceRequest(QStringLiteral("api/x"));
    const QNetworkRequest before = source;
    NetworkRequestBuilder target(std::move(source));
    QCOMPARE(static_cast<QNetworkRequest>(target), before);
    source = target;
    const QNetworkRequest request = source.initializeWebRequest(QStringLiteral("api/y"));
    QCOMPARE(addressOf(request), WEB_ROOT.toUtf8() + "api/y");
}

namespace {

int print(const QByteArray &text)
{
    return std::fputs(text.constData(), stdout) < 0 ? 1 : 0;
}

int printRoots()
{
    NetworkRequestBuilder builder = sampleBuilder();
    return print(rootsOf(builder));
}

int printRootsWhenMarkerComesLate()
{
    NetworkRequestBuilder builder = sampleBuilder();
    if (!makeMarker(QCoreApplication::applicationDirPath(), false))
        return 1;
    return print(rootsOf(builder));
}

int printDate()
{
    NetworkRequestBuilder builder = sampleBuilder();
    builder.setServerTimeOffset(offsetTo(QDateTime({ 2026, 3, 3 }, { 14, 5, 35 }, Qt::UTC)));
    return print(QLocale::system().name().toUtf8() + '\n' + builder.getCurrentTimeUtc());
}

} // namespace

// Where the marker is looked for depends on the program's folder and on the application object, so some tests run a
// copy of this program in a folder of its own.
int main(int argc, char *argv[])
{
    const QString mode = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString();
    if (mode == PRINT_ROOTS_WITHOUT_APPLICATION)
        return printRoots();
    QCoreApplication application(argc, argv);
    if (mode == PRINT_ROOTS)
        return printRoots();
    if (mode == PRINT_ROOTS_WHEN_MARKER_COMES_LATE)
        return printRootsWhenMarkerComesLate();
    if (mode == PRINT_DATE)
        return printDate();
    tst_NetworkRequestBuilder test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_NetworkRequestBuilder.moc"
