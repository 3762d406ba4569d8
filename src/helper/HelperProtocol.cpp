#include "helper/HelperProtocol.h"

#include <QJsonDocument>
#include <QtEndian>

namespace HelperProtocol {

QString socketPath()
{
    return socketOverridden() ? qEnvironmentVariable("VELLORU_HELPER_SOCKET") : installedSocketPath;
}

bool socketOverridden()
{
    return !qEnvironmentVariableIsEmpty("VELLORU_HELPER_SOCKET");
}

QByteArray frame(const QJsonObject& message)
{
    const QByteArray body = QJsonDocument(message).toJson(QJsonDocument::Compact);
    QByteArray framed(4, '\0');
    qToBigEndian(quint32(body.size()), framed.data());
    return framed + body;
}

Unframed takeMessage(QByteArray& buffer, qint64 limit)
{
    if (buffer.size() < 4)
        return {};
    const qint64 length = qFromBigEndian<quint32>(buffer.constData());
    if (length == 0 || length > limit)
        return {std::nullopt, true};
    if (buffer.size() < 4 + length)
        return {};
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(buffer.mid(4, length), &error);
    buffer.remove(0, 4 + length);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return {std::nullopt, true};
    return {document.object(), false};
}

} // namespace HelperProtocol
