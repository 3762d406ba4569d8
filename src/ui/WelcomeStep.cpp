#include "ui/WelcomeStep.h"
#include "ui/Headings.h"
#include "ui/widgets/CentredColumn.h"
#include "ui/widgets/WrappedLabel.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace {

constexpr int readableWidth = 560;

} // namespace

WelcomeStep::WelcomeStep(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("welcomeStep"));
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* body = new CentredColumn(readableWidth, this);
    outer->addWidget(body);
    QWidget* column = body->columnWidget();
    QVBoxLayout* layout = body->column();

    auto* title = makeHeading(QStringLiteral("Welcome to Velloru"), column, 2.0);
    title->setAlignment(Qt::AlignCenter);
    title->setWordWrap(true);
    layout->addWidget(title);

    auto* text = new WrappedLabel(QStringLiteral("Velloru finds what quietly fills your computer and shows you where "
                                                 "space and memory went. Nothing is deleted outright: everything it "
                                                 "removes goes to the Trash and is written to the Activity log, and "
                                                 "nothing is selected behind your back."),
        QStringLiteral("welcomeText"), column);
    text->setAlignment(Qt::AlignCenter);
    layout->addWidget(text);

    auto* start = new QPushButton(QStringLiteral("Get Started"), column);
    start->setObjectName(QStringLiteral("getStarted"));
    start->setDefault(true);
    layout->addSpacing(16);
    layout->addWidget(start, 0, Qt::AlignHCenter);

    connect(start, &QPushButton::clicked, this, &WelcomeStep::finished);
}
