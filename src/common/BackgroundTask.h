#pragma once

#include <QCoreApplication>
#include <QPointer>

#include <memory>
#include <thread>

// Runs `work` on a thread of its own and hands the result to `done` on the main thread, unless `receiver`
// is gone by then. Returns the thread; keep it while the work may run (destroying it waits for the work).
template <typename Work, typename Done>
std::unique_ptr<std::jthread> runInBackground(QObject* receiver, Work work, Done done)
{
    QPointer<QObject> guard(receiver);
    return std::make_unique<std::jthread>([guard, work = std::move(work), done = std::move(done)]() mutable {
        auto result = work();
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard, done = std::move(done), result = std::move(result)]() mutable {
                if (guard)
                    done(std::move(result));
            },
            Qt::QueuedConnection);
    });
}
