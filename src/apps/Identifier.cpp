#include "apps/Identifier.h"

#include <QList>
#include <QString>

#include <array>

namespace {

bool isTopLevelDomain(QStringView part)
{
    static constexpr std::array generic{u"com", u"org", u"net", u"edu", u"gov", u"mil", u"int", u"io", u"app", u"dev",
        u"info", u"biz", u"xyz", u"page", u"tech", u"site", u"cloud", u"name", u"pro"};
    if (part.size() == 2)
        return part[0].isLower() && part[1].isLower();
    for (const char16_t* candidate : generic)
        if (part == QStringView(candidate))
            return true;
    return false;
}

bool isIdentifierPart(QStringView part)
{
    if (part.isEmpty() || !(part[0].isLetter() || part[0] == QLatin1Char('_')))
        return false;
    for (const QChar c : part)
        if (!(c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('-')) || c.unicode() > 0x7f)
            return false;
    return true;
}

} // namespace

bool isReverseDomainName(QStringView name)
{
    const auto parts = name.split(QLatin1Char('.'));
    if (parts.size() < 3 || !isTopLevelDomain(parts.first()))
        return false;
    for (const QStringView part : parts)
        if (!isIdentifierPart(part))
            return false;
    return true;
}

QString identifierDomain(QStringView identifier)
{
    const auto parts = identifier.split(QLatin1Char('.'));
    if (parts.size() < 2)
        return {};
    return parts[1].toString() + QLatin1Char('.') + parts[0].toString();
}
