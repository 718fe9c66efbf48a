#include "ProjectTexts.h"

#include "Random.h"

#include <QtCore/QXmlStreamWriter>

#include <cmath>

namespace Korvo::Sample {

namespace {

QString decimal(double value)
{
    return QString::number(value, 'f', 2);
}

QByteArray coordinate(double metres)
{
    return QByteArray::number(metres, 'f', 4);
}

void writeSection(QXmlStreamWriter &xml, const ProjectPlan &plan, const Section &section)
{
    xml.writeStartElement(QStringLiteral("Section"));
    xml.writeAttribute(QStringLiteral("name"), section.name);
    xml.writeTextElement(QStringLiteral("From"), plan.nodes[section.fromNode].name);
    xml.writeTextElement(QStringLiteral("To"), plan.nodes[section.toNode].name);
    xml.writeTextElement(QStringLiteral("Street"), section.street);
    xml.writeTextElement(QStringLiteral("Material"), section.material);
    xml.writeTextElement(QStringLiteral("Diameter"), QString::number(section.diameter));
    xml.writeTextElement(QStringLiteral("Length"), decimal(section.length));
    xml.writeEndElement();
}

void writeNode(QXmlStreamWriter &xml, const Node &node)
{
    xml.writeStartElement(QStringLiteral("Node"));
    xml.writeAttribute(QStringLiteral("name"), node.name);
    xml.writeTextElement(QStringLiteral("Street"), node.street);
    xml.writeTextElement(QStringLiteral("Depth"), decimal(node.depth));
    xml.writeEndElement();
}

void writeMedia(QXmlStreamWriter &xml, const QString &element, const ProjectPlan &plan, const std::vector<Media> &list)
{
    for (const Media &media : list) {
        xml.writeStartElement(element);
        xml.writeAttribute(QStringLiteral("of"), plan.ownerName(media.owner, media.ownerIndex));
        xml.writeCharacters(media.path);
        xml.writeEndElement();
    }
}

} // namespace

QByteArray projectXml(const ProjectPlan &plan, const QString &databaseName)
{
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("Project"));
    xml.writeTextElement(QStringLiteral("Name"), plan.name);
    xml.writeTextElement(QStringLiteral("Database"), databaseName);
    xml.writeTextElement(QStringLiteral("Created"), QStringLiteral("2024-03-18T07:45:00"));
    for (const Section &section : plan.sections)
        writeSection(xml, plan, section);
    for (const Node &node : plan.nodes)
        writeNode(xml, node);
    writeMedia(xml, QStringLiteral("Picture"), plan, plan.pictures);
    writeMedia(xml, QStringLiteral("Video"), plan, plan.videos);
    xml.writeEndElement();
    xml.writeEndDocument();
    return text;
}

QByteArray reportText(const ProjectPlan &plan)
{
    QString text = plan.name + QStringLiteral("\nPrüfbericht\n\n");
    for (const Observation &seen : plan.observations) {
        text += plan.ownerName(seen.owner, seen.ownerIndex) + QLatin1Char('\t') + decimal(seen.position)
            + QStringLiteral(" m\t") + seen.code + QLatin1Char('\t') + seen.text + QLatin1Char('\t') + seen.picture
            + QLatin1Char('\n');
    }
    return text.toUtf8();
}

QByteArray scanText(quint64 seed, qint64 bytes)
{
    constexpr double POINTS_A_TURN = 360;
    Random random(seed);
    QByteArray text;
    text.reserve(static_cast<int>(bytes) + 64);
    for (int point = 0; text.size() < bytes; ++point) {
        const double angle = point / POINTS_A_TURN * 2 * 3.14159265358979323846;
        const double radius = 0.5 + random.unit() * 0.004;
        const double height = -point / POINTS_A_TURN * 0.005;
        text += coordinate(radius * std::cos(angle)) + ' ' + coordinate(radius * std::sin(angle)) + ' ' + coordinate(height) + '\n';
    }
    text.truncate(static_cast<int>(bytes));
    return text;
}

} // namespace Korvo::Sample
