#pragma once

#include "helper/HelperService.h"

#include <QCoreApplication>
#include <QList>
#include <QThread>

#include <functional>
#include <mutex>

// A service manager the test drives: registrations answer the failures queued for them, in order, and
// `onRegister` runs on the main thread while a successful one waits, as systemd would start a new daemon.
// Registrations arrive on a background thread, so everything is guarded.
class FakeHelperService : public HelperService {
public:
    std::function<void()> onRegister;

    void failNextRegistrations(QList<Error> errors)
    {
        std::lock_guard guard(m_lock);
        m_failures = std::move(errors);
    }
    void setStatus(Status status)
    {
        std::lock_guard guard(m_lock);
        m_status = status;
    }
    // What the service reads after a successful registration (enabled, unless the test says otherwise).
    void setStatusAfterRegistering(Status status)
    {
        std::lock_guard guard(m_lock);
        m_statusAfterRegistering = status;
    }
    int registrations() const
    {
        std::lock_guard guard(m_lock);
        return m_registrations;
    }
    int unregistrations() const
    {
        std::lock_guard guard(m_lock);
        return m_unregistrations;
    }

    Status status() override
    {
        std::lock_guard guard(m_lock);
        return m_status;
    }
    std::optional<Error> registerService() override
    {
        {
            std::lock_guard guard(m_lock);
            ++m_registrations;
            if (!m_failures.isEmpty())
                return m_failures.takeFirst();
            m_status = m_statusAfterRegistering;
        }
        if (onRegister) {
            if (QThread::currentThread() == qApp->thread())
                onRegister();
            else
                QMetaObject::invokeMethod(qApp, onRegister, Qt::BlockingQueuedConnection);
        }
        return std::nullopt;
    }
    std::optional<Error> unregisterService() override
    {
        std::lock_guard guard(m_lock);
        ++m_unregistrations;
        m_status = Status::notInstalled;
        return std::nullopt;
    }

private:
    mutable std::mutex m_lock;
    QList<Error> m_failures;
    Status m_status = Status::notInstalled;
    Status m_statusAfterRegistering = Status::enabled;
    int m_registrations = 0;
    int m_unregistrations = 0;
};
