#pragma once

#include "helper/HelperService.h"
#include "helper/Once.h"
#include "platform/ProcessControl.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <variant>

class HelperConnection;
class QTimer;

// The result of a maintenance task (and of the other jobs) as the helper reports it.
struct TaskResult {
    bool success = false;
    QString message;
    qint64 freedBytes = 0;
};

// Progress of a job made of steps, such as a maintenance task with several commands.
struct TaskStep {
    QString step;
    int done = 0;
    int total = 0;
};

// Progress of a job that writes a whole drive.
struct FlashProgress {
    QString phase;
    qint64 bytesDone = 0;
    qint64 total = 0;
};

// The app's side of the privileged helper: every call is asynchronous, has a time limit (jobs that write a
// drive have none), and finishes exactly once, with the helper's answer or with a sentence saying why there
// is none. Main thread only.
class HelperManager : public QObject {
    Q_OBJECT

public:
    enum class State { failed, notInstalled, needsApproval, ready };
    // How the running helper compares with the one that came with this Velloru.
    enum class SyncState { inSync, stale, unreachable };
    enum class ShutdownOutcome { accepted, refused, noAnswer };
    // A call ends with the helper's reply or with the sentence the caller shows.
    using Reply = std::variant<QJsonObject, QString>;
    using Timeout = std::optional<std::chrono::milliseconds>; // nothing: no time limit

    // The sentences a call ends with when the helper cannot answer it.
    struct CallTexts {
        QString notSetUp;
        QString unavailable;
        QString noAnswer;
        QString contactLost; // followed by the connection's own description
    };
    // Which connection a call travels on: the shared one, one of its own (jobs that report progress), or the
    // one kept for jobs that write a drive.
    enum class Channel { shared, own, drive };

    explicit HelperManager(QString socketPath, QObject* parent = nullptr);
    ~HelperManager() override;

    State state() const { return m_state.load(); }
    void setState(State state);
    // Why installing failed, while the state is `failed`.
    const QString& failureMessage() const { return m_failureMessage; }
    // Reads the state from the service manager: enabled is ready, installed but off needs approval.
    void refreshState(HelperService& service);
    // Installs the helper (the user approves once), then reads the state again. Blocks while the
    // administrator decides; the window runs `service.registerService()` off the main thread and hands its
    // answer to `completeInstall`.
    void install(HelperService& service);
    void completeInstall(HelperService& service, const std::optional<HelperService::Error>& error);
    // Installs on a worker thread, so the window stays responsive while the administrator decides. Every
    // Set Up button reads isInstalling(), so a second press anywhere waits for the first.
    void installInBackground(HelperService& service);
    bool isInstalling() const { return m_installer != nullptr; }
    // Installing failed, for this reason.
    void setFailed(const QString& reason);

    // After the app stopped its background services no call opens a connection any more; starting them
    // again lifts that.
    void stopBackground();
    void startBackground();
    bool backgroundStopped() const { return m_backgroundStopped; }
    // Calls using the shared connection right now.
    int connectionUsers() const { return m_connectionUsers; }
    // Forgets the shared connection so that the next call opens a fresh one (used once a helper was replaced).
    void dropConnection();

    // What the last version check found, and whether a refresh is replacing the helper right now.
    std::optional<SyncState> syncState() const { return m_syncState; }
    const std::optional<QString>& lastKnownInstalledVersion() const { return m_lastKnownInstalledVersion; }
    bool isRefreshing() const { return m_isRefreshing; }
    void setSyncState(SyncState state, const std::optional<QString>& installedVersion);
    void setRefreshing(bool refreshing);

