#include "scan/FolderEntries.h"

#include "common/LocalPath.h"
#include "common/Log.h"
#include "platform/FileStatus.h"

#include <QList>
#include <QRegularExpression>

#include <fcntl.h>

#include <algorithm>

namespace {

QList<QRegularExpression> wildcards(const QStringList& patterns)
{
    QList<QRegularExpression> expressions;
    for (const QString& pattern : patterns)
        expressions.append(QRegularExpression(
            QRegularExpression::wildcardToRegularExpression(pattern), QRegularExpression::CaseInsensitiveOption));
    return expressions;
}

bool matchesAny(const QString& name, const QList<QRegularExpression>& expressions)
{
    return expressions.isEmpty()
        || std::any_of(expressions.begin(), expressions.end(),
            [&name](const QRegularExpression& expression) { return expression.match(name).hasMatch(); });
}

} // namespace

std::vector<FolderEntry> listFolderEntries(
    const QString& folder, std::span<std::byte> buffer, FinalLink finalLink, const QStringList& nameFilters)
{
    std::vector<FolderEntry> entries;
    const std::optional<QByteArray> folderName = LocalPath::encode(folder);
    std::optional<DirectoryReader> reader
        = folderName ? DirectoryReader::open(AT_FDCWD, folderName->constData(), buffer, finalLink) : std::nullopt;
    if (!reader)
        return entries;
    const QList<QRegularExpression> filters = wildcards(nameFilters);
    const QString prefix = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    DirectoryEntry entry;
    while (reader->next(entry)) {
        const QByteArrayView bytes(entry.name.data(), qsizetype(entry.name.size()));
        const std::optional<QString> name = LocalPath::decode(bytes);
        if (!name) {
            logLine(QStringLiteral("smart scan left out a name that is not UTF-8 path=%1")
                        .arg(logValue(prefix + LocalPath::printable(bytes))));
            continue;
        }
        if (!matchesAny(*name, filters))
            continue;
        EntryType type = entry.type;
        if (type == EntryType::unknown) {
            // The name lies in the listing buffer right before its terminating NUL.
            const std::optional<FileStatus> status = statusAt(reader->fd(), entry.name.data(), StatDetail::identity);
            if (!status)
                continue; // vanished since the listing
            type = entryTypeOf(*status);
        }
        entries.push_back({*name, prefix + *name, type});
    }
    std::sort(
        entries.begin(), entries.end(), [](const FolderEntry& a, const FolderEntry& b) { return a.name < b.name; });
    return entries;
}
