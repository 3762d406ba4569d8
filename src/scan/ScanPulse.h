#pragma once

#include <QString>

#include <mutex>

// Live progress of one running scan. The scanning threads write it; the screen samples it on a timer.
class ScanPulse {
public:
    struct Snapshot {
        qint64 files = 0;
        qint64 bytes = 0;
        QString location;
    };

    // Called each time the scanner lists a folder; keeps the folder's last path component.
    void recordFolder(const QString& folderPath);
    void add(qint64 files, qint64 bytes);
    Snapshot snapshot() const;

private:
    mutable std::mutex m_lock; // guards the three fields below
    qint64 m_files = 0;
    qint64 m_bytes = 0;
    QString m_location;
};
