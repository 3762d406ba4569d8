#include "ui/duplicates/FilePreview.h"

#include "common/BackgroundTask.h"
#include "platform/FileManager.h"
#include "ui/widgets/OutcomeLine.h"
#include "ui/widgets/PathLabel.h"
#include "ui/widgets/WrappedLabel.h"

#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QLabel>
#include <QMimeDatabase>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int thumbnailSide = 220;
constexpr qint64 textBytes = 2048;

FilePreview::Content readPreview(const QString& path)
{
    FilePreview::Content content;
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path);
    if (type.name().startsWith(QLatin1String("image/"))) {
        QImageReader reader(path);
        reader.setAutoTransform(true);
        const QSize size = reader.size();
        if (size.isValid())
            reader.setScaledSize(size.scaled(thumbnailSide, thumbnailSide, Qt::KeepAspectRatio));
        content.image = reader.read();
        if (content.image.isNull())
            content.text = QStringLiteral("This picture can’t be shown — %1.").arg(reader.errorString());
        return content;
    }
    if (type.inherits(QStringLiteral("text/plain"))) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            content.text = QString::fromUtf8(file.read(textBytes));
        else
            content.text = QStringLiteral("This file can’t be read — %1.").arg(file.errorString());
        return content;
    }
    content.text = QStringLiteral("%1 — no preview for this kind of file.").arg(type.comment());
    return content;
}

} // namespace

FilePreview::FilePreview(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("filePreview"));
    auto* layout = new QVBoxLayout(this);
    m_pathLabel = new PathLabel(this);
    m_pathLabel->setObjectName(QStringLiteral("previewPath"));
    layout->addWidget(m_pathLabel);
    m_picture = new QLabel(this);
    m_picture->setObjectName(QStringLiteral("previewPicture"));
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setMinimumHeight(thumbnailSide / 2);
    layout->addWidget(m_picture);
    m_text = new WrappedLabel({}, QStringLiteral("previewText"), this);
    m_text->setTextFormat(Qt::PlainText);
    layout->addWidget(m_text);
    m_showInFolder = new QPushButton(QStringLiteral("Show in Folder"), this);
    m_showInFolder->setObjectName(QStringLiteral("showInFolder"));
    layout->addWidget(m_showInFolder);
    m_outcome = new OutcomeLine(QStringLiteral("previewOutcome"), this);
    layout->addWidget(m_outcome);
    layout->addStretch();
    connect(m_showInFolder, &QPushButton::clicked, this, &FilePreview::showInFolder);
    showFile({});
}

void FilePreview::showFile(const QString& path)
{
    m_path = path;
    m_pathLabel->setPath(path);
    m_picture->clear();
    m_picture->setVisible(false);
    m_outcome->clear();
    m_showInFolder->setEnabled(!path.isEmpty());
    if (path.isEmpty()) {
        m_text->setText(QStringLiteral("Select a file to see it here."));
        return;
    }
    m_text->setText(QStringLiteral("Loading…"));
    m_loading = runInBackground(
        this, [path] { return readPreview(path); },
        [this, path](Content content) {
            m_loading.reset();
            if (path != m_path)
                return; // another file was picked meanwhile
            if (!content.image.isNull()) {
                m_picture->setPixmap(QPixmap::fromImage(content.image));
                m_picture->setVisible(true);
            }
            m_text->setText(content.text);
            m_text->setVisible(!content.text.isEmpty());
        });
}

void FilePreview::showInFolder()
{
    if (m_path.isEmpty() || m_revealing)
        return;
    m_revealing = runInBackground(
        this, [folder = QFileInfo(m_path).absolutePath()] { return showInFileManager(folder); },
        [this](std::optional<QString> failure) {
            m_revealing.reset();
            if (failure)
                m_outcome->showFailure(*failure);
        });
}
