#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>

namespace Korvo::Web::TestSupport {

/// Files of a folder by their relative paths ("sub/a.txt"), each with size and hexadecimal SHA-256.
using Tree = QMap<QString, QString>;

/// Bytes that look like nothing, the same ones for the same seed.
QByteArray randomBytes(qint64 size, quint32 seed);

/// Writes a file and the folders on the way to it; false when that fails.
bool writeFile(const QString &root, const QString &relativePath, const QByteArray &bytes);
QByteArray readFile(const QString &path);
QString sha256(const QByteArray &bytes);

Tree treeOf(const QString &root);
/// What @p tree becomes when it is uploaded and downloaded again: pictures and videos stand in their four folders by
/// name, files without content are not there.
Tree treeAfterRoundTrip(const Tree &tree);
/// The first few differences, an empty text when there are none.
QString difference(const Tree &expected, const Tree &actual);

/// Makes @p files files in nested folders, with names that the wire and the file systems find hard.
bool makeRandomTree(const QString &root, quint32 seed, int files);

} // namespace Korvo::Web::TestSupport
