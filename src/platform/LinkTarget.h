#pragma once

#include <QString>

#include <optional>

// The target stored in the symbolic link at `path`, exactly as written; nothing when `path` is not a link
// or cannot be read.
std::optional<QString> readLinkTarget(const QString& path);
