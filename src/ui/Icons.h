#pragma once

#include "app/Destination.h"

#include <QIcon>

// Section icons come from the desktop's icon theme, with a bundled drawing when the theme lacks one.
QIcon sectionIcon(Destination destination);
// The icon-theme name used for a section.
QString sectionIconName(Destination destination);
