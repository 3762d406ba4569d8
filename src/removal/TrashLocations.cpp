#include "removal/TrashLocations.h"

#include "common/ByteCount.h"
#include "platform/TrashStore.h"
#include "removal/ItemSize.h"
#include "removal/TrashTexts.h"

#include <QDir>

namespace TrashLocations {

Summary summarize()
{
    Summary summary;
    for (const TrashFolder& folder : existingTrashFolders()) {
        const QFileInfoList entries
            = QDir(folder.filesPath())
                  .entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        if (entries.isEmpty())
            continue;
        summary.locations.append(folder.path);
        summary.items += entries.size();
        for (const QFileInfo& entry : entries)
            summary.bytes = checkedAdd(summary.bytes, measureItemSize(entry.absoluteFilePath()));
        if (!folder.isHome())
            summary.otherVolumesHoldItems = true;
    }
    return summary;
}

QString emptyWarning(const Summary& summary)
{
    return summary.otherVolumesHoldItems ? TrashTexts::emptyWarningWithVolumes() : TrashTexts::emptyWarning();
}

} // namespace TrashLocations
