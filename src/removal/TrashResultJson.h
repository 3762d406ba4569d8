#pragma once

#include "removal/TrashResult.h"

#include <QByteArray>

// A removal's result as JSON for the headless commands: {"freed", "moved": [{path, size, trashPath}],
// "failed": [{path, reason}]}.
QByteArray trashResultJson(const TrashResult& result);
