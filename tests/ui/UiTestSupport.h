#pragma once

#include "ui/widgets/PathLabel.h"

#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <QWidget>

// Saves a picture of a widget under the build folder, so a person can look at what the test saw.
inline QString saveScreenshot(QWidget& widget, const QString& name)
{
    const QString folder = QCoreApplication::applicationDirPath() + QStringLiteral("/screenshots");
    QDir().mkpath(folder);
    const QString path = folder + QLatin1Char('/') + name + QStringLiteral(".png");
    widget.grab().save(path);
    return path;
}

// The two window sizes every UI test looks at: a small laptop and a common desktop.
inline const QList<QSize>& screenshotSizes()
{
    static const QList<QSize> sizes{QSize(900, 600), QSize(1440, 900)};
    return sizes;
}

// Lays a window out at `size` now, as the screen would before painting.
inline void resizeAndLayOut(QWidget& window, QSize size)
{
    window.resize(size);
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        QApplication::processEvents();
    }
}

// Saves a picture of the window at each of the two sizes ("NAME-900x600.png", "NAME-1440x900.png").
inline QStringList saveScreenshots(QWidget& window, const QString& name)
{
    QStringList paths;
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(window, size);
        paths << saveScreenshot(window, QStringLiteral("%1-%2x%3").arg(name).arg(size.width()).arg(size.height()));
    }
    return paths;
}

// Whether a widget is cut off by one of its ancestors (up to the window, or to the scroll area it
// scrolls in, whose job is to show only part of it).
inline bool cutOffByAncestor(const QWidget* widget)
{
    QRect rect = widget->rect();
    for (const QWidget* child = widget; child->parentWidget() && !child->isWindow(); child = child->parentWidget()) {
        const QWidget* parent = child->parentWidget();
        rect.translate(child->pos());
        if (qobject_cast<const QAbstractScrollArea*>(parent->parentWidget())
            || qobject_cast<const QAbstractScrollArea*>(parent))
            return false;
        if (!parent->rect().contains(rect))
            return true;
    }
    return false;
}

// The visible labels of `root` whose text does not fit: a one-line label narrower than its text, a
// wrapped one lower than its wrapped text, or one its container cuts off. A path label is exempt: it
// shortens its path in the middle and always carries the whole path in its tooltip.
inline QStringList clippedLabels(const QWidget& root)
{
    QStringList clipped;
    for (const QLabel* label : root.findChildren<QLabel*>()) {
        if (!label->isVisible() || label->text().isEmpty() || qobject_cast<const PathLabel*>(label))
            continue;
        const QString name = label->objectName().isEmpty() ? QStringLiteral("(label)") : label->objectName();
        const QString what = QStringLiteral("%1 “%2”").arg(name, label->text().left(60));
        if (!label->wordWrap() && label->sizeHint().width() > label->width())
            clipped << what
                    + QStringLiteral(": %1 px of text in %2 px").arg(label->sizeHint().width()).arg(label->width());
        else if (label->wordWrap() && label->heightForWidth(label->width()) > label->height())
            clipped << what
                    + QStringLiteral(": %1 px of wrapped text in %2 px")
                          .arg(label->heightForWidth(label->width()))
                          .arg(label->height());
        else if (cutOffByAncestor(label))
            clipped << what + QStringLiteral(": cut off by its container");
    }
    return clipped;
}

// Lays the window out at each of the two sizes, fails the test for every clipped label there, and saves the
// pictures as saveScreenshots does.
inline void expectReadableAtBothSizes(QWidget& window, const QString& name)
{
    for (const QSize size : screenshotSizes()) {
        resizeAndLayOut(window, size);
        const QStringList clipped = clippedLabels(window);
        EXPECT_TRUE(clipped.isEmpty()) << name.toStdString() << " at " << size.width() << "×" << size.height() << ": "
                                       << clipped.join(u'\n').toStdString();
        saveScreenshot(window, QStringLiteral("%1-%2x%3").arg(name).arg(size.width()).arg(size.height()));
    }
}

// The cells of a table or tree (the first `rows` rows of each level) whose text is cut short and whose
// tooltip does not give it whole.
inline QStringList elidedCells(const QAbstractItemView& view, int rows = 50)
{
    QStringList elided;
    const QAbstractItemModel* model = view.model();
    const auto* tree = qobject_cast<const QTreeView*>(&view);
    std::function<void(const QModelIndex&)> visit = [&](const QModelIndex& parent) {
        for (int row = 0; row < std::min(model->rowCount(parent), rows); ++row) {
            for (int column = 0; column < model->columnCount(parent); ++column) {
                const QModelIndex index = model->index(row, column, parent);
                const QString text = index.data(Qt::DisplayRole).toString();
                const QRect cell = view.visualRect(index);
                if (text.isEmpty() || !cell.isValid())
                    continue;
                // Text plus the least margin any style gives a cell, and an icon or check box when there is one.
                const int needed = view.fontMetrics().horizontalAdvance(text) + 4
                    + (index.data(Qt::DecorationRole).isValid() || index.data(Qt::CheckStateRole).isValid() ? 16 : 0);
                if (needed > cell.width() && !index.data(Qt::ToolTipRole).toString().contains(text))
                    elided << QStringLiteral("row %1 column %2 “%3”").arg(row).arg(column).arg(text.left(60));
            }
            if (tree)
                visit(model->index(row, 0, parent));
        }
    };
    visit({});
    return elided;
}

// Whether two icons draw the same picture (a style makes a new icon object for each request).
inline bool sameIcon(const QIcon& a, const QIcon& b)
{
    return a.pixmap(16, 16).toImage() == b.pixmap(16, 16).toImage();
}

// Answers the next modal message box by clicking the button with this text.
inline void answerNextMessageBox(const QString& buttonText)
{
    QTimer::singleShot(0, [buttonText] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return answerNextMessageBox(buttonText);
        for (QAbstractButton* button : box->buttons())
            if (button->text() == buttonText)
                return button->click();
    });
}
