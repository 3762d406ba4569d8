#pragma once

#include <QList>
#include <QString>

#include <optional>

// The one-click maintenance tasks the helper runs as root. The raw value goes to the helper verbatim.
struct MaintenanceTask {
    QString rawValue;
    QString title;
    QString symbol;
    QString shortLine;
    QString description;
    // Tasks whose effect Velloru measures itself: free space, or cached file memory.
    enum class Measure { none, freeSpace, cachedMemory } measure = Measure::none;
};

namespace Maintenance {

const QList<MaintenanceTask>& tasks();
std::optional<MaintenanceTask> task(const QString& rawValue);

// Activity entries of maintenance go under this feature name.
inline const QString feature = QStringLiteral("Maintenance");
// How long the helper may take for one task.
inline constexpr int taskTimeoutSeconds = 120;

// The measured change as shown after the helper's message: "1.2 MB back" or "300 MB released"; a negative
// change shows as zero. Nothing when either reading is missing.
std::optional<QString> measuredChange(
    const MaintenanceTask& task, std::optional<qint64> before, std::optional<qint64> after);

} // namespace Maintenance
