#include "handles/BucketResponses.h"

#include "handles/XmlReply.h"

#include <utility>

namespace Korvo::Web {

namespace {

// Exactly this word; "True" and " true" are something else.
bool isTrue(const QString &text)
{
    return text == QLatin1String("true");
}

void readField(RemoteFileEntry &file, const QStringRef &name, QXmlStreamReader &reader)
{
    if (name == QLatin1String("FileName")) {
        file.fileName = reader.readElementText();
    } else if (name == QLatin1String("Key")) {
        file.key = reader.readElementText();
    } else if (name == QLatin1String("ModifiedDate")) {
        file.modifiedDate = QDateTime::fromString(reader.readElementText(), Qt::ISODate);
    } else if (name == QLatin1String("Size")) {
        file.size = reader.readElementText().toLongLong();
    } else if (name == QLatin1String("Type")) {
        file.type = reader.readElementText();
    } else if (name == QLatin1String("Directory")) {
        file.directory = reader.readElementText();
    }
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
    forEachElement(text, [&](const QStringRef &name, QXmlStreamReader &reader) {
        if (name == QLatin1String("ObjectModel")) {
            listing.entries.append(RemoteFileEntry());
        } else if (name == QLatin1String("Count")) {
            listing.count = reader.readElementText().toInt();
        } else if (!listing.entries.isEmpty()) {
            readField(listing.entries.last(), name, reader);
        }
    });
    setValues(std::move(listing));
}

} // namespace Korvo::Web
