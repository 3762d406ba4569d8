#pragma once

#include "helper/HelperService.h"

#include <QString>

// The helper as systemd units: a socket unit listening on /run/velloru/helper.sock that starts the
// daemon on demand. Installing copies the daemon to a root-owned place, writes both units and the user
// it serves, and enables the socket. Unprivileged users install through pkexec.
class SystemdHelperService : public HelperService {
public:
    // `helperProgram`: the velloru-helper built beside the app, copied at installation.
    explicit SystemdHelperService(QString helperProgram);

    Status status() override;
    std::optional<QString> install() override;

    static QString installedProgram();

    // The root side of installing, run by "velloru-helper --install": everything but the approval.
    static std::optional<QString> installAsRoot(const QString& fromProgram, unsigned uid);

private:
    QString m_helperProgram;
};

// The listening socket systemd handed this process (socket activation), if any.
std::optional<int> systemdListeningSocket();
