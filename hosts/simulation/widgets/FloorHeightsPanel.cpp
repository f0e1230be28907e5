#include "FloorHeightsPanel.h"

#include "SimulationSettings.h"

#include <QtCore/QLocale>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSlider>
#include <QtWidgets/QStyledItemDelegate>
#include <QtWidgets/QTableView>

namespace {

constexpr double lowest = 0.01;
constexpr double highest = 1000.0;
constexpr int spreadSteps = 100;

class HeightDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const override
    {
        auto* const editor = new QDoubleSpinBox(parent);
        editor->setFrame(false);
        editor->setRange(lowest, highest);
        editor->setDecimals(2);
        editor->setSingleStep(0.1);
        return editor;
    }
};

} // namespace

FloorHeightsModel::FloorHeightsModel(SimulationSettings* settings, QObject* parent)
    : QAbstractTableModel(parent)
    , m_settings(settings)
{
    connect(settings, &SimulationSettings::floorHeightsChanged, this, [this] {
        if (!m_floors.isEmpty())
            Q_EMIT dataChanged(index(0, Height), index(m_floors.size() - 1, Height));
    });
}

void FloorHeightsModel::setFloors(const QStringList& floors)
{
    beginResetModel();
    m_floors = floors;
    endResetModel();
}

int FloorHeightsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_floors.size();
}

int FloorHeightsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant FloorHeightsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    // The highest floor on top, as in the building.
    const QString& floor = m_floors.at(m_floors.size() - 1 - index.row());
    if (index.column() == Floor)
        return role == Qt::DisplayRole ? floor : QVariant();
    if (role == Qt::EditRole)
        return m_settings->floorHeight(floor);
    if (role == Qt::DisplayRole)
        return QLocale().toString(m_settings->floorHeight(floor), 'f', 2);
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

bool FloorHeightsModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.column() != Height || role != Qt::EditRole)
        return false;
    bool isNumber = false;
    const double height = value.toDouble(&isNumber);
    if (!isNumber || !(height >= lowest && height <= highest))
        return false;
    m_settings->setFloorHeight(m_floors.at(m_floors.size() - 1 - index.row()), height);
    return true;
}

QVariant FloorHeightsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == Floor ? tr("Floor") : tr("Height");
}

Qt::ItemFlags FloorHeightsModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    if (index.column() == Height)
        flags |= Qt::ItemIsEditable;
    return flags;
}

FloorHeightsPanel::FloorHeightsPanel(SimulationSettings* settings, QWidget* parent)
    : QWidget(parent)
    , m_model(new FloorHeightsModel(settings, this))
    , m_view(new QTableView)
    , m_spread(new QSlider(Qt::Horizontal))
    , m_defaults(new QPushButton(tr("Default &heights")))
{
    m_view->setObjectName(QStringLiteral("floorHeights"));
    m_view->setAccessibleName(tr("Floors and their heights"));
    m_view->setModel(m_model);
    m_view->setItemDelegateForColumn(FloorHeightsModel::Height, new HeightDelegate(m_view));
    m_view->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::SelectedClicked |
                            QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    m_view->setTabKeyNavigation(false);
    m_view->setShowGrid(false);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setSectionResizeMode(FloorHeightsModel::Floor, QHeaderView::Stretch);
    m_spread->setObjectName(QStringLiteral("spread"));
    m_spread->setAccessibleName(tr("How far the floors stand apart"));
    m_spread->setRange(0, spreadSteps);
    m_spread->setPageStep(spreadSteps / 4);
    m_defaults->setObjectName(QStringLiteral("defaultHeights"));

    auto* const form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(m_view);
    form->addRow(tr("Ta&ke apart"), m_spread);
    form->addRow(m_defaults);
    connect(m_spread, &QSlider::valueChanged, this, [this] { Q_EMIT spreadChanged(spread()); });
    connect(m_defaults, &QPushButton::clicked, this,
            [this, settings] { settings->resetFloorHeights(m_model->floors()); });
}

void FloorHeightsPanel::setFloors(const QStringList& floors)
{
    m_model->setFloors(floors);
}

double FloorHeightsPanel::spread() const
{
    return static_cast<double>(m_spread->value()) / spreadSteps;
}
