#pragma once

#include <NQKorvoWeb/SingleMediaFileLinkData.h>

#include <QtCore/QAbstractListModel>
#include <QtCore/QVector>
#include <QtGui/QImage>

namespace Korvo::Desktop {

/// The pictures and videos of one project, with their thumbnails as these arrive.
class MediaModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum class State { Waiting, Shown, Video, Failed };
    enum Role { StateRole = Qt::UserRole, LinkRole };

    static const QSize THUMBNAIL_SIZE;

    using QAbstractListModel::QAbstractListModel;

    void setLinks(const QList<Web::SingleMediaFileLinkData> &newLinks);
    void setThumbnail(int row, const QImage &thumbnail);
    void setFailed(int row);
    State state(int row) const { return rows.at(row).state; }
    Web::SingleMediaFileLinkData link(int row) const { return rows.at(row).link; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    struct Row
    {
        Web::SingleMediaFileLinkData link;
        State state;
        QImage thumbnail;
    };

    QVector<Row> rows;
};

} // namespace Korvo::Desktop
