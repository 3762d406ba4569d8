#pragma once

#include "duplicates/EngineStats.h"
#include "duplicates/FileRecord.h"
#include "platform/FileReading.h"

#include <optional>
#include <string>

// Why a recorded file could not take part in a comparison.
enum class ReadProblem {
    none,
    notPresentLocally, // a cloud placeholder: never downloaded
    unreadable,
    changed, // replaced, rewritten or resized since the inventory listed it
};

// A recorded file opened for reading, checked to be still the file the inventory saw: a file replaced or
// rewritten between the stages is left out rather than compared under its old identity.
struct RecordedFile {
    std::optional<ReadOnlyFile> file;
    ReadProblem problem = ReadProblem::none;

    static RecordedFile open(const std::string& path, const FileRecord& record);
};

// The problem a failed open stands for: a file gone since the listing has changed.
ReadProblem problemOpening(int error);
// Whether an opened file is still the one the inventory listed (inode, length and content time), given
// its status (nothing when that could not be read; `errno` says why).
ReadProblem problemSince(const std::optional<FileStatus>& status, const FileRecord& record);
// The problem a failed read stands for.
ReadProblem problemFromError(int error);
// Counts a file left out for `problem` under its reason, so every file the user is not shown is told of.
void countLeftOut(ReadProblem problem, EngineStats& counts);
