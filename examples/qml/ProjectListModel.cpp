#include "ProjectListModel.h"

#include <QtCore/QLocale>

namespace Korvo::Qml {

void ProjectListModel::setProjects(const QList<Web::ProjectInfo> &newProjects)
{
    beginResetModel();
    projects = newProjects;
    endResetModel();
    Q_EMIT countChanged();
}

int ProjectListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : projects.size();
}

QVariant ProjectListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Web::ProjectInfo &project = projects.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case NameRole:
        return project.projectName();
    case CreatedRole:
        return QLocale().toString(project.creationDate().toLocalTime(), QLocale::ShortFormat);
    case SizeRole:
        return QLocale().formattedDataSize(static_cast<qint64>(project.diskUsage()), 1, QLocale::DataSizeSIFormat);
    case ImportedByWebRole:
        return project.isImportedByWeb();
    default:
        return {};
    }
}

QHash<int, QByteArray> ProjectListModel::roleNames() const
{
    return {{NameRole, "name"}, {CreatedRole, "created"}, {SizeRole, "size"}, {ImportedByWebRole, "importedByWeb"}};
}

} // namespace Korvo::Qml
