#pragma once

#include "Image.h"

#include <QtCore/QByteArray>

#include <vector>

namespace Korvo::Sample {

/// What an inspection camera sees: along a pipe, or down a manhole shaft.
class PipeScene
{
public:
    enum class View { Pipe, Shaft };

    PipeScene(int width, int height, View view, quint64 seed);

    /// @param metres   how far the camera has travelled
    /// @param caption  shown in the picture together with the distance, see drawText()
    Image frame(double metres, const QByteArray &caption) const;

private:
    struct Ray
    {
        int depth = 0;  // texels along the wall, before the camera has moved
        int around = 0; // texel around the wall
        int light = 0;  // 0 (dark) to 256
        bool water = false;
    };

    void castRays();
    void paintWall(quint64 seed);
    Color wallColor(const Ray &ray, int travelled) const;

    int columns;
    int rows;
    View kind;
    std::vector<Ray> rays;
    std::vector<Color> wall;
    std::vector<signed char> grain;
};

} // namespace Korvo::Sample
