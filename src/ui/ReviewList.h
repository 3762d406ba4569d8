#pragma once

#include "scan/ScanSelection.h"

#include <QWidget>

#include <memory>
#include <thread>

class OutcomeLine;
class QLabel;
class QStackedWidget;
class QTreeView;
class ReviewModel;

// The reviewable list every cleaning feature ends in: groups with tri-state boxes, items with risk
// badges and sizes, the ticked total, and the empty-result texts when nothing was found.
class ReviewList : public QWidget {
    Q_OBJECT

public:
    explicit ReviewList(QWidget* parent = nullptr);

    void setResult(QList<ScanGroup> groups, ScanSelection selection);
    const ScanSelection& selection() const;
    QList<ScanItem> tickedItems() const;

    ReviewModel* model() const { return m_model; }
    QTreeView* tree() const { return m_tree; }
    QLabel* totalLabel() const { return m_total; }
    bool isShowingEmptyResult() const;
    // Why an item could not be shown in the file manager, under the list.
    OutcomeLine* actionOutcome() const { return m_actionOutcome; }
    // Shows the item's folder in the file manager, off the main thread.
    void reveal(const ScanItem& item);

Q_SIGNALS:
    void selectionChanged();
    // The user asked to leave an item out of this and every later scan.
    void excludeRequested(const ScanItem& item);

private:
    void updateTotal();
    void showItemMenu(const QPoint& position);

    ReviewModel* m_model = nullptr;
    QStackedWidget* m_body = nullptr;
    QTreeView* m_tree = nullptr;
    QLabel* m_total = nullptr;
    OutcomeLine* m_actionOutcome = nullptr;
    std::unique_ptr<std::jthread> m_revealTask;
};
