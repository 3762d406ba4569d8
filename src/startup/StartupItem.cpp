#include "startup/StartupItem.h"

QString StartupNames::kindLabel(StartupKind kind)
{
    switch (kind) {
    case StartupKind::app: return QStringLiteral("Opens at login");
    case StartupKind::loginItem: return QStringLiteral("Helper app");
    case StartupKind::agent: return QStringLiteral("Background agent");
    case StartupKind::daemon: return QStringLiteral("System daemon");
    }
    return {};
}

QString StartupNames::controlName(StartupControl control)
{
    switch (control) {
    case StartupControl::userLaunchd: return QStringLiteral("userLaunchd");
    case StartupControl::systemLaunchd: return QStringLiteral("systemLaunchd");
    case StartupControl::loginApp: return QStringLiteral("loginApp");
    }
    return {};
}

QString StartupNames::removalName(StartupRemoval removal)
{
    switch (removal) {
    case StartupRemoval::trashPlist: return QStringLiteral("trashPlist");
    case StartupRemoval::trashPlistAsRoot: return QStringLiteral("trashPlistAsRoot");
    case StartupRemoval::loginAppEntry: return QStringLiteral("loginAppEntry");
    case StartupRemoval::ownedByApp: return QStringLiteral("ownedByApp");
    }
    return {};
}

QString StartupNames::healthName(StartupHealth health)
{
    switch (health) {
    case StartupHealth::ok: return QStringLiteral("ok");
    case StartupHealth::programMissing: return QStringLiteral("programMissing");
    case StartupHealth::appInTrash: return QStringLiteral("appInTrash");
    }
    return {};
}
