#include "helper/HelperManager.h"

#include "common/BackgroundTask.h"
#include "common/Log.h"
#include "helper/HelperConnection.h"
#include "helper/HelperProtocol.h"
#include "helper/HelperTexts.h"
#include "platform/TrashStore.h"

#include <QJsonArray>
#include <QTimer>

namespace {

const HelperManager::CallTexts maintenanceTexts{
    HelperTexts::notSetUp(), HelperTexts::unavailable(), HelperTexts::noAnswer(), HelperTexts::contactLost({})};

// Jobs that write a drive have no time limit, so they never end in silence.
const HelperManager::CallTexts driveJobTexts{
    HelperTexts::driveJobNotSetUp(), HelperTexts::driveJobUnavailable(), {}, HelperTexts::driveJobContactLost({})};

// A reply that carries a task result, or the sentence that replaced it. A reply with an "error" (a request
// the helper refused) fails with the helper's sentence.
std::function<void(HelperManager::Reply)> taskResultReply(std::function<void(TaskResult)> done)
{
    return [done = std::move(done)](HelperManager::Reply reply) {
        if (const auto* text = std::get_if<QString>(&reply))
            return done({false, *text, 0});
        const QJsonObject& object = std::get<QJsonObject>(reply);
        if (object.contains(u"error"))
            return done({false, object.value(u"error").toString(), 0});
        done({object.value(u"success").toBool(), object.value(u"message").toString(),
            object.value(u"freedBytes").toInteger()});
    };
}

std::function<void(const QJsonObject&)> stepsTo(std::function<void(TaskStep)> onStep)
{
    if (!onStep)
        return {};
    return [onStep = std::move(onStep)](const QJsonObject& progress) {
        onStep({progress.value(u"step").toString(), progress.value(u"done").toInt(), progress.value(u"total").toInt()});
    };
}

std::function<void(const QJsonObject&)> driveProgressTo(std::function<void(FlashProgress)> onProgress)
{
    if (!onProgress)
        return {};
    return [onProgress = std::move(onProgress)](const QJsonObject& progress) {
        onProgress({progress.value(u"phase").toString(), progress.value(u"bytesDone").toInteger(),
            progress.value(u"total").toInteger()});
    };
}

} // namespace

QString statusName(HelperService::Status status)
{
    switch (status) {
    case HelperService::Status::enabled: return QStringLiteral("enabled");
    case HelperService::Status::installedNotEnabled: return QStringLiteral("installed but not enabled");
    case HelperService::Status::notInstalled: return QStringLiteral("not installed");
    }
    return {};
}

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
    Q_EMIT changed();
}

void HelperManager::refreshState(HelperService& service)
{
    if (HelperProtocol::socketOverridden() && m_socketPath == HelperProtocol::socketPath())
        return setState(State::ready);
    switch (service.status()) {
    case HelperService::Status::enabled: return setState(State::ready);
    case HelperService::Status::installedNotEnabled: return setState(State::needsApproval);
    case HelperService::Status::notInstalled: return setState(State::notInstalled);
    }
}

void HelperManager::install(HelperService& service)
{
    completeInstall(service, service.registerService());
}

void HelperManager::completeInstall(HelperService& service, const std::optional<HelperService::Error>& error)
{
    if (error) {
        helperLog(QStringLiteral("register() failed domain=%1 code=%2 %3")
                      .arg(error->domain)
                      .arg(error->code)
                      .arg(error->description));
        // The service manager refusing a service it already has registered is no failure.
        const bool alreadyThere = error->domain == HelperService::serviceManagerDomain
            && service.status() == HelperService::Status::enabled;
        if (!alreadyThere)
            return setFailed(error->description);
    }
    refreshState(service);
}

void HelperManager::installInBackground(HelperService& service)
{
    if (m_installer)
        return;
    m_installer = runInBackground(
        this, [&service] { return service.registerService(); },
        [this, &service](std::optional<HelperService::Error> error) {
            m_installer.reset();
            completeInstall(service, error);
        });
    Q_EMIT changed();
}

void HelperManager::setFailed(const QString& reason)
{
    m_failureMessage = reason;
    setState(State::failed);
}

void HelperManager::stopBackground()
{
    m_backgroundStopped = true;
    Q_EMIT changed();
}

void HelperManager::startBackground()
{
    m_backgroundStopped = false;
    Q_EMIT changed();
}

void HelperManager::dropConnection()
{
    // Calls already sent on it still get their answers; it closes once they have.
    m_connection = nullptr;
}

void HelperManager::setSyncState(SyncState state, const std::optional<QString>& installedVersion)
{
    m_syncState = state;
    m_lastKnownInstalledVersion = installedVersion;
    Q_EMIT changed();
}

