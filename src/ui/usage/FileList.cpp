#include "ui/usage/FileList.h"

#include "common/ByteCount.h"
#include "ui/widgets/WrappedLabel.h"

#include <QFileInfo>
#include <QHeaderView>
#include <QTreeWidget>
#include <QVBoxLayout>

FileList::FileList(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("usageFileList"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_title = new WrappedLabel({}, QStringLiteral("fileListTitle"), this);
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    layout->addWidget(m_title);
    m_tree = new QTreeWidget(this);
    m_tree->setObjectName(QStringLiteral("fileListTree"));
    m_tree->setRootIsDecorated(false);
    m_tree->setUniformRowHeights(true);
    m_tree->setTextElideMode(Qt::ElideMiddle);
    m_tree->setHeaderLabels({QStringLiteral("Name"), QStringLiteral("Size"), QStringLiteral("Folder")});
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_tree->header()->setSectionResizeMode(2, QHeaderView::Stretch);
    layout->addWidget(m_tree, 1);
    connect(m_tree, &QTreeWidget::itemSelectionChanged, this, &FileList::selectedChanged);
}

void FileList::setFiles(const QString& title, QList<UsageItem> files, bool showFolders)
{
    m_title->setText(title);
    m_files = std::move(files);
    m_tree->clear();
    m_tree->setColumnHidden(2, !showFolders);
    for (const UsageItem& file : std::as_const(m_files)) {
        auto* row
            = new QTreeWidgetItem(m_tree, {file.name, formatBytes(file.bytes), QFileInfo(file.path).absolutePath()});
        row->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        for (int column = 0; column < 3; ++column)
            row->setToolTip(column, file.path);
    }
}

int FileList::selectedIndex() const
{
    const QList<QTreeWidgetItem*> selected = m_tree->selectedItems();
    return selected.isEmpty() ? -1 : m_tree->indexOfTopLevelItem(selected.first());
}
