#include "handles/SecretText.h"

#include <QtCore/QLatin1String>

namespace Korvo::Web {

namespace {

constexpr int MAX_TAG_CHARACTERS = 256;

struct Spelling
{
    QLatin1String text;
    char sign;
};

// One text may be quoted in another: a JSON in a web page, a form in an address. Its signs are spelled accordingly.
const Spelling SPELLINGS[] = {
    {QLatin1String("\""), '"'},     {QLatin1String("'"), '"'},     {QLatin1String("&quot;"), '"'},
    {QLatin1String("&apos;"), '"'}, {QLatin1String("&#34;"), '"'}, {QLatin1String("&#39;"), '"'},
    {QLatin1String("%22"), '"'},    {QLatin1String("%27"), '"'},   {QLatin1String("u0022"), '"'},
    {QLatin1String("u0027"), '"'},  {QLatin1String(":"), ':'},     {QLatin1String("%3A"), ':'},
    {QLatin1String("="), '='},      {QLatin1String("%3D"), '='},   {QLatin1String("u003D"), '='},
    {QLatin1String("<"), '<'},      {QLatin1String("&lt;"), '<'},  {QLatin1String(">"), '>'},
    {QLatin1String("&gt;"), '>'},   {QLatin1String("%20"), ' '},   {QLatin1String("\\"), '\\'},
};

struct Sign
{
    char kind = 0; // quotes of every sort are '"', blanks of every sort ' '
    int length = 0;
};

Sign signAt(const QString &text, int position)
{
    if (position < text.size() && text.at(position).isSpace()) {
        return {' ', 1};
    }
    const QStringRef rest = text.midRef(position);
    for (const Spelling &spelling : SPELLINGS) {
        if (rest.startsWith(spelling.text, Qt::CaseInsensitive)) {
            return {spelling.sign, spelling.text.size()};
        }
    }
    return {};
}

int skipSigns(const QString &text, int position, QLatin1String kinds)
{
    Sign sign = signAt(text, position);
    while (sign.length > 0 && kinds.contains(QLatin1Char(sign.kind))) {
        position += sign.length;
        sign = signAt(text, position);
    }
    return position;
}

int skipBlanks(const QString &text, int position)
{
    return skipSigns(text, position, QLatin1String(" "));
}

int skipWord(const QString &text, int position, QLatin1String word)
{
    return text.midRef(position).startsWith(word, Qt::CaseInsensitive) ? position + word.size() : position;
}

int endBeforeAnyOf(QLatin1String characters, const QString &text, int position)
{
    while (position < text.size() && !characters.contains(text.at(position))) {
        ++position;
    }
    return position;
}

struct Range
{
    int start = -1; // negative when there is nothing
    int end = -1;
};

// Each text that is quoted in another one doubles the backslashes. So the quotes that close a value have as many before
// them as those that opened it, apart from pairs that stand for backslashes of the value itself.
int quotedEnd(const QString &text, int position, const QStringRef &quote, int backslashesBeforeQuote)
{
    const int period = 2 * (backslashesBeforeQuote + 1);
    int backslashes = 0;
    for (; position < text.size(); ++position) {
        if (text.at(position) == QLatin1Char('\\')) {
            ++backslashes;
        } else if (backslashes % period == backslashesBeforeQuote
                   && text.midRef(position).startsWith(quote, Qt::CaseInsensitive)) {
            return position - backslashesBeforeQuote;
        } else {
            backslashes = 0;
        }
    }
    return text.size();
}

Range quotedValue(const QString &text, int start)
{
    const int quote = skipSigns(text, start, QLatin1String("\\"));
    const Sign sign = signAt(text, quote);
    if (sign.kind != '"') {
        return {};
    }
    const int valueStart = quote + sign.length;
    return {valueStart, quotedEnd(text, valueStart, text.midRef(quote, sign.length), quote - start)};
}

// A value in quotes, or one that the given characters end. The end of a nested value is not looked for.
Range valueAt(const QString &text, int start, QLatin1String endCharacters)
{
    const Range quoted = quotedValue(text, start);
    if (quoted.start >= 0) {
        return quoted;
    }
    const bool isNested = start < text.size() && QLatin1String("{[").contains(text.at(start));
    return {start, isNested ? text.size() : endBeforeAnyOf(endCharacters, text, start)};
}

int elementTextEnd(const QString &text, int position)
{
    while (position < text.size() && signAt(text, position).kind != '<') {
        ++position;
    }
    return position;
}

// Where the tag ends whose name ends here, or -1. Far away it is no longer this tag.
int tagEnd(const QString &text, int nameEnd)
{
    const Sign sign = signAt(text, nameEnd);
    if (sign.kind == '>') {
        return nameEnd + sign.length;
    }
    const QStringRef attributes = text.midRef(nameEnd, sign.kind == ' ' ? MAX_TAG_CHARACTERS : 0);
    const int closing = attributes.indexOf(QLatin1Char('>'));
    const bool isTag = closing >= 0 && !attributes.left(closing).contains(QLatin1Char('<'));
    return isTag ? nameEnd + closing + 1 : -1;
}

// How a value is joined to its name: '=' in a form, ':' in a JSON or among attributes, '>' in an element, 0 not at all.
struct Assignment
{
    char kind = 0;
    int end = -1;
};

Assignment elementBehind(const QString &text, int nameEnd)
{
    const int end = tagEnd(text, nameEnd);
    return end < 0 ? Assignment() : Assignment{'>', end};
}

Assignment assignmentBehind(const QString &text, int nameEnd)
{
    const int behindName = skipSigns(text, nameEnd, QLatin1String("\\\" "));
    const int position = skipBlanks(text, skipWord(text, behindName, QLatin1String("value")));
    const Sign sign = signAt(text, position);
    if (sign.kind != ':' && sign.kind != '=') {
        return elementBehind(text, nameEnd);
    }
    return {position > behindName ? ':' : sign.kind, position + sign.length};
}

// "Unexpected token: <" and "Your password: too short" are sentences.
bool isProse(const QString &text, int nameStart, const Assignment &assignment)
{
    const bool standsAlone = nameStart == 0 || text.at(nameStart - 1).isSpace();
    return standsAlone && assignment.kind != '=';
}

Range assignedValue(const QString &text, const Assignment &assignment)
{
    const int start = skipBlanks(text, assignment.end);
    if (assignment.kind != '>') {
        return valueAt(text, start, QLatin1String(",}&;<"));
    }
    const int elementText = skipWord(text, start, QLatin1String("<![CDATA["));
    return {elementText, elementTextEnd(text, elementText)};
}

Range tokenValue(const QString &text, int nameStart, int nameEnd)
{
    const Assignment assignment = assignmentBehind(text, nameEnd);
    const bool isAssigned = assignment.kind != 0 && !isProse(text, nameStart, assignment);
    return isAssigned ? assignedValue(text, assignment) : Range();
}

// Forms are sent with passwords and codes as they were typed: quotes and "&" may belong to them.
Range typedValue(const QString &text, int nameStart, int nameEnd)
{
    const Assignment assignment = assignmentBehind(text, nameEnd);
    if (assignment.kind == '=') {
        return {assignment.end, endBeforeAnyOf(QLatin1String("\r\n"), text, assignment.end)};
    }
    return tokenValue(text, nameStart, nameEnd);
}

Range bearerValue(const QString &text, int, int nameEnd)
{
    const int start = skipBlanks(text, nameEnd);
    return start > nameEnd ? valueAt(text, start, QLatin1String(" \t\r\n\\\"'<>,;&")) : Range();
}

struct Secret
{
    QLatin1String name; // or how it ends, in any case
    Range (*valueOf)(const QString &text, int nameStart, int nameEnd);
};

const Secret SECRETS[] = {
    {QLatin1String("password"), typedValue},
    {QLatin1String("AuthenticationCode"), typedValue},
    {QLatin1String("token"), tokenValue},
    {QLatin1String("Bearer"), bearerValue},
};

QString withoutSecret(const Secret &secret, const QString &text)
{
    QString shown;
    int copied = 0;
    int name = text.indexOf(secret.name, 0, Qt::CaseInsensitive);
    while (name >= 0) {
        const int nameEnd = name + secret.name.size();
        const Range value = secret.valueOf(text, name, nameEnd);
        if (value.start >= 0) {
            shown += text.midRef(copied, value.start - copied);
            copied = value.end;
        }
        name = text.indexOf(secret.name, qMax(copied, nameEnd), Qt::CaseInsensitive);
    }
    return shown + text.midRef(copied);
}

} // namespace

QString withoutSecrets(const QString &text)
{
    QString shown = text;
    for (const Secret &secret : SECRETS) {
        shown = withoutSecret(secret, shown);
    }
    return shown;
}

} // namespace Korvo::Web
