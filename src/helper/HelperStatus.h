#pragma once

#include <QString>

class HelperManager;

// The helper row of Settings → Services and of "velloru helper status": the registration state, and for an
// installed helper what the last version check found.
QString helperStatusText(const HelperManager& helper);
