#pragma once

#include <NQKorvoWeb/ProjectInfo.h>

#include <QtCore/QAbstractTableModel>

namespace Korvo::Desktop {

/// The projects of the user's company, one a row.
class ProjectTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { Name, Created, Size, ImportedByWeb, ColumnCount };
    enum Role { SortRole = Qt::UserRole, ProjectIdRole };

    using QAbstractTableModel::QAbstractTableModel;

    /// Takes a new list; rows of projects that stay are kept, with selections and scroll positions.
    void setProjects(const QList<Web::ProjectInfo> &newProjects);
    const QList<Web::ProjectInfo> &projects() const { return rows; }
    Web::ProjectInfo project(int row) const { return rows.at(row); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void removeMissing(const QList<Web::ProjectInfo> &newProjects);
    void takeOver(const Web::ProjectInfo &project);

    QList<Web::ProjectInfo> rows;
};

} // namespace Korvo::Desktop
