#pragma once

#include "usage/FastWalk.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

// What `du -s -B1` (plus `options`) reports for `path`: allocated bytes, hard links counted once.
qint64 duBytes(const QString& path, const QStringList& options = {});

// Every value a walk of `root` publishes, in order; empty when the stream ends with no value.
std::vector<Progress> walkAll(const QString& root, std::unordered_set<std::string> leaveOut = {});

// The folder at `path` anywhere in the finished walk, or none.
std::shared_ptr<const DirNode> findNode(const Progress& progress, const QString& path);

// Every folder of the finished walk, top-level folders included.
std::vector<std::shared_ptr<const DirNode>> allNodes(const Progress& progress);

// Writes `size` bytes of data, so the file really takes that much space on disk.
void writeFileOfSize(const QString& path, qint64 size);
