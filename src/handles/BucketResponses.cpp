#include "handles/BucketResponses.h"

#include "handles/ReplyDate.h"
#include "handles/XmlReply.h"

#include <utility>

namespace Korvo::Web {

namespace {

// Exactly this word; "True" and " true" are something else.
bool isTrue(const QString &text)
{
    return text == QLatin1String("true");
}

// Neighbours in a listing tend to have the same type and folder, and need only one text for it.
QString sharedText(const QString &text, const QString &neighbour)
{
    return text == neighbour ? neighbour : text;
}

void readField(RemoteFileEntry &file, const RemoteFileEntry &neighbour, const QStringRef &name,
               QXmlStreamReader &reader)
{
    if (name == QLatin1String("FileName")) {
        file.fileName = reader.readElementText();
    } else if (name == QLatin1String("Key")) {
        file.key = reader.readElementText();
    } else if (name == QLatin1String("ModifiedDate")) {
        file.modifiedDate = isoDateFrom(reader.readElementText());
    } else if (name == QLatin1String("Size")) {
        file.size = reader.readElementText().toLongLong();
    } else if (name == QLatin1String("Type")) {
        file.type = sharedText(reader.readElementText(), neighbour.type);
    } else if (name == QLatin1String("Directory")) {
        file.directory = sharedText(reader.readElementText(), neighbour.directory);
    }
}

template <typename Reply>
auto readListing(const Reply &reply, ListOfFilesFromLocationValues *listing)
{
    QList<RemoteFileEntry> &entries = listing->entries;
    return forEachElement(reply, [&](const QStringRef &name, QXmlStreamReader &reader) {
        if (name == QLatin1String("ObjectModel")) {
            entries.append(RemoteFileEntry());
        } else if (name == QLatin1String("Count")) {
            listing->count = reader.readElementText().toInt();
        } else if (!entries.isEmpty()) {
            readField(entries.last(), entries.at(qMax(entries.size() - 2, 0)), name, reader);
        }
    });
}

} // namespace

void BucketCreateResponse::parse(const QString &text)
{
    setValues({lastText(text, QLatin1String("Name"))});
}

void BucketGetResponse::parse(const QString &text)
{
    setValues({lastText(text, QLatin1String("Name")), isTrue(lastText(text, QLatin1String("Exist")))});
}

void ObjectCleanupResponse::parse(const QString &text)
{
    setValues({isTrue(lastText(text, QLatin1String("Success")))});
}

void ObjectDeleteResponse::parse(const QString &text)
{
    setValues({lastText(text, QLatin1String("DeletedFilesSize")).toLongLong()});
}

void ObjectExistsResponse::parse(const QString &text)
{
    setValues({isTrue(lastText(text, QLatin1String("Exist")))});
}

void ObjectSpaceResponse::parse(const QString &text)
{
    setValues({lastText(text, QLatin1String("UsedSpace")).toLongLong()});
}

void ListOfFilesFromLocationResponse::parse(const QString &text)
{
    ListOfFilesFromLocationValues listing;
    readListing(text, &listing);
    setValues(std::move(listing));
}

void ListOfFilesFromLocationResponse::parse(const QByteArray &utf8)
{
    const QByteArray reply = utf8.left(int(qstrlen(utf8.constData()))); // ends at the first zero byte, as its text does
    ListOfFilesFromLocationValues listing;
    if (readListing(reply, &listing))
        setValues(std::move(listing));
    else
        parse(QString::fromUtf8(reply));
}

} // namespace Korvo::Web
