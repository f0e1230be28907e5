#include "PictureJob.h"

#include <PlaybackBar.h>
#include <Question.h>
#include <Session.h>
#include <TaskList.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>

PictureJob::PictureJob(const SimulateOptions& options)
    : m_options(options)
{
    m_reader.setProgram(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                        QStringLiteral(KV_MODEL_PROGRAM));
    connect(&m_reader, &ModelReader::done, this, &PictureJob::takeModel);
    connect(&m_reader, &ModelReader::failed, this, [this](const QString& fault) {
        if (Interrupt::hasCome()) // Ctrl+C on a terminal ends the reading program too, as a fault would
            failAsCanceled();
        else
            fail(BadData, fault);
    });
    connect(&m_reader, &ModelReader::canceled, this, &PictureJob::failAsCanceled);
}

PictureJob::~PictureJob() = default;

void PictureJob::start()
{
    const QString ofSize = FrameExport::sizeFault(m_options.size);
    if (!ofSize.isEmpty())
        return fail(WrongUsage, ofSize);
    if (!readPlan())
        return end(RequestFailed);
    if (!findModelFile() || !takePeriod() || !mayWrite())
        return;
    // Until here Ctrl+C ends the program at once, also at a question.
    m_interrupt = std::make_unique<Interrupt>();
    connect(m_interrupt.get(), &Interrupt::wanted, this, &PictureJob::cancel);
    m_progress = std::make_unique<Progress>(QStringLiteral("reading the model"));
    m_reader.read(m_options.modelFile);
}

void PictureJob::cancel()
{
    m_isCanceled = true;
    if (m_reader.isReading())
        m_reader.cancel();
    else if (m_frames)
        m_frames->cancel();
}

// In the order in which planviewer shows the tasks: it decides between those that start and finish together.
bool PictureJob::readPlan()
{
    const Session session;
    KvPlan plan;
    if (!session.readPlan(m_options.planId, plan))
        return false;
    const TaskList tasks(plan.planNodes);
    m_content.nodes.reserve(tasks.size());
    for (int i = 0; i < tasks.size(); ++i)
        m_content.nodes.append(tasks.at(i).node);
    m_content.title = plan.name;
    m_settings.setPlan(m_options.planId);
    return true;
}

bool PictureJob::findModelFile()
{
    if (m_options.modelFile.isEmpty())
        m_options.modelFile = m_settings.modelFile();
    if (m_options.modelFile.isEmpty())
        fail(
            WrongUsage,
            QStringLiteral("no model of the building: give --model, or open one for the plan in planviewer"));
    return !m_options.modelFile.isEmpty();
}

bool PictureJob::takePeriod()
{
    if (m_options.at.isValid())
        return true;
    m_sequence.folder = m_options.output;
    m_sequence.size = m_options.size;
    m_sequence.framesPerSecond = m_options.framesPerSecond;
    m_sequence.daysPerSecond =
        m_options.daysPerSecond > 0.0 ? m_options.daysPerSecond : m_settings.set().DayForS;
    SimulationPeriod period = simulatedPeriod(planPeriod(m_content.tasks()), m_settings.set());
    if (m_options.from.isValid())
        period.start = m_options.from;
    if (m_options.to.isValid())
        period.finish = m_options.to;
    if (period.isValid() && period.finish < period.start) {
        fail(WrongUsage,
             QStringLiteral("the frames would end on %1, before they begin on %2; give --from and "
                            "--to")
                 .arg(PlaybackBar::dateText(period.finish), PlaybackBar::dateText(period.start)));
        return false;
    }
    m_sequence.period = period;
    const QString fault = FrameExport::fault(m_sequence);
    if (!fault.isEmpty())
        fail(period.isValid() ? WrongUsage : BadData, fault);
    return fault.isEmpty();
}

bool PictureJob::mayWrite()
{
    if (m_options.mayReplace)
        return true;
    QString question;
    if (!m_options.at.isValid()) {
        const int there = FrameExport::existing(m_sequence).size();
        if (there > 0)
            question = QStringLiteral("%1 of these frames are in \"%2\" already. Write over them?")
                           .arg(there)
                           .arg(m_options.output);
    } else if (QFileInfo::exists(m_options.output)) {
        question = QStringLiteral("Write over \"%1\"?").arg(m_options.output);
    }
    if (question.isEmpty() || agrees(question))
        return true;
    end(NotAgreed);
    return false;
}

void PictureJob::takeModel(const ModelData& read)
{
    m_progress.reset();
    const QSet<QString> known = linkedElements(m_content.tasks());
    m_content.model = std::make_shared<const BuildingModel>(read, known);
    bool isKnown = false;
    for (const BuildingModel::Element& element : m_content.model->elements())
        isKnown = isKnown || known.contains(element.id);
    if (!isKnown)
        return fail(BadData, QStringLiteral("no task of the plan names an element of the model %1; is it the "
                                            "model of another building?")
                                 .arg(QDir::toNativeSeparators(m_options.modelFile)));
    takeSettings(m_settings, m_content);
    if (!m_options.views.isEmpty())
        m_content.views = m_options.views == QLatin1String("planned")  ? SimulationViews::Planned
                          : m_options.views == QLatin1String("actual") ? SimulationViews::Actual
                                                                       : SimulationViews::Both;
    m_content.spread = m_options.spread;
    m_progress = std::make_unique<Progress>(QStringLiteral("drawing"));
    if (m_options.at.isValid())
        drawPicture();
    else
        drawFrames();
}

void PictureJob::drawPicture()
{
    m_maker = std::make_unique<PictureMaker>(m_content, m_options.size);
    m_maker->draw(m_options.at, [this](const QImage& picture) {
        if (m_isCanceled)
            return failAsCanceled();
        const QString fault = writePicture(picture, m_options.output);
        if (!fault.isEmpty())
            return fail(OutputFailed, fault);
        m_progress.reset();
        end(say(QStringLiteral("%1: %2\n").arg(m_options.output, PlaybackBar::dateText(m_options.at))));
    });
}

void PictureJob::drawFrames()
{
    m_frames = std::make_unique<FrameExport>(m_content, m_sequence);
    connect(m_frames.get(), &FrameExport::progress, this,
            [this](int written, int count) { m_progress->show(written, count); });
    connect(m_frames.get(), &FrameExport::finished, this, &PictureJob::tellFrames);
    m_frames->start();
}

void PictureJob::tellFrames(int written, const QString& fault)
{
    const int count = m_frames->frameCount();
    if (!fault.isEmpty())
        return fail(OutputFailed, fault);
    if (written < count)
        return fail(Canceled,
                    QStringLiteral("canceled; %1 of %2 frames were written, whole").arg(written).arg(count));
    m_progress.reset();
    end(say(QStringLiteral("%1: %2, %3 to %4\n")
                .arg(m_options.output,
                     count == 1 ? QStringLiteral("1 frame") : QStringLiteral("%1 frames").arg(count))
                .arg(PlaybackBar::dateText(m_sequence.period.start),
                     PlaybackBar::dateText(m_sequence.period.finish))));
}

void PictureJob::fail(ExitCode exitCode, const QString& why)
{
    m_progress.reset();
    complain(why);
    end(exitCode);
}

void PictureJob::failAsCanceled()
{
    fail(Canceled, QStringLiteral("canceled; no picture was written"));
}

void PictureJob::end(int exitCode)
{
    Q_EMIT finished(exitCode);
}
