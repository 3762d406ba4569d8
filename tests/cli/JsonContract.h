#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>

// Checks a command's JSON against its contract, written as JSON itself: a string names the type a value
// must have ("string", "integer", "number", "boolean", "string|null"); an object lists exactly the keys an
// object has, a key ending in "?" being one that may be left out; an array holds the contract every
// element of the array meets. Answers one line per breach, naming where it is ("groups[0].items[1].size").
QStringList contractBreaches(const QJsonValue& value, const QJsonValue& contract, const QString& where = {});
