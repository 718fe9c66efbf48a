#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <vector>

namespace Korvo::Sample {

/// Writes a video that every player knows: JPEG frames in an AVI container, 25 a second, no sound.
class MotionJpegAvi
{
public:
    static constexpr int FRAMES_PER_SECOND = 25;

    MotionJpegAvi(const QString &path, int width, int height);

    bool open();
    bool append(const QByteArray &jpeg);
    /// How long the file would be if it ended after one more frame of @p jpegBytes.
    qint64 sizeWith(qint64 jpegBytes) const;
    /// Ends the file; it grows to @p totalBytes, rounded up to an even number, if it is shorter.
    bool finish(qint64 totalBytes);
    QString errorString() const { return file.errorString(); }

private:
    bool put(const QByteArray &bytes);
    QByteArray headers(qint64 totalBytes) const;
    QByteArray streamList() const;
    QByteArray index() const;

    QFile file;
    int columns;
    int rows;
    qint64 frameListBytes = 4; // the list's own name counts
    std::vector<quint32> frameSizes;
};

} // namespace Korvo::Sample
