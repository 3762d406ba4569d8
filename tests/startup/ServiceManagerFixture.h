#pragma once

#include "TestSupport.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

#include <cstdio>

// The user's service manager for a test: a real `systemd --user` with its own runtime folder, run in a mount
// namespace of its own where /run says the system was booted with systemd (which systemd checks before it
// starts a user instance). Where that cannot run, a scripted systemctl stand-in on PATH keeps the enablement
// links as systemctl would, and the test prints that it used it. systemctl and the manager both use the
// test's XDG_CONFIG_HOME, so the units are the ones the test writes there.
class ServiceManagerFixture {
public:
    ServiceManagerFixture()
    {
        m_oldPath = qgetenv("PATH");
        m_oldRuntime = qgetenv("XDG_RUNTIME_DIR");
        const QString runtime = m_tree.makeFolder(QStringLiteral("runtime"));
        QFile::setPermissions(runtime, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        qputenv("XDG_RUNTIME_DIR", runtime.toUtf8());
        if (startRealManager(runtime))
            return;
        std::printf("[ INFO     ] no systemd --user here (%s) — using a scripted systemctl stand-in on PATH\n",
            qPrintable(m_whyNotReal));
        installStandIn();
    }

    ~ServiceManagerFixture()
    {
        stop();
        qputenv("PATH", m_oldPath);
        if (m_oldRuntime.isEmpty())
            qunsetenv("XDG_RUNTIME_DIR");
        else
            qputenv("XDG_RUNTIME_DIR", m_oldRuntime);
    }

    bool isReal() const { return m_real; }

    // From now on the manager answers nothing (it stops; the stand-in's list-units fails).
    void stop()
    {
        if (m_manager.state() != QProcess::NotRunning) {
            m_manager.terminate();
            if (!m_manager.waitForFinished(5000)) {
                m_manager.kill();
                m_manager.waitForFinished(2000);
            }
        }
        QFile::remove(m_tree.path(QStringLiteral("bin/running")));
    }

private:
    bool startRealManager(const QString& runtime)
    {
        if (!runningAsRoot() || QStandardPaths::findExecutable(QStringLiteral("unshare")).isEmpty()
            || !QFileInfo::exists(QStringLiteral("/lib/systemd/systemd"))) {
            m_whyNotReal = QStringLiteral("needs root, unshare and /lib/systemd/systemd");
            return false;
        }
        m_manager.setProcessChannelMode(QProcess::MergedChannels);
        m_manager.start(QStringLiteral("unshare"),
            {QStringLiteral("--mount"), QStringLiteral("--propagation"), QStringLiteral("private"),
                QStringLiteral("sh"), QStringLiteral("-c"),
                QStringLiteral("mount -t tmpfs tmpfs /run && mkdir -p /run/systemd/system && exec "
                               "/lib/systemd/systemd --user")});
        QElapsedTimer waited;
        waited.start();
        const QString socket = runtime + QStringLiteral("/systemd/private");
        while (waited.elapsed() < 10000 && m_manager.state() != QProcess::NotRunning) {
            if (QFileInfo::exists(socket)) {
                m_real = true;
                return true;
            }
            QThread::msleep(50);
        }
        m_manager.kill();
        m_manager.waitForFinished(2000);
        m_whyNotReal = QStringLiteral("systemd --user did not start: ")
            + QString::fromUtf8(m_manager.readAll()).trimmed().section(QLatin1Char('\n'), -1);
        return false;
    }

    void installStandIn()
    {
        m_tree.write(QStringLiteral("bin/running"), "");
        const QString script = m_tree.write(QStringLiteral("bin/systemctl"), R"SH(#!/bin/sh
# Keeps enablement links in $XDG_CONFIG_HOME/systemd/user as systemctl --user does.
dir="$XDG_CONFIG_HOME/systemd/user"
while [ "${1#-}" != "$1" ]; do shift; done
verb="$1"; shift; [ "$1" = "--" ] && shift
case "$verb" in
list-units) [ -e "$(dirname "$0")/running" ] || { echo "Failed to connect to bus" >&2; exit 1; }; echo "[]" ;;
enable) mkdir -p "$dir/default.target.wants" && ln -sf "$dir/$1" "$dir/default.target.wants/$1" ;;
disable) rm -f "$dir/default.target.wants/$1" ;;
mask) ln -sf /dev/null "$dir/$1" ;;
unmask) [ -L "$dir/$1" ] && rm -f "$dir/$1"; true ;;
stop) true ;;
is-enabled)
  if [ "$(readlink "$dir/$1")" = /dev/null ]; then echo masked; exit 1; fi
  if [ -e "$dir/default.target.wants/$1" ]; then echo enabled; exit 0; fi
  echo disabled; exit 1 ;;
*) echo "unknown $verb" >&2;
        exit 1;
        ;
esac
)SH");
        QFile::setPermissions(script, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        qputenv("PATH", m_tree.path(QStringLiteral("bin")).toUtf8() + ':' + m_oldPath);
    }

    FixtureTree m_tree;
    QProcess m_manager;
    bool m_real = false;
    QString m_whyNotReal;
    QByteArray m_oldPath;
    QByteArray m_oldRuntime;
};
