#pragma once

#include "helper/HelperManager.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

// Brings the running helper in step with the one that came with this Velloru after an update: asks its
// version, re-registers the service in place, and when the old daemon is still the one answering, asks it
// to exit and registers the service afresh. A daemon busy with a job is left alone until the job is done.
class HelperRefresh : public QObject {
    Q_OBJECT

public:
    struct Timing {
        std::chrono::milliseconds afterRebind{8000};       // for the service manager to start the new daemon
        std::chrono::milliseconds afterFailedRebind{6000}; // before asking the old daemon to go
        std::chrono::milliseconds answer{5000};            // for each version and shutdown question
        int registerAttempts = 3;
    };

    HelperRefresh(HelperManager& helper, HelperService& service, QString bundledVersion, Timing timing,
        QObject* parent = nullptr);

    // Asks the running helper its version and records how it compares, without changing anything.
    void check(std::function<void(HelperManager::SyncState)> done);
    // Checks the version and refreshes when it differs; `done` gets what the helper is at the end.
    // A check that is already running only adds `done` to those called when it ends.
    void checkAndRefresh(std::function<void(HelperManager::SyncState)> done = {});

private:
    void checked(HelperManager::SyncState state);
    void rebindAnswered(const std::optional<HelperService::Error>& error);
    void afterRebind();
    void shutdownAnswered(HelperManager::ShutdownOutcome outcome);
    void unregistered();
    void registerAnswered(int attempt, const std::optional<HelperService::Error>& error);
    void registered();
    void end(HelperManager::SyncState state);
    // Runs a blocking service call on a thread of its own, answering on the main thread.
    void onServiceThread(std::function<std::optional<HelperService::Error>(HelperService&)> work,
        std::function<void(std::optional<HelperService::Error>)> then);

    HelperManager& m_helper;
    HelperService& m_service;
    QString m_bundledVersion;
    Timing m_timing;
    bool m_checking = false;
    bool m_staleDaemonStopped = false; // the old daemon accepted to exit, rather than being gone already
    QList<std::function<void(HelperManager::SyncState)>> m_waiting;
    std::unique_ptr<std::jthread> m_serviceCall;
};
