#include "ui/widgets/ProgressRow.h"

#include "ui/widgets/WrappedLabel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// The bar counts in thousandths, so totals beyond an int's range still fill it smoothly.
constexpr int barSteps = 1000;

QString clockText(qint64 milliseconds)
{
    const qint64 seconds = milliseconds / 1000;
    if (seconds < 3600)
        return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1:%2:%3")
        .arg(seconds / 3600)
        .arg(seconds / 60 % 60, 2, 10, QLatin1Char('0'))
        .arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

} // namespace

ProgressRow::ProgressRow(Cancel cancel, QWidget* parent)
    : QWidget(parent)
    , m_ticker(new QTimer(this))
{
    setObjectName(QStringLiteral("progressRow"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_text = new WrappedLabel({}, QStringLiteral("progressText"), this);
    layout->addWidget(m_text);
    auto* row = new QHBoxLayout;
    m_bar = new QProgressBar(this);
    m_bar->setObjectName(QStringLiteral("progressBar"));
    m_bar->setTextVisible(false);
    row->addWidget(m_bar, 1);
    m_elapsed = new QLabel(this);
    m_elapsed->setObjectName(QStringLiteral("progressElapsed"));
    row->addWidget(m_elapsed);
    if (cancel == Cancel::offered) {
        m_cancel = new QPushButton(QStringLiteral("Cancel"), this);
        m_cancel->setObjectName(QStringLiteral("progressCancel"));
        row->addWidget(m_cancel);
        connect(m_cancel, &QPushButton::clicked, this, &ProgressRow::cancelRequested);
    }
    layout->addLayout(row);
    m_ticker->setInterval(1000);
    connect(m_ticker, &QTimer::timeout, this, &ProgressRow::showElapsed);
    hide();
}

void ProgressRow::start(const QString& what)
{
    m_text->setText(what);
    m_bar->setRange(0, 0);
    m_clock.start();
    m_ticker->start();
    showElapsed();
    if (m_cancel)
        m_cancel->setEnabled(true);
    show();
}

void ProgressRow::setText(const QString& what)
{
    m_text->setText(what);
}

void ProgressRow::setProgress(qint64 done, qint64 total)
{
    if (total <= 0) {
        m_bar->setRange(0, 0);
        return;
    }
    m_bar->setRange(0, barSteps);
    m_bar->setValue(int(std::clamp(done, qint64(0), total) * barSteps / total));
}

void ProgressRow::finish()
{
    m_ticker->stop();
    m_clock.invalidate();
    hide();
}

QString ProgressRow::text() const
{
    return m_text->text();
}

QString ProgressRow::elapsedText() const
{
    return m_elapsed->text();
}

void ProgressRow::showElapsed()
{
    m_elapsed->setText(QStringLiteral("%1 elapsed").arg(clockText(m_clock.isValid() ? m_clock.elapsed() : 0)));
}
