#include "FrameExport.h"

#include "GraphicsCheck.h"

#include <PlaybackBar.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSaveFile>
#include <QtGui/QImageWriter>
#include <QtGui/QPainter>

#include <cmath>

namespace {

constexpr double millisecondsOfDay = 86400000.0;

bool shows(SimulationViews views, BuildingScene::View view)
{
    return views == SimulationViews::Both ||
           (views == SimulationViews::Planned) == (view == BuildingScene::Planned);
}

} // namespace

QVector<const KvPlanNode*> PictureContent::tasks() const
{
    QVector<const KvPlanNode*> all;
    all.reserve(nodes.size());
    for (const KvPlanNode& node : nodes)
        all.append(&node);
    return all;
}

void takeSettings(const SimulationSettings& settings, PictureContent& content)
{
    content.paint = {settings.set(), settings.colours()};
    content.share = settings.share();
    content.views = settings.views();
    content.floorHeights.clear();
    for (const QString& floor : content.model->floors())
        content.floorHeights.append(settings.floorHeight(floor));
}

QString writePicture(const QImage& picture, const QString& path)
{
    const QString name = QDir::toNativeSeparators(path);
    if (picture.isNull())
        return FrameExport::tr("the picture %1 could not be drawn; try again with a smaller one").arg(name);
    QSaveFile file(path);
    QImageWriter writer(&file, QFileInfo(path).suffix().toLatin1());
    if (!file.open(QIODevice::WriteOnly))
        return FrameExport::tr("the picture %1 cannot be written: %2").arg(name, file.errorString());
    if (!writer.write(picture))
        return FrameExport::tr("the picture %1 cannot be written: %2").arg(name, writer.errorString());
    if (!file.commit())
        return FrameExport::tr("the picture %1 cannot be written: %2").arg(name, file.errorString());
    return {};
}

PictureMaker::PictureMaker(const PictureContent& content, const QSize& size, QObject* parent)
    : QObject(parent)
    , m_content(content)
    , m_renderer(content.model, size, shows(content.views, BuildingScene::Planned),
                 shows(content.views, BuildingScene::Actual))
{
    m_renderer.setBackground(content.background);
    if (content.hasCamera)
        m_renderer.setCamera(content.camera);
    const QVector<const KvPlanNode*> nodes = m_content.tasks();
    const SimulationDates dates[] = {SimulationDates::Planned, SimulationDates::Actual};
    for (int view = 0; view < BuildingScene::viewCount; ++view) {
        m_building[view].setTasks(nodes, {dates[view], content.share});
        m_building[view].setModel(content.model);
        spreadFloors(*content.model, content.floorHeights, content.spread,
                     m_renderer.looks(BuildingScene::View(view)));
    }
}

void PictureMaker::draw(const QDateTime& date, std::function<void(const QImage&)> take)
{
    for (int i = 0; i < BuildingScene::viewCount; ++i) {
        const auto view = BuildingScene::View(i);
        if (shows(m_content.views, view))
            m_building[i].show(date, m_content.paint, m_renderer.looks(view));
    }
    m_renderer.draw([this, date, take = std::move(take)](const QImage& picture) {
        take(picture.isNull() ? picture : labelled(picture, date));
    });
}

QImage PictureMaker::labelled(QImage picture, const QDateTime& date) const
{
    QPainter painter(&picture);
    QFont font = painter.font();
    font.setPixelSize(qMax(9, picture.height() / 30));
    painter.setFont(font);
    painter.setPen(m_content.background.lightness() < 128 ? Qt::white : Qt::black);
    const int margin = font.pixelSize() / 2;
    const QRect inside = picture.rect().adjusted(margin, margin, -margin, -margin);
    painter.drawText(inside, Qt::AlignLeft | Qt::AlignBottom, PlaybackBar::dateText(date));
    painter.drawText(inside, Qt::AlignRight | Qt::AlignBottom, m_content.title);
    const QString names[] = {tr("Planned"), tr("Actual")};
    int left = inside.left();
    for (int view = 0; view < BuildingScene::viewCount; ++view) {
        if (!shows(m_content.views, BuildingScene::View(view)))
            continue;
        painter.drawText(QRect(left, inside.top(), inside.width(), inside.height()),
                         Qt::AlignLeft | Qt::AlignTop, names[view]);
        left += picture.width() / 2;
    }
    if (m_content.views == SimulationViews::Both)
        painter.drawLine(picture.width() / 2, 0, picture.width() / 2, picture.height());
    return picture;
}

