#include "handles/AuthenticationResponses.h"
#include "handles/BucketResponses.h"
#include "handles/ProjectResponses.h"
#include "handles/UploadFileDescriptor.h"
#include "request/PartRequestBody.h"
#include "request/RequestBodies.h"
#include "request/RequestSignature.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QMetaEnum>
#include <QtCore/QMetaMethod>
#include <QtCore/QMetaProperty>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

using namespace Korvo::Web;

namespace {

const QString COMPANY = QStringLiteral("korvo-company-01");
const QString EMAIL = QStringLiteral("inspector@korvo.example");
const QString PROJECT = QStringLiteral("6f1c2f1e-3d2c-4a1b-9e0f-112233445566");
const QString PROJECT_NAME = QStringLiteral("Siemensstraße");
const QString BUCKET = QStringLiteral("korvo-com6f1c2f1e-siemensstrae");
const QString PICTURE = QStringLiteral("Picture/Sec/a.jpg");
const QString VIDEO = QStringLiteral("Video/Sec/H1.mp4");
const QString MULTIPART_ID = QStringLiteral("e534f9d6d348141b4a391e412e35e769");

QByteArray partBody()
{
    const QByteArray content(30, 'v');
    PartRequestBody body;
    body.begin(content.size(), QByteArray());
    body.add(content);
    return body.finish(MULTIPART_ID, 1);
}

QString textOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString document(const char *name)
{
    return textOf(QStringLiteral(DOCUMENTS_DIR "/") + QLatin1String(name));
}

/// What @p pattern captures, match by match; several captures of one match are joined by a blank.
QStringList captures(const QString &text, const QString &pattern)
{
    QStringList found;
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    for (auto matches = expression.globalMatch(text); matches.hasNext();)
        found.append(matches.next().capturedTexts().mid(1).join(QLatin1Char(' ')));
    return found;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

/// The part of a document below a heading, up to the next one of the same or a higher level.
QString section(const QString &text, const QString &heading)
{
    const QString level = heading.section(QLatin1Char(' '), 0, 0);
    const int start = text.indexOf(QLatin1Char('\n') + heading + QLatin1Char('\n'));
    const QRegularExpression next(QStringLiteral("^#{1,%1} ").arg(level.size()), QRegularExpression::MultilineOption);
    const int body = start + heading.size() + 2;
    const int end = text.indexOf(next, body);
    return start < 0 ? QString() : text.mid(body, end < 0 ? -1 : end - body);
}

QString signatureOf(const QMetaMethod &method)
{
    QStringList parameters;
    const QByteArrayList types = method.parameterTypes();
    const QByteArrayList names = method.parameterNames();
    for (int i = 0; i < types.size(); ++i)
        parameters.append(QString::fromLatin1(types.at(i) + ' ' + names.at(i)));
    return QString::fromLatin1(method.name()) + QLatin1Char('(') + parameters.join(QLatin1String(", "))
           + QLatin1Char(')');
}

QString unescaped(QString literal)
{
    return literal.replace(QLatin1String("\\n"), QLatin1String("\n"))
        .replace(QLatin1String("\\\""), QLatin1String("\""))
        .replace(QLatin1String("\\\\"), QLatin1String("\\"));
}

/// The string literals of a source file, neighbours joined; comments and includes left out.
QStringList literalsOf(const QString &source)
{
    static const QRegularExpression token(
        QStringLiteral("#include[^\\n]*|//[^\\n]*|'(?:[^'\\\\]|\\\\.)'|\"((?:[^\"\\\\\\n]|\\\\.)*)\""));
    static const QRegularExpression glue(QStringLiteral("^\\s*(\\)\\s*\\+\\s*QStringLiteral\\()?$"));
    QStringList literals;
    int endOfLast = -1;
    for (auto matches = token.globalMatch(source); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        if (match.capturedStart(1) < 0)
            continue;
        const QString text = unescaped(match.captured(1));
        if (endOfLast >= 0 && glue.match(source.mid(endOfLast, match.capturedStart() - endOfLast)).hasMatch())
            literals.last() += text;
        else
            literals.append(text);
        endOfLast = match.capturedEnd();
    }
    return literals;
}

QStringList literalsOfTheLibrary()
{
    QStringList literals;
    for (const char *folder : {"api", "handles", "request", "transfer"}) {
        QDirIterator files(QStringLiteral(SOURCE_DIR "/") + QLatin1String(folder), {QStringLiteral("*.cpp")});
        while (files.hasNext())
            literals += literalsOf(textOf(files.next()));
    }
    return literals;
}

/// Words of a language, not a name, a format or a piece of XML.
bool isSentence(const QString &literal)
{
    static const QRegularExpression words(QStringLiteral("[A-Za-z']+ [A-Za-z']+ [A-Za-z']+"));
    static const QRegularExpression word(QStringLiteral("[a-z]{5}"));
    return words.match(literal).hasMatch() && word.match(literal).hasMatch();
}

/// The parts of a text that do not change from one message to the next.
QStringList fixedParts(const QString &text)
{
    QStringList parts;
    for (const QString &part : text.split(QRegularExpression(QStringLiteral("[…\"\\n]")))) {
        if (part.trimmed().size() > 2)
            parts.append(part);
    }
    return parts;
}

/// Bodies of the document as they are on the wire: without the breaks between elements.
QString withoutBreaks(const QString &text)
{
    return QString(text).replace(QRegularExpression(QStringLiteral(">\\n *<")), QStringLiteral("><"));
}

/// The body of the answer that is shown below a heading.
QString bodyBelow(const char *heading)
{
    const QString example = section(document("wire-protocol.md"), QLatin1String(heading));
    const int answer = example.indexOf(QLatin1String("HTTP/1.1 200 OK"));
    const int body = example.indexOf(QLatin1String("\n\n"), answer) + 2;
    return withoutBreaks(example.mid(body, example.indexOf(QLatin1String("\n```"), body) - body));
}

template <class Response>
Response answerBelow(const char *heading)
{
    Response response;
    response.parse(bodyBelow(heading));
    return response;
}

} // namespace

class tst_Documents : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everySignalIsDescribed();
    void everyPropertyIsDescribed();
    void everyEnumeratorIsDescribed();
    void everyErrorCodeIsDescribed();
    void everyLogTextIsDescribed();
    void everyDescribedLogTextExists();
    void everyBodyIsShownAsItIsSent_data();
    void everyBodyIsShownAsItIsSent();
    void theSignatureOfTheExampleIsRight();
    void answersAboutAccountsAreUnderstood();
    void answersAboutProjectsAreUnderstood();
    void answersAboutBucketsAreUnderstood();
};

