#pragma once

#include <QLabel>

// A label for sentences: it wraps at the width it is given and asks its layout for the height the
// wrapped text needs, so it grows instead of clipping. Put it in a layout without an alignment flag
// (a widget added with one is given its size hint, not its height for the width it gets).
class WrappedLabel : public QLabel {
    Q_OBJECT

public:
    explicit WrappedLabel(const QString& text = {}, QWidget* parent = nullptr);
    WrappedLabel(const QString& text, const QString& objectName, QWidget* parent);

    // A wrapped label can shrink to a narrow column; its width comes from the layout, not from its text.
    QSize minimumSizeHint() const override;
};
