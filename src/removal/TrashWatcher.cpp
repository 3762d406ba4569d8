#include "removal/TrashWatcher.h"

#include "platform/TrashStore.h"

#include <QDir>
#include <QFileInfo>

TrashWatcher::TrashWatcher(QString trashFolder, QObject* parent)
    : QObject(parent)
    , m_folder(trashFolder.isEmpty() ? homeTrashPath() : std::move(trashFolder))
{
    m_ticker.setInterval(tickIntervalMs);
    connect(&m_ticker, &QTimer::timeout, this, &TrashWatcher::check);
    connect(&m_source, &QFileSystemWatcher::directoryChanged, this, &TrashWatcher::check);
}

void TrashWatcher::start()
{
    if (m_watching)
        return;
    m_watching = true;
    m_fingerprint = fingerprintOf(m_folder + QStringLiteral("/files"));
    watchWhatExists();
    m_ticker.start();
}

void TrashWatcher::stop()
{
    if (!m_watching)
        return;
    m_ticker.stop();
    const QStringList watched = m_source.directories();
    if (!watched.isEmpty())
        m_source.removePaths(watched);
    m_watching = false;
}

QString TrashWatcher::fingerprintOf(const QString& filesFolder)
{
    const QFileInfo info(filesFolder);
    qsizetype count = 0;
    if (info.isDir()) {
        const QStringList names
            = QDir(filesFolder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        for (const QString& name : names)
            count += name == QLatin1String(".DS_Store") ? 0 : 1;
    }
    const qint64 modified = info.exists() ? info.lastModified().toSecsSinceEpoch() : 0;
    return QStringLiteral("%1@%2").arg(count).arg(modified);
}

void TrashWatcher::check()
{
    if (!m_watching)
        return;
    // A Trash folder that was deleted drops out of inotify; once it is back, it is watched again.
    watchWhatExists();
    const QString now = fingerprintOf(m_folder + QStringLiteral("/files"));
    if (now == m_fingerprint)
        return;
    m_fingerprint = now;
    ++m_revision;
    Q_EMIT revisionChanged(m_revision);
}

void TrashWatcher::watchWhatExists()
{
    const QStringList watched = m_source.directories();
    for (const QString& folder : {m_folder, m_folder + QStringLiteral("/files")})
        if (!watched.contains(folder) && QFileInfo(folder).isDir())
            m_source.addPath(folder);
    // While there is no Trash, the folder it will be made in is watched, so that a Trash made and emptied
    // again between two ticks is still seen; once it exists, its own events are enough.
    const QString parent = QFileInfo(m_folder).path();
    const bool trashExists = QFileInfo(m_folder).isDir();
    if (!trashExists && !watched.contains(parent) && QFileInfo(parent).isDir())
        m_source.addPath(parent);
    else if (trashExists && watched.contains(parent))
        m_source.removePath(parent);
}
