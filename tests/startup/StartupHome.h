#pragma once

#include "TestSupport.h"
#include "startup/ServiceManagerRecords.h"
#include "startup/StartupLocations.h"

// A fixture machine for startup items: the user's config folder (XDG_CONFIG_HOME points here while it
// lives, so systemctl and the user's service manager see the same units), the folders for every user, the
// system's, a home Trash and a dpkg database.
class StartupHome {
public:
    StartupHome()
    {
        m_oldConfig = qgetenv("XDG_CONFIG_HOME");
        qputenv("XDG_CONFIG_HOME", tree.makeFolder(QStringLiteral("config")).toUtf8());
        locations.userUnits = tree.makeFolder(QStringLiteral("config/systemd/user"));
        locations.globalUserUnits = {tree.makeFolder(QStringLiteral("etc/systemd/user")),
            tree.makeFolder(QStringLiteral("usr/lib/systemd/user"))};
        locations.systemUnits = {tree.makeFolder(QStringLiteral("etc/systemd/system")),
            tree.makeFolder(QStringLiteral("lib/systemd/system"))};
        locations.userAutostart = tree.makeFolder(QStringLiteral("config/autostart"));
        locations.systemAutostart = {tree.makeFolder(QStringLiteral("etc/xdg/autostart"))};
        locations.flatpakApps = {tree.makeFolder(QStringLiteral("flatpak/app"))};
        locations.homeTrash = tree.makeFolder(QStringLiteral("home/.local/share/Trash"));
        locations.dpkgFolder = tree.makeFolder(QStringLiteral("dpkg"));
        ServiceManagerRecords::forget();
    }
    ~StartupHome()
    {
        qputenv("XDG_CONFIG_HOME", m_oldConfig);
        ServiceManagerRecords::forget();
    }

    static QByteArray unit(const QByteArray& execStart, const QByteArray& description = "A test unit",
        const QByteArray& install = "[Install]\nWantedBy=default.target\n")
    {
        QByteArray text = "[Unit]\nDescription=" + description + "\n\n[Service]\n";
        if (!execStart.isNull())
            text += "ExecStart=" + execStart + "\n";
        return text + "\n" + install;
    }

    // Writes a user unit; `enabled` links it from default.target.wants as enabling does.
    QString userUnit(const QString& name, const QByteArray& execStart, bool enabled)
    {
        const QString path = tree.write(QStringLiteral("config/systemd/user/") + name, unit(execStart));
        if (enabled) {
            tree.makeFolder(QStringLiteral("config/systemd/user/default.target.wants"));
            QFile::link(path, locations.userUnits + QStringLiteral("/default.target.wants/") + name);
        }
        return path;
    }

    QString entry(const QString& relative, const QByteArray& keys)
    {
        return tree.write(relative, "[Desktop Entry]\nType=Application\n" + keys);
    }

    FixtureTree tree;
    StartupLocations locations;

private:
    QByteArray m_oldConfig;
};
