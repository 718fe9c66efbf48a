#include "ProblemModel.h"

#include "ErrorText.h"

#include <QtCore/QLocale>

namespace Korvo::Desktop {

namespace {

constexpr int MOST_ROWS = 200;

} // namespace

void ProblemModel::add(const Problem &problem)
{
    if (rows.size() == MOST_ROWS) {
        beginRemoveRows({}, MOST_ROWS - 1, MOST_ROWS - 1);
        rows.removeLast();
        endRemoveRows();
    }
    beginInsertRows({}, 0, 0);
    rows.prepend(problem);
    endInsertRows();
}

void ProblemModel::clear()
{
    beginResetModel();
    rows.clear();
    endResetModel();
}

int ProblemModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : rows.size();
}

QVariant ProblemModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const Problem &problem = rows.at(index.row());
    const Explanation explanation = explain(problem.error);
    const QString head = QLocale().toString(problem.time.time(), QLocale::ShortFormat) + QStringLiteral(" · ")
                         + problem.context + QStringLiteral(" · ") + tr("code %1").arg(static_cast<int>(problem.error));
    switch (role) {
    case TitleRole:
        return explanation.title;
    case HeadRole:
        return head;
    case CauseRole:
        return explanation.cause;
    case RemedyRole:
        return explanation.remedy;
    case Qt::DisplayRole: // what a reader of the screen hears, and what is copied
        return QStringList({explanation.title, head, explanation.cause, explanation.remedy}).join(QLatin1Char('\n'));
    default:
        return {};
    }
}

} // namespace Korvo::Desktop
