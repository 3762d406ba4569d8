#pragma once

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
