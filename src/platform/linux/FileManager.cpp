#include "platform/FileManager.h"

#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

std::optional<QString> showInFileManager(const QString& folder)
{
    const QString xdgOpen = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    const QString xdgMime = QStandardPaths::findExecutable(QStringLiteral("xdg-mime"));
    if (xdgOpen.isEmpty() || xdgMime.isEmpty())
        return QStringLiteral("Couldn’t open a file manager — xdg-open isn’t installed. Install the xdg-utils "
                              "package, then try again.");
    // xdg-open hands a folder to the program registered for folders; with none it may start anything that
    // claims every file, or nothing, so ask first.
    QProcess query;
    query.start(xdgMime, {QStringLiteral("query"), QStringLiteral("default"), QStringLiteral("inode/directory")});
    const bool answered = query.waitForFinished(5000) && query.exitStatus() == QProcess::NormalExit;
    if (!answered || query.readAllStandardOutput().trimmed().isEmpty())
        return QStringLiteral("Couldn’t open a file manager — none is installed for folders. Install one (Files, "
                              "Dolphin or Thunar, say), or open %1 yourself.")
            .arg(folder);
    if (!QProcess::startDetached(xdgOpen, {QUrl::fromLocalFile(folder).toString()}))
        return QStringLiteral("Couldn’t start xdg-open to show %1.").arg(folder);
    return std::nullopt;
}
