#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

// Which units are switched on, read from the links that enabling makes: a unit is enabled when a ".wants" or
// ".requires" folder of a configuration folder links to it (an instance such as "getty@tty1.service" enables
// its template too), and masked when the folder links its name to /dev/null. This is what systemd itself
// reads, so it needs no running service manager.
struct UnitEnablement {
    QSet<QString> wanted;
    QSet<QString> masked;

    bool isOn(const QString& unit) const { return wanted.contains(unit) && !masked.contains(unit); }

    static UnitEnablement read(const QStringList& configFolders);
};
