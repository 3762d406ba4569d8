#include "app/StartupFlow.h"

#include "app/UserDefaults.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSettings>
#include <QThread>

StartupFlow::StartupFlow(QSettings& defaults, PermissionGate* gate, QObject* parent)
    : QObject(parent)
    , m_defaults(defaults)
    , m_gate(gate)
{
}

void StartupFlow::windowShown()
{
    Q_ASSERT(QThread::currentThread() == QCoreApplication::instance()->thread());

    if (m_defaults.value(DefaultsKey::debugPermissions, false).toBool()) {
        if (m_gate) {
            m_gate->refresh();
            show(Step::permissions);
        }
        return;
    }
    if (!m_defaults.value(DefaultsKey::onboardingComplete, false).toBool()) {
        show(Step::welcome);
        return;
    }
    show(Step::none);
    if (!m_gate)
        return;
    QPointer<StartupFlow> self(this);
    m_gate->decideAtStartup(permissionRecheckDelay, [self](bool showStep) {
        if (self && showStep)
            self->show(Step::permissions);
    });
}

void StartupFlow::finishWelcome()
{
    m_defaults.setValue(DefaultsKey::onboardingComplete, true);
    m_defaults.sync();
    if (!m_gate)
        return show(Step::none);
    // Nothing has been checked yet on a first launch: without this the step would call everything granted.
    m_gate->refresh();
    show(Step::permissions);
}

void StartupFlow::leavePermissions()
{
    show(Step::none);
}

void StartupFlow::show(Step step)
{
    if (step == m_step)
        return;
    m_step = step;
    Q_EMIT stepChanged(step);
}
