// Requests and bodies made of arbitrary texts.
//
// Input: one instruction per line, a word and its text; see perform().
#include "FuzzTarget.h"

#include "handles/UploadFileDescriptor.h"
#include "request/RequestBodies.h"
#include "request/WebCommunicator.h"
#include "support/PartBodies.h"

#include <NQKorvoWeb/NetworkRequestBodyBuilder.h>
#include <NQKorvoWeb/NetworkRequestBuilder.h>

#include <QtCore/QMessageAuthenticationCode>
#include <QtCore/QUrl>
#include <QtCore/QUrlQuery>
#include <QtCore/QXmlStreamReader>

#include <algorithm>

namespace Korvo::Web::Fuzz {

namespace {

bool breaksLines(const QByteArray &text)
{
    return text.contains('\r') || text.contains('\n') || text.contains('\0');
}

/// Builds one request step by step and keeps in mind what it has to look like.
class RequestUnderTest
{
public:
    RequestUnderTest() { builder.initializeServiceRequest(QString()); }

    void perform(const QByteArray &word, const QString &text);
    void check();

private:
    void initialize(bool isWeb, const QString &newPath);
    void checkHeaders(const QNetworkRequest &request) const;
    void checkAddress(const QNetworkRequest &request) const;
    void checkSignature(const QNetworkRequest &request) const;

    NetworkRequestBuilder builder{"client", "secret"};
    const QByteArray webHost = QNetworkRequest(builder.initializeWebRequest(QString())).url().host().toUtf8();
    const QByteArray serviceHost = QNetworkRequest(builder.initializeServiceRequest(QString())).url().host().toUtf8();
    QString path;
    QByteArray secret = "secret";
    QByteArray method = "GET";
    int params = 0;
    bool isWeb = false;
    bool isSigned = false;
};

void RequestUnderTest::initialize(bool toWeb, const QString &newPath)
{
    isWeb = toWeb;
    path = newPath;
    method = "GET";
    params = 0;
    isSigned = false;
    if (isWeb)
        builder.initializeWebRequest(path);
    else
        builder.initializeServiceRequest(path);
}

// Texts come from servers (token, client, keys), from the host (names) and from users; the words say which.
void RequestUnderTest::perform(const QByteArray &word, const QString &text)
{
    if (word == "web" || word == "service") {
        initialize(word == "web", text);
    } else if (word == "client") {
        secret = text.section(QLatin1Char(' '), 1).toUtf8();
        builder.setClientData(text.section(QLatin1Char(' '), 0, 0), QString::fromUtf8(secret));
    } else if (word == "token") {
        builder.setBearerToken(text);
    } else if (word == "offset") {
        builder.setServerTimeOffset(text.toLongLong());
    } else if (word == "param") {
        builder.withParam(QStringLiteral("key"), text);
        ++params;
    } else if (word == "header") {
        // The signed headers are the builder's own.
        builder.withHeader(QStringLiteral("Fuzzed-") + text.section(QLatin1Char(' '), 0, 0),
                           text.section(QLatin1Char(' '), 1));
    } else if (word == "accept") {
        builder.withAcceptHeader(text);
    } else if (word == "type") {
        builder.withContentTypeHeader(text.toUtf8());
    } else if (word == "put") {
        builder.usingMethod(PUT);
        method = "PUT";
    } else if (word == "auth") {
        builder.withAuthHeader();
        isSigned = true;
    }
}

void RequestUnderTest::check()
{
    const QNetworkRequest request = builder;
    require(QNetworkRequest(builder) == request, "converting twice gives the same request twice");
    checkHeaders(request);
    checkAddress(request);
    checkSignature(request);
}

void RequestUnderTest::checkHeaders(const QNetworkRequest &request) const
{
    const QList<QByteArray> names = request.rawHeaderList();
    for (const QByteArray &name : names)
        require(!breaksLines(name) && !breaksLines(request.rawHeader(name)), "no header smuggles in another");
}

void RequestUnderTest::checkAddress(const QNetworkRequest &request) const
{
    const QUrl url = request.url();
    if (!url.isValid())
        return; // nothing is sent to such an address
    const QByteArray sent = url.toEncoded();
    require(!breaksLines(sent) && !sent.contains(' '), "the address is one word");
    require(url.scheme() == QLatin1String("https"), "the address stays with TLS");
    require(url.host().toUtf8() == (isWeb ? webHost : serviceHost), "no path leads to another server");
    require(url.userInfo().isEmpty(), "no path says who is asking");
    if (path.contains(QLatin1Char('?')) || path.contains(QLatin1Char('#')))
        return;
    const QUrlQuery query(url);
    require(query.allQueryItemValues(QStringLiteral("key")).size() == params, "no parameter brings another along");
}

void RequestUnderTest::checkSignature(const QNetworkRequest &request) const
{
    const QByteArray proof = request.rawHeader("Authorization");
    if (!isSigned)
        return;
    if (isWeb) {
        require(proof.startsWith("Bearer "), "the web server sees a token");
        return;
    }
    const QByteArray text
        = QByteArrayList{method, request.rawHeader("Date"), request.rawHeader("X-KorvoService-MessageToken"),
                         request.rawHeader("X-KorvoService-ClientId"), path.toUtf8()}
              .join('\n');
    const QByteArray expected = QMessageAuthenticationCode::hash(text, secret, QCryptographicHash::Sha256).toBase64();
    require(request.hasRawHeader("X-KorvoService-MessageToken") && proof == "KorvoService " + expected,
            "the signature is what the service works out");
}

/// The texts of all elements without children, in order.
QStringList leafTexts(const QByteArray &body)
{
    QStringList texts;
    QXmlStreamReader reader(body);
    bool isLeaf = false;
    QString text;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            isLeaf = true;
            text.clear();
            break;
        case QXmlStreamReader::Characters:
            text += reader.text().toString();
            break;
        case QXmlStreamReader::EndElement:
            if (isLeaf)
                texts.append(text);
            isLeaf = false;
            break;
        default:
            break;
        }
    }
    require(!reader.hasError(), "a body of harmless texts is well-formed");
    return texts;
}

