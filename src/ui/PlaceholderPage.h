#pragma once

#include "app/Destination.h"

#include <QWidget>

// The page of a section whose feature Velloru does not have yet: it names the section and nothing more.
class PlaceholderPage : public QWidget {
    Q_OBJECT

public:
    explicit PlaceholderPage(Destination destination, QWidget* parent = nullptr);
};
