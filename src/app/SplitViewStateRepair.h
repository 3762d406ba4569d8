#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class QSettings;

// The main window keeps its split-pane layout under a key beginning with this prefix, as a list of
// frame strings "x, y, width, height, hidden", one per pane.
inline const QString splitViewStatePrefix = QStringLiteral("NSSplitView Subview Frames");

struct PaneFrame {
    double x = 0, y = 0, width = 0, height = 0;
    bool hidden = false;
};

// Nothing when any string is not a frame.
std::optional<QList<PaneFrame>> parsePaneFrames(const QStringList& frames);
QStringList formatPaneFrames(const QList<PaneFrame>& frames);

// Removes, before the window restores its layout, every saved split-pane state that would open the window
// with the sidebar or the detail pane collapsed or hidden, logging each key. A state that cannot be read
// as frame strings is left untouched. Returns the removed keys.
QStringList removePoisonedSplitViewState(QSettings& defaults);
