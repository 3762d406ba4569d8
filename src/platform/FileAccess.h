#pragma once

#include <QString>

// Whether this user may create and remove entries in the folder `path` (a read-only file system says no
// even to root).
bool canWriteInFolder(const QString& path);

// The system's own description of an errno value, as a sentence: "Invalid cross-device link."
QString systemErrorSentence(int error);
