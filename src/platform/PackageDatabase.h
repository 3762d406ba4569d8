#pragma once

#include <QSet>
#include <QString>

// The desktop entries (files ending in ".desktop") that the distribution's package manager installed,
// read from dpkg's file lists in `dpkgInfoFolder`. Empty when there is no dpkg database.
QSet<QString> packagedDesktopEntries(const QString& dpkgInfoFolder = QStringLiteral("/var/lib/dpkg/info"));
