#pragma once

#include <QString>

#include <optional>

// How the helper is registered with the system's service manager. The systemd implementation is the
// real one; tests drive every state through their own.
class HelperService {
public:
    enum class Status { enabled, installedNotEnabled, notInstalled };

    virtual ~HelperService() = default;
    virtual Status status() = 0;
    // Installs and enables the helper for this user, asking for an administrator's approval when needed.
    // Nothing on success, otherwise the sentence saying why not.
    virtual std::optional<QString> install() = 0;
};
