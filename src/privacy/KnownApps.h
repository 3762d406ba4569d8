#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// A browser or chat app whose data Velloru can clear, with the folders (relative to the home folder)
// where its data lives: the native package's folder first, then the Flatpak one.
struct KnownApp {
    QString name;
    QStringList dataFolders;
};

// The eight browsers of the browser-privacy feature. Arc and Safari have no Linux build, so they list no
// folder and are never present.
const QList<KnownApp>& knownBrowsers();
// The six chat apps whose media caches can be cleared.
const QList<KnownApp>& knownChatApps();

// How many of `apps` have at least one of their data folders under `home`.
int countPresent(const QList<KnownApp>& apps, const QString& home);
