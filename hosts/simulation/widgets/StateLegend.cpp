#include "StateLegend.h"

#include "SimulationSettings.h"

#include <QtGui/QPainter>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QColorDialog>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QToolButton>

namespace {

constexpr int swatchWidth = 28;
constexpr int swatchHeight = 14;

QIcon swatch(const QColor& colour, const QPalette& palette)
{
    QPixmap picture(swatchWidth, swatchHeight);
    picture.fill(colour);
    QPainter painter(&picture);
    painter.setPen(palette.color(QPalette::Mid));
    painter.drawRect(0, 0, swatchWidth - 1, swatchHeight - 1);
    return QIcon(picture);
}

} // namespace

StateLegend::StateLegend(SimulationSettings* settings, QWidget* parent)
    : QWidget(parent)
    , m_settings(settings)
    , m_ask([this](const QColor& present, const QString& label) {
        return QColorDialog::getColor(present, this, label, QColorDialog::ShowAlphaChannel);
    })
    , m_defaults(new QPushButton(tr("Defau&lt colours")))
{
    setObjectName(QStringLiteral("legend"));
    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (int state = 0; state < TaskState::count; ++state) {
        auto* const flag = new QCheckBox(taskStateText(state));
        flag->setObjectName(QStringLiteral("paintState%1").arg(state));
        flag->setToolTip(tr("Paint elements in this state"));
        auto* const colour = new QToolButton;
        colour->setObjectName(QStringLiteral("colourOfState%1").arg(state));
        colour->setIconSize(QSize(swatchWidth, swatchHeight));
        colour->setToolTip(tr("Change the colour"));
        colour->setAccessibleName(tr("Colour of: %1").arg(taskStateText(state)));
        layout->addWidget(colour, state, 0);
        layout->addWidget(flag, state, 1);
        m_flags.append(flag);
        m_colours.append(colour);
        connect(flag, &QCheckBox::toggled, this, [this, state](bool isOn) {
            TimeLineSet set = m_settings->set();
            setStateFlag(state, isOn, set);
            m_settings->setSet(set);
        });
        connect(colour, &QToolButton::clicked, this, [this, state] { changeColour(state); });
    }
    m_defaults->setObjectName(QStringLiteral("defaultColours"));
    layout->addWidget(m_defaults, TaskState::count, 0, 1, 2);
    layout->setColumnStretch(1, 1);
    connect(m_defaults, &QPushButton::clicked, this,
            [this] { m_settings->setColours(m_settings->defaultColours()); });
    connect(m_settings, &SimulationSettings::setChanged, this, &StateLegend::showSettings);
    connect(m_settings, &SimulationSettings::coloursChanged, this, &StateLegend::showSettings);
    showSettings();
}

void StateLegend::showSettings()
{
    const QList<QColor> colours = m_settings->colours();
    for (int state = 0; state < TaskState::count; ++state) {
        const QSignalBlocker quiet(m_flags.at(state));
        m_flags.at(state)->setChecked(isStateFlagged(state, m_settings->set()));
        m_flags.at(state)->setEnabled(m_settings->set().DisplayStateColor);
        m_colours.at(state)->setIcon(swatch(colours.at(state), palette()));
        m_colours.at(state)->setAccessibleDescription(colours.at(state).name(QColor::HexArgb));
    }
    m_defaults->setEnabled(colours != m_settings->defaultColours());
}

void StateLegend::changeColour(int state)
{
    const QColor colour = m_ask(m_settings->colours().at(state), taskStateText(state));
    if (colour.isValid())
        m_settings->setColour(state, colour);
}
