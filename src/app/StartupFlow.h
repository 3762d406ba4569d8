#pragma once

#include <QObject>

#include <chrono>
#include <functional>

class QSettings;

// What the permission checklist tells the start-up steps. The checklist implements it; the steps only
// ask.
class PermissionGate {
public:
    virtual ~PermissionGate() = default;
    // Re-checks every permission now.
    virtual void refresh() = 0;
    // Decides whether the permissions step must be shown, re-checking after `delay` when a permission
    // that used to be granted is missing, and answers once on the main thread.
    virtual void decideAtStartup(std::chrono::milliseconds delay, std::function<void(bool show)> answer) = 0;
};

// The full-window step shown before the sections: welcome once, then permissions when needed.
class StartupFlow : public QObject {
    Q_OBJECT

public:
    enum class Step { none, welcome, permissions };

    static constexpr std::chrono::milliseconds permissionRecheckDelay{1500};

    // `gate` may be null while no permission checklist exists; the permissions step is then never shown.
    StartupFlow(QSettings& defaults, PermissionGate* gate, QObject* parent = nullptr);

    Step step() const { return m_step; }

    // Decides the step each time the main window is shown.
    void windowShown();
    // The user finished the welcome step: remembered for later launches, then on to permissions.
    void finishWelcome();
    // The user left the permissions step: the sections show.
    void leavePermissions();

Q_SIGNALS:
    void stepChanged(StartupFlow::Step step);

private:
    void show(Step step);

    QSettings& m_defaults;
    PermissionGate* m_gate;
    Step m_step = Step::none;
};
