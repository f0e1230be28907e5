#pragma once

#include <FrameExport.h>

#include <QtWidgets/QDialog>

class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QSpinBox;

/// Asks for folder, size and rate of a frame sequence, writes it, and tells how far it is; Cancel ends it
/// there. Asks before it writes over files.
class FrameExportDialog : public QDialog
{
    Q_OBJECT

public:
    FrameExportDialog(const PictureContent& content, const FrameExport::Sequence& sequence,
                      QWidget* parent = nullptr);

    /// Frames that were written.
    int written() const { return m_written; }

    void accept() override;
    void reject() override;

private:
    FrameExport::Sequence sequence() const;
    void showCount();
    bool mayWrite();
    void setRunning(bool isRunning);
    void finish(int written, const QString& fault);

    PictureContent m_content;
    FrameExport::Sequence m_sequence;
    QLineEdit* m_folder;
    QSpinBox* m_width;
    QSpinBox* m_height;
    QDoubleSpinBox* m_rate;
    QLabel* m_count;
    QProgressBar* m_progress;
    QPushButton* m_start;
    QWidget* m_fields;
    FrameExport* m_export = nullptr;
    int m_written = 0;
};
