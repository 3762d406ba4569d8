#pragma once

#include "helper/HelperService.h"

#include <QString>

// The helper as systemd units: a socket unit listening on /run/velloru/helper.sock that starts the
// daemon on demand. Installing copies the daemon to a root-owned place, writes both units and the user
// it serves, and enables the socket. Unprivileged users install through pkexec.
class SystemdHelperService : public HelperService {
public:
    // Installs the velloru-helper that lies beside the running program.
    SystemdHelperService();

    Status status() override;
    std::optional<Error> registerService() override;
    std::optional<Error> unregisterService() override;

    static QString installedProgram();

    // The root sides of installing and removing, run by "velloru-helper --install" and "--uninstall":
    // everything but the approval.
    static std::optional<Error> installAsRoot(const QString& fromProgram, unsigned uid);
    static std::optional<Error> uninstallAsRoot();
    // How "velloru-helper --install" reports a failure in its exit status, so the app can tell the service
    // manager's refusals from the rest.
    static int exitStatusFor(const Error& error);

private:
    QString m_helperProgram;
};

// The listening socket systemd handed this process (socket activation), if any.
std::optional<int> systemdListeningSocket();
