#pragma once

#include <QWidget>

class AppState;
class HelperSetupButton;
class MemoryChart;
class OutcomeLine;
class ProcessSampler;
class ProgressRow;
class QPushButton;
class WrappedLabel;

// The top of the Memory Usage section: the pressure in words and colour, what memory holds, the chart of the
// last minutes, the apps using the most, and "Free up memory" with its measured result.
class MemoryMonitorView : public QWidget {
    Q_OBJECT

public:
    explicit MemoryMonitorView(AppState& state, QWidget* parent = nullptr);

    void showSample(const ProcessSampler& sampler);
    QPushButton* freeUpButton() const { return m_freeUp; }
    OutcomeLine* freeUpResult() const { return m_freeUpResult; }
    WrappedLabel* pressureLabel() const { return m_pressure; }

private:
    void showHelperState();
    void freeUp();

    AppState& m_state;
    WrappedLabel* m_pressure = nullptr;
    WrappedLabel* m_explanation = nullptr;
    WrappedLabel* m_figures = nullptr;
    MemoryChart* m_chart = nullptr;
    WrappedLabel* m_largest = nullptr;
    QPushButton* m_freeUp = nullptr;
    WrappedLabel* m_freeUpNeeds = nullptr; // why the button is off while the helper is missing
    HelperSetupButton* m_setUp = nullptr;
    ProgressRow* m_freeing = nullptr;
    OutcomeLine* m_freeUpResult = nullptr;
};