void tst_Documents::everySignalIsDescribed()
{
    const QMetaObject &meta = KorvoWebApi::staticMetaObject;
    QStringList emitted;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == QMetaMethod::Signal)
            emitted.append(signatureOf(meta.method(i)));
    }
    QCOMPARE(emitted.size(), 29);
    const QString text = document("signals.md");
    QStringList described;
    for (const char *heading : {"## Uploads", "## Downloads", "## Login", "## Queries and failures"})
        described += captures(section(text, QLatin1String(heading)), QStringLiteral("^\\| `(\\w+\\([^`]*\\))` \\|"));
    QCOMPARE(sorted(described), sorted(emitted));
}

void tst_Documents::everyPropertyIsDescribed()
{
    const QMetaObject &meta = KorvoWebApi::staticMetaObject;
    QStringList declared;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        declared.append(QString::fromLatin1(QByteArray(property.name()) + ' ' + property.typeName() + ' '
                                            + property.notifySignal().name()));
    }
    const QStringList described = captures(section(document("signals.md"), QStringLiteral("## Properties")),
                                           QStringLiteral("^\\| `(\\w+)` \\| `(\\w+)` \\| `(\\w+)` \\|"));
    QCOMPARE(sorted(described), sorted(declared));
}

void tst_Documents::everyEnumeratorIsDescribed()
{
    const QMetaObject &meta = KorvoWebApi::staticMetaObject;
    QStringList declared;
    for (int i = meta.enumeratorOffset(); i < meta.enumeratorCount(); ++i) {
        const QMetaEnum enumeration = meta.enumerator(i);
        for (int key = 0; key < enumeration.keyCount(); ++key)
            declared.append(QLatin1String(enumeration.key(key)) + QLatin1Char(' ')
                            + QString::number(enumeration.value(key)));
    }
    const QString text = section(document("signals.md"), QStringLiteral("## Enumerations"));
    const QStringList described = captures(text, QStringLiteral("^\\| `(\\w+)` \\| (?:`\\w+` \\| )?(\\d+) \\|"))
                                  + captures(text, QStringLiteral("^\\| `\\w+` \\| `(\\w+)` \\| (\\d+) \\|"));
    QCOMPARE(sorted(described), sorted(declared));
}

