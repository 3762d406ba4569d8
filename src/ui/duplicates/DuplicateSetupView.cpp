#include "ui/duplicates/DuplicateSetupView.h"

#include "duplicates/DuplicateScan.h"
#include "ui/widgets/WrappedLabel.h"

#include <QComboBox>
#include <QDir>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The local folders among dropped URLs. (A dropped name is only looked at as text here; the scan is what
// opens it, off the main thread, and reports a folder it cannot read.)
QStringList localPaths(const QMimeData* data)
{
    QStringList paths;
    if (!data || !data->hasUrls())
        return paths;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile())
            paths.append(QDir::cleanPath(url.toLocalFile()));
    return paths;
}

struct SizeChoice {
    const char* label;
    std::uint64_t bytes;
};
constexpr SizeChoice sizeChoices[] = {
    {"Every file, empty ones too", 0},
    {"1 KB and larger", 1024},
    {"4 KB and larger", 4096},
    {"100 KB and larger", 100 * 1024},
    {"1 MB and larger", 1024 * 1024},
    {"100 MB and larger", 100 * 1024 * 1024},
};

} // namespace

FolderDropList::FolderDropList(QWidget* parent)
    : QListWidget(parent)
{
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
}

void FolderDropList::dragEnterEvent(QDragEnterEvent* event)
{
    if (!localPaths(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void FolderDropList::dragMoveEvent(QDragMoveEvent* event)
{
    if (!localPaths(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void FolderDropList::dropEvent(QDropEvent* event)
{
    const QStringList paths = localPaths(event->mimeData());
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    Q_EMIT foldersDropped(paths);
}

DuplicateSetupView::DuplicateSetupView(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("duplicateSetup"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new WrappedLabel(
        QStringLiteral("Velloru compares files byte for byte and keeps one copy of each. The copies you choose to "
                       "remove go into the duplicates vault first, where you can check them and put them back."),
        QStringLiteral("setupIntro"), this));
    layout->addWidget(new QLabel(QStringLiteral("Folders to look in — add them, or drop them here:"), this));
    m_list = new FolderDropList(this);
    m_list->setObjectName(QStringLiteral("rootList"));
    layout->addWidget(m_list, 1);
    m_noFolders
        = new WrappedLabel(QStringLiteral("No folders yet. Add a folder, drop one on the list, or use the usual ones."),
            QStringLiteral("noFolders"), this);
    layout->addWidget(m_noFolders);

    auto* folderButtons = new QHBoxLayout;
    auto* add = new QPushButton(QStringLiteral("Add Folder…"), this);
    add->setObjectName(QStringLiteral("addFolder"));
    m_remove = new QPushButton(QStringLiteral("Remove"), this);
    m_remove->setObjectName(QStringLiteral("removeFolder"));
    auto* usual = new QPushButton(QStringLiteral("Use the Usual Folders"), this);
    usual->setObjectName(QStringLiteral("usualFolders"));
    folderButtons->addWidget(add);
    folderButtons->addWidget(m_remove);
    folderButtons->addWidget(usual);
    folderButtons->addStretch();
    layout->addLayout(folderButtons);

    auto* sizeRow = new QHBoxLayout;
    sizeRow->addWidget(new QLabel(QStringLiteral("Files to compare:"), this));
    m_minimum = new QComboBox(this);
    m_minimum->setObjectName(QStringLiteral("minimumSize"));
    for (const SizeChoice& choice : sizeChoices)
        m_minimum->addItem(QString::fromUtf8(choice.label), QVariant::fromValue<qulonglong>(choice.bytes));
    m_minimum->setCurrentIndex(m_minimum->findData(QVariant::fromValue<qulonglong>(4096)));
    sizeRow->addWidget(m_minimum);
    sizeRow->addStretch();
    layout->addLayout(sizeRow);

    m_scan = new QPushButton(QStringLiteral("Find Duplicates"), this);
    m_scan->setObjectName(QStringLiteral("findDuplicates"));
    m_scan->setDefault(true);
    auto* scanRow = new QHBoxLayout;
    scanRow->addWidget(m_scan);
    scanRow->addStretch();
    layout->addLayout(scanRow);

    connect(add, &QPushButton::clicked, this, [this] {
        const QString folder
            = QFileDialog::getExistingDirectory(this, QStringLiteral("Add a Folder"), QDir::homePath());
        if (!folder.isEmpty())
            addRoots({folder});
    });
    connect(m_remove, &QPushButton::clicked, this, [this] {
        for (const QListWidgetItem* item : m_list->selectedItems())
            m_roots.removeAll(item->data(Qt::UserRole).toString());
        showRoots();
    });
    connect(usual, &QPushButton::clicked, this, [this] { setRoots(DuplicateScan::defaultRoots()); });
    connect(m_list, &FolderDropList::foldersDropped, this, &DuplicateSetupView::addRoots);
    connect(m_list, &QListWidget::itemSelectionChanged, this,
        [this] { m_remove->setEnabled(!m_list->selectedItems().isEmpty()); });
    connect(m_scan, &QPushButton::clicked, this, &DuplicateSetupView::scanRequested);
    showRoots();
}

void DuplicateSetupView::setRoots(const QStringList& roots)
{
    m_roots = roots;
    showRoots();
}

void DuplicateSetupView::addRoots(const QStringList& folders)
{
    for (const QString& folder : folders)
        if (!m_roots.contains(folder))
            m_roots.append(folder);
    showRoots();
}

std::uint64_t DuplicateSetupView::minimumSize() const
{
    return m_minimum->currentData().toULongLong();
}

void DuplicateSetupView::showRoots()
{
    m_list->clear();
    for (const QString& root : m_roots) {
        auto* item = new QListWidgetItem(root, m_list);
        item->setData(Qt::UserRole, root);
        item->setToolTip(root);
    }
    m_noFolders->setVisible(m_roots.isEmpty());
    m_remove->setEnabled(false);
    m_scan->setEnabled(!m_roots.isEmpty());
}
