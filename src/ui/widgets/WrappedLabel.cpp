#include "ui/widgets/WrappedLabel.h"

namespace {

constexpr int narrowestColumn = 120;

} // namespace

WrappedLabel::WrappedLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent)
{
    setWordWrap(true);
    // A new policy starts without height-for-width, which word wrap had switched on; without it the layout
    // gives the label the height of its size hint, not what its text needs at the width it gets.
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
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
