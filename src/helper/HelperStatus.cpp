#include "helper/HelperStatus.h"

#include "helper/HelperManager.h"
#include "helper/HelperTexts.h"

QString helperStatusText(const HelperManager& helper)
{
    if (helper.isRefreshing())
        return HelperTexts::updatingStatus();
    switch (helper.state()) {
    case HelperManager::State::notInstalled: return HelperTexts::notInstalledStatus();
    case HelperManager::State::needsApproval: return HelperTexts::needsApprovalStatus();
    case HelperManager::State::failed:
        return HelperTexts::installFailedStatus() + QStringLiteral(" — ") + helper.failureMessage();
    case HelperManager::State::ready: break;
    }
    switch (helper.syncState().value_or(HelperManager::SyncState::inSync)) {
    case HelperManager::SyncState::unreachable: return HelperTexts::unreachableStatus();
    case HelperManager::SyncState::stale:
        return HelperTexts::staleStatus() + QLatin1Char(' ')
            + HelperTexts::outOfStep(helper.lastKnownInstalledVersion().value_or(QStringLiteral("another version")));
    case HelperManager::SyncState::inSync: break;
    }
    return HelperTexts::readyStatus();
}
