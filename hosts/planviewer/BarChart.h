#pragma once

#include <QtCore/QVector>
#include <QtGui/QColor>
#include <QtWidgets/QWidget>

/// Stacked bars with their numbers, a caption below each, and a legend.
class BarChart : public QWidget
{
    Q_OBJECT

public:
    struct Part
    {
        QString name; ///< parts of one name have one colour and one entry in the legend; empty: no entry
        QColor colour;
        int count = 0;
    };
    struct Bar
    {
        QString caption;
        QVector<Part> parts;
        int total() const;
    };

    explicit BarChart(const QString& title, QWidget* parent = nullptr);

    void setBars(const QVector<Bar>& bars);
    const QVector<Bar>& bars() const { return m_bars; }
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int paintLegend(QPainter& painter, int top) const;

    QString m_title;
    QVector<Bar> m_bars;
};
