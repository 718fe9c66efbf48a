#pragma once

#include <QtCore/QBuffer>
#include <QtCore/QByteArray>
#include <QtCore/QLatin1String>
#include <QtCore/QString>
#include <QtCore/QStringRef>
#include <QtCore/QXmlStreamReader>

namespace Korvo::Web {

// The reader compares every attribute of an element with every other one, and every element with every declaration of
// the document type. No reply needs many of either; the limits keep the time for a hostile one in proportion to its length.
constexpr int MAX_ATTRIBUTES = 1000;
constexpr int MAX_PROLOG_CHARACTERS = 4096;
constexpr int MAX_DECLARATION_BYTES = 200;

// The reader limits the length of one entity, not how often it is used: a few kilobytes could stand for gigabytes. So it
// never gets to see a declaration, which is why the mere word is looked for.
inline bool declaresEntities(const QString &prolog)
{
    return prolog.contains(QLatin1String("<!ENTITY"));
}

inline bool reachesRootElement(const QString &prolog)
{
    QXmlStreamReader reader(prolog);
    reader.setNamespaceProcessing(false);
    while (!reader.atEnd() && !reader.isStartElement()) {
        reader.readNext();
    }
    return reader.isStartElement();
}

inline bool hasHostileDocumentType(const QString &reply)
{
    if (!reply.contains(QLatin1String("<!DOCTYPE"))) {
        return false;
    }
    const QString prolog = reply.left(MAX_PROLOG_CHARACTERS);
    return declaresEntities(prolog) || !reachesRootElement(prolog);
}

// The same checks serve a reply's text and its UTF-8: all that they look for is ASCII.
inline ushort unitAt(const QString &reply, int i)
{
    return reply.at(i).unicode();
}

inline ushort unitAt(const QByteArray &reply, int i)
{
    return uchar(reply.at(i));
}

inline int findBracket(const QString &reply, int from)
{
    return reply.indexOf(QLatin1Char('<'), from);
}

inline int findBracket(const QByteArray &reply, int from)
{
    return reply.indexOf('<', from);
}

template <typename Reply>
bool beginsTag(const Reply &reply, int bracket)
{
    const ushort next = bracket + 1 < reply.size() ? unitAt(reply, bracket + 1) : 0;
    return next != '!' && next != '?';
}

// A further "<" ends the search: it stands in no tag, not even in quotes, and what looked like a tag was none. So a quote
// in a comment or a section cannot hide the tags behind it.
template <typename Reply>
bool hasTooManyAttributes(const Reply &reply, int bracket, int nextBracket)
{
    int attributes = 0;
    ushort quote = 0;
    for (int i = bracket + 1; i < nextBracket; ++i) {
        const ushort unit = unitAt(reply, i);
        if (quote != 0) {
            quote = unit == quote ? 0 : quote;
        } else if (unit == '"' || unit == '\'') {
            quote = unit;
        } else if (unit == '>') {
            return false;
        } else if (unit == '=' && ++attributes > MAX_ATTRIBUTES) {
            return true;
        }
    }
    return false;
}

// Where an element with too many attributes begins, or the end of the reply.
template <typename Reply>
int readableLength(const Reply &reply)
{
    int bracket = findBracket(reply, 0);
    while (bracket >= 0) {
        const int next = findBracket(reply, bracket + 1);
        const int end = next < 0 ? reply.size() : next;
        // Most stretches are too short to hold so many, and need not be looked at.
        if (end - bracket > MAX_ATTRIBUTES && beginsTag(reply, bracket) && hasTooManyAttributes(reply, bracket, end)) {
            return bracket;
        }
        bracket = next;
    }
    return reply.size();
}

/// What the reader can take in reasonable time: as a rule the whole reply.
inline QString readablePart(const QString &reply)
{
    return hasHostileDocumentType(reply) ? QString() : reply.left(readableLength(reply));
}

template <typename Take>
void readElements(QXmlStreamReader &reader, Take take)
{
    reader.setNamespaceProcessing(false); // names are told apart by their local part alone
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement) {
            take(reader.name(), reader);
        }
    }
}

/// Calls @p take(name, reader) for each element of the reply, at any depth and in document order, by its local name.
///
/// @p take may read the element's text from the reader. A malformed reply ends the reading without further notice.
template <typename Take>
void forEachElement(const QString &reply, Take take)
{
    QXmlStreamReader reader(readablePart(reply));
    readElements(reader, take);
}

// Not so with a byte order mark or another encoding, of which text knows nothing any more.
inline bool isPlainUtf8(const QByteArray &reply)
{
    if (!reply.startsWith("<?xml")) {
        return reply.startsWith('<');
    }
    const QByteArray start = reply.left(MAX_DECLARATION_BYTES).toLower();
    const QByteArray declaration = start.left(start.indexOf("?>") + 1);
    return declaration.contains("encoding=\"utf-8\"") || declaration.contains("encoding='utf-8'");
}

/// Like the other one, but from the reply's UTF-8: a long reply need not stand in memory once more, as text.
///
/// False when that does not go well, and then nothing of what has been taken counts: the text has to be read instead,
/// which knows what becomes of broken replies.
template <typename Take>
bool forEachElement(const QByteArray &reply, Take take)
{
    if (!isPlainUtf8(reply) || reply.contains("<!DOCTYPE") || readableLength(reply) < reply.size()) {
        return false;
    }
    QBuffer device;
    device.setData(reply);
    device.open(QIODevice::ReadOnly);
    QXmlStreamReader reader(&device);
    readElements(reader, take);
    return !reader.hasError();
}

/// The text of the last element of this name; null when there is none.
inline QString lastText(const QString &reply, QLatin1String element)
{
    QString text;
    forEachElement(reply, [&](const QStringRef &name, QXmlStreamReader &reader) {
        if (name == element) {
            text = reader.readElementText();
        }
    });
    return text;
}

} // namespace Korvo::Web
