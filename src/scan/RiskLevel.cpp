#include "scan/RiskLevel.h"

QString riskBadge(RiskLevel risk)
{
    switch (risk) {
    case RiskLevel::safe: return {};
    case RiskLevel::caution: return QStringLiteral("Review");
    case RiskLevel::sensitive: return QStringLiteral("Sensitive");
    case RiskLevel::unproven: return QStringLiteral("Unproven");
    }
    Q_UNREACHABLE();
}

QString riskName(RiskLevel risk)
{
    switch (risk) {
    case RiskLevel::safe: return QStringLiteral("safe");
    case RiskLevel::caution: return QStringLiteral("caution");
    case RiskLevel::sensitive: return QStringLiteral("sensitive");
    case RiskLevel::unproven: return QStringLiteral("unproven");
    }
    Q_UNREACHABLE();
}
