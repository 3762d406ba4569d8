#pragma once

#include "usage/UsageItem.h"

#include <QColor>
#include <QList>
#include <QWidget>

// What the two disk-usage charts share: the items of the shown folder, the hovered and the selected item,
// their colours and the mouse. Each chart lays its items out and paints them its own way.
class UsageChart : public QWidget {
    Q_OBJECT

public:
    explicit UsageChart(QWidget* parent = nullptr);

    void setItems(QList<UsageItem> items, qint64 total);
    const QList<UsageItem>& items() const { return m_items; }
    qint64 total() const { return m_total; }
    int hoveredIndex() const { return m_hovered; }
    int selectedIndex() const { return m_selected; }
    void setSelectedIndex(int index);
    // The item under `point`, or -1.
    virtual int itemAt(QPointF point) const = 0;
    // A point inside the item's shape, for tests that click on it; nothing when it is not drawn.
    virtual std::optional<QPointF> centreOf(int index) const = 0;

    // What the chart says while it has nothing to show: what to do, or what is under way.
    void setEmptyText(const QString& text);
    const QString& emptyText() const { return m_emptyText; }

    // Colours go by place in the size order, so both charts colour an item alike; the files lying in the
    // folder itself are grey.
    QColor colorFor(int index) const;

Q_SIGNALS:
    void hoveredChanged(int index);
    void selectedChanged(int index);
    // Double-click: the user wants to open the item.
    void activated(int index);

protected:
    // Called when the items or the size changed, before the next paint.
    virtual void layoutItems() = 0;
    // Text drawn in the middle while there is nothing to show.
    void paintEmpty(QPainter& painter) const;

    void resizeEvent(QResizeEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    void setHovered(int index);

    QList<UsageItem> m_items;
    qint64 m_total = 0;
    int m_hovered = -1;
    int m_selected = -1;
    QString m_emptyText;
};
