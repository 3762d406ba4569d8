#pragma once

#include <QJsonObject>
#include <QString>

#include <chrono>

// The helper's operations on the running system: signals and priorities of other users' processes, their
// memory, system units and mount points. Each checks its arguments and answers with a reply object.

QJsonObject signalProcess(int pid, int signal);
QJsonObject setProcessPriority(int pid, int nice);
QJsonObject processMemory();
// Switches a system unit on and starts it, or switches it off and stops it. The helper's own units and the
// ones a session cannot live without are refused.
QJsonObject setUnitEnabled(const QString& unit, bool enabled, std::chrono::seconds timeout);
// Creates `name` inside `mountRoot`, owned by `uid` (a user may only ask for itself), or takes an empty
// folder of that user that is already there.
QJsonObject createMountpoint(const QString& mountRoot, const QString& name, qint64 uid, unsigned callerUid);
