#include "platform/FileAccess.h"

#include <QFile>

#include <cstring>
#include <unistd.h>

bool canWriteInFolder(const QString& path)
{
    return ::access(QFile::encodeName(path).constData(), W_OK | X_OK) == 0;
}

QString systemErrorSentence(int error)
{
    const QString text = QString::fromLocal8Bit(std::strerror(error));
    if (text.isEmpty())
        return QStringLiteral("(error %1)").arg(error);
    return text + QLatin1Char('.');
}
