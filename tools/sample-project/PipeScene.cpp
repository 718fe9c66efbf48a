#include "PipeScene.h"

#include "BitmapFont.h"
#include "Random.h"

#include <algorithm>
#include <cmath>

namespace Korvo::Sample {

namespace {

// The wall is a texture that repeats along the pipe, one pipe of 2 m after the other.
constexpr int ALONG = 512;
constexpr int AROUND = 256;
constexpr double TEXELS_PER_METRE = ALONG / 2.0;
constexpr int BLOCK = 8;
constexpr std::size_t GRAIN_COUNT = 65521; // a prime, so that the grain shows no pattern
constexpr double PI = 3.14159265358979323846;

std::size_t texel(int along, int around)
{
    return static_cast<std::size_t>(along & (ALONG - 1)) * AROUND + static_cast<std::size_t>(around & (AROUND - 1));
}

Color shaded(const Color &color, int light)
{
    return {color.red * light / 256, color.green * light / 256, color.blue * light / 256};
}

} // namespace

PipeScene::PipeScene(int width, int height, View view, quint64 seed)
    : columns(width)
    , rows(height)
    , kind(view)
    , rays(static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
    , wall(static_cast<std::size_t>(ALONG) * AROUND)
    , grain(GRAIN_COUNT)
{
    castRays();
    paintWall(seed);
}

void PipeScene::castRays()
{
    const double centerX = columns / 2.0;
    const double centerY = rows / 2.0;
    const double reach = std::min(centerX, centerY);
    std::size_t index = 0;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x, ++index) {
            const double dx = (x + 0.5 - centerX) / reach;
            const double dy = (y + 0.5 - centerY) / reach;
            const double radius = std::hypot(dx, dy);
            Ray &ray = rays[index];
            ray.depth = static_cast<int>(std::min(0.45 / radius, 12.0) * TEXELS_PER_METRE);
            ray.around = static_cast<int>((std::atan2(dy, dx) / PI + 1.0) * AROUND / 2);
            ray.light = static_cast<int>(std::clamp(radius * 1.3 - 0.08, 0.0, 1.0) * 256);
            ray.water = kind == View::Pipe && dy > radius * 0.86;
        }
    }
}

void PipeScene::paintWall(quint64 seed)
{
    Random random(seed);
    const Color base = kind == View::Pipe ? Color{150, 140, 122} : Color{158, 98, 74};
    const int crackStart = random.between(0, ALONG - 1);
    std::vector<int> blotches(static_cast<std::size_t>(ALONG / BLOCK) * (AROUND / BLOCK));
    for (int &blotch : blotches)
        blotch = random.between(-18, 18);

    int crack = random.between(40, 90);
    for (int along = 0; along < ALONG; ++along) {
        crack += random.between(-1, 1);
        const int ring = kind == View::Pipe ? ALONG : 32; // a joint every pipe, or every course of bricks
        const bool joint = along % ring < 4;
        const bool cracked = ((along - crackStart) & (ALONG - 1)) < 90;
        for (int around = 0; around < AROUND; ++around) {
            const int block = (along / BLOCK) * (AROUND / BLOCK) + around / BLOCK;
            int tone = random.between(-26, 26) + blotches[static_cast<std::size_t>(block)];
            if (joint || (cracked && std::abs(around - crack) < 3))
                tone -= 85;
            wall[texel(along, around)] = {base.red + tone, base.green + tone, base.blue + tone};
        }
    }
    for (signed char &speck : grain)
        speck = static_cast<signed char>(random.between(-9, 9));
}

Color PipeScene::wallColor(const Ray &ray, int travelled) const
{
    const Color &color = wall[texel(ray.depth + travelled, ray.around)];
    if (!ray.water)
        return shaded(color, ray.light);
    return shaded({color.red / 3 + 30, color.green / 3 + 48, color.blue / 3 + 52}, ray.light);
}

Image PipeScene::frame(double metres, const QByteArray &caption) const
{
    Image image(columns, rows);
    const int travelled = static_cast<int>(metres * TEXELS_PER_METRE);
    std::size_t speck = static_cast<std::size_t>(travelled) * 7919 % GRAIN_COUNT;
    std::size_t index = 0;
    for (int y = 0; y < rows; ++y) {
        for (int x = 0; x < columns; ++x, ++index) {
            Color color = wallColor(rays[index], travelled);
            color = {color.red + grain[speck], color.green + grain[speck], color.blue + grain[speck]};
            image.setPixel(x, y, color);
            speck = speck + 1 == GRAIN_COUNT ? 0 : speck + 1;
        }
    }
    const int scale = std::max(1, rows / 180);
    drawText(image, 8 * scale, 6 * scale, scale, caption);
    drawText(image, 8 * scale, rows - 14 * scale, scale, QByteArray::number(metres, 'f', 2) + " M");
    return image;
}

} // namespace Korvo::Sample
