#include "support/HostileKeys.h"

#include <QtCore/QChar>

#include <initializer_list>

namespace Korvo::Web::TestSupport {

namespace {

QStringList texts(std::initializer_list<const char *> list)
{
    QStringList all;
    for (const char *text : list)
        all.append(QString::fromUtf8(text));
    return all;
}

// clang-format off
// What leads out of a folder, here or on Windows, and what only looks as if.
QStringList waysOut(const QString &target)
{
    QStringList ways = texts({
        "../", "../../", "../../../../../../../../", "/../", "//../", "./../", ".//..//", "a/../../", "a/b/../../../",
        "a/./../../", "../out2/", "../outside/",
        // "/web" is taken out of keys
        "./web../", "a/web../../", "/web../", "/web/../../", "x/web/web../../../", "picture/sec/web/../../../../",
        "Picture/Nod/Web/../../../../", "picture/nod/web../../../",
        // absolute
        "/", "//", "/tmp/", "/proc/self/cwd/", "/dev/shm/", "~/", "$HOME/",
        // Windows
        "..\\", "..\\..\\", "\\..\\", "a\\..\\..\\", "a/..\\../", "C:\\", "C:/", "C:", "\\\\server\\share\\", "//server/share/",
        "\\\\?\\C:\\", "\\\\.\\pipe\\", "a.txt:",
        // encoded, which makes them plain names
        "%2e%2e/", "%2e%2e%2f", "..%2f", "%252e%252e%252f", "..%5c", "..%c0%af",
        // addresses
        "file:///", "http://evil.example/",
        // links that the test has put into the folder
        "link/", "link/../", "deep/link/", "loop/", "dangling/",
    });
    ways << target + QLatin1Char('/') << QStringLiteral("a/..") + target + QLatin1Char('/');
    return ways;
}

QStringList names()
{
    QStringList names = texts({ "evil.txt", "witness.txt", "", ".", "..", "...", " ", "evil.txt.", "evil.txt ", "evil.txt:stream",
                                "evil.txt::$DATA", "CON", "nul.txt", "com1.db3", "LPT9", "EVIL.TXT", "link", "file" });
    names << QString(300, QLatin1Char('e'));
    return names;
}

// clang-format on

} // namespace

QStringList hostileKeys(const QString &target)
{
    QStringList keys;
    const QStringList ends = names();
    for (const QString &way : waysOut(target)) {
        for (const QString &name : ends)
            keys.append(way + name);
    }
    keys.removeDuplicates();
    return keys;
}

// clang-format off
QStringList oddKeys()
{
    QStringList keys = texts({
        "a..b", "..a", "a..", "...a", "dots/a..b/c..", ".hidden", ".git/config", "..hidden/x", "-rf", "--help", "~", "~user/x",
        "blank in name", "two  blanks", " leading blank", "trailing blank ", " / both ", "trailing dot.", "folder./x",
        "umlauts äöüÄÖÜß", "decomposed u\u0308", "accents éèçñ", "Ålesund/Øst", "日本語/図面.pdf", "Київ.txt", "العربية.txt",
        "\u200f\u200fleft", "emoji 🚧🕳️.jpg", "family 👩‍👩‍👧", "astral 𝔘𝔫𝔦", "zero\u200bwidth",
        "hash#1", "question?x=1", "percent%", "percent%41", "percent%2F", "a%00b", "a&b", "a&amp;b", "a=b;c,d", "plus+plus",
        "quote'single", "quote\"double", "back`tick", "dollar$HOME", "bang!", "at@sign", "caret^", "brace{}", "bracket[1]",
        "paren(1)", "pipe|", "star*", "less<than>", "back\\slash", "colon:stream", "C:drive", "con", "aux.txt", "COM1",
        "website/x", "web/x", "a/Web/x", "case/File", "case/file", "case/FILE", "http:/x", "no_extension",
        "many/many/many/many/many/many/many/many/many/many/folders/x",
    });
    keys << QString(255, QLatin1Char('n')) << QString(80, QChar(0x00E4)) + QStringLiteral(".txt");
    return keys;
}
// clang-format on

} // namespace Korvo::Web::TestSupport
