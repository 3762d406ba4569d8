#include "helper/HelperTrash.h"

#include "helper/HelperProtocol.h"
#include "helper/HelperTexts.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QJsonArray>
#include <QLocalSocket>

HelperTrash::HelperTrash(QString socketPath, std::function<bool()> isReady, QString userTrash)
    : m_socketPath(std::move(socketPath))
    , m_isReady(std::move(isReady))
    , m_userTrash(std::move(userTrash))
{
}

bool HelperTrash::isReady() const
{
    return m_isReady();
}

PrivilegedTrash::Outcome HelperTrash::moveToTrash(const QString& path, std::chrono::seconds timeout)
{
    // The helper only moves into a Trash the user owns, so it must exist first.
    QDir().mkpath(m_userTrash);
    const QDeadlineTimer deadline(timeout);
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (!socket.waitForConnected(int(deadline.remainingTime())))
        return {false, {}, HelperTexts::contactLost(socket.errorString())};
    socket.write(HelperProtocol::frame({{QStringLiteral("id"), 1},
        {QStringLiteral("op"), HelperProtocol::Op::moveItemsToTrash},
        {QStringLiteral("args"),
            QJsonObject{{QStringLiteral("paths"), QJsonArray{path}}, {QStringLiteral("userTrash"), m_userTrash}}}}));

    QByteArray buffer;
    while (!deadline.hasExpired()) {
        if (!socket.waitForReadyRead(int(deadline.remainingTime())))
            break;
        buffer += socket.readAll();
        const HelperProtocol::Unframed unframed = HelperProtocol::takeMessage(buffer);
        if (unframed.malformed)
            return {false, {}, HelperTexts::contactLost(QStringLiteral("the helper sent something unreadable"))};
        if (!unframed.message)
            continue;
        const QJsonObject reply = unframed.message->value(u"reply").toObject();
        if (reply.contains(u"error"))
            return {false, {}, reply.value(u"error").toString()};
        const QJsonObject item = reply.value(u"items").toArray().first().toObject();
        return {item.value(u"moved").toBool(), item.value(u"trashPath").toString(), item.value(u"reason").toString()};
    }
    return {false, {}, HelperTexts::noAnswer()};
}
