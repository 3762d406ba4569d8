#pragma once

#include "duplicates/DuplicateVaultController.h"

#include <QByteArray>
#include <QTextStream>

#include <functional>

// Runs one vault operation to its end: `start` begins it on `vault`; false when it could not begin.
bool runVaultOperation(DuplicateVaultController& vault, const std::function<bool()>& start);

// The outcome of moving copies into the vault, as JSON and as lines for people.
QByteArray moveResultJson(const VaultMoveResult& result);
void printMoveResult(const VaultMoveResult& result, QTextStream& out);

// Copies that stayed where they were, as a JSON array and as lines.
QByteArray failuresJson(const QList<VaultFailure>& failures);
void printFailures(const QList<VaultFailure>& failures, const QString& heading, QTextStream& out);

// The exit status of a vault command: 0 only when nothing failed and the list and the log were saved.
int vaultExitStatus(bool somethingFailed, const DuplicateVaultController& vault, const AuditLog& log, QTextStream& err);
