#include "duplicates/DuplicateVaultController.h"

#include "common/BackgroundTask.h"
#include "common/Log.h"
#include "duplicates/VaultFolders.h"
#include "duplicates/VaultMover.h"
#include "duplicates/VaultRestorer.h"
#include "duplicates/VaultTexts.h"
#include "duplicates/VaultVerifier.h"
#include "platform/FileAccess.h"
#include "removal/AuditLog.h"
#include "removal/TrashRecorder.h"
#include "removal/TrashRequests.h"
#include "removal/Trasher.h"

#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <cerrno>

namespace {

constexpr int tickerInterval = 100; // milliseconds between progress samples

QList<AuditLog::FailedItem> failedItems(const QList<VaultFailure>& failures)
{
    QList<AuditLog::FailedItem> items;
    for (const VaultFailure& failure : failures)
        items.append({failure.path, failure.reason});
    return items;
}

} // namespace

struct DuplicateVaultController::EmptyOutcome {
    TrashResult trash;
    QList<VaultEntry> entries;
    std::optional<QString> saveProblem;
};

DuplicateVaultController::DuplicateVaultController(
    QString dataFolder, AuditLog& audit, const Trasher& trasher, QObject* parent)
    : QObject(parent)
    , m_store(std::move(dataFolder))
    , m_homeVault(m_store.homeVault())
    , m_audit(audit)
    , m_trasher(trasher)
{
    m_ticker.setInterval(tickerInterval);
    connect(&m_ticker, &QTimer::timeout, this, &DuplicateVaultController::sampleProgress);
}

DuplicateVaultController::~DuplicateVaultController()
{
    m_stop.request_stop();
}

void DuplicateVaultController::load()
{
    setEntries(m_store.load());
}

QList<DuplicateVaultController::Batch> DuplicateVaultController::batches() const
{
    QList<Batch> batches;
    QHash<QUuid, qsizetype> index;
    for (const VaultEntry& entry : m_entries) {
        auto found = index.constFind(entry.batchID);
        if (found == index.cend()) {
            found = index.insert(entry.batchID, batches.size());
            batches.append({entry.batchID, entry.movedAt, {}});
        }
        batches[*found].entries.append(entry);
    }
    std::stable_sort(
        batches.begin(), batches.end(), [](const Batch& a, const Batch& b) { return a.movedAt > b.movedAt; });
    return batches;
}

std::int64_t DuplicateVaultController::bytesHeld() const
{
    std::int64_t total = 0;
    for (const VaultEntry& entry : m_entries)
        total += entry.reclaimable;
    return total;
}

std::optional<QString> DuplicateVaultController::verificationSummary() const
{
    if (m_verifications.isEmpty())
        return std::nullopt;
    for (const VaultVerification& verification : m_verifications) {
        if (verification.result == VaultVerification::Result::keeperMissing
            || verification.result == VaultVerification::Result::keeperChanged)
            return VaultTexts::noIntactCopy();
    }
    const bool allIntact = std::all_of(m_verifications.cbegin(), m_verifications.cend(),
        [](const VaultVerification& v) { return v.result == VaultVerification::Result::keeperIntact; });
    if (allIntact && m_verifications.size() == m_entries.size())
        return VaultTexts::allIntact();
    return std::nullopt;
}

bool DuplicateVaultController::moveTicked(const QList<DuplicateGroup>& groups)
{
    if (m_task)
        return false;
    begin(VaultTexts::moving());
    m_task = runInBackground(
        this, [groups, store = m_store, box = m_box] { return moveTickedCopies(groups, store, *box); },
        [this](VaultMoveOutcome outcome) {
            QList<AuditLog::MovedItem> moved;
            for (const VaultEntry& entry : outcome.result.moved)
                moved.append({entry.originalPath, entry.size, {}});
            m_audit.recordMoves(VaultTexts::feature(), moved, AuditOutcome::movedToVault);
            m_audit.recordFailures(VaultTexts::feature(), failedItems(outcome.result.failed));

            QStringList notice;
            if (!outcome.result.moved.isEmpty())
                notice.append(VaultTexts::movedNotice(outcome.result.moved.size(), outcome.result.bytesHeld));
            if (outcome.result.abortedBecause)
                notice.append(*outcome.result.abortedBecause);
            if (!outcome.result.failed.isEmpty())
                notice.append(VaultTexts::notMovedNotice(outcome.result.failed.size()));
            m_notice = notice.join(QLatin1Char(' '));
            m_lastMove = std::move(outcome.result);
            end(Operation::move, std::move(outcome.entries), std::move(outcome.saveProblem));
        });
    Q_EMIT changed(); // isWorking() is true from here
    return true;
}

bool DuplicateVaultController::verifyAll()
{
    if (m_task)
        return false;
    begin(VaultTexts::verifying());
    m_task = runInBackground(
        this,
        [entries = m_entries, box = m_box, stop = m_stop.get_token()] { return verifyEntries(entries, *box, stop); },
        [this](QHash<QUuid, VaultVerification> results) {
            m_verifications = std::move(results);
            const qsizetype problems = std::count_if(m_verifications.cbegin(), m_verifications.cend(),
                [](const VaultVerification& v) { return v.result != VaultVerification::Result::keeperIntact; });
            const QString subject
                = QStringLiteral("Checked %1 in the vault").arg(VaultTexts::copies(m_verifications.size()));
            m_audit.recordAction(VaultTexts::feature(), subject,
                problems == 0 ? QStringLiteral("Every kept copy is intact")
                              : QStringLiteral("Failed: %1 not confirmed").arg(VaultTexts::copies(problems)));
            m_notice = verificationSummary();
            end(Operation::verify, m_entries, std::nullopt);
        });
    Q_EMIT changed(); // isWorking() is true from here
    return true;
}

