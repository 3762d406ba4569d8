#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// Replaces the file at `path` with `data` in one step: the bytes go to a temporary file beside it, which
// then takes the old file's place, so a crash or a full disk leaves either the old or the new content.
// Missing parent folders are created. Returns a sentence saying what failed, or nothing on success.
std::optional<QString> writeFileAtomically(const QString& path, const QByteArray& data);
