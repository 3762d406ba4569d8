#pragma once

#include <QByteArray>

#include <optional>

// Extended attributes of a file itself: a final symbolic link is never followed, so the link, not what it
// points at, is what carries or loses the attribute. `name` includes its namespace ("user.…").

// Sets `name` to `value`. Returns 0 or the errno value.
int setOwnAttribute(const QByteArray& path, const char* name, const QByteArray& value);
// Removes `name`; an attribute that is not there counts as removed. Returns 0 or the errno value.
int removeOwnAttribute(const QByteArray& path, const char* name);
// The value of `name`, or nothing when the file has no such attribute or cannot be asked.
std::optional<QByteArray> ownAttribute(const QByteArray& path, const char* name);