QVector<QDateTime> FrameExport::dates(const Sequence& sequence)
{
    QVector<QDateTime> all;
    if (!sequence.period.isValid() || !(sequence.framesPerSecond > 0.0) || !(sequence.daysPerSecond > 0.0))
        return all;
    const double step = sequence.daysPerSecond * millisecondsOfDay / sequence.framesPerSecond;
    const auto length = double(sequence.period.start.msecsTo(sequence.period.finish));
    for (int frame = 0; frame <= mostFrames && frame * step < length; ++frame)
        all.append(sequence.period.start.addMSecs(qint64(std::llround(frame * step))));
    if (all.size() <= mostFrames)
        all.append(sequence.period.finish);
    return all;
}

QString FrameExport::fileName(int frame, int count)
{
    const int digits = qMax(4, QString::number(count).size());
    return QStringLiteral("frame-%1.png").arg(frame + 1, digits, 10, QLatin1Char('0'));
}

QStringList FrameExport::existing(const Sequence& sequence)
{
    QStringList found;
    const QDir folder(sequence.folder);
    const int count = dates(sequence).size();
    const QSet<QString> there =
        [names = folder.entryList({QStringLiteral("frame-*.png")}, QDir::AllEntries | QDir::Hidden)] {
            return QSet<QString>(names.begin(), names.end());
        }();
    for (int frame = 0; frame < count && !there.isEmpty(); ++frame) {
        if (there.contains(fileName(frame, count)))
            found.append(folder.filePath(fileName(frame, count)));
    }
    return found;
}

QString FrameExport::sizeFault(const QSize& size)
{
    const int shorter = qMin(size.width(), size.height());
    const int longer = qMax(size.width(), size.height());
    if (shorter >= SceneRenderer::smallestSide && longer <= SceneRenderer::largestSide)
        return {};
    return tr("a picture has sides from %1 to %2 pixels")
        .arg(SceneRenderer::smallestSide)
        .arg(SceneRenderer::largestSide);
}

QString FrameExport::fault(const Sequence& sequence)
{
    if (!sequence.period.isValid())
        return tr("the plan has no dates, so there is nothing to play");
    const QString ofSize = sizeFault(sequence.size);
    if (!ofSize.isEmpty())
        return ofSize;
    const int count = dates(sequence).size();
    if (count == 0)
        return tr("frames and days in a second have to be more than 0");
    if (count > mostFrames)
        return tr("there would be more than %1 frames; play faster, or with fewer frames in a second")
            .arg(mostFrames);
    return {};
}

FrameExport::FrameExport(const PictureContent& content, const Sequence& sequence, QObject* parent)
    : QObject(parent)
    , m_sequence(sequence)
    , m_dates(dates(sequence))
    , m_content(content)
{
}

void FrameExport::start()
{
    QString why = fault(m_sequence);
    if (why.isEmpty())
        why = GraphicsCheck::fault();
    if (why.isEmpty() && !QDir(m_sequence.folder).mkpath(QStringLiteral(".")))
        why = tr("the folder %1 cannot be made; choose another one")
                  .arg(QDir::toNativeSeparators(m_sequence.folder));
    if (!why.isEmpty()) {
        Q_EMIT finished(0, why);
        return;
    }
    m_maker = std::make_unique<PictureMaker>(m_content, m_sequence.size);
    next();
}

void FrameExport::next()
{
    if (m_isCanceled || m_written == m_dates.size()) {
        Q_EMIT finished(m_written, {});
        return;
    }
    m_maker->draw(m_dates.at(m_written), [this](const QImage& picture) { write(picture); });
}

void FrameExport::write(const QImage& picture)
{
    const QString path = QDir(m_sequence.folder).filePath(fileName(m_written, m_dates.size()));
    const QString why = writePicture(picture, path);
    if (!why.isEmpty()) {
        Q_EMIT finished(m_written, why);
        return;
    }
    ++m_written;
    Q_EMIT progress(m_written, m_dates.size());
    next();
}
