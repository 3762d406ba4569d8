#pragma once

#include "processes/PriorityBand.h"

#include <QString>

// What the process list and the memory monitor say.
namespace ProcessTexts {

// Activity entries of quits and priority changes go under this feature name.
inline const QString feature = QStringLiteral("Memory Usage");

inline QString cannotSignal()
{
    return QStringLiteral("That process can't be signalled.");
}
inline QString cannotReprioritise()
{
    return QStringLiteral("That process can't be reprioritised.");
}
inline QString refusedToQuit(const QString& name)
{
    return name + QStringLiteral(" refused to quit.");
}
// What is said once an action on `name` went through.
inline QString quitDone(const QString& name)
{
    return QStringLiteral("%1 quit.").arg(name);
}
inline QString forceQuitDone(const QString& name)
{
    return QStringLiteral("%1 was force quit.").arg(name);
}
inline QString priorityDone(const QString& name, PriorityBand band)
{
    return QStringLiteral("%1 now runs at %2 priority (nice %3).")
        .arg(name, PriorityBands::title(band))
        .arg(PriorityBands::niceValue(band));
}
inline QString alreadyEnded(const QString& name)
{
    return QStringLiteral("%1 had already ended.").arg(name);
}

// Shown while /proc hides system processes from the user and the helper is not ready to read them.
inline QString installHelperForMemory()
{
    return QStringLiteral("Install the Maintenance Helper to read system processes’ memory");
}
inline QString showSystemProcesses()
{
    return QStringLiteral("Show processes owned by the system (root and service accounts)");
}
inline QString noSuchProcess(int pid)
{
    return QStringLiteral("No process %1 is running — check the number with “velloru processes --all”.").arg(pid);
}

} // namespace ProcessTexts
