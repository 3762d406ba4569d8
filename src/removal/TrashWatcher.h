#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

// Watches the user's Trash so that screens showing Trash contents or put-back buttons refresh when it
// changes, for example when the user empties it in the file manager. Main thread only.
class TrashWatcher : public QObject {
    Q_OBJECT

public:
    // How often the Trash is re-checked between events, and re-opened if it was deleted or replaced.
    static constexpr int tickIntervalMs = 2000;

    // Watches `trashFolder` (the folder holding files/ and info/), the home Trash by default.
    explicit TrashWatcher(QString trashFolder = {}, QObject* parent = nullptr);

    quint64 revision() const { return m_revision; }
    bool isWatching() const { return m_watching; }
    const QString& fingerprint() const { return m_fingerprint; }

    void start();
    void stop();

    // The entry count of files/ (".DS_Store" left out) and "@" and its modification time in seconds.
    static QString fingerprintOf(const QString& filesFolder);

Q_SIGNALS:
    void revisionChanged(quint64 revision);

private:
    void check();
    void watchWhatExists();

    QString m_folder;
    quint64 m_revision = 0;
    bool m_watching = false;
    QString m_fingerprint;
    QFileSystemWatcher m_source; // inotify on the Trash folder and its files/ folder
    QTimer m_ticker;
};
