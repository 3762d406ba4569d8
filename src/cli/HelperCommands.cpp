#include "cli/Commands.h"
#include "cli/WaitFor.h"

#include "common/StoragePaths.h"
#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"
#include "helper/HelperRefresh.h"
#include "helper/HelperStatus.h"
#include "helper/HelperTexts.h"
#include "helper/MailOptimizer.h"
#include "helper/MaintenanceRunner.h"
#include "helper/MaintenanceTexts.h"
#include "platform/SystemdHelperService.h"
#include "removal/AuditLog.h"

#include <QDir>

using namespace std::chrono_literals;

int runHelperCommand(CommandContext& context)
{
    const Operands given = operands(context.arguments);
    const QString action = given.names.value(0);
    const QStringList actions{QStringLiteral("status"), QStringLiteral("install"), QStringLiteral("uninstall")};
    if (given.unknownOption || given.names.size() != 1 || !actions.contains(action)) {
        context.err << "velloru helper: say “status”, “install” or “uninstall”.\n";
        return 2;
    }
    SystemdHelperService service;
    HelperManager helper(HelperProtocol::socketPath());
    HelperRefresh refresh(helper, service, HelperProtocol::version, HelperRefresh::Timing());
    if (action == QLatin1String("uninstall")) {
        if (const auto error = service.unregisterService()) {
            context.err << QStringLiteral("The helper couldn’t be removed — %1\n").arg(error->description);
            return 1;
        }
        context.out << QStringLiteral("The Maintenance Helper is removed.\n");
        return 0;
    }
    if (action == QLatin1String("install")) {
        context.err << QStringLiteral("Installing the Maintenance Helper (you’ll approve it as an administrator)…\n");
        context.err.flush();
        helper.install(service);
        // An older helper still running is replaced now rather than at the window's next start.
        waitFor<HelperManager::SyncState>([&](auto done) { refresh.checkAndRefresh(done); });
    } else {
        helper.refreshState(service);
        if (helper.state() == HelperManager::State::ready)
            waitFor<HelperManager::SyncState>([&](auto done) { refresh.check(done); });
    }
    context.out << HelperTexts::heading() << ": " << helperStatusText(helper) << '\n';
    return helper.state() == HelperManager::State::ready && helper.syncState() == HelperManager::SyncState::inSync ? 0
                                                                                                                   : 1;
}

int runMaintenanceCommand(CommandContext& context)
{
    const Operands given = operands(context.arguments);
    if (given.unknownOption) {
        context.err << QStringLiteral("velloru maintenance: there is no option “%1” — name a task, or nothing to see "
                                      "them.\n")
                           .arg(*given.unknownOption);
        return 2;
    }
    if (given.names.isEmpty()) {
        for (const MaintenanceTask& task : Maintenance::tasks())
            context.out
                << QStringLiteral("%1  %2 — %3\n").arg(task.rawValue.leftJustified(18), task.title, task.shortLine);
        context.out << QStringLiteral("%1  %2\n")
                           .arg(QStringLiteral("mail").leftJustified(18),
                               MaintenanceTexts::mailTitle()
                                   + QStringLiteral(" — compacts and reindexes its message index (no helper needed)."));
        return 0;
    }
    if (given.names == QStringList{QStringLiteral("mail")}) {
        AuditLog log(StoragePaths::dataFolder());
        const TaskResult result = MailOptimizer::optimize(QDir::homePath());
        log.recordAction(Maintenance::feature, MaintenanceTexts::mailTitle(),
            result.success ? result.message : QStringLiteral("Failed: ") + result.message);
        context.out << (result.success ? QStringLiteral("✓ ") : QStringLiteral("✗ ")) << result.message << '\n';
        return result.success ? 0 : 1;
    }
    const auto task = Maintenance::task(given.names.first());
    if (!task || given.names.size() != 1) {
        context.err << QStringLiteral("velloru maintenance: there is no task “%1” — run “velloru maintenance” to see "
                                      "them.\n")
                           .arg(given.names.join(u' '));
        return 2;
    }
    SystemdHelperService service;
    HelperManager helper(HelperProtocol::socketPath());
    helper.refreshState(service);
    AuditLog log(StoragePaths::dataFolder());
    context.err << QStringLiteral("%1…\n").arg(task->title);
    context.err.flush();
    const auto showStep = [&context](TaskStep step) {
        context.err << QStringLiteral("  %1/%2 %3\n").arg(step.done + 1).arg(step.total).arg(step.step);
        context.err.flush();
    };
    const MaintenanceOutcome outcome
        = waitFor<MaintenanceOutcome>([&](auto done) { runMaintenanceTask(helper, log, *task, showStep, done); });
    context.out << (outcome.success ? QStringLiteral("✓ ") : QStringLiteral("✗ ")) << task->title << ": "
                << outcome.line << '\n';
    return outcome.success ? 0 : 1;
}
