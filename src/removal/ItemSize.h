#pragma once

#include <QString>

// The size in bytes of a file, or of every file under a folder. Links are not followed, and entries that
// cannot be read count for nothing. A path that no longer exists measures 0.
qint64 measureItemSize(const QString& path);

// "~" and "~/…" become paths under the home folder; anything else is returned unchanged.
QString expandTilde(const QString& path);
