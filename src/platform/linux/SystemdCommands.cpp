#include "platform/SystemdCommands.h"

namespace {

ToolCommand systemctlUser(QStringList arguments)
{
    arguments.prepend(QStringLiteral("--user"));
    arguments.prepend(QStringLiteral("--no-pager"));
    return {QStringLiteral("systemctl"), arguments};
}

} // namespace

ToolCommand SystemdCommands::switchUserUnit(const QString& unit, bool on, UserSwitch how)
{
    const QString verb = how == UserSwitch::mask ? (on ? QStringLiteral("unmask") : QStringLiteral("mask"))
                                                 : (on ? QStringLiteral("enable") : QStringLiteral("disable"));
    return systemctlUser({verb, QStringLiteral("--"), unit});
}

ToolCommand SystemdCommands::stopUserUnit(const QString& unit)
{
    return systemctlUser({QStringLiteral("stop"), QStringLiteral("--no-block"), QStringLiteral("--"), unit});
}

ToolCommand SystemdCommands::userUnitState(const QString& unit)
{
    return systemctlUser({QStringLiteral("is-enabled"), QStringLiteral("--"), unit});
}

ToolCommand SystemdCommands::loadedUserUnits()
{
    return systemctlUser({QStringLiteral("list-units"), QStringLiteral("--all"), QStringLiteral("--output=json")});
}
