#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The home folder of a user, from the password database.
std::optional<QString> homeFolderOf(unsigned uid);

// The login name of a user, from the password database.
std::optional<QString> userNameOf(unsigned uid);

// The home folders of every user the password database lists.
QStringList allHomeFolders();
