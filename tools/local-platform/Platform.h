#pragma once

#include "AccountStore.h"
#include "CertificateAuthority.h"
#include "Clock.h"
#include "Database.h"
#include "Faults.h"
#include "Journal.h"
#include "ObjectStore.h"
#include "Options.h"
#include "ProjectStore.h"
#include "SignatureCheck.h"

#include <string>

namespace LocalPlatform {

/// The hosts and paths of the two servers, production and beta, as the build names them.
struct Roots
{
    std::string productionWeb;
    std::string productionService;
    std::string betaWeb;
    std::string betaService;
};

const Roots &roots();
std::string hostOfUrl(const std::string &url);

/// The folder that holds everything, for one running program only. A killed one lets go of it.
class DataFolder
{
public:
    explicit DataFolder(const std::string &folder);
    ~DataFolder();
    DataFolder(const DataFolder &) = delete;
    DataFolder &operator=(const DataFolder &) = delete;

    const std::string path;

private:
    int lockFile;
};

/// Everything that the routes work on.
class Platform
{
public:
    explicit Platform(const Options &chosen);

    /// The service's root that a client of this host is told.
    std::string serviceRootFor(const std::string &host) const;

    /// A link that downloads this object without credentials, as long as it is not changed.
    std::string mediaLink(const std::string &host, const std::string &bucket, const std::string &key) const;
    std::string mediaSignature(const std::string &bucket, const std::string &key) const;

    Options options;
    DataFolder data;
    Clock clock;
    Database database;
    CertificateAuthority authority;
    AccountStore accounts;
    ProjectStore projects;
    ObjectStore objects;
    SignatureCheck signatures;
    Faults faults;
    Journal journal;

private:
    std::string linkSecret;
};

WebCopies webCopiesNamed(const std::string &name);

} // namespace LocalPlatform
