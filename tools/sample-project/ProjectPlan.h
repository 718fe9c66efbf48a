#pragma once

#include <QtCore/QString>

#include <vector>

namespace Korvo::Sample {

/// What the caller may choose; everything else follows from the seed.
struct ProjectSize
{
    quint64 seed = 1;
    int sections = 12;
    int videos = 7;
    qint64 videoBytes = 10 * 1024 * 1024; // the longest video; the others are shorter
    int pictures = 45;
    qint64 scanBytes = 5 * 1024 * 1024; // 0: no laser scan
};

/// Observations and media belong to a section (a pipe) or to a node (a manhole).
enum class Owner { Section, Node };

struct Node
{
    QString name;
    QString street;
    double easting = 0;
    double northing = 0;
    double coverLevel = 0;
    double depth = 0;
};

struct Section
{
    QString name;
    QString street;
    QString material;
    int diameter = 0; // mm
    double length = 0; // m
    std::size_t fromNode = 0;
    std::size_t toNode = 0;
};

struct Media
{
    Owner owner = Owner::Section;
    std::size_t ownerIndex = 0;
    double position = 0; // m from the start node, or below the cover
    QString path;        // relative to the project folder; its file name occurs once only
    qint64 bytes = 0;    // videos: the size to reach
};

struct Observation
{
    Owner owner = Owner::Section;
    std::size_t ownerIndex = 0;
    double position = 0;
    QString code; // of EN 13508-2
    QString text;
    int clockFrom = 0;
    int clockTo = 0;
    QString picture; // file name, empty when none was taken
};

/// A small sewer network with its inspections: nodes in a row, a section between each two.
struct ProjectPlan
{
    QString name;
    std::vector<Node> nodes;
    std::vector<Section> sections;
    std::vector<Media> pictures;
    std::vector<Media> videos;
    std::vector<Observation> observations;

    QString ownerName(Owner owner, std::size_t index) const;
};

ProjectPlan planProject(const ProjectSize &size);

} // namespace Korvo::Sample