void HelperManager::setRefreshing(bool refreshing)
{
    m_isRefreshing = refreshing;
    Q_EMIT changed();
}

HelperConnection* HelperManager::openConnection()
{
    auto* connection = new HelperConnection(this);
    connect(connection, &HelperConnection::replied, this, [this](qint64 id, const QJsonObject& reply) {
        if (!m_pending.contains(id))
            helperLog(QStringLiteral("late answer ignored id=%1").arg(id));
        finish(id, reply);
    });
    connect(connection, &HelperConnection::progressed, this, [this](qint64 id, const QJsonObject& progress) {
        const auto it = m_pending.constFind(id);
        if (it != m_pending.cend() && it->onProgress)
            it->onProgress(progress);
    });
    connect(connection, &HelperConnection::lost, this,
        [this, connection](const QString& description) { connectionLost(connection, description); });
    connection->open(m_socketPath);
    return connection;
}

HelperConnection* HelperManager::connection(Channel channel)
{
    if (m_backgroundStopped)
        return nullptr;
    switch (channel) {
    case Channel::own: return openConnection();
    case Channel::drive:
        if (!m_driveConnection || !m_driveConnection->isOpen())
            m_driveConnection = openConnection();
        return m_driveConnection;
    case Channel::shared: break;
    }
    if (!m_connection || !m_connection->isOpen())
        m_connection = openConnection();
    return m_connection;
}

void HelperManager::call(const QString& op, const QJsonObject& arguments, Timeout timeout,
    std::function<void(Reply)> done, Channel channel, std::function<void(const QJsonObject&)> onProgress)
{
    call(op, arguments, timeout, maintenanceTexts, std::move(done), channel, std::move(onProgress));
}

void HelperManager::call(const QString& op, const QJsonObject& arguments, Timeout timeout, const CallTexts& texts,
    std::function<void(Reply)> done, Channel channel, std::function<void(const QJsonObject&)> onProgress)
{
    if (m_state != State::ready)
        return done(texts.notSetUp);
    HelperConnection* link = connection(channel);
    if (!link)
        return done(texts.unavailable);

    const qint64 id = m_nextId++;
    if (channel == Channel::shared)
        ++m_connectionUsers;
    QTimer* timer = nullptr;
    if (timeout) {
        timer = new QTimer(this);
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, [this, id, noAnswer = texts.noAnswer] { finish(id, noAnswer); });
        timer->start(*timeout);
    }
    m_pending.insert(id,
        {std::make_shared<Once>(), std::move(done), std::move(onProgress), timer, link, channel, texts.contactLost});
    // A helper that isn't there at all is known as soon as the connection is opened.
    if (!link->isOpen())
        return finish(id, texts.contactLost + link->lossDescription());
    link->send(id, op, arguments);
}

void HelperManager::finish(qint64 id, Reply reply)
{
    const auto it = m_pending.find(id);
    if (it == m_pending.end())
        return;
    PendingCall pending = *it;
    m_pending.erase(it);
    if (pending.timer)
        pending.timer->deleteLater();
    if (!pending.once->claim())
        return;
    if (pending.channel == Channel::shared)
        --m_connectionUsers;
    if (pending.channel == Channel::own && pending.connection)
        pending.connection->deleteLater();
    pending.done(std::move(reply));
}

void HelperManager::connectionLost(HelperConnection* connection, const QString& description)
{
    // The next call opens a fresh connection; the calls waiting on this one end now.
    QList<qint64> waiting;
    for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it)
        if (it->connection == connection)
            waiting.append(it.key());
    for (const qint64 id : std::as_const(waiting))
        finish(id, m_pending.value(id).contactLost + description);
    if (connection == m_connection)
        m_connection = nullptr;
    if (connection == m_driveConnection)
        m_driveConnection = nullptr;
    connection->deleteLater();
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

