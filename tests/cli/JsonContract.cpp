#include "JsonContract.h"

#include <QSet>

#include <cmath>

namespace {

bool hasType(const QJsonValue& value, const QString& type)
{
    if (type == QLatin1String("string"))
        return value.isString();
    if (type == QLatin1String("integer"))
        return value.isDouble() && std::trunc(value.toDouble()) == value.toDouble();
    if (type == QLatin1String("number"))
        return value.isDouble();
    if (type == QLatin1String("boolean"))
        return value.isBool();
    if (type == QLatin1String("null"))
        return value.isNull();
    return false;
}

QString describe(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Null: return QStringLiteral("null");
    case QJsonValue::Bool: return QStringLiteral("a boolean");
    case QJsonValue::Double: return QStringLiteral("the number %1").arg(value.toDouble());
    case QJsonValue::String: return QStringLiteral("a string");
    case QJsonValue::Array: return QStringLiteral("an array");
    case QJsonValue::Object: return QStringLiteral("an object");
    case QJsonValue::Undefined: break;
    }
    return QStringLiteral("nothing");
}

QString child(const QString& where, const QString& key)
{
    return where.isEmpty() ? key : where + QLatin1Char('.') + key;
}

} // namespace

QStringList contractBreaches(const QJsonValue& value, const QJsonValue& contract, const QString& where)
{
    const QString place = where.isEmpty() ? QStringLiteral("the top") : where;
    if (contract.isString()) {
        for (const QString& type : contract.toString().split(QLatin1Char('|')))
            if (hasType(value, type))
                return {};
        return {QStringLiteral("%1 is %2, not %3").arg(place, describe(value), contract.toString())};
    }
    if (contract.isArray()) {
        if (!value.isArray())
            return {QStringLiteral("%1 is %2, not an array").arg(place, describe(value))};
        QStringList breaches;
        const QJsonArray elements = value.toArray();
        for (qsizetype i = 0; i < elements.size(); ++i)
            breaches += contractBreaches(
                elements[i], contract.toArray().first(), QStringLiteral("%1[%2]").arg(where).arg(i));
        return breaches;
    }
    if (!value.isObject())
        return {QStringLiteral("%1 is %2, not an object").arg(place, describe(value))};
    QStringList breaches;
    const QJsonObject object = value.toObject();
    const QJsonObject keys = contract.toObject();
    QSet<QString> known;
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        const bool optional = it.key().endsWith(QLatin1Char('?'));
        const QString key = optional ? it.key().chopped(1) : it.key();
        known.insert(key);
        if (!object.contains(key)) {
            if (!optional)
                breaches << QStringLiteral("%1 has no key “%2”").arg(place, key);
            continue;
        }
        breaches += contractBreaches(object.value(key), it.value(), child(where, key));
    }
    for (const QString& key : object.keys())
        if (!known.contains(key))
            breaches << QStringLiteral("%1 has a key the contract does not know: “%2”").arg(place, key);
    return breaches;
}
