#include "duplicates/InventoryRules.h"

#include "common/PackageExtensions.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace {

using namespace std::string_view_literals;

// Kernel and device trees, the operating system's own programs and libraries, and system state.
constexpr std::array systemPaths = {
    "/proc"sv,
    "/sys"sv,
    "/dev"sv,
    "/run"sv,
    "/boot"sv,
    "/bin"sv,
    "/sbin"sv,
    "/lib"sv,
    "/lib32"sv,
    "/lib64"sv,
    "/libx32"sv,
    "/usr/bin"sv,
    "/usr/sbin"sv,
    "/usr/lib"sv,
    "/usr/lib32"sv,
    "/usr/lib64"sv,
    "/usr/libx32"sv,
    "/usr/libexec"sv,
    "/usr/share"sv,
    "/usr/include"sv,
    "/etc"sv,
    "/var/lib"sv,
    "/var/cache"sv,
    "/var/log"sv,
    "/var/spool"sv,
    "/snap"sv,
    "/lost+found"sv,
};

// The home folder's hidden data folders: application state, caches and keys, never the user's own files.
constexpr std::array homeDataFolders = {
    "/.cache"sv,
    "/.local"sv,
    "/.var"sv,
    "/.config"sv,
    "/.mozilla"sv,
    "/.thunderbird"sv,
    "/.gnupg"sv,
    "/.ssh"sv,
};

// The same folders in other users' homes and on other volumes.
constexpr std::array dataFolderEndings = {
    "/.cache"sv,
    "/.local/share"sv,
    "/.var/app"sv,
    "/.mozilla"sv,
    "/.thunderbird"sv,
    "/.gnupg"sv,
    "/.ssh"sv,
};

constexpr std::array ignoredFolderNames = {
    ".git"sv,
    ".hg"sv,
    ".svn"sv,
    ".Spotlight-V100"sv,
    ".fseventsd"sv,
    ".DocumentRevisions-V100"sv,
    ".TemporaryItems"sv,
    ".Trashes"sv,
    ".DS_Store"sv,
    "Backups.backupdb"sv,
    ".MobileBackups"sv,
};

bool isAtOrBelow(std::string_view path, std::string_view folder)
{
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

namespace InventoryRules {

bool isExcludedPath(std::string_view path, std::string_view home)
{
    for (const std::string_view system : systemPaths)
        if (isAtOrBelow(path, system))
            return true;
    if (!home.empty() && path.starts_with(home) && path.size() > home.size()) {
        const std::string_view belowHome = path.substr(home.size());
        for (const std::string_view folder : homeDataFolders)
            if (isAtOrBelow(belowHome, folder))
                return true;
    }
    for (const std::string_view ending : dataFolderEndings)
        if (path.ends_with(ending))
            return true;
    return false;
}

bool isIgnoredFolderName(std::string_view name)
{
    return std::find(ignoredFolderNames.begin(), ignoredFolderNames.end(), name) != ignoredFolderNames.end();
}

bool hasPackageComponent(std::string_view path)
{
    for (std::size_t start = 0; start <= path.size();) {
        const std::size_t slash = std::min(path.find('/', start), path.size());
        if (hasPackageExtension(path.substr(start, slash - start)))
            return true;
        start = slash + 1;
    }
    return false;
}

} // namespace InventoryRules
