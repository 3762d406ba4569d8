#include "platform/LinkTarget.h"

#include <QFile>

#include <unistd.h>

std::optional<QString> readLinkTarget(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    char target[4096];
    const ssize_t length = ::readlink(name.constData(), target, sizeof target);
    if (length < 0 || size_t(length) >= sizeof target)
        return std::nullopt;
    return QFile::decodeName(QByteArray(target, length));
}
