#pragma once

#include "handles/Response.h"

#include <QtCore/QDateTime>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Korvo::Web {

struct BucketCreateValues
{
    QString name;
};

/// Answer to the creation of a bucket.
class BucketCreateResponse : public ResponseOf<BucketCreateValues>
{
public:
    QString name() const { return values().name; }

    void parse(const QString &text);
};

struct BucketGetValues
{
    QString name;
    bool declaredExisting = false;
};

/// Answer to the question for a bucket.
class BucketGetResponse : public ResponseOf<BucketGetValues>
{
public:
    QString name() const { return values().name; }
    /// The service either says so or answers with the bucket's name.
    bool exists() const { return values().declaredExisting || !values().name.isEmpty(); }

    void parse(const QString &text);
};

struct ObjectCleanupValues
{
    bool succeeded = false;
};

class ObjectCleanupResponse : public ResponseOf<ObjectCleanupValues>
{
public:
    bool succeeded() const { return values().succeeded; }

    void parse(const QString &text);
};

struct ObjectDeleteValues
{
    qint64 deletedFilesSize = 0;
};

class ObjectDeleteResponse : public ResponseOf<ObjectDeleteValues>
{
public:
    /// Bytes that the deletion freed.
    qint64 deletedFilesSize() const { return values().deletedFilesSize; }

    void parse(const QString &text);
};

struct ObjectExistsValues
{
    bool exists = false;
};

class ObjectExistsResponse : public ResponseOf<ObjectExistsValues>
{
public:
    bool exists() const { return values().exists; }

    void parse(const QString &text);
};

struct ObjectSpaceValues
{
    qint64 usedSpace = 0;
};

class ObjectSpaceResponse : public ResponseOf<ObjectSpaceValues>
{
public:
    /// Bytes.
    qint64 usedSpace() const { return values().usedSpace; }

    void parse(const QString &text);
};

/// One file in a bucket. All texts are the server's: hostile until checked.
struct RemoteFileEntry
{
    QString fileName;
    QString key;
    QDateTime modifiedDate;
    qint64 size = 0; ///< bytes
    QString type;
    QString directory;
};

struct ListOfFilesFromLocationValues
{
    QList<RemoteFileEntry> entries;
    qint32 count = 0;
};

/// The files of a bucket, in the server's order.
class ListOfFilesFromLocationResponse : public ResponseOf<ListOfFilesFromLocationValues>
{
public:
    QList<RemoteFileEntry> entries() const { return values().entries; }
    /// The total that the server reports; may differ from the number of entries.
    qint32 count() const { return values().count; }

    void parse(const QString &text);
    /// From the bytes of the reply; comes to the same, but a long listing need not stand in memory as text.
    void parse(const QByteArray &utf8);
};

} // namespace Korvo::Web

Q_DECLARE_METATYPE(Korvo::Web::BucketCreateResponse)
Q_DECLARE_METATYPE(Korvo::Web::BucketGetResponse)
Q_DECLARE_METATYPE(Korvo::Web::ObjectCleanupResponse)
Q_DECLARE_METATYPE(Korvo::Web::ObjectDeleteResponse)
Q_DECLARE_METATYPE(Korvo::Web::ObjectExistsResponse)
Q_DECLARE_METATYPE(Korvo::Web::ObjectSpaceResponse)
Q_DECLARE_METATYPE(Korvo::Web::ListOfFilesFromLocationResponse)
