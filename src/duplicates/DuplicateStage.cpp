#include "duplicates/DuplicateStage.h"

#include "duplicates/DuplicateTexts.h"

QString duplicateStageLabel(DuplicateStage stage)
{
    switch (stage) {
    case DuplicateStage::inventory: return DuplicateTexts::stageInventory();
    case DuplicateStage::bucket: return DuplicateTexts::stageBucket();
    case DuplicateStage::prehash: return DuplicateTexts::stagePrehash();
    case DuplicateStage::verify: return DuplicateTexts::stageVerify();
    case DuplicateStage::ready: break;
    }
    return {};
}
