#pragma once

#include <QString>

#include <functional>

// "x (2).jpg" for "x.jpg" and number 2; "x (2)" for a name without extension. Only the last component of
// `path` changes.
QString numberedName(const QString& path, int number);

// `path` itself when nothing is there, otherwise the first numbered name beside it that is free.
QString firstFreeName(const QString& path, const std::function<bool(const QString&)>& taken);
