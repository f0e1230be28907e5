#pragma once

#include "Interrupt.h"

#include <FrameExport.h>
#include <ModelReader.h>
#include <Output.h>
#include <Progress.h>
#include <SimulateOptions.h>

/// Reads plan and model, draws the pictures and writes them. What fails, it complains about.
class PictureJob : public QObject
{
    Q_OBJECT

public:
    explicit PictureJob(const SimulateOptions& options);
    ~PictureJob() override;

    /// Reads the plan, which blocks while events are handled, asks the user if need be, and begins with the
    /// rest, which Ctrl+C cancels as soon as what is being drawn is done: no file is left half written. Ends
    /// with finished(), which may come within the call.
    void start();

Q_SIGNALS:
    void finished(int exitCode);

private:
    void cancel();
    bool readPlan();
    bool findModelFile();
    bool takePeriod();
    bool mayWrite();
    void takeModel(const ModelData& read);
    void drawPicture();
    void drawFrames();
    void tellFrames(int written, const QString& fault);
    void fail(ExitCode exitCode, const QString& why);
    void failAsCanceled();
    void end(int exitCode);

    SimulateOptions m_options;
    SimulationSettings m_settings;
    PictureContent m_content;
    FrameExport::Sequence m_sequence;
    ModelReader m_reader;
    std::unique_ptr<PictureMaker> m_maker; // of the one picture
    std::unique_ptr<FrameExport> m_frames;
    std::unique_ptr<Progress> m_progress;
    std::unique_ptr<Interrupt> m_interrupt;
    bool m_isCanceled = false;
};
