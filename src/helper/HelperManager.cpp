#include "helper/HelperManager.h"

#include "helper/HelperProtocol.h"
#include "helper/HelperService.h"
#include "helper/HelperTexts.h"
#include "platform/TrashStore.h"

#include <QJsonArray>
#include <QLocalSocket>
#include <QTimer>

namespace {

void helperLog(const QString& message)
{
    qInfo().noquote() << QStringLiteral("Velloru helper: ") + message;
}

} // namespace

HelperManager::HelperManager(QString socketPath, QObject* parent)
    : QObject(parent)
    , m_socketPath(std::move(socketPath))
{
}

HelperManager::~HelperManager()
{
    // Callers waiting on a call that can no longer finish are not called back; their owners are going too.
    for (const PendingCall& pending : std::as_const(m_pending))
        pending.once->claim();
}

void HelperManager::setState(State state)
{
    m_state = state;
}

void HelperManager::refreshState(HelperService& service)
{
    if (HelperProtocol::socketOverridden() && m_socketPath == HelperProtocol::socketPath()) {
        m_state = State::ready;
        return;
    }
    switch (service.status()) {
    case HelperService::Status::enabled: m_state = State::ready; break;
    case HelperService::Status::installedNotEnabled: m_state = State::needsApproval; break;
    case HelperService::Status::notInstalled: m_state = State::notInstalled; break;
    }
}

void HelperManager::install(HelperService& service)
{
    if (const auto problem = service.install())
        return setFailed(*problem);
    refreshState(service);
}

void HelperManager::setFailed(const QString& reason)
{
    helperLog(QStringLiteral("install failed reason=\"%1\"").arg(reason));
    m_state = State::failed;
    m_failureMessage = reason;
}

void HelperManager::stopBackground()
{
    m_backgroundStopped = true;
}

QLocalSocket* HelperManager::connection()
{
    if (m_backgroundStopped)
        return nullptr;
    if (m_connection && m_connection->state() != QLocalSocket::UnconnectedState)
        return m_connection;

    auto* socket = new QLocalSocket(this);
    connect(socket, &QLocalSocket::readyRead, this, &HelperManager::readReplies);
    connect(socket, &QLocalSocket::errorOccurred, this, [this, socket](QLocalSocket::LocalSocketError) {
        if (socket == m_connection)
            connectionLost(socket->errorString());
    });
    connect(socket, &QLocalSocket::disconnected, this, [this, socket] {
        if (socket == m_connection)
            connectionLost(QStringLiteral("the connection was closed"));
    });
    m_buffer.clear();
    m_connection = socket;
    socket->connectToServer(m_socketPath);
    return socket;
}

void HelperManager::call(
    const QString& op, const QJsonObject& arguments, std::chrono::milliseconds timeout, std::function<void(Reply)> done)
{
    if (m_state != State::ready)
        return done(HelperTexts::notSetUp());
    QLocalSocket* socket = connection();
    if (!socket)
        return done(HelperTexts::unavailable());

    const qint64 id = m_nextId++;
    ++m_connectionUsers;
    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, [this, id] { finish(id, HelperTexts::noAnswer()); });
    m_pending.insert(id, {std::make_shared<Once>(), std::move(done), timer});
    timer->start(timeout);
    socket->write(HelperProtocol::frame(
        {{QStringLiteral("id"), id}, {QStringLiteral("op"), op}, {QStringLiteral("args"), arguments}}));
}

void HelperManager::finish(qint64 id, Reply reply)
{
    const auto it = m_pending.find(id);
    if (it == m_pending.end()) {
        helperLog(QStringLiteral("late answer ignored id=%1").arg(id));
        return;
    }
    PendingCall pending = *it;
    m_pending.erase(it);
    pending.timer->deleteLater();
    if (!pending.once->claim())
        return;
    --m_connectionUsers;
    pending.done(std::move(reply));
}

void HelperManager::readReplies()
{
    if (!m_connection)
        return;
    m_buffer += m_connection->readAll();
    for (;;) {
        const HelperProtocol::Unframed unframed = HelperProtocol::takeMessage(m_buffer);
        if (unframed.malformed)
            return connectionLost(QStringLiteral("the helper sent something unreadable"));
        if (!unframed.message)
            return;
        const QJsonObject& message = *unframed.message;
        if (message.contains(u"reply"))
            finish(message.value(u"id").toInteger(), message.value(u"reply").toObject());
    }
}

void HelperManager::connectionLost(const QString& description)
{
    // The next call opens a fresh connection; the calls waiting on this one end now.
    if (m_connection)
        m_connection->deleteLater();
    m_connection = nullptr;
    const QList<qint64> waiting = m_pending.keys();
    for (const qint64 id : waiting)
        finish(id, HelperTexts::contactLost(description));
}

void HelperManager::installedHelperVersion(
    std::chrono::milliseconds timeout, std::function<void(std::optional<QString>)> done)
{
    call(HelperProtocol::Op::version, {}, timeout, [done = std::move(done)](Reply reply) {
        const auto* object = std::get_if<QJsonObject>(&reply);
        done(object ? std::optional<QString>(object->value(u"version").toString()) : std::nullopt);
    });
}

void HelperManager::shutdownHelper(std::chrono::milliseconds timeout, std::function<void(ShutdownOutcome)> done)
{
    call(HelperProtocol::Op::shutdown, {}, timeout, [done = std::move(done)](Reply reply) {
        const auto* object = std::get_if<QJsonObject>(&reply);
        if (!object) {
            helperLog(QStringLiteral("no answer — already gone"));
            return done(ShutdownOutcome::noAnswer);
        }
        const bool accepted = object->value(u"accepted").toBool();
        helperLog(accepted ? QStringLiteral("shutdown accepted") : QStringLiteral("shutdown refused — work in flight"));
        done(accepted ? ShutdownOutcome::accepted : ShutdownOutcome::refused);
    });
}

namespace {

// A reply that carries a task result, or the sentence that replaced it.
std::function<void(HelperManager::Reply)> taskResultReply(std::function<void(TaskResult)> done)
{
    return [done = std::move(done)](HelperManager::Reply reply) {
        if (const auto* text = std::get_if<QString>(&reply))
            return done({false, *text, 0});
        const QJsonObject& object = std::get<QJsonObject>(reply);
        done({object.value(u"success").toBool(), object.value(u"message").toString(),
            object.value(u"freedBytes").toInteger()});
    };
}

} // namespace

void HelperManager::run(const QString& task, std::chrono::milliseconds timeout, std::function<void(TaskResult)> done)
{
    call(HelperProtocol::Op::performMaintenance, {{QStringLiteral("task"), task}}, timeout,
        taskResultReply(std::move(done)));
}

void HelperManager::emptyTrash(std::chrono::milliseconds timeout, std::function<void(TaskResult)> done)
{
    if (m_state != State::ready)
        return done({false, HelperTexts::notSetUp(), 0});
    QJsonArray folders;
    for (const TrashFolder& folder : existingTrashFolders())
        folders.append(folder.path);
    if (folders.isEmpty())
        return done({false, QStringLiteral("Couldn’t locate your Trash folder."), 0});
    call(HelperProtocol::Op::emptyTrash, {{QStringLiteral("trashFolders"), folders}}, timeout,
        taskResultReply(std::move(done)));
}
