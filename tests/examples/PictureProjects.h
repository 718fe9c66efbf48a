#pragma once

#include "flow/LocalPlatform.h"

#include <QtCore/QVector>

namespace Korvo::Web::TestSupport {

/// What the company of a picture has on the platform before: names, dates and sizes as they come up.
inline void addPictureProjects(LocalPlatform &platform)
{
    struct Row
    {
        QString name;
        QString created;
        int bytes;
        QString importType;
    };
    const QVector<Row> rows{
        {QStringLiteral("Hauptsammler Ost, 2. Bauabschnitt"), QStringLiteral("2026-08-24T07:41:00"), 41200000, {}},
        {QStringLiteral("Kanal Altstadt"), QStringLiteral("2026-09-14T13:20:00"), 34500000,
         QStringLiteral("OrvandeImport")},
        {QStringLiteral("Sammler Nord"), QStringLiteral("2026-10-02T08:05:00"), 18900000, {}},
        {QStringLiteral("Schachtprüfung Gewerbepark"), QStringLiteral("2026-10-21T15:32:00"), 6300000,
         QStringLiteral("Quickview")},
        {QStringLiteral("Übernahme Neubaugebiet Süd-West"), QStringLiteral("2026-11-09T10:14:00"), 27400000, {}},
    };
    for (const Row &row : rows)
        platform.post(
            QStringLiteral("projects"),
            QJsonObject{{QStringLiteral("projectId"), QString(row.created).remove(QLatin1Char(':'))},
                        {QStringLiteral("name"), row.name},
                        {QStringLiteral("creationDate"), row.created},
                        {QStringLiteral("importType"), row.importType},
                        {QStringLiteral("objects"), QJsonArray{QJsonObject{{QStringLiteral("key"), QStringLiteral("a")},
                                                                           {QStringLiteral("size"), row.bytes}}}}});
}

} // namespace Korvo::Web::TestSupport
