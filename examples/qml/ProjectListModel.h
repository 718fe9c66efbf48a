#pragma once

#include <NQKorvoWeb/ProjectInfo.h>

#include <QtCore/QAbstractListModel>

namespace Korvo::Qml {

/// The projects as a list that QML can show: a ProjectInfo is a value of C++.
class ProjectListModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role { NameRole = Qt::UserRole, CreatedRole, SizeRole, ImportedByWebRole };

    using QAbstractListModel::QAbstractListModel;

    void setProjects(const QList<Web::ProjectInfo> &newProjects);
    int count() const { return projects.size(); }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

Q_SIGNALS:
    void countChanged();

private:
    QList<Web::ProjectInfo> projects;
};

} // namespace Korvo::Qml
