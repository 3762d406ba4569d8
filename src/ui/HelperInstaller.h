#pragma once

#include <QObject>

#include <memory>
#include <thread>

class HelperManager;
class HelperService;

// Installs the privileged helper for a Set Up button. The administrator's approval can take a while, so the
// registration runs on a thread of its own and its answer goes to the helper's manager on the main thread,
// whose `changed` signal then tells every page. Main thread only.
class HelperInstaller : public QObject {
    Q_OBJECT

public:
    HelperInstaller(HelperManager& helper, HelperService& service, QObject* parent = nullptr);
    ~HelperInstaller() override;

    // Does nothing while an installation is under way.
    void install();
    bool isInstalling() const { return m_task != nullptr; }

Q_SIGNALS:
    // The installation ended; the helper's state says how.
    void finished();

private:
    HelperManager& m_helper;
    HelperService& m_service;
    std::unique_ptr<std::jthread> m_task;
};
