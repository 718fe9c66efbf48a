#include "ProjectTableModel.h"

#include "Texts.h"

namespace Korvo::Desktop {

using Web::ProjectInfo;

namespace {

QVariant sortValue(const ProjectInfo &project, int column)
{
    switch (column) {
    case ProjectTableModel::Created:
        return project.creationDate();
    case ProjectTableModel::Size:
        return project.diskUsage();
    case ProjectTableModel::ImportedByWeb:
        return project.isImportedByWeb();
    default:
        return project.projectName();
    }
}

Qt::Alignment alignmentOf(int column)
{
    switch (column) {
    case ProjectTableModel::Size:
        return Qt::AlignRight | Qt::AlignVCenter;
    case ProjectTableModel::ImportedByWeb:
        return Qt::AlignCenter;
    default:
        return Qt::AlignLeft | Qt::AlignVCenter;
    }
}

} // namespace

void ProjectTableModel::setProjects(const QList<ProjectInfo> &newProjects)
{
    removeMissing(newProjects);
    for (const ProjectInfo &project : newProjects)
        takeOver(project);
}

void ProjectTableModel::removeMissing(const QList<ProjectInfo> &newProjects)
{
    for (int row = rows.size() - 1; row >= 0; --row) {
        if (newProjects.contains(rows.at(row)))
            continue;
        beginRemoveRows({}, row, row);
        rows.removeAt(row);
        endRemoveRows();
    }
}

// Equal means the same project: its name, date and size may be new.
void ProjectTableModel::takeOver(const ProjectInfo &project)
{
    const int row = rows.indexOf(project);
    if (row >= 0) {
        rows[row] = project;
        Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
        return;
    }
    beginInsertRows({}, rows.size(), rows.size());
    rows.append(project);
    endInsertRows();
}

int ProjectTableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows.size();
}

int ProjectTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ProjectTableModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const ProjectInfo &project = rows.at(index.row());
    switch (role) {
    case SortRole:
        return sortValue(project, index.column());
    case ProjectIdRole:
        return project.projectId();
    case Qt::TextAlignmentRole:
        return static_cast<int>(alignmentOf(index.column()));
    case Qt::DisplayRole:
        break;
    default:
        return {};
    }
    switch (index.column()) {
    case Created:
        return dateText(project.creationDate());
    case Size:
        return sizeText(project.diskUsage());
    case ImportedByWeb:
        return project.isImportedByWeb() ? tr("Yes") : tr("No");
    default:
        return project.projectName();
    }
}

QVariant ProjectTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(alignmentOf(section));
    if (role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name:
        return tr("Name");
    case Created:
        return tr("Created");
    case Size:
        return tr("Size");
    case ImportedByWeb:
        return tr("Imported by web");
    default:
        return {};
    }
}

} // namespace Korvo::Desktop
