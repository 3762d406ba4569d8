#include "common/PackageExtensions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace {

using namespace std::string_view_literals;

constexpr std::array packageExtensions = {
    "app"sv,
    "framework"sv,
    "bundle"sv,
    "plugin"sv,
    "kext"sv,
    "xpc"sv,
    "appex"sv,
    "qlgenerator"sv,
    "mdimporter"sv,
    "prefpane"sv,
    "saver"sv,
    "mailbundle"sv,
    "photoslibrary"sv,
    "aplibrary"sv,
    "migratedaperturelibrary"sv,
    "pplibrary"sv,
    "fcpbundle"sv,
    "fcpproject"sv,
    "imovielibrary"sv,
    "theater"sv,
    "logicx"sv,
    "band"sv,
    "lrcat"sv,
    "lrdata"sv,
    "rtfd"sv,
    "scptd"sv,
    "workflow"sv,
    "download"sv,
    "sparsebundle"sv,
    "sparseimage"sv,
    "xcodeproj"sv,
    "xcworkspace"sv,
    "playground"sv,
    "xcassets"sv,
    "docset"sv,
    "tmbundle"sv,
    "pages"sv,
    "numbers"sv,
    "key"sv,
};
static_assert(packageExtensions.size() == 39);

} // namespace

bool hasPackageExtension(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    // No package extension is longer than this; longer ones are never looked up.
    if (dot == std::string_view::npos || name.size() - dot - 1 > 23)
        return false;
    std::string extension(name.substr(dot + 1));
    for (char& c : extension)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return std::find(packageExtensions.begin(), packageExtensions.end(), extension) != packageExtensions.end();
}
