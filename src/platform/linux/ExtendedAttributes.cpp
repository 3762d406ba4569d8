#include "platform/ExtendedAttributes.h"

#include <cerrno>
#include <sys/xattr.h>

int setOwnAttribute(const QByteArray& path, const char* name, const QByteArray& value)
{
    return ::lsetxattr(path.constData(), name, value.constData(), std::size_t(value.size()), 0) == 0 ? 0 : errno;
}

int removeOwnAttribute(const QByteArray& path, const char* name)
{
    if (::lremovexattr(path.constData(), name) == 0 || errno == ENODATA)
        return 0;
    return errno;
}

std::optional<QByteArray> ownAttribute(const QByteArray& path, const char* name)
{
    const ssize_t length = ::lgetxattr(path.constData(), name, nullptr, 0);
    if (length < 0)
        return std::nullopt;
    QByteArray value(length, Qt::Uninitialized);
    const ssize_t read = ::lgetxattr(path.constData(), name, value.data(), std::size_t(value.size()));
    if (read < 0)
        return std::nullopt;
    value.truncate(read);
    return value;
}
