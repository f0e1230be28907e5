#pragma once

#include <QtCore/QAbstractTableModel>
#include <QtWidgets/QWidget>

class QPushButton;
class QSlider;
class QTableView;
class SimulationSettings;

/// Floors and their heights, which can be edited.
class FloorHeightsModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Floor,
        Height,
        ColumnCount
    };

    explicit FloorHeightsModel(SimulationSettings* settings, QObject* parent = nullptr);

    void setFloors(const QStringList& floors);
    const QStringList& floors() const { return m_floors; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    SimulationSettings* m_settings;
    QStringList m_floors;
};

/// The table of floor heights, the slider that takes the floors apart, and back to the default heights.
class FloorHeightsPanel : public QWidget
{
    Q_OBJECT

public:
    /// @param settings shown and changed here; outlives the panel
    explicit FloorHeightsPanel(SimulationSettings* settings, QWidget* parent = nullptr);

    /// Floors from the lowest to the highest, by the names under which their heights are kept.
    void setFloors(const QStringList& floors);
    /// How far the floors stand apart: 0 as built, 1 by their own height.
    double spread() const;

Q_SIGNALS:
    void spreadChanged(double spread);

private:
    FloorHeightsModel* m_model;
    QTableView* m_view;
    QSlider* m_spread;
    QPushButton* m_defaults;
};
