#pragma once

#include "Command.h"

namespace Korvo::Cli {

/// projects
class ProjectsCommand : public Command
{
    Q_OBJECT
public:
    using Command::Command;
    void start() override;

private:
    void take(QList<Web::ProjectInfo> projects);
};

/// status ID...
class StatusCommand : public Command
{
    Q_OBJECT
public:
    using Command::Command;
    void start() override;

private:
    void take(const QList<Web::UploadStatusInfo> &statuses);
};

/// link ID NAME
class LinkCommand : public Command
{
    Q_OBJECT
public:
    using Command::Command;
    void start() override;

private:
    void take(const Web::SingleMediaFileLinkData &link);
};

/// links ID
class LinksCommand : public Command
{
    Q_OBJECT
public:
    using Command::Command;
    void start() override;

private:
    void take(const QList<Web::SingleMediaFileLinkData> &links);
};

} // namespace Korvo::Cli
