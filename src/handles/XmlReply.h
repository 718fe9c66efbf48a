#pragma once

#include <QtCore/QLatin1String>
#include <QtCore/QString>
#include <QtCore/QStringRef>
#include <QtCore/QXmlStreamReader>

namespace Korvo::Web {

// The reader compares every attribute of an element with every other one, and every element with every declaration of
// the document type. No reply needs many of either; the limits keep the time for a hostile one in proportion to its length.
constexpr int MAX_ATTRIBUTES = 1000;
constexpr int MAX_PROLOG_CHARACTERS = 4096;

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

inline bool beginsTag(const QString &reply, int bracket)
{
    const QChar next = bracket + 1 < reply.size() ? reply.at(bracket + 1) : QChar();
    return next != QLatin1Char('!') && next != QLatin1Char('?');
}

// A further "<" ends the search: it stands in no tag, not even in quotes, and what looked like a tag was none. So a quote
// in a comment or a section cannot hide the tags behind it.
inline bool hasTooManyAttributes(const QString &reply, int bracket)
{
    int attributes = 0;
    QChar quote;
    for (int i = bracket + 1; i < reply.size(); ++i) {
        const QChar character = reply.at(i);
        if (character == QLatin1Char('<')) {
            return false;
        }
        if (!quote.isNull()) {
            quote = character == quote ? QChar() : quote;
        } else if (character == QLatin1Char('"') || character == QLatin1Char('\'')) {
            quote = character;
        } else if (character == QLatin1Char('>')) {
            return false;
        } else if (character == QLatin1Char('=') && ++attributes > MAX_ATTRIBUTES) {
            return true;
        }
    }
    return false;
}

// Where an element with too many attributes begins, or the end of the reply.
inline int readableLength(const QString &reply)
{
    const QChar opening = QLatin1Char('<');
    for (int bracket = reply.indexOf(opening); bracket >= 0; bracket = reply.indexOf(opening, bracket + 1)) {
        if (beginsTag(reply, bracket) && hasTooManyAttributes(reply, bracket)) {
            return bracket;
        }
    }
    return reply.size();
}

/// What the reader can take in reasonable time: as a rule the whole reply.
inline QString readablePart(const QString &reply)
{
    return hasHostileDocumentType(reply) ? QString() : reply.left(readableLength(reply));
}

/// Calls @p take(name, reader) for each element of the reply, at any depth and in document order, by its local name.
///
/// @p take may read the element's text from the reader. A malformed reply ends the reading without further notice.
template <typename Take>
void forEachElement(const QString &reply, Take take)
{
    QXmlStreamReader reader(readablePart(reply));
    reader.setNamespaceProcessing(false); // names are told apart by their local part alone
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement) {
            take(reader.name(), reader);
        }
    }
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
