// An answer to a login that no parser can read is logged. However it is maimed, its secrets stay out of the log.
//
// Input: two numbers, then any bytes. The answer is cut off at the first, and the bytes are put in at the second.
#include "FuzzTarget.h"

#include "handles/AuthenticationResponses.h"
#include "handles/SecretText.h"
#include "support/LogCapture.h"

#include <algorithm>

namespace Korvo::Web::Fuzz {

namespace {

const QString SECRET = QStringLiteral("canaryOfTheToken0123456789");

QString loginAnswer()
{
    return QStringLiteral(R"({"token_type":"bearer","expires_in":86399,"userName":"inspector@korvo.example",)"
                          R"("userFirstName":"Ina","userRoles":"COMPANY_OPERATOR","access_token":")")
           + SECRET + QStringLiteral(R"(",".expires":"Tue, 03 Mar 2026 14:05:09 GMT"})");
}

/// A piece of this length tells somebody else something.
constexpr int PIECE = 12;

bool holdsPieceOfSecret(const QString &text)
{
    for (int i = 0; i + PIECE <= SECRET.size(); ++i) {
        if (text.contains(SECRET.midRef(i, PIECE).toString()))
            return true;
    }
    return false;
}

int numberIn(const QList<QByteArray> &words, int index, int limit)
{
    const int number = words.value(index).toInt();
    return number < 0 ? limit : std::min(number, limit);
}

} // namespace

void runTarget(const QByteArray &input)
{
    const QList<QByteArray> lines = input.split('\n');
    const QList<QByteArray> numbers = lines.first().split(' ');
    const QString junk = QString::fromUtf8(input.mid(lines.first().size() + 1));
    if (holdsPieceOfSecret(junk))
        return; // it would be found there
    QString answer = loginAnswer();
    answer.truncate(numberIn(numbers, 0, answer.size()));
    // Behind the secret: what stands before may make it anything, even a part of another value.
    const int earliest = std::min(answer.indexOf(SECRET) + SECRET.size(), answer.size());
    const int place = answer.contains(SECRET) ? std::max(earliest, numberIn(numbers, 1, answer.size())) : answer.size();
    answer.insert(place, junk);

    const TestSupport::LogCapture log(TestSupport::LogCapture::Watch::Nothing);
    LoginResponse response;
    response.parse(answer);
    for (const QString &message : log.messages())
        require(!holdsPieceOfSecret(message), "no piece of the token is logged");
    require(log.count() == (response.error() == Error::UnreadableLogin ? 1 : 0), "only what cannot be read is logged");

    const QString shown = withoutSecrets(junk);
    require(shown.size() <= junk.size(), "leaving out makes no text longer");
    require(withoutSecrets(QString()) == QString(), "nothing stays nothing");
}

} // namespace Korvo::Web::Fuzz
