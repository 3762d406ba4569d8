#pragma once

#include "removal/PrivilegedTrash.h"

#include <functional>

// Moves root-owned items to the user's Trash through the helper. It opens a connection of its own for
// each item and waits for the answer, so the Trash mover can use it from any thread.
class HelperTrash : public PrivilegedTrash {
public:
    // `isReady` tells whether the helper is installed and switched on; `userTrash` is the user's home Trash.
    HelperTrash(QString socketPath, std::function<bool()> isReady, QString userTrash);

    bool isReady() const override;
    Outcome moveToTrash(const QString& path, std::chrono::seconds timeout) override;

private:
    QString m_socketPath;
    std::function<bool()> m_isReady;
    QString m_userTrash;
};
