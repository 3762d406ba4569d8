#include "ui/PlaceholderPage.h"

#include "ui/Headings.h"
#include "ui/Icons.h"
#include "ui/widgets/WrappedLabel.h"

#include <QLabel>
#include <QVBoxLayout>

PlaceholderPage::PlaceholderPage(Destination destination, QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("page-%1").arg(Destinations::rawValue(destination)));
    auto* layout = new QVBoxLayout(this);
    layout->addStretch();

    auto* icon = new QLabel(this);
    icon->setPixmap(sectionIcon(destination).pixmap(48, 48));
    icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(icon);

    auto* title = makeHeading(Destinations::title(destination), this, 1.6);
    title->setObjectName(QStringLiteral("pageTitle"));
    title->setAlignment(Qt::AlignCenter);
    layout->addWidget(title);

    auto* note = new WrappedLabel(QStringLiteral("This section is not part of this version of Velloru yet."), this);
    note->setAlignment(Qt::AlignCenter);
    layout->addWidget(note);
    layout->addStretch();
}
