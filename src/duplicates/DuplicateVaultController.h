#pragma once

#include "duplicates/DuplicateGroup.h"
#include "duplicates/VaultResults.h"
#include "duplicates/VaultStore.h"
#include "removal/TrashResult.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <stop_token>
#include <thread>

class AuditLog;
class Trasher;

// The duplicates vault: the copies moved out of duplicate sets, held in a folder that mirrors where each
// came from, until they are checked against the kept copy, put back, or sent to the Trash together. Lives
// on the main thread; the file work of each operation runs on a worker thread, one operation at a time,
// and every operation saves the list and records what it did in the activity log.
class DuplicateVaultController : public QObject {
    Q_OBJECT

public:
    using ProgressBox = VaultProgress;
    enum class Operation { move, verify, restore, empty };

    // Copies moved by one operation, shown together.
    struct Batch {
        QUuid id;
        double movedAt = 0;
        QList<VaultEntry> entries;
    };

    DuplicateVaultController(QString dataFolder, AuditLog& audit, const Trasher& trasher, QObject* parent = nullptr);
    ~DuplicateVaultController() override;

    // The start-up routine: reads the list, settling an operation an earlier run left unfinished.
    void load();

    const QList<VaultEntry>& entries() const { return m_entries; }
    const QHash<QUuid, VaultVerification>& verifications() const { return m_verifications; }
    bool isWorking() const { return m_task != nullptr; }
    const QString& workLabel() const { return m_workLabel; }
    // How far the running operation is, 0 to 1 (named for verifying, the one that takes longest).
    double verifyProgress() const { return m_verifyProgress; }
    const std::optional<QString>& notice() const { return m_notice; }

    // Newest first.
    QList<Batch> batches() const;
    std::int64_t bytesHeld() const;
    const QString& homeVault() const { return m_homeVault; }
    // The sentence about the last verification as a whole, or nothing before one.
    std::optional<QString> verificationSummary() const;

    // Each starts its operation unless one runs (false then); `finished` reports the end.
    bool moveTicked(const QList<DuplicateGroup>& groups);
    bool verifyAll();
    bool restore(const QList<QUuid>& ids);
    bool restoreAll();
    bool emptyToTrash();
    // Stops a verification at the next entry; the entries not reached keep no result.
    void cancel();

    const std::optional<VaultMoveResult>& lastMove() const { return m_lastMove; }
    const std::optional<VaultRestoreResult>& lastRestore() const { return m_lastRestore; }
    const std::optional<TrashResult>& lastEmpty() const { return m_lastEmpty; }
    // Why the list could not be saved by the last operation, if it could not.
    const std::optional<QString>& saveProblem() const { return m_saveProblem; }

    static QString restoreNotice(const VaultRestoreResult& result);

Q_SIGNALS:
    void changed();
    void progressChanged();
    void finished(DuplicateVaultController::Operation operation);

private:
    struct EmptyOutcome;
    // Readies the state for an operation; `changed` follows once its task runs.
    void begin(const QString& label);
    void end(Operation operation, QList<VaultEntry> entries, std::optional<QString> saveProblem);
    void setEntries(QList<VaultEntry> entries);
    void sampleProgress();

    VaultStore m_store;
    QString m_homeVault;
    AuditLog& m_audit;
    const Trasher& m_trasher;
    QList<VaultEntry> m_entries;
    QHash<QUuid, VaultVerification> m_verifications;
    QString m_workLabel;
    double m_verifyProgress = 0;
    std::optional<QString> m_notice;
    std::optional<VaultMoveResult> m_lastMove;
    std::optional<VaultRestoreResult> m_lastRestore;
    std::optional<TrashResult> m_lastEmpty;
    std::optional<QString> m_saveProblem;
    QTimer m_ticker;
    std::shared_ptr<ProgressBox> m_box = std::make_shared<ProgressBox>();
    std::stop_source m_stop;
    std::unique_ptr<std::jthread> m_task; // last, so it is joined before the members it uses go
};
