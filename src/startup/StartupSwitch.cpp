#include "startup/StartupSwitch.h"

#include "platform/SystemdCommands.h"
#include "startup/AutostartOverride.h"
#include "startup/ServiceManagerRecords.h"
#include "startup/Shell.h"
#include "startup/StartupTexts.h"
#include "startup/UnitEnablement.h"

#include <QFileInfo>

namespace {

using SystemdCommands::UserSwitch;

StartupOutcome failed(const StartupItem& item, bool on, const QString& reason)
{
    return {false, StartupTexts::couldNotTurn(item.name, on, reason)};
}

QString systemctlSaid(const ShellResult& result)
{
    return QStringLiteral("systemctl answered: %1.").arg(result.problem());
}

// True when the user's service manager now has the unit in the state asked for.
std::optional<bool> readBack(const QString& unit)
{
    const ShellResult state = Shell::run(SystemdCommands::userUnitState(unit), StartupSwitch::commandLimit);
    if (!state.started || state.timedOut)
        return std::nullopt;
    return QString::fromUtf8(state.output).trimmed().startsWith(QLatin1String("enabled"));
}

StartupOutcome switchUnit(const StartupItem& item, bool on, const StartupLocations& locations)
{
    // A unit that an administrator enabled for every user can only be masked in the user's own folder.
    const UnitEnablement everyone = UnitEnablement::read(locations.globalUserUnits);
    const UnitEnablement own = UnitEnablement::read({locations.userUnits});
    QList<UserSwitch> steps;
    if (on) {
        if (own.masked.contains(item.id))
            steps.append(UserSwitch::mask);
        if (!everyone.isOn(item.id))
            steps.append(UserSwitch::enablement);
    } else {
        steps.append(everyone.isOn(item.id) ? UserSwitch::mask : UserSwitch::enablement);
    }
    for (const UserSwitch how : steps) {
        const ShellResult result
            = Shell::run(SystemdCommands::switchUserUnit(item.id, on, how), StartupSwitch::commandLimit);
        if (!result.succeeded())
            return failed(item, on, systemctlSaid(result));
    }
    ServiceManagerRecords::forget();
    // Stopping is a courtesy so that the unit doesn't run on until the next login; it may not be running.
    if (!on)
        Shell::run(SystemdCommands::stopUserUnit(item.id), StartupSwitch::commandLimit);
    const std::optional<bool> state = readBack(item.id);
    if (!state)
        return failed(item, on, QStringLiteral("systemctl didn’t say whether it changed."));
    if (*state != on)
        return failed(item, on, QStringLiteral("systemd still has it %1.").arg(*state ? "on" : "off"));
    return {true, on ? StartupTexts::willStartAgain(item.name) : StartupTexts::unitOff(item.name)};
}

StartupOutcome switchEntry(const StartupItem& item, bool on, const StartupLocations& locations)
{
    const QString fileName = QFileInfo(item.revealURL.value_or(QString())).fileName();
    if (const std::optional<QString> problem = AutostartOverride::apply(locations.userAutostart, fileName, on))
        return failed(item, on, *problem);
    return {true, on ? StartupTexts::willStartAgain(item.name) : StartupTexts::entryOff(item.name)};
}

} // namespace

StartupOutcome StartupSwitch::setEnabled(const StartupItem& item, bool on, const StartupLocations& locations)
{
    switch (item.control) {
    case StartupControl::userLaunchd: return switchUnit(item, on, locations);
    case StartupControl::loginApp: return switchEntry(item, on, locations);
    case StartupControl::systemLaunchd: break;
    }
    return {false, StartupTexts::daemonNeedsHelper(item.name)};
}
