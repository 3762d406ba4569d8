#include "ui/WelcomeStep.h"
#include "ui/Headings.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

WelcomeStep::WelcomeStep(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("welcomeStep"));
    auto* layout = new QVBoxLayout(this);
    layout->addStretch();

    auto* title = makeHeading(QStringLiteral("Welcome to Velloru"), this, 2.0);
    title->setAlignment(Qt::AlignCenter);
    layout->addWidget(title);

    auto* text = new QLabel(QStringLiteral("Velloru finds what quietly fills your computer and shows you where "
                                           "space and memory went. Nothing is deleted outright: everything it "
                                           "removes goes to the Trash and is written to the Activity log, and "
                                           "nothing is selected behind your back."),
        this);
    text->setWordWrap(true);
    text->setAlignment(Qt::AlignCenter);
    text->setMaximumWidth(520);
    layout->addWidget(text, 0, Qt::AlignHCenter);

    auto* start = new QPushButton(QStringLiteral("Get Started"), this);
    start->setObjectName(QStringLiteral("getStarted"));
    start->setDefault(true);
    layout->addSpacing(16);
    layout->addWidget(start, 0, Qt::AlignHCenter);
    layout->addStretch();

    connect(start, &QPushButton::clicked, this, &WelcomeStep::finished);
}