void HelperManager::run(const QString& task, std::chrono::milliseconds timeout, std::function<void(TaskStep)> onStep,
    std::function<void(TaskResult)> done)
{
    call(HelperProtocol::Op::performMaintenance, {{QStringLiteral("task"), task}}, timeout,
        taskResultReply(std::move(done)), Channel::own, stepsTo(std::move(onStep)));
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

void HelperManager::firstAid(const QString& disk, bool repair, std::chrono::milliseconds timeout,
    std::function<void(TaskStep)> onStep, std::function<void(TaskResult)> done)
{
    CallTexts texts = maintenanceTexts;
    texts.noAnswer = HelperTexts::firstAidTooLong();
    call(HelperProtocol::Op::firstAid, {{QStringLiteral("disk"), disk}, {QStringLiteral("repair"), repair}}, timeout,
        texts, taskResultReply(std::move(done)), Channel::own, stepsTo(std::move(onStep)));
}

void HelperManager::flash(const QString& imagePath, const QString& toDisk, bool trim, bool verify,
    std::function<void(FlashProgress)> onProgress, std::function<void(TaskResult)> done)
{
    call(HelperProtocol::Op::flashImage,
        {{QStringLiteral("image"), imagePath}, {QStringLiteral("toDisk"), toDisk}, {QStringLiteral("trim"), trim},
            {QStringLiteral("verify"), verify}},
        std::nullopt, driveJobTexts, taskResultReply(std::move(done)), Channel::drive,
        driveProgressTo(std::move(onProgress)));
}

void HelperManager::clone(const QString& fromDisk, const QString& toDisk, bool trim, bool verify,
    std::function<void(FlashProgress)> onProgress, std::function<void(TaskResult)> done)
{
    call(HelperProtocol::Op::cloneDisk,
        {{QStringLiteral("fromDisk"), fromDisk}, {QStringLiteral("toDisk"), toDisk}, {QStringLiteral("trim"), trim},
            {QStringLiteral("verify"), verify}},
        std::nullopt, driveJobTexts, taskResultReply(std::move(done)), Channel::drive,
        driveProgressTo(std::move(onProgress)));
}

void HelperManager::cloneContents(const QString& fromDisk, const QString& toDisk, bool verify,
    std::function<void(FlashProgress)> onProgress, std::function<void(TaskResult)> done)
{
    call(HelperProtocol::Op::cloneDiskContents,
        {{QStringLiteral("fromDisk"), fromDisk}, {QStringLiteral("toDisk"), toDisk},
            {QStringLiteral("verify"), verify}},
        std::nullopt, driveJobTexts, taskResultReply(std::move(done)), Channel::own,
        driveProgressTo(std::move(onProgress)));
}

void HelperManager::cancelFlash(std::chrono::milliseconds timeout, std::function<void(TaskResult)> done)
{
    call(HelperProtocol::Op::cancelFlash, {}, timeout, taskResultReply(std::move(done)));
}

void HelperManager::systemProcessInfo(
    std::chrono::milliseconds timeout, std::function<void(std::optional<QList<ProcessMemory>>)> done)
{
    call(HelperProtocol::Op::processMemory, {}, timeout, [done = std::move(done)](Reply reply) {
        const auto* object = std::get_if<QJsonObject>(&reply);
        if (!object || !object->value(u"processes").isArray())
            return done(std::nullopt);
        QList<ProcessMemory> processes;
        for (const QJsonValue& value : object->value(u"processes").toArray()) {
            const QJsonObject record = value.toObject();
            processes.append({record.value(u"pid").toInt(), unsigned(record.value(u"uid").toInteger()),
                record.value(u"name").toString(), record.value(u"residentBytes").toInteger(),
                record.value(u"proportionalBytes").toInteger(), record.value(u"swappedBytes").toInteger()});
        }
        done(processes);
    });
}

void HelperManager::processCall(const QString& op, const QJsonObject& arguments, std::chrono::milliseconds timeout,
    std::function<void(TaskResult)> done)
{
    CallTexts texts = maintenanceTexts;
    texts.notSetUp = HelperTexts::systemProcess();
    call(op, arguments, timeout, texts, taskResultReply(std::move(done)));
}

void HelperManager::signalProcess(
    int pid, int signal, std::chrono::milliseconds timeout, std::function<void(TaskResult)> done)
{
    processCall(HelperProtocol::Op::signalProcess, {{QStringLiteral("pid"), pid}, {QStringLiteral("signal"), signal}},
        timeout, std::move(done));
}

void HelperManager::setProcessPriority(
    int pid, int nice, std::chrono::milliseconds timeout, std::function<void(TaskResult)> done)
{
    processCall(HelperProtocol::Op::setProcessPriority, {{QStringLiteral("pid"), pid}, {QStringLiteral("nice"), nice}},
        timeout, std::move(done));
}

void HelperManager::setUnitEnabled(
    const QString& unit, bool enabled, std::chrono::milliseconds timeout, std::function<void(TaskResult)> done)
{
    call(HelperProtocol::Op::setUnitEnabled, {{QStringLiteral("unit"), unit}, {QStringLiteral("enabled"), enabled}},
        timeout, taskResultReply(std::move(done)));
}

void HelperManager::createMountpoint(const QString& name, unsigned uid, std::chrono::milliseconds timeout,
    std::function<void(std::optional<QString>)> done)
{
    call(HelperProtocol::Op::createMountpoint, {{QStringLiteral("name"), name}, {QStringLiteral("uid"), qint64(uid)}},
        timeout, [done = std::move(done)](Reply reply) {
            const auto* object = std::get_if<QJsonObject>(&reply);
            const QString path = object ? object->value(u"path").toString() : QString();
            done(path.isEmpty() ? std::nullopt : std::optional<QString>(path));
        });
}
