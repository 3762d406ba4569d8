#pragma once

#include <QSet>
#include <QString>

// The desktop entries (files ending in ".desktop") that the distribution's package manager installed,
// read from dpkg's file lists in `dpkgInfoFolder`. Empty when there is no dpkg database.
QSet<QString> packagedDesktopEntries(const QString& dpkgInfoFolder = QStringLiteral("/var/lib/dpkg/info"));

// The files of the packages that make up the operating system itself: those dpkg's status marks essential
// or of required priority, and those built from systemd's source (its own units). Read from `dpkgFolder`
// ("status" and "info/*.list"); empty when there is no dpkg database.
QSet<QString> operatingSystemFiles(const QString& dpkgFolder = QStringLiteral("/var/lib/dpkg"));
