#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

struct ScanGroup;

// The files and folders the user asked Smart Scan to leave out, kept in "scan-exclusions.json" (a JSON
// array of paths) in Velloru's data folder. An excluded folder leaves out everything below it too.
class ScanExclusions {
public:
    explicit ScanExclusions(QString dataFolder);

    const QStringList& paths() const { return m_paths; }
    bool excludes(const QString& path) const;
    // Adds a path and saves; nothing on success, otherwise the sentence that says why it was not saved (the
    // path is still left out for this run).
    std::optional<QString> add(const QString& path);
    // Drops the excluded items from `groups`, and the groups left empty.
    void removeExcluded(QList<ScanGroup>& groups) const;

private:
    QString m_file;
    QStringList m_paths;
};
