#pragma once

#include "helper/daemon/HelperOperations.h"

#include <QHash>
#include <QLocalServer>
#include <QObject>
#include <QSet>

#include <chrono>
#include <memory>
#include <thread>

class QLocalSocket;
class QTimer;

// The helper's listening side: accepts connections only from the allowed users (checked with the
// kernel's peer credentials), reads framed requests, answers each exactly once, and runs long work on
// threads of its own so that it can still answer (and refuse to shut down) while work is in flight.
class HelperServer : public QObject {
    Q_OBJECT

public:
    // A user may hold this many connections at once; more are closed at once.
    static constexpr int maximumConnectionsPerUser = 32;
    // A request must arrive whole within this time once it has begun.
    static constexpr std::chrono::seconds defaultRequestTimeLimit{10};

    // `version`: what the helper reports as its version (the one it was built with).
    HelperServer(QSet<unsigned> allowedUids, HelperOperations operations, QString version, QObject* parent = nullptr);
    ~HelperServer() override;

    // Listens on `socketPath`, replacing a stale socket file; a sentence saying what failed otherwise.
    std::optional<QString> listen(const QString& socketPath);
    // Serves a socket that is already listening (handed over by systemd).
    std::optional<QString> adopt(int listeningSocket);
    // Emits `idle` once nobody has been connected and no job has run for `after`. systemd starts the helper
    // again on the next connection, so a helper started on demand need not stay.
    void reportIdleAfter(std::chrono::milliseconds after);
    void setRequestTimeLimit(std::chrono::milliseconds limit) { m_requestTimeLimit = limit; }

Q_SIGNALS:
    // The helper agreed to exit.
    void shutdownAccepted();
    void idle();

private:
    struct Peer {
        unsigned uid = 0;
        QByteArray buffer;            // what has arrived of the next request
        QTimer* unfinished = nullptr; // runs while a request is only partly there
    };

    void accept();
    void read(QLocalSocket* socket);
    void drop(QLocalSocket* socket, const QString& why);
    void handle(QLocalSocket* socket, const QJsonObject& request);
    void send(QLocalSocket* socket, qint64 id, const QJsonObject& reply);
    // Starts the idle countdown when nobody is connected and nothing runs, stops it otherwise.
    void updateIdleCountdown();
    void write(QLocalSocket* socket, const QJsonObject& message);

    QSet<unsigned> m_allowedUids;
    HelperOperations m_operations;
    QString m_version;
    QLocalServer m_server;
    QHash<QLocalSocket*, Peer> m_peers;
    int m_inFlight = 0; // long jobs running now; read and written on the server's thread only
    quint64 m_nextJob = 0;
    QHash<quint64, std::shared_ptr<std::jthread>> m_jobs;
    QTimer* m_idleTimer = nullptr; // only when asked to report idleness
    std::chrono::milliseconds m_requestTimeLimit = defaultRequestTimeLimit;
};
