#include "processes/ProcessList.h"

#include "common/BackgroundTask.h"
#include "helper/HelperManager.h"
#include "processes/ProcessTexts.h"
#include "removal/AuditLog.h"

#include <QPointer>

#include <csignal>

ProcessTarget ProcessTarget::process(const RunningProcess& process, const QList<RunningProcess>& appProcesses)
{
    if (!process.isRegularApp)
        return {process.name, process, {process}};
    QList<RunningProcess> reached{process};
    for (const RunningProcess& member : appProcesses)
        if (member.identity() != process.identity())
            reached.append(member);
    return {process.appName.isEmpty() ? process.name : process.appName, process, reached};
}

ProcessTarget ProcessTarget::group(const ProcessGroup& group)
{
    return process(group.lead(), group.processes);
}

// One action under way: what it reaches, how the helper repeats a call, and who hears the outcome.
struct ProcessList::Action {
    QString subject; // the Activity entry's
    QList<RunningProcess> reached;
    std::function<void(const RunningProcess&, std::function<void(TaskResult)>)> viaHelper;
    Done done;
};

namespace {

QString subjectOf(const QString& verb, const ProcessTarget& target, const QString& after = {})
{
    const QString which = target.processes.size() > 1 ? QStringLiteral("%1 processes").arg(target.processes.size())
                                                      : QStringLiteral("process %1").arg(target.lead.id);
    return QStringLiteral("%1 %2 (%3)%4").arg(verb, target.name, which, after);
}

} // namespace

ProcessList::ProcessList(HelperManager& helper, AuditLog& audit, QObject* parent)
    : QObject(parent)
    , m_helper(helper)
    , m_audit(audit)
{
}

ProcessList::~ProcessList() = default;

void ProcessList::quit(const ProcessTarget& target, Done done)
{
    auto action = std::make_shared<Action>();
    action->subject = subjectOf(QStringLiteral("Quit"), target);
    action->reached = {target.lead};
    action->viaHelper = [this](const RunningProcess& process, auto answer) {
        m_helper.signalProcess(process.id, SIGTERM, helperTimeout, std::move(answer));
    };
    action->done = std::move(done);
    start(
        action, [target] { return QList{ProcessCalls::quit(target.lead, target.processes, ProcessCalls::quitWait)}; });
}

void ProcessList::forceQuit(const ProcessTarget& target, Done done)
{
    auto action = std::make_shared<Action>();
    action->subject = subjectOf(QStringLiteral("Force quit"), target);
    action->reached = target.processes;
    action->viaHelper = [this](const RunningProcess& process, auto answer) {
        m_helper.signalProcess(process.id, SIGKILL, helperTimeout, std::move(answer));
    };
    action->done = std::move(done);
    start(action, [processes = target.processes] {
        QList<ProcessCallResult> results;
        for (const RunningProcess& process : processes)
            results.append(ProcessCalls::signal(process, SIGKILL));
        return results;
    });
}

void ProcessList::setPriority(const ProcessTarget& target, PriorityBand band, Done done)
{
    auto action = std::make_shared<Action>();
    action->subject = subjectOf(QStringLiteral("Set"), target,
        QStringLiteral(" to %1 priority (nice %2)")
            .arg(PriorityBands::title(band))
            .arg(PriorityBands::niceValue(band)));
    action->reached = target.processes;
    action->viaHelper = [this, band](const RunningProcess& process, auto answer) {
        m_helper.setProcessPriority(process.id, PriorityBands::niceValue(band), helperTimeout, std::move(answer));
    };
    action->done = std::move(done);
    start(action, [processes = target.processes, band] {
        QList<ProcessCallResult> results;
        for (const RunningProcess& process : processes)
            results.append(ProcessCalls::setPriority(process, band));
        return results;
    });
}

void ProcessList::start(std::shared_ptr<Action> action, std::function<QList<ProcessCallResult>()> calls)
{
    const quint64 worker = m_nextWorker++;
    m_workers[worker]
        = runInBackground(this, std::move(calls), [this, worker, action](QList<ProcessCallResult> results) {
              m_workers.erase(worker);
              askHelper(action, std::move(results));
          });
}

void ProcessList::askHelper(std::shared_ptr<Action> action, QList<ProcessCallResult> results)
{
    QList<qsizetype> refused;
    for (qsizetype i = 0; i < results.size(); ++i)
        if (results[i].kind == ProcessCallResult::Kind::needsHelper)
            refused.append(i);
    if (refused.isEmpty())
        return finish(action, results);
    // The helper answers each call once, on this thread; the last answer goes on.
    auto answers = std::make_shared<QList<ProcessCallResult>>(std::move(results));
    auto waiting = std::make_shared<qsizetype>(refused.size());
    for (const qsizetype i : refused) {
        action->viaHelper(
            action->reached[i], [this, guard = QPointer(this), action, answers, waiting, i](TaskResult result) {
                if (!guard)
                    return;
                (*answers)[i]
                    = result.success ? ProcessCallResult::succeeded() : ProcessCallResult::failed(result.message);
                if (--*waiting == 0)
                    checkGone(action, *answers);
            });
    }
}

void ProcessList::checkGone(std::shared_ptr<Action> action, QList<ProcessCallResult> results)
{
    // The helper cannot tell a process that ended meanwhile from one it may not touch; looking again can.
    const quint64 worker = m_nextWorker++;
    m_workers[worker] = runInBackground(
        this,
        [reached = action->reached, results]() mutable {
            for (qsizetype i = 0; i < results.size(); ++i)
                if (results[i].kind == ProcessCallResult::Kind::failure && reached[i].figuresKnown
                    && !reached[i].identity().isRunning())
                    results[i] = ProcessCallResult::succeeded(true);
            return results;
        },
        [this, worker, action](QList<ProcessCallResult> settled) {
            m_workers.erase(worker);
            finish(action, settled);
        });
}

void ProcessList::finish(const std::shared_ptr<Action>& action, const QList<ProcessCallResult>& results)
{
    QStringList failures;
    bool allEnded = true;
    for (const ProcessCallResult& result : results) {
        if (result.kind != ProcessCallResult::Kind::success && !failures.contains(result.failure))
            failures.append(result.failure);
        allEnded = allEnded && result.alreadyEnded;
    }
    const ProcessActionOutcome outcome{failures.isEmpty(), failures.join(u' '), failures.isEmpty() && allEnded};
    m_audit.recordAction(ProcessTexts::feature, action->subject,
        !outcome.success           ? QStringLiteral("Failed: ") + outcome.sentence
            : outcome.alreadyEnded ? QStringLiteral("Had already ended")
                                   : QStringLiteral("Done"));
    action->done(outcome);
}
