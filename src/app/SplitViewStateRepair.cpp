#include "app/SplitViewStateRepair.h"

#include "common/Log.h"

#include <QSettings>

namespace {

// Narrower than this, a pane cannot show even its icons, and it cannot be dragged back open.
constexpr double minimumUsableWidth = 40.0;

bool isUsable(const QList<PaneFrame>& frames)
{
    if (frames.size() < 2)
        return false;
    for (const PaneFrame& frame : frames)
        if (frame.hidden || frame.width < minimumUsableWidth || frame.height <= 0)
            return false;
    return true;
}

} // namespace

std::optional<QList<PaneFrame>> parsePaneFrames(const QStringList& frames)
{
    QList<PaneFrame> parsed;
    for (const QString& text : frames) {
        const QStringList parts = text.split(QLatin1Char(','));
        if (parts.size() < 4)
            return std::nullopt;
        double numbers[4];
        for (int i = 0; i < 4; ++i) {
            bool ok = false;
            numbers[i] = parts[i].trimmed().toDouble(&ok);
            if (!ok)
                return std::nullopt;
        }
        PaneFrame frame{numbers[0], numbers[1], numbers[2], numbers[3], false};
        if (parts.size() > 4) {
            const QString flag = parts[4].trimmed();
            if (flag != QLatin1String("YES") && flag != QLatin1String("NO"))
                return std::nullopt;
            frame.hidden = flag == QLatin1String("YES");
        }
        parsed.append(frame);
    }
    return parsed;
}

QStringList formatPaneFrames(const QList<PaneFrame>& frames)
{
    QStringList texts;
    for (const PaneFrame& frame : frames)
        texts.append(QStringLiteral("%1, %2, %3, %4, %5")
                         .arg(frame.x, 0, 'f', 6)
                         .arg(frame.y, 0, 'f', 6)
                         .arg(frame.width, 0, 'f', 6)
                         .arg(frame.height, 0, 'f', 6)
                         .arg(frame.hidden ? QStringLiteral("YES") : QStringLiteral("NO")));
    return texts;
}

QStringList removePoisonedSplitViewState(QSettings& defaults)
{
    QStringList removed;
    const QStringList keys = defaults.childKeys();
    for (const QString& key : keys) {
        if (!key.startsWith(splitViewStatePrefix))
            continue;
        const QVariant value = defaults.value(key);
        if (!value.canConvert<QStringList>())
            continue;
        const auto frames = parsePaneFrames(value.toStringList());
        if (!frames || isUsable(*frames))
            continue;
        logLine(QStringLiteral("removing poisoned split-view state %1").arg(key));
        defaults.remove(key);
        removed.append(key);
    }
    return removed;
}
