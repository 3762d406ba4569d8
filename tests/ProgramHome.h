#pragma once

#include "TestSupport.h"

// A home folder of its own for the velloru program run as a child process: HOME and every XDG folder point
// into a fixture tree, and the application folders are the tree's "share".
class ProgramHome {
public:
    // A path below the home folder (the home folder itself when empty).
    QString path(const QString& relative = {}) const
    {
        return m_tree.path(relative.isEmpty() ? QStringLiteral("home") : QStringLiteral("home/") + relative);
    }
    FixtureTree& tree() { return m_tree; }
    const FixtureTree& tree() const { return m_tree; }

    // The variables that point the program here.
    QList<QPair<QString, QString>> environment() const
    {
        const QString home = path();
        return {{QStringLiteral("HOME"), home}, {QStringLiteral("XDG_CACHE_HOME"), home + QStringLiteral("/.cache")},
            {QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config")},
            {QStringLiteral("XDG_DATA_HOME"), home + QStringLiteral("/.local/share")},
            {QStringLiteral("XDG_STATE_HOME"), home + QStringLiteral("/.local/state")},
            {QStringLiteral("XDG_DATA_DIRS"), m_tree.path(QStringLiteral("share"))}};
    }

    CommandRun run(const QStringList& arguments, const QList<QPair<QString, QString>>& extra = {}) const
    {
        return runVelloru(arguments, environment() + extra);
    }

private:
    FixtureTree m_tree;
};
