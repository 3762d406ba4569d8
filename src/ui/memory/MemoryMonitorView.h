#pragma once

#include <QWidget>

class AppState;
class HelperInstaller;
class MemoryChart;
class ProcessSampler;
class QLabel;
class QPushButton;

// The top of the Memory Usage section: the pressure in words and colour, what memory holds, the chart of the
// last minutes, the apps using the most, and "Free up memory" with its measured result.
class MemoryMonitorView : public QWidget {
    Q_OBJECT

public:
    MemoryMonitorView(AppState& state, HelperInstaller& installer, QWidget* parent = nullptr);

    void showSample(const ProcessSampler& sampler);
    QPushButton* freeUpButton() const { return m_freeUp; }
    QLabel* freeUpResult() const { return m_freeUpResult; }
    QLabel* pressureLabel() const { return m_pressure; }

private:
    void showHelperState();
    void freeUp();

    AppState& m_state;
    HelperInstaller& m_installer;
    QLabel* m_pressure = nullptr;
    QLabel* m_explanation = nullptr;
    QLabel* m_figures = nullptr;
    MemoryChart* m_chart = nullptr;
    QLabel* m_largest = nullptr;
    QPushButton* m_freeUp = nullptr;
    QLabel* m_freeUpResult = nullptr;
    bool m_freeing = false;
    bool m_askedForHelper = false; // the last Set Up was pressed here, so its failure is said here
};
