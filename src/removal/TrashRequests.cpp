#include "removal/TrashRequests.h"

#include "common/LocalPath.h"
#include "platform/FileStatus.h"
#include "removal/AuditLog.h"
#include "removal/ItemSize.h"
#include "removal/TrashTexts.h"
#include "removal/Trasher.h"

#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>

namespace TrashRequests {

std::optional<QString> refusal(const QString& argument)
{
    if (argument.isEmpty())
        return TrashTexts::emptyName();
    const QString name = QFileInfo(argument).fileName();
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return TrashTexts::dotName();
    const QString absolute = QDir::cleanPath(QDir::current().absoluteFilePath(expandTilde(argument)));
    const QString current = QDir::current().absolutePath();
    if (absolute == current || absolute == QDir::current().canonicalPath())
        return TrashTexts::currentFolder();
    // Refused before anything is measured: measuring "/" alone would walk the whole disk.
    if (const auto refused = Trasher::refusal(absolute))
        return refused;
    const auto local = LocalPath::encode(absolute);
    if (!local)
        return TrashTexts::unnamable();
    if (!statusAt(AT_FDCWD, local->constData(), StatDetail::identity) && (errno == ENOENT || errno == ENOTDIR))
        return TrashTexts::doesNotExist();
    return std::nullopt;
}

QList<TrashItem> measured(const QStringList& paths)
{
    QList<TrashItem> items;
    for (const QString& path : paths) {
        const QString absolute = QDir::cleanPath(QDir::current().absoluteFilePath(expandTilde(path)));
        items.append({absolute, measureItemSize(absolute)});
    }
    return items;
}

std::optional<AuditEntry> findEntry(const AuditLog& log, const QString& text)
{
    const QString wanted = text.trimmed().toUpper().remove(QLatin1Char('{')).remove(QLatin1Char('}'));
    if (wanted.isEmpty())
        return std::nullopt;
    std::optional<AuditEntry> found;
    for (const AuditEntry& entry : log.entries()) {
        if (!uuidText(entry.id).startsWith(wanted))
            continue;
        if (found)
            return std::nullopt; // the start names more than one entry
        found = entry;
    }
    return found;
}

} // namespace TrashRequests
