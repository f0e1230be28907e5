#pragma once

#include "ModelData.h"

#include <QtCore/QObject>
#include <QtCore/QProcess>
#include <QtCore/QTimer>

/// Reads a model file in the background, by the program planviewer-model: a file that makes an importer fail
/// or take for ever harms nobody here.
class ModelReader : public QObject
{
    Q_OBJECT

public:
    static constexpr int longestMinutes = 10;

    explicit ModelReader(QObject* parent = nullptr);
    ~ModelReader() override;

    /// The program that a planviewer in @p folder runs, in the build as in an installed tree.
    static QString programFor(const QString& folder);
    /// The program to run instead of that one.
    void setProgram(const QString& path) { m_program = path; }

    /// Begins to read, in place of what was being read. Ends with one of the signals, which may come within
    /// the call.
    void read(const QString& path);
    /// Ends the reading; canceled() tells. Nothing happens when nothing is read.
    void cancel();
    bool isReading() const { return m_process != nullptr; }
    const QString& path() const { return m_path; }

Q_SIGNALS:
    void done(const ModelData& data);
    /// The file holds no model; why, for the user.
    void failed(const QString& fault);
    void canceled();

private:
    void finish(int exitCode, QProcess::ExitStatus status);
    void stop();
    QString faultOf(int exitCode) const;

    QString m_program;
    QString m_path;
    QProcess* m_process = nullptr;
    QTimer m_patience;
};
