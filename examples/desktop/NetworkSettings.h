#pragma once

#include <QtCore/QString>

namespace Korvo::Desktop {

/// How the platform is reached. The password of the proxy is kept in memory only.
struct NetworkSettings
{
    enum class ProxyKind { System, None, Http };

    ProxyKind proxyKind = ProxyKind::System;
    QString proxyHost;
    quint16 proxyPort = 0;
    QString proxyUser;
    QString proxyPassword;
    QString authorityFile; ///< PEM file of authorities to be trusted besides those of the system; may be empty

    static NetworkSettings load();
    void save() const;

    /// Puts the settings in force for all connections that are opened from now on.
    /// @return what is wrong with them, in words for the user; empty when they are in force
    QString apply() const;
};

} // namespace Korvo::Desktop
