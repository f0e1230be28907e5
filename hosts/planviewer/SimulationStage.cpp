#include "SimulationStage.h"

#include <SimulationView.h>

#include <QtCore/QEvent>
#include <QtWidgets/QLabel>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QVBoxLayout>

SimulationStage::SimulationStage(QWidget* parent)
    : QWidget(parent)
    , m_stack(new QStackedWidget)
    , m_message(new QLabel)
    , m_busy(new QProgressBar)
    , m_cancel(new QPushButton(tr("&Cancel")))
    , m_planned(new QLabel(tr("Planned")))
    , m_actual(new QLabel(tr("Actual")))
{
    auto* const titles = new QHBoxLayout;
    for (QLabel* const title : {m_planned, m_actual}) {
        title->setAlignment(Qt::AlignCenter);
        titles->addWidget(title);
    }
    m_stack->addWidget(makeMessagePage());
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(titles);
    column->addWidget(m_stack, 1);
}

// The scene first, as long as there is the window that it draws on.
SimulationStage::~SimulationStage()
{
    delete m_view;
}

QWidget* SimulationStage::makeMessagePage()
{
    m_message->setObjectName(QStringLiteral("simulationMessage"));
    m_message->setAlignment(Qt::AlignCenter);
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_busy->setRange(0, 0);
    m_busy->setMaximumWidth(240);
    m_busy->setAccessibleName(tr("Reading the model"));
    m_cancel->setObjectName(QStringLiteral("cancelModel"));
    connect(m_cancel, &QPushButton::clicked, this, &SimulationStage::cancelWanted);
    auto* const page = new QWidget;
    auto* const column = new QVBoxLayout(page);
    column->addStretch();
    column->addWidget(m_message);
    column->addWidget(m_busy, 0, Qt::AlignCenter);
    column->addWidget(m_cancel, 0, Qt::AlignCenter);
    column->addStretch();
    return page;
}

void SimulationStage::showBuilding()
{
    if (!m_view) {
        m_view = new SimulationView;
        m_view->setObjectName(QStringLiteral("simulationView"));
        m_stack->addWidget(m_view);
        showBackground();
        setViews(m_views);
        Q_EMIT viewMade(m_view);
    }
    m_stack->setCurrentWidget(m_view);
}

void SimulationStage::showMessage(const QString& text, bool isBusy)
{
    m_message->setText(text);
    m_busy->setVisible(isBusy);
    m_cancel->setVisible(isBusy);
    m_stack->setCurrentIndex(0);
}

QString SimulationStage::message() const
{
    return m_stack->currentIndex() == 0 ? m_message->text() : QString();
}

void SimulationStage::setViews(SimulationViews views)
{
    m_views = views;
    m_planned->setVisible(views != SimulationViews::Actual);
    m_actual->setVisible(views != SimulationViews::Planned);
    if (m_view)
        m_view->setViews(views != SimulationViews::Actual, views != SimulationViews::Planned);
}

void SimulationStage::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showBackground();
}

void SimulationStage::showBackground()
{
    if (m_view)
        m_view->setBackground(palette().color(QPalette::Base));
}
