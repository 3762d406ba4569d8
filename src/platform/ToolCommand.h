#pragma once

#include <QString>
#include <QStringList>

// A command line of an OS tool: the program and its arguments. The platform layer says which tools and
// arguments; the feature that needs them runs them.
struct ToolCommand {
    QString program;
    QStringList arguments;
};
