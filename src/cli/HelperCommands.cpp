#include "cli/Commands.h"

#include "common/StoragePaths.h"
#include "helper/HelperManager.h"
#include "helper/HelperProtocol.h"
#include "helper/HelperTexts.h"
#include "helper/MailOptimizer.h"
#include "helper/MaintenanceRunner.h"
#include "platform/SystemdHelperService.h"
#include "removal/AuditLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>

using namespace std::chrono_literals;

namespace {

// Commands finish their helper calls before returning; the answer arrives through the event loop.
template <typename Answer, typename Start> Answer waitFor(Start start)
{
    std::optional<Answer> answer;
    QEventLoop loop;
    start([&](Answer value) {
        answer = std::move(value);
        loop.quit();
    });
    if (!answer)
        loop.exec();
    return std::move(*answer);
}

QString helperProgram()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/velloru-helper");
}

QString statusLine(HelperManager& helper)
{
    switch (helper.state()) {
    case HelperManager::State::notInstalled: return HelperTexts::notInstalledStatus();
    case HelperManager::State::needsApproval: return HelperTexts::needsApprovalStatus();
    case HelperManager::State::failed:
        return HelperTexts::installFailedStatus() + QStringLiteral(" — ") + helper.failureMessage();
    case HelperManager::State::ready: break;
    }
    const auto version = waitFor<std::optional<QString>>([&](auto done) { helper.installedHelperVersion(3s, done); });
    if (!version)
        return HelperTexts::unreachableStatus();
    if (*version != HelperProtocol::version)
        return HelperTexts::staleStatus()
            + QStringLiteral(" Out of step: the helper is from Velloru %1.").arg(*version);
    return HelperTexts::readyStatus();
}

} // namespace

int runHelperCommand(CommandContext& context)
{
    const QString action = context.arguments.value(0);
    if (context.arguments.size() != 1 || (action != QLatin1String("status") && action != QLatin1String("install"))) {
        context.err << "velloru helper: say “status” or “install”.\n";
        return 2;
    }
    SystemdHelperService service(helperProgram());
    HelperManager helper(HelperProtocol::socketPath());
    if (action == QLatin1String("install"))
        helper.install(service);
    else
        helper.refreshState(service);
    context.out << HelperTexts::heading() << ": " << statusLine(helper) << '\n';
    return helper.state() == HelperManager::State::ready ? 0 : 1;
}

int runMaintenanceCommand(CommandContext& context)
{
    if (context.arguments.isEmpty()) {
        for (const MaintenanceTask& task : Maintenance::tasks())
            context.out
                << QStringLiteral("%1  %2 — %3\n").arg(task.rawValue.leftJustified(18), task.title, task.shortLine);
        context.out << QStringLiteral("%1  %2\n")
                           .arg(QStringLiteral("mail").leftJustified(18),
                               QStringLiteral("Optimize Thunderbird — compacts and reindexes its message index (no "
                                              "helper needed)."));
        return 0;
    }
    if (context.arguments == QStringList{QStringLiteral("mail")}) {
        AuditLog log(StoragePaths::dataFolder());
        const TaskResult result = MailOptimizer::optimize(QDir::homePath());
        log.recordAction(Maintenance::feature, QStringLiteral("Optimize Thunderbird"),
            result.success ? result.message : QStringLiteral("Failed: ") + result.message);
        context.out << (result.success ? QStringLiteral("✓ ") : QStringLiteral("✗ ")) << result.message << '\n';
        return result.success ? 0 : 1;
    }
    const auto task = Maintenance::task(context.arguments.first());
    if (!task || context.arguments.size() != 1) {
        context.err << QStringLiteral("velloru maintenance: there is no task “%1” — run “velloru maintenance” to see "
                                      "them.\n")
                           .arg(context.arguments.join(u' '));
        return 2;
    }
    SystemdHelperService service(helperProgram());
    HelperManager helper(HelperProtocol::socketPath());
    helper.refreshState(service);
    AuditLog log(StoragePaths::dataFolder());
    context.err << QStringLiteral("%1…\n").arg(task->title);
    context.err.flush();
    const MaintenanceOutcome outcome
        = waitFor<MaintenanceOutcome>([&](auto done) { runMaintenanceTask(helper, log, *task, done); });
    context.out << (outcome.success ? QStringLiteral("✓ ") : QStringLiteral("✗ ")) << task->title << ": "
                << outcome.line << '\n';
    return outcome.success ? 0 : 1;
}
