#include "duplicates/VaultOrigin.h"

#include "common/Log.h"
#include "platform/ExtendedAttributes.h"

#include <QFile>

#include <cerrno>

void markOrigin(const VaultEntry& entry)
{
    const int error
        = setOwnAttribute(QFile::encodeName(entry.vaultPath), vaultOriginAttribute, entry.originalPath.toUtf8());
    if (error != 0)
        logLine(QStringLiteral("vault origin attribute not set path=%1 errno=%2")
                    .arg(logValue(entry.vaultPath))
                    .arg(error));
}

void clearOrigin(const QString& path)
{
    const int error = removeOwnAttribute(QFile::encodeName(path), vaultOriginAttribute);
    if (error != 0 && error != ENOTSUP)
        logLine(QStringLiteral("vault origin attribute not removed path=%1 errno=%2").arg(logValue(path)).arg(error));
}

std::optional<QString> originOf(const QString& path)
{
    const std::optional<QByteArray> value = ownAttribute(QFile::encodeName(path), vaultOriginAttribute);
    return value ? std::optional(QString::fromUtf8(*value)) : std::nullopt;
}
