#include "platform/UserHome.h"

#include <QFile>

#include <pwd.h>
#include <vector>

std::optional<QString> homeFolderOf(unsigned uid)
{
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16 * 1024);
    if (::getpwuid_r(uid, &entry, buffer.data(), buffer.size(), &found) != 0 || !found || !found->pw_dir)
        return std::nullopt;
    return QFile::decodeName(found->pw_dir);
}
