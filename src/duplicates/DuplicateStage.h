#pragma once

#include <QString>

// The stages of a duplicate scan as the progress view shows them, in the order they run.
enum class DuplicateStage { inventory, bucket, prehash, verify, ready };

// The label shown for a stage; empty for `ready`.
QString duplicateStageLabel(DuplicateStage stage);
