#include "app/AppState.h"

#include "app/UserDefaults.h"
#include "common/BackgroundTask.h"
#include "common/StoragePaths.h"
#include "privacy/KnownApps.h"

#include <QDir>
#include <QSettings>

namespace {

// Runs off the main thread. Extensions and login items are counted once their scanners exist.
SidebarCounts::Counts countSections(const QString& home)
{
    SidebarCounts::Counts counts;
    counts.insert(Destination::browsers, countPresent(knownBrowsers(), home));
    counts.insert(Destination::chats, countPresent(knownChatApps(), home));
    return counts;
}

} // namespace

AppState::AppState()
    : m_audit(StoragePaths::dataFolder())
{
    const QSettings defaults;
    const QString startPage = defaults.value(DefaultsKey::debugStartPage).toString();
    m_selection = Destinations::parse(startPage).value_or(Destination::dashboard);
    m_trashWatcher.start();
}

AppState::~AppState() = default;

void AppState::select(Destination destination)
{
    if (destination == m_selection)
        return;
    m_selection = destination;
    Q_EMIT selectionChanged(destination);
}

void AppState::navigate(Destination destination)
{
    ++m_navigationTick;
    Q_EMIT navigationTickChanged(m_navigationTick);
    select(destination);
}

void AppState::refreshCounts()
{
    if (m_countsTask)
        return;
    m_countsTask = runInBackground(
        this, [home = QDir::homePath()] { return countSections(home); },
        [this](SidebarCounts::Counts counts) {
            m_counts.setCounts(std::move(counts));
            m_countsTask.reset();
            Q_EMIT countsRefreshed();
        });
}
