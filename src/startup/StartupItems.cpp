#include "startup/StartupItems.h"

#include "common/BackgroundTask.h"
#include "helper/HelperManager.h"
#include "platform/UserIdentity.h"
#include "removal/AuditLog.h"
#include "removal/TrashRecorder.h"
#include "removal/TrashRequests.h"
#include "removal/Trasher.h"
#include "startup/StartupItemScanner.h"
#include "startup/StartupTexts.h"

namespace {

const QString busyText = QStringLiteral("Another change to your startup items is still under way — try again in a "
                                        "moment.");

QString missingItemText(const QString& id)
{
    return QStringLiteral("There is no startup item “%1” — read the list again and pick one from it.").arg(id);
}

struct Moved {
    std::shared_ptr<TrashRecorder> recorder;
    TrashResult result;
};

} // namespace

StartupItems::StartupItems(
    StartupLocations locations, HelperManager& helper, const Trasher& trasher, AuditLog& audit, QObject* parent)
    : QObject(parent)
    , m_locations(std::move(locations))
    , m_helper(helper)
    , m_trasher(trasher)
    , m_audit(audit)
{
}

StartupItems::~StartupItems() = default;

std::optional<StartupItem> StartupItems::item(const QString& id) const
{
    for (const StartupItem& item : m_items)
        if (item.id == id)
            return item;
    return std::nullopt;
}

void StartupItems::scan()
{
    if (m_scan) {
        m_rescan = true;
        return;
    }
    m_scan = runInBackground(
        this, [locations = m_locations] { return StartupItemScanner(locations).scan(); },
        [this](StartupItemScanner::Result result) {
            m_scan.reset();
            for (const StartupItem& item : result.switchedOff)
                m_audit.recordAction(StartupTexts::feature(), item.name, StartupTexts::switchedOffFromTrash());
            m_items = std::move(result.items);
            m_complete = result.complete;
            m_scanned = true;
            Q_EMIT changed();
            if (std::exchange(m_rescan, false))
                return scan();
            Q_EMIT scanned();
        });
    Q_EMIT changed();
}

bool StartupItems::helperAvailable() const
{
    return currentUserID() == 0 || m_helper.state() == HelperManager::State::ready;
}

void StartupItems::finish(const StartupItem& item, const StartupOutcome& outcome, const Done& done)
{
    m_audit.recordAction(StartupTexts::feature(), item.name,
        outcome.success ? outcome.message : QStringLiteral("Failed: ") + outcome.message);
    done(outcome);
    scan();
}

void StartupItems::setEnabled(const QString& id, bool on, Done done)
{
    const std::optional<StartupItem> found = item(id);
    if (!found)
        return done({false, missingItemText(id)});
    if (isBusy())
        return done({false, busyText});
    if (found->control == StartupControl::systemLaunchd)
        return switchSystemUnit(*found, on, std::move(done));
    m_action = runInBackground(
        this, [item = *found, on, locations = m_locations] { return StartupSwitch::setEnabled(item, on, locations); },
        [this, item = *found, done = std::move(done)](StartupOutcome outcome) {
            m_action.reset();
            finish(item, outcome, done);
        });
}

void StartupItems::switchSystemUnit(const StartupItem& item, bool on, Done done)
{
    if (m_helper.state() != HelperManager::State::ready) {
        const StartupOutcome outcome{false, StartupTexts::daemonNeedsHelper(item.name)};
        return finish(item, outcome, done);
    }
    m_waitingForHelper = true;
    m_helper.setUnitEnabled(item.id, on, StartupSwitch::commandLimit, [this, item, on, done](TaskResult result) {
        m_waitingForHelper = false;
        const StartupOutcome outcome = result.success
            ? StartupOutcome{true, on ? StartupTexts::willStartAgain(item.name) : StartupTexts::unitOff(item.name)}
            : StartupOutcome{false, StartupTexts::couldNotTurn(item.name, on, result.message)};
        finish(item, outcome, done);
    });
}

void StartupItems::remove(const QString& id, Done done)
{
    const std::optional<StartupItem> found = item(id);
    if (!found)
        return done({false, missingItemText(id)});
    if (isBusy())
        return done({false, busyText});
    switch (found->removal) {
    case StartupRemoval::ownedByApp: return done({false, StartupTexts::ownedByApp()});
    case StartupRemoval::trashPlistAsRoot:
        if (!helperAvailable())
            return done({false, StartupTexts::removeNeedsHelper(found->name)});
        break;
    case StartupRemoval::trashPlist:
    case StartupRemoval::loginAppEntry: break;
    }
    if (found->control == StartupControl::systemLaunchd && found->enabled
        && m_helper.state() == HelperManager::State::ready) {
        // Switched off first, so that nothing keeps running from a file that is gone; the move goes ahead
        // whatever the switch answered.
        m_waitingForHelper = true;
        m_helper.setUnitEnabled(
            found->id, false, StartupSwitch::commandLimit, [this, item = *found, done = std::move(done)](TaskResult) {
                m_waitingForHelper = false;
                moveToTrash(item, done);
            });
        return;
    }
    moveToTrash(*found, std::move(done));
}

void StartupItems::moveToTrash(const StartupItem& item, Done done)
{
    m_action = runInBackground(
        this,
        [item, locations = m_locations, trasher = &m_trasher, journal = &m_audit.journal()] {
            if (item.control != StartupControl::systemLaunchd && item.enabled)
                StartupSwitch::setEnabled(item, false, locations);
            Moved moved{std::make_shared<TrashRecorder>(*journal, StartupTexts::feature()), {}};
            moved.result = trasher->moveToTrash(TrashRequests::measured({*item.revealURL}), moved.recorder.get());
            return moved;
        },
        [this, item, done = std::move(done)](Moved moved) {
            m_action.reset();
            m_audit.record(*moved.recorder);
            StartupOutcome outcome;
            if (!moved.result.failed.isEmpty())
                outcome = {false, StartupTexts::couldNotMove(item.name, moved.result.failed.first().reason)};
            else if (item.removal == StartupRemoval::loginAppEntry)
                outcome = {true, StartupTexts::noLongerOpens(item.name)};
            else
                outcome = {true, StartupTexts::removed(item.name)};
            done(outcome);
            scan();
        });
}
