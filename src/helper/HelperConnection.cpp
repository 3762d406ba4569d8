#include "helper/HelperConnection.h"

#include "helper/HelperProtocol.h"

#include <QLocalSocket>

HelperConnection::HelperConnection(QObject* parent)
    : QObject(parent)
    , m_socket(new QLocalSocket(this))
{
    connect(m_socket, &QLocalSocket::readyRead, this, &HelperConnection::readMessages);
    connect(m_socket, &QLocalSocket::errorOccurred, this,
        [this](QLocalSocket::LocalSocketError) { loseConnection(m_socket->errorString()); });
    connect(m_socket, &QLocalSocket::disconnected, this,
        [this] { loseConnection(QStringLiteral("the connection was closed")); });
}

void HelperConnection::open(const QString& socketPath)
{
    m_socket->connectToServer(socketPath);
}

void HelperConnection::send(qint64 id, const QString& op, const QJsonObject& arguments)
{
    if (m_open)
        m_socket->write(HelperProtocol::frame(
            {{QStringLiteral("id"), id}, {QStringLiteral("op"), op}, {QStringLiteral("args"), arguments}}));
}

void HelperConnection::readMessages()
{
    m_buffer += m_socket->readAll();
    while (m_open) {
        const HelperProtocol::Unframed unframed = HelperProtocol::takeMessage(m_buffer);
        if (unframed.malformed)
            return loseConnection(QStringLiteral("the helper sent something unreadable"));
        if (!unframed.message)
            return;
        const QJsonObject& message = *unframed.message;
        const qint64 id = message.value(u"id").toInteger();
        if (message.contains(u"progress"))
            Q_EMIT progressed(id, message.value(u"progress").toObject());
        else if (message.contains(u"reply"))
            Q_EMIT replied(id, message.value(u"reply").toObject());
    }
}

void HelperConnection::loseConnection(const QString& description)
{
    if (!m_open)
        return;
    m_open = false;
    m_lossDescription = description;
    m_socket->abort();
    Q_EMIT lost(description);
}