void tst_Documents::everyErrorCodeIsDescribed()
{
    const QStringList declared
        = captures(textOf(QStringLiteral(SOURCE_DIR "/api/Error.h")), QStringLiteral("^    (\\w+) = (\\d+),? "));
    QVERIFY(declared.size() >= 12);
    QStringList described;
    for (const QString &row : captures(document("errors-and-logs.md"), QStringLiteral("^\\| (\\d+) \\| `(\\w+)` \\|")))
        described.append(row.section(QLatin1Char(' '), 1) + QLatin1Char(' ') + row.section(QLatin1Char(' '), 0, 0));
    QCOMPARE(sorted(described), sorted(declared));
}

void tst_Documents::everyLogTextIsDescribed()
{
    const QString described = section(document("errors-and-logs.md"), QStringLiteral("## Log texts"));
    int sentences = 0;
    for (const QString &literal : literalsOfTheLibrary()) {
        if (!isSentence(literal))
            continue;
        ++sentences;
        for (const QString &part : fixedParts(literal))
            QVERIFY2(described.contains(part), qPrintable(QStringLiteral("not described: ") + part));
    }
    QVERIFY(sentences >= 25);
}

void tst_Documents::everyDescribedLogTextExists()
{
    const QString literals = literalsOfTheLibrary().join(QLatin1Char('\0'));
    const QStringList cells = captures(section(document("errors-and-logs.md"), QStringLiteral("## Log texts")),
                                       QStringLiteral("^\\| \\d \\| [^|]* \\| ([^|]*) \\|"));
    QVERIFY(cells.size() >= 29);
    for (const QString &cell : cells) {
        for (const QString &text : captures(cell, QStringLiteral("`([^`]*)`"))) {
            for (const QString &part : fixedParts(text))
                QVERIFY2(literals.contains(part), qPrintable(QStringLiteral("not in the code: ") + part));
        }
    }
}

void tst_Documents::everyBodyIsShownAsItIsSent_data()
{
    const UploadFileDescriptor picture{QString(), QString(), PICTURE, BUCKET, false};
    const UploadFileDescriptor video{QString(), QString(), VIDEO, BUCKET, true};
    const QDateTime created(QDate(2026, 11, 21), QTime(10, 30));
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("login") << RequestBodies::login(EMAIL, QStringLiteral("Camera 12%1+Kanal"));
    QTest::newRow("login with a code") << RequestBodies::loginWithCode(
        QStringLiteral("secure@korvo.example"), QStringLiteral("Second-Factor-1"), QStringLiteral("123456"));
    QTest::newRow("password reset") << RequestBodies::resetPassword(EMAIL);
    QTest::newRow("statuses") << RequestBodies::uploadStatuses({PROJECT}).trimmed();
    QTest::newRow("begin") << RequestBodies::uploadBegin({COMPANY, EMAIL, PROJECT, PROJECT_NAME, created});
    QTest::newRow("end") << RequestBodies::uploadFinished(PROJECT, ImportType::Standard);
    QTest::newRow("cancelled") << RequestBodies::uploadCancelled(
        QStringLiteral("11111111-3d2c-4a1b-9e0f-112233445566"));
    QTest::newRow("is there") << RequestBodies::objectExists(BUCKET, QString());
    QTest::newRow("create a bucket") << RequestBodies::createBucket(BUCKET);
    QTest::newRow("list") << RequestBodies::listFiles(BUCKET, QString(), {});
    QTest::newRow("delete") << RequestBodies::deleteObject(BUCKET, PICTURE);
    QTest::newRow("space") << RequestBodies::usedSpace(BUCKET, PICTURE);
    QTest::newRow("clean up") << RequestBodies::cleanUpVersions(BUCKET, PICTURE, 1);
    QTest::newRow("file in one piece") << RequestBodies::uploadFile(picture, "JPEG");
    QTest::newRow("begin of a large file") << RequestBodies::beginMultiPart(video);
    QTest::newRow("part") << partBody();
    QTest::newRow("end of a large file") << RequestBodies::completeMultiPart(MULTIPART_ID, QString());
    QTest::newRow("large file given up") << RequestBodies::abortMultiPart(
        QStringLiteral("db87a026982a91cb257b0c99d33c5afb"));
    QTest::newRow("transcoding") << RequestBodies::startTranscoding(video);
}