bool DuplicateVaultController::restore(const QList<QUuid>& ids)
{
    if (m_task || ids.isEmpty())
        return false;
    begin(VaultTexts::restoring());
    m_task = runInBackground(
        this,
        [ids = QSet<QUuid>(ids.cbegin(), ids.cend()), store = m_store, box = m_box] {
            return restoreEntries(ids, store, *box);
        },
        [this](VaultRestoreOutcome outcome) {
            QList<AuditLog::MovedItem> putBack;
            for (const VaultRestoreOutcome::PutBack& item : outcome.putBack)
                putBack.append({item.path, item.size, {}});
            m_audit.recordMoves(VaultTexts::feature(), putBack, AuditOutcome::restoredFromVault);
            m_audit.recordFailures(VaultTexts::feature(), failedItems(outcome.result.failed));
            m_notice = restoreNotice(outcome.result);
            m_lastRestore = std::move(outcome.result);
            end(Operation::restore, std::move(outcome.entries), std::move(outcome.saveProblem));
        });
    Q_EMIT changed(); // isWorking() is true from here
    return true;
}

bool DuplicateVaultController::restoreAll()
{
    QList<QUuid> ids;
    for (const VaultEntry& entry : m_entries)
        ids.append(entry.id);
    return restore(ids);
}

bool DuplicateVaultController::emptyToTrash()
{
    if (m_task)
        return false;
    begin(VaultTexts::emptying());
    const auto recorder = std::make_shared<TrashRecorder>(m_audit.journal(), VaultTexts::feature());
    m_task = runInBackground(
        this,
        [store = m_store, recorder, &trasher = m_trasher] {
            EmptyOutcome outcome;
            const std::optional<FileLock> lock = store.lock();
            outcome.entries = store.read();
            if (!lock) {
                outcome.trash.failed.append({store.homeVault(),
                    QStringLiteral("Couldn’t lock the vault’s list — %1").arg(systemErrorSentence(errno))});
                return outcome;
            }
            // The home vault and the vault folder of every other volume that holds a copy, each as one item.
            QStringList folders;
            for (const VaultEntry& entry : outcome.entries) {
                const QString folder = VaultFolders::folderHolding(entry.vaultPath, store.homeVault());
                if (!folder.isEmpty() && !folders.contains(folder))
                    folders.append(folder);
            }
            if (!folders.contains(store.homeVault()))
                folders.prepend(store.homeVault());
            folders.removeIf([](const QString& folder) { return !QFileInfo(folder).isDir(); });
            outcome.trash = trasher.moveToTrash(TrashRequests::measured(folders), recorder.get());
            QSet<QString> gone;
            for (const TrashItem& item : outcome.trash.succeeded)
                gone.insert(item.path);
            const qsizetype before = outcome.entries.size();
            outcome.entries.removeIf([&gone, &store](const VaultEntry& entry) {
                return gone.contains(VaultFolders::folderHolding(entry.vaultPath, store.homeVault()));
            });
            if (outcome.entries.size() != before)
                outcome.saveProblem = store.write(outcome.entries);
            return outcome;
        },
        [this, recorder](EmptyOutcome outcome) {
            m_audit.record(*recorder);
            if (outcome.trash.failed.isEmpty())
                m_notice = VaultTexts::emptyExplanation();
            else
                m_notice = VaultTexts::emptyFailed(outcome.trash.failed.first().reason);
            m_lastEmpty = std::move(outcome.trash);
            end(Operation::empty, std::move(outcome.entries), std::move(outcome.saveProblem));
        });
    Q_EMIT changed(); // isWorking() is true from here
    return true;
}

void DuplicateVaultController::cancel()
{
    m_stop.request_stop();
}

QString DuplicateVaultController::restoreNotice(const VaultRestoreResult& result)
{
    QStringList parts;
    if (result.restored > 0)
        parts.append(VaultTexts::restoredNotice(result.restored));
    if (result.renamed.size() == 1)
        parts.append(VaultTexts::wentBackRenamed(
            result.renamed.first().originalPath, QFileInfo(result.renamed.first().restoredPath).fileName()));
    else if (result.renamed.size() > 1)
        parts.append(VaultTexts::severalWentBackRenamed(result.renamed.size()));
    if (!result.failed.isEmpty())
        parts.append(VaultTexts::notRestoredNotice(result.failed.size()));
    return parts.join(QLatin1Char(' '));
}

void DuplicateVaultController::begin(const QString& label)
{
    m_stop = std::stop_source();
    m_box->reset(0);
    m_workLabel = label;
    m_verifyProgress = 0;
    m_notice.reset();
    m_ticker.start();
}

void DuplicateVaultController::end(Operation operation, QList<VaultEntry> entries, std::optional<QString> saveProblem)
{
    m_ticker.stop();
    m_task.reset();
    m_workLabel.clear();
    m_verifyProgress = 1;
    m_saveProblem = std::move(saveProblem);
    if (m_saveProblem)
        m_notice = m_notice.value_or(QString()) + QLatin1Char(' ') + VaultTexts::listNotSaved(*m_saveProblem);
    setEntries(std::move(entries));
    Q_EMIT finished(operation);
}

void DuplicateVaultController::setEntries(QList<VaultEntry> entries)
{
    m_entries = std::move(entries);
    QSet<QUuid> present;
    for (const VaultEntry& entry : m_entries)
        present.insert(entry.id);
    m_verifications.removeIf([&present](const auto& item) { return !present.contains(item.key()); });
    Q_EMIT changed();
}

void DuplicateVaultController::sampleProgress()
{
    m_verifyProgress = m_box->fraction();
    Q_EMIT progressChanged();
}
