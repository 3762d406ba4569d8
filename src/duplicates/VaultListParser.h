#pragma once

#include "duplicates/VaultEntry.h"

#include <QByteArrayView>
#include <QList>

#include <optional>

// Reads the text of "duplicates-vault.json": a JSON array of flat objects whose values are strings and
// numbers. Written for this one shape so that a list of a hundred thousand copies loads in a fraction of
// a second (a general JSON document builds a tree of values first and costs several times as much). Keys
// may come in any order; keys it does not know are skipped when their values are plain. Nothing when the
// text is not such an array or an entry lacks a key or holds the wrong kind of value.
std::optional<QList<VaultEntry>> parseVaultList(QByteArrayView text);
