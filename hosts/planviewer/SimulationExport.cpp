#include "SimulationExport.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QDoubleSpinBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>

FrameExportDialog::FrameExportDialog(const PictureContent& content, const FrameExport::Sequence& sequence,
                                     QWidget* parent)
    : QDialog(parent)
    , m_content(content)
    , m_sequence(sequence)
    , m_folder(new QLineEdit)
    , m_width(new QSpinBox)
    , m_height(new QSpinBox)
    , m_rate(new QDoubleSpinBox)
    , m_count(new QLabel)
    , m_progress(new QProgressBar)
    , m_start(new QPushButton(tr("&Write")))
    , m_fields(new QWidget)
{
    setObjectName(QStringLiteral("frameExportDialog"));
    setWindowTitle(tr("Export frames"));
    m_folder->setObjectName(QStringLiteral("frameFolder"));
    m_width->setObjectName(QStringLiteral("frameWidth"));
    m_height->setObjectName(QStringLiteral("frameHeight"));
    m_rate->setObjectName(QStringLiteral("frameRate"));
    m_start->setObjectName(QStringLiteral("writeFrames"));
    m_progress->setObjectName(QStringLiteral("frameProgress"));
    for (QSpinBox* const side : {m_width, m_height})
        side->setRange(SceneRenderer::smallestSide, SceneRenderer::largestSide);
    m_width->setValue(sequence.size.width());
    m_height->setValue(sequence.size.height());
    m_rate->setRange(0.1, 120.0);
    m_rate->setValue(sequence.framesPerSecond);
    m_progress->hide();
    auto* const browse = new QPushButton(tr("C&hoose…"));
    auto* const folder = new QHBoxLayout;
    folder->addWidget(m_folder, 1);
    folder->addWidget(browse);
    auto* const size = new QHBoxLayout;
    size->addWidget(m_width);
    size->addWidget(new QLabel(QStringLiteral("×")));
    size->addWidget(m_height);
    size->addStretch();
    auto* const form = new QFormLayout(m_fields);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(tr("&Folder"), folder);
    form->addRow(tr("&Size"), size);
    form->addRow(tr("Frames in a &second"), m_rate);
    form->addRow(m_count);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cancelFrames"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("&Cancel"));
    buttons->addButton(m_start, QDialogButtonBox::AcceptRole);
    m_start->setDefault(true);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(m_fields);
    column->addWidget(m_progress);
    column->addWidget(buttons);

    connect(browse, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getExistingDirectory(this, tr("Folder of the frames"));
        if (!chosen.isEmpty())
            m_folder->setText(chosen);
    });
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_rate, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &FrameExportDialog::showCount);
    connect(m_folder, &QLineEdit::textChanged, this, &FrameExportDialog::showCount);
    showCount();
}

FrameExport::Sequence FrameExportDialog::sequence() const
{
    FrameExport::Sequence made = m_sequence;
    made.folder = m_folder->text();
    made.size = QSize(m_width->value(), m_height->value());
    made.framesPerSecond = m_rate->value();
    return made;
}

void FrameExportDialog::showCount()
{
    const FrameExport::Sequence made = sequence();
    const QString fault = FrameExport::fault(made);
    m_count->setText(fault.isEmpty() ? tr("%1 frames, %2 days of the schedule in a second")
                                           .arg(FrameExport::dates(made).size())
                                           .arg(made.daysPerSecond)
                                     : fault);
    m_start->setEnabled(fault.isEmpty() && !made.folder.isEmpty());
}

bool FrameExportDialog::mayWrite()
{
    const QStringList existing = FrameExport::existing(sequence());
    if (existing.isEmpty())
        return true;
    QMessageBox box(QMessageBox::Question, windowTitle(),
                    tr("%1 of these frames are in the folder already.").arg(existing.size()),
                    QMessageBox::NoButton, this);
    box.setObjectName(QStringLiteral("overwriteDialog"));
    QPushButton* const over = box.addButton(tr("&Write over them"), QMessageBox::DestructiveRole);
    over->setObjectName(QStringLiteral("overwrite"));
    QPushButton* const keep = box.addButton(tr("&Keep them"), QMessageBox::RejectRole);
    keep->setObjectName(QStringLiteral("keep"));
    box.setDefaultButton(keep);
    box.setEscapeButton(keep);
    box.exec();
    return box.clickedButton() == over;
}

void FrameExportDialog::setRunning(bool isRunning)
{
    m_fields->setEnabled(!isRunning);
    m_progress->setVisible(isRunning);
    m_start->setEnabled(!isRunning);
}

void FrameExportDialog::accept()
{
    if (m_export || !mayWrite())
        return;
    setRunning(true);
    m_export = new FrameExport(m_content, sequence(), this);
    m_progress->setRange(0, m_export->frameCount());
    m_progress->setValue(0);
    connect(m_export, &FrameExport::progress, this, [this](int written) { m_progress->setValue(written); });
    connect(m_export, &FrameExport::finished, this, &FrameExportDialog::finish);
    m_export->start();
}

void FrameExportDialog::reject()
{
    if (m_export)
        m_export->cancel(); // finish() closes
    else
        QDialog::reject();
}

void FrameExportDialog::finish(int written, const QString& fault)
{
    const bool isWhole = written == m_export->frameCount();
    m_export->deleteLater();
    m_export = nullptr;
    m_written = written;
    setRunning(false);
    if (!fault.isEmpty()) {
        m_count->setText(fault);
        return;
    }
    if (isWhole)
        QDialog::accept();
    else
        QDialog::reject();
}