void tst_Documents::everyBodyIsShownAsItIsSent()
{
    QFETCH(QByteArray, body);
    const QString shown = withoutBreaks(document("wire-protocol.md"));
    QVERIFY2(shown.contains(QLatin1Char('\n') + QString::fromUtf8(body) + QLatin1Char('\n')), body);
}

void tst_Documents::theSignatureOfTheExampleIsRight()
{
    const QStringList blocks = captures(section(document("wire-protocol.md"), QStringLiteral("### Signature")),
                                        QStringLiteral("^```text\\n((?:[^`]*\\n)*?[^`]*)\\n```$"));
    QCOMPARE(blocks.size(), 2);
    QCOMPARE(blocks.at(1), QString::fromLatin1(hmacSha256("example-secret", blocks.at(0).toUtf8())));
}

void tst_Documents::answersAboutAccountsAreUnderstood()
{
    QVERIFY(answerBelow<Check2StepAuthenticationResponse>("### Two-step check").authenticated());
    const auto login = answerBelow<LoginResponse>("### Password login");
    QVERIFY(login.loggedIn());
    QCOMPARE(login.userCompanyId(), COMPANY);
    QCOMPARE(login.expires(), QDateTime(QDate(2026, 11, 22), QTime(19, 23, 32), Qt::UTC));
    QVERIFY(serverDateFrom(bodyBelow("### Server clock")).isValid());
    const auto credentials = answerBelow<ClientCredentialsResponse>("### Client credentials");
    QCOMPARE(credentials.url(), QStringLiteral("https://service.korvo.example/korvoservice/"));
    QCOMPARE(credentials.clientId(), QStringLiteral("client-8811e2870735643b"));
}

void tst_Documents::answersAboutProjectsAreUnderstood()
{
    const QList<ProjectInfo> projects = answerBelow<UserProjectsResponse>("### List of projects").projects();
    QCOMPARE(projects.size(), 1);
    QCOMPARE(projects.first().projectName(), PROJECT_NAME);
    QVERIFY(projects.first().creationDate().isValid());
    const auto statuses = answerBelow<UploadProjectsStatusResponse>("### Upload statuses").statuses();
    QCOMPARE(statuses.size(), 1);
    QCOMPARE(statuses.first().status, 2);
    QCOMPARE(answerBelow<BeginUploadProjectResponse>("### Begin of an upload").bucketName(), BUCKET);
    const auto link = answerBelow<SingleProjectFileDownloadResponse>("### Link of one media file").links();
    QCOMPARE(link.size(), 1);
    QCOMPARE(link.first().name, QStringLiteral("a.jpg"));
    const auto links = answerBelow<SingleProjectFileDownloadResponse>("### Links of all media").links();
    QCOMPARE(links.size(), 2);
}

void tst_Documents::answersAboutBucketsAreUnderstood()
{
    QVERIFY(!answerBelow<BucketGetResponse>("### Is there such a bucket, or object?").exists());
    QCOMPARE(answerBelow<BucketCreateResponse>("### Create a bucket").name(), BUCKET);
    const auto listing = answerBelow<ListOfFilesFromLocationResponse>("### List files");
    QCOMPARE(listing.count(), listing.entries().size());
    QCOMPARE(listing.entries().last().key, PICTURE);
    QCOMPARE(listing.entries().last().size, qint64(4));
    QCOMPARE(answerBelow<ObjectDeleteResponse>("### Delete an object").deletedFilesSize(), qint64(4));
    QCOMPARE(answerBelow<ObjectSpaceResponse>("### Used space").usedSpace(), qint64(4));
    QVERIFY(answerBelow<ObjectCleanupResponse>("### Clean up old versions").succeeded());
}

QTEST_APPLESS_MAIN(tst_Documents)

#include "tst_Documents.moc"
