#pragma once

#include <string_view>

// Folders with these extensions (application bundles, photo and media libraries, disk images kept as
// folders, documents that are folders) are measured and removed whole, never opened up.
// True when the text after the last "." of `name`, compared lower-case, is one of them.
bool hasPackageExtension(std::string_view name);
