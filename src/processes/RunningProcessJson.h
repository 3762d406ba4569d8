#pragma once

#include "processes/RunningProcess.h"

#include <QByteArray>

// The process as one JSON object: the row's fields in order, then its priority band's raw value.
QByteArray runningProcessJson(const RunningProcess& process);
