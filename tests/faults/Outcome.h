#pragma once

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Korvo::Web::Faults {

/// What a host, a user and the platform see of one cell.
struct Outcome
{
    QStringList heard;        ///< the signals that tell an end, in their order: "errorOccurred(14)"
    QVector<int> heardByCall; ///< how many of them each of the host's calls brings
    QStringList log;          ///< "Handle: failure", sorted
    QMap<QString, int> sent;  ///< how often the platform has been asked, by route
    QStringList disk;         ///< what has become of each file that was to be written
    QStringList stored;       ///< what the platform holds
    QString state;            ///< the login's, or how many files are done
};

/// Larger numbers are "several": how often Qt sends again by itself is not fixed.
QString numberInWords(int number);

/// "1 in parts completed". How many begun ones are left over depends on how often Qt has sent again.
QString partsLine(int number, const QString &state);

/// What is different, in words; empty when nothing is.
QStringList differences(const Outcome &expected, const Outcome &seen);

} // namespace Korvo::Web::Faults
