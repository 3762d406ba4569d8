#include "platform/UserIdentity.h"

#include <QFile>

#include <unistd.h>

namespace {

struct PersonRange {
    std::uint32_t first = 1000;
    std::uint32_t last = 60000;
};

PersonRange readPersonRange()
{
    PersonRange range;
    QFile definitions(QStringLiteral("/etc/login.defs"));
    if (!definitions.open(QIODevice::ReadOnly))
        return range;
    for (const QByteArray& line : definitions.readAll().split('\n')) {
        const QList<QByteArray> words = line.simplified().split(' ');
        bool ok = false;
        const std::uint32_t value = words.value(1).toUInt(&ok);
        if (words.size() < 2 || !ok)
            continue;
        if (words[0] == "UID_MIN")
            range.first = value;
        else if (words[0] == "UID_MAX")
            range.last = value;
    }
    return range;
}

} // namespace

std::uint32_t currentUserID()
{
    return ::getuid();
}

bool isSystemAccount(std::uint32_t uid)
{
    static const PersonRange people = readPersonRange();
    return uid < people.first || uid > people.last;
}
