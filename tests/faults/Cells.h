#pragma once

#include "faults/RequestKinds.h"

namespace Korvo::Web::Faults {

/// One cell of the matrix: which exchange is struck, by what, and for how long.
struct Cell
{
    RequestKind request;
    FaultKind fault;
    int occurrence = 1;     ///< of the request in its scenario, counted from 1
    bool isLasting = false; ///< what is sent again instead is struck too

    Strike strike() const { return strikeOf(fault, request.traits); }
    /// "request | fault | occurrence | once".
    QString id() const;
    QString occurrenceName() const;
};

/// How the struck request goes on, up to its end.
struct Course
{
    enum class End {
        Good,
        Unreadable,
        Shortened,
        Failed,
        TimedOut, ///< the library waited no longer
        Pending,  ///< the host has to end it
    };
    End end = End::Good;
    QString error;    ///< of the last failed attempt
    int failures = 0; ///< attempts that the library has seen fail
    int sends = 1;    ///< that reach the platform, at least
    int worked = 1;   ///< of them carried out
    int sendsAtMost = 1;
};

QVector<Cell> allCells();
Cell cellOf(const QString &id);
Course courseOf(const Cell &cell);

/// Every request under every fault, at one of its occurrences: now the first, now the middle one, now the last.
QVector<Cell> sliceOfCells();

/// Whether Qt may end a request unsent that waits while the struck one's connection is closed.
bool mayTakeAlong(const Cell &cell);

/// Roughly how long the cell stands still, in milliseconds.
int standstill(const Cell &cell);

} // namespace Korvo::Web::Faults
