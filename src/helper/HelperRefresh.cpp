#include "helper/HelperRefresh.h"

#include "common/BackgroundTask.h"
#include "common/Log.h"

#include <QTimer>

namespace {

QString describe(const HelperService::Error& error)
{
    return QStringLiteral("domain=%1 code=%2 %3").arg(error.domain).arg(error.code).arg(error.description);
}

} // namespace

HelperRefresh::HelperRefresh(
    HelperManager& helper, HelperService& service, QString bundledVersion, Timing timing, QObject* parent)
    : QObject(parent)
    , m_helper(helper)
    , m_service(service)
    , m_bundledVersion(std::move(bundledVersion))
    , m_timing(timing)
{
}

void HelperRefresh::check(std::function<void(HelperManager::SyncState)> done)
{
    m_helper.installedHelperVersion(m_timing.answer, [this, done = std::move(done)](std::optional<QString> installed) {
        const auto state = installed == m_bundledVersion ? HelperManager::SyncState::inSync
            : installed                                  ? HelperManager::SyncState::stale
                                                         : HelperManager::SyncState::unreachable;
        m_helper.setSyncState(state, installed);
        done(state);
    });
}

void HelperRefresh::checkAndRefresh(std::function<void(HelperManager::SyncState)> done)
{
    if (done)
        m_waiting.append(std::move(done));
    if (m_checking)
        return;
    // Only an installed helper is checked: one that isn't there is installed, not refreshed.
    if (m_helper.state() != HelperManager::State::ready)
        return end(HelperManager::SyncState::unreachable);
    m_checking = true;
    check([this](HelperManager::SyncState state) { checked(state); });
}

void HelperRefresh::checked(HelperManager::SyncState state)
{
    if (state == HelperManager::SyncState::inSync)
        return end(state);
    helperLog(QStringLiteral("installed %1 ≠ bundled %2 — refreshing")
                  .arg(m_helper.lastKnownInstalledVersion().value_or(QStringLiteral("unreachable")), m_bundledVersion));
    m_helper.setRefreshing(true);
    m_staleDaemonStopped = false;
    onServiceThread([](HelperService& service) { return service.registerService(); },
        [this](std::optional<HelperService::Error> error) { rebindAnswered(error); });
}

void HelperRefresh::rebindAnswered(const std::optional<HelperService::Error>& error)
{
    if (error) {
        helperLog(QStringLiteral("rebind register() failed ") + describe(*error));
        QTimer::singleShot(m_timing.afterFailedRebind, this, [this] {
            m_helper.shutdownHelper(
                m_timing.answer, [this](HelperManager::ShutdownOutcome outcome) { shutdownAnswered(outcome); });
        });
        return;
    }
    QTimer::singleShot(m_timing.afterRebind, this, &HelperRefresh::afterRebind);
}

void HelperRefresh::afterRebind()
{
    m_helper.dropConnection();
    check([this](HelperManager::SyncState state) {
        if (state == HelperManager::SyncState::inSync) {
            helperLog(QStringLiteral("rebound in place to %1").arg(m_bundledVersion));
            return end(state);
        }
        m_helper.shutdownHelper(
            m_timing.answer, [this](HelperManager::ShutdownOutcome outcome) { shutdownAnswered(outcome); });
    });
}

void HelperRefresh::shutdownAnswered(HelperManager::ShutdownOutcome outcome)
{
    if (outcome == HelperManager::ShutdownOutcome::refused) {
        // A job is never cut short by an update; the next check tries again.
        helperLog(QStringLiteral("stale daemon is busy — leaving it until the job finishes"));
        return end(HelperManager::SyncState::stale);
    }
    m_staleDaemonStopped = outcome == HelperManager::ShutdownOutcome::accepted;
    m_helper.dropConnection();
    onServiceThread([](HelperService& service) { return service.unregisterService(); },
        [this](std::optional<HelperService::Error>) { unregistered(); });
}

void HelperRefresh::unregistered()
{
    onServiceThread([](HelperService& service) { return service.registerService(); },
        [this](std::optional<HelperService::Error> error) { registerAnswered(1, error); });
}

void HelperRefresh::registerAnswered(int attempt, const std::optional<HelperService::Error>& error)
{
    if (error) {
        helperLog(QStringLiteral("refresh register() attempt %1 failed ").arg(attempt) + describe(*error));
        if (attempt < m_timing.registerAttempts)
            return onServiceThread([](HelperService& service) { return service.registerService(); },
                [this, attempt](std::optional<HelperService::Error> next) { registerAnswered(attempt + 1, next); });
    }
    const HelperService::Status status = m_service.status();
    if (status != HelperService::Status::enabled) {
        helperLog(QStringLiteral("refresh left the service %1").arg(statusName(status)));
        m_helper.refreshState(m_service);
        return end(HelperManager::SyncState::unreachable);
    }
    registered();
}

void HelperRefresh::registered()
{
    m_helper.refreshState(m_service);
    m_helper.dropConnection();
    check([this](HelperManager::SyncState state) {
        if (state != HelperManager::SyncState::inSync)
            helperLog(QStringLiteral("refresh did not converge (bundled %1)").arg(m_bundledVersion));
        else if (m_staleDaemonStopped)
            helperLog(QStringLiteral("stale daemon replaced, now running %1").arg(m_bundledVersion));
        else
            helperLog(QStringLiteral("refreshed to %1").arg(m_bundledVersion));
        end(state);
    });
}

void HelperRefresh::end(HelperManager::SyncState state)
{
    m_checking = false;
    if (m_helper.isRefreshing())
        m_helper.setRefreshing(false);
    const auto waiting = std::exchange(m_waiting, {});
    for (const auto& done : waiting)
        done(state);
}

void HelperRefresh::onServiceThread(std::function<std::optional<HelperService::Error>(HelperService&)> work,
    std::function<void(std::optional<HelperService::Error>)> then)
{
    m_serviceCall = runInBackground(
        this, [work = std::move(work), &service = m_service] { return work(service); }, std::move(then));
}
