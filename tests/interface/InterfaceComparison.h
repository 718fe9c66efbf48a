#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

/// What differs between two descriptions of the public interface, one sentence a difference; empty when nothing does.
///
/// A description is text. "[class KorvoWebApi]" opens a section; each other line is an item: its kind, its place where
/// the order counts, and what it is, such as "signal 7: void uploadFinished(uint uploadId)".
QStringList interfaceDifferences(const QString &kept, const QString &current);
