#include "scan/OwnerClassification.h"

#include "apps/Identifier.h"

namespace {

bool extends(const QString& identifier, const QString& base)
{
    return identifier.size() > base.size() && identifier.startsWith(base)
        && identifier[base.size()] == QLatin1Char('.');
}

} // namespace

OwnerCode classifyOwner(const QString& name, const OwnerContext& context)
{
    const QString identifier = name.toLower();
    if (!isReverseDomainName(name) && !context.installed.contains(identifier))
        return OwnerCode::shared;
    for (const QString& prefix : context.systemPrefixes)
        if (identifier.startsWith(prefix))
            return OwnerCode::system;
    if (identifier == context.ownIdentifier || extends(identifier, context.ownIdentifier))
        return OwnerCode::inUse;

    QString owner;
    if (context.installed.contains(identifier)) {
        owner = identifier;
    } else {
        for (const QString& installed : context.installed) {
            // The longest claim wins, so com.example.app.helper belongs to com.example.app.helper's app
            // when both it and com.example.app are installed.
            if (extends(identifier, installed) && installed.size() > owner.size())
                owner = installed;
        }
    }
    if (owner.isEmpty())
        return OwnerCode::orphan;
    if (context.running.contains(identifier) || context.running.contains(owner))
        return OwnerCode::inUse;
    return OwnerCode::installedNotRunning;
}
