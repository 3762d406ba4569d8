#pragma once

#include "apps/InstalledApp.h"
#include "platform/ProcessControl.h"
#include "platform/ProcessStats.h"
#include "platform/ProcessTable.h"
#include "processes/ProcessCPUSample.h"
#include "processes/ProcessSnapshot.h"
#include "scan/AppMatcher.h"

#include <QHash>
#include <QPair>

#include <memory>

// Takes samples of the process table, one after another: CPU shares come from the difference to the previous
// sample (a process seen for the first time gets its average since it started, as ps gives), and what does not
// change while a process runs (its program, its app, its name) is read once and kept. Not thread-safe: one
// thread at a time.
class ProcessSampling {
public:
    explicit ProcessSampling(QString procRoot = QStringLiteral("/proc"));
    ~ProcessSampling();

    // `apps` are the installed apps that processes are matched to. `helperMemory` is what the helper last read
    // of every process; it fills in the processes /proc hides from this user.
    ProcessSnapshot sample(const QList<InstalledApp>& apps, const std::optional<QList<ProcessMemory>>& helperMemory);

private:
    // What is kept of a process from one sample to the next.
    struct Known {
        QByteArray command; // a change means the process started another program
        ProcessInfo info;
        QString name;
        std::optional<qsizetype> app; // its position in m_apps
        ProcessCPUSample cpu;
        int waitingSamples = 0; // samples in a row it spent waiting on a device
        quint64 seenIn = 0;     // the last sample that listed it
    };
    using Key = QPair<int, quint64>;

    void useApps(const QList<InstalledApp>& apps);
    std::optional<qsizetype> appOf(const ProcessInfo& info) const;
    RunningProcess row(const ProcessStat& stat, Known& known, double now, bool isNew);
    QString userName(unsigned uid);
    void addHidden(ProcessSnapshot& snapshot, const QList<ProcessMemory>& helperMemory);

    QString m_procRoot;
    ProcessStatReader m_reader;
    bool m_othersHidden = false; // read once: how /proc is mounted does not change while Velloru runs
    QList<InstalledApp> m_apps;
    std::unique_ptr<AppMatcher> m_matcher;
    QHash<Key, Known> m_known;
    quint64 m_sampleNumber = 0;
    QHash<unsigned, QString> m_userNames;
    unsigned m_me = 0;
};
