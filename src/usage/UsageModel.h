#pragma once

#include "usage/FastWalk.h"
#include "usage/UsageItem.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <thread>

// What the Disk Usage section shows: one walk of a folder or volume, and the folder the user has opened
// within it. Lives on the main thread. Finished top-level folders arrive with queued calls while the
// walk goes on, so the charts fill in; the live counters are sampled by a timer.
class UsageModel : public QObject {
    Q_OBJECT

public:
    explicit UsageModel(QObject* parent = nullptr);
    ~UsageModel() override;

    // Starts measuring `path`; a walk under way is cancelled first. False, with failure() set, when there
    // is no folder at `path`.
    bool measure(const QString& path);
    void cancel();

    bool isMeasuring() const { return m_walk != nullptr; }
    // The whole tree is measured; false while measuring and after a walk was stopped.
    bool isComplete() const { return m_progress.finished; }
    QString rootPath() const { return m_rootPath; }
    // A sentence saying why the last walk could not be done; empty when it could.
    QString failure() const { return m_failure; }
    // A sentence about the folders the finished walk could not read; empty when it read them all.
    QString unreadableNote() const;

    // The folder the charts show: the root, or a folder opened below it.
    QString shownPath() const;
    qint64 shownTotal() const;
    QList<UsageItem> shownItems() const;
    // Opens the folder item at `index` of shownItems(); false when it has nothing more to show.
    bool open(int index);
    bool canGoBack() const { return !m_opened.empty(); }
    void back();

    // The top-level folder being measured now, and the counters of the walk so far.
    QString scanning() const { return m_scanning; }
    WalkCounters counters() const { return m_counters; }
    // About how many bytes the walk will count in all, when that can be known before it ends: the used
    // space of a volume measured from its top, or the total of an earlier walk of the same folder.
    std::optional<qint64> expectedBytes() const { return m_expectedBytes; }
    // The largest files of the finished walk, largest first; empty until it has finished.
    const std::vector<SizedFile>& largestFiles() const { return m_progress.largestFiles; }

Q_SIGNALS:
    void itemsChanged();
    void progressChanged();
    void measuringChanged(bool measuring);

private:
    void receive(quint64 generation, const Progress& progress);
    void streamEnded(quint64 generation);
    void sampleCounters();
    void stopWalk();

    QString m_rootPath;
    QString m_failure;
    QString m_scanning;
    std::optional<qint64> m_expectedBytes;
    QHash<QString, qint64> m_finishedTotals; // what earlier walks of this run found, by root
    WalkCounters m_counters;
    Progress m_progress;
    std::vector<std::shared_ptr<const DirNode>> m_opened; // the folders opened below the root, in order
    quint64 m_generation = 0; // tells the values of an abandoned walk from the current one's
    QTimer m_sampler;

    std::unique_ptr<FastWalk> m_walk;
    std::jthread m_consumer; // reads the walk's stream and hands each value to the main thread
};
