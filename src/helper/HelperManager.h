#pragma once

#include "helper/Once.h"

#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPointer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <variant>

class HelperService;
class QLocalSocket;
class QTimer;

// The result of a maintenance task as the helper reports it.
struct TaskResult {
    bool success = false;
    QString message;
    qint64 freedBytes = 0;
};

// The app's side of the privileged helper: every call is asynchronous, has a time limit, and finishes
// exactly once, with the helper's answer or with a sentence saying why there is none. Main thread only.
class HelperManager : public QObject {
    Q_OBJECT

public:
    enum class State { failed, notInstalled, needsApproval, ready };
    enum class ShutdownOutcome { accepted, refused, noAnswer };
    // A call ends with the helper's reply or with the sentence the caller shows.
    using Reply = std::variant<QJsonObject, QString>;

    explicit HelperManager(QString socketPath, QObject* parent = nullptr);
    ~HelperManager() override;

    State state() const { return m_state.load(); }
    void setState(State state);
    // Why installing failed, while the state is `failed`.
    const QString& failureMessage() const { return m_failureMessage; }
    // Reads the state from the service manager: enabled is ready, installed but off needs approval.
    void refreshState(HelperService& service);
    // Installs the helper (the user approves once), then reads the state again.
    void install(HelperService& service);
    // Installing failed, for this reason.
    void setFailed(const QString& reason);
    // After the app stopped its background services no call opens a connection any more.
    void stopBackground();
    bool backgroundStopped() const { return m_backgroundStopped; }
    // Calls using the shared connection right now.
    int connectionUsers() const { return m_connectionUsers; }

    void installedHelperVersion(std::chrono::milliseconds timeout, std::function<void(std::optional<QString>)> done);
    void shutdownHelper(std::chrono::milliseconds timeout, std::function<void(ShutdownOutcome)> done);
    void run(const QString& task, std::chrono::milliseconds timeout, std::function<void(TaskResult)> done);
    // Deletes everything in the user's Trash folders for good, as root.
    void emptyTrash(std::chrono::milliseconds timeout, std::function<void(TaskResult)> done);

    // The common path of every call.
    void call(const QString& op, const QJsonObject& arguments, std::chrono::milliseconds timeout,
        std::function<void(Reply)> done);

private:
    struct PendingCall {
        std::shared_ptr<Once> once;
        std::function<void(Reply)> done;
        QTimer* timer = nullptr;
    };

    QLocalSocket* connection();
    void finish(qint64 id, Reply reply);
    void readReplies();
    void connectionLost(const QString& description);

    QString m_socketPath;
    std::atomic<State> m_state{State::notInstalled}; // also read by the Trash mover's threads
    QString m_failureMessage;
    bool m_backgroundStopped = false;
    int m_connectionUsers = 0;
    QPointer<QLocalSocket> m_connection;
    QByteArray m_buffer;
    qint64 m_nextId = 1;
    QHash<qint64, PendingCall> m_pending;
};