/// Whether the text comes back from XML as it is: bodies are written without escaping.
bool isHarmless(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar character) {
        return character >= QLatin1Char(' ') && character < QChar(0xD800) && character != QLatin1Char('<')
               && character != QLatin1Char('>') && character != QLatin1Char('&') && character.unicode() != 0x7F;
    });
}

void checkBodies(const QString &text)
{
    namespace Bodies = RequestBodies;
    const QByteArray content = text.toUtf8();
    const QString encoded = QString::fromLatin1(content.toBase64());
    const UploadFileDescriptor file{text, QString(), text, text, false};
    require(leafTexts(Bodies::deleteObject(text, text)) == QStringList({text, text}), "delete");
    require(leafTexts(Bodies::cleanUpVersions(text, text, 3)) == QStringList({text, text, QStringLiteral("3")}),
            "clean up");
    require(leafTexts(Bodies::listFiles(text, text, {text, text})) == QStringList({text, text, text, text}), "listing");
    require(leafTexts(Bodies::uploadFile(file, content)) == QStringList({text, encoded, text, text}), "file");
    require(leafTexts(TestSupport::partBody(content, text, 7)) == QStringList({encoded, text, QStringLiteral("7")}),
            "part");
    require(leafTexts(Bodies::completeMultiPart(text, text)) == QStringList({text, text}), "completion");
    require(leafTexts(Bodies::resetPassword(text)) == QStringList(text), "password reset");
    require(leafTexts(Bodies::createBucket(text)) == QStringList(text.toLower()), "bucket");
    require(leafTexts(Bodies::uploadCancelled(text)) == QStringList(text), "cancellation");
}

void checkForm(const QString &user, const QString &password)
{
    const QByteArray form = RequestBodies::login(user, password);
    const QByteArray before = "grant_type=password&keepInMind=true&username=";
    require(form.startsWith(before) && form.endsWith("&password=" + password.toUtf8()), "the form is the login's");
    const QByteArray name
        = form.mid(before.size(), form.size() - before.size() - int(qstrlen("&password=")) - password.toUtf8().size());
    require(QUrl::fromPercentEncoding(name) == QString::fromUtf8(user.toUtf8()), "the user name comes back");
    require(!name.contains('&') && !name.contains('=') && !breaksLines(name), "the user name stays one value");
}

void checkBucketName(const QString &text)
{
    const QString name = WebCommunicator::bucketName(text, text, text);
    require(std::all_of(name.cbegin(), name.cend(),
                        [](QChar c) {
                            return (c >= QLatin1Char('a') && c <= QLatin1Char('z'))
                                   || (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('-');
                        }),
            "a bucket's name has small letters, digits and hyphens only");
}

/// The body builder against a plain stack.
void checkBodyBuilder(const QByteArray &input)
{
    NetworkRequestBodyBuilder builder;
    QByteArray expected;
    QList<QByteArray> open;
    for (const QByteArray &line : input.split('\n')) {
        const QByteArray name = line.mid(1);
        if (line.startsWith('<')) {
            builder.startElement(name, "a");
            expected += name.isEmpty() ? QByteArray() : "<" + name + " a>";
            if (!name.isEmpty())
                open.append(name);
        } else if (line.startsWith('>')) {
            builder.closeElement();
            expected += open.isEmpty() ? QByteArray() : "</" + open.takeLast() + ">";
        } else {
            builder.addElement(name, line);
            expected += name.isEmpty() ? QByteArray() : "<" + name + ">" + line + "</" + name + ">";
        }
    }
    while (!open.isEmpty())
        expected += "</" + open.takeLast() + ">";
    require(builder.generate() == expected, "the builder writes what it is told and closes what it opened");
}

} // namespace

void runTarget(const QByteArray &input)
{
    RequestUnderTest request;
    for (const QByteArray &line : input.split('\n')) {
        const QByteArray word = line.left(line.indexOf(' '));
        const QString text = QString::fromUtf8(line.mid(word.size() + 1))
                                 .replace(QLatin1String("\\r"), QLatin1String("\r"))
                                 .replace(QLatin1String("\\n"), QLatin1String("\n"));
        request.perform(word, text);
        request.check();
        checkForm(text, text);
        checkBucketName(text);
        if (isHarmless(text))
            checkBodies(text);
    }
    checkBodyBuilder(input);
}

} // namespace Korvo::Web::Fuzz
