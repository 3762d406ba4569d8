#pragma once

#include <QList>
#include <QString>

#include <optional>
#include <string>
#include <unordered_set>

// The absolute path, links resolved, of the folder to measure; nothing when there is no such folder.
std::optional<QString> resolveWalkRoot(const QString& path);

// What the Disk Usage section leaves out: the trees the kernel makes up, which hold no disk space. They
// are separate volumes on any ordinary system already; naming them keeps a container's view honest too.
std::unordered_set<std::string> defaultLeaveOut();

// A mounted volume the user can pick to measure.
struct VolumeChoice {
    QString name;
    QString rootPath;
};

// The mounted volumes with real storage behind them, the root volume first.
QList<VolumeChoice> mountedVolumes();

// File names are bytes; these convert them the way the rest of Qt does.
QString fromFileName(const std::string& name);
std::string toFileName(const QString& path);
