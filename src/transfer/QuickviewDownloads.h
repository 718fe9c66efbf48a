#pragma once

#include "transfer/DynDataDownload.h"

namespace Korvo::Web {

class QuickviewProjectDataDownload : public DynDataDownload
{
    Q_OBJECT

public:
    using DynDataDownload::DynDataDownload;
    void sendRequest() override;
};

class QuickviewSurveyDataDownload : public DynDataDownload
{
    Q_OBJECT

public:
    using DynDataDownload::DynDataDownload;
    void sendRequest() override;
};

class QuickviewManholeDataDownload : public DynDataDownload
{
    Q_OBJECT

public:
    using DynDataDownload::DynDataDownload;
    void sendRequest() override;
};

/// Fetches one file from a link that the web server has handed out.
class QuickviewProjectSingleFileDownload : public DynDataDownload
{
    Q_OBJECT

public:
    QuickviewProjectSingleFileDownload(WebCommunicator *usedCommunicator, int id, const QString &link,
                                       QObject *parent = nullptr);
    void sendRequest() override;

private:
    const QString fileLink;
};

} // namespace Korvo::Web
