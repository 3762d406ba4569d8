#pragma once

#include "TestSupport.h"

#include <QByteArray>
#include <QString>

// A minimal application entry with this name and Exec line.
inline QByteArray appEntry(const QByteArray& name, const QByteArray& exec, const QByteArray& extra = {})
{
    return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + exec + "\n" + extra;
}
