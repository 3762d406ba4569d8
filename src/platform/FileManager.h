#pragma once

#include <QString>

#include <optional>

// Opens `folder` in the desktop's file manager. Nothing on success; otherwise the sentence that says why
// it could not be shown and what to do. Runs xdg-mime and xdg-open: call it off the main thread.
std::optional<QString> showInFileManager(const QString& folder);
