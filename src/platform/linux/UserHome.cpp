#include "platform/UserHome.h"

#include <QFile>

#include <mutex>
#include <pwd.h>
#include <vector>

namespace {

// One text field of a user's entry in the password database.
std::optional<QString> passwordField(unsigned uid, char* passwd::*field)
{
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16 * 1024);
    if (::getpwuid_r(uid, &entry, buffer.data(), buffer.size(), &found) != 0 || !found || !(found->*field))
        return std::nullopt;
    return QFile::decodeName(found->*field);
}

} // namespace

std::optional<QString> homeFolderOf(unsigned uid)
{
    return passwordField(uid, &passwd::pw_dir);
}

std::optional<QString> userNameOf(unsigned uid)
{
    return passwordField(uid, &passwd::pw_name);
}

QStringList allHomeFolders()
{
    // The database is walked with one cursor per process.
    static std::mutex cursor;
    const std::lock_guard lock(cursor);
    QStringList homes;
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16 * 1024);
    ::setpwent();
    while (::getpwent_r(&entry, buffer.data(), buffer.size(), &found) == 0 && found)
        if (found->pw_dir && found->pw_dir[0] == '/' && found->pw_dir[1] != '\0')
            homes.append(QFile::decodeName(found->pw_dir));
    ::endpwent();
    return homes;
}
