#include "ui/widgets/WrappedLabel.h"

namespace {

constexpr int narrowestColumn = 120;

} // namespace

WrappedLabel::WrappedLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent)
{
    setWordWrap(true);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
}

WrappedLabel::WrappedLabel(const QString& text, const QString& objectName, QWidget* parent)
    : WrappedLabel(text, parent)
{
    setObjectName(objectName);
}

QSize WrappedLabel::minimumSizeHint() const
{
    const QSize hint = QLabel::minimumSizeHint();
    return {std::min(hint.width(), narrowestColumn), hint.height()};
}
