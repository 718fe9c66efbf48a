#include "ProjectPlan.h"

#include "Random.h"

#include <QtCore/QStringList>

#include <algorithm>
#include <iterator>
#include <tuple>

namespace Korvo::Sample {

namespace {

enum Stream : quint64 { NetworkStream = 1, PictureStream, VideoStream, ObservationStream };

struct Finding
{
    const char *code;
    const char *text;
};

constexpr Finding SECTION_FINDINGS[] = {
    {"BAB", "Riss, längs"},          {"BAC", "Scherbe fehlt"},         {"BAF", "Oberflächenschaden"},
    {"BAH", "Anschluss schadhaft"},  {"BAJ", "Verschobene Verbindung"}, {"BBA", "Wurzeln & Bewuchs"},
    {"BBC", "Ablagerungen"},         {"BCA", "Anschluss"},             {"BDD", "Wasserspiegel > 10 %"},
};

constexpr Finding NODE_FINDINGS[] = {
    {"DAB", "Risse in der Schachtwand"}, {"DAQ", "Steigeisen fehlt"},  {"DBC", "Ablagerungen auf der Berme"},
    {"DCA", "Anschluss, oben"},          {"DAR", "Abdeckung klappert"},
};

const QStringList STREETS = {
    QStringLiteral("Färbergasse"), QStringLiteral("Müller & Söhne Weg"), QStringLiteral("Straße des Friedens"),
    QStringLiteral("Am Überlauf"),
};

// Digits and dots of the camera's distance, blanks, umlauts and everything that a URL would read in its own way.
const QStringList SECTION_PICTURES = {
    QStringLiteral("Foto %1 Riss längs.jpg"),     QStringLiteral("%1 Wurzeln & Bewuchs.jpg"),
    QStringLiteral("%1_Einlauf+Überlauf.JPG"),    QStringLiteral("Foto%20%1.jpg"),
    QStringLiteral("Haltung #%1.jpeg"),           QStringLiteral("Übersicht %1.bmp"),
};
const QStringList NODE_PICTURES = {
    QStringLiteral("Schacht %1 Blick nach unten.jpg"), QStringLiteral("Schachtöffnung+Deckel %1.jpg"),
    QStringLiteral("Gerinne & Berme %1.jpg"),
};
const QStringList SECTION_VIDEOS = {
    QStringLiteral("Befahrung %1 in Fließrichtung.avi"), QStringLiteral("Befahrung & Satellit %1.avi"),
    QStringLiteral("Gegen+Fließrichtung %1.AVI"), QStringLiteral("Video%20%1.avi"),
};
const QStringList NODE_VIDEOS = {QStringLiteral("Schachtfahrt %1.avi")};

QString numbered(const QStringList &patterns, std::size_t turn, std::size_t number)
{
    const QString digits = QStringLiteral("%1").arg(static_cast<qulonglong>(number), 3, 10, QLatin1Char('0'));
    // Not arg(): it would take the "%20" of a name for a place of its own.
    return QString(patterns.at(static_cast<int>(turn) % patterns.size())).replace(QLatin1String("%1"), digits);
}

QString label(const char *prefix, std::size_t number)
{
    return QLatin1String(prefix) + QStringLiteral("%1").arg(static_cast<qulonglong>(number), 2, 10, QLatin1Char('0'));
}

double rounded(double value)
{
    return static_cast<double>(static_cast<qint64>(value * 100 + 0.5)) / 100;
}

void planNetwork(ProjectPlan &plan, const ProjectSize &size)
{
    const QStringList materials = {QStringLiteral("Steinzeug"), QStringLiteral("Beton"), QStringLiteral("PVC-U")};
    Random random(size.seed, NetworkStream);
    const auto sections = static_cast<std::size_t>(size.sections);
    double easting = 648000 + random.between(0, 4000);
    double northing = 5478000 + random.between(0, 4000);
    for (std::size_t index = 0; index <= sections; ++index) {
        const QString &street = STREETS.at(static_cast<int>(index / 4) % STREETS.size());
        plan.nodes.push_back({label("K", index + 1), street, rounded(easting), rounded(northing),
                              rounded(300 + random.unit() * 12), rounded(1.6 + random.unit() * 3)});
        easting += 25 + random.unit() * 40;
        northing += random.unit() * 30 - 15;
    }
    for (std::size_t index = 0; index < sections; ++index) {
        const QString &material = materials.at(random.between(0, materials.size() - 1));
        plan.sections.push_back({label("H", index + 1), plan.nodes[index].street, material, random.between(4, 16) * 50,
                                 rounded(25 + random.unit() * 40), index, index + 1});
    }
}

// Every third is of a node.
bool isOfNode(std::size_t index)
{
    return index % 3 == 2;
}

// The place among the media of nodes, or among those of sections.
std::size_t turnOf(std::size_t index)
{
    return isOfNode(index) ? index / 3 : index - index / 3;
}

Media planMedia(const ProjectPlan &plan, Random &random, std::size_t index)
{
    const bool ofNode = isOfNode(index);
    Media media;
    media.owner = ofNode ? Owner::Node : Owner::Section;
    media.ownerIndex = turnOf(index) % (ofNode ? plan.nodes.size() : plan.sections.size());
    const double reach = ofNode ? plan.nodes[media.ownerIndex].depth : plan.sections[media.ownerIndex].length;
    media.position = rounded(random.unit() * reach);
    return media;
}

void planPictures(ProjectPlan &plan, const ProjectSize &size)
{
    Random random(size.seed, PictureStream);
    for (std::size_t index = 0; index < static_cast<std::size_t>(size.pictures); ++index) {
        Media picture = planMedia(plan, random, index);
        if (picture.owner == Owner::Node) {
            picture.path = QStringLiteral("Bilder/Schächte/") + numbered(NODE_PICTURES, turnOf(index), index + 1);
        } else {
            const Section &section = plan.sections[picture.ownerIndex];
            picture.path = QStringLiteral("Bilder/Haltungen/") + section.street + QLatin1Char('/') + section.name
                + QLatin1Char('/') + numbered(SECTION_PICTURES, turnOf(index), index + 1);
        }
        plan.pictures.push_back(picture);
    }
}

void planVideos(ProjectPlan &plan, const ProjectSize &size)
{
    constexpr double SHARES[] = {1.0, 0.75, 0.08, 0.5, 0.9, 0.6, 0.4};
    Random random(size.seed, VideoStream);
    for (std::size_t index = 0; index < static_cast<std::size_t>(size.videos); ++index) {
        Media video = planMedia(plan, random, index);
        video.position = 0;
        video.bytes = static_cast<qint64>(static_cast<double>(size.videoBytes) * SHARES[index % std::size(SHARES)]);
        if (video.owner == Owner::Node)
            video.path = QStringLiteral("Filme/Schächte/") + numbered(NODE_VIDEOS, turnOf(index), index + 1);
        else
            video.path = QStringLiteral("Filme/Haltungen/") + numbered(SECTION_VIDEOS, turnOf(index), index + 1);
        plan.videos.push_back(video);
    }
}

template <std::size_t Count>
Observation observed(Random &random, const Finding (&findings)[Count])
{
    const Finding &finding = findings[random.between(0, static_cast<int>(Count) - 1)];
    Observation observation;
    observation.code = QLatin1String(finding.code);
    observation.text = QString::fromUtf8(finding.text);
    observation.clockFrom = random.between(1, 12);
    observation.clockTo = random.between(1, 12);
    return observation;
}

Observation observationAt(Random &random, Owner owner, std::size_t ownerIndex, double position)
{
    Observation observation = owner == Owner::Node ? observed(random, NODE_FINDINGS) : observed(random, SECTION_FINDINGS);
    observation.owner = owner;
    observation.ownerIndex = ownerIndex;
    observation.position = position;
    return observation;
}

bool comesFirst(const Observation &left, const Observation &right)
{
    return std::tie(left.owner, left.ownerIndex, left.position) < std::tie(right.owner, right.ownerIndex, right.position);
}

void planObservations(ProjectPlan &plan, const ProjectSize &size)
{
    Random random(size.seed, ObservationStream);
    for (std::size_t index = 0; index < plan.sections.size(); ++index) {
        for (int count = random.between(3, 9); count > 0; --count) {
            const double position = rounded(random.unit() * plan.sections[index].length);
            plan.observations.push_back(observationAt(random, Owner::Section, index, position));
        }
    }
    for (const Media &picture : plan.pictures) {
        Observation observation = observationAt(random, picture.owner, picture.ownerIndex, picture.position);
        observation.picture = picture.path.section(QLatin1Char('/'), -1);
        plan.observations.push_back(observation);
    }
    std::stable_sort(plan.observations.begin(), plan.observations.end(), comesFirst);
}

} // namespace

QString ProjectPlan::ownerName(Owner owner, std::size_t index) const
{
    return owner == Owner::Node ? nodes[index].name : sections[index].name;
}

ProjectPlan planProject(const ProjectSize &size)
{
    ProjectPlan plan;
    plan.name = QStringLiteral("Kanalsanierung Nürnberg Süd");
    planNetwork(plan, size);
    planPictures(plan, size);
    planVideos(plan, size);
    planObservations(plan, size);
    return plan;
}

} // namespace Korvo::Sample
