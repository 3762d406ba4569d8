#include "helper/daemon/HelperServer.h"

#include "common/Log.h"
#include "helper/HelperProtocol.h"
#include "platform/PeerCredentials.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>
#include <QPointer>
#include <QTimer>

HelperServer::HelperServer(QSet<unsigned> allowedUids, HelperOperations operations, QString version, QObject* parent)
    : QObject(parent)
    , m_allowedUids(std::move(allowedUids))
    , m_operations(std::move(operations))
    , m_version(std::move(version))
{
    connect(&m_server, &QLocalServer::newConnection, this, &HelperServer::accept);
}

HelperServer::~HelperServer()
{
    // The jobs refer to the operations; wait for them before those go.
    m_jobs.clear();
    // Connections closing as they are destroyed must not reach a half-destroyed server.
    const QList<QLocalSocket*> sockets = m_peers.keys();
    m_peers.clear();
    for (QLocalSocket* socket : sockets) {
        socket->disconnect(this);
        delete socket;
    }
}

std::optional<QString> HelperServer::listen(const QString& socketPath)
{
    QDir().mkpath(QFileInfo(socketPath).absolutePath());
    QLocalServer::removeServer(socketPath);
    // Anyone may connect; who is served is decided per connection from the kernel's peer credentials.
    m_server.setSocketOptions(QLocalServer::WorldAccessOption);
    if (!m_server.listen(socketPath))
        return QStringLiteral("Couldn’t listen on %1 — %2.").arg(socketPath, m_server.errorString());
    helperLog(QStringLiteral("listening socket=%1 version=%2").arg(logValue(socketPath), m_version));
    return std::nullopt;
}

std::optional<QString> HelperServer::adopt(int listeningSocket)
{
    if (!m_server.listen(qintptr(listeningSocket)))
        return QStringLiteral("Couldn’t serve the socket systemd handed over — %1.").arg(m_server.errorString());
    helperLog(QStringLiteral("serving the socket systemd handed over version=%1").arg(m_version));
    return std::nullopt;
}

void HelperServer::reportIdleAfter(std::chrono::milliseconds after)
{
    m_idleTimer = new QTimer(this);
    m_idleTimer->setSingleShot(true);
    m_idleTimer->setInterval(after);
    connect(m_idleTimer, &QTimer::timeout, this, &HelperServer::idle);
    updateIdleCountdown();
}

void HelperServer::updateIdleCountdown()
{
    if (!m_idleTimer)
        return;
    if (m_peers.isEmpty() && m_inFlight == 0)
        m_idleTimer->start();
    else
        m_idleTimer->stop();
}

void HelperServer::accept()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        const auto uid = peerUid(int(socket->socketDescriptor()));
        if (!uid || (*uid != 0 && !m_allowedUids.contains(*uid))) {
            helperLog(QStringLiteral("refused connection uid=%1")
                          .arg(uid ? QString::number(*uid) : QStringLiteral("unknown")));
            socket->abort();
            socket->deleteLater();
            continue;
        }
        const auto held
            = std::count_if(m_peers.cbegin(), m_peers.cend(), [&uid](const Peer& peer) { return peer.uid == *uid; });
        if (held >= maximumConnectionsPerUser) {
            helperLog(QStringLiteral("too many connections, refused uid=%1 open=%2").arg(*uid).arg(held));
            socket->abort();
            socket->deleteLater();
            continue;
        }
        auto* unfinished = new QTimer(socket);
        unfinished->setSingleShot(true);
        unfinished->setInterval(m_requestTimeLimit);
        connect(unfinished, &QTimer::timeout, this,
            [this, socket] { drop(socket, QStringLiteral("request not finished in time")); });
        m_peers.insert(socket, {*uid, {}, unfinished});
        updateIdleCountdown();
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] { read(socket); });
        connect(socket, &QLocalSocket::disconnected, this, [this, socket] {
            m_peers.remove(socket);
            updateIdleCountdown();
            socket->deleteLater();
        });
    }
}

void HelperServer::drop(QLocalSocket* socket, const QString& why)
{
    helperLog(QStringLiteral("closing connection uid=%1 reason=%2").arg(m_peers.value(socket).uid).arg(logValue(why)));
    socket->abort();
}

void HelperServer::read(QLocalSocket* socket)
{
    if (!m_peers.contains(socket))
        return;
    m_peers[socket].buffer += socket->readAll();
    for (;;) {
        // Looked up afresh each time: answering may end the connection.
        const auto peer = m_peers.find(socket);
        if (peer == m_peers.end())
            return;
        const HelperProtocol::Unframed unframed
            = HelperProtocol::takeMessage(peer->buffer, HelperProtocol::maximumRequestBytes);
        if (unframed.malformed) {
            drop(socket, QStringLiteral("malformed message"));
            return;
        }
        if (unframed.message) {
            handle(socket, *unframed.message);
            continue;
        }
        // A request that has begun must finish within the time limit, however slowly its bytes come.
        if (peer->buffer.isEmpty())
            peer->unfinished->stop();
        else if (!peer->unfinished->isActive())
            peer->unfinished->start();
        return;
    }
}

void HelperServer::handle(QLocalSocket* socket, const QJsonObject& request)
{
    namespace Op = HelperProtocol::Op;
    const qint64 id = request.value(u"id").toInteger();
    const QString op = request.value(u"op").toString();
    const QJsonObject arguments = request.value(u"args").toObject();
    const unsigned uid = m_peers.value(socket).uid;
    helperLog(QStringLiteral("request op=%1 id=%2 uid=%3").arg(logValue(op)).arg(id).arg(uid));

    if (op == Op::version) {
        send(socket, id, {{QStringLiteral("version"), m_version}});
        return;
    }
    if (op == Op::shutdown) {
        // A job is never cut short: the helper stays until its work is done.
        const bool accepted = m_inFlight == 0;
        send(socket, id, {{QStringLiteral("accepted"), accepted}});
        if (accepted)
            Q_EMIT shutdownAccepted();
        return;
    }
    if (!HelperOperations::isLong(op)) {
        send(socket, id, m_operations.perform(op, arguments, uid, [](const QJsonObject&) {}));
        return;
    }

    ++m_inFlight;
    const quint64 job = m_nextJob++;
    QPointer<QLocalSocket> replyTo(socket);
    m_jobs.insert(job, std::make_shared<std::jthread>([this, job, replyTo, id, op, arguments, uid] {
        const auto progress = [this, replyTo, id](const QJsonObject& report) {
            QMetaObject::invokeMethod(
                this,
                [this, replyTo, id, report] {
                    if (replyTo)
                        write(replyTo, {{QStringLiteral("id"), id}, {QStringLiteral("progress"), report}});
                },
                Qt::QueuedConnection);
        };
        QJsonObject reply = m_operations.perform(op, arguments, uid, progress);
        QMetaObject::invokeMethod(
            this,
            [this, job, replyTo, id, reply] {
                --m_inFlight;
                updateIdleCountdown();
                if (replyTo)
                    send(replyTo, id, reply);
                // Detach from the hash first: this thread is finishing and is joined when the last owner goes.
                if (auto finished = m_jobs.take(job))
                    finished->detach();
            },
            Qt::QueuedConnection);
    }));
}

void HelperServer::send(QLocalSocket* socket, qint64 id, const QJsonObject& reply)
{
    write(socket, {{QStringLiteral("id"), id}, {QStringLiteral("reply"), reply}});
}

void HelperServer::write(QLocalSocket* socket, const QJsonObject& message)
{
    socket->write(HelperProtocol::frame(message));
    socket->flush();
}
