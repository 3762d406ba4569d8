#pragma once

#include <QString>

#include <optional>

// How the helper is registered with the system's service manager. The systemd implementation is the
// real one; tests drive every state through their own. Registering and unregistering may wait for an
// administrator's approval, so callers keep them off the main thread.
class HelperService {
public:
    enum class Status { enabled, installedNotEnabled, notInstalled };

    // Why registering or unregistering failed: who said so, its status code and its own words.
    struct Error {
        QString domain;
        int code = 0;
        QString description;
    };
    // Failures reported by the service manager itself (rather than by the approval or the copying). Such a
    // failure after which the service reads enabled means it was registered already.
    static inline const QString serviceManagerDomain = QStringLiteral("systemd");

    virtual ~HelperService() = default;
    virtual Status status() = 0;
    // Installs (or reinstalls) the helper for this user and switches it on.
    virtual std::optional<Error> registerService() = 0;
    // Switches the helper off and removes it.
    virtual std::optional<Error> unregisterService() = 0;
};

QString statusName(HelperService::Status status);
