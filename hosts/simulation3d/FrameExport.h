#pragma once

#include "SceneRenderer.h"
#include "SimulatedBuilding.h"

#include <QtCore/QDateTime>

#include <SimulationClock.h>
#include <SimulationSettings.h>

/// What pictures of the simulation show.
struct PictureContent
{
    std::shared_ptr<const BuildingModel> model;
    QVector<KvPlanNode> nodes; ///< shared with whoever has them
    SimulatedBuilding::Paint paint;
    SimulationShare share = SimulationShare::ByProgress;
    SimulationViews views = SimulationViews::Both;
    QVector<double> floorHeights;
    double spread = 0.0;
    /// Of the view that is shown; without one all is seen from the front left and above.
    bool hasCamera = false;
    SceneCamera camera;
    QColor background = Qt::white;
    QString title;

    QVector<const KvPlanNode*> tasks() const; ///< the nodes, for as long as they stay as they are
};

/// What the settings of a plan say of its pictures; the rest stays. To be called with the model in place.
void takeSettings(const SimulationSettings& settings, PictureContent& content);

/// Pictures of the simulation at dates, with the date and the names of the views written into them.
class PictureMaker : public QObject
{
    Q_OBJECT

public:
    PictureMaker(const PictureContent& content, const QSize& size, QObject* parent = nullptr);

    /// Hands the picture over, later; null when nothing could be drawn. Wait for it before the next call.
    void draw(const QDateTime& date, std::function<void(const QImage&)> take);

private:
    QImage labelled(QImage picture, const QDateTime& date) const;

    PictureContent m_content;
    SimulatedBuilding m_building[BuildingScene::viewCount];
    SceneRenderer m_renderer;
};

/// A numbered sequence of pictures, one file each: frame-0001.png and so on. Files are written whole or not
/// at all. Ends with finished().
class FrameExport : public QObject
{
    Q_OBJECT

public:
    struct Sequence
    {
        QString folder; ///< made when missing
        QSize size{1280, 720};
        double framesPerSecond = 25.0;
        double daysPerSecond = 0.5;
        SimulationPeriod period;
    };
    static constexpr int mostFrames = 100000;

    /// Dates of the frames, the first and the last day of the period among them; as many as mostFrames + 1 at
    /// most, which then are not all.
    static QVector<QDateTime> dates(const Sequence& sequence);
    static QString fileName(int frame, int count);
    /// Files of the sequence that are there already.
    static QStringList existing(const Sequence& sequence);
    /// Why no picture can have this size, for the user; empty when it can.
    static QString sizeFault(const QSize& size);
    /// Why no such sequence can be made, for the user; empty when it can.
    static QString fault(const Sequence& sequence);

    FrameExport(const PictureContent& content, const Sequence& sequence, QObject* parent = nullptr);

    /// Draws one after the other, over those that are there.
    void start();
    /// Ends after the frame that is drawn; those that are written stay.
    void cancel() { m_isCanceled = true; }
    int frameCount() const { return m_dates.size(); }

Q_SIGNALS:
    void progress(int written, int count);
    /// @param fault empty when all were written, or when it was canceled
    void finished(int written, const QString& fault);

private:
    void next();
    void write(const QImage& picture);

    Sequence m_sequence;
    QVector<QDateTime> m_dates;
    std::unique_ptr<PictureMaker> m_maker;
    PictureContent m_content;
    int m_written = 0;
    bool m_isCanceled = false;
};

/// @return why it could not be written, for the user; empty when it was.
QString writePicture(const QImage& picture, const QString& path);
