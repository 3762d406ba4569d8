#pragma once

#include <QString>

// Byte counts as people read them ("1.2 MB"), in decimal units like the file manager shows.
QString formatBytes(qint64 bytes);

// Adds two byte counts. An overflow means a programming error upstream, so it stops the program rather
// than producing a wrong total.
qint64 checkedAdd(qint64 a, qint64 b);
