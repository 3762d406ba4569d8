#pragma once

#include "processes/PriorityBand.h"
#include "processes/ProcessCalls.h"
#include "processes/ProcessGroup.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <thread>

class AuditLog;
class HelperManager;

// What an action is taken on: one process, or an app with all of its processes.
struct ProcessTarget {
    QString name;                    // what the confirmation, the row and Activity call it
    RunningProcess lead;             // the process itself, or the app's own process
    QList<RunningProcess> processes; // every process the action reaches, the lead included

    static ProcessTarget process(const RunningProcess& process, const QList<RunningProcess>& appProcesses = {});
    static ProcessTarget group(const ProcessGroup& group);
};

// How an action ended, for the row that asked.
struct ProcessActionOutcome {
    bool success = false;
    QString sentence;          // why it failed; empty on success
    bool alreadyEnded = false; // every process it was meant for had ended before it was reached
};

// Quit, force quit and priority changes as the window and the commands take them: the kernel is asked on a
// thread of their own, a refusal for lack of permission goes to the helper, and every action is written to
// Activity under "Memory Usage". Main thread only.
class ProcessList : public QObject {
    Q_OBJECT

public:
    using Done = std::function<void(ProcessActionOutcome)>;
    // How long the helper may take to signal or re-prioritise a process.
    static constexpr std::chrono::seconds helperTimeout{10};

    ProcessList(HelperManager& helper, AuditLog& audit, QObject* parent = nullptr);
    ~ProcessList() override;

    // An app's own process quits the app (its processes are asked to end and given a few seconds); any other
    // process is sent signal 15.
    void quit(const ProcessTarget& target, Done done);
    // Signal 9 to every process of the target.
    void forceQuit(const ProcessTarget& target, Done done);
    void setPriority(const ProcessTarget& target, PriorityBand band, Done done);

private:
    struct Action;
    void start(std::shared_ptr<Action> action, std::function<QList<ProcessCallResult>()> calls);
    void askHelper(std::shared_ptr<Action> action, QList<ProcessCallResult> results);
    void checkGone(std::shared_ptr<Action> action, QList<ProcessCallResult> results);
    void finish(const std::shared_ptr<Action>& action, const QList<ProcessCallResult>& results);

    HelperManager& m_helper;
    AuditLog& m_audit;
    quint64 m_nextWorker = 0;
    std::map<quint64, std::unique_ptr<std::jthread>> m_workers; // several rows may act at once
};
