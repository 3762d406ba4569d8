#pragma once

#include "duplicates/Candidates.h"
#include "duplicates/DuplicateEngine.h"

#include <functional>

struct Inventory;

// Samples every candidate still unsampled, on `workers` threads. The files are visited folder by folder,
// in inode order within a folder (close to their order on disk): each folder is opened once and its files
// by name. Fills in the candidates' samples and states, and adds the bytes read and the files that could
// not be read to `shared`.
void sampleCandidates(const Inventory& inventory, Candidates& candidates, int workers, DuplicateEngine::Shared& shared,
    const DuplicateEngine::Callbacks& callbacks, const std::function<bool()>& cancelled);
