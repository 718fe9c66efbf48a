#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <chrono>

namespace Korvo::Cli {

struct CommandInfo;

enum class UploadKind { Standard, Qz, Quickview };

/// The options that every command takes.
struct CommonOptions
{
    QString user;
    bool passwordFromInput = false;
    bool codeFromInput = false;
    QString proxyHost;
    quint16 proxyPort = 0; ///< 0: the system's proxy
    QString authorityFile;
    std::chrono::seconds stallTimeout{300}; ///< 0: never
    bool json = false;
    bool quiet = false;
    bool verbose = false;
};

struct UploadOptions
{
    QString id;
    QString name;
    QDateTime created;
    UploadKind kind = UploadKind::Standard;
    QString manholeMediaFile;
};

/// What the user asked for, checked as far as it can be without looking at files or servers.
struct Invocation
{
    enum class Task { Run, Help, Version };

    Task task = Task::Run;
    const CommandInfo *command = nullptr;
    QStringList arguments; ///< without the command
    CommonOptions common;
    UploadOptions upload;
    int jobs = 3;
    QString complaint; ///< what is wrong with the command line; empty when nothing is

    bool isGood() const { return complaint.isEmpty(); }
};

/// @param words  the command line, program name first
Invocation parseCommandLine(const QStringList &words);

} // namespace Korvo::Cli
