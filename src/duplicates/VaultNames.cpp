#include "duplicates/VaultNames.h"

QString numberedName(const QString& path, int number)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    // A leading dot starts a hidden name rather than an extension.
    const bool hasExtension = dot > slash + 1;
    const QString stem = hasExtension ? path.left(dot) : path;
    const QString extension = hasExtension ? path.mid(dot) : QString();
    return QStringLiteral("%1 (%2)%3").arg(stem, QString::number(number), extension);
}

QString firstFreeName(const QString& path, const std::function<bool(const QString&)>& taken)
{
    if (!taken(path))
        return path;
    for (int number = 2;; ++number) {
        const QString candidate = numberedName(path, number);
        if (!taken(candidate))
            return candidate;
    }
}
