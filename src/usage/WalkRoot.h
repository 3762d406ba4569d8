#pragma once

#include <QList>
#include <QString>

#include <optional>
#include <string>
#include <unordered_set>

// The folder to measure: its absolute path with links resolved, or the sentence that says why there is none.
struct ResolvedRoot {
    std::optional<QString> path;
    QString failure;
};

// Resolves on the path's own bytes: a link may lead to a folder whose name isn't valid UTF-8, which has no
// exact text form, so it is refused rather than shown (and acted on) as some other folder's path.
ResolvedRoot resolveWalkRoot(const QString& path);

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

// File names are bytes. For showing a name or path: one that isn't valid UTF-8 is written with \xNN escapes
// (LocalPath::printable), so it can never pass for another file's name.
QString fromFileName(const std::string& name);
// Whether fromFileName gives the exact text of `name`, so that the text can be handed back to the system.
bool isExactFileName(const std::string& name);
std::string toFileName(const QString& path);