    void installedHelperVersion(std::chrono::milliseconds timeout, std::function<void(std::optional<QString>)> done);
    void shutdownHelper(std::chrono::milliseconds timeout, std::function<void(ShutdownOutcome)> done);
    // Runs one maintenance task on a connection of its own; the helper reports each command as a step.
    void run(const QString& task, std::chrono::milliseconds timeout, std::function<void(TaskStep)> onStep,
        std::function<void(TaskResult)> done);
    // Deletes everything in the user's Trash folders for good, as root.
    void emptyTrash(std::chrono::milliseconds timeout, std::function<void(TaskResult)> done);
    void firstAid(const QString& disk, bool repair, std::chrono::milliseconds timeout,
        std::function<void(TaskStep)> onStep, std::function<void(TaskResult)> done);
    void flash(const QString& imagePath, const QString& toDisk, bool trim, bool verify,
        std::function<void(FlashProgress)> onProgress, std::function<void(TaskResult)> done);
    void clone(const QString& fromDisk, const QString& toDisk, bool trim, bool verify,
        std::function<void(FlashProgress)> onProgress, std::function<void(TaskResult)> done);
    void cloneContents(const QString& fromDisk, const QString& toDisk, bool verify,
        std::function<void(FlashProgress)> onProgress, std::function<void(TaskResult)> done);
    void cancelFlash(std::chrono::milliseconds timeout, std::function<void(TaskResult)> done);
    // The memory of every process; nothing when the helper cannot say.
    void systemProcessInfo(
        std::chrono::milliseconds timeout, std::function<void(std::optional<QList<ProcessMemory>>)> done);
    // Signals a process of another user (force quit, stop, continue), or changes its priority.
    void signalProcess(int pid, int signal, std::chrono::milliseconds timeout, std::function<void(TaskResult)> done);
    void setProcessPriority(int pid, int nice, std::chrono::milliseconds timeout, std::function<void(TaskResult)> done);
    // Switches a system unit on or off (and starts or stops it).
    void setUnitEnabled(
        const QString& unit, bool enabled, std::chrono::milliseconds timeout, std::function<void(TaskResult)> done);
    // Creates a mount point of that name owned by `uid`; its path, or nothing.
    void createMountpoint(const QString& name, unsigned uid, std::chrono::milliseconds timeout,
        std::function<void(std::optional<QString>)> done);

    // The common path of every call.
    void call(const QString& op, const QJsonObject& arguments, Timeout timeout, std::function<void(Reply)> done,
        Channel channel = Channel::shared, std::function<void(const QJsonObject&)> onProgress = {});
    void call(const QString& op, const QJsonObject& arguments, Timeout timeout, const CallTexts& texts,
        std::function<void(Reply)> done, Channel channel = Channel::shared,
        std::function<void(const QJsonObject&)> onProgress = {});

Q_SIGNALS:
    // The state, the version check or the refresh changed: whatever shows them reads them again.
    void changed();

private:
    struct PendingCall {
        std::shared_ptr<Once> once;
        std::function<void(Reply)> done;
        std::function<void(const QJsonObject&)> onProgress;
        QTimer* timer = nullptr; // none without a time limit
        QPointer<HelperConnection> connection;
        Channel channel = Channel::shared;
        QString contactLost;
    };

    HelperConnection* connection(Channel channel);
    HelperConnection* openConnection();
    void finish(qint64 id, Reply reply);
    void connectionLost(HelperConnection* connection, const QString& description);
    void processCall(const QString& op, const QJsonObject& arguments, std::chrono::milliseconds timeout,
        std::function<void(TaskResult)> done);

    QString m_socketPath;
    std::atomic<State> m_state{State::notInstalled}; // also read by the Trash mover's threads
    QString m_failureMessage;
    bool m_backgroundStopped = false;
    bool m_isRefreshing = false;
    std::optional<SyncState> m_syncState;
    std::optional<QString> m_lastKnownInstalledVersion;
    int m_connectionUsers = 0;
    QPointer<HelperConnection> m_connection;
    QPointer<HelperConnection> m_driveConnection;
    qint64 m_nextId = 1;
    QHash<qint64, PendingCall> m_pending;
    std::unique_ptr<std::jthread> m_installer; // the installation under way, if any
};
