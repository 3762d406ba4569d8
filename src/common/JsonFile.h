#pragma once

#include <QJsonDocument>
#include <QString>

// The outcome of reading one of our JSON state files.
struct JsonLoad {
    enum class Status {
        missing,  // no file yet: a first run
        loaded,   // `document` holds the parsed content
        setAside, // the file could not be used and was moved aside; start empty
    };
    Status status = Status::missing;
    QJsonDocument document;
};

// Reads and parses a JSON state file. A file that exists but cannot be read or parsed is moved aside
// under a dated name (see setAsideUnusableFile) so that the next save never overwrites the user's data.
JsonLoad loadJsonFile(const QString& path);

// Moves a state file that exists but cannot be used to "<name>.unreadable-<date>-<time>" beside it and
// logs where it went. Callers use it too when the JSON parses but does not have the expected shape.
void setAsideUnusableFile(const QString& path, const QString& reason);

// Keeps a copy of a state file that can only be used in part, `content` being its bytes, under the same dated
// name, written atomically, and logs where it went; the file itself stays for the part that can be used.
// False when no copy could be written.
bool keepCopyOfUnusableFile(const QString& path, const QByteArray& content, const QString& reason);
