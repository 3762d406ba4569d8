#include "ui/usage/UsageDetails.h"

#include "common/ByteCount.h"
#include "ui/widgets/PathLabel.h"
#include "ui/widgets/WrappedLabel.h"

#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLocale>

namespace {

QLabel* valueLabel(QWidget* parent, const char* objectName)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(objectName));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QString fileCountText(qint64 count)
{
    return count == 1 ? QStringLiteral("1 file") : QStringLiteral("%1 files").arg(QLocale().toString(count));
}

} // namespace

UsageDetails::UsageDetails(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("usageDetails"));
    auto* form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    m_name = new WrappedLabel({}, QStringLiteral("detailName"), this);
    m_name->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont bold = m_name->font();
    bold.setBold(true);
    m_name->setFont(bold);
    form->addRow(m_name);
    m_path = new PathLabel(this);
    m_path->setObjectName(QStringLiteral("detailPath"));
    form->addRow(QStringLiteral("Path:"), m_path);
    m_size = valueLabel(this, "detailSize");
    form->addRow(QStringLiteral("On disk:"), m_size);
    m_share = valueLabel(this, "detailShare");
    form->addRow(QStringLiteral("Share:"), m_share);
    m_files = valueLabel(this, "detailFiles");
    form->addRow(QStringLiteral("Files:"), m_files);
    clear();
}

void UsageDetails::show(const UsageItem& item, qint64 total)
{
    m_name->setText(
        item.kind == UsageItem::Kind::package ? QStringLiteral("%1 (shown whole)").arg(item.name) : item.name);
    m_path->setPath(item.path);
    m_size->setText(formatBytes(item.bytes));
    m_share->setText(QStringLiteral("%1% of the folder shown").arg(100.0 * shareOf(item.bytes, total), 0, 'f', 1));
    m_files->setText(fileCountText(item.fileCount));
}

void UsageDetails::showFolder(const QString& path, qint64 total, qint64 fileCount)
{
    const QString name = QFileInfo(path).fileName();
    m_name->setText(name.isEmpty() ? path : name);
    m_path->setPath(path);
    m_size->setText(formatBytes(total));
    m_share->setText(QStringLiteral("the whole folder shown"));
    m_files->setText(fileCountText(fileCount));
}

void UsageDetails::clear()
{
    m_name->setText(QStringLiteral("Point at a cell to see what it holds."));
    for (QLabel* label : {m_size, m_share, m_files})
        label->clear();
    m_path->setPath({});
}
