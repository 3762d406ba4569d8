#pragma once

#include <QWidget>

#include <array>
#include <cstdint>

// How many files of each size band the scan has indexed: one bar per power of two from the scan's smallest
// size up, the tallest bar full height, the band's size under every fourth bar.
class SizeHistogram : public QWidget {
    Q_OBJECT

public:
    explicit SizeHistogram(QWidget* parent = nullptr);

    void setCounts(const std::array<std::int32_t, 32>& counts, int firstBand);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::array<std::int32_t, 32> m_counts{};
    int m_firstBand = 12;
};
