#pragma once

#include <QByteArrayView>
#include <QString>

#include <cstddef>
#include <functional>
#include <span>
#include <stop_token>

// What measuring one item found: a file's length, or the sum of the lengths of every file beneath a folder.
// The walk goes by the names' own bytes, so a name that isn't valid UTF-8 is measured like any other. Links
// are not followed and count for nothing; nor do entries that vanish or cannot be read.
struct ItemSize {
    qint64 bytes = -1;    // -1 when the item itself could not be examined (it vanished, for example)
    qint64 entries = 0;   // entries looked at
    bool stopped = false; // the stop token fired before the whole tree was measured
};

// Told what each listed folder (by its name) held directly, and once what a file measured on its own holds
// (with an empty name), so that a scan can show its progress.
using MeasureProgress = std::function<void(QByteArrayView folderName, qint64 entries, qint64 bytes)>;

// Measures the item at `path`. `buffer` (directoryBufferSize bytes) is the listing buffer, reused from one
// call to the next; when it is empty, one is made for a folder (a file needs none).
ItemSize measureItem(
    QByteArrayView path, std::span<std::byte> buffer, const MeasureProgress& progress = {}, std::stop_token stop = {});

// The size in bytes of a file, or of every file under a folder. A path that no longer exists measures 0.
qint64 measureItemSize(const QString& path);

// "~" and "~/…" become paths under the home folder; anything else is returned unchanged.
QString expandTilde(const QString& path);
