#include "common/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

std::optional<QString> writeFileAtomically(const QString& path, const QByteArray& data)
{
    const QString folder = QFileInfo(path).absolutePath();
    if (!QDir().mkpath(folder))
        return QStringLiteral("Couldn’t create the folder %1.").arg(folder);

    QSaveFile file(path);
    // Unbuffered, so that a full disk fails the write itself: a buffered write only fails while the file
    // is closed, which commit() does not notice, and a truncated file would replace the good one.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return QStringLiteral("Couldn’t write %1 — %2.").arg(path, file.errorString());
    if (file.write(data) != data.size()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return QStringLiteral("Couldn’t write %1 — %2.").arg(path, reason);
    }
    if (!file.commit())
        return QStringLiteral("Couldn’t write %1 — %2.").arg(path, file.errorString());
    return std::nullopt;
}
