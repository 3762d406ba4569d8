#pragma once

#include "helper/HelperManager.h"

#include <QString>
#include <QStringList>

// Compacts and reindexes Thunderbird's message index (global-messages-db.sqlite in each profile), the
// fix for slow search. Quits Thunderbird first; messages are untouched. Runs without the helper.
namespace MailOptimizer {

// Every profile's message index under the Thunderbird folders of `home`, in listing order.
QStringList findDatabases(const QString& home);

// Quits Thunderbird, then compacts each database in turn, stopping at the first that fails. Blocking:
// call it off the main thread.
TaskResult optimize(const QString& home);

} // namespace MailOptimizer
