#pragma once

#include <NQKorvoWeb/Error.h>

#include <QtCore/QAbstractListModel>
#include <QtCore/QDateTime>
#include <QtCore/QVector>

namespace Korvo::Desktop {

/// One failure, and what it was about.
struct Problem
{
    QDateTime time;
    Web::Error error;
    QString context; ///< a project, or what was being done
};

/// The failures since the start of the program, the newest first.
class ProblemModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Role { TitleRole = Qt::UserRole, HeadRole, CauseRole, RemedyRole };

    using QAbstractListModel::QAbstractListModel;

    void add(const Problem &problem);
    void clear();
    const QVector<Problem> &problems() const { return rows; }

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    QVector<Problem> rows;
};

} // namespace Korvo::Desktop
