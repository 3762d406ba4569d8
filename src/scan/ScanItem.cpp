#include "scan/ScanItem.h"

ScanItem ScanItem::make(QUrl url, qint64 size, RiskLevel risk, QString detail)
{
    return {QUuid::createUuid(), std::move(url), size, risk, std::move(detail)};
}

size_t qHash(const ScanItem& item, size_t seed) noexcept
{
    return qHashMulti(seed, item.id, item.url, item.size, static_cast<int>(item.risk), item.detail);
}
