#pragma once

#include "usage/UsageModel.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <thread>

class FileList;
class HoneycombChart;
class PathLabel;
class OutcomeLine;
class ProgressRow;
class QComboBox;
class QLabel;
class QPushButton;
class QSettings;
class QStackedWidget;
class RailChart;
class UsageChart;
class UsageDetails;
class UsageLegend;

// Moves one item to the Trash. It is called on a worker thread, since measuring and moving a large folder
// takes a while, and answers the step to take back on the main thread (recording the move in the Activity
// log), which gives nothing on success, otherwise the sentence that says why the item stayed.
using TrashAnswer = std::function<std::optional<QString>()>;
using MoveToTrash = std::function<TrashAnswer(const QString& path)>;

// The Disk Usage section: pick a volume or folder, watch its top-level folders fill the chart as they are
// measured, open a folder to see inside it, and act on what takes the space.
class UsagePage : public QWidget {
    Q_OBJECT

public:
    // Without `moveToTrash` the Move to Trash action stays disabled.
    UsagePage(QSettings& defaults, MoveToTrash moveToTrash, QWidget* parent = nullptr);

    void measure(const QString& path);
    UsageModel& model() { return m_model; }
    HoneycombChart* honeycomb() const { return m_honeycomb; }
    RailChart* rail() const { return m_rail; }
    UsageChart* currentChart() const;
    ProgressRow* progressRow() const { return m_progressRow; }
    FileList* fileList() const { return m_fileList; }
    UsageLegend* legend() const { return m_legend; }
    bool isShowingFiles() const;
    // Lists the largest files of the finished walk in place of the chart.
    void showLargestFiles();
    // Lists the files lying in `folder`, largest first, in place of the chart (read off the main thread).
    void showFilesOf(const QString& folder);
    QPushButton* largestFilesButton() const { return m_largest; }
    // Why the selected item cannot go to the Trash, or how revealing or trashing it went.
    OutcomeLine* actionOutcome() const { return m_actionOutcome; }
    // Shows the chart style chosen in Settings.
    void applyChartStyle();

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QWidget* makeSourceRow();
    QWidget* makeSidePanel();
    void showItems();
    void showLegend();
    void showProgress();
    void showDetails();
    void openItem(int index);
    void revealSelected();
    void trashSelected();
    std::optional<UsageItem> selectedItem() const;

    QSettings& m_defaults;
    MoveToTrash m_moveToTrash;
    UsageModel m_model;
    QComboBox* m_source = nullptr;
    QPushButton* m_measure = nullptr;
    QPushButton* m_back = nullptr;
    PathLabel* m_path = nullptr;
    QLabel* m_status = nullptr;
    QStackedWidget* m_charts = nullptr;
    HoneycombChart* m_honeycomb = nullptr;
    RailChart* m_rail = nullptr;
    UsageDetails* m_details = nullptr;
    QPushButton* m_open = nullptr;
    QPushButton* m_reveal = nullptr;
    QPushButton* m_trash = nullptr;
    ProgressRow* m_progressRow = nullptr;
    OutcomeLine* m_actionOutcome = nullptr;
    std::unique_ptr<std::jthread> m_revealTask;
    FileList* m_fileList = nullptr;
    UsageLegend* m_legend = nullptr;
    QPushButton* m_largest = nullptr;
    std::unique_ptr<std::jthread> m_filesTask; // listing a folder's files
    std::unique_ptr<std::jthread> m_trashTask; // moving the selected item to the Trash
};
